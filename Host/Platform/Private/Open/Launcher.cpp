#include "Open/Launcher.h"

#include "Async/TaskGraphInterfaces.h"
#include "Host/HostFileNames.h"
#include "Misc/MessageDialog.h"
#include "Misc/Paths.h"
#include "Open/EditorCommand.h"
#include "Open/EditorLine.h"
#include "PlatformState.h"

#include <algorithm>
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
#include <vector>

// Hands addresses and files to the desktop. What to open comes from texts of models and from project files, so it is
// judged before (OpenRules), the user is asked where opening might run something, and nothing passes a shell: the target
// is one argument of one program. The opener is waited for on a thread of its own, since it may live as long as what it
// opened.

#define LOCTEXT_NAMESPACE "HostLauncher"

namespace
{
	constexpr const char* DesktopOpener = "xdg-open";

	/** Empty when there is none, or it cannot be read. */
	std::string ReadBeginning(const std::string& Path)
	{
		// Non-blocking, so that a pipe of that name does not wait for its writer.
		const int File = open(Path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
		char Start[8192];
		const ssize_t Count = File < 0 ? 0 : read(File, Start, sizeof(Start));
		if (File >= 0)
		{
			close(File);
		}
		return std::string(Start, static_cast<size_t>(Count > 0 ? Count : 0));
	}

	/** Where a program of that name would be found. */
	bool IsInstalled(const std::string& Program)
	{
		const char* const Value = std::getenv("PATH");
		const std::string Folders = Value ? Value : "";
		for (size_t Begin = 0; Begin <= Folders.size();)
		{
			const size_t End = std::min(Folders.find(':', Begin), Folders.size());
			if (End > Begin && access((Folders.substr(Begin, End - Begin) + "/" + Program).c_str(), X_OK) == 0)
			{
				return true;
			}
			Begin = End + 1;
		}
		return false;
	}

	// What the rules need to know, read once; links are followed to what would really be opened.
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
		if (S_ISREG(Status.st_mode))
		{
			// Programs and libraries of this system begin so.
			const std::string Start = ReadBeginning(Bytes);
			Facts.bBinaryProgram = Start.starts_with("\177ELF");
			Facts.bText = Start.find('\0') == std::string::npos && access(Bytes.c_str(), R_OK) == 0;
		}
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

	FString GetProgramName(const FEditorCommand& Editor)
	{
		return OpenRules::MakeReadable(HostFileNameFromBytes(Editor.Words[0]));
	}

	FString DescribeFailedExit(const FEditorCommand& Editor, int Code)
	{
		if (Editor.Words.empty())
		{
			return DescribeExitCode(Code);
		}
		return FString::Printf(TEXT("the editor \"%s\" ended with code %d. %s should name an editor with a window of its own"),
			*GetProgramName(Editor), Code, *HostFileNameFromBytes(Editor.Variable));
	}

	/** Waits for the opener on a thread of its own: it may run as long as the program that it started. */
	void WaitForOpener(pid_t Process, const FString& Target, const FEditorCommand& Editor)
	{
		std::thread(
			[Process, Target, Editor]
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
					PlatformState::ReportProblem(FString::Printf(TEXT("%s could not be opened: %s."), *OpenRules::MakeReadable(Target),
						*DescribeFailedExit(Editor, WEXITSTATUS(Status))));
				}
			})
			.detach();
	}
}

namespace
{
	/** What it was about stands in front, unless the sentence names it. */
	FString NameTarget(const FString& Target, const FString& Sentence)
	{
		const FString Readable = OpenRules::MakeReadable(Target);
		return Sentence.Contains(Readable, ESearchCase::CaseSensitive) ? Sentence : Readable + TEXT(": ") + Sentence;
	}
}

void FLauncher::Install(bool bStartNothing)
{
	FHostServices::SetLaunchHook(
		[bStartNothing](const FHostLaunchRequest& Request, FString& OutError) { return Launch(Request, bStartNothing, OutError); });
}

// 1. Judge. 2. Refuse, or ask. 3. Start, and report what went wrong.
bool FLauncher::Launch(const FHostLaunchRequest& Given, bool bStartNothing, FString& OutError)
{
	FHostLaunchRequest Request = Given;
	int32 Line = 0;
	if (Given.Kind == FHostLaunchRequest::EKind::Url && OpenRules::ReadSourceLink(Given.Target, Request.Target, Line))
	{
		Request.Kind = FHostLaunchRequest::EKind::Source;
	}
	const bool bIsFile = Request.Kind != FHostLaunchRequest::EKind::Url;
	// The rules look at what was asked for, the opener gets a full path.
	const FString Target = bIsFile ? FPaths::ConvertRelativePathToFull(Request.Target) : Request.Target;
	const FOpenFileFacts Facts = bIsFile ? ReadFacts(Target) : FOpenFileFacts();
	const FEditorCommand Editor = ChooseEditor(Request, Facts);
	const bool bIsViewed = bIsFile && Facts.bText && Editor.Words.empty() && IsInGameThread() && PlatformState::HasSourceViewer() &&
		!bStartNothing && !IsInstalled(DesktopOpener);
	FOpenDecision Decision = bIsFile ? JudgeFile(Request, Facts, Editor, bIsViewed) : OpenRules::JudgeUrl(Target);
	if (Decision.Verdict != EOpenVerdict::Refuse && !Request.Parameters.IsEmpty())
	{
		Decision = FOpenDecision{ EOpenVerdict::Refuse, TEXT("Parameters cannot be passed on to the program that opens it.") };
	}
	if (Decision.Verdict == EOpenVerdict::Refuse)
	{
		OutError = NameTarget(Request.Target, Decision.Reason);
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
		const FString Place = Line > 0 ? FString::Printf(TEXT("%s:%d"), *Target, Line) : Target;
		std::fprintf(stderr, "Would open: %s\n", TCHAR_TO_UTF8(*OpenRules::MakeReadable(Place)));
		return true;
	}
	if (bIsViewed)
	{
		PlatformState::ShowSource(Target, Line);
		return true;
	}
	if (!Start(Target, Line, Editor, OutError))
	{
		OutError = NameTarget(Target, OutError);
		PlatformState::ReportProblem(OutError);
		return false;
	}
	return true;
}

