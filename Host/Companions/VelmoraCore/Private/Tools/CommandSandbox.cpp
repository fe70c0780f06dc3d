#include "Tools/CommandSandbox.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <pwd.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Changes/PrivateFile.h"
#include "Host/FileDescriptor.h"
#include "Tools/ProcessTree.h"

namespace Velmora
{
	namespace
	{
		constexpr const char* Bubblewrap = "/usr/bin/bwrap";

		/** How often the command is looked after. In milliseconds. */
		constexpr int WatchInterval = 20;

		/** Looking through all processes costs more than looking at one pipe. In seconds. */
		constexpr double MeasureInterval = 0.1;

		using FClock = std::chrono::steady_clock;

		double SecondsSince(FClock::time_point Start)
		{
			return std::chrono::duration<double>(FClock::now() - Start).count();
		}

		bool IsFolder(const std::string& Path)
		{
			struct stat Info = {};
			return !Path.empty() && lstat(Path.c_str(), &Info) == 0 && S_ISDIR(Info.st_mode);
		}

		/** Where people keep what is theirs. */
		std::vector<std::string> ListHomes()
		{
			std::vector<std::string> Homes = { "/home", "/root" };
			passwd Entry = {};
			passwd* Found = nullptr;
			std::vector<char> Buffer(16 * 1024);
			if (getpwuid_r(getuid(), &Entry, Buffer.data(), Buffer.size(), &Found) == 0 && Found && Found->pw_dir)
			{
				Homes.emplace_back(Found->pw_dir);
			}
			const char* const Home = getenv("HOME");
			Homes.emplace_back(Home ? Home : "");
			std::erase_if(Homes, [](const std::string& Path) { return Path == "/" || Path.front() != '/' || !IsFolder(Path); });
			return Homes;
		}

		std::vector<std::string> MakeArguments(const FSandboxedCommand& Command)
		{
			const std::string MaxBytes = std::to_string(Command.Limits.MaxFileBytes);
			std::vector<std::string> Arguments = { Bubblewrap, "--unshare-all", "--cap-drop", "ALL", "--new-session", "--die-with-parent",
				"--hostname", "sandbox", "--clearenv" };
			const auto Add = [&Arguments](std::initializer_list<std::string> More)
			{ Arguments.insert(Arguments.end(), More.begin(), More.end()); };
			const auto AddEmpty = [&](const std::string& Path) { Add({ "--size", MaxBytes, "--tmpfs", Path }); };

			// 1. The machine as it is, but for places that hold ways out: sockets of the session, the bus, the windows.
			Add({ "--ro-bind", "/", "/", "--dev", "/dev", "--proc", "/proc" });
			for (const char* Path : { "/dev/shm", "/tmp", "/run", "/var/tmp" })
			{
				AddEmpty(Path);
			}
			for (const std::string& Home : ListHomes())
			{
				AddEmpty(Home);
			}

			// 2. The project over them, for it may lie in one of them; then what it may not touch or see of it.
			Add({ "--bind", Command.WritableFolder, Command.ProjectFolder });
			for (const std::string& Path : Command.ReadOnly)
			{
				Add({ "--ro-bind", Command.ProjectFolder + '/' + Path, Command.ProjectFolder + '/' + Path });
			}
			for (const std::string& Path : Command.HiddenFiles)
			{
				Add({ "--ro-bind", "/dev/null", Command.ProjectFolder + '/' + Path });
			}
			for (const std::string& Path : Command.HiddenFolders)
			{
				AddEmpty(Command.ProjectFolder + '/' + Path);
			}
			if (IsFolder(PrivateFile::GetFolder()))
			{
				AddEmpty(PrivateFile::GetFolder());
			}

			// 3. An environment of its own.
			Add({ "--setenv", "PATH", "/usr/local/bin:/usr/bin:/bin:/usr/local/sbin:/usr/sbin:/sbin", "--setenv", "HOME", "/tmp",
				"--setenv", "TMPDIR", "/tmp", "--setenv", "LANG", "C.UTF-8", "--setenv", "TERM", "dumb" });
			Add({ "--chdir", Command.ProjectFolder, "--", "/bin/sh", "-c", Command.Line });
			return Arguments;
		}

