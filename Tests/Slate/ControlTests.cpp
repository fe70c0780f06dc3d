#include "Support/UiDriver.h"

#include "Framework/Notifications/NotificationManager.h"
#include "Host/HostNotifications.h"
#include "Widgets/Images/SThrobber.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SCheckBox.h"
#include "Widgets/Input/SHyperlink.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SExpandableArea.h"
#include "Widgets/Layout/SSpacer.h"
#include "Widgets/Notifications/SProgressBar.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SOverlay.h"
#include "Widgets/Text/STextBlock.h"

class FControls : public FWidgetTest
{
protected:
	/** At the window's corner, in its own size. */
	void ShowSmall(const TSharedRef<SWidget>& Widget) { Show(SNew(SBox).HAlign(HAlign_Left).VAlign(VAlign_Top)[Widget]); }
	static auto Counting(int32& Clicks)
	{
		return [&Clicks]
		{
			++Clicks;
			return FReply::Handled();
		};
	}
	/** Fill and outline of the rounded boxes on screen, in painting order: "rrggbbaa/rrggbbaa". */
	static FTextList Boxes()
	{
		FTextList Result;
		for (const FSlateDrawElement& Element : App().GetLastElements().GetElements())
		{
			if (Element.Type == ESlateDrawType::RoundedBox)
			{
				Result.push_back(Utf8(Element.Color.ToHex()) + "/" + Utf8(Element.OutlineColor.ToHex()));
			}
		}
		return Result;
	}
	static std::string TextColour()
	{
		for (const FSlateDrawElement& Element : App().GetLastElements().GetElements())
		{
			if (Element.Type == ESlateDrawType::Glyphs)
			{
				return Utf8(Element.Color.ToHex());
			}
		}
		return "no text";
	}
};

TEST_F(FControls, ButtonStatesHaveTheirLook)
{
	bool bEnabled = true;
	TSharedPtr<SButton> Button;
	ShowSmall(SAssignNew(Button, SButton).Text(INVTEXT("Close")).IsEnabled_Lambda([&bEnabled] { return bEnabled; }));
	EXPECT_EQ(GetRect(*Button), FSlateRect(0.0f, 0.0f, 80.0f, 28.0f)) << "at least 80 wide";
	EXPECT_EQ(Boxes(), FTextList({ "20242DFF/343946FF" }));
	EXPECT_EQ(TextColour(), "E6E6E6FF");
	Hover(Button.ToSharedRef());
	EXPECT_EQ(Boxes(), FTextList({ "2A2F3AFF/434959FF" }));
	PressMouse(GetCenter(Button.ToSharedRef()));
	EXPECT_EQ(Boxes(), FTextList({ "191C23FF/343946FF" }));
	MoveMouse(FVector2D(600, 600));
	EXPECT_EQ(Boxes(), FTextList({ "20242DFF/343946FF" })) << "dragged off it looks released";
	ReleaseMouse(FVector2D(600, 600));
	bEnabled = false;
	PumpFrame();
	EXPECT_EQ(Boxes(), FTextList({ "181B22FF/262A34FE" }));
	EXPECT_EQ(TextColour(), "6B7280FE");
}

TEST_F(FControls, ButtonClicksAreReleasesInsideAfterAPressInside)
{
	int32 Clicks = 0;
	int32 Hovers = 0;
	TSharedPtr<SButton> Button;
	ShowSmall(SAssignNew(Button, SButton)
				  .Text(INVTEXT("Go"))
				  .OnHovered_Lambda([&Hovers] { ++Hovers; })
				  .OnUnhovered_Lambda([&Hovers] { Hovers += 10; })
				  .OnClicked_Lambda(Counting(Clicks)));
	const FVector2D Inside = GetCenter(Button.ToSharedRef());
	const FVector2D Outside(500, 500);
	Click(Button.ToSharedRef());
	EXPECT_EQ(Clicks, 1);
	PressMouse(Inside);
	EXPECT_TRUE(Button->IsPressed());
	MoveMouse(Outside);
	ReleaseMouse(Outside);
	EXPECT_EQ(Clicks, 1) << "released outside";
	EXPECT_FALSE(Button->IsPressed());
	PressMouse(Outside);
	MoveMouse(Inside);
	ReleaseMouse(Inside);
	EXPECT_EQ(Clicks, 1) << "pressed outside";
	PressMouse(Inside, EKeys::RightMouseButton);
	ReleaseMouse(Inside, EKeys::RightMouseButton);
	EXPECT_EQ(Clicks, 1) << "another button";
	ClickAt(Inside, 2);
	EXPECT_EQ(Clicks, 3) << "two quick clicks are two";
	Button->SetEnabled(false);
	Click(Button.ToSharedRef());
	EXPECT_EQ(Clicks, 3);
	MoveMouse(Outside);
	EXPECT_GE(Hovers, 11);
	EXPECT_EQ(App().GetMouseCaptor(), nullptr);
}

