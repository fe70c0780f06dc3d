#include "DesktopSession.h"

#include "Async/Async.h"
#include "AgentChoice.h"
#include "AgentPages.h"
#include "CodeIntel/CodeIntelIndexManager.h"
#include "ConversationPrinter.h"
#include "DraftKeeper.h"
#include "EditorServices.h"
#include "Environment.h"
#include "Framework/Application/SlateApplication.h"
#include "Framework/Docking/TabManager.h"
#include "HAL/IConsoleManager.h"
#include "HAL/PlatformProcess.h"
#include "Host/BuiltInAgentOptions.h"
#include "Host/CodeIndexControl.h"
#include "Host/HostAtomicFile.h"
#include "Host/HostDialogs.h"
#include "Host/HostIniStore.h"
#include "Host/HostLevelEditor.h"
#include "Host/HostModules.h"
#include "Host/HostPaths.h"
#include "Host/HostSettings.h"
#include "Host/HostTasks.h"
#include "Host/Platform.h"
#include "Host/ProjectFileCacheControl.h"
#include "Host/ProjectFolder.h"
#include "Host/StoreLocation.h"
#include "Host/UpdateGateControl.h"
#include "KeyBindings.h"
#include "Logging/LogMacros.h"
#include "Misc/Paths.h"
#include "Modules/ModuleManager.h"
#include "OpenTabs.h"
#include "PluginDescription.h"
#include "ProblemToasts.h"
#include "PromptBox.h"
#include "QuestionToasts.h"
#include "QuitQuestion.h"
#include "SEditorFrame.h"
#include "SKeysPage.h"
#include "SSourceViewer.h"
#include "SessionRecorder.h"
#include "SessionReplay.h"
#include "Settings/VelmoraSettings.h"
#include "SimulatedTime.h"
#include "StoreFolders.h"
#include "ToastRoom.h"
#include "UObject/UObjectGlobals.h"
#include "Widgets/SVelmoraTab.h"
#include "WindowContrast.h"
#include "WindowZoom.h"

DEFINE_LOG_CATEGORY_STATIC(LogDesktop, Log, All);

namespace
{
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

	/** Units. Everything can still be reached in a window of this size. */
	const FIntPoint MinWindowSize(360, 400);

	FIntPoint ScaleSize(const FIntPoint& Units, float Scale)
	{
		return FIntPoint(FMath::RoundToInt32(Units.X * Scale), FMath::RoundToInt32(Units.Y * Scale));
	}

	void PrintProblem(const FString& Sentence)
	{
		PrintToStandardError(TEXT("velmora: ") + Sentence + TEXT("\n"));
	}
}

FDesktopSession::FDesktopSession(const FDesktopOptions& InOptions, const TSharedRef<FOutputLog>& InLog)
	: Options(InOptions)
	, Log(InLog)
{
}

FDesktopSession::~FDesktopSession()
{
	// How the session goes down is no part of it.
	if (Recorder)
	{
		Recorder->Finish();
	}
	if (Replay)
	{
		Replay->Finish();
	}
	Host.Reset();
	if (Recorder)
	{
		Recorder->Release();
	}
	if (Replay)
	{
		Replay->Release();
	}
	Velmora::FAgentSeam::Set(nullptr);
	Velmora::FProjectFileCacheControl::SetSeam(nullptr);
	StoreFolders::Remove();
	// The store comes before the host session, since that may read settings while it starts; so it goes after it.
	if (Settings)
	{
		Settings->Finish();
		IHostConfigStore::SetCurrent(nullptr);
	}
}

