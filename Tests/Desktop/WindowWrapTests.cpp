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
