#include "Support/UiDriver.h"

#include "Framework/Text/PlainTextLayoutMarshaller.h"
#include "Host/HostNotifications.h"
#include "Host/HostServices.h"
#include "Slate/Private/Framework/Text/TextEditor.h"
#include "Styling/CoreStyle.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SEditableText.h"
#include "Widgets/Input/SEditableTextBox.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SBoxPanel.h"

#include <random>

/** A multi-line box of 300 by 100 below a button, with everything that it tells written down. */
class FTextBoxTest : public FWidgetTest
{
protected:
	TSharedPtr<SMultiLineEditableTextBox> Box;
	TSharedPtr<SButton> Button;
	std::vector<std::string> Events;

	void SetUp() override
	{
		FWidgetTest::SetUp();
		FHostServices::ClipboardCopy(FString());
	}

	void ShowBox(SMultiLineEditableTextBox::FArguments Arguments = SMultiLineEditableTextBox::FArguments(), bool bFocus = true)
	{
		Arguments.AutoWrapText(true)
			.OnTextChanged_Lambda([this](const FText& Text) { Events.push_back("text " + Utf8(Text)); })
			.OnTextCommitted_Lambda([this](const FText& Text, ETextCommit::Type Type)
				{ Events.push_back((Type == ETextCommit::OnEnter ? "enter " : "left ") + Utf8(Text)); })
			.OnCursorMoved_Lambda([this](const FTextLocation& Place)
				{ Events.push_back("cursor " + std::to_string(Place.GetLineIndex()) + "," + std::to_string(Place.GetOffset())); });
		Box = MakeShared<SMultiLineEditableTextBox>();
		Box->SetType(FName(TEXT("SMultiLineEditableTextBox")));
		Box->SWidgetConstruct(Arguments);
		Box->Construct(Arguments);
		// clang-format off
		Show(
			SNew(SBox)
			.HAlign(HAlign_Left)
			.VAlign(VAlign_Top)
			[
				SNew(SVerticalBox)
				+ SVerticalBox::Slot().AutoHeight()[ SAssignNew(Button, SButton).Text(FText::FromString(TEXT("Other"))) ]
				+ SVerticalBox::Slot().AutoHeight()
				[
					SNew(SBox).WidthOverride(300.0f).HeightOverride(100.0f)[ Box.ToSharedRef() ]
				]
			]);
		// clang-format on
		if (bFocus)
		{
			App().SetKeyboardFocus(Box);
		}
		PumpFrame();
		Events.clear();
	}
	std::string Text() const { return Utf8(Box->GetText()); }
	FVector2D At(float X, float Y) const
	{
		const FSlateRect Rect = GetRect(*Box);
		return FVector2D(Rect.Left + 8.0f + X, Rect.Top + 6.0f + Y);
	}
	std::vector<std::string> TakeEvents()
	{
		std::vector<std::string> Taken;
		Taken.swap(Events);
		return Taken;
	}
	using FEvents = std::vector<std::string>;
};

TEST_F(FTextBoxTest, TypingTellsTextAndCursor)
{
	ShowBox();
	TypeText("ab");
	EXPECT_EQ(TakeEvents(), (FEvents{ "text ab", "cursor 0,2" }));
	PressKey("Left");
	EXPECT_EQ(TakeEvents(), (FEvents{ "cursor 0,1" }));
	PressKey("Delete");
	EXPECT_EQ(TakeEvents(), (FEvents{ "text a" }));
	PressKey("Delete");
	EXPECT_EQ(TakeEvents(), FEvents());
	PressKey("CTRL+Z");
	PressKey("CTRL+Z");
	EXPECT_EQ(Text(), "");
	PressKey("CTRL+Y");
	PressKey("CTRL+SHIFT+Z");
	EXPECT_EQ(Text(), "a");
}

TEST_F(FTextBoxTest, SetTextTellsOnlyADifference)
{
	ShowBox();
	Box->SetText(FText::FromString(TEXT("Abc")));
	EXPECT_EQ(TakeEvents(), (FEvents{ "text Abc" }));
	Box->SetText(FText::FromString(TEXT("Abc")));
	EXPECT_EQ(TakeEvents(), FEvents());
	const FText Last = FText::FromString(TEXT("abc"));
	Box->SetText(Last);
	EXPECT_EQ(TakeEvents(), (FEvents{ "text abc" }));
	EXPECT_TRUE(Box->GetText().IdenticalTo(Last)) << "a text of megabytes is there once";
	Box->GoTo(FTextLocation(0, 99));
	EXPECT_EQ(TakeEvents(), (FEvents{ "cursor 0,3" }));
	EXPECT_EQ(Box->GetCursorLocation().GetOffset(), 3);
	Box->InsertTextAtCursor(FString(TEXT("\r\nx")));
	EXPECT_EQ(TakeEvents(), (FEvents{ "text abc\nx", "cursor 1,1" }));
}

