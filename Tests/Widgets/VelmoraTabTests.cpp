#include "Widgets/SVelmoraTab.h"

#include "Companions/TemporaryProject.h"
#include "Framework/Docking/TabManager.h"
#include "Modules/ModuleManager.h"
#include "Support/TestAgent.h"
#include "Styling/SlateStyleRegistry.h"
#include "VelmoraWidgetTest.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/Docking/SDockTab.h"
#include "Widgets/SChatWindow.h"

#include <algorithm>

namespace
{

bool IsOnScreen(const FTextList& Texts, const std::string& Text)
{
	return std::find(Texts.begin(), Texts.end(), Text) != Texts.end();
}

/** Writes its end down, too. */
class FMortalAgent : public FTestAgent
{
public:
	explicit FMortalAgent(std::vector<std::string>& InLog)
		: Log(InLog)
	{
	}
	~FMortalAgent() override { Log.push_back("destroyed"); }
	void EndConversation() override
	{
		FTestAgent::EndConversation();
		Log.push_back("EndConversation");
	}

private:
	std::vector<std::string>& Log;
};

} // namespace

class FVelmoraTabTest : public FVelmoraWidgetTest
{
protected:
	TSharedPtr<SDockTab> DockTab;
	TSharedPtr<SVelmoraTab> Tab;

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
	}
};

TEST_F(FVelmoraTabTest, OpensWithAnAgentOfTheProject)
{
	const FTemporaryProject Project;
	ShowTab();
	EXPECT_EQ(Utf8(SVelmoraTab::GetTabName().ToString()), "VelmoraTab");
	EXPECT_EQ(Tab->OwnerTab.Pin(), DockTab);
	ASSERT_TRUE(Tab->GetViewModel().IsValid());
	EXPECT_TRUE(Tab->GetViewModel()->IsInitialized());
	EXPECT_TRUE(Tab->GetViewModel()->HasActiveConversation());
	EXPECT_TRUE(IsOnScreen(VisibleTexts(), "Welcome to Velmora"));
	EXPECT_TRUE(IsOnScreen(VisibleTexts(), "Ready"));
	const TWeakPtr<Velmora::FAgent> Agent = Tab->Agent;
	CloseTab();
	EXPECT_FALSE(Agent.IsValid());
}

TEST_F(FVelmoraTabTest, WithoutAnAgentTheChatSaysSo)
{
	Velmora::SetProjectFolder(TEXT("/there/is/no/such/folder"));
	ShowTab();
	Velmora::SetProjectFolder(FString());
	EXPECT_FALSE(Tab->Agent.IsValid());
	ASSERT_TRUE(Tab->GetViewModel().IsValid());
	EXPECT_FALSE(Tab->GetViewModel()->IsInitialized());
	EXPECT_TRUE(IsOnScreen(VisibleTexts(), "Not initialized"));
	EXPECT_FALSE(IsOnScreen(VisibleTexts(), "Welcome to Velmora"));
}

TEST_F(FVelmoraTabTest, ClosingEndsTheConversationWhileTheAgentLives)
{
	const FTemporaryProject Project;
	std::vector<std::string> Log;
	ShowTab();
	Tab->Agent = MakeShared<FMortalAgent>(Log);
	Tab->InitializeViewModel();
	Log.clear();
	CloseTab();
	EXPECT_EQ(Log, (std::vector<std::string>{ "EndConversation", "destroyed" }));
}

class FVelmoraModuleTest : public FVelmoraTabTest
{
};

TEST_F(FVelmoraModuleTest, TheModuleOffersItsTabWhileItIsLoaded)
{
	FVelmoraUIStyles::Shutdown();
	const FTemporaryProject Project;
	ASSERT_NE(FModuleManager::Get().LoadModule("VelmoraUI"), nullptr);
	EXPECT_NE(FSlateStyleRegistry::FindSlateStyle(FVelmoraUIStyles::GetStyleSetName()), nullptr);
	TSharedPtr<SDockTab> Opened = FGlobalTabmanager::Get()->TryInvokeTab(FTabId(SVelmoraTab::GetTabName()));
	ASSERT_TRUE(Opened.IsValid());
	EXPECT_EQ(Utf8(Opened->GetTabLabel().ToString()), "Velmora AI");
	EXPECT_EQ(Utf8(Opened->GetContent()->GetType().ToString()), "SVelmoraTab");
	Opened->RequestCloseTab();
	Opened.Reset();

	FModuleManager::Get().UnloadModule("VelmoraUI");
	EXPECT_EQ(FSlateStyleRegistry::FindSlateStyle(FVelmoraUIStyles::GetStyleSetName()), nullptr);
	EXPECT_FALSE(FGlobalTabmanager::Get()->TryInvokeTab(FTabId(SVelmoraTab::GetTabName())).IsValid());
}
