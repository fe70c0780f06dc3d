#include "CodeIntelModuleTest.h"

#include "Framework/MultiBox/MultiBoxBuilder.h"
#include "Support/Base/SavedText.h"

#include <algorithm>
#include <regex>

class FCodeIntelCommandTest : public FCodeIntelModuleTest
{
protected:
	struct FCommandRow
	{
		TSharedPtr<FUICommandInfo> Command;
		const char* Name;
	};

	static std::vector<FCommandRow> All()
	{
		const FCodeIntelCommands& Commands = FCodeIntelCommands::Get();
		return {
			{ Commands.RebuildIndex, "RebuildIndex" },
			{ Commands.CompactIndex, "CompactIndex" },
			{ Commands.ReconcileIndex, "ReconcileIndex" },
			{ Commands.ViewStatus, "ViewStatus" },
			{ Commands.OpenSettings, "OpenSettings" },
			{ Commands.RebuildEngineIndex, "RebuildEngineIndex" },
			{ Commands.ClearEngineIndex, "ClearEngineIndex" },
			{ Commands.ReconcileEngineIndex, "ReconcileEngineIndex" },
		};
	}

	/** The handlers of a list of its own, as any part of an editor may register them. */
	static TSharedRef<FUICommandList> Handlers()
	{
		const TSharedRef<FUICommandList> List = MakeShared<FUICommandList>();
		FActions::RegisterHandlers(List);
		return List;
	}

	/** What "View Index Status" shows. */
	static std::string ReadStatus()
	{
		FTextList Seen;
		int32 Frames = 0;
		App().SetFrameHook(
			[&Seen, &Frames]()
			{
				if (++Frames == 3)
				{
					Seen = VisibleTexts();
					EXPECT_EQ(App().GetActiveModalWindow()->GetClientSize(), FVector2D(600, 500));
					const FVector2D Button = GetCenter(FindByText("Close"));
					App().GetMessageHandler().OnMouseDown(EKeys::LeftMouseButton, Button, FModifierKeysState());
					App().GetMessageHandler().OnMouseUp(EKeys::LeftMouseButton, Button, FModifierKeysState());
				}
				if (Frames > 100)
				{
					App().RequestExit();
				}
			});
		Run(FCodeIntelCommands::Get().ViewStatus);
		App().SetFrameHook(nullptr);
		// Toasts may stand beside it.
		const auto Title = std::find(Seen.begin(), Seen.end(), "Code Intelligence Status");
		return Seen.end() - Title > 1 ? Title[1] : std::string();
	}

	static FTextList Allowed()
	{
		FTextList Names;
		for (const FCommandRow& Row : All())
		{
			if (Handlers()->CanExecuteAction(Row.Command.ToSharedRef()))
			{
				Names.push_back(Row.Name);
			}
		}
		return Names;
	}

	/** By the command list, whether or not it may. */
	static void Run(const TSharedPtr<FUICommandInfo>& Command) { EXPECT_TRUE(Handlers()->ExecuteAction(Command.ToSharedRef())); }

	/** The report with its figures that differ from run to run written as one sign. */
	std::string Report() const
	{
		std::string Text = ReadStatus();
		Text = std::regex_replace(Text, std::regex("[0-9]+\\.[0-9][0-9] (MB|seconds)"), "# $1");
		Text = std::regex_replace(Text, std::regex(Project.Root.native() + "(?!-)"), "PROJECT");
		return std::regex_replace(Text, std::regex((Folder / "engine").native()), "ENGINE");
	}

	/** Opens the main menu's section as an editor would, and the sub-menu of the index. */
	void OpenIndexMenu()
	{
		FMenuBuilder Builder(true, nullptr, FHostLevelEditor::GetMenuExtenders());
		Builder.BeginSection("Programming", INVTEXT("Programming"));
		Builder.EndSection();
		App().PushMenu(Root, Builder.MakeWidget(), FSlateRect(10, 10, 20, 20), MenuPlacement_BelowAnchor, true);
		PumpFrame();
		Click(FindByText("Code Index"));
		PumpFrame();
	}
};