TEST_F(FTextBoxTest, EnterMakesALineAndWithAModifierCommits)
{
	ShowBox();
	TypeText("a\nb");
	EXPECT_EQ(Text(), "a\nb");
	TakeEvents();
	for (const char* Chord : { "CTRL+Enter", "SHIFT+Enter", "ALT+Enter" })
	{
		PressKey(Chord);
		EXPECT_EQ(TakeEvents(), (FEvents{ "enter a\nb" })) << Chord;
	}
	EXPECT_TRUE(Box->HasKeyboardFocus());
	App().SetKeyboardFocus(Button);
	EXPECT_EQ(TakeEvents(), (FEvents{ "left a\nb" }));
	EXPECT_FALSE(Box->HasKeyboardFocus());
}

TEST_F(FTextBoxTest, TheModifierForANewLineCanBeChosen)
{
	ShowBox(SMultiLineEditableTextBox::FArguments().ModiferKeyForNewLine(EModifierKey::Shift));
	TypeText("a");
	PressKey("SHIFT+Enter");
	TypeText("b");
	TakeEvents();
	PressKey("Enter");
	EXPECT_EQ(TakeEvents(), (FEvents{ "enter a\nb" }));
}

TEST_F(FTextBoxTest, TheKeyHandlerComesFirst)
{
	int32 Asked = 0;
	ShowBox();
	Box->SetOnKeyDownHandler(FOnKeyDown::CreateLambda(
		[&Asked](const FGeometry&, const FKeyEvent& Event)
		{
			++Asked;
			return Event.GetKey() == EKeys::Enter ? FReply::Handled() : FReply::Unhandled();
		}));
	TypeText("a\nb");
	PressKey("Left");
	EXPECT_EQ(Text(), "ab");
	EXPECT_EQ(Asked, 2);
	EXPECT_EQ(Box->GetCursorLocation().GetOffset(), 1);
}

TEST_F(FTextBoxTest, ClipboardKeys)
{
	ShowBox();
	TypeText("one two");
	PressKey("CTRL+SHIFT+Left");
	PressKey("CTRL+C");
	PressKey("CTRL+X");
	EXPECT_EQ(Text(), "one ");
	PressKey("CTRL+V");
	PressKey("SHIFT+Insert");
	EXPECT_EQ(Text(), "one twotwo");
	PressKey("CTRL+A");
	PressKey("CTRL+Insert");
	PressKey("SHIFT+Delete");
	EXPECT_EQ(Text(), "");
	FHostServices::ClipboardCopy(TEXT("x\r\ny"));
	PressKey("CTRL+V");
	EXPECT_EQ(Text(), "x\ny");
}

TEST_F(FTextBoxTest, ReadOnlyTextIsSelectedAndCopiedOnly)
{
	ShowBox(SMultiLineEditableTextBox::FArguments().IsReadOnly(true).Text(FText::FromString(TEXT("fixed"))));
	TypeText("x");
	PressKey("BackSpace");
	PressKey("CTRL+A");
	PressKey("CTRL+X");
	EXPECT_EQ(Text(), "fixed");
	PressKey("CTRL+C");
	FString Clipboard;
	FHostServices::ClipboardPaste(Clipboard);
	EXPECT_EQ(Utf8(Clipboard), "fixed");
	App().SetKeyboardFocus(Button);
	EXPECT_EQ(TakeEvents(), (FEvents{ "cursor 0,5" })) << "a text that cannot change is not committed";
}

