#include "RecordedWindow.h"

#include "Framework/Application/SlateApplication.h"
#include "Host/HostClock.h"
#include "Host/HostInputTap.h"
#include "RecordMask.h"
#include "Rendering/DrawElements.h"

int32 PackModifiers(const FModifierKeysState& Modifiers)
{
	return (Modifiers.IsShiftDown() ? 1 : 0) | (Modifiers.IsControlDown() ? 2 : 0) | (Modifiers.IsAltDown() ? 4 : 0) |
		(Modifiers.IsCommandDown() ? 8 : 0);
}

FModifierKeysState UnpackModifiers(int64 Bits)
{
	return FModifierKeysState((Bits & 1) != 0, false, (Bits & 2) != 0, false, (Bits & 4) != 0, false, (Bits & 8) != 0, false);
}

FRecordedWindow::FRecordedWindow(const TSharedRef<IHostWindow>& InWindow, const std::shared_ptr<FRecordWriter>& InWriter)
	: FForwardingWindow(InWindow)
	, Writer(InWriter)
	, NotedSize(InWindow->GetPixelSize())
	, NotedScale(InWindow->GetScale())
{
}

void FRecordedWindow::NoteSize()
{
	const FIntPoint Size = Window->GetPixelSize();
	const float Scale = Window->GetScale();
	const bool bVisible = Window->IsVisible();
	if (Size.X == NotedSize.X && Size.Y == NotedSize.Y && Scale == NotedScale && bVisible == bNotedVisible)
	{
		return;
	}
	NotedSize = Size;
	NotedScale = Scale;
	bNotedVisible = bVisible;
	Writer->Add(MoveTemp(FRecordWords(ERecordKind::Size).Number(Size.X).Number(Size.Y).Real(static_cast<double>(Scale)).Flag(bVisible)));
}

void FRecordedWindow::NoteFrame()
{
	const uint64 Frames = FSlateApplication::Get().GetFrameStats().FrameCount;
	if (Frames != NotedFrames)
	{
		NotedFrames = Frames;
		Writer->Add(FRecordWords(ERecordKind::Frame));
	}
}

void FRecordedWindow::NoteTurn()
{
	NoteFrame();
	FHostClock::Hold();
	NoteSize();
	NotedTime = FHostClock::GetElapsed();
	Writer->Add(MoveTemp(FRecordWords(ERecordKind::Turn).Real(NotedTime)));
}

void FRecordedWindow::PumpEvents(IHostMessageHandler& Handler, double MaxWaitSeconds)
{
	// A loop of a dialog pumps within the handling of an event: what comes here comes from outside all the same.
	BeginDriver();
	const bool bPumped = bPumps;
	bPumps = true;
	// The wait was reckoned from the time that was held, and work has been done since.
	Window->PumpEvents(Handler, FMath::Max(MaxWaitSeconds - FHostClock::GetSinceHold(), 0.0));
	bPumps = bPumped;
	EndDriver();
	NoteTurn();
}

void FRecordedWindow::BeginDriver()
{
	DepthsOutside.Add(Depth);
	Depth = 0;
}

void FRecordedWindow::EndDriver()
{
	Depth = DepthsOutside.Last();
	DepthsOutside.Pop();
}

void FRecordedWindow::PaintAndPresent(const FSlateWindowElementList& Elements, const FSlateRect& Damage)
{
	// Shows at a replay whether its picture is this one.
	Writer->Add(MoveTemp(FRecordWords(ERecordKind::Paint)
							 .Real(static_cast<double>(Damage.Left))
							 .Real(static_cast<double>(Damage.Top))
							 .Real(static_cast<double>(Damage.Right))
							 .Real(static_cast<double>(Damage.Bottom))
							 .Number(Elements.GetElements().Num())));
	Window->PaintAndPresent(Elements, Damage);
}

FRecordWords FRecordedWindow::MakeLine(const FHostInput& Input) const
{
	FRecordWords Words(Input.Kind);
	Words.Flag(bPumps);
	// Fields stand in the order of the kind's form.
	switch (Input.Kind)
	{
	case ERecordKind::Down:
	case ERecordKind::Up:
		Words.Word((Writer->Masks() ? FRecordMask::MaskKey(Input.Key, Input.Modifiers) : Input.Key).ToString());
		break;
	case ERecordKind::Press:
	case ERecordKind::Release:
		Words.Word(Input.Key.ToString()).Real(Input.Position.X).Real(Input.Position.Y);
		break;
	case ERecordKind::Move:
		Words.Real(Input.Position.X).Real(Input.Position.Y);
		break;
	case ERecordKind::Wheel:
		Words.Real(Input.Delta.X).Real(Input.Delta.Y).Real(Input.Position.X).Real(Input.Position.Y);
		break;
	case ERecordKind::Text:
		Words.Text(Writer->Veil(Input.Text));
		return Words;
	case ERecordKind::Preedit:
		Words.Text(Writer->Veil(Input.Text)).Number(Input.Cursor);
		return Words;
	case ERecordKind::Active:
		Words.Flag(Input.bFlag);
		return Words;
	default:
		return Words;
	}
	Words.Number(PackModifiers(Input.Modifiers));
	if (Input.Kind == ERecordKind::Down)
	{
		Words.Flag(Input.bFlag);
	}
	return Words;
}

void FRecordedWindow::Enter(const FHostInput& Input)
{
	if (Depth == 0)
	{
		// Between two turns time passes: a double click is known by it. A driver's hand moves between turns of its own.
		if (bPumps)
		{
			FHostClock::Hold();
		}
		NoteSize();
		const double Time = FHostClock::GetElapsed();
		if (Time != NotedTime)
		{
			NotedTime = Time;
			Writer->Add(MoveTemp(FRecordWords(ERecordKind::At).Real(Time)));
		}
		Writer->Add(MakeLine(Input));
	}
	++Depth;
	Input.Give(FHostInputTap::GetApplication());
	--Depth;
}
