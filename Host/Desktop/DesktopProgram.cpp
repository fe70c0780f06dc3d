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
#include "Host/HostClock.h"
#include "Host/HostConsole.h"
#include "Host/HostDialogs.h"
#include "Host/HostFileDialogs.h"
#include "Host/HostTasks.h"
#include "Host/TurnOutcome.h"
#include "Misc/FileHelper.h"
#include "Misc/Paths.h"
#include "OpenChat.h"
#include "OutputLog.h"
#include "SessionRecorder.h"
#include "SessionReplay.h"
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

void FDesktopProgram::FocusPrompt()
{
	if (Recorder)
	{
		Recorder->NoteDeed(TEXT("focus"), FString());
	}
	FPromptBox::Focus();
}

void FDesktopProgram::NoteAnswer(const FString& Button)
{
	if (Recorder)
	{
		Recorder->NoteDeed(TEXT("answer"), Button);
	}
}

void FDesktopProgram::InvokeTab()
{
	if (Recorder)
	{
		Recorder->NoteDeed(TEXT("open-tab"), FString());
	}
	FGlobalTabmanager::Get()->TryInvokeTab(FTabId(SVelmoraTab::GetTabName()));
}

void FDesktopProgram::CloseTab()
{
	if (Recorder)
	{
		Recorder->NoteDeed(TEXT("close-tab"), FString());
	}
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
	if (Recorder)
	{
		Recorder->NoteRemark(TEXT("dump ") + File);
	}
	const FString Path = MakeAbsolute(File);
	// A misspelt folder is told, not made.
	return FPaths::DirectoryExists(FPaths::GetPath(Path)) &&
		FFileHelper::SaveStringToFile(FStateDump::Make(GetViewModel().Get()), *Path, FFileHelper::EEncodingOptions::ForceUTF8WithoutBOM);
}

bool FDesktopProgram::WriteScreenshot(const FString& File)
{
	if (Recorder)
	{
		Recorder->NoteRemark(TEXT("screenshot ") + File);
	}
	return Session->GetWindow().SaveScreenshot(MakeAbsolute(File));
}

bool FDesktopProgram::WriteOutputs()
{
	if (Options.ScreenshotFile.IsEmpty() && Options.DumpFile.IsEmpty())
	{
		return true;
	}
	// Rows fade in; a picture of the first frame would show half of them.
	const double End = FPlatformTime::Seconds() + SettleSeconds;
	RunFramesUntil([End]() { return FPlatformTime::Seconds() >= End; }, SettleSeconds * 2.0);
	return WriteOutputsNow();
}

bool FDesktopProgram::WriteOutputsNow()
{
	bool bWritten = true;
	if (!Options.ScreenshotFile.IsEmpty() && !WriteScreenshot(Options.ScreenshotFile))
	{
		Fail(FString::Printf(TEXT("The picture could not be written to \"%s\"."), *Options.ScreenshotFile));
		bWritten = false;
	}
	if (!Options.DumpFile.IsEmpty() && !WriteDump(Options.DumpFile))
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
	FString Why;
	FString EarlierWhy;
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
			Why = Answer(Line);
			if (!Why.IsEmpty())
			{
				Fail(Why);
				EarlierWhy = Why;
			}
		}
		Line.Reset();
	}
	// What later ones have printed must not hide it: the last line says why the run has failed.
	if (Why.IsEmpty() && !EarlierWhy.IsEmpty())
	{
		Failure = TEXT("An earlier prompt failed: ") + EarlierWhy;
	}
	return EarlierWhy.IsEmpty() ? 0 : 1;
}

