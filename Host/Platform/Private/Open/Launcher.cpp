#include "Open/Launcher.h"

#include "Async/TaskGraphInterfaces.h"
#include "Host/HostFileNames.h"
#include "Misc/MessageDialog.h"
#include "Misc/Paths.h"
#include "Open/OpenRules.h"
#include "PlatformState.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#define LOCTEXT_NAMESPACE "HostLauncher"

namespace
{
	FOpenFileFacts ReadFacts(const FString& Path)
	{
		FOpenFileFacts Facts;
		const std::string Bytes = HostFileNameToBytes(Path);
		struct stat Status = {};
		if (Path.IsEmpty() || stat(Bytes.c_str(), &Status) != 0)
		{
			return Facts;
		}
		Facts.bExists = true;
		Facts.bDirectory = S_ISDIR(Status.st_mode);
		Facts.bExecutable = !Facts.bDirectory && (Status.st_mode & (S_IXUSR | S_IXGRP | S_IXOTH)) != 0;
		if (char* Real = realpath(Bytes.c_str(), nullptr))
		{
			Facts.RealPath = HostFileNameFromBytes(Real);
			std::free(Real);
		}
		return Facts;
	}

	/** What the opener's exit code means, in words that follow "because". */
	const TCHAR* DescribeExitCode(int Code)
	{
		switch (Code)
		{
		case 2:
			return TEXT("it was not found");
		case 3:
			return TEXT("no program is set up for it");
		default:
			return TEXT("the program for it reported an error");
		}
	}

	/** Waits for the opener on a thread of its own: it may run as long as the program that it started. */
	void WaitForOpener(pid_t Process, const FString& Target)
	{
		std::thread(
			[Process, Target]
			{
				int Status = 0;
				while (waitpid(Process, &Status, 0) < 0)
				{
					if (errno != EINTR)
					{
						return;
					}
				}
				if (WIFEXITED(Status) && WEXITSTATUS(Status) != 0)
				{
					PlatformState::ReportProblem(FString::Printf(TEXT("%s could not be opened: %s."), *OpenRules::MakeReadable(Target), DescribeExitCode(WEXITSTATUS(Status))));
				}
			})
			.detach();
	}
}

void FLauncher::Install(bool bStartNothing)
{
	FHostServices::SetLaunchHook([bStartNothing](const FHostLaunchRequest& Request, FString& OutError) { return Launch(Request, bStartNothing, OutError); });
}

bool FLauncher::Launch(const FHostLaunchRequest& Request, bool bStartNothing, FString& OutError)
{
	FString Target = Request.Target;
	FOpenDecision Decision;
	if (Request.Kind == FHostLaunchRequest::EKind::Url)
	{
		Decision = OpenRules::JudgeUrl(Target);
	}
	else
	{
		// The rules look at what was asked for, the opener gets a full path.
		const FString FullPath = FPaths::ConvertRelativePathToFull(Target);
		Decision = OpenRules::JudgeFile(Target, ReadFacts(FullPath));
		Target = FullPath;
	}
	if (Decision.Verdict != EOpenVerdict::Refuse && !Request.Parameters.IsEmpty())
	{
		Decision = FOpenDecision{ EOpenVerdict::Refuse, TEXT("Parameters cannot be passed on to the program that opens it.") };
	}
	if (Decision.Verdict == EOpenVerdict::Refuse)
	{
		OutError = Decision.Reason;
		PlatformState::ReportProblem(OutError);
		return false;
	}
	if (Decision.Verdict == EOpenVerdict::Ask && !AskUser(Request, Target, Decision.Reason))
	{
		OutError = TEXT("It was not opened, since that was not confirmed.");
		return false;
	}
	PlatformState::RecordTarget(Target);
	if (bStartNothing)
	{
		std::fprintf(stderr, "Would open: %s\n", TCHAR_TO_UTF8(*OpenRules::MakeReadable(Target)));
		return true;
	}
	if (!Start(Target, OutError))
	{
		PlatformState::ReportProblem(OutError);
		return false;
	}
	return true;
}

bool FLauncher::AskUser(const FHostLaunchRequest& Request, const FString& Target, const FString& Reason)
{
	if (!IsInGameThread())
	{
		return false;
	}
	const FText Message = FText::Format(LOCTEXT("OpenQuestion", "Open this?\n\n{0}\n\n{1}"), FText::FromString(OpenRules::MakeReadable(Target)), FText::FromString(Reason));
	const FText Title = Request.Kind == FHostLaunchRequest::EKind::Url ? LOCTEXT("OpenAddressTitle", "Open Address") : LOCTEXT("OpenFileTitle", "Open File");
	return FMessageDialog::Open(EAppMsgCategory::Warning, EAppMsgType::YesNo, EAppReturnType::No, Message, Title) == EAppReturnType::Yes;
}

bool FLauncher::Start(const FString& Target, FString& OutError)
{
	std::string Program = "xdg-open";
	std::string Argument = HostFileNameToBytes(Target);
	char* const Arguments[] = { Program.data(), Argument.data(), nullptr };

	posix_spawn_file_actions_t Actions;
	posix_spawn_file_actions_init(&Actions);
	posix_spawn_file_actions_addopen(&Actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
	posix_spawn_file_actions_addopen(&Actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
	posix_spawn_file_actions_addopen(&Actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
	posix_spawn_file_actions_addclosefrom_np(&Actions, STDERR_FILENO + 1);
	posix_spawnattr_t Attributes;
	posix_spawnattr_init(&Attributes);
	// A session of its own: the browser outlives this program, and Ctrl+C in its terminal.
	posix_spawnattr_setflags(&Attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
	sigset_t Signals;
	sigemptyset(&Signals);
	posix_spawnattr_setsigmask(&Attributes, &Signals);
	sigaddset(&Signals, SIGPIPE);
	sigaddset(&Signals, SIGINT);
	sigaddset(&Signals, SIGTERM);
	posix_spawnattr_setsigdefault(&Attributes, &Signals);

	pid_t Process = 0;
	const int Failure = posix_spawnp(&Process, Program.c_str(), &Actions, &Attributes, Arguments, environ);
	posix_spawnattr_destroy(&Attributes);
	posix_spawn_file_actions_destroy(&Actions);
	if (Failure != 0)
	{
		OutError = Failure == ENOENT ? FString(TEXT("Nothing can be opened, since xdg-open is not installed. Please install the package xdg-utils."))
									 : FString::Printf(TEXT("The program that opens addresses could not be started: %s."), UTF8_TO_TCHAR(std::strerror(Failure)));
		return false;
	}
	WaitForOpener(Process, Target);
	return true;
}

#undef LOCTEXT_NAMESPACE
