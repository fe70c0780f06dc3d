#include "Support/UiDriver.h"

#include "Brushes/SlateColorBrush.h"
#include "Host/HostClock.h"
#include "Host/HostTasks.h"
#include "Styling/AppStyle.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Input/SComboBox.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SCompoundWidget.h"
#include "Widgets/SLeafWidget.h"
#include "Widgets/SOverlay.h"
#include "Widgets/Text/STextBlock.h"

#include "Slate/Private/Framework/Application/FrameRunner.h"
#include "Slate/Private/Framework/Application/LayerStack.h"

namespace
{
	/** Takes the keyboard for what is in it. */
	class SStopsPanel : public SCompoundWidget
	{
	public:
		SLATE_BEGIN_ARGS(SStopsPanel) {}
		SLATE_DEFAULT_SLOT(FArguments, Content)
		SLATE_END_ARGS()
		void Construct(const FArguments& InArgs) { ChildSlot[InArgs._Content.Widget]; }
		virtual bool SupportsKeyboardFocus() const override { return true; }
	};

	/** Writes down what it is told, and answers as the test says. */
	class SProbe : public SLeafWidget
	{
	public:
		SLATE_BEGIN_ARGS(SProbe) {}
		SLATE_ARGUMENT(std::vector<std::string>*, Log)
		SLATE_ARGUMENT_DEFAULT(bool, Focusable) = false;
		SLATE_ARGUMENT_DEFAULT(bool, HandlesPress) = false;
		SLATE_END_ARGS()

		void Construct(const FArguments& InArgs)
		{
			Log = InArgs._Log;
			bFocusable = InArgs._Focusable;
			bHandlesPress = InArgs._HandlesPress;
		}
		virtual bool SupportsKeyboardFocus() const override { return bFocusable; }
		virtual FReply OnMouseButtonDown(const FGeometry&, const FPointerEvent&) override
		{
			Note("press");
			return bHandlesPress ? FReply::Handled().CaptureMouse(SharedThis(this)) : FReply::Unhandled();
		}
		virtual FReply OnMouseButtonUp(const FGeometry&, const FPointerEvent&) override
		{
			Note("release");
			return bHandlesPress ? FReply::Handled().ReleaseMouseCapture() : FReply::Unhandled();
		}
		virtual FReply OnMouseButtonDoubleClick(const FGeometry&, const FPointerEvent&) override
		{
			Note("double");
			return FReply::Handled();
		}
		virtual void OnMouseEnter(const FGeometry&, const FPointerEvent&) override { Note("enter"); }
		virtual void OnMouseLeave(const FPointerEvent&) override { Note("leave"); }
		virtual FReply OnKeyDown(const FGeometry&, const FKeyEvent& Event) override
		{
			Note("key " + Utf8(Event.GetKey().ToString()));
			return FReply::Unhandled();
		}
		virtual FReply OnPreviewKeyDown(const FGeometry&, const FKeyEvent& Event) override
		{
			Note("preview " + Utf8(Event.GetKey().ToString()));
			return FReply::Unhandled();
		}
		virtual FReply OnFocusReceived(const FGeometry&, const FFocusEvent&) override
		{
			Note("focus");
			return FReply::Handled();
		}
		virtual void OnFocusLost(const FFocusEvent&) override { Note("blur"); }
		virtual void Tick(const FGeometry&, const double, const float DeltaTime) override { TickedSeconds += DeltaTime; }
		float TickedSeconds = 0.0f;

	protected:
		virtual int32 OnPaint(const FPaintArgs&, const FGeometry&, const FSlateRect&, FSlateWindowElementList&, int32 LayerId,
			const FWidgetStyle&, bool) const override
		{
			return LayerId;
		}
		virtual FVector2D ComputeDesiredSize(float) const override { return FVector2D(100, 50); }