TEST_F(FControls, ButtonsTakeEnterAndSpaceWhenFocused)
{
	int32 Clicks = 0;
	TSharedPtr<SButton> Button;
	ShowSmall(SAssignNew(Button, SButton).Text(INVTEXT("Go")).OnClicked_Lambda(Counting(Clicks)));
	PressKey("Enter");
	EXPECT_EQ(Clicks, 0) << "not focused";
	PressKey("Tab");
	EXPECT_TRUE(Button->HasKeyboardFocus());
	EXPECT_EQ(Boxes(), FTextList({ "20242DFF/343946FF", "00000000/7CB9FFFF" })) << "the ring covers the outline";
	PressKey("Enter");
	PressKey("SpaceBar");
	EXPECT_EQ(Clicks, 2);
	PressKey("CTRL+Enter");
	EXPECT_EQ(Clicks, 2);
	App().GetMessageHandler().OnKeyDown(EKeys::SpaceBar, FModifierKeysState(), false);
	EXPECT_TRUE(Button->IsPressed());
	App().ClearKeyboardFocus();
	App().GetMessageHandler().OnKeyUp(EKeys::SpaceBar, FModifierKeysState());
	EXPECT_EQ(Clicks, 2) << "the focus left before the key came up";
	Click(Button.ToSharedRef());
	EXPECT_EQ(Boxes(), FTextList({ "2A2F3AFF/434959FF" })) << "no ring after a mouse click";
}

TEST_F(FControls, CheckBoxesToggle)
{
	std::vector<ECheckBoxState> Changes;
	TSharedPtr<SCheckBox> Free;
	TSharedPtr<SCheckBox> Bound;
	ShowSmall(SNew(SVerticalBox) +
		SVerticalBox::Slot().AutoHeight()[SAssignNew(Free, SCheckBox)
											  .OnCheckStateChanged_Lambda([&Changes](ECheckBoxState State)
												  { Changes.push_back(State); })[SNew(STextBlock).Text(INVTEXT("Label"))]] +
		SVerticalBox::Slot().AutoHeight()[SAssignNew(Bound, SCheckBox).IsChecked_Lambda([] { return ECheckBoxState::Undetermined; })]);
	Click(FindByText("Label"));
	EXPECT_TRUE(Free->IsChecked()) << "the label belongs to it";
	PressKey("SpaceBar");
	EXPECT_FALSE(Free->IsChecked());
	PressKey("Enter");
	EXPECT_EQ(Changes, std::vector<ECheckBoxState>({ ECheckBoxState::Checked, ECheckBoxState::Unchecked }));
	Click(Bound.ToSharedRef());
	EXPECT_EQ(Bound->GetCheckedState(), ECheckBoxState::Undetermined) << "its owner decides";
	Free->SetEnabled(false);
	Click(Free.ToSharedRef());
	EXPECT_FALSE(Free->IsChecked());
	EXPECT_EQ(GetRect(*FindByText("Label")).Left, 24.0f) << "16 of box, 8 of gap";
}

TEST_F(FControls, HyperlinksAreFollowed)
{
	int32 Visits = 0;
	TSharedPtr<SHyperlink> Link;
	Show(SNew(SBox)
			 .Padding(20.0f)
			 .HAlign(HAlign_Left)
			 .VAlign(VAlign_Top)[SAssignNew(Link, SHyperlink).Text(INVTEXT("DashComponent.h")).OnNavigate_Lambda([&Visits] { ++Visits; })]);
	const auto Underline = [this]()
	{
		for (const FSlateDrawElement& Element : App().GetLastElements().GetElements())
		{
			if (Element.Type == ESlateDrawType::Box)
			{
				return Element;
			}
		}
		return FSlateDrawElement();
	};
	EXPECT_EQ(TextColour(), "95CBFFFF");
	EXPECT_EQ(Utf8(Underline().Color.ToHex()), "95CBFF73");
	EXPECT_EQ(Underline().Rect.Width(), GetRect(*Link).Width());
	EXPECT_GT(Underline().Rect.Top, GetCenter(Link.ToSharedRef()).Y);
	EXPECT_LE(Underline().Rect.Bottom, GetRect(*Link).Bottom);
	Hover(Link.ToSharedRef());
	EXPECT_EQ(TextColour(), "9CD4FFFF");
	EXPECT_EQ(Utf8(Underline().Color.ToHex()), "9CD4FFFF");
	EXPECT_EQ(Link->OnCursorQuery(Link->GetCachedGeometry(), FPointerEvent()).GetCursorType(), EMouseCursor::Hand);
	Click(Link.ToSharedRef());
	EXPECT_EQ(Visits, 1);
	PressKey("Enter");
	EXPECT_EQ(Visits, 2);
	App().ClearKeyboardFocus();
	PressKey("Tab");
	PumpFrame();
	EXPECT_EQ(Boxes(), FTextList({ "00000000/7CB9FFFF" }));
}

