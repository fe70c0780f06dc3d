#include "Widgets/Layout/SSplitter.h"

#include "Support/UiDriver.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SSpacer.h"

#include <cmath>

namespace
{
	struct FSlotCase
	{
		float Value = 1.0f;
		float MinSize = 0.0f;
		EVisibility Visibility = EVisibility::Visible;
		/** Desired length of a slot by content, zero for one that shares. */
		float Content = 0.0f;
		bool bResizable = true;
	};

	TSharedRef<SSplitter> MakeSplitter(const std::vector<FSlotCase>& Slots, EOrientation Orientation = Orient_Horizontal)
	{
		const TSharedRef<SSplitter> Splitter = SNew(SSplitter).Orientation(Orientation);
		for (const FSlotCase& Slot : Slots)
		{
			// clang-format off
			Splitter->AddSlot()
				.Value(Slot.Value)
				.MinSize(Slot.MinSize)
				.Resizable(Slot.bResizable)
				.SizeRule(Slot.Content > 0.0f ? SSplitter::SizeToContent : SSplitter::FractionOfParent)
				[
					SNew(SSpacer).Size(FVector2D(FMath::Max(Slot.Content, 10.0f), 20.0)).Visibility(Slot.Visibility)
				];
			// clang-format on
		}
		return Splitter;
	}
}

class FSplitterTest : public FWidgetTest
{
protected:
	/** "start+size" of each child on screen, along the splitter. */
	std::string Places(SSplitter& Splitter)
	{
		FArrangedChildren Arranged(EVisibility::Visible);
		Splitter.ArrangeChildren(Splitter.GetCachedGeometry(), Arranged);
		const bool bRow = Splitter.GetOrientation() == Orient_Horizontal;
		std::string Text;
		for (int32 Index = 0; Index < Arranged.Num(); ++Index)
		{
			const FSlateRect Rect = Arranged[Index].Geometry.GetLayoutBoundingRect();
			const long Start = std::lround(bRow ? Rect.Left : Rect.Top);
			const long Size = std::lround(bRow ? Rect.Right - Rect.Left : Rect.Bottom - Rect.Top);
			Text += (Index > 0 ? " " : "") + std::to_string(Start) + "+" + std::to_string(Size);
		}
		return Text;
	}

	void ShowIn(const TSharedRef<SSplitter>& Splitter, float Width, float Height)
	{
		Show(SNew(SBox).HAlign(HAlign_Left).VAlign(VAlign_Top)[SNew(SBox).WidthOverride(Width).HeightOverride(Height)[Splitter]]);
	}

	void Drag(const FVector2D& From, const FVector2D& To)
	{
		MoveMouse(From);
		PressMouse(From);
		MoveMouse(To);
		ReleaseMouse(To);
	}
};