	private:
		void Note(const std::string& What)
		{
			if (Log)
			{
				Log->push_back(Utf8(GetTag().ToString()) + " " + What);
			}
		}
		std::vector<std::string>* Log = nullptr;
		bool bFocusable = false;
		bool bHandlesPress = false;
	};

	/** Replaces its content while it ticks. */
	class SGrower : public SCompoundWidget
	{
	public:
		SLATE_BEGIN_ARGS(SGrower) {}
		SLATE_END_ARGS()
		void Construct(const FArguments&) {}
		virtual void Tick(const FGeometry&, const double, const float) override
		{
			if (bGrow)
			{
				bGrow = false;
				ChildSlot[SNew(SBox).WidthOverride(70.0f).HeightOverride(30.0f)];
			}
		}
		bool bGrow = false;
	};

	TSharedRef<SWidget> InCorner(const TSharedRef<SWidget>& Widget)
	{
		return SNew(SBox).HAlign(HAlign_Left).VAlign(VAlign_Top)[Widget];
	}
}

class FApplicationTest : public FWidgetTest
{
protected:
	static TSharedRef<IMenu> Open(const TSharedRef<SWidget>& Owner, const TSharedRef<SWidget>& Content)
	{
		return App().PushMenu(Owner, Content, GetRect(*Owner), MenuPlacement_BelowAnchor, false);
	}

	/** Shows the window until it is closed, and does the step in each frame. */
	static void ShowModal(const TSharedRef<SWindow>& Window, const std::function<void(int32)>& Step)
	{
		int32 Frames = 0;
		App().SetFrameHook(
			[&]()
			{
				FHostClock::Advance(1.0 / 60.0);
				Step(++Frames);
				if (Frames > 100)
				{
					ADD_FAILURE() << "the window does not close";
					App().RequestExit();
				}
			});
		App().AddModalWindow(Window, nullptr);
		App().SetFrameHook(nullptr);
		EXPECT_GE(Frames, 5);
	}

	FTextList Log;
};

TEST_F(FApplicationTest, PointerEntersPressesAndLeaves)
{
	Show(InCorner(SNew(SProbe).Tag("A").Log(&Log).HandlesPress(true)));
	MoveMouse(FVector2D(10, 10));
	PressMouse(FVector2D(10, 10));
	MoveMouse(FVector2D(500, 500)); // Captured: the release still comes here.
	ReleaseMouse(FVector2D(500, 500));
	EXPECT_EQ(Log, (FTextList{ "A enter", "A press", "A leave", "A release" }));
}

TEST_F(FApplicationTest, TheTopmostWidgetUnderThePointerIsHitAndUnhandledPressesBubble)
{
	// clang-format off
	Show(SNew(SOverlay)
		+ SOverlay::Slot().HAlign(HAlign_Left).VAlign(VAlign_Top)[ SNew(SProbe).Tag("Below").Log(&Log) ]
		+ SOverlay::Slot().HAlign(HAlign_Left).VAlign(VAlign_Top)
			[ SNew(SProbe).Tag("Above").Log(&Log).Visibility(EVisibility::HitTestInvisible) ]);
	// clang-format on
	MoveMouse(FVector2D(10, 10));
	PressMouse(FVector2D(10, 10));
	EXPECT_EQ(Log, (FTextList{ "Below enter", "Below press" }));
}

TEST_F(FApplicationTest, DisabledWidgetsGetNoPress)
{
	Show(InCorner(SNew(SProbe).Tag("A").Log(&Log).IsEnabled(false)));
	ClickAt(FVector2D(10, 10));
	EXPECT_EQ(Log, (FTextList{ "A enter" }));
}

TEST_F(FApplicationTest, SecondQuickPressIsADoubleClickAndAThirdASingleOne)
{
	Show(InCorner(SNew(SProbe).Tag("A").Log(&Log)));
	ClickAt(FVector2D(10, 10), 3);
	EXPECT_EQ(Log, (FTextList{ "A enter", "A press", "A release", "A double", "A release", "A press", "A release" }));
	Log.clear();
	PumpSeconds(1.0);
	ClickAt(FVector2D(10, 10));
	PumpSeconds(0.5);
	ClickAt(FVector2D(10, 10));
	EXPECT_EQ(Log, (FTextList{ "A press", "A release", "A press", "A release" }));
}

