#include "SEditorFrame.h"

#include "ActivityText.h"
#include "AgentMenus.h"
#include "ChatCommands.h"
#include "ChipScroll.h"
#include "CutNames.h"
#include "EditorFrameCommands.h"
#include "FileCache/ProjectFileCache.h"
#include "Framework/Application/SlateApplication.h"
#include "Framework/Commands/UICommandList.h"
#include "Framework/MultiBox/MultiBoxBuilder.h"
#include "HAL/PlatformProcess.h"
#include "Host/HostLevelEditor.h"
#include "Host/HostTextWidget.h"
#include "Host/SMenuBar.h"
#include "Interfaces/IPluginManager.h"
#include "KeyBindings.h"
#include "MessageScroll.h"
#include "Misc/MessageDialog.h"
#include "Misc/Paths.h"
#include "OpenChat.h"
#include "SAgentActivity.h"
#include "SConversations.h"
#include "SOutputLog.h"
#include "SSourceViewer.h"
#include "Styling/AppStyle.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SOverlay.h"
#include "Widgets/Text/STextBlock.h"
#include "WorkspaceMenuStructure.h"
#include "WorkspaceMenuStructureModule.h"

#define LOCTEXT_NAMESPACE "EditorFrame"

namespace
{
	/** A turn that takes no longer than this is shown by the window alone. */
	constexpr double LongTurnSeconds = 15.0;

	FSlateIcon GetFrameIcon(const TCHAR* Name)
	{
		return FSlateIcon(FAppStyle::GetAppStyleSetName(), Name);
	}

	/** What a spawner says of itself; a click opens its tab or brings it to the front. */
	void AddTabEntry(FMenuBuilder& Builder, const TSharedRef<FTabSpawnerEntry>& Spawner)
	{
		if (Spawner->GetMenuType() != ETabSpawnerMenuType::Hidden)
		{
			const FName TabType = Spawner->GetTabType();
			const bool bEnabled = Spawner->GetMenuType() == ETabSpawnerMenuType::Enabled;
			Builder.AddMenuEntry(Spawner->GetDisplayName(), Spawner->GetTooltipText(), Spawner->GetIcon(),
				FUIAction(FExecuteAction::CreateLambda([TabType] { FGlobalTabmanager::Get()->TryInvokeTab(FTabId(TabType)); }),
					FCanExecuteAction::CreateLambda([bEnabled] { return bEnabled; })));
		}
	}

	/** A group as a section, and the groups in it behind it. */
	void AddTabGroup(FMenuBuilder& Builder, const TSharedRef<FWorkspaceItem>& Group)
	{
		Builder.BeginSection(NAME_None, Group->GetDisplayName());
		for (const TSharedRef<FWorkspaceItem>& Item : Group->GetChildItems())
		{
			if (const TSharedPtr<FTabSpawnerEntry> Spawner = Item->AsSpawnerEntry())
			{
				AddTabEntry(Builder, Spawner.ToSharedRef());
			}
		}
		Builder.EndSection();
		for (const TSharedRef<FWorkspaceItem>& Item : Group->GetChildItems())
		{
			if (!Item->AsSpawnerEntry())
			{
				AddTabGroup(Builder, Item);
			}
		}
	}

	void ShowAbout()
	{
		const TSharedPtr<IPlugin> Plugin = IPluginManager::Get().FindPlugin(TEXT("Velmora"));
		const FString Version = Plugin ? Plugin->GetDescriptor().VersionName : FString();
		FMessageDialog::Open(EAppMsgCategory::Info, EAppMsgType::Ok,
			FText::Format(LOCTEXT("AboutText", "Velmora UI {0}\nThe chat of an AI co-developer, in a window of its own."),
				FText::FromString(Version)),
			LOCTEXT("AboutTitle", "About Velmora UI"));
	}

	void OpenUserGuide()
	{
		if (const TSharedPtr<IPlugin> Plugin = IPluginManager::Get().FindPlugin(TEXT("Velmora")))
		{
			FPlatformProcess::LaunchFileInDefaultExternalApplication(*(Plugin->GetBaseDir() / TEXT("Docs/user-guide.md")));
		}
	}

} // namespace