TEST_F(FCodeIntelCommandTest, TheyHaveTheirNamesWordsAndNoKeys)
{
	std::string Words;
	for (const FCommandRow& Row : All())
	{
		const FUICommandInfo& Command = *Row.Command;
		EXPECT_EQ(Utf8(Command.GetCommandName().ToString()), Row.Name);
		EXPECT_TRUE(Command.GetUserInterfaceType() == EUserInterfaceActionType::Button && !Command.GetDefaultChord().IsValidChord());
		Words += DumpKey(Command.GetLabel()) + " / " + DumpKey(Command.GetDescription()) + "\n";
	}
	ExpectSavedText("Widgets/Looks/IndexCommands.txt", Words);
	const TSharedRef<FBindingContext> Context = FCodeIntelCommands::Get().GetBindingContext();
	EXPECT_EQ(Utf8(Context->GetContextName().ToString()), "CodeIntel");
	EXPECT_EQ(DumpKey(Context->GetContextDesc()), "Contexts,CodeIntel: Code Intelligence");
	EXPECT_EQ(Context->GetCommands().Num(), 8);
}

TEST_F(FCodeIntelCommandTest, BeforeTheManagerHasStartedEachSaysWhyNot)
{
	SetEngineIncluded(true);
	EXPECT_EQ(Allowed(), (FTextList{ "OpenSettings" }));
	const FCodeIntelCommands& Commands = FCodeIntelCommands::Get();
	const std::pair<TSharedPtr<FUICommandInfo>, const char*> Cases[] = {
		{ Commands.RebuildIndex, "Index manager not initialized" },
		{ Commands.CompactIndex, "Cannot compact: index not ready" },
		{ Commands.ReconcileIndex, "Cannot reconcile: project index not ready" },
		{ Commands.RebuildEngineIndex, "Index manager not initialized" },
		{ Commands.ClearEngineIndex, "Engine index not initialized" },
		{ Commands.ReconcileEngineIndex, "Cannot reconcile: engine index not ready" },
	};
	for (const auto& [Command, Reason] : Cases)
	{
		Run(Command);
		EXPECT_EQ(TakeToasts(), FTextList{ Failed(Reason) });
	}
	SetEngineIncluded(false);
	Run(Commands.RebuildEngineIndex);
	EXPECT_EQ(TakeToasts(), FTextList{ Failed("Engine source reading not enabled in settings") });
	EXPECT_EQ(Report(), "Index Manager: Not Initialized");
}

TEST_F(FCodeIntelCommandTest, WithoutAnIndex)
{
	Start();
	EXPECT_EQ(Allowed(), (FTextList{ "RebuildIndex", "CompactIndex", "ViewStatus", "OpenSettings" }));
	EXPECT_EQ(Report(),
		"=== PROJECT INDEX ===\n\nStatus: Not Ready\nThe project index has not been built yet.\n\n=== ENGINE INDEX ===\n\nStatus: "
		"Disabled\nEnable 'Include Engine Source' in Settings to use engine index.\n");
	SetEngineIncluded(true);
	EXPECT_EQ(
		Allowed(), (FTextList{ "RebuildIndex", "CompactIndex", "ViewStatus", "OpenSettings", "RebuildEngineIndex", "ClearEngineIndex" }));
	EXPECT_TRUE(Report().ends_with("=== ENGINE INDEX ===\n\nStatus: Not Initialized\n")) << Report();
	Manager().InitializeEngineIndex();
	Settle();
	EXPECT_TRUE(Report().ends_with("=== ENGINE INDEX ===\n\nStatus: Not Ready\nUse 'Rebuild Engine Index' to build the engine index.\n"))
		<< Report();
	Run(FCodeIntelCommands::Get().CompactIndex);
	Run(FCodeIntelCommands::Get().ReconcileEngineIndex);
	EXPECT_EQ(TakeToasts(), (FTextList{ Failed("Cannot compact: index not ready"), Failed("Cannot reconcile: engine index not ready") }));
}

