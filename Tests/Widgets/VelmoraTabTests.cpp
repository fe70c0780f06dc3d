#include "Widgets/SVelmoraTab.h"

#include "Companions/TemporaryProject.h"
#include "Framework/Docking/TabManager.h"
#include "Host/HostLevelEditor.h"
#include "Host/HostModules.h"
#include "Host/HostPaths.h"
#include "Host/HostServices.h"
#include "Host/HostTasks.h"
#include "ISettingsModule.h"
#include "Misc/Paths.h"
#include "Modules/ModuleManager.h"
#include "Settings/VelmoraSettings.h"
#include "Support/Base/TempFolder.h"
#include "Support/TestAgent.h"
#include "VelmoraWidgetTest.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/Docking/SDockTab.h"
#include "UObject/UObjectGlobals.h"
#include "Widgets/Layout/SSplitter.h"
#include "Widgets/SChatWindow.h"

#include <algorithm>
#include <filesystem>
#include <sys/stat.h>

namespace
{

	bool IsOnScreen(const FTextList& Texts, const std::string& Text)
	{
		return std::find(Texts.begin(), Texts.end(), Text) != Texts.end();
	}

} // namespace

class FVelmoraTabTest : public FVelmoraWidgetTest
{
protected:
	TSharedPtr<SDockTab> DockTab;
	TSharedPtr<SVelmoraTab> Tab;
	FTempFolder Saved;
	FString SavedDirBefore;

	void SetUp() override
	{
		FVelmoraWidgetTest::SetUp();
		SavedDirBefore = FPaths::ProjectSavedDir();
		FHostPaths::SetProjectSavedDir(Saved.At());
	}
	void TearDown() override
	{
		Tab.Reset();
		FVelmoraWidgetTest::TearDown();
		EXPECT_TRUE(FHostTasks::WaitForBackground(20.0));
		FHostTasks::RunGameThreadTasks();
		FHostPaths::SetProjectSavedDir(SavedDirBefore);
	}

	void ShowTab()
	{
		DockTab = SNew(SDockTab).TabRole(ETabRole::NomadTab);
		Tab = SNew(SVelmoraTab, DockTab.ToSharedRef());
		Show(Tab.ToSharedRef());
		PumpFrame();
	}

	void CloseTab()
	{
		App().SetRootContent(SNullWidget::NullWidget);
		PumpFrame();
		Tab.Reset();
		// A worker that reads the stored conversations may still hold the chat; it gives it back to the game thread.
		EXPECT_TRUE(FHostTasks::WaitForBackground(20.0));
		FHostTasks::RunGameThreadTasks();
	}
};

TEST_F(FVelmoraTabTest, OpensWithAnAgentOfTheProject)
{
	const FTemporaryProject Project;
	ShowTab();
	EXPECT_EQ(Utf8(SVelmoraTab::GetTabName().ToString()), "VelmoraTab");
	ASSERT_TRUE(Tab->GetViewModel().IsValid());
	EXPECT_TRUE(Tab->GetViewModel()->IsInitialized());
	EXPECT_TRUE(Tab->GetViewModel()->HasActiveConversation());
	EXPECT_TRUE(IsOnScreen(VisibleTexts(), "Welcome to Velmora"));
	EXPECT_TRUE(IsOnScreen(VisibleTexts(), "Ready"));
	const TWeakPtr<const FChatViewModel> ViewModel = Tab->GetViewModel();
	CloseTab();
	EXPECT_FALSE(ViewModel.IsValid());
}

TEST_F(FVelmoraTabTest, WithoutAnAgentTheChatSaysSo)
{
	Velmora::SetProjectFolder(TEXT("/there/is/no/such/folder"));
	ShowTab();
	Velmora::SetProjectFolder(FString());
	ASSERT_TRUE(Tab->GetViewModel().IsValid());
	EXPECT_FALSE(Tab->GetViewModel()->IsInitialized());
	EXPECT_TRUE(IsOnScreen(VisibleTexts(), "Not initialized"));
	EXPECT_FALSE(IsOnScreen(VisibleTexts(), "Welcome to Velmora"));
}

class FTabShellTest : public FVelmoraTabTest
{
protected:
	static constexpr const char* StateFile = "Velmora/TabState.json";
	static constexpr const char* PlanToolTip = "Toggle conversation plan sidebar";
	static constexpr const char* CustomizeToolTip = "Toggle customize behavior sidebar";

	/** No agent: these tests are about the frame around the chat. */
	void ShowShell()
	{
		Velmora::SetProjectFolder(TEXT("/there/is/no/such/folder"));
		ShowTab();
		Velmora::SetProjectFolder(FString());
	}

	/** What of the side panel is on screen. */
	std::string GetPages()
	{
		const FTextList Texts = VisibleTexts();
		std::string Pages;
		for (const char* Title : { "Conversation Plan", "Customize Behavior", "No plan available yet.", "Project Description" })
		{
			Pages += IsOnScreen(Texts, Title) ? (Pages.empty() ? "" : ", ") + std::string(Title) : "";
		}
		return Pages;
	}
	SSplitter& Splitter() { return static_cast<SSplitter&>(*FindInside(*Tab, "SSplitter")); }
	/** Path of the brush's file and its colour, of the image in a button. */
	std::string GetIcon(const char* ToolTip)
	{
		const TSharedRef<SWidget> Button = FindByToolTip(ToolTip);
		PumpFrame();
		return PaintedIn(*Button, ESlateDrawType::Image).at(0);
	}
};

