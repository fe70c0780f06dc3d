#include "Desktop/ProgramDriver.h"
#include "FindText.h"
#include "ShownTexts.h"
#include "SoughtMessage.h"
#include "Support/UiDriver.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SMarkdownTextBlock.h"
#include "Widgets/SToolExecutionContainer.h"
#include "Style/VelmoraUIStyles.h"

#include <gtest/gtest.h>

TEST(FindText, FindsAsAsked)
{
	const struct
	{
		const char* Text;
		const char* Words;
		bool bMatchCase;
		bool bWholeWords;
		std::vector<int32> Places;
	} Rows[] = {
		{ "a cat, a Cat, concat", "cat", false, false, { 2, 9, 17 } },
		{ "a cat, a Cat, concat", "cat", true, false, { 2, 17 } },
		{ "a cat, a Cat, concat", "cat", false, true, { 2, 9 } },
		{ "a cat, a Cat, concat", "Cat", true, true, { 9 } },
		{ "cat_1 cat1 (cat)", "cat", false, true, { 12 } },
		{ "aaaa", "aa", false, false, { 0, 2 } },
		{ "a. b", ". b", false, true, { 1 } },
		{ "a. bc", ". b", false, true, {} },
		{ "a. -b", ".", false, true, { 1 } },
		{ "\xC3\x84rger \xC3\xA4rger", "\xC3\xA4rger", false, false, { 0, 6 } },
		{ "abc", "", false, false, {} },
		{ "ab", "abc", false, false, {} },
	};
	for (const auto& Row : Rows)
	{
		std::vector<int32> Places;
		for (const Velmora::FFoundPlace& Place :
			FindText::FindAll(FString(UTF8_TO_TCHAR(Row.Text)), { UTF8_TO_TCHAR(Row.Words), Row.bMatchCase, Row.bWholeWords }, 100))
		{
			Places.push_back(Place.Begin);
		}
		EXPECT_EQ(Places, Row.Places) << Row.Text << " / " << Row.Words;
	}
	EXPECT_EQ(FindText::FindAll(TEXT("aaaaaa"), { TEXT("a") }, 4).Num(), 4);
}

TEST(SoughtMessage, IsTheOneWithTheLineAndTheBestPlace)
{
	TArray<TSharedPtr<FChatMessage>> Messages;
	for (const TCHAR* const Text :
		{ TEXT("count the\n\tsnails"), TEXT("many snails"), TEXT("count the snails, please"), TEXT("many snails") })
	{
		Messages.Add(Messages.Num() % 2 == 0 ? FChatMessage::CreateUserMessage(Text) : FChatMessage::CreateAIMessage(Text, false));
	}
	Messages.Insert(FChatMessage::CreateToolSummaryMessage(), 1);
	const std::tuple<const TCHAR*, int32, bool, int32> Rows[] = {
		{ TEXT("count the snails"), 0, true, 0 },
		{ TEXT("\u2026the snails, please"), 0, true, 3 },
		{ TEXT("count the snails\u2026"), 2, true, 3 },
		{ TEXT("many snails"), 1, false, 2 },
		{ TEXT("many snails"), 9, false, 4 },
		{ TEXT("many snails"), 1, true, INDEX_NONE },
		{ TEXT("Count the snails"), 0, true, INDEX_NONE },
		{ TEXT("\u2026"), 0, true, INDEX_NONE },
	};
	for (const auto& [Excerpt, Position, bIsUser, Index] : Rows)
	{
		EXPECT_EQ(SoughtMessage::Find(Messages, { FString(), Position, bIsUser, Excerpt }), Index) << Utf8(FString(Excerpt));
	}
	// "sna cou" is nowhere like that, so the longest word is framed.
	const TArray<Velmora::FFoundPlace> Places = { { 0, 5 }, { 10, 6 } };
	EXPECT_EQ(Utf8(SoughtMessage::ChooseWords(TEXT(" The Sna "), TEXT("count the snails"), Places)), "The Sna");
	EXPECT_EQ(Utf8(SoughtMessage::ChooseWords(TEXT("sna cou"), TEXT("count the snails"), Places)), "snails");
}

