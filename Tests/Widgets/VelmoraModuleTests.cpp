#include "CodeIntelModuleTest.h"

#include "FileCache/ProjectFileCache.h"
#include "Framework/Application/SlateApplication.h"
#include "FileSearch/FileIndexService.h"
#include "Framework/MultiBox/MultiBoxBuilder.h"
#include "Host/HostEditor.h"
#include "Styling/SlateStyleRegistry.h"
#include "Widgets/Docking/SDockTab.h"
#include "Widgets/SIndexProgressWidget.h"
#include "Widgets/SNullWidget.h"
#include "Widgets/SVelmoraTab.h"
#include "WorkspaceMenuStructure.h"
#include "WorkspaceMenuStructureModule.h"

/** What the module does while it is loaded, second by second. */
class FVelmoraModuleWatchTest : public FCodeIntelModuleTest
{
protected:
	/** A build that somebody else has started, and that goes on until Go. */
	void BeginBuild()
	{
		HoldBuilds();
		Start();
		Builder = std::thread([] { Manager().RebuildIndex(true); });
		ASSERT_TRUE(WaitUntil([] { return Manager().IsBuilding(); }));
	}

	void EndBuild()
	{
		Go();
		Builder.join();
		Settle();
	}

	std::thread Builder;
};

TEST_F(FVelmoraModuleWatchTest, ItTellsOfBuildsThatItDidNotStart)
{
	PumpFrame(1.0);
	BeginBuild();
	PumpFrame(1.0);
	EXPECT_EQ(TakeToasts(), FTextList{ "[1] Building code intelligence index..." });
	PumpFrame(1.0);
	EXPECT_EQ(TakeToasts(), FTextList());

	EndBuild();
	PumpFrame(1.0);
	const FTextList Toasts = TakeToasts();
	ASSERT_EQ(Toasts.size(), 1u);
	EXPECT_TRUE(Toasts[0].starts_with("[2] Code index ready! (0 symbols, ")) << Toasts[0];
	PumpFrame(1.0);
	EXPECT_EQ(TakeToasts(), FTextList());
}

TEST_F(FVelmoraModuleWatchTest, ABuildThatLeavesNoIndexHasFailed)
{
	BeginBuild();
	PumpFrame(1.0);
	FControl::Shutdown();
	Builder.join();
	TakeToasts();
	PumpFrame(1.0);
	EXPECT_EQ(TakeToasts(), FTextList{ Failed("Index build failed - check log for details") });
}

TEST_F(FVelmoraModuleWatchTest, TheFileIndexIsRefreshedEveryThirtySeconds)
{
	Velmora::UI::FFileIndexService& Index = Velmora::UI::FFileIndexService::Get();
	const auto Wait = [&Index] { EXPECT_TRUE(WaitUntil([&Index] { return Index.IsReady() && !Index.IsIndexing(); })); };
	Index.RefreshIndex();
	Wait();
	EXPECT_EQ(Index.GetFileCount(), 1);
	const FTemporaryProject Other;
	Other.Write("One.txt", "");
	Other.Write("Two.txt", "");
	for (int32 Second = 1; Second < 30; ++Second)
	{
		PumpFrame(1.0);
	}
	Wait();
	EXPECT_EQ(Index.GetFileCount(), 1) << "nothing was scanned yet";
	PumpFrame(1.0);
	Wait();
	EXPECT_EQ(Index.GetFileCount(), 2);
}

TEST_F(FVelmoraModuleWatchTest, TheTickerPollsOnceASecond)
{
	BeginBuild();
	PumpSeconds(0.9);
	EXPECT_EQ(TakeToasts(), FTextList()) << "the first look comes after a second";
	PumpSeconds(0.2);
	EXPECT_EQ(TakeToasts(), FTextList{ "[1] Building code intelligence index..." }) << "a build that ran already counts as a start";
	EndBuild();
}