FString FDesktopSession::Start(TFunction<void()> InOnFrame)
{
	OnFrame = MoveTemp(InOnFrame);
	if (const FString Complaint = SetUpFolders(); !Complaint.IsEmpty())
	{
		return Complaint;
	}
	SetUpSettings();
	SetUpWindow();
	SetUpEditor();
	SetUpFrame();
	if (const FString Complaint = LoadModule(); !Complaint.IsEmpty())
	{
		return Complaint;
	}
	if (!Replay)
	{
		StartCodeIndex();
	}
	SetAgentOptions();
	OpenTab();
	RestoreTabs();
	// Last, when there is something to see: the start does not wait for the desktop.
	const auto NoteLook = [this]
	{
		if (Recorder)
		{
			Recorder->NoteLook();
		}
	};
	// A replay looks as the recording says.
	Access.Start(Options, bHasDisplay && !Options.HasAction() && !Replay, Replay ? TFunction<void()>() : TFunction<void()>(NoteLook));
	Host->AtEnd([this] { Access.End(); });
	KeepDraft();
	if (Replay && Replay->GetHead().KeptFolder)
	{
		Frame->GetFirstSteps().TellFolder(*Replay->GetHead().KeptFolder);
	}
	if (HasUser())
	{
		Frame->GetFirstSteps().ShowOnce(FPaths::EngineSavedDir() / TEXT("Velmora/Welcome.txt"));
	}
	return FString();
}

FString FDesktopSession::SetUpFolders()
{
	HomeFolder = FindHomeFolder();
	if (HomeFolder.IsEmpty())
	{
		return TEXT("The file Velmora.uplugin was not found above the program. Start it from its own clone with ./run.sh.");
	}
	const FString Project = Replay		  ? Replay->GetProjectFolder()
		: Options.ProjectFolder.IsEmpty() ? GetWorkingFolder()
										  : MakeAbsolute(Options.ProjectFolder);
	if (!FPaths::DirectoryExists(Project))
	{
		return FPaths::FileExists(Project) ? FString::Printf(TEXT("The project \"%s\" is a file; its folder is wanted."), *Project)
										   : FString::Printf(TEXT("The project folder \"%s\" does not exist."), *Project);
	}
	FHostPaths::SetProjectDir(Project);
	// What the agent changes is told by paths from here, so they read as the project's own.
	FHostPaths::SetBaseDir(Project);
	FHostPaths::SetEngineDir(HomeFolder / TEXT("Host/Engine"));
	const FString Data = Replay ? Replay->GetDataFolder() : GetUserDataFolder();
	if (Data.IsEmpty())
	{
		return TEXT("There is no home folder to keep conversations in: set HOME, or XDG_DATA_HOME to a folder of yours.");
	}
	FHostPaths::SetEngineSavedDir(Data);
	Velmora::SetProjectFolder(Project);
	FString Complaint = StoreFolders::SetUp(Options.bNoHistory, StoreNotice);
	if (!Complaint.IsEmpty())
	{
		return Complaint;
	}
	if (Replay)
	{
		Replay->RestoreFiles();
	}
	else if (!Options.bNoHistory && StoreNotice.IsEmpty())
	{
		StoreNotice = StoreFolders::BringBack();
	}
	ReadPluginDescription(HomeFolder / TEXT("Velmora.uplugin"), Plugin, Complaint);
	return Complaint;
}

void FDesktopSession::SetUpSettings()
{
	Settings = MakeShared<FHostIniStore>(FPaths::ProjectSavedDir() / TEXT("Config/LinuxEditor"));
	IHostConfigStore::SetCurrent(Settings);
	// What saves that were killed have left. Nobody waits for it.
	AsyncTask(ENamedThreads::AnyBackgroundThreadNormalTask,
		[Folder = FPaths::EngineSavedDir() / TEXT("Velmora"), Saved = FPaths::ProjectSavedDir()]
		{
			constexpr int32 Depth = 3;
			HostTidyFolder(Folder, Depth, true);
			HostTidyFolder(Saved / TEXT("Config/LinuxEditor"), 0, true);
			HostTidyFolder(Saved, Depth, false);
		});
}