TEST_F(FTabShellTest, TheTwoPagesTakeTurnsAndAreRemembered)
{
	ShowShell();
	EXPECT_EQ(Saved.Read(StateFile), "<missing>");
	struct FStep
	{
		const char* Click;
		const char* Pages;
		const char* File;
		const char* PlanIcon;
		const char* CustomizeIcon;
	};
	constexpr const char* PlanPage = "Conversation Plan, No plan available yet.";
	constexpr const char* BehaviorPage = "Customize Behavior, Project Description";
	const FStep Steps[] = {
		{ nullptr, PlanPage, "<missing>", "Sidepanelclose32 7CB9FFFF", "SidepanelCustomize32 6B7280FF" },
		{ CustomizeToolTip, BehaviorPage, "false, true", "Sidepanel32 6B7280FF", "SidepanelCustomizeClose32 7CB9FFFF" },
		{ CustomizeToolTip, "", "false, false", "Sidepanel32 6B7280FF", "SidepanelCustomize32 6B7280FF" },
		{ PlanToolTip, PlanPage, "true, false", "Sidepanelclose32 7CB9FFFF", "SidepanelCustomize32 6B7280FF" },
		{ PlanToolTip, "", "false, false", "Sidepanel32 6B7280FF", "SidepanelCustomize32 6B7280FF" },
		{ CustomizeToolTip, BehaviorPage, "false, true", "Sidepanel32 6B7280FF", "SidepanelCustomizeClose32 7CB9FFFF" },
		{ PlanToolTip, PlanPage, "true, false", "Sidepanelclose32 7CB9FFFF", "SidepanelCustomize32 6B7280FF" },
	};
	for (const FStep& Step : Steps)
	{
		SCOPED_TRACE(std::string(Step.Click ? Step.Click : "at first") + " -> " + Step.Pages);
		if (Step.Click)
		{
			Click(FindByToolTip(Step.Click));
		}
		EXPECT_EQ(GetPages(), Step.Pages);
		EXPECT_EQ(GetIcon(PlanToolTip), Step.PlanIcon);
		EXPECT_EQ(GetIcon(CustomizeToolTip), Step.CustomizeIcon);
		std::string Expected = Step.File;
		if (const size_t Comma = Expected.find(','); Comma != std::string::npos)
		{
			Expected =
				"{\n\t\"ShowPlan\": " + Expected.substr(0, Comma) + ",\n\t\"ShowCustomizeBehavior\": " + Expected.substr(Comma + 2) + "\n}";
		}
		std::string Found = Saved.Read(StateFile);
		Found.erase(std::remove(Found.begin(), Found.end(), '\r'), Found.end());
		EXPECT_EQ(Found, Expected);
	}
	CloseTab();
	ShowShell();
	EXPECT_EQ(GetPages(), PlanPage) << "as it was left";
}

TEST_F(FTabShellTest, TheStateFileIsReadKeyByKey)
{
	const std::tuple<const char*, bool, bool> Cases[] = {
		{ "{ \"ShowPlan\": false, \"ShowCustomizeBehavior\": true }", false, true },
		{ "{ \"ShowPlan\": false }", false, false },
		{ "{ \"ShowCustomizeBehavior\": true }", true, true },
		{ "{ \"ShowPlan\": [], \"ShowCustomizeBehavior\": true }", true, true },
		{ "{ \"Other\": 1 }", true, false },
		{ "{ \"ShowPlan\": false, \"ShowCusto", true, false },
		{ "[ false ]", true, false },
		{ "\xFF\xFE{", true, false },
		{ "", true, false },
	};
	for (const auto& [File, bPlan, bCustomize] : Cases)
	{
		SCOPED_TRACE(File);
		Saved.Write(StateFile, File);
		ShowShell();
		EXPECT_EQ(Tab->IsPlanVisible(), bPlan);
		EXPECT_EQ(Tab->IsCustomizeBehaviorVisible(), bCustomize);
		EXPECT_EQ(Saved.Read(StateFile), File) << "reading changes nothing";
	}
	// Both at once: the plan lies on top and the title is the plan's.
	Saved.Write(StateFile, "{ \"ShowPlan\": true, \"ShowCustomizeBehavior\": true }");
	ShowShell();
	EXPECT_TRUE(IsOnScreen(VisibleTexts(), "Conversation Plan"));
	EXPECT_FALSE(IsOnScreen(VisibleTexts(), "Customize Behavior"));
	Tab->TogglePlanVisibility();
	PumpFrame();
	EXPECT_EQ(GetPages(), "");
}