void SEditorFrame::Construct(const FArguments& InArgs, const TSharedRef<FOutputLog>& InLog)
{
	Log = InLog;
	FEditorFrameCommands::Register();
	MapCommands();
	FKeyBindings::SetOnChanged(FSimpleDelegate::CreateSP(this, &SEditorFrame::RemapCommands));
	RegisterLogTab();
	RegisterActivityTab();
	RegisterConversationsTab();
	RegisterSourceTab();
	// clang-format off
	ChildSlot
	[
		SNew(SVerticalBox)
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			SNew(SOverlay)
			+ SOverlay::Slot()
			[
				SAssignNew(MenuHolder, SBox)
				[
					MakeMenuBar()
				]
			]
			// The room behind the last menu: nothing moves when a long turn begins to be told of.
			+ SOverlay::Slot()
			.HAlign(HAlign_Right)
			.VAlign(VAlign_Center)
			.Padding(0.0f, 0.0f, 12.0f, 0.0f)
			[
				SNew(SBox)
				.MaxDesiredWidth_Lambda([this]() { return FOptionalSize(GetTurnTextRoom()); })
				.Visibility(EVisibility::HitTestInvisible)
				.Clipping(EWidgetClipping::ClipToBounds)
				[
					SNew(STextBlock)
					.Tag("FrameStatus")
					.Text(this, &SEditorFrame::GetTurnText)
					.TextStyle(FAppStyle::Get(), TEXT("SmallText"))
					.ColorAndOpacity(FSlateColor(FAppStyle::GetColor("Colors.ForegroundSubdued")))
					.OverflowPolicy(ETextOverflowPolicy::Ellipsis)
				]
			]
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			FirstSteps
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			FindStrip
		]
		+ SVerticalBox::Slot()
		.FillHeight(1.0f)
		[
			MakeDockRoom()
		]
	];
	// clang-format on
}

TSharedRef<SWidget> SEditorFrame::MakeDockRoom()
{
	// clang-format off
	return SNew(SOverlay)
		+ SOverlay::Slot()
		[
			DockArea
		]
		+ SOverlay::Slot()
		[
			SNew(SFindMarks, Find)
		];
	// clang-format on
}

SEditorFrame::~SEditorFrame()
{
	FKeyBindings::SetOnChanged(FSimpleDelegate());
	FGlobalTabmanager::Get()->UnregisterNomadTabSpawner(SSourceViewer::GetTabName());
	FGlobalTabmanager::Get()->UnregisterNomadTabSpawner(GetConversationsTabName());
	FGlobalTabmanager::Get()->UnregisterNomadTabSpawner(GetActivityTabName());
	FGlobalTabmanager::Get()->UnregisterNomadTabSpawner(GetLogTabName());
	FEditorFrameCommands::Unregister();
}

void SEditorFrame::RemapCommands()
{
	// A list keeps what it was given, old keys included.
	CommandList = MakeShared<FUICommandList>();
	FEditorFrameCommands::Unregister();
	FEditorFrameCommands::Register();
	MapCommands();
	MenuHolder->SetContent(MakeMenuBar());
}