TEST_F(FControls, ExpandableAreaOpensByItsWholeHeader)
{
	std::vector<bool> Changes;
	TSharedPtr<SExpandableArea> Area;
	TSharedPtr<SWidget> Body;
	// clang-format off
	Show(SNew(SBox).HAlign(HAlign_Left).VAlign(VAlign_Top).WidthOverride(600)
		[
			SNew(SBox).WidthOverride(600)
			[
				SAssignNew(Area, SExpandableArea)
				.InitiallyCollapsed(true)
				.OnAreaExpansionChanged_Lambda([&Changes](bool bExpanded) { Changes.push_back(bExpanded); })
				.HeaderContent()
				[
					SNew(SSpacer).Size(FVector2D(50, 27))
				]
				.BodyContent()
				[
					SAssignNew(Body, SBox).HeightOverride(100)
				]
			]
		]);
	// clang-format on
	EXPECT_EQ(GetRect(*Area), FSlateRect(0.0f, 0.0f, 600.0f, 29.0f)) << "line, header, line";
	EXPECT_EQ(GetRect(*FindByType("SImage").at(0)), FSlateRect(7.0f, 6.5f, 23.0f, 22.5f));
	EXPECT_FALSE(IsShown(Body.ToSharedRef()));
	ClickAt(FVector2D(590, 15));
	EXPECT_TRUE(Area->IsExpanded());
	EXPECT_EQ(GetRect(*Area).Bottom, 129.0f);
	EXPECT_EQ(GetRect(*Body), FSlateRect(1.0f, 28.0f, 599.0f, 128.0f));
	PressKey("SpaceBar");
	EXPECT_FALSE(Area->IsExpanded()) << "the click has focused the header";
	PressKey("Enter");
	EXPECT_EQ(Changes, std::vector<bool>({ true, false, true }));
	Area->SetExpanded(true);
	EXPECT_EQ(Changes.size(), 3u) << "nothing has changed";
	ClickAt(FVector2D(300, 80));
	EXPECT_TRUE(Area->IsExpanded()) << "the body is no header";
	EXPECT_FALSE(Area->HasSizeBindings()) << "a finished area costs nothing";
}

TEST_F(FControls, ProgressBarFillsItsFraction)
{
	TOptional<float> Percent = 0.25f;
	Show(SNew(SBox)
			 .WidthOverride(200)
			 .HAlign(HAlign_Left)
			 .VAlign(VAlign_Top)[SNew(SBox).WidthOverride(200)[SNew(SProgressBar)
																   .Percent_Lambda([&Percent] { return Percent; })
																   .FillColorAndOpacity(FLinearColor(FColor(0x95, 0xE7, 0xFF, 0xFF)))]]);
	const auto Fill = [this] { return App().GetLastElements().GetElements().Last(); };
	EXPECT_EQ(Fill().Rect, FSlateRect(0.0f, 0.0f, 50.0f, 6.0f));
	EXPECT_EQ(Fill().Color, FColor(0x95, 0xE7, 0xFF, 0xFF));
	Percent = 7.0f;
	PumpFrame();
	EXPECT_EQ(Fill().Rect.Right, 200.0f);
	Percent = -1.0f;
	PumpFrame();
	EXPECT_EQ(Boxes().size(), 1u) << "the track alone";
	Percent = 0.005f;
	PumpFrame();
	EXPECT_EQ(Fill().Clip.Right, 1.0f);
	Percent.Reset();
	PumpFrame();
	const FSlateRect Before = Fill().Rect;
	PumpFrame(0.2);
	EXPECT_NE(Fill().Rect, Before) << "without a fraction it wanders";
}

class FToasts : public FControls
{
protected:
	static FTextList Toasts()
	{
		FTextList Texts;
		for (const FHostToast& Toast : FHostNotifications::GetVisible())
		{
			Texts.push_back(Utf8(Toast.Text));
		}
		return Texts;
	}
	static TSharedPtr<SNotificationItem> Add(const TCHAR* Text, bool bFireAndForget = false, float Expire = 0.0f)
	{
		FNotificationInfo Info(FText::FromString(Text));
		Info.bFireAndForget = bFireAndForget;
		Info.ExpireDuration = Expire;
		Info.FadeOutDuration = 0.5f;
		return FSlateNotificationManager::Get().AddNotification(Info);
	}
};