FString FDesktopProgram::PrepareTape()
{
	if (!Options.ReplayFile.IsEmpty())
	{
		Replay = std::make_shared<FSessionReplay>();
		if (const FString Complaint = Replay->Load(MakeAbsolute(Options.ReplayFile), Options.Version); !Complaint.IsEmpty())
		{
			return Complaint;
		}
		TArray<TPair<FString, FString>> Variables = Replay->GetHead().Variables;
		Variables.Append(Options.Variables);
		Options.Variables = MoveTemp(Variables);
	}
	if (!Options.RecordFile.IsEmpty())
	{
		const std::shared_ptr<FRecordWriter> Writer = std::make_shared<FRecordWriter>(Options.bRecordMasked);
		if (const FString Complaint = Writer->Open(MakeAbsolute(Options.RecordFile)); !Complaint.IsEmpty())
		{
			return Complaint;
		}
		Recorder = std::make_shared<FSessionRecorder>(Writer);
	}
	return FString();
}

void FDesktopProgram::DoAgain(const std::string& Deed, const FString& Subject)
{
	if (Deed == "close-tab")
	{
		CloseTab();
	}
	else if (Deed == "open-tab")
	{
		InvokeTab();
	}
	else if (Deed == "focus")
	{
		FocusPrompt();
	}
	else if (Deed == "answer" && FHostDialogs::GetOpenDialogs().Num() > 0)
	{
		(void)FHostDialogs::AnswerOpenDialog(Subject);
	}
	else if (Deed == "answer" && FHostFileDialogs::GetOpen().IsSet())
	{
		(void)FHostFileDialogs::PressOpen(Subject);
	}
}

int32 FDesktopProgram::RunReplay()
{
	bool bIsAtEnd = false;
	bool bWritten = true;
	const auto AtEnd = [&]
	{
		bIsAtEnd = true;
		Replay->AllowSaves(true);
		bWritten = WriteOutputsNow();
		Replay->AllowSaves(false);
	};
	Replay->GetWindow()->SetUp([this](const std::string& Deed, const FString& Subject) { DoAgain(Deed, Subject); }, AtEnd);
	// Dialogs wait for the answers of the recording.
	FHostDialogs::SetAnswering(true);
	FSlateApplication& Application = FSlateApplication::Get();
	while (!Application.IsExitRequested())
	{
		Application.RunTurn();
	}
	FHostDialogs::SetAnswering(false);
	// A session that its user has closed ends before its recording does.
	if (!bIsAtEnd)
	{
		AtEnd();
	}
	Replay->GetWindow()->SetUp(nullptr, nullptr);
	return bWritten ? 0 : 1;
}

int32 FDesktopProgram::Run()
{
	// 1. What can be wrong about the command line is reported before anything is touched.
	FHostTasks::SetGameThread();
	const TSharedRef<FOutputLog> Log = MakeShared<FOutputLog>();
	if (const FString Complaint = PrepareTape(); !Complaint.IsEmpty())
	{
		Fail(Complaint);
		return WrongUsage;
	}
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
	if (const FString Complaint = Replay ? FString() : ConnectionChoice::Select(Options); !Complaint.IsEmpty())
	{
		Fail(Complaint);
		return WrongUsage;
	}

	// 2. Up, work, down: the session ends itself, whatever became of its start.
	if (Options.Now.IsSet())
	{
		FSimulatedTime::Begin(Options.Now.GetValue());
	}
	else if (Recorder)
	{
		FHostClock::UseHeldTime();
	}
	if (const FString Complaint = Replay ? Replay->Begin() : FString(); !Complaint.IsEmpty())
	{
		return Fail(Complaint);
	}
	Session = MakeUnique<FDesktopSession>(Options, Log);
	Session->SetRecorder(Recorder);
	Session->SetReplay(Replay);
	const FString Complaint = Session->Start(
		[this]
		{
			if (bScriptRuns)
			{
				Script->OnFrame();
			}
		});
	const int32 Result = !Complaint.IsEmpty() ? Fail(Complaint)
		: Replay							  ? RunReplay()
		: Options.HasAction()				  ? RunActions()
		: Session->HasDisplay()				  ? RunWindow()
											  : RunLines();
	Session.Reset();
	return Failure.IsEmpty() ? Result : FMath::Max(Result, Fail(Failure));
}