namespace
{
	class FShownTextTest : public FWidgetTest
	{
	protected:
		void SetUp() override
		{
			FWidgetTest::SetUp();
			FVelmoraUIStyles::Initialize();
		}
		void TearDown() override
		{
			App().SetRootContent(SNullWidget::NullWidget);
			FVelmoraUIStyles::Shutdown();
			FWidgetTest::TearDown();
		}
		TSharedRef<SWidget> ShowMarkdown(const char* Text)
		{
			const TSharedRef<SWidget> Block = SNew(SMarkdownTextBlock).Text(UTF8_TO_TCHAR(Text));
			Show(SNew(SScrollBox) + SScrollBox::Slot()[Block]);
			PumpFrame();
			return Block;
		}
	};
}

TEST_F(FShownTextTest, ReadAsOneWhatStandsInOneLine)
{
	const TSharedRef<SWidget> Block = ShowMarkdown(
		"Call **the** `Parse` method.\n\n```cpp\nint Count = Parse(Text);\n```\n\n| Name | Kind |\n|---|---|\n| first cell | second |\n");
	FTextList Texts;
	for (const FShownText& Text : ShownTexts::Collect(*Block))
	{
		Texts.push_back(Utf8(Text.Text));
	}
	const auto Has = [&Texts](const std::string& Wanted) { return std::find(Texts.begin(), Texts.end(), Wanted) != Texts.end(); };
	EXPECT_TRUE(Has("Call the Parse method.")) << testing::PrintToString(Texts);
	EXPECT_TRUE(Has("first cell")) << testing::PrintToString(Texts);
	EXPECT_TRUE(Has("second")) << testing::PrintToString(Texts);
	const auto IsCode = [](const std::string& Text) { return Text.find("Parse(Text);") != std::string::npos; };
	EXPECT_EQ(std::count_if(Texts.begin(), Texts.end(), IsCode), 1) << testing::PrintToString(Texts);
}

TEST_F(FShownTextTest, TheFrameStandsWhereTheTextIsPainted)
{
	// A place that begins in one widget and ends in another one has a frame in each, side by side.
	const TSharedRef<SWidget> Block = ShowMarkdown("Call **the** rest");
	const TArray<FShownText> Texts = ShownTexts::Collect(*Block);
	ASSERT_EQ(Texts.Num(), 1);
	const TArray<Velmora::FFoundPlace> Places = FindText::FindAll(Texts[0].Text, { TEXT("ll the r") }, 10);
	ASSERT_EQ(Places.Num(), 1);
	const TArray<FShownPlace> Parts = ShownTexts::Split(Texts[0], Places[0]);
	ASSERT_EQ(Parts.Num(), 3);
	float Left = GetRect(*FindByText("Call ")).Left + 1.0f;
	for (const FShownPlace& Part : Parts)
	{
		const TArray<FSlateRect> Rects = ShownTexts::GetRects(Part, Part.Widget.Pin()->GetCachedGeometry());
		ASSERT_EQ(Rects.Num(), 1);
		EXPECT_GT(Rects[0].Left, Left - 2.0f);
		EXPECT_GT(Rects[0].Width(), 2.0f);
		Left = Rects[0].Right;
		const FSlateRect Widget = GetRect(*Part.Widget.Pin());
		EXPECT_GE(Rects[0].Left, Widget.Left - 1.0f);
		EXPECT_LE(Rects[0].Right, Widget.Right + 1.0f);
	}
	// One that wraps has a frame in each line.
	Resize(200, 400);
	const TSharedRef<SWidget> Long = ShowMarkdown("one two three four five six seven eight nine ten eleven twelve thirteen fourteen");
	PumpFrame();
	const TArray<FShownText> Wrapped = ShownTexts::Collect(*Long);
	ASSERT_EQ(Wrapped.Num(), 1);
	const FShownPlace All = ShownTexts::Split(Wrapped[0], { 0, Wrapped[0].Text.Len() })[0];
	const TArray<FSlateRect> Lines = ShownTexts::GetRects(All, All.Widget.Pin()->GetCachedGeometry());
	ASSERT_GT(Lines.Num(), 2);
	for (int32 Line = 1; Line < Lines.Num(); ++Line)
	{
		EXPECT_GE(Lines[Line].Top, Lines[Line - 1].Bottom - 1.0f);
	}
	EXPECT_LE(Lines.Last().Bottom, GetRect(*Long).Bottom + 1.0f);
}