TEST_F(FCodeIntelCommandTest, BuildCompactAndReconcile)
{
	SetEngineIncluded(true);
	Start();
	const FCodeIntelCommands& Commands = FCodeIntelCommands::Get();
	Run(Commands.RebuildIndex);
	EXPECT_EQ(TakeToasts(), FTextList{ "[1] Building code intelligence index..." });
	Settle();
	FTextList Toasts = TakeToasts();
	ASSERT_EQ(Toasts.size(), 1u);
	EXPECT_TRUE(std::regex_match(Toasts[0], std::regex("\\[2\\] Code index ready! \\(2 symbols, [0-9]+\\.[0-9]s\\)"))) << Toasts[0];
	Run(Commands.RebuildEngineIndex);
	Settle();
	Toasts = TakeToasts();
	ASSERT_EQ(Toasts.size(), 2u) << "the one that began, and the end";
	EXPECT_EQ(Toasts[0], "[2] Building code intelligence index...");
	EXPECT_TRUE(Toasts[1].starts_with("[2] Code index ready! (1 symbols, ")) << Toasts[1];
	EXPECT_EQ(Allowed().size(), 8u);
	EXPECT_EQ(Report(),
		"=== PROJECT INDEX ===\n\nStatus: Ready\nTotal Files: 1\nFailed Files: 0\nEstimated Symbols: 2\nIndex Size: # MB\nLast Build Time: "
		"# seconds\nProject Root: PROJECT\n"
		"\n=== ENGINE INDEX ===\n\nStatus: Ready\nTotal Files: 1\nFailed Files: 0\nEstimated Symbols: 1\nIndex Size: # MB\nLast Build "
		"Time: # seconds\nEngine Root: ENGINE\n");

	ASSERT_TRUE(WaitUntil([] { return Manager().IsReindexerRunning() && Manager().IsEngineReindexerRunning(); }));
	Run(Commands.ReconcileIndex);
	Settle();
	EXPECT_EQ(TakeToasts(), FTextList{ "[2] Index compacted (0.0 MB saved)" }) << "nothing was found";
	Project.Write("Two.cpp", "int Third;\n");
	Project.Write("Three.cpp", "int Fourth;\n");
	std::filesystem::remove(Project.Root / "One.cpp");
	std::filesystem::remove(Folder / "engine" / "Core.cpp");
	Run(Commands.ReconcileIndex);
	Settle();
	EXPECT_EQ(TakeToasts(), FTextList{ "[2] Code index ready! (3 symbols, 0.0s)" }) << "one deleted and two new, in the words of a build";
	Run(Commands.ReconcileEngineIndex);
	Settle();
	EXPECT_EQ(TakeToasts(), FTextList{ "[2] Code index ready! (1 symbols, 0.0s)" });
	Run(Commands.CompactIndex);
	Settle();
	Toasts = TakeToasts();
	ASSERT_EQ(Toasts.size(), 1u);
	EXPECT_TRUE(std::regex_match(Toasts[0], std::regex("\\[2\\] Index compacted \\(-?[0-9]+\\.[0-9] MB saved\\)"))) << Toasts[0];
	Run(Commands.ClearEngineIndex);
	Toasts = TakeToasts();
	ASSERT_EQ(Toasts.size(), 1u);
	EXPECT_TRUE(Toasts[0].starts_with("[2] Index compacted (")) << Toasts[0];
	EXPECT_FALSE(Manager().IsEngineIndexReady());
}