TEST_F(FApplicationTest, KeysTunnelThenBubbleAlongTheFocusPath)
{
	const TSharedRef<SProbe> Probe = SNew(SProbe).Tag("A").Log(&Log).Focusable(true);
	Show(InCorner(Probe));
	ClickAt(FVector2D(10, 10));
	Log.clear();
	PressKey("F2");
	EXPECT_EQ(Log, (FTextList{ "A preview F2", "A key F2" }));
	EXPECT_FALSE(Probe->ShouldShowFocusRing()) << "a press shows no ring";
}

TEST_F(FApplicationTest, TabGoesRoundAndShowsTheRing)
{
	TSharedPtr<SWidget> A;
	TSharedPtr<SWidget> C;
	// clang-format off
	Show(SNew(SVerticalBox)
		+ SVerticalBox::Slot().AutoHeight()[ SAssignNew(A, SProbe).Tag("A").Focusable(true) ]
		+ SVerticalBox::Slot().AutoHeight()[ SNew(SProbe).Tag("Hidden").Focusable(true).Visibility(EVisibility::Collapsed) ]
		+ SVerticalBox::Slot().AutoHeight()[ SNew(SProbe).Tag("Off").Focusable(true).IsEnabled(false) ]
		+ SVerticalBox::Slot().AutoHeight()[ SAssignNew(C, SProbe).Tag("C").Focusable(true) ]);
	// clang-format on
	PressKey("Tab");
	EXPECT_TRUE(A->HasKeyboardFocus());
	EXPECT_TRUE(A->ShouldShowFocusRing());
	PressKey("Tab");
	EXPECT_TRUE(C->HasKeyboardFocus());
	PressKey("Tab");
	EXPECT_TRUE(A->HasKeyboardFocus());
	PressKey("SHIFT+Tab");
	EXPECT_TRUE(C->HasKeyboardFocus());
	// A window without the keyboard does not look as if it had it.
	App().GetMessageHandler().OnWindowActivated(false);
	EXPECT_FALSE(C->ShouldShowFocusRing());
	App().GetMessageHandler().OnWindowActivated(true);
	EXPECT_TRUE(C->ShouldShowFocusRing());
}

TEST_F(FApplicationTest, TabGoesToWhatCanBeSeenOrBringsItIntoView)
{
	TSharedPtr<SWidget> A;
	TSharedPtr<SWidget> Far;
	TSharedPtr<SScrollBox> Scroll;
	// clang-format off
	Show(SNew(SVerticalBox)
		+ SVerticalBox::Slot().AutoHeight()[ SAssignNew(A, SProbe).Tag("A").Focusable(true) ]
		+ SVerticalBox::Slot().AutoHeight()
		[
			SNew(SBox).HeightOverride(20.0f).Clipping(EWidgetClipping::ClipToBounds)
			[
				SNew(SVerticalBox)
				+ SVerticalBox::Slot().AutoHeight()[ SNew(SBox).HeightOverride(50.0f) ]
				+ SVerticalBox::Slot().AutoHeight()[ SNew(SProbe).Tag("CutAway").Focusable(true) ]
			]
		]
		// A panel that hands keys on to what is in it.
		+ SVerticalBox::Slot().FillHeight(1.0f)
		[
			SNew(SStopsPanel)
			[
				SAssignNew(Scroll, SScrollBox)
			]
		]);
	// clang-format on
	for (int32 Index = 0; Index < 40; ++Index)
	{
		Scroll->AddSlot()[SAssignNew(Far, SProbe).Tag("Far").Focusable(true)];
	}
	PumpFrame();
	PressKey("Tab");
	EXPECT_TRUE(A->HasKeyboardFocus());
	PressKey("SHIFT+Tab");
	EXPECT_TRUE(Far->HasKeyboardFocus()) << Utf8(App().GetKeyboardFocusedWidget()->GetTag().ToString());
	PumpSeconds(0.1);
	const FSlateRect View = GetRect(*Scroll);
	EXPECT_LE(GetRect(*Far).Bottom, View.Bottom + 1.0f) << "it was scrolled into view";
	EXPECT_GE(GetRect(*Far).Top, View.Top) << "what is out of view is not arranged, and stands nowhere";
	PressKey("Tab");
	EXPECT_TRUE(A->HasKeyboardFocus());
	PressKey("Tab");
	EXPECT_EQ(Utf8(App().GetKeyboardFocusedWidget()->GetTag().ToString()), "Far") << "neither what is cut away nor the panel";
}