void SEditorFrame::MapCommands()
{
	FAgentMenus::MapCommands(*CommandList);
	FChatCommands::MapCommands(*CommandList, FindStrip);
	const FEditorFrameCommands& Commands = FEditorFrameCommands::Get();
	CommandList->MapAction(
		Commands.Exit, FExecuteAction::CreateLambda([] { FSlateApplication::Get().GetMessageHandler().OnCloseRequested(); }));
	// What the Edit menu does goes to the text that has the keyboard, or had it when the menu was opened.
	MapTextCommand(Commands.Undo, &SHostTextWidget::Undo, [](const SHostTextWidget& Text) { return Text.CanUndo() && !Text.IsReadOnly(); });
	MapTextCommand(Commands.Redo, &SHostTextWidget::Redo, [](const SHostTextWidget& Text) { return Text.CanRedo() && !Text.IsReadOnly(); });
	MapTextCommand(Commands.Cut, &SHostTextWidget::CutSelectedText,
		[](const SHostTextWidget& Text) { return Text.AnyTextSelected() && !Text.IsReadOnly(); });
	MapTextCommand(Commands.Copy, &SHostTextWidget::CopySelectedText, [](const SHostTextWidget& Text) { return Text.AnyTextSelected(); });
	MapTextCommand(Commands.Paste, &SHostTextWidget::PasteText, [](const SHostTextWidget& Text) { return !Text.IsReadOnly(); });
	MapTextCommand(
		Commands.SelectAll, &SHostTextWidget::SelectAllText, [](const SHostTextWidget& Text) { return !Text.GetText().IsEmpty(); });
	CommandList->MapAction(Commands.CloseTab,
		FExecuteAction::CreateSPLambda(this,
			[this]
			{
				if (const TSharedPtr<SDockTab> Tab = DockArea->GetActiveTab())
				{
					Tab->RequestCloseTab();
				}
			}),
		FCanExecuteAction::CreateSPLambda(this, [this] { return DockArea->GetActiveTab().IsValid(); }));
	CommandList->MapAction(Commands.OpenProjectFolder,
		FExecuteAction::CreateLambda([] { FPlatformProcess::LaunchFileInDefaultExternalApplication(*FPaths::ProjectDir()); }));
	CommandList->MapAction(Commands.RefreshFileIndex,
		FExecuteAction::CreateLambda([] { Velmora::FProjectFileCache::Get().RefreshCache(); }),
		FCanExecuteAction::CreateLambda([] { return !Velmora::FProjectFileCache::Get().IsIndexing(); }));
	CommandList->MapAction(Commands.FirstSteps,
		FExecuteAction::CreateSPLambda(this,
			[this]
			{
				FOpenChat::Show();
				FirstSteps->Open();
			}));
	CommandList->MapAction(Commands.UserGuide, FExecuteAction::CreateStatic(&OpenUserGuide));
	CommandList->MapAction(Commands.About, FExecuteAction::CreateStatic(&ShowAbout));
}

void SEditorFrame::MapTextCommand(const TSharedPtr<FUICommandInfo>& Command, FTextAction Action, bool (*CanDo)(const SHostTextWidget&))
{
	CommandList->MapAction(Command,
		FExecuteAction::CreateSPLambda(this,
			[this, Action]
			{
				if (const TSharedPtr<SHostTextWidget> Text = GetEditedText())
				{
					(Text.Get()->*Action)();
				}
			}),
		FCanExecuteAction::CreateSPLambda(this,
			[this, CanDo]
			{
				const TSharedPtr<SHostTextWidget> Text = GetEditedText();
				return Text && CanDo(*Text);
			}));
}

TSharedRef<SWidget> SEditorFrame::MakeMenuBar()
{
	struct FMenuRow
	{
		FText Label;
		void (SEditorFrame::*Build)(FMenuBuilder&);
	};
	// One row a menu, in the order of the bar.
	const FMenuRow Menus[] = {
		{ LOCTEXT("FileMenu", "File"), &SEditorFrame::BuildFileMenu },
		{ LOCTEXT("EditMenu", "Edit"), &SEditorFrame::BuildEditMenu },
		{ LOCTEXT("ToolsMenu", "Tools"), &SEditorFrame::BuildToolsMenu },
		{ LOCTEXT("WindowMenu", "Window"), &SEditorFrame::BuildWindowMenu },
		{ LOCTEXT("HelpMenu", "Help"), &SEditorFrame::BuildHelpMenu },
	};
	FMenuBarBuilder Builder(CommandList);
	for (const FMenuRow& Menu : Menus)
	{
		Builder.AddPullDownMenu(Menu.Label, FText::GetEmpty(),
			FNewMenuDelegate::CreateSPLambda(this,
				[this, Build = Menu.Build](FMenuBuilder& Opened)
				{
					// Modules come and go while the bar stands.
					Opened.PushExtender(FHostLevelEditor::GetMenuExtenders());
					(this->*Build)(Opened);
					Opened.PopExtender();
				}));
	}
	MenuBar = StaticCastSharedRef<SMenuBar>(Builder.MakeWidget());
	MenuBar->SetTag("MenuBar");
	MenuBar->SetOnMenuOpening(FSimpleDelegate::CreateSPLambda(this, [this] { TextBeforeMenu = GetFocusedText(); }));
	return MenuBar.ToSharedRef();
}

