#include "Widgets/SToolExecutionContainer.h"

#include "VelmoraWidgetTest.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/ToolRowLook.h"

namespace
{

	TSharedPtr<FChatMessage> MakeTool(const TCHAR* Verb, const TCHAR* Parameter, const TCHAR* DisplayName = TEXT("Some tool"))
	{
		const TSharedPtr<FChatMessage> Message = FChatMessage::CreateToolMessage(TEXT("some_tool"), TEXT("{}"), EToolStatus::Running);
		Message->Timestamp = FDateTime(2026, 1, 31, 14, 2, 31);
		Message->ToolActionVerb = Verb;
		Message->ToolDisplayParameter = Parameter;
		Message->ToolDisplayName = DisplayName;
		return Message;
	}

} // namespace

class FToolContainerTest : public FVelmoraWidgetTest
{
protected:
	void ShowTools(const TArray<TSharedPtr<FChatMessage>>& Tools)
	{
		Container = SNew(SToolExecutionContainer)
						.ToolExecutions(Tools)
						.IsExpanded_Lambda([this] { return bExpanded; })
						.OnToggleExpanded_Lambda([this] { bExpanded = !bExpanded; });
		Show(SNew(SVerticalBox) + SVerticalBox::Slot().AutoHeight()[Container.ToSharedRef()]);
	}

	TSharedPtr<SToolExecutionContainer> Container;
	bool bExpanded = true;
};

TEST_F(FToolContainerTest, TheHeaderCounts)
{
	ShowTools({});
	EXPECT_EQ(VisibleTexts(), (FTextList{ "Tool Executions" }));
	EXPECT_EQ(DumpKey(FindByText("Tool Executions")->GetDisplayedText()), "VelmoraUI,ToolExecutionsHeader: Tool Executions");
	ShowTools({ MakeTool(TEXT("Creating"), TEXT("A")), nullptr, MakeTool(TEXT("Reading"), TEXT("B")) });
	EXPECT_EQ(VisibleTexts(), (FTextList{ "Tool Executions (3)", "Creating A", "14:02:31", "Reading B", "14:02:31" }))
		<< "a null entry counts and has no row";
}

TEST_F(FToolContainerTest, TheLabelIsVerbAndParameter)
{
	EXPECT_EQ(Utf8(FToolRowLook::MakeLabel(*MakeTool(TEXT("Creating"), TEXT("BP_Hero")))), "Creating BP_Hero");
	EXPECT_EQ(Utf8(FToolRowLook::MakeLabel(*MakeTool(TEXT("Reading function"), TEXT("")))), "Reading function...");
	EXPECT_EQ(Utf8(FToolRowLook::MakeLabel(*MakeTool(TEXT(""), TEXT("unused"), TEXT("Read file")))), "Read file");
}

TEST_F(FToolContainerTest, AClickOnTheHeaderAsksTheOwner)
{
	ShowTools({ MakeTool(TEXT("Creating"), TEXT("A")) });
	const TSharedRef<SWidget> Header = FindByTag("ToolExecutionsHeader");
	EXPECT_TRUE(PaintedIn(*Header, ESlateDrawType::Image).at(0).starts_with("TreeArrow_Expanded "));
	Click(Header);
	EXPECT_FALSE(bExpanded);
	EXPECT_EQ(VisibleTexts(), (FTextList{ "Tool Executions (1)" }));
	EXPECT_TRUE(PaintedIn(*Header, ESlateDrawType::Image).at(0).starts_with("TreeArrow_Collapsed "));
	Click(Header);
	EXPECT_EQ(VisibleTexts().size(), 3u);

	Container = SNew(SToolExecutionContainer).ToolExecutions({ MakeTool(TEXT("Creating"), TEXT("A")) });
	Show(Container.ToSharedRef());
	Click(FindByTag("ToolExecutionsHeader"));
	EXPECT_EQ(VisibleTexts().size(), 3u) << "without an owner nothing opens or closes";
}

TEST_F(FToolContainerTest, TheListOnlyGrows)
{
	const TSharedPtr<FChatMessage> First = MakeTool(TEXT("Creating"), TEXT("A"));
	const TSharedPtr<FChatMessage> Second = MakeTool(TEXT("Reading"), TEXT("B"));
	ShowTools({ First });
	const TSharedRef<SWidget> FirstRow = FindByText("Creating A");

	Container->UpdateToolList({ Second });
	PumpFrame();
	EXPECT_EQ(VisibleTexts(), (FTextList{ "Tool Executions (1)", "Creating A", "14:02:31" })) << "same count, same rows";

	Container->UpdateToolList({ First, Second });
	PumpFrame();
	EXPECT_EQ(VisibleTexts(), (FTextList{ "Tool Executions (2)", "Creating A", "14:02:31", "Reading B", "14:02:31" }));
	EXPECT_EQ(FindByText("Creating A"), FirstRow);

	Container->UpdateToolList({});
	PumpFrame();
	EXPECT_EQ(VisibleTexts(), (FTextList{ "Tool Executions", "Creating A", "14:02:31", "Reading B", "14:02:31" }))
		<< "only the count drops";
}
