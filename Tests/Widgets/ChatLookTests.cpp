// What the panels of the chat look like, to the pixel and the word. Each look stands in a file of the folder Looks.

#include "ChatWindowTest.h"

#include "History/FileHistoryTracker.h"
#include "Support/Base/SavedText.h"
#include "Widgets/Layout/SExpandableArea.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SChangedFilesList.h"
#include "Widgets/SConversationPlan.h"
#include "Widgets/SCustomizeBehavior.h"
#include "Widgets/SErrorNotification.h"
#include "Widgets/SIndexProgressWidget.h"
#include "Widgets/SMessageRow.h"
#include "Widgets/Text/STextBlock.h"

#include <cmath>
#include <sstream>

class FChatLookTest : public FChatWindowTest
{
protected:
	/** One line an element, in painting order: kind, place, size and colours. Places are pixels of the window. */
	static std::string DumpPaint(const SWidget& Widget)
	{
		const FSlateRect Whole = GetRect(Widget);
		std::ostringstream Out;
		for (const FSlateDrawElement& Element : App().GetLastElements().GetElements())
		{
			const FSlateRect& Rect = Element.Rect;
			if (Rect.Left < Whole.Left - 0.5f || Rect.Top < Whole.Top - 0.5f || Rect.Left >= Whole.Right || Rect.Top >= Whole.Bottom)
			{
				continue;
			}
			const std::string Path = Utf8(Element.Image.ToString());
			const size_t Name = Path.rfind('/') + 1;
			Out << (Element.Type == ESlateDrawType::Glyphs				? "text"
						   : Element.Type == ESlateDrawType::Image		? Path.substr(Name, Path.rfind('.') - Name)
						   : Element.Type == ESlateDrawType::RoundedBox ? "card"
																		: "box")
				<< ' ' << std::lround(Rect.Left) << ',' << std::lround(Rect.Top);
			if (Element.Type != ESlateDrawType::Glyphs)
			{
				Out << ' ' << std::lround(Rect.Right - Rect.Left) << 'x' << std::lround(Rect.Bottom - Rect.Top);
			}
			Out << ' ' << Utf8(Element.Color.ToHex());
			if (Element.Type == ESlateDrawType::RoundedBox)
			{
				Out << " outline " << Utf8(Element.OutlineColor.ToHex()) << ' ' << std::lround(Element.OutlineWidth) << " radius "
					<< std::lround(Element.Radii.X);
			}
			Out << '\n';
		}
		return Out.str();
	}

	/** One line a text or tooltip, in tree order: identity and words; of a text also its font. */
	static std::string DumpWords(SWidget& Widget)
	{
		const auto MakeLine = [](const char* Kind, const FText& Text, const std::string& Behind)
		{
			std::string Words = DumpKey(Text);
			for (size_t End = Words.find('\n'); End != std::string::npos; End = Words.find('\n', End))
			{
				Words.replace(End, 1, "\\n");
			}
			return Kind + Behind + ' ' + Words + '\n';
		};
		std::string Result;
		if (Widget.GetType() == FName("STextBlock") && FWidgetFinder::IsShown(Widget))
		{
			const FSlateFontInfo Font = static_cast<STextBlock&>(Widget).GetFont();
			Result += MakeLine("words", Widget.GetDisplayedText(),
				" " + Utf8(Font.TypefaceFontName.ToString()) + " " + std::to_string(std::lround(Font.Size)));
		}
		if (!Widget.GetToolTipText().IsEmpty())
		{
			Result += MakeLine("tip", Widget.GetToolTipText(), "");
		}
		FChildren* Children = Widget.GetChildren();
		for (int32 Index = 0; Index < Children->Num(); ++Index)
		{
			Result += DumpWords(*Children->GetChildAt(Index));
		}
		return Result;
	}

	/** The widget looks as its file says. */
	static void ExpectLook(SWidget& Widget, const std::string& Name)
	{
		ExpectSavedText("Widgets/Looks/" + Name + ".txt", DumpPaint(Widget) + DumpWords(Widget));
	}

	static TSharedPtr<FChatMessage> Stamp(const TSharedPtr<FChatMessage>& Message)
	{
		Message->Timestamp = FDateTime(2026, 1, 31, 9, 5, 0);
		return Message;
	}

	void ExpectRow(const TSharedPtr<FChatMessage>& Message, const std::string& Name)
	{
		const TSharedRef<SMessageRow> Row = SNew(SMessageRow).Message(Stamp(Message)).CanUndo_Lambda([] { return true; });
		Show(SNew(SVerticalBox) + SVerticalBox::Slot().AutoHeight()[Row]);
		PumpSeconds(0.5);
		ExpectLook(*Row, Name);
	}
};