void SEditorFrame::RegisterLogTab()
{
	FGlobalTabmanager::Get()
		->RegisterNomadTabSpawner(GetLogTabName(),
			FOnSpawnTab::CreateSPLambda(
				this, [this](const FSpawnTabArgs&) { return SNew(SDockTab).TabRole(ETabRole::NomadTab)[SNew(SOutputLog, Log)]; }))
		.SetDisplayName(LOCTEXT("LogTab", "Output Log"))
		.SetTooltipText(LOCTEXT("LogTabTooltip", "Open the log of the program, with the console"))
		.SetGroup(WorkspaceMenu::GetMenuStructure().GetDeveloperToolsLogCategory())
		.SetIcon(GetFrameIcon(TEXT("Icons.OutputLog")));
}

void SEditorFrame::RegisterActivityTab()
{
	FGlobalTabmanager::Get()
		->RegisterNomadTabSpawner(GetActivityTabName(),
			FOnSpawnTab::CreateLambda(
				[](const FSpawnTabArgs&) { return SNew(SDockTab).TabRole(ETabRole::NomadTab)[SNew(SAgentActivity)]; }))
		.SetDisplayName(LOCTEXT("ActivityTab", "Agent Activity"))
		.SetTooltipText(LOCTEXT("ActivityTabTooltip", "Show what goes to a model and what comes back"))
		.SetGroup(WorkspaceMenu::GetMenuStructure().GetDeveloperToolsLogCategory())
		.SetIcon(GetFrameIcon(TEXT("Icons.Info")));
}

void SEditorFrame::RegisterConversationsTab()
{
	FGlobalTabmanager::Get()
		->RegisterNomadTabSpawner(GetConversationsTabName(),
			FOnSpawnTab::CreateSPLambda(this,
				[this](const FSpawnTabArgs&)
				{
					return SNew(SDockTab).TabRole(
						ETabRole::NomadTab)[SNew(SConversations)
												.OnShowFoundMessage(FOnShowFoundMessage::CreateSP(FindStrip, &SFindStrip::ShowMessage))];
				}))
		.SetDisplayName(LOCTEXT("ConversationsTab", "Conversations"))
		.SetTooltipText(LOCTEXT("ConversationsTabTooltip", "All conversations of this project: search, open, rename, pin, export, delete"))
		.SetGroup(WorkspaceMenu::GetMenuStructure().GetToolsCategory())
		.SetIcon(GetFrameIcon(TEXT("Icons.Search")));
}

void SEditorFrame::RegisterSourceTab()
{
	const auto Spawn = [this](const FSpawnTabArgs&)
	{
		const TSharedRef<SSourceViewer> Viewer = SNew(SSourceViewer, SourceFind);
		// Files outside of the project are nobody's to watch.
		const auto OnActivated = [Weak = TWeakPtr<SSourceViewer>(Viewer)](TSharedRef<SDockTab>, ETabActivationCause)
		{
			if (const TSharedPtr<SSourceViewer> Shown = Weak.Pin())
			{
				Shown->Follow();
			}
		};
		return SNew(SDockTab).TabRole(ETabRole::NomadTab).OnTabActivated_Lambda(OnActivated)[Viewer];
	};
	// Not in the menus: without a file there is nothing to see.
	FGlobalTabmanager::Get()
		->RegisterNomadTabSpawner(SSourceViewer::GetTabName(), FOnSpawnTab::CreateSPLambda(this, Spawn))
		.SetDisplayName(LOCTEXT("SourceTab", "Source"))
		.SetTooltipText(LOCTEXT("SourceTabTooltip", "A file to be read, where there is no editor"))
		.SetMenuType(ETabSpawnerMenuType::Hidden)
		.SetIcon(GetFrameIcon(TEXT("Icons.GenericFile")));
}