TEST_F(FSplitterTest, SlotsShareByValueWithinTheirMinimum)
{
	struct FCase
	{
		const char* Why;
		std::vector<FSlotCase> Slots;
		float Length;
		const char* Places;
	};
	const FSlotCase Chat{ 0.7f, 200.0f };
	const FSlotCase Panel{ 0.3f, 200.0f };
	const FSlotCase Gone{ 0.3f, 200.0f, EVisibility::Collapsed };
	const FSlotCase Hidden{ 0.3f, 200.0f, EVisibility::Hidden };
	const std::vector<FCase> Cases = {
		{ "by value", { Chat, Panel }, 1004, "0+700 704+300" },
		{ "any sum of values", { { 7 }, { 3 } }, 1004, "0+700 704+300" },
		{ "a collapsed slot leaves no handle", { Chat, Gone }, 1000, "0+1000" },
		{ "a collapsed slot in the middle leaves one", { { 1 }, Gone, { 1 } }, 204, "0+100 104+100" },
		{ "a hidden one keeps its room", { Chat, Hidden }, 1004, "0+700" },
		{ "the minimum holds", { Chat, Panel }, 504, "0+300 304+200" },
		{ "too narrow for both minimums", { Chat, Panel }, 304, "0+150 154+150" },
		{ "narrower than the handle", { Chat, Panel }, 2, "0+0 4+0" },
		{ "the rest is shared anew", { { 8 }, { 1, 100 }, { 1, 300 } }, 808, "0+400 404+100 508+300" },
		{ "by content", { { 1, 0, EVisibility::Visible, 120 }, { 1 } }, 504, "0+120 124+380" },
		{ "no value at all", { { 0 }, { 0, 50 } }, 204, "0+0 4+50" },
		{ "one slot", { { 0.2f } }, 300, "0+300" },
		{ "on whole pixels", { { 1 }, { 1 } }, 105, "0+51 55+50" },
	};
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE(Case.Why);
		const TSharedRef<SSplitter> Row = MakeSplitter(Case.Slots);
		ShowIn(Row, Case.Length, 50.0f);
		EXPECT_EQ(Places(*Row), Case.Places);
		if (Case.Slots[0].Content == 0.0f && Case.Length <= 800.0f)
		{
			const TSharedRef<SSplitter> Column = MakeSplitter(Case.Slots, Orient_Vertical);
			ShowIn(Column, 50.0f, Case.Length);
			EXPECT_EQ(Places(*Column), Case.Places) << "as a column";
		}
	}
}

TEST_F(FSplitterTest, TheHandleIsDraggedWithinTheMinimums)
{
	const TSharedRef<SSplitter> Splitter = MakeSplitter({ { 0.7f, 200.0f }, { 0.3f, 200.0f } });
	ShowIn(Splitter, 1004.0f, 100.0f);
	Drag(FVector2D(702, 50), FVector2D(602, 50));
	EXPECT_EQ(Places(*Splitter), "0+600 604+400");
	Drag(FVector2D(601, 50), FVector2D(5000, 50));
	EXPECT_EQ(Places(*Splitter), "0+800 804+200");
	Drag(FVector2D(803, 50), FVector2D(-5000, 50));
	EXPECT_EQ(Places(*Splitter), "0+200 204+800");
	// What was dragged stays in proportion.
	ShowIn(Splitter, 1254.0f, 100.0f);
	EXPECT_EQ(Places(*Splitter), "0+250 254+1000");
	// Beside the handle, or with another button, nothing moves.
	Drag(FVector2D(248, 50), FVector2D(600, 50));
	PressMouse(FVector2D(252, 50), EKeys::RightMouseButton);
	MoveMouse(FVector2D(600, 50));
	ReleaseMouse(FVector2D(600, 50), EKeys::RightMouseButton);
	EXPECT_EQ(Places(*Splitter), "0+250 254+1000");
}

TEST_F(FSplitterTest, ADragMovesItsOwnTwoSlotsOnly)
{
	// The third slot is held by its minimum.
	const TSharedRef<SSplitter> Splitter = MakeSplitter({ { 8 }, { 1, 100 }, { 1, 300 } });
	ShowIn(Splitter, 808.0f, 100.0f);
	Drag(FVector2D(402, 50), FVector2D(302, 50));
	EXPECT_EQ(Places(*Splitter), "0+300 304+200 508+300");
	const TSharedRef<SSplitter> Content = MakeSplitter({ { 1 }, { 1, 0, EVisibility::Visible, 100 }, { 1 } });
	ShowIn(Content, 508.0f, 100.0f);
	EXPECT_EQ(Places(*Content), "0+200 204+100 308+200");
	Drag(FVector2D(306, 50), FVector2D(356, 50));
	EXPECT_EQ(Places(*Content), "0+250 254+100 358+150") << "the nearest slots that share";
}