TEST_F(FTextBoxTest, ALineThatWasOnlyMeasuredIsAsLargeAsOneInUse)
{
	const FString Long = FString::ChrN(3000, TEXT('w'));
	for (const FString& Words : { FString(TEXT("code")), FString(TEXT("a\rb")), FString(TEXT("two\nlines")), FString(TEXT("\xD800 tab\t.")),
			 FString(TEXT("a line that is too long to be shared with others")), FString(), Long })
	{
		for (const bool bReadOnly : { true, false })
		{
			for (const float Scale : { 1.0f, 1.5f })
			{
				const TSharedRef<SEditableText> Line =
					SNew(SEditableText).Text(FText::FromString(Words)).HintText(FText::FromString(TEXT("hint"))).IsReadOnly(bReadOnly);
				SCOPED_TRACE(Utf8(Words.Left(20)));
				Line->SlatePrepass(Scale);
				const FVector2D Measured = Line->GetDesiredSize();
				EXPECT_TRUE(Line->GetText().ToString().Equals(Words));
				Line->SelectAllText();
				EXPECT_TRUE(Line->GetSelectedText().ToString().Equals(Words));
				Line->Invalidate(EInvalidateWidgetReason::Layout);
				Line->SlatePrepass(Scale);
				EXPECT_EQ(Line->GetDesiredSize(), Measured);
			}
		}
	}
}

TEST_F(FTextBoxTest, AlikeLinesAreSetApart)
{
	const auto Make = []() { return SNew(SEditableText).Text(FText::FromString(TEXT("word"))).IsReadOnly(true); };
	const TSharedRef<SEditableText> One = Make();
	const TSharedRef<SEditableText> Other = Make();
	One->SlatePrepass(1.0f);
	const FVector2D Size = One->GetDesiredSize();
	One->SetFont(FCoreStyle::GetDefaultFontStyle("Bold", 40));
	One->SetOnTextChanged(FOnTextChanged::CreateLambda([this](const FText& Text) { Events.push_back(Utf8(Text)); }));
	One->SlatePrepass(1.0f);
	Other->SlatePrepass(1.0f);
	EXPECT_GT(One->GetDesiredSize().X, Size.X * 2.0);
	EXPECT_EQ(Other->GetDesiredSize(), Size);
	Other->SetText(FText::FromString(TEXT("other")));
	EXPECT_EQ(Utf8(One->GetText()), "word");
	One->SetText(FText::FromString(TEXT("one")));
	EXPECT_EQ(TakeEvents(), FEvents{ "one" });
	EXPECT_EQ(Utf8(Other->GetText()), "other");
}

TEST_F(FTextBoxTest, ABoundTextOverrides)
{
	FString Model(TEXT("one"));
	ShowBox(SMultiLineEditableTextBox::FArguments().Text_Lambda([&Model]() { return FText::FromString(Model); }));
	EXPECT_EQ(Text(), "one");
	Model = TEXT("One");
	PumpFrame();
	EXPECT_EQ(Text(), "One");
	EXPECT_EQ(TakeEvents(), FEvents());
	TypeText("x");
	EXPECT_EQ(Text(), "xOne") << "a text being typed is not taken away by the frame";
	App().SetKeyboardFocus(Button);
	EXPECT_EQ(Text(), "One");
}

TEST_F(FTextBoxTest, MousePlacesSelectsWordsAndLines)
{
	ShowBox();
	Box->SetText(FText::FromString(TEXT("alpha beta\ngamma")));
	ClickAt(At(1.0f, 4.0f));
	EXPECT_TRUE(Box->GetCursorLocation() == FTextLocation(0, 0));
	PumpSeconds(1.0);
	ClickAt(At(8.0f, 4.0f), 2);
	EXPECT_EQ(Utf8(Box->GetSelectedText()), "alpha");
	PumpSeconds(1.0);
	ClickAt(At(8.0f, 4.0f), 3);
	EXPECT_EQ(Utf8(Box->GetSelectedText()), "alpha beta\n");
	PumpSeconds(1.0);
	// A drag by words takes whole ones, whichever way it goes.
	MoveMouse(At(8.0f, 4.0f));
	PressMouse(At(8.0f, 4.0f));
	ReleaseMouse(At(8.0f, 4.0f));
	PressMouse(At(8.0f, 4.0f));
	MoveMouse(At(45.0f, 4.0f));
	ReleaseMouse(At(45.0f, 4.0f));
	EXPECT_EQ(Utf8(Box->GetSelectedText()), "alpha beta");
	PumpSeconds(1.0);
	ClickAt(At(280.0f, 90.0f));
	EXPECT_TRUE(Box->GetCursorLocation() == FTextLocation(1, 5)) << "below the last line is at its end or column";
	App().GetMessageHandler().OnMouseDown(
		EKeys::LeftMouseButton, At(1.0f, 4.0f), FModifierKeysState(true, false, false, false, false, false));
	ReleaseMouse(At(1.0f, 4.0f));
	EXPECT_EQ(Utf8(Box->GetSelectedText()), "alpha beta\ngamma");
}