TEST_F(FShownTextTest, LinesOutOfViewHaveNoFrameWhereTheyStoodBefore)
{
	std::string Code = "```\n";
	for (int32 Line = 0; Line < 60; ++Line)
	{
		Code += "needle " + std::to_string(Line) + "\n";
	}
	const TSharedRef<SScrollBox> Box =
		SNew(SScrollBox) + SScrollBox::Slot()[SNew(SMarkdownTextBlock).Text(UTF8_TO_TCHAR((Code + "```").c_str()))];
	Show(Box);
	Resize(400, 300);
	PumpFrame();
	const TSharedPtr<SWidget> First = FindByText("needle 0");
	const TSharedPtr<SWidget> Last = FindByText("needle 59");
	ASSERT_TRUE(First && Last);
	EXPECT_TRUE(ShownTexts::CollectSeen(*Box).Contains(First.Get()));
	Box->ScrollToEnd();
	PumpFrame();
	const TMap<const SWidget*, FSeenWidget> Seen = ShownTexts::CollectSeen(*Box);
	EXPECT_FALSE(Seen.Contains(First.Get()));
	ASSERT_TRUE(Seen.Contains(Last.Get()));
	EXPECT_EQ(Seen[Last.Get()].Geometry.GetAbsolutePosition(), Last->GetCachedGeometry().GetAbsolutePosition());
	// The way back to it is known nevertheless.
	const TOptional<FGeometry> Place = ShownTexts::FindGeometry(*First, *Box);
	ASSERT_TRUE(Place);
	EXPECT_LT(Place->GetAbsolutePosition().Y, GetRect(*Box).Top);
	EXPECT_FALSE(ShownTexts::FindGeometry(*Box, *First));
}

TEST_F(FShownTextTest, WhatIsFoldedAwayIsReadAndUnfolded)
{
	const TSharedPtr<FChatMessage> Tool = FChatMessage::CreateToolMessage(TEXT("read_file"), FString(), EToolStatus::Success);
	Tool->ToolDisplayName = TEXT("Snail reader");
	bool bIsOpen = false;
	const TSharedRef<SWidget> Tools = SNew(SToolExecutionContainer)
										  .ToolExecutions({ Tool })
										  .IsExpanded_Lambda([&bIsOpen] { return bIsOpen; })
										  .OnToggleExpanded_Lambda([&bIsOpen] { bIsOpen = !bIsOpen; });
	const TSharedRef<SWidget> Section = SNew(SMarkdownTextBlock).Text(TEXT("<details><summary>More</summary>a snail inside</details>"));
	const TSharedRef<SVerticalBox> Both = SNew(SVerticalBox);
	Both->AddSlot().AutoHeight()[Tools];
	Both->AddSlot().AutoHeight()[Section];
	Show(Both);
	PumpFrame();
	for (const TSharedRef<SWidget>& Folded : { Tools, Section })
	{
		const TArray<FShownText> Texts = ShownTexts::Collect(*Folded);
		const FShownText* const Found =
			Texts.FindByPredicate([](const FShownText& Text) { return Text.Text.Contains(TEXT("snail"), ESearchCase::IgnoreCase); });
		ASSERT_TRUE(Found);
		const TSharedPtr<SWidget> Widget = Found->Parts[0].Widget.Pin();
		EXPECT_TRUE(ShownTexts::IsHidden(*Widget, *Both));
		EXPECT_TRUE(ShownTexts::Unfold(*Widget, *Both));
		PumpFrame();
		EXPECT_FALSE(ShownTexts::IsHidden(*Widget, *Both));
		EXPECT_TRUE(IsShown(Widget.ToSharedRef()));
		EXPECT_FALSE(ShownTexts::Unfold(*Widget, *Both)) << "what is open stays open";
	}
}

namespace
{
	FRun RunSteps(const FRandomProject& Project, const std::string& Steps)
	{
		const std::string Script = Project.Write("steps.txt", Steps);
		return RunProgram({ "--headless", "--project", Project.Folder.string(), "--script", Script }, "", Project.OutFolder.string(),
			{ "XDG_DATA_HOME=" + Project.Path("data") });
	}

	/** The text of a control of a dump. */
	std::string ReadControl(const FRandomProject& Project, const std::string& Dump, const std::string& Tag)
	{
		const std::string Text = ReadFile(Project.Path(Dump));
		const size_t At = Text.find("\"tag\": \"" + Tag + "\"");
		const size_t Begin = Text.find("\"text\": \"", At) + 9;
		return At == std::string::npos ? "(none)" : Text.substr(Begin, Text.find('"', Begin) - Begin);
	}
}

