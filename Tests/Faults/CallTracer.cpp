// Runs a program and counts its system calls on files below some folders that change, open or read them, over all of its threads in the
// order in which they come. At a chosen one it kills the program or lets the call fail. strace can inject, too, but counts for each thread
// and each kind of call by itself, so the calls of one turn's worker cannot be told from those of another.
//
//   CallTracer [--below FOLDER]… [--log FILE] [--changes] [--since FILE] [--kill N] [--fail ERROR --from N [--to M] [--until FILE]] --
//   PROGRAM …
//
// --changes leaves out openings for reading, and reading itself. --since and --until are files: it counts when the one exists, and no more
// when the other does. The log has a line per call: number, thread, call, the errors that it can give, path. A call that cannot give the
// error is not failed. Ends with the exit code of the program, or 128 and the signal; 77 where the system lets nobody trace; 2 for a wrong
// call.

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/openat2.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
	constexpr int WrongUsage = 2;
	constexpr int Skipped = 77;

#if defined(__x86_64__)
	/** What a call does, and so which errors it can give. */
	enum class EKind
	{
		Open,
		Read,
		Write,
		Flush,
		Make,
		Remove
	};

	/** Where a call says what it works on: numbers of arguments, -1 for none. */
	struct FTracedCall
	{
		EKind Kind;
		long Number;
		const char* Name;
		int Folder;
		int Path;
		int File;
		/** The argument with the flags of an opening. */
		int Flags = -1;
	};

	constexpr FTracedCall TracedCalls[] = {
		{ EKind::Open, SYS_open, "open", -1, 0, -1, 1 },
		{ EKind::Open, SYS_creat, "creat", -1, 0, -1 },
		{ EKind::Open, SYS_openat, "openat", 0, 1, -1, 2 },
		{ EKind::Open, SYS_openat2, "openat2", 0, 1, -1, 2 },
		{ EKind::Read, SYS_read, "read", -1, -1, 0 },
		{ EKind::Read, SYS_readv, "readv", -1, -1, 0 },
		{ EKind::Read, SYS_pread64, "pread64", -1, -1, 0 },
		{ EKind::Read, SYS_preadv, "preadv", -1, -1, 0 },
		{ EKind::Write, SYS_write, "write", -1, -1, 0 },
		{ EKind::Write, SYS_writev, "writev", -1, -1, 0 },
		{ EKind::Write, SYS_pwrite64, "pwrite64", -1, -1, 0 },
		{ EKind::Write, SYS_pwritev, "pwritev", -1, -1, 0 },
		{ EKind::Flush, SYS_fsync, "fsync", -1, -1, 0 },
		{ EKind::Flush, SYS_fdatasync, "fdatasync", -1, -1, 0 },
		{ EKind::Flush, SYS_syncfs, "syncfs", -1, -1, 0 },
		{ EKind::Write, SYS_ftruncate, "ftruncate", -1, -1, 0 },
		{ EKind::Write, SYS_truncate, "truncate", -1, 0, -1 },
		{ EKind::Write, SYS_fallocate, "fallocate", -1, -1, 0 },
		{ EKind::Make, SYS_rename, "rename", -1, 1, -1 },
		{ EKind::Make, SYS_renameat, "renameat", 2, 3, -1 },
		{ EKind::Make, SYS_renameat2, "renameat2", 2, 3, -1 },
		{ EKind::Make, SYS_link, "link", -1, 1, -1 },
		{ EKind::Make, SYS_linkat, "linkat", 2, 3, -1 },
		{ EKind::Make, SYS_symlink, "symlink", -1, 1, -1 },
		{ EKind::Make, SYS_symlinkat, "symlinkat", 1, 2, -1 },
		{ EKind::Remove, SYS_unlink, "unlink", -1, 0, -1 },
		{ EKind::Remove, SYS_unlinkat, "unlinkat", 0, 1, -1 },
		{ EKind::Make, SYS_mkdir, "mkdir", -1, 0, -1 },
		{ EKind::Make, SYS_mkdirat, "mkdirat", 0, 1, -1 },
		{ EKind::Remove, SYS_rmdir, "rmdir", -1, 0, -1 },
		{ EKind::Remove, SYS_chmod, "chmod", -1, 0, -1 },
		{ EKind::Remove, SYS_fchmod, "fchmod", -1, -1, 0 },
		{ EKind::Remove, SYS_fchmodat, "fchmodat", 0, 1, -1 },
	};

	struct FErrorName
	{
		const char* Name;
		int Number;
	};

	constexpr FErrorName ErrorNames[] = { { "ENOSPC", ENOSPC }, { "EIO", EIO }, { "EACCES", EACCES }, { "EROFS", EROFS },
		{ "EMFILE", EMFILE }, { "EINTR", EINTR } };

	struct FOptions
	{
		std::vector<std::string> Folders;
		const char* Log = nullptr;
		const char* Since = nullptr;
		const char* Until = nullptr;
		long Kill = 0;
		long From = 0;
		long To = 0;
		int Error = 0;
		bool bChangesOnly = false;
		char** Program = nullptr;
	};

	bool ParseOptions(int Count, char** Arguments, FOptions& Out)
	{
		for (int Index = 1; Index < Count; ++Index)
		{
			const std::string Name = Arguments[Index];
			if (Name == "--")
			{
				Out.Program = Arguments + Index + 1;
				break;
			}
			if (Name == "--changes")
			{
				Out.bChangesOnly = true;
				continue;
			}
			if (Index + 1 >= Count)
			{
				return false;
			}
			const char* const Value = Arguments[++Index];
			if (Name == "--below")
			{
				Out.Folders.emplace_back(Value);
			}
			else if (Name == "--log")
			{
				Out.Log = Value;
			}
			else if (Name == "--since")
			{
				Out.Since = Value;
			}
			else if (Name == "--until")
			{
				Out.Until = Value;
			}
			else if (Name == "--kill")
			{
				Out.Kill = atol(Value);
			}
			else if (Name == "--from")
			{
				Out.From = atol(Value);
			}
			else if (Name == "--to")
			{
				Out.To = atol(Value);
			}
			else if (Name == "--fail")
			{
				for (const FErrorName& Known : ErrorNames)
				{
					Out.Error = strcmp(Known.Name, Value) == 0 ? Known.Number : Out.Error;
				}
				if (Out.Error == 0)
				{
					return false;
				}
			}
			else
			{
				return false;
			}
		}
		return Out.Program && Out.Program[0];
	}

	/** From here on the system asks the tracer at each of the calls; all others run at full speed. */
	bool InstallFilter()
	{
		std::vector<sock_filter> Filter;
		Filter.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)));
		for (const FTracedCall& Call : TracedCalls)
		{
			Filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(Call.Number), 0, 1));
			Filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRACE));
		}
		Filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
		const sock_fprog Program = { static_cast<unsigned short>(Filter.size()), Filter.data() };
		return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &Program) == 0;
	}

	std::string ReadLink(const std::string& Link)
	{
		char Target[4096];
		const ssize_t Length = readlink(Link.c_str(), Target, sizeof(Target));
		return Length > 0 ? std::string(Target, static_cast<size_t>(Length)) : std::string();
	}

	/** Bytes of the program's memory; fewer where its memory ends. */
	size_t ReadMemory(pid_t Thread, unsigned long long Address, void* Out, size_t Size)
	{
		// Not across the end of a page that may be the last one.
		const size_t PageRest = 4096 - Address % 4096;
		size_t Done = 0;
		for (size_t Part = Size < PageRest ? Size : PageRest; Done < Size && Part > 0; Part = Size - Done)
		{
			const iovec Here = { static_cast<char*>(Out) + Done, Part };
			const iovec There = { reinterpret_cast<void*>(Address + Done), Part };
			const ssize_t Count = process_vm_readv(Thread, &Here, 1, &There, 1, 0);
			if (Count <= 0)
			{
				break;
			}
			Done += static_cast<size_t>(Count);
		}
		return Done;
	}

	class FTracer
	{
	public:
		explicit FTracer(const FOptions& InOptions)
			: Options(InOptions)
			, Log(InOptions.Log ? fopen(InOptions.Log, "we") : nullptr)
		{
		}

		~FTracer()
		{
			if (Log)
			{
				fclose(Log);
			}
		}

		/** Until the program has ended. Returns its exit code. */
		int Run(pid_t InProgram)
		{
			Program = InProgram;
			int Result = 1;
			for (int Status = 0;;)
			{
				const pid_t Thread = waitpid(-1, &Status, __WALL);
				if (Thread < 0 && errno == EINTR)
				{
					continue;
				}
				if (Thread < 0)
				{
					return Result;
				}
				if (WIFEXITED(Status) || WIFSIGNALED(Status))
				{
					Result = Thread != Program ? Result : WIFEXITED(Status) ? WEXITSTATUS(Status) : 128 + WTERMSIG(Status);
					continue;
				}
				const int Event = Status >> 16;
				const int Signal = WSTOPSIG(Status);
				if (Event == PTRACE_EVENT_SECCOMP)
				{
					OnCall(Thread);
				}
				const bool bIsGroupStop = Event == PTRACE_EVENT_STOP && Signal != SIGTRAP;
				ptrace(bIsGroupStop ? PTRACE_LISTEN : PTRACE_CONT, Thread, nullptr, Event == 0 ? Signal : 0);
			}
		}

	private:
		const FOptions& Options;
		FILE* const Log;
		pid_t Program = 0;
		long Count = 0;

		std::string GetPath(pid_t Thread, const FTracedCall& Call, const unsigned long long* Arguments) const
		{
			const std::string Process = "/proc/" + std::to_string(Thread);
			if (Call.File >= 0)
			{
				return ReadLink(Process + "/fd/" + std::to_string(static_cast<int>(Arguments[Call.File])));
			}
			char Buffer[4096];
			const size_t Length = ReadMemory(Thread, Arguments[Call.Path], Buffer, sizeof(Buffer));
			const std::string Path(Buffer, strnlen(Buffer, Length));
			if (Path.empty() || Path[0] == '/')
			{
				return Path;
			}
			const int Folder = Call.Folder >= 0 ? static_cast<int>(Arguments[Call.Folder]) : AT_FDCWD;
			return ReadLink(Process + (Folder == AT_FDCWD ? std::string("/cwd") : "/fd/" + std::to_string(Folder))) + '/' + Path;
		}

		bool IsBelow(const std::string& Path) const
		{
			for (const std::string& Folder : Options.Folders)
			{
				if (Path.compare(0, Folder.size(), Folder) == 0 && (Path.size() == Folder.size() || Path[Folder.size()] == '/'))
				{
					return true;
				}
			}
			return false;
		}

		/** Whether an opening may change what is there; reading does not, everything else does. */
		bool Changes(pid_t Thread, const FTracedCall& Call, const unsigned long long* Arguments) const
		{
			if (Call.Flags < 0)
			{
				return Call.Kind != EKind::Read;
			}
			unsigned long long Flags = Arguments[Call.Flags];
			if (Call.Number == SYS_openat2)
			{
				open_how How = {};
				ReadMemory(Thread, Arguments[Call.Flags], &How, sizeof(How));
				Flags = How.flags;
			}
			return (Flags & (O_CREAT | O_TRUNC)) != 0;
		}

		static bool CanGive(const FTracedCall& Call, bool bChanges, int Error)
		{
			switch (Error)
			{
			case ENOSPC:
				return bChanges && Call.Kind != EKind::Remove;
			case EACCES:
				return Call.Kind != EKind::Read && Call.Kind != EKind::Write && Call.Kind != EKind::Flush;
			case EINTR:
				return Call.Kind != EKind::Make && Call.Kind != EKind::Remove;
			case EROFS:
				return bChanges && Call.Kind != EKind::Write && Call.Kind != EKind::Flush;
			case EMFILE:
				return Call.Kind == EKind::Open;
			default:
				return true;
			}
		}

		bool IsInReach() const { return Options.Error != 0 && Count >= Options.From && (Options.To == 0 || Count <= Options.To); }

		void WriteLog(pid_t Thread, const FTracedCall& Call, bool bChanges, const std::string& Path, bool bFails) const
		{
			std::string Errors;
			for (const FErrorName& Known : ErrorNames)
			{
				Errors += CanGive(Call, bChanges, Known.Number) ? (Errors.empty() ? "" : ",") + std::string(Known.Name) : std::string();
			}
			fprintf(Log, "%ld %s %s %s %s%s\n", Count, Thread == Program ? "main" : "worker", Call.Name, Errors.c_str(), Path.c_str(),
				bFails ? " (failed)" : "");
			fflush(Log);
		}

		void OnCall(pid_t Thread)
		{
			__ptrace_syscall_info Info = {};
			if (ptrace(PTRACE_GET_SYSCALL_INFO, Thread, sizeof(Info), &Info) <= 0)
			{
				return;
			}
			for (const FTracedCall& Call : TracedCalls)
			{
				if (Call.Number != static_cast<long>(Info.seccomp.nr))
				{
					continue;
				}
				const auto* const Arguments = reinterpret_cast<const unsigned long long*>(Info.seccomp.args);
				const std::string Path = GetPath(Thread, Call, Arguments);
				const bool bChanges = Changes(Thread, Call, Arguments);
				const bool bIsTime =
					(!Options.Since || access(Options.Since, F_OK) == 0) && (!Options.Until || access(Options.Until, F_OK) != 0);
				if (!IsBelow(Path) || (!bChanges && Options.bChangesOnly) || !bIsTime)
				{
					return;
				}
				++Count;
				const bool bFails = IsInReach() && CanGive(Call, bChanges, Options.Error);
				if (Log)
				{
					WriteLog(Thread, Call, bChanges, Path, bFails);
				}
				if (Count == Options.Kill)
				{
					kill(Program, SIGKILL);
				}
				else if (bFails)
				{
					// No such call, and this is what it has returned.
					user_regs_struct Registers;
					ptrace(PTRACE_GETREGS, Thread, nullptr, &Registers);
					Registers.orig_rax = static_cast<unsigned long long>(-1);
					Registers.rax = static_cast<unsigned long long>(-Options.Error);
					ptrace(PTRACE_SETREGS, Thread, nullptr, &Registers);
				}
				return;
			}
		}
	};

	[[noreturn]] void StartProgram(char** Program, int Gate)
	{
		// The tracer opens the gate when it holds on to this process.
		char Byte;
		if (read(Gate, &Byte, 1) != 1 || !InstallFilter())
		{
			_exit(Skipped);
		}
		execvp(Program[0], Program);
		perror(Program[0]);
		_exit(127);
	}
