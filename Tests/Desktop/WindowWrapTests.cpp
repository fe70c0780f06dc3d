#include "Host/Platform.h"
#include "InputGate.h"
#include "RecordedWindow.h"
#include "ReplayWindow.h"
#include "Support/Base/Printers.h"
#include "WindowContrast.h"
#include "WindowZoom.h"

#include <gtest/gtest.h>

// What stands around the platform's window and its way in: all that is not its own goes through as it came.

namespace
{
	/** A window in memory that stands somewhere on a screen. */
	class FPlacedWindow : public FForwardingWindow
	{
	public:
		FPlacedWindow()
			: FForwardingWindow(FHostPlatform::CreateHeadlessWindow(FIntPoint(40, 30), 1.5f))
		{
		}
		virtual FIntPoint GetScreenPosition() const override { return FIntPoint(300, 200); }
	};

	class FCollectingGate : public FInputGate
	{
	public:
		TArray<FHostInput> Inputs;

	protected:
		virtual void Enter(const FHostInput& Input) override { Inputs.Add(Input); }
	};
}

TEST(WindowWraps, SayWhereTheWindowIs)
{
	const TSharedRef<IHostWindow> Placed = MakeShared<FPlacedWindow>();
	const auto Writer = std::make_shared<FRecordWriter>(false);
	const auto Tape = std::make_shared<FReplayTape>(FRecordReader());
	const std::pair<const char*, TSharedRef<IHostWindow>> Wraps[] = {
		{ "zoom", FWindowZoom::Wrap(Placed) },
		{ "contrast", FWindowContrast::Wrap(Placed) },
		{ "recording", MakeShared<FRecordedWindow>(Placed, Writer) },
		{ "replay", MakeShared<FReplayWindow>(Placed, FIntPoint(40, 30), 1.5f, Tape) },
	};
	for (const auto& [Name, Window] : Wraps)
	{
		EXPECT_EQ(Window->GetScreenPosition(), FIntPoint(300, 200)) << Name;
		EXPECT_EQ(Window->GetPixelSize(), FIntPoint(40, 30)) << Name;
		EXPECT_EQ(Window->GetScale(), 1.5f) << Name;
		EXPECT_TRUE(Window->IsHeadless()) << Name;
	}
}

TEST(WindowContrast, WhatIsChosenHasAnOutline)
{
	/** Keeps what it is given to paint. */
	class FPaintedWindow : public FPlacedWindow
	{
	public:
		virtual void PaintAndPresent(const FSlateWindowElementList& Elements, const FSlateRect& Damage) override
		{
			Painted = Elements.GetElements();
		}
		TArray<FSlateDrawElement> Painted;
	};
	const TSharedRef<FPaintedWindow> Window = MakeShared<FPaintedWindow>();
	FSlateWindowElementList Elements(FVector2D(40.0, 30.0), 1.5f);
	const FColor None(0, 0, 0, 0);
	// The veils of what is chosen, and of what the pointer is on.
	for (const FColor& Veil : { FColor(0x7C, 0xB9, 0xFF, 0x3D), FColor(0xFF, 0xFF, 0xFF, 0x14) })
	{
		Elements.AddRoundedBox(FSlateRect(0.0f, 0.0f, 100.0f, 20.0f), FVector4f(4.0f, 4.0f, 4.0f, 4.0f), Veil, None, 0.0f);
	}
	FWindowContrast::SetHigh(true);
	FWindowContrast::Wrap(Window)->PaintAndPresent(Elements, FSlateRect());
	FWindowContrast::SetHigh(false);
	ASSERT_EQ(Window->Painted.Num(), 2);
	EXPECT_GE(FWindowContrast::GetLuminance(Window->Painted[0].OutlineColor), 0.3);
	EXPECT_EQ(Window->Painted[0].OutlineWidth, 2.0f) << "a pixel and a half has no sharp edge";
	EXPECT_EQ(Window->Painted[1].OutlineColor.A, 0);
}

TEST(InputGate, WhatComesInGoesOnAsItCame)
{
	const FModifierKeysState Shift(true, false, false, false, false, false);
	FCollectingGate First;
	First.OnKeyDown(EKeys::A, Shift, true);
	First.OnKeyUp(EKeys::B, Shift);
	First.OnTextInput(TEXT("text"));
	First.OnPreedit(TEXT("pre"), 2);
	First.OnMouseMove(FVector2D(1.0, 2.0), Shift);
	First.OnMouseDown(EKeys::LeftMouseButton, FVector2D(3.0, 4.0), Shift);
	First.OnMouseUp(EKeys::RightMouseButton, FVector2D(5.0, 6.0), Shift);
	First.OnMouseWheel(FVector2D(0.0, -1.0), FVector2D(7.0, 8.0), Shift);
	First.OnMouseLeave();
	First.OnWindowResized();
	First.OnWindowActivated(true);
	First.OnWindowExposed();
	First.OnCloseRequested();
	FCollectingGate Second;
	for (const FHostInput& Input : First.Inputs)
	{
		Input.Give(Second);
	}
	ASSERT_EQ(Second.Inputs.Num(), 13);
	for (int32 Index = 0; Index < 13; ++Index)
	{
		SCOPED_TRACE(Index);
		const FHostInput& Came = First.Inputs[Index];
		const FHostInput& Went = Second.Inputs[Index];
		// The kinds stand in the order of the calls above.
		EXPECT_EQ(static_cast<int32>(Went.Kind), static_cast<int32>(ERecordKind::Down) + Index);
		EXPECT_EQ(Went.Key, Came.Key);
		EXPECT_EQ(Went.Modifiers.IsShiftDown(), Came.Modifiers.IsShiftDown());
		EXPECT_EQ(Went.bFlag, Came.bFlag);
		EXPECT_EQ(Utf8(Went.Text), Utf8(Came.Text));
		EXPECT_EQ(Went.Cursor, Came.Cursor);
		EXPECT_EQ(Went.Position, Came.Position);
		EXPECT_EQ(Went.Delta, Came.Delta);
	}
	EXPECT_EQ(Utf8(Second.Inputs[0].Key.ToString()), "A");
	EXPECT_TRUE(Second.Inputs[0].bFlag);
	EXPECT_EQ(Utf8(Second.Inputs[3].Text), "pre");
	EXPECT_EQ(Second.Inputs[7].Delta.Y, -1.0);
}