TEST(Find, CountsStepsScrollsAndGivesTheKeyboardBack)
{
	const FRandomProject Project;
	const FRun Run = RunSteps(Project,
		"type create one.md with \"needle\"\nkey CTRL+ENTER\nwait idle 30\ntype create two.md with \"needle\"\nkey CTRL+ENTER\n"
		"wait idle 30\ntype a draft\nkey CTRL+F\ntype NEEDLE\ntick 40\ndump first.json\nkey ENTER\ntick 40\ndump second.json\n"
		"key SHIFT+F3\ntick 40\ndump third.json\nclick #FindCase\ntick 20\ndump case.json\nclick #FindCase\nkey ESC\ntick 5\n"
		"type  goes on\ndump closed.json\n");
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	const std::string First = ReadControl(Project, "first.json", "FindCount");
	EXPECT_TRUE(Contains(First, " of ")) << First;
	EXPECT_NE(ReadControl(Project, "second.json", "FindCount"), First);
	EXPECT_EQ(ReadControl(Project, "third.json", "FindCount"), First);
	EXPECT_EQ(ReadControl(Project, "case.json", "FindCount"), "No hits");
	EXPECT_TRUE(Contains(ReadFile(Project.Path("closed.json")), "\"promptText\": \"a draft goes on\""));
}

TEST(Find, BringsThePlaceIntoView)
{
	const FRandomProject Project;
	const std::string Back = "key SHIFT+F3\ntick 20\n";
	const FRun Run = RunSteps(Project,
		"resize 700 500\ntype find " + Project.Symbol + "\nkey CTRL+ENTER\nwait idle 30\ntype help\nkey CTRL+ENTER\nwait idle 30\n" +
			"dump before.json\nkey CTRL+F\ntype " + Project.Symbol + "\ntick 40\ndump last.json\n" + Back + Back + Back + Back +
			"tick 20\ndump first.json\n");
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	// What is out of view is nothing to a screen reader.
	const auto ShowsPrompt = [&Project](const char* Dump)
	{ return Contains(ReadFile(Project.Path(Dump)), "label \\\"find " + Project.Symbol + "\\\""); };
	EXPECT_FALSE(ShowsPrompt("before.json"));
	EXPECT_EQ(ReadControl(Project, "last.json", "FindCount"), "5 of 5");
	EXPECT_TRUE(Contains(ReadFile(Project.Path("last.json")), "text box \\\"Code\\\"")) << "the nearest place above";
	EXPECT_FALSE(ShowsPrompt("last.json"));
	EXPECT_EQ(ReadControl(Project, "first.json", "FindCount"), "1 of 5");
	EXPECT_TRUE(ShowsPrompt("first.json"));
}

TEST(Find, GoesToTheMessageThatASearchHasFound)
{
	const FRandomProject Project;
	// So long that its beginning has no widgets before it is seen.
	std::string Prompts = "is there a Zebrafinch, or are there more zebrafinches?\n";
	for (int Index = 0; Index < 110; ++Index)
	{
		Prompts += "help\n";
	}
	const FRun Said = RunProgram({ "--headless", "--project", Project.Folder.string() }, Prompts, Project.OutFolder.string(),
		{ "XDG_DATA_HOME=" + Project.Path("data") });
	ASSERT_NE(Said.ExitCode, 2) << Said.Error;
	const FRun Run = RunSteps(Project,
		"wait idle 30\nclick Window\nclick Conversations\nwait idle 30\ntype zebraf\nwait idle 30\nkey ENTER\nwait idle 60\n"
		"dump jumped.json\nkey F3\ntick 40\ndump next.json\nkey ESC\ntick 5\ndump closed.json\n");
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_EQ(ReadControl(Project, "jumped.json", "FindBox"), "zebraf");
	const std::string Count = ReadControl(Project, "jumped.json", "FindCount");
	EXPECT_TRUE(Contains(Count, " of ")) << Count;
	EXPECT_NE(ReadControl(Project, "next.json", "FindCount"), Count);
	EXPECT_TRUE(Contains(ReadFile(Project.Path("jumped.json")), "\"focus\": \"#InputTextBox\"")) << "one can go on typing";
	const std::string Closed = ReadFile(Project.Path("closed.json"));
	const size_t Strip = Closed.find("\"tag\": \"FindStrip\"");
	ASSERT_NE(Strip, std::string::npos);
	EXPECT_TRUE(Contains(Closed.substr(Strip, 60), "\"visible\": false"));
}