#endif
}

int main(int Count, char** Arguments)
{
#if defined(__x86_64__)
	FOptions Options;
	if (!ParseOptions(Count, Arguments, Options))
	{
		fputs("CallTracer: wrong options\n", stderr);
		return WrongUsage;
	}
	int Gate[2];
	if (pipe2(Gate, O_CLOEXEC) != 0)
	{
		perror("CallTracer");
		return 1;
	}
	const pid_t Program = fork();
	if (Program == 0)
	{
		close(Gate[1]);
		StartProgram(Options.Program, Gate[0]);
	}
	constexpr long Wanted =
		PTRACE_O_TRACESECCOMP | PTRACE_O_TRACECLONE | PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK | PTRACE_O_TRACEEXEC | PTRACE_O_EXITKILL;
	if (Program < 0 || ptrace(PTRACE_SEIZE, Program, nullptr, Wanted) != 0)
	{
		fprintf(stderr, "CallTracer: tracing is refused here: %s\n", strerror(errno));
		return Skipped; // The gate closes with this process, and the program does not start.
	}
	if (write(Gate[1], "", 1) != 1)
	{
		return Skipped;
	}
	FTracer Tracer(Options);
	return Tracer.Run(Program);
#else
	fputs("CallTracer: knows the calls of x86-64 only\n", stderr);
	return Skipped;
#endif
}