TEST_F(FApplicationTest, AHandlerMayRemoveItsOwnWidget)
{
	class SSelfRemover : public SProbe
	{
	public:
		virtual FReply OnMouseButtonDown(const FGeometry&, const FPointerEvent&) override
		{
			FSlateApplication::Get().SetRootContent(SNew(SBox));
			return FReply::Handled().SetUserFocus(SharedThis(this)).CaptureMouse(SharedThis(this));
		}
	};
	Show(InCorner(SNew(SSelfRemover).Tag("A")));
	ClickAt(FVector2D(10, 10), 2);
	PumpFrame();
	EXPECT_FALSE(App().GetMouseCaptor().IsValid());
}

TEST_F(FApplicationTest, OnlyPaintedWidgetsTick)
{
	const TSharedRef<SProbe> Shown = SNew(SProbe);
	const TSharedRef<SProbe> Hidden = SNew(SProbe).Visibility(EVisibility::Hidden);
	// clang-format off
	Show(SNew(SVerticalBox)
		+ SVerticalBox::Slot().AutoHeight()[ Shown ]
		+ SVerticalBox::Slot().AutoHeight()[ Hidden ]);
	// clang-format on
	const float Before = Shown->TickedSeconds;
	PumpFrame(0.125);
	EXPECT_FLOAT_EQ(Shown->TickedSeconds - Before, 0.125f);
	PumpFrame(5.0);
	EXPECT_FLOAT_EQ(Shown->TickedSeconds - Before, 0.375f) << "a long pause counts as a quarter of a second";
	EXPECT_EQ(Hidden->TickedSeconds, 0.0f);
}

TEST_F(FApplicationTest, AnIdleFrameMeasuresAndPaintsNothing)
{
	Show(SNew(SBorder).BorderImage(FAppStyle::GetBrush("ToolPanel.GroupBorder"))[SNew(SBox).WidthOverride(100.0f)]);
	PumpSeconds(1.0);
	const uint64 Measured = SWidget::GetCounters().Measured;
	const uint64 PaintedFrames = App().GetFrameStats().PaintedFrames;
	PumpSeconds(1.0);
	EXPECT_EQ(SWidget::GetCounters().Measured, Measured);
	EXPECT_EQ(App().GetFrameStats().PaintedFrames, PaintedFrames);
}

TEST_F(FApplicationTest, OnlyWhatChangedIsPaintedAgain)
{
	const FSlateColorBrush White(FLinearColor::White);
	FLinearColor Color = FLinearColor::Red;
	// clang-format off
	Show(InCorner(SNew(SImage)
		.Image(&White)
		.DesiredSizeOverride(FVector2D(20.0, 10.0))
		.ColorAndOpacity_Lambda([&Color]() { return FSlateColor(Color); })));
	// clang-format on
	EXPECT_EQ(App().GetWindow().GetPixel(5, 5), FColor(255, 0, 0));
	Color = FLinearColor::Green;
	PumpFrame();
	EXPECT_EQ(App().GetWindow().GetPixel(5, 5), FColor(0, 255, 0));
	EXPECT_LE(App().GetFrameStats().LastPaintedPixels, 22.0 * 12.0);
}

