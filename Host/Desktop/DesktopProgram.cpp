#include "DesktopProgram.h"

#include "Async/Async.h"
#include "ConnectionChoice.h"
#include "ConversationPrinter.h"
#include "CodeIntel/CodeIntelIndexManager.h"
#include "EditorServices.h"
#include "DraftKeeper.h"
#include "FrameLog.h"
#include "Framework/Application/SlateApplication.h"
#include "Framework/Docking/TabManager.h"
#include "HAL/IConsoleManager.h"
#include "HAL/PlatformProcess.h"
#include "HAL/PlatformTime.h"
#include "Host/BuiltInAgentOptions.h"
#include "Host/CodeIndexControl.h"
#include "Host/HostAppStyle.h"
#include "Host/HostAtomicFile.h"
#include "Host/HostDialogs.h"
#include "Host/HostConsole.h"
#include "Host/HostIniStore.h"
#include "Host/HostLevelEditor.h"
#include "Host/HostModules.h"
#include "Host/HostPaths.h"
#include "Host/HostPlugins.h"
#include "Host/HostSettings.h"
#include "Host/HostTasks.h"
#include "Host/Platform.h"
#include "Host/ProjectFileCacheControl.h"
#include "Host/ProjectFolder.h"
#include "Host/StoreLocation.h"
#include "Host/UpdateGateControl.h"
#include "Host/WidgetFinder.h"
#include "Misc/FileHelper.h"
#include "Misc/Paths.h"
#include "Modules/ModuleManager.h"
#include "PluginDescription.h"
#include "ProblemToasts.h"
#include "QuestionToasts.h"
#include "Settings/VelmoraSettings.h"
#include "SEditorFrame.h"
#include "SimulatedTime.h"
#include "StandardInput.h"
#include "StateDump.h"
#include "Surroundings.h"
#include "UObject/UObjectGlobals.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/Docking/SDockTab.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"
#include "Widgets/SVelmoraTab.h"

namespace
{
	/** The exit code of a wrong option or script. */
	constexpr int32 WrongUsage = 2;
	/** An answer that takes longer than this counts as lost. */
	constexpr double AnswerSeconds = 600.0;
	/** An agent that takes no prompt for so long is barred, by an update for one. */
	constexpr double SendSeconds = 10.0;
	/** A turn has ended when the agent has been at rest this long: answers reach the list in batches. */
	constexpr double RestSeconds = 0.3;
	/** What is shown has settled after this time: rows have faded in and lists have scrolled. */
	constexpr double SettleSeconds = 0.6;
	/** Between two looks at what the program waits for. */
	constexpr double LookSeconds = 1.0 / 60.0;

	/** The folder above the executable that holds the plug-in's description. */
	FString FindHomeFolder()
	{
		FString Folder = MakeAbsolute(FPlatformProcess::BaseDir());
		for (int32 Depth = 0; Depth < 8 && !Folder.IsEmpty(); ++Depth)
		{
			if (FPaths::FileExists(Folder / TEXT("Velmora.uplugin")))
			{
				return Folder;
			}
			Folder = FPaths::GetPath(Folder);
		}
		return FString();
	}
}

FDesktopProgram::FDesktopProgram(const FDesktopOptions& InOptions)
	: Options(InOptions)
{
}

FDesktopProgram::~FDesktopProgram()
{
	if (FSlateApplication::IsInitialized())
	{
		// The start failed half-way.
		FGlobalTabmanager::Get()->SetDockArea(nullptr);
		FSlateApplication::Shutdown();
	}
	Frame.Reset();
	if (Settings)
	{
		Settings->Finish();
		IHostConfigStore::SetCurrent(nullptr);
	}
}

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

bool FDesktopProgram::SetUpFolders()
{
	HomeFolder = FindHomeFolder();
	if (HomeFolder.IsEmpty())
	{
		Fail(TEXT("The file Velmora.uplugin was not found above the program. Start it from its own clone with ./run.sh."));
		return false;
	}
	const FString Project = Options.ProjectFolder.IsEmpty() ? GetWorkingFolder() : MakeAbsolute(Options.ProjectFolder);
	if (!FPaths::DirectoryExists(Project))
	{
		Fail(FString::Printf(TEXT("The project folder \"%s\" does not exist."), *Project));
		return false;
	}
	FHostPaths::SetProjectDir(Project);
	// What the agent changes is told by paths from here, so they read as the project's own.
	FHostPaths::SetBaseDir(Project);
	FHostPaths::SetEngineDir(HomeFolder / TEXT("Host/Engine"));
	FHostPaths::SetEngineSavedDir(GetUserDataFolder());
	FPluginDescriptor Descriptor;
	FString Complaint;
	if (!ReadPluginDescription(HomeFolder / TEXT("Velmora.uplugin"), Descriptor, Complaint))
	{
		Fail(Complaint);
		return false;
	}
	FHostPlugins::RegisterPlugin(TEXT("Velmora"), HomeFolder, Descriptor);
	Velmora::SetProjectFolder(Project);
	SetUpServices();
	return true;
}

