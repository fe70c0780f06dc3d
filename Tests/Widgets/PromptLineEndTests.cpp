#include "ChatWindowTest.h"
#include "FileSearchProject.h"

#include "Host/HostTextWidget.h"
#include "Misc/FileHelper.h"

/** The prompt over boxes that join their lines with line feeds, and over such that put carriage returns before them. */
class FPromptLineEnds : public FChatWindowTest, public ::testing::WithParamInterface<bool>
{
protected:
	FPromptLineEnds()
		: Project({ "src/wolf.h", "src/zebra.txt" })
	{
	}

	void SetUp() override
	{
		FChatWindowTest::SetUp();
		SHostTextWidget::SetJoinsLinesWithCarriageReturns(GetParam());
		Connect();
		Click(FindByTag("InputTextBox"));
	}

	void TearDown() override
	{
		SHostTextWidget::SetJoinsLinesWithCarriageReturns(false);
		FChatWindowTest::TearDown();
	}

	/** Key by key, as hands do. */
	void TypeKeys(const std::string& Text)
	{
		for (const char Key : Text)
		{
			TypeText(std::string(1, Key));
		}
	}

	/** What the box itself says, which is what the switch changes. */
	std::string GetBoxText()
	{
		return Utf8(StaticCastSharedRef<SMultiLineEditableTextBox>(FindByTag("InputTextBox"))->GetText().ToString());
	}

	std::string Count() { return Utf8(FindByTag("CharacterCount")->GetDisplayedText().ToString()); }

	FFileSearchProject Project;
};

TEST_P(FPromptLineEnds, TheSwitchChangesWhatTheBoxGives)
{
	TypeKeys("a\nb\n");
	EXPECT_EQ(GetBoxText(), GetParam() ? "a\r\nb\r\n" : "a\nb\n");
	EXPECT_EQ(Count(), "4 characters");
}

TEST_P(FPromptLineEnds, ATokenOnALaterLineIsFoundAndReplaced)
{
	TypeKeys("one\ntwo\n\nsee @wo");
	ASSERT_TRUE(App().AnyMenusVisible());
	EXPECT_TRUE(IsShown(FindByText(Project.PathOf("src/wolf.h"))));
	PressKey("Enter");
	EXPECT_FALSE(App().AnyMenusVisible());
	EXPECT_EQ(GetBoxText(), GetParam() ? "one\r\ntwo\r\n\r\nsee wolf.h " : "one\ntwo\n\nsee wolf.h ");
	EXPECT_EQ(Count(), "20 characters");
	EXPECT_EQ(CountByType("SFileSearchDropdown"), 0);
	EXPECT_TRUE(IsShown(FindByText("wolf.h"))) << "its chip";
	// The cursor stands behind what was put in, so the next keys follow it.
	TypeKeys("and\n@zeb");
	PressKey("Tab");
	PressKey("CTRL+Enter");
	EXPECT_EQ(Agent->Calls,
		(std::vector<std::string>{ "SendMessage 'one\ntwo\n\nsee wolf.h and\nzebra.txt ' [" + Project.PathOf("src/wolf.h") + ", " +
			Project.PathOf("src/zebra.txt") + "]" }));
	EXPECT_EQ(GetBoxText(), "");
	EXPECT_EQ(Count(), "0 characters");
}

TEST_P(FPromptLineEnds, ATokenOnAnEarlierLineIsReplacedThere)
{
	TypeKeys("\nrest");
	PressKey("Up");
	TypeKeys("@zeb");
	ASSERT_TRUE(App().AnyMenusVisible());
	PressKey("Enter");
	PressKey("CTRL+Enter");
	ASSERT_EQ(Agent->Calls.size(), 1u);
	EXPECT_EQ(Agent->Calls[0].substr(0, 31), "SendMessage 'zebra.txt \nrest' [");
}

TEST_P(FPromptLineEnds, WhatIsSentAndExportedHasLineFeeds)
{
	TypeKeys("first\nsecond");
	PressKey("CTRL+Enter");
	ASSERT_EQ(Agent->Calls, std::vector<std::string>{ "SendMessage 'first\nsecond' []" });
	ASSERT_TRUE(ViewModel->ExportConversation(EmptyStore.At(TEXT("out.md")), EConversationExportFormat::Markdown));
	FString Written;
	ASSERT_TRUE(FFileHelper::LoadFileToString(Written, *EmptyStore.At(TEXT("out.md"))));
	EXPECT_NE(Utf8(Written).find("first\nsecond"), std::string::npos);
	EXPECT_EQ(Utf8(Written).find('\r'), std::string::npos);
}

TEST_P(FPromptLineEnds, APauseIsContinuedWithLineFeeds)
{
	Agent->FireState(EState::Paused);
	PumpFrame();
	TypeKeys("go on\nso");
	Click(FindByTag("ContinueButton"));
	EXPECT_EQ(Agent->Calls, std::vector<std::string>{ "ResumeConversation 'go on\nso'" });
}

INSTANTIATE_TEST_SUITE_P(Boxes, FPromptLineEnds, ::testing::Bool(),
	[](const ::testing::TestParamInfo<bool>& Info) { return std::string(Info.param ? "CarriageReturns" : "LineFeeds"); });