TSharedPtr<IHostWindow> FDesktopSession::OpenDesktopWindow(float Scale)
{
	FHostWindowOptions Wanted;
	Wanted.Title = TEXT("Velmora UI");
	// What a user asks for is meant in pixels, as is what a recording says; the usual size is one of units.
	Wanted.PixelSize = Replay ? Replay->GetHead().Size : Options.bHasSize ? Options.Size : ScaleSize(Options.Size, Scale);
	Wanted.bFitsMonitor = !Options.bHasSize && !Replay;
	if (!Options.HasAction() && !Replay)
	{
		Wanted.MinPixelSize = ScaleSize(MinWindowSize, Scale);
		Wanted.PlacePath = Options.bHasSize ? FString() : Velmora::GetStoreLocation().Folder / TEXT("Window.txt");
	}
	Wanted.Scale = Scale;
	Wanted.IconPath = HomeFolder / TEXT("Resources/Icons/App/Icon128.png");
	FString Complaint;
	const TSharedPtr<IHostWindow> Window = FHostPlatform::CreateDesktopWindow(Wanted, Complaint);
	bHasDisplay = Window.IsValid();
	if (!bHasDisplay && !Options.HasAction() && !Replay)
	{
		PrintProblem(TEXT("There is no display, so prompts are read from standard input, one a line."));
	}
	return Window;
}

TSharedPtr<IHostWindow> FDesktopSession::OpenWindow()
{
	const float Asked = Options.Scale > 0.0f ? Options.Scale : GetEnvironmentScale();
	const float Scale = Replay ? Replay->GetHead().Scale : Asked;
	TSharedPtr<IHostWindow> Window = Options.bHeadless ? TSharedPtr<IHostWindow>() : OpenDesktopWindow(Scale);
	// The same program, painted into memory.
	const FIntPoint Size = Replay ? Replay->GetHead().Size : Options.Size;
	Window = Window ? Window : FHostPlatform::CreateHeadlessWindow(Size, Scale).ToSharedPtr();
	LoadUserView();
	return FWindowZoom::Wrap(FWindowContrast::Wrap(WrapWindow(Window.ToSharedRef())));
}

TSharedRef<IHostWindow> FDesktopSession::WrapWindow(const TSharedRef<IHostWindow>& Window)
{
	if (Recorder)
	{
		Recorder->Begin(Options, HasUser(), bHasDisplay, *Window);
		Velmora::FAgentSeam::Set(Recorder);
		Velmora::FProjectFileCacheControl::SetSeam(Recorder);
		return Recorder->Wrap(Window);
	}
	if (Replay)
	{
		Velmora::FAgentSeam::Set(Replay);
		Velmora::FProjectFileCacheControl::SetSeam(Replay);
		return Replay->Wrap(Window);
	}
	return Window;
}

bool FDesktopSession::HasUser() const
{
	return Replay ? Replay->GetHead().bHasUser : Options.bDraft || (bHasDisplay && !Options.HasAction());
}

void FDesktopSession::BeginDirectFrame()
{
	// A replay has the times of the recording.
	if (Replay)
	{
		Replay->GetWindow()->NoteTurn();
		return;
	}
	FSimulatedTime::BeginFrame();
	if (Recorder)
	{
		Recorder->GetWindow()->NoteTurn();
	}
}

void FDesktopSession::RunHook()
{
	if (Recorder)
	{
		Recorder->NoteTurn();
		Recorder->GetWindow()->BeginDriver();
	}
	if (Replay)
	{
		Replay->GetWindow()->Drive();
	}
	OnFrame();
	if (Recorder)
	{
		Recorder->GetWindow()->EndDriver();
	}
	PromptFocus.NoteTurn();
	// What has a place of its own to go to has gone there.
	KeyboardPlace.NoteTurn();
	SavedFileToast.NoteTurn();
	Access.NoteTurn();
	if (Draft)
	{
		Draft->NoteTurn();
	}
	if (OpenTabs)
	{
		OpenTabs->NoteTurn();
	}
	if (!Replay)
	{
		// What is selected on the desktop is the user's.
		PrimarySelection.NoteTurn();
		FSimulatedTime::BeginFrame();
	}
}

void FDesktopSession::LoadUserView() const
{
	// Runs without a user are the same for every user.
	const FString Folder = FPaths::EngineSavedDir() / TEXT("Velmora");
	FKeyBindings::Load(HasUser() ? Folder / TEXT("Keys.txt") : FString());
	FWindowZoom::Load(HasUser() ? Folder / TEXT("Zoom.txt") : FString());
}