FText SEditorFrame::GetTurnText() const
{
	return FText::FromString(ActivityText::DescribeTurn(Velmora::FAgentActivity::GetTurnStatus(), LongTurnSeconds));
}

float SEditorFrame::GetTurnTextRoom() const
{
	constexpr float Gaps = 24.0f;
	return FMath::Max(static_cast<float>(GetCachedGeometry().GetLocalSize().X - MenuBar->GetDesiredSize().X) - Gaps, 1.0f);
}

void SEditorFrame::BuildFileMenu(FMenuBuilder& Builder)
{
	FChatCommands::BuildFileSection(Builder);
	Builder.BeginSection("FileProject");
	Builder.AddMenuEntry(FEditorFrameCommands::Get().Exit);
	Builder.EndSection();
}

void SEditorFrame::BuildEditMenu(FMenuBuilder& Builder)
{
	const FEditorFrameCommands& Commands = FEditorFrameCommands::Get();
	Builder.BeginSection("EditHistory", LOCTEXT("HistorySection", "History"));
	Builder.AddMenuEntry(Commands.Undo, NAME_None, TAttribute<FText>(), TAttribute<FText>(), GetFrameIcon(TEXT("Icons.Undo")));
	Builder.AddMenuEntry(Commands.Redo, NAME_None, TAttribute<FText>(), TAttribute<FText>(), GetFrameIcon(TEXT("Icons.Redo")));
	Builder.EndSection();
	Builder.BeginSection("EditText", LOCTEXT("TextSection", "Text"));
	Builder.AddMenuEntry(Commands.Cut, NAME_None, TAttribute<FText>(), TAttribute<FText>(), GetFrameIcon(TEXT("Icons.Cut")));
	Builder.AddMenuEntry(Commands.Copy, NAME_None, TAttribute<FText>(), TAttribute<FText>(), GetFrameIcon(TEXT("Icons.Copy")));
	Builder.AddMenuEntry(Commands.Paste, NAME_None, TAttribute<FText>(), TAttribute<FText>(), GetFrameIcon(TEXT("Icons.Paste")));
	Builder.AddMenuEntry(Commands.SelectAll);
	Builder.EndSection();
	FChatCommands::BuildEditSection(Builder);
	FAgentMenus::BuildEditSection(Builder);
}

void SEditorFrame::BuildWindowMenu(FMenuBuilder& Builder)
{
	const TSharedRef<FWorkspaceItem> Root = WorkspaceMenu::GetMenuStructure().GetStructureRoot();
	for (const TSharedRef<FWorkspaceItem>& Group : Root->GetChildItems())
	{
		AddTabGroup(Builder, Group);
	}
	Builder.BeginSection("WindowOther");
	for (const TSharedRef<FTabSpawnerEntry>& Spawner : FGlobalTabmanager::Get()->GetSpawners())
	{
		if (!Spawner->GetParent())
		{
			AddTabEntry(Builder, Spawner);
		}
	}
	Builder.EndSection();
	FChatCommands::BuildViewSection(Builder);
	Builder.BeginSection("WindowTabs");
	Builder.AddMenuEntry(FEditorFrameCommands::Get().CloseTab);
	Builder.EndSection();
}

void SEditorFrame::BuildToolsMenu(FMenuBuilder& Builder)
{
	const FEditorFrameCommands& Commands = FEditorFrameCommands::Get();
	FAgentMenus::BuildToolsSection(Builder);
	FChatCommands::BuildTurnSection(Builder);
	Builder.BeginSection("Programming", LOCTEXT("ProgrammingSection", "Programming"));
	Builder.AddMenuEntry(
		Commands.OpenProjectFolder, NAME_None, TAttribute<FText>(), TAttribute<FText>(), GetFrameIcon(TEXT("Icons.FolderOpen")));
	Builder.AddMenuEntry(Commands.RefreshFileIndex);
	Builder.EndSection();
}