TEST_F(FChatLookTest, MessagesOfEachKind)
{
	const TSharedPtr<FChatMessage> User = FChatMessage::CreateUserMessage(TEXT("Add a **dash**"));
	User->TransactionId = TEXT("t1");
	ExpectRow(User, "UserMessage");
	ExpectRow(FChatMessage::CreateSystemMessage(TEXT("Conversation ended")), "SystemMessage");
	ExpectRow(FChatMessage::CreateToolMessage(TEXT("read_file"), TEXT("{}"), EToolStatus::Success), "ToolMessage");
	const TSharedPtr<FChatMessage> Group = FChatMessage::CreateToolSummaryMessage();
	for (const EToolStatus Status : { EToolStatus::Running, EToolStatus::Success, EToolStatus::Failed })
	{
		const TSharedPtr<FChatMessage> Tool = FChatMessage::CreateToolMessage(TEXT("t"), TEXT("{}"), Status);
		Tool->ToolActionVerb = TEXT("Reading");
		Tool->ToolDisplayParameter = TEXT("a");
		Tool->ToolColor = TEXT("#95CBFF");
		Group->ToolExecutions.Add(Stamp(Tool));
	}
	ExpectRow(Group, "ToolGroup");
}

TEST_F(FChatLookTest, AnAnswerWithEveryBlock)
{
	ExpectRow(
		FChatMessage::CreateAIMessage(TEXT("# One\n## Two\n### Three\nPlain **b** *s* ***x*** ~~t~~ `six` [l](http://a)[^1]\n- two\n"
										   "  - three\n1. four\n- [x] five\n- [ ] six\n> seven\n---\n```cpp\nint a; // b\n```\n"
										   "| A | B |\n|---|--:|\n| b | c |\n[^1]: note\n<details><summary>More</summary>x</details>"),
			false),
		"Answer");
}

TEST_F(FChatLookTest, TheWindowFromTheWelcomeToAPause)
{
	Connect();
	PumpSeconds(0.5);
	ExpectLook(*Window, "Welcome");
	ViewModel->AddContextFile(TEXT("Source/A.cpp"));
	FFileHistoryTracker::Get().AddOperation(TEXT("c1"), TEXT("g"), { TEXT("Source/B.h"), 1, FDateTime::Now() });
	Prompt("Hello");
	PressKey("CTRL+Enter");
	ViewModel->AddContextFile(TEXT("Source/A.cpp"));
	Agent->State = EState::Thinking;
	PumpSeconds(1.0);
	Click(FindByTag("PauseButton"));
	PumpSeconds(1.0);
	ExpectLook(*Window, "Paused");
	FFileHistoryTracker::Get().RemoveGroup(TEXT("c1"), TEXT("g"));
}

TEST_F(FChatLookTest, ThePanelsBesideTheChat)
{
	const TSharedRef<SConversationPlan> Plan = SNew(SConversationPlan);
	const TSharedRef<SCustomizeBehavior> Behavior = SNew(SCustomizeBehavior);
	Show(SNew(SHorizontalBox) + SHorizontalBox::Slot()[Plan] + SHorizontalBox::Slot()[Behavior]);
	PumpSeconds(0.5);
	ExpectLook(*Plan, "NoPlan");
	ExpectLook(*Behavior, "Behavior");
	Plan->UpdatePlan(TEXT("## Goal\n- one"));
	PumpSeconds(0.5);
	ExpectLook(*Plan, "Plan");
}

TEST_F(FChatLookTest, SmallWidgets)
{
	const TSharedRef<SIndexProgressWidget> Progress = SNew(SIndexProgressWidget);
	const TSharedRef<SErrorNotification> Error = SNew(SErrorNotification).ErrorMessage(INVTEXT("No network"));
	const TSharedRef<SChangedFilesList> Files = SNew(SChangedFilesList).ConversationId_Lambda([] { return FString(TEXT("c1")); });
	// clang-format off
	Show(
		SNew(SVerticalBox)
		+ SVerticalBox::Slot().AutoHeight()[Progress]
		+ SVerticalBox::Slot().AutoHeight()[Error]
		+ SVerticalBox::Slot().AutoHeight()[Files]);
	// clang-format on
	Progress->UpdateProgress(1, 4, TEXT("Source/A.cpp"), 2.0);
	for (const uint8 Action : { 1, 2, 3 })
	{
		FFileHistoryTracker::Get().AddOperation(TEXT("c1"), TEXT("g"),
			{ FString::Printf(TEXT("Source/%d.h"), Action), Action, FDateTime::Now() - FTimespan::FromSeconds(60.0 * Action) });
	}
	Files->UpdateFileList();
	FindOne<SExpandableArea>("SExpandableArea")->SetExpanded(true);
	PumpSeconds(0.5);
	ExpectLook(*Progress, "Progress");
	ExpectLook(*Error, "Error");
	ExpectLook(*Files, "ChangedFiles");
	FFileHistoryTracker::Get().RemoveGroup(TEXT("c1"), TEXT("g"));
}