		void Limit(int Which, rlim_t Value)
		{
			const rlimit Bound = { Value, Value };
			setrlimit(static_cast<__rlimit_resource>(Which), &Bound);
		}

		/** The new process, up to the program: only what is allowed between fork and exec. */
		[[noreturn]] void BecomeCommand(char* const* Arguments, int Input, int Output, const FCommandLimits& Limits)
		{
			char* const NoEnvironment[] = { nullptr };
			sigset_t None;
			sigemptyset(&None);
			sigprocmask(SIG_SETMASK, &None, nullptr);
			signal(SIGXFSZ, SIG_DFL);
			dup2(Input, 0);
			dup2(Output, 1);
			dup2(Output, 2);
			// Descriptors of the program: files of the project, the store, sockets. None of them may come along.
			syscall(SYS_close_range, 3u, ~0u, 0u);
			Limit(RLIMIT_CORE, 0);
			Limit(RLIMIT_FSIZE, Limits.MaxFileBytes);
			Limit(RLIMIT_AS, Limits.MaxMemoryBytes * 4);
			Limit(RLIMIT_CPU, static_cast<rlim_t>(Limits.MaxSeconds) * 8 + 1);
			execve(Arguments[0], Arguments, NoEnvironment);
			_exit(127);
		}

		/** Keeps the beginning and the end of what comes. */
		class FOutputKeeper
		{
		public:
			explicit FOutputKeeper(size_t InMaxBytes)
				: Half(InMaxBytes / 2)
			{
			}

			void Add(std::string_view Bytes)
			{
				Total += Bytes.size();
				const size_t ToHead = std::min(Bytes.size(), Half - Head.size());
				Head += Bytes.substr(0, ToHead);
				Tail += Bytes.substr(ToHead);
				if (Tail.size() > 4 * Half)
				{
					Tail.erase(0, Tail.size() - Half);
				}
			}

			uint64_t GetTotal() const { return Total; }

			void Finish(FCommandEnd& End)
			{
				Tail.erase(0, Tail.size() > Half ? Tail.size() - Half : 0);
				End.LeftOutBytes = Total - Head.size() - Tail.size();
				End.Output = Head;
				if (End.LeftOutBytes > 0)
				{
					End.Output += "\n[" + std::to_string(End.LeftOutBytes) + " bytes are left out here.]\n";
				}
				End.Output += Tail;
			}

		private:
			const size_t Half;
			std::string Head;
			std::string Tail;
			uint64_t Total = 0;
		};

		/** A command under way, from its start to its last byte. */
		class FRunningCommand
		{
		public:
			FRunningCommand(const FSandboxedCommand& InCommand, const std::function<bool()>& InIsCancelled)
				: Limits(InCommand.Limits)
				, IsCancelled(InIsCancelled)
				, Output(InCommand.Limits.MaxKeptOutput)
			{
				Start(MakeArguments(InCommand));
			}

			FCommandEnd Wait()
			{
				FCommandEnd End;
				if (Process > 0)
				{
					End.Why = Watch();
					kill(Process, SIGKILL);
					int Status = 0;
					while (waitpid(Process, &Status, 0) < 0 && errno == EINTR)
					{
					}
					// The first process of the sandbox goes with the one outside, and all others with it; then the pipe ends.
					ReadAll();
					End.ExitCode = WIFEXITED(Status) ? WEXITSTATUS(Status) : 128 + WTERMSIG(Status);
				}
				Output.Finish(End);
				End.Seconds = SecondsSince(StartedAt);
				return End;
			}