void SEditorFrame::BuildHelpMenu(FMenuBuilder& Builder)
{
	const FEditorFrameCommands& Commands = FEditorFrameCommands::Get();
	Builder.BeginSection("HelpOnline");
	Builder.AddMenuEntry(Commands.FirstSteps);
	Builder.AddMenuEntry(Commands.UserGuide, NAME_None, TAttribute<FText>(), TAttribute<FText>(), GetFrameIcon(TEXT("Icons.Help")));
	Builder.EndSection();
	Builder.BeginSection("HelpApplication");
	Builder.AddMenuEntry(Commands.About, NAME_None, TAttribute<FText>(), TAttribute<FText>(), GetFrameIcon(TEXT("Icons.Info")));
	Builder.EndSection();
}

TSharedPtr<SHostTextWidget> SEditorFrame::GetFocusedText()
{
	// By what it is and not by its type's name: every text widget is one of these.
	const TSharedPtr<SWidget> Focused = FSlateApplication::Get().GetKeyboardFocusedWidget();
	return dynamic_cast<SHostTextWidget*>(Focused.Get()) ? StaticCastSharedPtr<SHostTextWidget>(Focused) : nullptr;
}

TSharedPtr<SHostTextWidget> SEditorFrame::GetEditedText() const
{
	return MenuBar->GetOpenIndex() != INDEX_NONE ? TextBeforeMenu.Pin() : GetFocusedText();
}

namespace
{
	bool IsKeyOf(const FUICommandInfo& Command, const FKeyEvent& Event)
	{
		return Command.GetDefaultChord() ==
			FInputChord(Event.GetKey(), Event.IsShiftDown(), Event.IsControlDown(), Event.IsAltDown(), Event.IsCommandDown());
	}
}

void SEditorFrame::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	FCutNames::Update();
}

// Text boxes take these two keys for themselves: the one copies nothing where nothing is selected, the other moves nothing in an empty
// box.
FReply SEditorFrame::OnPreviewKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	// Before the prompt, which would move its caret.
	if (FMessageScroll::HandleKey(InKeyEvent))
	{
		return FReply::Handled();
	}
	const FEditorFrameCommands& Commands = FEditorFrameCommands::Get();
	const TSharedPtr<SHostTextWidget> Text = GetFocusedText();
	if (FKeyBindings::IsCapturing() || FSlateApplication::Get().AnyMenusVisible() || !Text)
	{
		return FReply::Unhandled();
	}
	const bool bRecalls = IsKeyOf(*Commands.RecallPrompt, InKeyEvent) && Text->GetTag() == FName("InputTextBox");
	const bool bCopies = IsKeyOf(*Commands.CopyLastAnswer, InKeyEvent) && !Text->AnyTextSelected();
	const TSharedPtr<FUICommandInfo> Command = bRecalls ? Commands.RecallPrompt : bCopies ? Commands.CopyLastAnswer : nullptr;
	return Command && CommandList->TryExecuteAction(Command.ToSharedRef()) ? FReply::Handled() : FReply::Unhandled();
}

FReply SEditorFrame::OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	if (MenuBar->HandleKey(InKeyEvent))
	{
		return FReply::Handled();
	}
	const FEditorFrameCommands& Commands = FEditorFrameCommands::Get();
	// Up is for the empty box alone, which is asked above. What is open over the window closes before anything is stopped.
	const bool bIsPassed =
		IsKeyOf(*Commands.RecallPrompt, InKeyEvent) || (IsKeyOf(*Commands.Stop, InKeyEvent) && FSlateApplication::Get().AnyMenusVisible());
	return !bIsPassed && CommandList->ProcessCommandBindings(InKeyEvent) ? FReply::Handled() : FReply::Unhandled();
}

FReply SEditorFrame::OnMouseWheel(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	return FChipScroll::HandleWheel(MouseEvent) ? FReply::Handled() : FReply::Unhandled();
}

#undef LOCTEXT_NAMESPACE
