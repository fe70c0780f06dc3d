#include "DesktopProgram.h"

#include "ConnectionChoice.h"
#include "ConversationPrinter.h"
#include "DesktopSession.h"
#include "Environment.h"
#include "FrameLog.h"
#include "Framework/Application/SlateApplication.h"
#include "Framework/Docking/TabManager.h"
#include "HAL/IConsoleManager.h"
#include "HAL/PlatformTime.h"
#include "Host/HostConsole.h"
#include "Host/HostDialogs.h"
#include "Host/HostTasks.h"
#include "Host/TurnOutcome.h"
#include "Misc/FileHelper.h"
#include "Misc/Paths.h"
#include "OpenChat.h"
#include "OutputLog.h"
#include "SimulatedTime.h"
#include "StandardInput.h"
#include "StateDump.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/Docking/SDockTab.h"
#include "Widgets/SVelmoraTab.h"

namespace
{
	/** The exit code of a wrong option or script. */
	constexpr int32 WrongUsage = 2;
	/** An answer that takes longer than this counts as lost. */
	constexpr double AnswerSeconds = 600.0;
	/** An agent that takes no prompt for so long is barred, by an update for one. */
	constexpr double SendSeconds = 10.0;
	/** What is shown has settled after this time: rows have faded in and lists have scrolled. */
	constexpr double SettleSeconds = 0.6;
	/** Between two looks at what the program waits for. */
	constexpr double LookSeconds = 1.0 / 60.0;
}

FDesktopProgram::FDesktopProgram(const FDesktopOptions& InOptions)
	: Options(InOptions)
{
}

FDesktopProgram::~FDesktopProgram() = default;

int32 FDesktopProgram::Fail(const FString& Sentence) const
{
	PrintToStandardError(TEXT("velmora: ") + Sentence + TEXT("\n"));
	return 1;
}

bool FDesktopProgram::SetVariables() const
{
	for (const TPair<FString, FString>& Variable : Options.Variables)
	{
		const FString Complaint = FHostConsole::SetVariable(Variable.Key, Variable.Value, ECVF_SetByCommandline);
		if (!Complaint.IsEmpty())
		{
			Fail(TEXT("--set: ") + Complaint);
			return false;
		}
	}
	return true;
}

void FDesktopProgram::InvokeTab()
{
	FGlobalTabmanager::Get()->TryInvokeTab(FTabId(SVelmoraTab::GetTabName()));
}

void FDesktopProgram::CloseTab()
{
	if (const TSharedPtr<SDockTab> Tab = FGlobalTabmanager::Get()->FindExistingLiveTab(FTabId(SVelmoraTab::GetTabName())))
	{
		Tab->RequestCloseTab();
	}
}

TSharedPtr<const FChatViewModel> FDesktopProgram::GetViewModel() const
{
	return FOpenChat::GetViewModel();
}

bool FDesktopProgram::RunFramesUntil(TFunctionRef<bool()> Test, double Seconds)
{
	FSlateApplication& Application = FSlateApplication::Get();
	const double End = FPlatformTime::Seconds() + Seconds;
	while (!Test())
	{
		if (Application.IsExitRequested() || FPlatformTime::Seconds() >= End)
		{
			return false;
		}
		Application.RunTurn(LookSeconds);
	}
	return true;
}

FString FDesktopProgram::SendPrompt(const FString& Prompt, const FChatViewModel& ViewModel, FConversationPrinter& Printer)
{
	if (!RunFramesUntil([&ViewModel]() { return ViewModel.CanSendMessage(); }, SendSeconds))
	{
		return FString::Printf(TEXT("The agent takes no prompt now (%s)."), *ViewModel.GetStatusText());
	}
	// What stands in the conversation by now is not printed again.
	Printer.Begin(ViewModel.GetMessages());
	const int32 CountBefore = ViewModel.GetMessageCount();
	FPromptBox::TypeAndSend(Prompt);
	return ViewModel.GetMessageCount() == CountBefore ? FString(TEXT("The prompt was not sent; it still stands in the box.")) : FString();
}

