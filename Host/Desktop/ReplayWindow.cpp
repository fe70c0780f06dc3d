#include "ReplayWindow.h"

#include "Async/Async.h"
#include "Framework/Application/SlateApplication.h"
#include "Host/HostClock.h"
#include "Host/HostInputTap.h"
#include "RecordedWindow.h"
#include "Rendering/DrawElements.h"

#include <algorithm>
#include <thread>

namespace
{
	/** On screen no pause takes longer. */
	constexpr double LongestPause = 2.0;
	constexpr double LookSeconds = 0.01;
	constexpr int64 LargestSide = 16384;

	bool IsEvent(ERecordKind Kind)
	{
		return Kind >= ERecordKind::Down && Kind <= ERecordKind::Close;
	}

	/** A position or notches of a wheel. No hand and no window is as large as what a broken file may say. */
	FVector2D ReadPair(const FRecordLine& Line, int32 First)
	{
		constexpr double Largest = 1e5;
		return FVector2D(FMath::Clamp(Line.Real(First), -Largest, Largest), FMath::Clamp(Line.Real(First + 1), -Largest, Largest));
	}

	/** Of what the platform has, what counts in a replay. */
	class FScreenEvents : public IHostMessageHandler
	{
	public:
		virtual void OnKeyDown(const FKey&, const FModifierKeysState&, bool) override {}
		virtual void OnKeyUp(const FKey&, const FModifierKeysState&) override {}
		virtual void OnTextInput(FStringView) override {}
		virtual void OnPreedit(FStringView, int32) override {}
		virtual void OnMouseMove(const FVector2D&, const FModifierKeysState&) override {}
		virtual void OnMouseDown(const FKey&, const FVector2D&, const FModifierKeysState&) override {}
		virtual void OnMouseUp(const FKey&, const FVector2D&, const FModifierKeysState&) override {}
		virtual void OnMouseWheel(const FVector2D&, const FVector2D&, const FModifierKeysState&) override {}
		virtual void OnMouseLeave() override {}
		virtual void OnWindowResized() override { OnWindowExposed(); }
		virtual void OnWindowActivated(bool) override {}
		virtual void OnWindowExposed() override
		{
			FHostInputTap::GetApplication().OnWindowExposed();
			FSlateApplication::Get().RequestFrame();
		}
		virtual void OnCloseRequested() override { FSlateApplication::Get().RequestExit(); }
	};
}

FReplayWindow::FReplayWindow(
	const TSharedRef<IHostWindow>& InWindow, const FIntPoint& InSize, float InScale, const std::shared_ptr<FReplayTape>& InTape)
	: Window(InWindow)
	, Size(InSize)
	, Scale(InScale)
	, Tape(InTape)
	, ShownAt(FClock::now())
{
}

void FReplayWindow::SetUp(FDo InDo, TFunction<void()> InAtEnd)
{
	Do = MoveTemp(InDo);
	AtEnd = MoveTemp(InAtEnd);
}

void FReplayWindow::TakeSize(const FRecordLine& Line)
{
	Size = FIntPoint(static_cast<int32>(FMath::Clamp<int64>(Line.Number(0), 1, LargestSide)),
		static_cast<int32>(FMath::Clamp<int64>(Line.Number(1), 1, LargestSide)));
	Scale = static_cast<float>(FMath::Clamp(Line.Real(2), 0.1, 16.0));
	bVisible = Line.Flag(3);
	Window->Resize(Size);
}

void FReplayWindow::Dispatch(const FRecordLine& Line)
{
	IHostMessageHandler& Next = FHostInputTap::GetApplication();
	const FKey Key = FKey(FName(UTF8_TO_TCHAR(Line.Word(1).c_str())));
	++Depth;
	switch (Line.GetKind())
	{
	case ERecordKind::Down:
		Next.OnKeyDown(Key, UnpackModifiers(Line.Number(2)), Line.Flag(3));
		break;
	case ERecordKind::Up:
		Next.OnKeyUp(Key, UnpackModifiers(Line.Number(2)));
		break;
	case ERecordKind::Text:
		Next.OnTextInput(Line.Text(1));
		break;
	case ERecordKind::Preedit:
	{
		const FString Text = Line.Text(1);
		Next.OnPreedit(Text, static_cast<int32>(FMath::Clamp<int64>(Line.Number(2), 0, Text.Len())));
		break;
	}
	case ERecordKind::Move:
		Next.OnMouseMove(ReadPair(Line, 1), UnpackModifiers(Line.Number(3)));
		break;
	case ERecordKind::Press:
		Next.OnMouseDown(Key, ReadPair(Line, 2), UnpackModifiers(Line.Number(4)));
		break;
	case ERecordKind::Release:
		Next.OnMouseUp(Key, ReadPair(Line, 2), UnpackModifiers(Line.Number(4)));
		break;
	case ERecordKind::Wheel:
		Next.OnMouseWheel(ReadPair(Line, 1), ReadPair(Line, 3), UnpackModifiers(Line.Number(5)));
		break;
	case ERecordKind::Leave:
		Next.OnMouseLeave();
		break;
	case ERecordKind::Resized:
		Next.OnWindowResized();
		break;
	case ERecordKind::Active:
		Next.OnWindowActivated(Line.Flag(1));
		break;
	case ERecordKind::Exposed:
		Next.OnWindowExposed();
		break;
	default:
		Next.OnCloseRequested();
		break;
	}
	--Depth;
}

