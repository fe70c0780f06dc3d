#include "DesktopProgram.h"

#include "ConversationPrinter.h"
#include "Framework/Application/SlateApplication.h"
#include "Framework/Docking/TabManager.h"
#include "HAL/PlatformTime.h"
#include "Host/HostAppStyle.h"
#include "Host/HostDialogs.h"
#include "Host/HostModules.h"
#include "Host/HostPaths.h"
#include "Host/HostPlugins.h"
#include "Host/HostTasks.h"
#include "Host/Platform.h"
#include "Host/ProjectFolder.h"
#include "Host/SDockArea.h"
#include "Host/WidgetFinder.h"
#include "Misc/FileHelper.h"
#include "Misc/Paths.h"
#include "Modules/ModuleManager.h"
#include "PluginDescription.h"
#include "StandardInput.h"
#include "StateDump.h"
#include "Surroundings.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/Docking/SDockTab.h"
#include "Widgets/SVelmoraTab.h"

namespace
{
	/** An answer that takes longer than this counts as lost. */
	constexpr double AnswerSeconds = 600.0;
	/** A turn has ended when the agent has been at rest this long: answers reach the list in batches. */
	constexpr double RestSeconds = 0.3;
	/** What is shown has settled after this time: rows have faded in and lists have scrolled. */
	constexpr double SettleSeconds = 0.6;

	/** The folder above the executable that holds the plug-in's description. */
	FString FindHomeFolder()
	{
		FString Folder = MakeAbsolute(FHostPaths::GetBaseDir());
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

FDesktopProgram::~FDesktopProgram() = default;

int32 FDesktopProgram::Fail(const FString& Sentence) const
{
	PrintToStandardError(TEXT("velmora: ") + Sentence + TEXT("\n"));
	return 1;
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
	FHostPaths::SetEngineDir(HomeFolder / TEXT("Host/Engine"));
	FPluginDescriptor Descriptor;
	FString Complaint;
	if (!ReadPluginDescription(HomeFolder / TEXT("Velmora.uplugin"), Descriptor, Complaint))
	{
		Fail(Complaint);
		return false;
	}
	FHostPlugins::RegisterPlugin(TEXT("Velmora"), HomeFolder, Descriptor);
	Velmora::SetProjectFolder(Project);
	return true;
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
	FHostAppStyle::Initialize(HomeFolder / TEXT("Host/Engine/Resources/AppStyle"));
	FSlateApplication::Create(Window.ToSharedRef());
	FHostDialogs::Install();
	DockArea = SNew(SDockArea);
	FGlobalTabmanager::Get()->SetDockArea(DockArea);
	FSlateApplication::Get().SetRootContent(DockArea.ToSharedRef());
	return true;
}

bool FDesktopProgram::LoadModule()
{
	if (!FModuleManager::Get().LoadModule(FName(TEXT("VelmoraUI"))))
	{
		Fail(TEXT("The module could not be loaded: ") + FHostModules::GetLastError());
		return false;
	}
	return true;
}

void FDesktopProgram::OpenTab()
{
	FGlobalTabmanager::Get()->TryInvokeTab(FTabId(SVelmoraTab::GetTabName()));
	FSlateApplication::Get().Tick();
	FSlateApplication::Get().SetKeyboardFocus(FWidgetFinder::FindByTag(TEXT("InputTextBox")), EFocusCause::SetDirectly);
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
		// Waiting for an answer is no time to doze.
		Application.NoteActivity();
		Application.RunFrame();
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
	if (!RunFramesUntil(CanSend, AnswerSeconds))
	{
		Fail(FString::Printf(TEXT("The agent takes no prompt now (%s)."), *ViewModel->GetStatusText()));
		return false;
	}
	FConversationPrinter Printer;
	Printer.Begin(ViewModel->GetMessages());
	const int32 CountBefore = ViewModel->GetMessageCount();

	FSlateApplication& Application = FSlateApplication::Get();
	Application.SetKeyboardFocus(FWidgetFinder::FindByTag(TEXT("InputTextBox")), EFocusCause::SetDirectly);
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
	Application.RunFrame();
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

bool FDesktopProgram::WriteOutputs()
{
	const double End = FPlatformTime::Seconds() + SettleSeconds;
	RunFramesUntil([End]() { return FPlatformTime::Seconds() >= End; }, SettleSeconds * 2.0);
	bool bWritten = true;
	if (!Options.ScreenshotFile.IsEmpty() && !Window->SaveScreenshot(MakeAbsolute(Options.ScreenshotFile)))
	{
		Fail(FString::Printf(TEXT("The picture could not be written to \"%s\"."), *Options.ScreenshotFile));
		bWritten = false;
	}
	if (!Options.DumpFile.IsEmpty())
	{
		const TSharedPtr<const FChatViewModel> ViewModel = GetViewModel();
		if (!FFileHelper::SaveStringToFile(FStateDump::Make(ViewModel.Get()), *MakeAbsolute(Options.DumpFile), FFileHelper::EEncodingOptions::ForceUTF8WithoutBOM))
		{
			Fail(FString::Printf(TEXT("The dump could not be written to \"%s\"."), *Options.DumpFile));
			bWritten = false;
		}
	}
	return bWritten;
}

int32 FDesktopProgram::RunActions()
{
	const bool bAnswered = !Options.Prompt.IsSet() || Answer(Options.Prompt.GetValue());
	const bool bWritten = WriteOutputs();
	return bAnswered && bWritten ? 0 : 1;
}

int32 FDesktopProgram::RunWindow()
{
	FSlateApplication& Application = FSlateApplication::Get();
	while (!Application.IsExitRequested())
	{
		Application.RunFrame();
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
			bAllAnswered = Answer(Line) && bAllAnswered;
		}
		Line.Reset();
	}
	return bAllAnswered ? 0 : 1;
}

int32 FDesktopProgram::Run()
{
	FHostTasks::SetGameThread();
	if (!SetUpFolders() || !SetUpWindow() || !LoadModule())
	{
		return 1;
	}
	OpenTab();
	const int32 Result = Options.HasAction() ? RunActions() : (bHasDisplay ? RunWindow() : RunLines());

	// In the order in which an editor goes down: tabs, modules, threads, window.
	FGlobalTabmanager::Get()->CloseAllTabs();
	FModuleManager::Get().UnloadModulesAtShutdown();
	FGlobalTabmanager::Get()->SetDockArea(nullptr);
	DockArea.Reset();
	FHostTasks::Shutdown();
	FSlateApplication::Shutdown();
	Window.Reset();
	return Result;
}