		private:
			void Start(const std::vector<std::string>& Arguments)
			{
				int Ends[2] = { -1, -1 };
				const FFileDescriptor Input = FFileDescriptor::Open("/dev/null", O_RDONLY);
				if (pipe2(Ends, O_CLOEXEC) != 0)
				{
					return;
				}
				Pipe = FFileDescriptor(Ends[0]);
				const FFileDescriptor WriteEnd(Ends[1]);
				fcntl(Pipe.Get(), F_SETFL, O_NONBLOCK);
				std::vector<char*> Pointers;
				for (const std::string& Argument : Arguments)
				{
					Pointers.push_back(const_cast<char*>(Argument.c_str()));
				}
				Pointers.push_back(nullptr);
				Process = fork();
				if (Process == 0)
				{
					BecomeCommand(Pointers.data(), Input.Get(), WriteEnd.Get(), Limits);
				}
			}

			FCommandEnd::EWhy Watch()
			{
				double NextMeasure = 0.0;
				for (;;)
				{
					pollfd Poll = { Pipe.Get(), POLLIN, 0 };
					poll(&Poll, bIsAtEnd ? 0 : 1, WatchInterval);
					ReadAll();
					if (HasExited())
					{
						return FCommandEnd::EWhy::Exited;
					}
					const double Seconds = SecondsSince(StartedAt);
					if (IsCancelled && IsCancelled())
					{
						return FCommandEnd::EWhy::Cancelled;
					}
					if (Seconds > Limits.MaxSeconds)
					{
						return FCommandEnd::EWhy::TooLong;
					}
					if (Output.GetTotal() > Limits.MaxOutput)
					{
						return FCommandEnd::EWhy::TooMuchOutput;
					}
					if (Seconds >= NextMeasure)
					{
						// Bounds of the system count per user or per process, and not at all for root: so they are watched here.
						NextMeasure = Seconds + MeasureInterval;
						const FProcessTree Tree = FProcessTree::Measure(Process);
						if (Tree.Count > Limits.MaxProcesses + 2)
						{
							return FCommandEnd::EWhy::TooManyProcesses;
						}
						if (Tree.ResidentBytes > Limits.MaxMemoryBytes)
						{
							return FCommandEnd::EWhy::TooMuchMemory;
						}
					}
				}
			}

			/** Whether it is over; it is not taken away yet, so that its number stays its own. */
			bool HasExited() const
			{
				siginfo_t Info = {};
				return waitid(P_PID, static_cast<id_t>(Process), &Info, WEXITED | WNOHANG | WNOWAIT) == 0 && Info.si_pid == Process;
			}

			void ReadAll()
			{
				char Buffer[16 * 1024];
				ssize_t Count = 0;
				// No more than the bound at a time, or a command that never stops talking would never be looked after.
				for (uint64_t Limit = Output.GetTotal() + Limits.MaxOutput;
					 !bIsAtEnd && Output.GetTotal() < Limit && (Count = read(Pipe.Get(), Buffer, sizeof(Buffer))) != 0;)
				{
					if (Count < 0)
					{
						return;
					}
					Output.Add(std::string_view(Buffer, static_cast<size_t>(Count)));
				}
				bIsAtEnd |= Count == 0;
			}

			const FCommandLimits Limits;
			const std::function<bool()>& IsCancelled;
			FOutputKeeper Output;
			const FClock::time_point StartedAt = FClock::now();
			FFileDescriptor Pipe;
			pid_t Process = -1;
			bool bIsAtEnd = false;
		};
	}

	const std::string& FCommandSandbox::WhyUnavailable()
	{
		static const std::string Why = []
		{
			if (access(Bubblewrap, X_OK) != 0)
			{
				return std::string("bubblewrap is not installed (/usr/bin/bwrap), so no commands can be run");
			}
			FSandboxedCommand Probe;
			Probe.Line = "echo ready";
			Probe.ProjectFolder = Probe.WritableFolder = "/tmp";
			Probe.Limits.MaxSeconds = 10.0;
			const FCommandEnd End = Run(Probe, nullptr);
			return End.Output == "ready\n" ? std::string()
										   : "bubblewrap cannot make a sandbox on this machine, so no commands can be run: " +
					End.Output.substr(0, End.Output.find('\n'));
		}();
		return Why;
	}

	FCommandEnd FCommandSandbox::Run(const FSandboxedCommand& Command, const std::function<bool()>& IsCancelled)
	{
		return FRunningCommand(Command, IsCancelled).Wait();
	}
}