bool FReplayWindow::PlayNext()
{
	FRecordReader& Reader = Tape->GetReader();
	if (Tape->DeliverNext())
	{
		return true;
	}
	const FRecordLine* const Head = Reader.Peek();
	if (!Head || Head->GetKind() == ERecordKind::Turn)
	{
		return false;
	}
	if (Head->GetKind() == ERecordKind::Call)
	{
		Tape->PassCall();
		return true;
	}
	const FRecordLine Line = Reader.Take();
	if (IsEvent(Line.GetKind()))
	{
		Dispatch(Line);
		return true;
	}
	switch (Line.GetKind())
	{
	case ERecordKind::At:
		FHostClock::SetElapsed(Line.Real(0));
		break;
	case ERecordKind::Size:
		TakeSize(Line);
		break;
	case ERecordKind::Frame:
	case ERecordKind::Driver:
		break;
	case ERecordKind::Do:
		if (Do)
		{
			Do(Line.Word(0), Line.Text(1));
		}
		break;
	default:
		// Something was painted, or answered, that this run has not asked for.
		if (Line.GetKind() != ERecordKind::Paint || !Tape->TakePassedTurns())
		{
			Tape->NoteDifference();
		}
		break;
	}
	return true;
}

void FReplayWindow::Drive()
{
	if (!Tape->GetReader().HasTurn())
	{
		PlayEnd();
		return;
	}
	FRecordReader& Reader = Tape->GetReader();
	for (;;)
	{
		Tape->Deliver();
		const FRecordLine* const Head = Reader.Peek();
		const bool bIsDriven = Head && (Head->GetKind() == ERecordKind::Do || (IsEvent(Head->GetKind()) && !Head->Flag(0)));
		const bool bIsBorder = Head && (Head->GetKind() == ERecordKind::Frame || Head->GetKind() == ERecordKind::Driver);
		if (!bIsDriven && !bIsBorder)
		{
			return;
		}
		(void)PlayNext();
	}
}

void FReplayWindow::QueueDelivery() const
{
	AsyncTask(ENamedThreads::GameThread,
		[Weak = std::weak_ptr<FReplayTape>(Tape)]
		{
			if (const std::shared_ptr<FReplayTape> Shown = Weak.lock())
			{
				Shown->Deliver();
			}
		});
}

void FReplayWindow::TakeTurn()
{
	const double Seconds = Tape->GetReader().Peek()->Real(0);
	WaitUntil(Seconds);
	Tape->GetReader().Take();
	FHostClock::SetElapsed(Seconds);
	// A frame came for reasons that need not be here, such as a task of the agent.
	if (Tape->GetReader().PreviewTurn().bHasFrame)
	{
		FSlateApplication::Get().RequestFrame();
	}
	const FRecordLine* const Head = Tape->GetReader().Peek();
	if (Head && Head->GetKind() >= ERecordKind::Agent && Head->GetKind() <= ERecordKind::SummaryMessage)
	{
		QueueDelivery();
	}
}

void FReplayWindow::NoteTurn()
{
	while (PlayNext())
	{
	}
	if (Tape->GetReader().HasTurn())
	{
		TakeTurn();
	}
}

void FReplayWindow::PumpEvents(IHostMessageHandler& Handler, double MaxWaitSeconds)
{
	if (Tape->GetReader().HasTurn())
	{
		NoteTurn();
		return;
	}
	PlayEnd();
	if (IsHeadless())
	{
		FSlateApplication::Get().RequestExit();
		return;
	}
	// The last picture stays until the window is closed.
	std::this_thread::sleep_for(std::chrono::duration<double>(FMath::Min(MaxWaitSeconds, LookSeconds)));
	PumpScreen();
}

// What comes behind the last turn was never seen: the program ended while it was at it. The picture is that of before; then the replay
// does the same, and may end the same way.
void FReplayWindow::PlayEnd()
{
	if (bIsOver)
	{
		return;
	}
	bIsOver = true;
	if (AtEnd)
	{
		AtEnd();
	}
	while (PlayNext())
	{
	}
	Tape->Stop();
}