TEST_F(FTextBoxTest, ALongTextScrollsWithCaretWheelAndDrag)
{
	ShowBox();
	FString Lines;
	for (int32 Line = 0; Line < 40; ++Line)
	{
		Lines += FString::Printf(TEXT("line %d\n"), Line);
	}
	Box->SetText(FText::FromString(Lines));
	PumpFrame();
	const auto GetFirstLine = [this]
	{
		ClickAt(At(2.0f, 4.0f));
		return Box->GetCursorLocation().GetLineIndex();
	};
	EXPECT_EQ(GetFirstLine(), 0);
	PressKey("CTRL+End");
	FSlateRect Caret;
	ASSERT_TRUE(Box->GetTextInputArea(Caret));
	EXPECT_GE(Caret.Top, GetRect(*Box).Top);
	EXPECT_LE(Caret.Bottom, GetRect(*Box).Bottom);
	const int32 Bottom = GetFirstLine();
	EXPECT_GT(Bottom, 25);
	Scroll(Box.ToSharedRef(), 1.0f);
	EXPECT_LT(GetFirstLine(), Bottom);
	PressKey("PageUp");
	PressKey("CTRL+Home");
	EXPECT_EQ(GetFirstLine(), 0);
	// A drag held below the box goes on scrolling.
	MoveMouse(At(2.0f, 4.0f));
	PressMouse(At(2.0f, 4.0f));
	MoveMouse(At(2.0f, 160.0f));
	PumpSeconds(0.5);
	EXPECT_GT(Box->GetCursorLocation().GetLineIndex(), 7);
	ReleaseMouse(At(2.0f, 160.0f));
	// The thumb.
	PressKey("CTRL+Home");
	const FSlateRect Rect = GetRect(*Box);
	PressMouse(FVector2D(Rect.Right - 6.0f, Rect.Top + 5.0f));
	MoveMouse(FVector2D(Rect.Right - 6.0f, Rect.Bottom));
	ReleaseMouse(FVector2D(Rect.Right - 6.0f, Rect.Bottom));
	EXPECT_EQ(GetFirstLine(), Bottom);
}

TEST_F(FTextBoxTest, DesiredHeightIsThatOfTheText)
{
	ShowBox();
	FSlateRect Caret;
	ASSERT_TRUE(Box->GetTextInputArea(Caret));
	const double LineHeight = Caret.Bottom - Caret.Top;
	const double OneLine = Box->GetDesiredSize().Y;
	EXPECT_NEAR(OneLine, LineHeight + 12.0, 0.01);
	Box->SetText(FText::FromString(TEXT("a\nb\nc")));
	PumpFrame();
	EXPECT_NEAR(Box->GetDesiredSize().Y, OneLine + 2.0 * LineHeight, 0.01);
	Box->SetText(FText::FromString(TEXT("many words that do not fit into one line of the box and therefore go on in the next one")));
	PumpFrame();
	EXPECT_GE(Box->GetDesiredSize().Y, OneLine + LineHeight - 0.01);
	Box->SetText(FText());
	PumpFrame();
	EXPECT_NEAR(Box->GetDesiredSize().Y, OneLine, 0.01);
}

TEST_F(FTextBoxTest, PreeditIsShownAndNeverPartOfTheText)
{
	ShowBox();
	TypeText("ab");
	PressKey("Left");
	TakeEvents();
	App().GetMessageHandler().OnPreedit(TEXT("xyz"), 3);
	PumpFrame();
	EXPECT_EQ(Text(), "ab");
	EXPECT_EQ(TakeEvents(), FEvents());
	FSlateRect Caret;
	ASSERT_TRUE(Box->GetTextInputArea(Caret));
	App().GetMessageHandler().OnPreedit(TEXT(""), 0);
	PumpFrame();
	FSlateRect After;
	ASSERT_TRUE(Box->GetTextInputArea(After));
	EXPECT_GT(Caret.Left, After.Left + 10.0f);
	TypeText("z");
	EXPECT_EQ(Text(), "azb");
}

TEST_F(FTextBoxTest, TheContextMenuWorksOnTheSelection)
{
	ShowBox();
	TypeText("word");
	PressKey("CTRL+A");
	TakeEvents();
	MoveMouse(At(8.0f, 4.0f));
	PressMouse(At(8.0f, 4.0f), EKeys::RightMouseButton);
	ReleaseMouse(At(8.0f, 4.0f), EKeys::RightMouseButton);
	EXPECT_TRUE(App().AnyMenusVisible());
	EXPECT_TRUE(Box->HasKeyboardFocus());
	Click(FindByText("Cut"));
	EXPECT_FALSE(App().AnyMenusVisible());
	EXPECT_EQ(Text(), "");
	EXPECT_EQ(TakeEvents(), (FEvents{ "text ", "cursor 0,0" })) << "opening the menu committed the text";
	PressMouse(At(8.0f, 4.0f), EKeys::RightMouseButton);
	Click(FindByText("Paste"));
	EXPECT_EQ(Text(), "word");
}