FString FDesktopProgram::Answer(const FString& Prompt)
{
	const TSharedPtr<const FChatViewModel> ViewModel = GetViewModel();
	if (!ViewModel)
	{
		return TEXT("There is no agent to ask: the project cannot be worked on.");
	}
	// 1. Send, when the agent takes it.
	FConversationPrinter Printer;
	if (const FString Complaint = SendPrompt(Prompt, *ViewModel, Printer); !Complaint.IsEmpty())
	{
		return Complaint;
	}

	// 2. Print what comes, until the turn is over.
	const auto HasEnded = [&]()
	{
		const bool bIsOver = !ViewModel->IsBusy();
		if (bIsOver)
		{
			FPromptBox::ShowWaitingMessages();
		}
		Printer.PrintNew(ViewModel->GetMessages());
		return bIsOver;
	};
	if (!RunFramesUntil(HasEnded, AnswerSeconds))
	{
		return TEXT("No answer came before the program was to end.");
	}

	// 3. A turn that failed, that did not do what was asked or that said nothing is a failure of the run.
	if (const FString& Why = Velmora::FTurnOutcome::GetFailure(); !Why.IsEmpty())
	{
		return Why;
	}
	if (!Printer.GetFailure().IsEmpty())
	{
		return Printer.GetFailure();
	}
	return Printer.HasAnswer() ? FString() : FString::Printf(TEXT("The turn ended without an answer (%s)."), *ViewModel->GetStatusText());
}

bool FDesktopProgram::WriteDump(const FString& File)
{
	const FString Path = MakeAbsolute(File);
	// A misspelt folder is told, not made.
	return FPaths::DirectoryExists(FPaths::GetPath(Path)) &&
		FFileHelper::SaveStringToFile(FStateDump::Make(GetViewModel().Get()), *Path, FFileHelper::EEncodingOptions::ForceUTF8WithoutBOM);
}

bool FDesktopProgram::WriteScreenshot(const FString& File)
{
	return Session->GetWindow().SaveScreenshot(MakeAbsolute(File));
}

bool FDesktopProgram::WriteOutputs()
{
	const bool bScreenshot = !Options.ScreenshotFile.IsEmpty();
	const bool bDump = !Options.DumpFile.IsEmpty();
	if (!bScreenshot && !bDump)
	{
		return true;
	}
	// Rows fade in; a picture of the first frame would show half of them.
	const double End = FPlatformTime::Seconds() + SettleSeconds;
	RunFramesUntil([End]() { return FPlatformTime::Seconds() >= End; }, SettleSeconds * 2.0);
	bool bWritten = true;
	if (bScreenshot && !WriteScreenshot(Options.ScreenshotFile))
	{
		Fail(FString::Printf(TEXT("The picture could not be written to \"%s\"."), *Options.ScreenshotFile));
		bWritten = false;
	}
	if (bDump && !WriteDump(Options.DumpFile))
	{
		Fail(FString::Printf(TEXT("The dump could not be written to \"%s\"."), *Options.DumpFile));
		bWritten = false;
	}
	return bWritten;
}

bool FDesktopProgram::LoadScript()
{
	TArray<FString> Lines;
	if (!FFileHelper::LoadFileToStringArray(Lines, *MakeAbsolute(Options.ScriptFile)))
	{
		Fail(FString::Printf(TEXT("The script \"%s\" could not be read."), *Options.ScriptFile));
		return false;
	}
	TArray<FScriptStep> Steps;
	int32 Line = 0;
	const FString Complaint = FScriptFile::Parse(Lines, Steps, Line);
	if (!Complaint.IsEmpty())
	{
		Fail(FString::Printf(TEXT("script %s:%d: %s"), *Options.ScriptFile, Line, *Complaint));
		return false;
	}
	Script = MakeUnique<FScriptRunner>(Options.ScriptFile, MoveTemp(Steps), static_cast<IScriptHost&>(*this));
	return true;
}

