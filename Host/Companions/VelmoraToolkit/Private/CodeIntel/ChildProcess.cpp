#include "CodeIntel/ChildProcess.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <memory>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Host/FileDescriptor.h"
#include "Host/HostSystemErrors.h"

namespace Velmora::CodeIntel
{
	namespace
	{
		using FClock = std::chrono::steady_clock;
		constexpr int StopCheckMilliseconds = 50;

		/** A file without a name is read like a pipe, but no writer has to wait for the reader or be told that it has gone. */
		FFileDescriptor MakeInput(std::string_view Text)
		{
			FFileDescriptor Input(memfd_create("input", MFD_CLOEXEC));
			const bool bIsMade = Input.IsOpen() && Input.Write(Text) && lseek(Input.Get(), 0, SEEK_SET) == 0;
			return bIsMade ? std::move(Input) : FFileDescriptor();
		}

		/** Zero or an error number. */
		int Spawn(const FChildRun& Run, int Input, int Output, pid_t& OutChild)
		{
			posix_spawn_file_actions_t Files;
			posix_spawn_file_actions_init(&Files);
			posix_spawn_file_actions_adddup2(&Files, Input, STDIN_FILENO);
			posix_spawn_file_actions_adddup2(&Files, Output, STDOUT_FILENO);
			posix_spawn_file_actions_addopen(&Files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
			posix_spawn_file_actions_addclosefrom_np(&Files, STDERR_FILENO + 1);

			posix_spawnattr_t Attributes;
			posix_spawnattr_init(&Attributes);
			sigset_t Signals;
			sigemptyset(&Signals);
			posix_spawnattr_setsigmask(&Attributes, &Signals);
			sigaddset(&Signals, SIGPIPE);
			sigaddset(&Signals, SIGXFSZ);
			posix_spawnattr_setsigdefault(&Attributes, &Signals);
			posix_spawnattr_setpgroup(&Attributes, 0);
			posix_spawnattr_setflags(&Attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

			std::vector<char*> Arguments;
			for (const std::string& Argument : Run.Arguments)
			{
				Arguments.push_back(const_cast<char*>(Argument.c_str()));
			}
			Arguments.push_back(nullptr);
			const int Error = posix_spawnp(&OutChild, Arguments[0], &Files, &Attributes, Arguments.data(), environ);
			posix_spawnattr_destroy(&Attributes);
			posix_spawn_file_actions_destroy(&Files);
			return Error;
		}

		/** Finished means that the child has closed its output. */
		EChildEnd ReadOutput(int Output, size_t MaxBytes, FClock::time_point End, const std::atomic<bool>& bStop,
			const std::function<void(std::string_view)>& TakeOutput)
		{
			constexpr size_t BufferBytes = 64 * 1024;
			const std::unique_ptr<char[]> Buffer = std::make_unique<char[]>(BufferBytes);
			size_t Total = 0;
			for (;;)
			{
				if (bStop)
				{
					return EChildEnd::Stopped;
				}
				if (FClock::now() >= End)
				{
					return EChildEnd::TimedOut;
				}
				pollfd Waiting = { Output, POLLIN, 0 };
				if (poll(&Waiting, 1, StopCheckMilliseconds) <= 0)
				{
					continue;
				}
				const ssize_t Count = read(Output, Buffer.get(), BufferBytes);
				if (Count == 0)
				{
					return EChildEnd::Finished;
				}
				if (Count < 0)
				{
					if (errno == EINTR || errno == EAGAIN)
					{
						continue;
					}
					return EChildEnd::Failed;
				}
				Total += static_cast<size_t>(Count);
				if (Total > MaxBytes)
				{
					return EChildEnd::TooMuch;
				}
				TakeOutput(std::string_view(Buffer.get(), static_cast<size_t>(Count)));
			}
		}

		/** Waits until the child has ended, without taking its end, so that its number stays its own. */
		EChildEnd WaitForEnd(pid_t Child, FClock::time_point End, const std::atomic<bool>& bStop)
		{
			for (;;)
			{
				siginfo_t Info = {};
				if (waitid(P_PID, static_cast<id_t>(Child), &Info, WEXITED | WNOWAIT | WNOHANG) != 0 || Info.si_pid == Child)
				{
					return EChildEnd::Finished;
				}
				if (bStop)
				{
					return EChildEnd::Stopped;
				}
				if (FClock::now() >= End)
				{
					return EChildEnd::TimedOut;
				}
				std::this_thread::sleep_for(std::chrono::microseconds(500));
			}
		}
	}

	EChildEnd RunChild(const FChildRun& Run, const std::atomic<bool>& bStop, const std::function<void(std::string_view)>& TakeOutput,
		std::string& OutReason)
	{
		const FClock::time_point End =
			FClock::now() + std::chrono::duration_cast<FClock::duration>(std::chrono::duration<double>(Run.Seconds));
		FFileDescriptor Input = MakeInput(Run.Input);
		int Pipe[2] = { -1, -1 };
		if (!Input.IsOpen() || pipe2(Pipe, O_CLOEXEC) != 0)
		{
			OutReason = HostDescribeSystemError(errno);
			return EChildEnd::NotStarted;
		}
		const FFileDescriptor Output(Pipe[0]);
		FFileDescriptor ChildOutput(Pipe[1]);
		pid_t Child = -1;
		const int Error = Spawn(Run, Input.Get(), ChildOutput.Get(), Child);
		Input.Close();
		ChildOutput.Close();
		if (Error != 0)
		{
			OutReason = HostDescribeSystemError(Error);
			return EChildEnd::NotStarted;
		}

		EChildEnd Result = ReadOutput(Output.Get(), Run.MaxOutputBytes, End, bStop, TakeOutput);
		if (Result == EChildEnd::Finished)
		{
			Result = WaitForEnd(Child, End, bStop);
		}
		// Before its end is taken: afterwards the number could be another's.
		kill(-Child, SIGKILL);
		int Status = 0;
		HostRetryInterrupted([Child, &Status] { return waitpid(Child, &Status, 0); });
		switch (Result)
		{
		case EChildEnd::TimedOut:
			OutReason = "it did not end in time";
			return Result;
		case EChildEnd::TooMuch:
			OutReason = "it wrote too much";
			return Result;
		case EChildEnd::Stopped:
			OutReason = "it was stopped";
			return Result;
		default:
			break;
		}
		if (WIFSIGNALED(Status))
		{
			OutReason = "it was ended by signal " + std::to_string(WTERMSIG(Status));
			return EChildEnd::Failed;
		}
		if (WEXITSTATUS(Status) != 0)
		{
			OutReason = "it ended with exit code " + std::to_string(WEXITSTATUS(Status));
			return EChildEnd::Failed;
		}
		return Result;
	}
}