TEST_F(FTextBoxTest, HintIsNoText)
{
	ShowBox(SMultiLineEditableTextBox::FArguments().HintText(FText::FromString(TEXT("Say something"))));
	EXPECT_EQ(Utf8(Box->GetDisplayedText()), "");
	const int32 WithHint = App().GetLastElements().GetElements().Num();
	TypeText("a");
	PressKey("BackSpace");
	EXPECT_EQ(App().GetLastElements().GetElements().Num(), WithHint);
}

TEST_F(FTextBoxTest, FiveMegabytesStayUsable)
{
	ShowBox();
	FString Big;
	Big.Reserve(5 * 1024 * 1024 + 100);
	while (Big.Len() < 5 * 1024 * 1024)
	{
		Big += TEXT("A line of about a hundred characters, as people paste them from logs, with blanks and some words in it\n");
	}
	FHostServices::ClipboardCopy(Big);
	FText Kept;
	Box->SetOnTextChanged(FOnTextChanged::CreateLambda([&Kept](const FText& Text) { Kept = Text; }));
	const uint64 ShapedBefore = ITextShaper::Get().GetCounters().ParagraphsMade;
	PressKey("CTRL+V");
	TypeText("x");
	PressKey("CTRL+Home");
	TypeText("y\n");
	EXPECT_EQ(Box->GetText().ToString().Len(), Big.Len() + 3);
	// What is shaped does not depend on the length of the text.
	EXPECT_LE(ITextShaper::Get().GetCounters().ParagraphsMade - ShapedBefore, 100u);
}

TEST_F(FTextBoxTest, RandomInputKeepsTheCaretInTheText)
{
	ShowBox();
	std::mt19937 Random(99);
	const auto Below = [&Random](int32 Limit) { return std::uniform_int_distribution<int32>(0, Limit - 1)(Random); };
	const char* const Keys[] = { "Left", "Right", "Up", "Down", "Home", "End", "PageUp", "PageDown", "BackSpace", "Delete", "Enter",
		"Insert", "Z", "Y", "X", "C", "V", "A" };
	const char* const Modifiers[] = { "", "SHIFT+", "CTRL+", "CTRL+SHIFT+" };
	const FString Lone = FString::Chr(TCHAR(0xDC00)) + FString::Chr(TCHAR(0xD83D));
	const FString Pieces[] = { TEXT("a"), TEXT("word and "), TEXT("\u05D0\u05D1 \u0627\u0644"), TEXT("\U0001F469\u200D\U0001F467"),
		TEXT("e\u0301"), Lone, FString::ChrN(5000, TEXT('m')), TEXT("\r\n"), TEXT("x\ny\n") };
	for (int32 Round = 0; Round < 600; ++Round)
	{
		const FVector2D Place = At(static_cast<float>(Below(320) - 10), static_cast<float>(Below(120) - 10));
		switch (Below(6))
		{
		case 0:
			Box->InsertTextAtCursor(Pieces[Below(UE_ARRAY_COUNT(Pieces))]);
			break;
		case 1:
			App().GetMessageHandler().OnTextInput(Pieces[Below(6)]);
			break;
		case 2:
			PressMouse(Place);
			MoveMouse(At(static_cast<float>(Below(300)), static_cast<float>(Below(200) - 50)));
			ReleaseMouse(Place);
			App().SetKeyboardFocus(Box);
			break;
		case 3:
			App().GetMessageHandler().OnPreedit(Below(2) == 0 ? TEXT("") : TEXT("preedit"), Below(9));
			break;
		default:
			PressKey((std::string(Modifiers[Below(4)]) + Keys[Below(UE_ARRAY_COUNT(Keys))]).c_str());
			break;
		}
		if (Box->GetText().ToString().Len() > 100000)
		{
			Box->SetText(FText());
		}
		PumpFrame();
		TArray<FString> Lines;
		Box->GetText().ToString().ParseIntoArray(Lines, TEXT("\n"), false);
		const FTextLocation Caret = Box->GetCursorLocation();
		ASSERT_TRUE(Caret.GetLineIndex() >= 0 && Caret.GetLineIndex() < FMath::Max(Lines.Num(), 1)) << Round;
		ASSERT_TRUE(Caret.GetOffset() >= 0 && Caret.GetOffset() <= (Lines.Num() ? Lines[Caret.GetLineIndex()].Len() : 0)) << Round;
	}
	while (Box->CanUndo())
	{
		Box->Undo();
	}
	PumpFrame();
}