void FDesktopProgram::SetUpServices()
{
	Settings = MakeShared<FHostIniStore>(FPaths::ProjectSavedDir() / TEXT("Config/LinuxEditor"));
	IHostConfigStore::SetCurrent(Settings);
	// A broken release file keeps nobody from working. There is no place for a toast yet.
	Velmora::FUpdateGateControl::SetProblemHandler(
		[](const FString& Sentence) { PrintToStandardError(TEXT("velmora: ") + Sentence + TEXT("\n")); });
	const FString Folder = FPaths::EngineSavedDir() / TEXT("Velmora");
	AsyncTask(ENamedThreads::AnyBackgroundThreadNormalTask,
		[Folder, Saved = FPaths::ProjectSavedDir()]
		{
			constexpr int32 Depth = 3;
			HostTidyFolder(Folder, Depth, true);
			HostTidyFolder(Saved / TEXT("Config/LinuxEditor"), 0, true);
			HostTidyFolder(Saved, Depth, false);
		});
	Velmora::FUpdateGateControl::Follow(Folder / TEXT("Release.json"), Folder / TEXT("Updates"));
}

bool FDesktopProgram::SetUpWindow()
{
	for (const FString& Complaint : FHostPlatform::FindMissingFonts())
	{
		// Another face stands in, so the program goes on.
		PrintToStandardError(TEXT("velmora: ") + Complaint + TEXT("\n"));
	}
	FHostPlatform::InstallTextShaper();
	const float Scale = Options.Scale > 0.0f ? Options.Scale : GetEnvironmentScale();
	if (!Options.bHeadless)
	{
		FHostWindowOptions Wanted;
		Wanted.Title = TEXT("Velmora UI");
		Wanted.PixelSize = Options.Size;
		Wanted.Scale = Scale;
		Wanted.IconPath = HomeFolder / TEXT("Resources/Icons/App/Icon128.png");
		FString Complaint;
		Window = FHostPlatform::CreateDesktopWindow(Wanted, Complaint);
		bHasDisplay = Window.IsValid();
		if (!bHasDisplay && !Options.HasAction())
		{
			PrintToStandardError(TEXT("velmora: There is no display, so prompts are read from standard input, one a line.\n"));
		}
	}
	if (!Window)
	{
		Window = FHostPlatform::CreateHeadlessWindow(Options.Size, Scale);
	}
	FHostPlatform::InstallLauncher(!bHasDisplay);
	FEditorServices::Install();
	FHostAppStyle::Initialize(HomeFolder / TEXT("Host/Engine/Resources/AppStyle"));
	FSlateApplication::Create(Window.ToSharedRef());
	FSlateApplication::Get().SetFrameHook(
		[this]()
		{
			if (bScriptRuns)
			{
				Script->OnFrame();
			}
			if (Draft)
			{
				Draft->NoteTurn();
			}
			FSimulatedTime::BeginFrame();
		});
	FHostDialogs::Install();
	FProblemToasts::Install(!bHasDisplay);
	FQuestionToasts::Install();
	Velmora::FUpdateGateControl::SetProblemHandler([](const FString& Sentence) { FProblemToasts::Tell(Sentence); });
	FHostPlatform::SetDisplayLostHandler(
		[this]()
		{
			if (Draft)
			{
				Draft->Finish();
			}
			Settings->Finish();
		});
	FHostLevelEditor::Install();
	FHostSettings::Install();
	Frame = SNew(SEditorFrame, Log.ToSharedRef());
	FGlobalTabmanager::Get()->SetDockArea(Frame->GetDockArea());
	FSlateApplication::Get().SetRootContent(Frame.ToSharedRef());
	return true;
}

bool FDesktopProgram::LoadModule()
{
	if (!FModuleManager::Get().LoadModule(FName(TEXT("VelmoraUI"))))
	{
		Fail(TEXT("The module could not be loaded: ") + FHostModules::GetLastError());
		return false;
	}
	// The program shows code as it was written; in the editor that is for the user to switch on.
	if (IConsoleVariable* KeepLayout = IConsoleManager::Get().FindConsoleVariable(TEXT("velmora.Code.KeepLayout")))
	{
		KeepLayout->Set(1);
	}
	return true;
}