TEST_F(FToasts, StackAtTheLowerRight)
{
	const TSharedPtr<SNotificationItem> First = Add(TEXT("First"));
	const TSharedPtr<SNotificationItem> Second = Add(TEXT("Second"));
	Second->SetCompletionState(SNotificationItem::CS_Success);
	PumpFrame();
	EXPECT_EQ(GetRect(*Second), FSlateRect(904.0f, 740.0f, 1264.0f, 784.0f));
	EXPECT_EQ(GetRect(*First), FSlateRect(904.0f, 690.0f, 1264.0f, 732.0f)) << "without a mark as high as its text";
	EXPECT_EQ(Toasts(), FTextList({ "First", "Second" }));
	EXPECT_EQ(VisibleTexts(), FTextList({ "First", "Second" }));
}

TEST_F(FToasts, ExpireFadeAndDie)
{
	TWeakPtr<SNotificationItem> Short = Add(TEXT("Short"), true, 2.0f);
	TWeakPtr<SNotificationItem> Long = Add(TEXT("Long"));
	PumpFrame();
	PumpSeconds(1.9);
	EXPECT_EQ(Short.Pin()->GetRenderOpacity(), 1.0f);
	PumpSeconds(0.4);
	EXPECT_NEAR(Short.Pin()->GetRenderOpacity(), 0.4f, 0.1f);
	PumpSeconds(0.4);
	EXPECT_FALSE(Short.IsValid()) << "nobody keeps it";
	EXPECT_EQ(Toasts(), FTextList({ "Long" }));
	PumpSeconds(20.0);
	ASSERT_TRUE(Long.IsValid()) << "stays until told";
	Long.Pin()->SetText(INVTEXT("Longer"));
	Long.Pin()->SetCompletionState(SNotificationItem::CS_Fail);
	Long.Pin()->ExpireAndFadeout();
	PumpFrame();
	EXPECT_EQ(Toasts(), FTextList({ "Longer" }));
	PumpSeconds(0.6);
	EXPECT_EQ(Toasts(), FTextList());
	EXPECT_FALSE(Long.IsValid());
}

TEST_F(FToasts, ButtonsShowInTheirState)
{
	int32 Pressed = 0;
	FNotificationInfo Info(INVTEXT("Index build failed"));
	Info.bFireAndForget = false;
	Info.ButtonDetails.Add(FNotificationButtonInfo(INVTEXT("View Log"), INVTEXT("Opens the log"),
		FSimpleDelegate::CreateLambda([&Pressed] { ++Pressed; }), SNotificationItem::CS_Fail));
	const TSharedPtr<SNotificationItem> Item = FSlateNotificationManager::Get().AddNotification(Info);
	PumpFrame();
	EXPECT_EQ(VisibleTexts(), FTextList({ "Index build failed" }));
	EXPECT_EQ(GetRect(*Item).Height(), 42.0f);
	Item->SetCompletionState(SNotificationItem::CS_Pending);
	PumpFrame();
	EXPECT_EQ(CountByType("SThrobber"), 1);
	Item->SetCompletionState(SNotificationItem::CS_Fail);
	PumpFrame();
	EXPECT_EQ(CountByType("SThrobber"), 0);
	EXPECT_EQ(VisibleTexts(), FTextList({ "Index build failed", "View Log" }));
	EXPECT_EQ(GetRect(*Item).Height(), 12.0f + 20.0f + 8.0f + 28.0f + 12.0f);
	EXPECT_EQ(GetRect(*FindByType("SButton").at(0)).Right, 1252.0f);
	Click(FindByText("View Log"));
	EXPECT_EQ(Pressed, 1);
}

TEST_F(FToasts, LetTheMouseThroughBetweenThem)
{
	int32 Clicks = 0;
	Show(SNew(SButton).OnClicked_Lambda(Counting(Clicks))[SNew(SSpacer)]);
	Add(TEXT("Upper"));
	Add(TEXT("Lower"));
	PumpFrame();
	ClickAt(FVector2D(1100, 736));
	EXPECT_EQ(Clicks, 1) << "in the gap";
	ClickAt(FVector2D(1272, 760));
	EXPECT_EQ(Clicks, 2) << "beside them";
	ClickAt(FVector2D(1100, 760));
	EXPECT_EQ(Clicks, 2) << "on one of them";
}