// A source goes to whatever editor the user has named, and any other text to one that is known to have a window.
FEditorCommand FLauncher::ChooseEditor(const FHostLaunchRequest& Request, const FOpenFileFacts& Facts)
{
	const bool bIsSource = Request.Kind == FHostLaunchRequest::EKind::Source;
	const bool bIsText = Request.Kind == FHostLaunchRequest::EKind::File && OpenRules::IsForEditor(Request.Target, Facts);
	const FEditorCommand Editor = bIsSource || bIsText ? FEditorCommand::ReadEnvironment() : FEditorCommand();
	const bool bFits = bIsSource || (Editor.bReadable && Editor.Variable == "VISUAL" && EditorLine::HasWindow(Editor.Words));
	return bFits ? Editor : FEditorCommand();
}

FOpenDecision FLauncher::JudgeFile(
	const FHostLaunchRequest& Request, const FOpenFileFacts& Facts, const FEditorCommand& Editor, bool bIsViewed)
{
	FOpenDecision Decision = OpenRules::JudgeFile(Request.Target, Facts);
	if (!Editor.bReadable)
	{
		Decision = FOpenDecision{ EOpenVerdict::Refuse,
			FString::Printf(
				TEXT("The editor cannot be started: in %s a quotation mark is not closed."), *HostFileNameFromBytes(Editor.Variable)) };
	}
	else if (Decision.Verdict == EOpenVerdict::Ask && (bIsViewed || !Editor.Words.empty()))
	{
		// An editor shows what could be run, it does not run it.
		Decision = FOpenDecision{ EOpenVerdict::Open, FString() };
	}
	return Decision;
}

// Background threads cannot ask, and what was not confirmed stays shut.
bool FLauncher::AskUser(const FHostLaunchRequest& Request, const FString& Target, const FString& Reason)
{
	if (!IsInGameThread())
	{
		return false;
	}
	const FText Message = FText::Format(
		LOCTEXT("OpenQuestion", "Open this?\n\n{0}\n\n{1}"), FText::FromString(OpenRules::MakeReadable(Target)), FText::FromString(Reason));
	const FText Title = Request.Kind == FHostLaunchRequest::EKind::Url ? LOCTEXT("OpenAddressTitle", "Open Address")
																	   : LOCTEXT("OpenFileTitle", "Open File");
	return FMessageDialog::Open(EAppMsgCategory::Warning, EAppMsgType::YesNo, EAppReturnType::No, Message, Title) == EAppReturnType::Yes;
}

// 1. The command: the user's editor for a place in a source, else the desktop's opener. 2. No terminal, no descriptors,
// plain signals. 3. The process, and words for each way in which it can fail.
bool FLauncher::Start(const FString& Target, int32 Line, const FEditorCommand& Editor, FString& OutError)
{
	std::vector<std::string> Words = Editor.Words;
	if (Words.empty())
	{
		Words.push_back(DesktopOpener);
	}
	EditorLine::Append(Words, HostFileNameToBytes(Target), Line);
	std::vector<char*> Arguments;
	for (std::string& Word : Words)
	{
		Arguments.push_back(Word.data());
	}
	Arguments.push_back(nullptr);

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
	sigaddset(&Signals, SIGXFSZ);
	sigaddset(&Signals, SIGINT);
	sigaddset(&Signals, SIGTERM);
	posix_spawnattr_setsigdefault(&Attributes, &Signals);

	pid_t Process = 0;
	const int Failure = posix_spawnp(&Process, Arguments[0], &Actions, &Attributes, Arguments.data(), environ);
	posix_spawnattr_destroy(&Attributes);
	posix_spawn_file_actions_destroy(&Actions);
	if (Failure != 0 && !Editor.Words.empty())
	{
		OutError = FString::Printf(TEXT("The editor \"%s\", named by %s, could not be started: %s."), *GetProgramName(Editor),
			*HostFileNameFromBytes(Editor.Variable), UTF8_TO_TCHAR(std::strerror(Failure)));
		return false;
	}
	if (Failure != 0)
	{
		OutError = Failure == ENOENT
			? FString(TEXT("Nothing can be opened, since xdg-open is not installed. Please install the package xdg-utils."))
			: FString::Printf(TEXT("The program that opens addresses could not be started: %s."), UTF8_TO_TCHAR(std::strerror(Failure)));
		return false;
	}
	WaitForOpener(Process, Target, Editor);
	return true;
}

#undef LOCTEXT_NAMESPACE