void FDesktopProgram::StartCodeIndex()
{
	using Velmora::CodeIntel::FCodeIndexControl;
	FCodeIndexControl::SetProblemHandler([](const FString& Sentence) { FProblemToasts::Tell(Sentence); });
	const Velmora::FStoreLocation Location = Velmora::GetStoreLocation();
	// The folder holds conversations as well. What keeps it from being made is told by whoever cannot write there.
	(void)Velmora::MakePrivateFolder(Location.Folder);

	Velmora::CodeIntel::FCodeIndexOptions Wanted;
	Wanted.ProjectFolder = Velmora::GetProjectFolder();
	Wanted.ProjectIndexPath = Location.Folder / (Location.ProjectName + TEXT(".index.db"));
	Wanted.FindEngineFolder = [] { return GetDefault<UVelmoraSettings>()->EngineSourceFolder; };
	Wanted.EngineIndexPath = Location.Folder / TEXT("engine.index.db");
	// Nothing that ends by itself shall wait for a build, nor show one that was not asked for.
	Wanted.bBuildWhenMissing = bHasDisplay && !Options.HasAction();
	FCodeIndexControl::Initialize(Wanted);
	if (GetDefault<UVelmoraSettings>()->bIncludeEngineSource)
	{
		Velmora::CodeIntel::FCodeIntelIndexManager::Get().InitializeEngineIndex();
	}
}

void FDesktopProgram::OpenTab()
{
	InvokeTab();
	FSimulatedTime::BeginFrame();
	FSlateApplication::Get().Tick();
	FocusPrompt();
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

void FDesktopProgram::FocusPrompt()
{
	FSlateApplication::Get().SetKeyboardFocus(FWidgetFinder::FindByTag(TEXT("InputTextBox")), EFocusCause::SetDirectly);
}

void FDesktopProgram::ClearPrompt()
{
	if (const TSharedPtr<SWidget> Box = FWidgetFinder::FindByTag(TEXT("InputTextBox")))
	{
		StaticCastSharedPtr<SMultiLineEditableTextBox>(Box)->SetText(FText::GetEmpty());
	}
}

TSharedPtr<const FChatViewModel> FDesktopProgram::GetViewModel() const
{
	const TSharedPtr<SDockTab> Tab = FGlobalTabmanager::Get()->FindExistingLiveTab(FTabId(SVelmoraTab::GetTabName()));
	return Tab ? StaticCastSharedRef<SVelmoraTab>(Tab->GetContent())->GetViewModel() : nullptr;
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

bool FDesktopProgram::Answer(const FString& Prompt)
{
	TSharedPtr<const FChatViewModel> ViewModel = GetViewModel();
	if (!ViewModel)
	{
		Fail(TEXT("There is no agent to ask: the project cannot be worked on."));
		return false;
	}
	const auto CanSend = [&ViewModel]() { return ViewModel->CanSendMessage(); };
	if (!RunFramesUntil(CanSend, SendSeconds))
	{
		Fail(FString::Printf(TEXT("The agent takes no prompt now (%s)."), *ViewModel->GetStatusText()));
		return false;
	}
	FConversationPrinter Printer;
	Printer.Begin(ViewModel->GetMessages());
	const int32 CountBefore = ViewModel->GetMessageCount();

	FSlateApplication& Application = FSlateApplication::Get();
	FocusPrompt();
	IHostMessageHandler& Keyboard = Application.GetMessageHandler();
	TArray<FString> Lines;
	Prompt.ParseIntoArrayLines(Lines, false);
	for (int32 Index = 0; Index < Lines.Num(); ++Index)
	{
		if (Index > 0)
		{
			Keyboard.OnKeyDown(EKeys::Enter, FModifierKeysState(), false);
		}
		if (!Lines[Index].IsEmpty())
		{
			Keyboard.OnTextInput(Lines[Index]);
		}
	}
	Application.RunTurn(LookSeconds);
	const FModifierKeysState Control(false, false, true, false, false, false);
	Keyboard.OnKeyDown(EKeys::Enter, Control, false);
	Keyboard.OnKeyUp(EKeys::Enter, FModifierKeysState());
	if (ViewModel->GetMessageCount() == CountBefore)
	{
		Fail(TEXT("The prompt was not sent; it still stands in the box."));
		return false;
	}

	double AtRestSince = -1.0;
	const auto HasEnded = [&]()
	{
		Printer.PrintNew(ViewModel->GetMessages());
		if (ViewModel->IsBusy())
		{
			AtRestSince = -1.0;
			return false;
		}
		const double Now = FPlatformTime::Seconds();
		AtRestSince = AtRestSince < 0.0 ? Now : AtRestSince;
		return Now - AtRestSince >= RestSeconds;
	};
	if (!RunFramesUntil(HasEnded, AnswerSeconds))
	{
		Fail(TEXT("No answer came before the program was to end."));
		return false;
	}
	if (!Printer.GetFailure().IsEmpty())
	{
		Fail(Printer.GetFailure());
		return false;
	}
	if (!Printer.HasAnswer())
	{
		Fail(FString::Printf(TEXT("The turn ended without an answer (%s)."), *ViewModel->GetStatusText()));
		return false;
	}
	return true;
}

bool FDesktopProgram::WriteDump(const FString& File)
{
	return FFileHelper::SaveStringToFile(
		FStateDump::Make(GetViewModel().Get()), *MakeAbsolute(File), FFileHelper::EEncodingOptions::ForceUTF8WithoutBOM);
}

bool FDesktopProgram::WriteScreenshot(const FString& File)
{
	return Window->SaveScreenshot(MakeAbsolute(File));
}

bool FDesktopProgram::WriteOutputs()
{
	const bool bScreenshot = !Options.ScreenshotFile.IsEmpty();
	const bool bDump = !Options.DumpFile.IsEmpty();
	if (!bScreenshot && !bDump)
	{
		return true;
	}
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
	int32 Result = !Options.Prompt.IsSet() || Answer(Options.Prompt.GetValue()) ? 0 : 1;
	if (Script)
	{
		Result = FMath::Max(Result, RunScript());
	}
	return WriteOutputs() ? Result : FMath::Max(Result, 1);
}

int32 FDesktopProgram::RunWindow()
{
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
			ClearPrompt();
			bAllAnswered = Answer(Line) && bAllAnswered;
		}
		Line.Reset();
	}
	return bAllAnswered ? 0 : 1;
}