int32 FDesktopProgram::RunScript()
{
	// Dialogs wait for a step while a script runs, instead of taking No at once.
	FHostDialogs::SetAnswering(true);
	bScriptRuns = true;
	RunFramesUntil([this]() { return Script->IsFinished(); }, 1e9);
	bScriptRuns = false;
	FHostDialogs::SetAnswering(false);
	if (!Script->IsFinished())
	{
		return Fail(TEXT("The window was closed before the script came to its end."));
	}
	if (!Script->GetError().IsEmpty())
	{
		Fail(Script->GetError());
		return WrongUsage;
	}
	return 0;
}

int32 FDesktopProgram::RunActions()
{
	// What follows is done even if the prompt failed: its picture and dump say why.
	int32 Result = Options.WritesOnly() && FStandardInput::IsPiped() ? RunLines() : 0;
	if (Options.Prompt.IsSet())
	{
		Failure = Answer(Options.Prompt.GetValue());
		Result = Failure.IsEmpty() ? 0 : 1;
	}
	if (Script)
	{
		Result = FMath::Max(Result, RunScript());
	}
	return WriteOutputs() ? Result : FMath::Max(Result, 1);
}

int32 FDesktopProgram::RunWindow()
{
	// Opened before the first frame: what cannot be written is reported while somebody still reads the terminal.
	FFrameLog Frames;
	if (!Options.FramesFile.IsEmpty() && !Frames.Open(MakeAbsolute(Options.FramesFile)))
	{
		return Fail(FString::Printf(TEXT("The frames could not be written to \"%s\"."), *Options.FramesFile));
	}
	FSlateApplication& Application = FSlateApplication::Get();
	while (!Application.IsExitRequested())
	{
		if (Application.RunTurn())
		{
			Frames.NoteFrame();
		}
	}
	return 0;
}

int32 FDesktopProgram::RunLines()
{
	// One prompt after the other: what comes meanwhile waits in the pipe.
	FStandardInput Input;
	FString Line;
	bool bAllAnswered = true;
	bool bAtEnd = false;
	while (!bAtEnd)
	{
		const bool bGotLine = RunFramesUntil([&]() { return Input.TakeLine(Line, bAtEnd) || bAtEnd; }, 1e9);
		if (!bGotLine || (bAtEnd && Line.IsEmpty()))
		{
			break;
		}
		if (!Line.TrimStartAndEnd().IsEmpty())
		{
			// One that was refused stands in the box still, and would go out in place of this one.
			FPromptBox::Clear();
			if (const FString Why = Answer(Line); !Why.IsEmpty())
			{
				Fail(Why);
				bAllAnswered = false;
			}
		}
		Line.Reset();
	}
	return bAllAnswered ? 0 : 1;
}

int32 FDesktopProgram::Run()
{
	// 1. What can be wrong about the command line is reported before anything is touched.
	FHostTasks::SetGameThread();
	const TSharedRef<FOutputLog> Log = MakeShared<FOutputLog>();
	if (!SetVariables())
	{
		return WrongUsage;
	}
	if (Options.bListConnections || Options.bListModels)
	{
		return ConnectionChoice::List(Options);
	}
	if (!Options.ScriptFile.IsEmpty() && !LoadScript())
	{
		return WrongUsage;
	}
	// Takes the key's variable out of the environment, so it comes before any thread or child.
	if (const FString Complaint = ConnectionChoice::Select(Options); !Complaint.IsEmpty())
	{
		Fail(Complaint);
		return WrongUsage;
	}

	// 2. Up, work, down: the session ends itself, whatever became of its start.
	if (Options.Now.IsSet())
	{
		FSimulatedTime::Begin(Options.Now.GetValue());
	}
	Session = MakeUnique<FDesktopSession>(Options, Log);
	const FString Complaint = Session->Start(
		[this]
		{
			if (bScriptRuns)
			{
				Script->OnFrame();
			}
		});
	const int32 Result = !Complaint.IsEmpty() ? Fail(Complaint)
		: Options.HasAction()				  ? RunActions()
		: Session->HasDisplay()				  ? RunWindow()
											  : RunLines();
	Session.Reset();
	return Failure.IsEmpty() ? Result : FMath::Max(Result, Fail(Failure));
}