TEST_F(FApplicationTest, ATextThatAppearsWhileTickingIsMeasuredInTheSameFrame)
{
	const TSharedRef<SGrower> Grower = SNew(SGrower);
	Show(InCorner(Grower));
	Grower->bGrow = true;
	PumpFrame();
	EXPECT_EQ(GetRect(*Grower), FSlateRect(0.0f, 0.0f, 70.0f, 30.0f));
}

TEST_F(FApplicationTest, APressOutsideClosesAPopupAndAPressOnItsOwnerOnlyCloses)
{
	const TSharedRef<SProbe> Owner = SNew(SProbe).Tag("Owner").Log(&Log);
	Show(InCorner(Owner));
	TSharedRef<IMenu> Menu = Open(Owner, SNew(SBox).WidthOverride(200.0f).HeightOverride(60.0f));
	PumpFrame();
	Log.clear();
	ClickAt(FVector2D(50, 60));
	EXPECT_TRUE(Menu->IsOpen()) << "a press inside leaves it open";
	ClickAt(FVector2D(50, 20));
	EXPECT_FALSE(Menu->IsOpen());
	EXPECT_EQ(Log, (FTextList{ "Owner enter", "Owner release" })) << "the owner does not see the press that closed its popup";
	Menu = Open(Owner, SNew(SBox));
	PumpFrame();
	PressKey("Escape");
	EXPECT_FALSE(Menu->IsOpen());
}

TEST_F(FApplicationTest, APopupClosesWhenItsOwnerIsHidden)
{
	const TSharedRef<SProbe> Owner = SNew(SProbe);
	Show(InCorner(Owner));
	const TSharedRef<IMenu> Menu = Open(Owner, SNew(SBox));
	PumpFrame();
	Owner->SetVisibility(EVisibility::Collapsed);
	PumpFrame();
	EXPECT_FALSE(Menu->IsOpen());
}

TEST_F(FApplicationTest, TooltipsComeAfterARestAndGoWithAKey)
{
	Show(InCorner(SNew(SProbe).ToolTipText(FText::FromString(TEXT("Helpful")))));
	MoveMouse(FVector2D(10, 10));
	PumpSeconds(0.3);
	EXPECT_EQ(VisibleTexts(), FTextList());
	PumpSeconds(0.3);
	EXPECT_EQ(VisibleTexts(), FTextList{ "Helpful" });
	EXPECT_GE(GetRect(*FindByText("Helpful")).Top, 50.0f) << "it does not cover what it explains";
	PressKey("A");
	EXPECT_EQ(VisibleTexts(), FTextList());
	PumpSeconds(1.0);
	EXPECT_EQ(VisibleTexts(), FTextList()) << "it stays away until the pointer moves";
}

TEST_F(FApplicationTest, AModalWindowCutsOffWhatLiesBelowAndReturnsWhenClosed)
{
	Show(InCorner(SNew(SProbe).Tag("Below").Log(&Log)));
	const TSharedRef<SWindow> Window = SNew(SWindow).Title(FText::FromString(TEXT("Question"))).ClientSize(FVector2D(300, 100))[SNew(SBox)];
	ShowModal(Window,
		[this](int32 Frame)
		{
			if (Frame == 3)
			{
				App().GetMessageHandler().OnMouseDown(EKeys::LeftMouseButton, FVector2D(10, 10), FModifierKeysState());
				App().GetMessageHandler().OnMouseUp(EKeys::LeftMouseButton, FVector2D(10, 10), FModifierKeysState());
			}
			if (Frame == 5)
			{
				EXPECT_EQ(Log, FTextList());
				App().GetMessageHandler().OnKeyDown(EKeys::Escape, FModifierKeysState(), false);
			}
		});
	PumpFrame();
	ClickAt(FVector2D(10, 10));
	EXPECT_EQ(Log.size(), 3u);
}