void FDesktopSession::SetUpWindow()
{
	for (const FString& Complaint : FHostPlatform::FindMissingFonts())
	{
		// Another face stands in, so the program goes on.
		PrintProblem(Complaint);
	}
	const TSharedPtr<IHostWindow> Window = OpenWindow();
	if (const FString Scripts = bHasDisplay ? FHostPlatform::FindMissingScripts() : FString(); !Scripts.IsEmpty())
	{
		UE_LOG(LogDesktop, Warning, TEXT("%s"), *Scripts);
	}
	FHostSessionOptions Wanted;
	Wanted.HomeFolder = HomeFolder;
	Wanted.Plugin = Plugin;
	Wanted.Window = Window;
	Host = MakeUnique<FHostSession>(Wanted);

	// Threads end while there still is an application that their last tasks may speak of.
	Host->AtEnd([] { FHostTasks::Shutdown(); });
	Host->AtEnd([] { Velmora::FProjectFileCacheControl::Shutdown(); });

	FSlateApplication::Get().SetFrameHook([this]() { RunHook(); });
	Host->AtEnd([] { FSlateApplication::Get().SetFrameHook(nullptr); });
}

void FDesktopSession::SetUpEditor()
{
	// A replay opens nothing: whoever made the recording has no say on this machine.
	FHostPlatform::InstallLauncher(!bHasDisplay || Replay);
	FEditorServices::Install();
	Host->AtEnd([] { FEditorServices::Uninstall(); });
	FHostDialogs::Install();
	FProblemToasts::Install(!bHasDisplay);
	Host->AtEnd([] { FProblemToasts::Uninstall(); });
	if (Recorder || Replay)
	{
		FProblemToasts::SetFilter(
			[this](const FString& Sentence)
			{
				if (Recorder)
				{
					Recorder->NoteToast(Sentence);
				}
				return !Replay || Replay->MayTell();
			});
	}
	if (!StoreNotice.IsEmpty())
	{
		FProblemToasts::Tell(StoreNotice);
	}
	FQuitQuestion::Install();
	Host->AtEnd([] { FQuitQuestion::Uninstall(); });
	FQuestionToasts::Install();
	Host->AtEnd([] { FQuestionToasts::Uninstall(); });
	FToastRoom::Install();
	Host->AtEnd([] { FToastRoom::Uninstall(); });

	// A broken release file keeps nobody from working.
	Velmora::FUpdateGateControl::SetProblemHandler([](const FString& Sentence) { FProblemToasts::Tell(Sentence); });
	Host->AtEnd([] { Velmora::FUpdateGateControl::SetProblemHandler(nullptr); });
	const FString Folder = FPaths::EngineSavedDir() / TEXT("Velmora");
	if (!Replay)
	{
		Velmora::FUpdateGateControl::Follow(Folder / TEXT("Release.json"), Folder / TEXT("Updates"));
		Host->AtEnd([] { Velmora::FUpdateGateControl::StopFollowing(); });
	}

	// The process ends within the handler, so what is not on disk yet is written here or never.
	FHostPlatform::SetDisplayLostHandler(
		[this]()
		{
			if (Draft)
			{
				Draft->Finish();
			}
			Settings->Finish();
		});
	Host->AtEnd([] { FHostPlatform::SetDisplayLostHandler(nullptr); });
}

void FDesktopSession::SetUpFrame()
{
	FHostLevelEditor::Install();
	FHostSettings::Install();
	Frame = SNew(SEditorFrame, Log);
	FGlobalTabmanager::Get()->SetDockArea(Frame->GetDockArea());
	FSlateApplication::Get().SetRootContent(Frame.ToSharedRef());
	FHostPlatform::SetSourceViewer(&SSourceViewer::ShowFile);
	Host->AtEnd(
		[this]
		{
			FHostPlatform::SetSourceViewer(nullptr);
			FGlobalTabmanager::Get()->SetDockArea(nullptr);
			FSlateApplication::Get().SetRootContent(SNullWidget::NullWidget);
			Frame.Reset();
		});
}