TEST_F(FVelmoraModuleWatchTest, ItTakesDownWhatItPutUp)
{
	const TArray<TSharedRef<FTabSpawnerEntry>> Spawners = FGlobalTabmanager::Get()->GetSpawners();
	const FTabSpawnerEntry* Entry = nullptr;
	for (const TSharedRef<FTabSpawnerEntry>& Spawner : Spawners)
	{
		Entry = Spawner->GetTabType() == SVelmoraTab::GetTabName() ? &*Spawner : Entry;
	}
	ASSERT_NE(Entry, nullptr);
	EXPECT_EQ(DumpKey(Entry->GetDisplayName()), "FVelmoraModule,VelmoraTabTitle: Velmora AI");
	EXPECT_EQ(DumpKey(Entry->GetTooltipText()), "FVelmoraModule,VelmoraTabTooltip: Open Velmora AI Assistant");
	EXPECT_EQ(Entry->GetIcon().GetStyleName(), FName("Logo_App_20"));
	EXPECT_EQ(Entry->GetIcon().GetStyleSetName(), FVelmoraUIStyles::GetStyleSetName());
	EXPECT_TRUE(WorkspaceMenu::GetMenuStructure().GetToolsCategory()->GetChildItems().ContainsByPredicate(
		[Entry](const TSharedRef<FWorkspaceItem>& Item) { return &*Item == Entry; }));

	// The section, as the menu shows it.
	FMenuBuilder Builder(true, nullptr, FHostLevelEditor::GetMenuExtenders());
	Builder.BeginSection("Programming", INVTEXT("Programming"));
	Builder.EndSection();
	App().PushMenu(Root, Builder.MakeWidget(), FSlateRect(10, 10, 20, 20), MenuPlacement_BelowAnchor, true);
	PumpFrame();
	EXPECT_EQ(VisibleTexts(), (FTextList{ "VELMORA AI", "Velmora AI", "Code Index" }));
	EXPECT_TRUE(IsShown(FindByToolTip("Open Velmora AI Assistant")) && IsShown(FindByToolTip("Code intelligence index operations")));
	Click(FindByText("Velmora AI"));
	const TSharedPtr<SDockTab> Tab = FGlobalTabmanager::Get()->FindExistingLiveTab(FTabId(SVelmoraTab::GetTabName()));
	ASSERT_TRUE(Tab.IsValid());
	EXPECT_EQ(Tab->GetTabRole(), ETabRole::NomadTab);
	EXPECT_EQ(Utf8(Tab->GetTabLabel().ToString()), "Velmora AI");
	EXPECT_EQ(Utf8(Tab->GetContent()->GetType().ToString()), "SVelmoraTab");
	Tab->RequestCloseTab();

	FModuleManager::Get().UnloadModule("VelmoraUI");
	EXPECT_FALSE(FCodeIntelCommands::IsRegistered());
	EXPECT_FALSE(FGlobalTabmanager::Get()->HasTabSpawner(SVelmoraTab::GetTabName()));
	EXPECT_EQ(FSlateStyleRegistry::FindSlateStyle(FVelmoraUIStyles::GetStyleSetName()), nullptr);
	FMenuBuilder After(true, nullptr, FHostLevelEditor::GetMenuExtenders());
	After.BeginSection("Programming", INVTEXT("Programming"));
	After.EndSection();
	App().PushMenu(Root, After.MakeWidget(), FSlateRect(10, 10, 20, 20), MenuPlacement_BelowAnchor, true);
	PumpFrame();
	EXPECT_EQ(VisibleTexts(), FTextList());
	App().DismissAllMenus();
	ASSERT_NE(FModuleManager::Get().LoadModule("VelmoraUI"), nullptr) << "and comes back";
}

TEST_F(FVelmoraModuleWatchTest, AnOpenTabIsClosedBeforeItsStylesGo)
{
	ASSERT_TRUE(FGlobalTabmanager::Get()->TryInvokeTab(FTabId(SVelmoraTab::GetTabName())).IsValid());
	const TSharedPtr<SDockTab> Tab = FGlobalTabmanager::Get()->FindExistingLiveTab(FTabId(SVelmoraTab::GetTabName()));
	const TWeakPtr<SWidget> Content = Tab->GetContent();
	Show(Tab->GetContent());
	FModuleManager::Get().UnloadModule("VelmoraUI");
	EXPECT_FALSE(FGlobalTabmanager::Get()->FindExistingLiveTab(FTabId(SVelmoraTab::GetTabName())).IsValid());
	EXPECT_EQ(Tab->GetContent(), SNullWidget::NullWidget) << "whoever holds the tab holds nothing of the module";
	Show(Root);
	EXPECT_FALSE(Content.IsValid());
	ASSERT_NE(FModuleManager::Get().LoadModule("VelmoraUI"), nullptr);
}

TEST_F(FVelmoraModuleWatchTest, IndexWorkThatOutlivesTheModuleEndsWithoutAWord)
{
	HoldBuilds();
	Start();
	FActions::HandleRebuildIndex();
	ASSERT_TRUE(WaitUntil([] { return Manager().IsBuilding(); }));
	EXPECT_EQ(TakeToasts(), FTextList{ "[1] Building code intelligence index..." });
	FModuleManager::Get().UnloadModule("VelmoraUI");
	FHostNotifications::Clear();
	Go();
	Settle();
	EXPECT_EQ(TakeToasts(), FTextList());

	// A build of the next life is reported again.
	ASSERT_NE(FModuleManager::Get().LoadModule("VelmoraUI"), nullptr);
	FActions::HandleRebuildIndex();
	Settle();
	const FTextList Toasts = TakeToasts();
	ASSERT_FALSE(Toasts.empty());
	EXPECT_TRUE(Toasts.back().starts_with("[2] Code index ready!")) << Toasts.back();
}

/** A process that shows nothing, such as a commandlet or a cook. */
using FVelmoraModuleWithoutSlateTest = testing::Test;

TEST_F(FVelmoraModuleWithoutSlateTest, NothingIsScannedOrRegistered)
{
	ASSERT_FALSE(FSlateApplication::IsInitialized());
	FHostLevelEditor::Install();
	const bool bWasIndexing = Velmora::FProjectFileCache::Get().IsIndexing() || Velmora::FProjectFileCache::Get().IsReady();
	ASSERT_NE(FModuleManager::Get().LoadModule("VelmoraUI"), nullptr);
	EXPECT_FALSE(FCodeIntelCommands::IsRegistered());
	EXPECT_FALSE(FGlobalTabmanager::Get()->HasTabSpawner(SVelmoraTab::GetTabName()));
	EXPECT_EQ(FSlateStyleRegistry::FindSlateStyle(FVelmoraUIStyles::GetStyleSetName()), nullptr);
	EXPECT_EQ(Velmora::FProjectFileCache::Get().IsIndexing() || Velmora::FProjectFileCache::Get().IsReady(), bWasIndexing);
	FModuleManager::Get().UnloadModule("VelmoraUI");
	for (const char* Name : { "VelmoraUI", "LevelEditor" })
	{
		FModuleManager::Get().UnloadModule(Name);
		FHostModules::Unregister(Name);
	}
}