TEST_F(FApplicationTest, WhatAModalWindowCoversGetsNoKeys)
{
	const TSharedRef<SProbe> Below = SNew(SProbe).Tag("Below").Focusable(true).Log(&Log);
	Show(InCorner(Below));
	App().SetKeyboardFocus(Below, EFocusCause::SetDirectly);
	Log.clear();
	ShowModal(SNew(SWindow).ClientSize(FVector2D(300, 100))[SNew(SBox)],
		[&Below](int32 Frame)
		{
			if (Frame == 3)
			{
				EXPECT_FALSE(App().SetKeyboardFocus(Below, EFocusCause::SetDirectly));
			}
			// From the first frame on, before the window was laid out.
			App().GetMessageHandler().OnKeyDown(Frame < 5 ? EKeys::A : EKeys::Escape, FModifierKeysState(), false);
		});
	EXPECT_EQ(Log, (FTextList{ "Below blur", "Below focus" })) << "it comes back when the window is gone";
	PressKey("B");
	EXPECT_EQ(Log.back(), "Below key B");
}

TEST_F(FApplicationTest, WhatHasLeftTheWindowGetsNoKeysAndKeepsNoPopup)
{
	const TSharedRef<SProbe> Gone = SNew(SProbe).Focusable(true).Log(&Log);
	Show(InCorner(Gone));
	App().SetKeyboardFocus(Gone, EFocusCause::SetDirectly);
	const TSharedRef<IMenu> Menu = Open(Gone, SNew(SBox));
	PumpFrame();
	EXPECT_TRUE(Menu->IsOpen());
	Log.clear();
	Show(InCorner(SNew(SBox)));
	PressKey("A");
	EXPECT_EQ(Log, FTextList());
	EXPECT_FALSE(Menu->IsOpen());
}

TEST_F(FApplicationTest, AWindowOfOnePixelStaysAlive)
{
	FString Pasted = FString::ChrN(3000, TEXT('x'));
	Pasted.AppendChar(TCHAR(0));
	Pasted.AppendChar(TCHAR(0xD800));
	Pasted += TEXT("\ny\n");
	const TSharedRef<SMultiLineEditableTextBox> Box = SNew(SMultiLineEditableTextBox).AutoWrapText(true);
	TArray<TSharedPtr<int32>> Options;
	for (int32 Index = 0; Index < 30; ++Index)
	{
		Options.Add(MakeShared<int32>(Index));
	}
	const auto MakeOption = [](TSharedPtr<int32> Option) -> TSharedRef<SWidget> { return SNew(STextBlock).Text(FText::AsNumber(*Option)); };
	const TSharedRef<SComboBox<TSharedPtr<int32>>> Combo =
		SNew(SComboBox<TSharedPtr<int32>>).OptionsSource(&Options).OnGenerateWidget_Lambda(MakeOption)[SNew(SBox)];
	// clang-format off
	Show(SNew(SVerticalBox)
		+ SVerticalBox::Slot().FillHeight(1.0f)[ Box ]
		+ SVerticalBox::Slot().AutoHeight()[ Combo ]
		+ SVerticalBox::Slot().AutoHeight()[ SNew(STextBlock).Text(FText::FromString(Pasted)).AutoWrapText(true) ]);
	// clang-format on
	App().SetKeyboardFocus(Box, EFocusCause::SetDirectly);
	Combo->SetIsOpen(true);
	PumpFrame();
	for (const int32 Side : { 1, 3, 1, 600 })
	{
		Resize(Side, Side);
		PumpFrame();
		Box->InsertTextAtCursor(Pasted);
		PressKey("PageUp");
		PressKey("CTRL+Home");
		PressKey("SHIFT+CTRL+End");
		ClickAt(FVector2D(0, 0), 2);
		Combo->SetIsOpen(true);
		PressKey("Down");
		PumpFrame();
	}
	EXPECT_EQ(Box->GetText().ToString().Len(), 4 * Pasted.Len());
}