void FReplayWindow::PumpScreen()
{
	FScreenEvents Events;
	Window->PumpEvents(Events, 0.0);
}

void FReplayWindow::WaitUntil(double Seconds)
{
	if (IsHeadless())
	{
		return;
	}
	const double Pause = FMath::Clamp(Seconds - ShownSeconds, 0.0, LongestPause);
	ShownSeconds = Seconds;
	ShownAt += std::chrono::duration_cast<FClock::duration>(std::chrono::duration<double>(Pause));
	// Work that took longer than it did is not made up for by haste.
	ShownAt = std::max(ShownAt, FClock::now() - std::chrono::milliseconds(100));
	while (FClock::now() < ShownAt && !FSlateApplication::Get().IsExitRequested())
	{
		PumpScreen();
		std::this_thread::sleep_for(std::min<FClock::duration>(ShownAt - FClock::now(), std::chrono::milliseconds(10)));
	}
	PumpScreen();
}

void FReplayWindow::PaintAndPresent(const FSlateWindowElementList& Elements, const FSlateRect& Damage)
{
	Tape->TakeAnswers();
	const FRecordLine* const Head = Tape->GetReader().Peek();
	const bool bIsPaint = Head && Head->GetKind() == ERecordKind::Paint;
	const FSlateRect Recorded = bIsPaint ? FSlateRect(static_cast<float>(Head->Real(0)), static_cast<float>(Head->Real(1)),
											   static_cast<float>(Head->Real(2)), static_cast<float>(Head->Real(3)))
										 : FSlateRect();
	const bool bIsSame = bIsPaint && Recorded == Damage && Head->Number(4) == Elements.GetElements().Num();
	if (bIsPaint)
	{
		Tape->GetReader().Take();
	}
	// On screen the platform has things painted again.
	if (!bIsSame && IsHeadless() && !Tape->TakePassedTurns())
	{
		Tape->NoteDifference();
	}
	Window->PaintAndPresent(Elements, Damage);
}

void FReplayWindow::OnKeyDown(const FKey& Key, const FModifierKeysState& Modifiers, bool bRepeat)
{
	if (Depth > 0)
	{
		FHostInputTap::GetApplication().OnKeyDown(Key, Modifiers, bRepeat);
	}
}

void FReplayWindow::OnKeyUp(const FKey& Key, const FModifierKeysState& Modifiers)
{
	if (Depth > 0)
	{
		FHostInputTap::GetApplication().OnKeyUp(Key, Modifiers);
	}
}

void FReplayWindow::OnTextInput(FStringView Text)
{
	if (Depth > 0)
	{
		FHostInputTap::GetApplication().OnTextInput(Text);
	}
}

void FReplayWindow::OnPreedit(FStringView Text, int32 Cursor)
{
	if (Depth > 0)
	{
		FHostInputTap::GetApplication().OnPreedit(Text, Cursor);
	}
}

void FReplayWindow::OnMouseMove(const FVector2D& Position, const FModifierKeysState& Modifiers)
{
	if (Depth > 0)
	{
		FHostInputTap::GetApplication().OnMouseMove(Position, Modifiers);
	}
}

void FReplayWindow::OnMouseDown(const FKey& Button, const FVector2D& Position, const FModifierKeysState& Modifiers)
{
	if (Depth > 0)
	{
		FHostInputTap::GetApplication().OnMouseDown(Button, Position, Modifiers);
	}
}

void FReplayWindow::OnMouseUp(const FKey& Button, const FVector2D& Position, const FModifierKeysState& Modifiers)
{
	if (Depth > 0)
	{
		FHostInputTap::GetApplication().OnMouseUp(Button, Position, Modifiers);
	}
}

void FReplayWindow::OnMouseWheel(const FVector2D& Delta, const FVector2D& Position, const FModifierKeysState& Modifiers)
{
	if (Depth > 0)
	{
		FHostInputTap::GetApplication().OnMouseWheel(Delta, Position, Modifiers);
	}
}

void FReplayWindow::OnMouseLeave()
{
	if (Depth > 0)
	{
		FHostInputTap::GetApplication().OnMouseLeave();
	}
}

void FReplayWindow::OnWindowResized()
{
	if (Depth > 0)
	{
		FHostInputTap::GetApplication().OnWindowResized();
	}
}

void FReplayWindow::OnWindowActivated(bool bActive)
{
	if (Depth > 0)
	{
		FHostInputTap::GetApplication().OnWindowActivated(bActive);
	}
}

void FReplayWindow::OnWindowExposed()
{
	if (Depth > 0)
	{
		FHostInputTap::GetApplication().OnWindowExposed();
	}
}

void FReplayWindow::OnCloseRequested()
{
	if (Depth > 0)
	{
		FHostInputTap::GetApplication().OnCloseRequested();
	}
}