TEST_F(FSplitterTest, PointerAndHandleTellWhatCanBeDragged)
{
	const TSharedRef<SSplitter> Splitter = MakeSplitter({ { 0.7f }, { 0.3f } });
	ShowIn(Splitter, 1004.0f, 100.0f);
	const auto GetCursor = [this](const TSharedRef<SSplitter>& Asked, const FVector2D& Position)
	{
		const FPointerEvent Event(Position, Position, FKey(), FVector2D(0, 0), FModifierKeysState());
		const FCursorReply Reply = Asked->OnCursorQuery(Asked->GetCachedGeometry(), Event);
		return Reply.IsEventHandled() ? Reply.GetCursorType() : EMouseCursor::Default;
	};
	EXPECT_EQ(GetCursor(Splitter, FVector2D(702, 50)), EMouseCursor::ResizeLeftRight);
	EXPECT_EQ(GetCursor(Splitter, FVector2D(698, 50)), EMouseCursor::Default);
	const auto GetLine = [](int32 X) { return App().GetWindow().GetPixel(X, 50); };
	const FColor Rest = GetLine(702);
	MoveMouse(FVector2D(702, 50));
	const FColor Hovered = GetLine(702);
	PressMouse(FVector2D(702, 50));
	const FColor Held = GetLine(702);
	EXPECT_EQ(Held, FColor(0x7C, 0xB9, 0xFF));
	EXPECT_GT(Held.B, Hovered.B);
	EXPECT_GT(Hovered.B, Rest.B);
	MoveMouse(FVector2D(100, 50));
	EXPECT_EQ(GetCursor(Splitter, FVector2D(100, 50)), EMouseCursor::ResizeLeftRight) << "while it is held";
	ReleaseMouse(FVector2D(100, 50));
	MoveMouse(FVector2D(50, 50));
	EXPECT_EQ(GetLine(102), Rest);

	const TSharedRef<SSplitter> Column = MakeSplitter({ { 1 }, { 1 } }, Orient_Vertical);
	ShowIn(Column, 100.0f, 204.0f);
	EXPECT_EQ(GetCursor(Column, FVector2D(50, 102)), EMouseCursor::ResizeUpDown);
	const TSharedRef<SSplitter> Fixed = MakeSplitter({ { 1, 0, EVisibility::Visible, 0, false }, { 1 } });
	ShowIn(Fixed, 204.0f, 100.0f);
	EXPECT_EQ(GetCursor(Fixed, FVector2D(102, 50)), EMouseCursor::Default) << "a slot that is not resizable";
	Drag(FVector2D(102, 50), FVector2D(150, 50));
	EXPECT_EQ(Places(*Fixed), "0+100 104+100");
}

TEST_F(FSplitterTest, TheNeighbourMayGoWhileTheHandleIsHeld)
{
	int32 Finished = 0;
	bool bShown = true;
	// clang-format off
	const TSharedRef<SSplitter> Splitter = SNew(SSplitter)
		.OnSplitterFinishedResizing_Lambda([&Finished]() { ++Finished; })
		+ SSplitter::Slot()
		[
			SNew(SSpacer)
		]
		+ SSplitter::Slot()
		[
			SNew(SSpacer).Visibility_Lambda([&bShown]() { return bShown ? EVisibility::Visible : EVisibility::Collapsed; })
		];
	// clang-format on
	ShowIn(Splitter, 204.0f, 100.0f);
	Drag(FVector2D(102, 50), FVector2D(152, 50));
	EXPECT_EQ(Places(*Splitter), "0+150 154+50");
	EXPECT_EQ(Finished, 1);

	// The neighbour goes while the handle is held.
	PressMouse(FVector2D(152, 50));
	bShown = false;
	PumpFrame();
	MoveMouse(FVector2D(20, 50));
	ReleaseMouse(FVector2D(20, 50));
	EXPECT_EQ(Places(*Splitter), "0+204");
	bShown = true;
	PumpFrame();
	EXPECT_EQ(Places(*Splitter), "0+150 154+50");
	EXPECT_EQ(Finished, 2);
}