TEST_F(FTextBoxTest, OneLineBoxes)
{
	FTextList Committed;
	TSharedPtr<SEditableTextBox> Single;
	TSharedPtr<SEditableText> Chip;
	const FSlateFontInfo ChipFont = FCoreStyle::GetDefaultFontStyle("Mono", 9.0f);
	// clang-format off
	Show(
		SNew(SBox).HAlign(HAlign_Left).VAlign(VAlign_Top)
		[
			SNew(SVerticalBox)
			+ SVerticalBox::Slot().AutoHeight()
			[
				SNew(SBox).WidthOverride(100.0f)
				[
					SAssignNew(Single, SEditableTextBox).SelectAllTextWhenFocused(true)
						.RevertTextOnEscape(true).Text(FText::FromString(TEXT("start")))
					.OnTextCommitted_Lambda([&Committed](const FText& Text, ETextCommit::Type) { Committed.push_back(Utf8(Text)); })
				]
			]
			+ SVerticalBox::Slot().AutoHeight().HAlign(HAlign_Left)
			[
				SAssignNew(Chip, SEditableText).IsReadOnly(true).Font(ChipFont).Text(FText::FromString(TEXT("Code")))
			]
		]);
	// clang-format on
	App().SetKeyboardFocus(Single);
	PumpFrame();
	EXPECT_EQ(Utf8(Single->GetSelectedText()), "start");
	TypeText("a much longer text than fits");
	FSlateRect Caret;
	ASSERT_TRUE(Single->GetTextInputArea(Caret));
	EXPECT_LE(Caret.Right, GetRect(*Single).Right - 7.0f) << "the text scrolls sideways to keep the caret in view";
	PressKey("Home");
	ASSERT_TRUE(Single->GetTextInputArea(Caret));
	EXPECT_NEAR(Caret.Left, GetRect(*Single).Left + 8.0f, 0.01);
	const float Height = GetRect(*Single).Height();
	TypeText(std::string(100000, 'x'));
	PumpFrame();
	EXPECT_EQ(GetRect(*Single).Height(), Height) << "one line, however long";
	ASSERT_TRUE(Single->GetTextInputArea(Caret));
	EXPECT_GE(Caret.Top, GetRect(*Single).Top);
	EXPECT_LE(Caret.Bottom, GetRect(*Single).Bottom);
	PressKey("Escape");
	EXPECT_EQ(Utf8(Single->GetText()), "start");
	PressKey("Enter");
	EXPECT_EQ(Committed, (FTextList{ "start" }));
	EXPECT_FALSE(Single->HasKeyboardFocus());

	const float ChipWidth = GetRect(*Chip).Width();
	EXPECT_NEAR(ChipWidth, ITextShaper::Get().MakeParagraph(TEXT("Code"), ChipFont, 1.0f)->GetUnwrappedWidth(), 0.51f);
	ClickAt(GetCenter(Chip.ToSharedRef()), 2);
	EXPECT_EQ(Utf8(Chip->GetSelectedText()), "Code");
}

TEST_F(FTextBoxTest, WhatIsTooLongIsRefusedInWords)
{
	ShowBox();
	Box->SetText(FText::FromString(TEXT("kept")));
	TakeEvents();
	const FString TooLong(std::u16string(static_cast<std::size_t>(FTextEditor::MaxLength - 3), u'x').c_str());
	Box->InsertTextAtCursor(TooLong);
	Box->InsertTextAtCursor(TooLong);
	EXPECT_EQ(Text(), "kept");
	EXPECT_EQ(TakeEvents(), FEvents());
	ASSERT_EQ(FHostNotifications::GetVisible().Num(), 1) << "told once";
	EXPECT_EQ(Utf8(FHostNotifications::GetVisible()[0].Text),
		"A text can be 67 million characters long at most. With what was to be inserted it would be longer, so nothing was inserted.");
	// What takes the place of the selection has its room.
	Box->SelectAllText();
	Box->InsertTextAtCursor(TooLong);
	EXPECT_EQ(Box->GetText().ToString().Len(), TooLong.Len());
	FHostNotifications::Clear();
}