FString FDesktopSession::LoadModule()
{
	if (!FModuleManager::Get().LoadModule(FName(TEXT("VelmoraUI"))))
	{
		return TEXT("The module could not be loaded: ") + FHostModules::GetLastError();
	}
	Host->AtEnd([] { FModuleManager::Get().UnloadModulesAtShutdown(); });
	// Behind the pages of the module, whose own comes first.
	AgentPages = MakeUnique<FAgentPages>();
	KeysPage = MakeUnique<FKeysPage>();
	Host->AtEnd(
		[this]
		{
			KeysPage.Reset();
			AgentPages.Reset();
		});
	FAgentChoice::ShowTitle();
	// The program shows code as it was written; in the editor that is for the user to switch on.
	if (IConsoleVariable* KeepLayout = IConsoleManager::Get().FindConsoleVariable(TEXT("velmora.Code.KeepLayout")))
	{
		KeepLayout->Set(1);
	}
	return FString();
}

void FDesktopSession::StartCodeIndex()
{
	using Velmora::CodeIntel::FCodeIndexControl;
	FCodeIndexControl::SetProblemHandler([](const FString& Sentence) { FProblemToasts::Tell(Sentence); });
	Host->AtEnd([] { FCodeIndexControl::SetProblemHandler(nullptr); });
	const Velmora::FStoreLocation Location = Velmora::GetStoreLocation();
	const FString IndexName = Location.ProjectName + TEXT(".index.db");
	// A run that leaves nothing behind asks the index that there is, and makes none.
	const FString& IndexFolder = FPaths::FileExists(Location.Folder / IndexName) ? Location.Folder : Location.ConversationFolder;
	// The folder holds conversations as well. What keeps it from being made is told by whoever cannot write there.
	(void)Velmora::MakePrivateFolder(IndexFolder);

	Velmora::CodeIntel::FCodeIndexOptions Wanted;
	Wanted.ProjectFolder = Velmora::GetProjectFolder();
	Wanted.ProjectIndexPath = IndexFolder / IndexName;
	Wanted.FindEngineFolder = [] { return GetDefault<UVelmoraSettings>()->EngineSourceFolder; };
	Wanted.EngineIndexPath = (Options.bNoHistory ? Location.ConversationFolder : Location.Folder) / TEXT("engine.index.db");
	// Nothing that ends by itself shall wait for a build, nor show one that was not asked for.
	Wanted.bBuildWhenMissing = bHasDisplay && !Options.HasAction();
	FCodeIndexControl::Initialize(Wanted);
	Host->AtEnd([] { FCodeIndexControl::Shutdown(); });
	if (GetDefault<UVelmoraSettings>()->bIncludeEngineSource)
	{
		Velmora::CodeIntel::FCodeIntelIndexManager::Get().InitializeEngineIndex();
	}
}

void FDesktopSession::SetAgentOptions() const
{
	// Where nobody watches, nobody can be asked.
	Velmora::FBuiltInAgentOptions Agent = Velmora::GetBuiltInAgentOptions();
	Agent.bCanAsk = !Options.Prompt.IsSet() && (!Options.ScriptFile.IsEmpty() || (bHasDisplay && !Options.HasAction()));
	Agent.AllowedCalls = Options.AllowedCalls;
	Velmora::SetBuiltInAgentOptions(Agent);
}

void FDesktopSession::OpenTab()
{
	// Before the tab is made: a conversation that begins in it must find everything above in its place until it is closed.
	Host->AtEnd(
		[]
		{
			FSlateApplication::Get().DismissAllMenus();
			FGlobalTabmanager::Get()->CloseAllTabs();
		});
	FGlobalTabmanager::Get()->TryInvokeTab(FTabId(SVelmoraTab::GetTabName()));
	// The box takes the keyboard once it has been laid out.
	BeginDirectFrame();
	FSlateApplication::Get().Tick();
	FPromptBox::Focus();
}

void FDesktopSession::RestoreTabs()
{
	if (HasUser())
	{
		OpenTabs = MakeUnique<FOpenTabs>(Velmora::GetStoreLocation().Folder / TEXT("Tabs.txt"));
		OpenTabs->Restore();
		// Closing them all at the end is no wish of the user's.
		Host->AtEnd([this] { OpenTabs.Reset(); });
	}
}

void FDesktopSession::KeepDraft()
{
	if (HasUser())
	{
		Draft = MakeUnique<FDraftKeeper>(Velmora::GetStoreLocation().GetDraftPath());
		// The box must still be there: what stands in it is written once more.
		Host->AtEnd([this] { Draft.Reset(); });
	}
}