TEST_F(FTabShellTest, WhatIsNoFileGivesTheDefaultsAtOnce)
{
	std::filesystem::create_directories(Saved.AtBytes(StateFile));
	ShowShell();
	EXPECT_TRUE(Tab->IsPlanVisible());
	FHostServices::SetSaveFailureHook([](const FString&, const FString&) {});
	Click(FindByToolTip(CustomizeToolTip));
	EXPECT_EQ(GetPages(), "Customize Behavior, Project Description") << "a failed save changes nothing on screen";
	FHostServices::SetSaveFailureHook(nullptr);
	CloseTab();

	std::filesystem::remove(Saved.AtBytes(StateFile));
	ASSERT_EQ(mkfifo(Saved.AtBytes(StateFile).c_str(), 0600), 0);
	// Would wait for ever for somebody to write.
	ShowShell();
	EXPECT_TRUE(Tab->IsPlanVisible());
	EXPECT_FALSE(Tab->IsCustomizeBehaviorVisible());
}

TEST_F(FTabShellTest, TheSidePanelIsResizedAndKeepsItsSizeWhileHidden)
{
	ShowShell();
	const auto GetPanelWidth = [this]() { return std::lround(GetRect(*Splitter().SlotAt(1).GetWidget()).Width()); };
	// 1276 pixels beside the handle.
	EXPECT_EQ(GetPanelWidth(), 383);
	const FSlateRect Chat = GetRect(*Splitter().SlotAt(0).GetWidget());
	const FVector2D Handle(Chat.Right + 2.0, Chat.Top + 300.0);
	MoveMouse(Handle);
	PressMouse(Handle);
	MoveMouse(Handle - FVector2D(100.0, 0.0));
	ReleaseMouse(Handle - FVector2D(100.0, 0.0));
	EXPECT_EQ(GetPanelWidth(), 483);
	Click(FindByToolTip(PlanToolTip));
	EXPECT_EQ(std::lround(GetRect(*Splitter().SlotAt(0).GetWidget()).Width()), 1280);
	Click(FindByToolTip(PlanToolTip));
	EXPECT_EQ(GetPanelWidth(), 483);
	Resize(500, 600);
	EXPECT_EQ(GetPanelWidth(), 200) << "the minimum";
}

namespace
{
	/** Writes down what it is asked for. */
	class FSettingsRecorder final : public ISettingsModule
	{
	public:
		TSharedPtr<ISettingsSection> RegisterSettings(const FName& Container, const FName& Category, const FName& Section,
			const FText& DisplayName, const FText& Description, const TWeakObjectPtr<UObject>& Object) override
		{
			Calls.push_back("register " + Join(Container, Category, Section) + ": " + DumpKey(DisplayName) + "; " + DumpKey(Description) +
				(Object == GetDefault<UVelmoraSettings>() ? "" : "; another object"));
			return nullptr;
		}
		TSharedPtr<ISettingsSection> RegisterSettings(const FName& Container, const FName& Category, const FName& Section, const FText&,
			const FText&, const TSharedRef<SWidget>&) override
		{
			Calls.push_back("register a widget " + Join(Container, Category, Section));
			return nullptr;
		}
		void UnregisterSettings(const FName& Container, const FName& Category, const FName& Section) override
		{
			Calls.push_back("unregister " + Join(Container, Category, Section));
		}
		void ShowViewer(const FName& Container, const FName& Category, const FName& Section) override
		{
			Calls.push_back("show " + Join(Container, Category, Section));
		}

		inline static std::vector<std::string> Calls;

	private:
		static std::string Join(const FName& Container, const FName& Category, const FName& Section)
		{
			return Utf8(Container.ToString()) + "/" + Utf8(Category.ToString()) + "/" + Utf8(Section.ToString());
		}
	};
} // namespace

TEST_F(FTabShellTest, TheGearOpensTheSettingsWhereThereAreAny)
{
	ShowShell();
	constexpr const char* GearToolTip = "Open Velmora settings";
	EXPECT_EQ(GetIcon(GearToolTip), "Icons.Settings 6B7280FF");
	Click(FindByToolTip(GearToolTip));
	EXPECT_EQ(GetIcon(GearToolTip), "Icons.Settings 7CB9FFFF") << "hovered";
	// Brushes of the style set are in use on screen, and the module takes the set down.
	CloseTab();

	FSettingsRecorder::Calls.clear();
	FHostModules::Register("Settings", []() -> TUniquePtr<IModuleInterface> { return MakeUnique<FSettingsRecorder>(); });
	FModuleManager::Get().LoadModule("Settings");
	FHostLevelEditor::Install();
	FModuleManager::Get().LoadModule("VelmoraUI");
	ShowShell();
	Click(FindByToolTip(GearToolTip));
	CloseTab();
	FModuleManager::Get().UnloadModule("VelmoraUI");
	FModuleManager::Get().UnloadModule("LevelEditor");
	FModuleManager::Get().UnloadModule("Settings");
	FHostModules::Unregister("Settings");
	EXPECT_EQ(FSettingsRecorder::Calls,
		(std::vector<std::string>{ "register Project/Plugins/Velmora: FVelmoraModule,SettingsName: Velmora AI; "
								   "FVelmoraModule,SettingsDescription: Configure Velmora AI settings",
			"show Project/Plugins/Velmora" }))
		<< "the page stays registered";
}