int32 FDesktopProgram::Run()
{
	FHostTasks::SetGameThread();
	Log = MakeShared<FOutputLog>();
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
	if (const FString Complaint = ConnectionChoice::Select(Options); !Complaint.IsEmpty())
	{
		Fail(Complaint);
		return WrongUsage;
	}
	if (Options.Now.IsSet())
	{
		FSimulatedTime::Begin(Options.Now.GetValue());
	}
	if (!SetUpFolders() || !SetUpWindow() || !LoadModule())
	{
		return 1;
	}
	StartCodeIndex();
	OpenTab();
	if (Options.bDraft || (bHasDisplay && !Options.HasAction()))
	{
		Draft = MakeUnique<FDraftKeeper>(Velmora::GetStoreLocation().GetDraftPath());
	}
	// Where nobody watches, nobody can be asked.
	Velmora::FBuiltInAgentOptions AgentOptions = Velmora::GetBuiltInAgentOptions();
	AgentOptions.bCanAsk = !Options.Prompt.IsSet() && (!Options.ScriptFile.IsEmpty() || bHasDisplay);
	AgentOptions.AllowedCalls = Options.AllowedCalls;
	Velmora::SetBuiltInAgentOptions(AgentOptions);
	const int32 Result = Options.HasAction() ? RunActions() : (bHasDisplay ? RunWindow() : RunLines());

	// In the order in which an editor goes down: tabs, modules, threads, window.
	FSlateApplication::Get().SetFrameHook(nullptr);
	FHostPlatform::SetDisplayLostHandler(nullptr);
	Draft.Reset();
	Velmora::FUpdateGateControl::StopFollowing();
	Velmora::CodeIntel::FCodeIndexControl::Shutdown();
	FSlateApplication::Get().DismissAllMenus();
	FGlobalTabmanager::Get()->CloseAllTabs();
	FModuleManager::Get().UnloadModulesAtShutdown();
	FGlobalTabmanager::Get()->SetDockArea(nullptr);
	FSlateApplication::Get().SetRootContent(SNullWidget::NullWidget);
	Frame.Reset();
	Settings->Finish();
	Velmora::FUpdateGateControl::SetProblemHandler(nullptr);
	Velmora::CodeIntel::FCodeIndexControl::SetProblemHandler(nullptr);
	FQuestionToasts::Uninstall();
	FProblemToasts::Uninstall();
	FEditorServices::Uninstall();
	Velmora::FProjectFileCacheControl::Shutdown();
	FHostTasks::Shutdown();
	FSlateApplication::Shutdown();
	Window.Reset();
	return Result;
}