TEST_F(FApplicationTest, ClosingAPopupMayRunFrames)
{
	const TSharedRef<SProbe> Owner = SNew(SProbe);
	Show(InCorner(Owner));
	const TSharedRef<IMenu> First = Open(Owner, SNew(SBox).WidthOverride(20.0f).HeightOverride(20.0f));
	const TSharedRef<IMenu> Second = Open(Owner, SNew(SBox).WidthOverride(20.0f).HeightOverride(20.0f));
	PumpFrame();
	Second->GetOnMenuDismissed().AddLambda(
		[](TSharedRef<IMenu>)
		{
			App().DismissAllMenus();
			App().Tick();
		});
	ClickAt(FVector2D(400, 300));
	EXPECT_FALSE(First->IsOpen() || Second->IsOpen());
}

TEST(PopupPlacement, StaysInTheWindow)
{
	const std::tuple<const char*, FSlateRect, EMenuPlacement, FSlateRect> Cases[] = {
		{ "below, level with the left edge", FSlateRect(10, 10, 60, 30), MenuPlacement_BelowAnchor, FSlateRect(10, 32, 110, 72) },
		{ "above when there is no room below", FSlateRect(10, 180, 60, 198), MenuPlacement_BelowAnchor, FSlateRect(10, 138, 110, 178) },
		{ "below when there is no room above", FSlateRect(10, 10, 60, 30), MenuPlacement_AboveAnchor, FSlateRect(10, 32, 110, 72) },
		{ "moved in from the right", FSlateRect(180, 10, 199, 30), MenuPlacement_BelowAnchor, FSlateRect(100, 32, 200, 72) },
		{ "a submenu opens beside its row", FSlateRect(10, 50, 60, 76), MenuPlacement_MenuRight, FSlateRect(62, 50, 162, 90) },
		{ "a submenu turns to the left at the edge", FSlateRect(120, 50, 190, 76), MenuPlacement_MenuRight, FSlateRect(18, 50, 118, 90) },
		{ "a submenu without room beside its row leaves it free", FSlateRect(60, 50, 150, 76), MenuPlacement_MenuRight,
			FSlateRect(100, 78, 200, 118) },
		{ "and at the bottom too", FSlateRect(60, 150, 150, 176), MenuPlacement_MenuRight, FSlateRect(100, 108, 200, 148) },
	};
	for (const auto& [Why, Anchor, Placement, Expected] : Cases)
	{
		EXPECT_EQ(FPopup::PlacePopup(Anchor, FVector2D(100, 40), Placement, FVector2D(200, 200)), Expected) << Why;
	}
}

TEST(FrameDamage, CoversWhatCameWentOrChanged)
{
	const auto Make = [](std::initializer_list<FSlateRect> Rects)
	{
		FSlateWindowElementList List(FVector2D(200, 200), 1.0f);
		for (const FSlateRect& Rect : Rects)
		{
			List.AddBox(Rect, FColor(255, 255, 255));
		}
		return List.GetElements();
	};
	const FSlateRect A(10, 10, 20, 20);
	const FSlateRect B(50, 50, 60, 60);
	const FSlateRect C(100, 100, 110, 110);
	EXPECT_TRUE(FFrameRunner::GetDamage(Make({ A, B }), Make({ A, B })).IsEmpty());
	EXPECT_EQ(FFrameRunner::GetDamage(Make({ A, B }), Make({ A, C })), FSlateRect(49, 49, 111, 111)) << "both places";
	EXPECT_EQ(FFrameRunner::GetDamage(Make({ A, B, C }), Make({ A, C })), B.ExtendBy(1.0f)) << "only what went";
	EXPECT_EQ(FFrameRunner::GetDamage(Make({ A, C }), Make({ A, B, C })), B.ExtendBy(1.0f)) << "only what came";
}
