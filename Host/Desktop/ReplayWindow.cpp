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

	/** Reads it from its line. */
	FHostInput ReadInput(const FRecordLine& Line)
	{
		FHostInput Input;
		Input.Kind = Line.GetKind();
		switch (Input.Kind)
		{
		case ERecordKind::Down:
		case ERecordKind::Up:
			Input.Key = FKey(FName(UTF8_TO_TCHAR(Line.Word(1).c_str())));
			Input.Modifiers = UnpackModifiers(Line.Number(2));
			Input.bFlag = Input.Kind == ERecordKind::Down && Line.Flag(3);
			break;
		case ERecordKind::Press:
		case ERecordKind::Release:
			Input.Key = FKey(FName(UTF8_TO_TCHAR(Line.Word(1).c_str())));
			Input.Position = ReadPair(Line, 2);
			Input.Modifiers = UnpackModifiers(Line.Number(4));
			break;
		case ERecordKind::Move:
			Input.Position = ReadPair(Line, 1);
			Input.Modifiers = UnpackModifiers(Line.Number(3));
			break;
		case ERecordKind::Wheel:
			Input.Delta = ReadPair(Line, 1);
			Input.Position = ReadPair(Line, 3);
			Input.Modifiers = UnpackModifiers(Line.Number(5));
			break;
		case ERecordKind::Text:
			Input.Text = Line.Text(1);
			break;
		case ERecordKind::Preedit:
			Input.Text = Line.Text(1);
			Input.Cursor = static_cast<int32>(FMath::Clamp<int64>(Line.Number(2), 0, Input.Text.Len()));
			break;
		case ERecordKind::Active:
			Input.bFlag = Line.Flag(1);
			break;
		default:
			break;
		}
		return Input;
	}

	/** Of what the platform has, what counts in a replay. */
	class FScreenEvents : public FInputGate
	{
	protected:
		virtual void Enter(const FHostInput& Input) override
		{
			if (Input.Kind == ERecordKind::Exposed || Input.Kind == ERecordKind::Resized)
			{
				FHostInputTap::GetApplication().OnWindowExposed();
				FSlateApplication::Get().RequestFrame();
			}
			else if (Input.Kind == ERecordKind::Close)
			{
				FSlateApplication::Get().RequestExit();
			}
		}
	};
}

FReplayWindow::FReplayWindow(
	const TSharedRef<IHostWindow>& InWindow, const FIntPoint& InSize, float InScale, const std::shared_ptr<FReplayTape>& InTape)
	: FForwardingWindow(InWindow)
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
	const FHostInput Input = ReadInput(Line);
	++Depth;
	Input.Give(FHostInputTap::GetApplication());
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

void FReplayWindow::Enter(const FHostInput& Input)
{
	if (Depth > 0)
	{
		Input.Give(FHostInputTap::GetApplication());
	}
}