TEST_F(FCodeIntelCommandTest, WhileABuildRuns)
{
	SetEngineIncluded(true);
	HoldBuilds();
	Start();
	const FCodeIntelCommands& Commands = FCodeIntelCommands::Get();
	Run(Commands.RebuildIndex);
	ASSERT_TRUE(WaitUntil([] { return Manager().IsBuilding(); }));
	EXPECT_EQ(Allowed(), (FTextList{ "OpenSettings", "RebuildEngineIndex", "ClearEngineIndex" }));
	EXPECT_EQ(Report(), "=== PROJECT INDEX ===\n\nStatus: Building...\n\n=== ENGINE INDEX ===\n\nStatus: Not Initialized\n");
	TakeToasts();
	Run(Commands.RebuildIndex);
	EXPECT_EQ(TakeToasts(), FTextList{ Failed("Index build already in progress") });
	Run(Commands.RebuildEngineIndex);
	ASSERT_TRUE(WaitUntil([] { return Manager().IsEngineIndexBuilding(); }));
	EXPECT_EQ(Allowed(), (FTextList{ "OpenSettings" }));
	EXPECT_TRUE(Report().ends_with("=== ENGINE INDEX ===\n\nStatus: Building...\n")) << Report();
	TakeToasts();
	Run(Commands.RebuildEngineIndex);
	Run(Commands.ClearEngineIndex);
	EXPECT_EQ(TakeToasts(),
		(FTextList{ Failed("Engine index build already in progress"), Failed("Cannot clear while engine index is building") }));
}

TEST_F(FCodeIntelCommandTest, BuildsThatFailSaySo)
{
	SetEngineIncluded(true);
	Options.Extractor.Program = TEXT("/nowhere/extractor");
	Start();
	Run(FCodeIntelCommands::Get().RebuildIndex);
	Settle();
	EXPECT_EQ(TakeToasts(), (FTextList{ "[3] Building code intelligence index...", Failed("Rebuild failed - check log for details") }));
	Run(FCodeIntelCommands::Get().RebuildEngineIndex);
	Settle();
	EXPECT_EQ(TakeToasts(),
		(FTextList{ "[3] Building code intelligence index...", Failed("Engine index rebuild failed - check log for details") }));
}

TEST_F(FCodeIntelCommandTest, TheMenuHasItsEntriesAndGreysThemAtOnce)
{
	Start();
	OpenIndexMenu();
	const std::tuple<const char*, const char*, bool> Rows[] = {
		{ "Rebuild Project Index", "Rebuild the project code intelligence index from scratch", true },
		{ "Compact Project Index", "Compact the project index to remove stale data and reduce size", true },
		{ "Reconcile Project Index", "Scan filesystem for files added or deleted while editor was closed", false },
		{ "Rebuild Engine Index", "Build or rebuild the Unreal Engine source code index", false },
		{ "Clear Engine Index", "Delete the engine index to reclaim disk space", false },
		{ "View Index Status", "View current index status and statistics", true },
		{ "Code Index Settings...", "Open code intelligence settings panel", true },
	};
	FTextList Expected = { "PROJECT INDEX" };
	for (const auto& [Label, ToolTip, bEnabled] : Rows)
	{
		if (Label == std::string("Rebuild Engine Index") || Label == std::string("View Index Status"))
		{
			Expected.push_back(Label[0] == 'R' ? "ENGINE INDEX" : "GENERAL");
		}
		Expected.push_back(Label);
		EXPECT_EQ(FWidgetFinder::IsEnabledInTree(*FindByText(Label)), bEnabled) << Label;
		EXPECT_TRUE(IsShown(FindByToolTip(ToolTip)));
	}
	for (const char* Outer : { "VELMORA AI", "Velmora AI", "Code Index" })
	{
		Expected.push_back(Outer);
	}
	EXPECT_EQ(VisibleTexts(), Expected);
	SetEngineIncluded(true);
	PumpFrame();
	EXPECT_TRUE(FWidgetFinder::IsEnabledInTree(*FindByText("Rebuild Engine Index"))) << "while the menu stands open";

	// By the menu: a build, then the settings.
	Click(FindByText("Rebuild Project Index"));
	EXPECT_FALSE(App().AnyMenusVisible());
	Settle();
	EXPECT_EQ(TakeToasts().size(), 2u);
	OpenIndexMenu();
	Click(FindByText("Code Index Settings..."));
	EXPECT_TRUE(FGlobalTabmanager::Get()->FindExistingLiveTab(FTabId("ProjectSettings")).IsValid());
}
