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
	: Window(InWindow)
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

FRecordWords FRecordedWindow::Event(ERecordKind Kind) const
{
	return MoveTemp(FRecordWords(Kind).Flag(bPumps));
}

void FRecordedWindow::Enter(FRecordWords&& Words, TFunctionRef<void(IHostMessageHandler&)> HandOn)
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
		Writer->Add(MoveTemp(Words));
	}
	++Depth;
	HandOn(FHostInputTap::GetApplication());
	--Depth;
}

void FRecordedWindow::OnKeyDown(const FKey& Key, const FModifierKeysState& Modifiers, bool bRepeat)
{
	const FKey Noted = Writer->Masks() ? FRecordMask::MaskKey(Key, Modifiers) : Key;
	Enter(MoveTemp(Event(ERecordKind::Down).Word(Noted.ToString()).Number(PackModifiers(Modifiers)).Flag(bRepeat)),
		[&](IHostMessageHandler& Next) { Next.OnKeyDown(Key, Modifiers, bRepeat); });
}

void FRecordedWindow::OnKeyUp(const FKey& Key, const FModifierKeysState& Modifiers)
{
	const FKey Noted = Writer->Masks() ? FRecordMask::MaskKey(Key, Modifiers) : Key;
	Enter(MoveTemp(Event(ERecordKind::Up).Word(Noted.ToString()).Number(PackModifiers(Modifiers))),
		[&](IHostMessageHandler& Next) { Next.OnKeyUp(Key, Modifiers); });
}

void FRecordedWindow::OnTextInput(FStringView Text)
{
	Enter(MoveTemp(Event(ERecordKind::Text).Text(Writer->Veil(Text))), [&](IHostMessageHandler& Next) { Next.OnTextInput(Text); });
}

void FRecordedWindow::OnPreedit(FStringView Text, int32 Cursor)
{
	Enter(MoveTemp(Event(ERecordKind::Preedit).Text(Writer->Veil(Text)).Number(Cursor)),
		[&](IHostMessageHandler& Next) { Next.OnPreedit(Text, Cursor); });
}

void FRecordedWindow::OnMouseMove(const FVector2D& Position, const FModifierKeysState& Modifiers)
{
	Enter(MoveTemp(Event(ERecordKind::Move).Real(Position.X).Real(Position.Y).Number(PackModifiers(Modifiers))),
		[&](IHostMessageHandler& Next) { Next.OnMouseMove(Position, Modifiers); });
}

void FRecordedWindow::OnMouseDown(const FKey& Button, const FVector2D& Position, const FModifierKeysState& Modifiers)
{
	Enter(MoveTemp(Event(ERecordKind::Press).Word(Button.ToString()).Real(Position.X).Real(Position.Y).Number(PackModifiers(Modifiers))),
		[&](IHostMessageHandler& Next) { Next.OnMouseDown(Button, Position, Modifiers); });
}

void FRecordedWindow::OnMouseUp(const FKey& Button, const FVector2D& Position, const FModifierKeysState& Modifiers)
{
	Enter(MoveTemp(Event(ERecordKind::Release).Word(Button.ToString()).Real(Position.X).Real(Position.Y).Number(PackModifiers(Modifiers))),
		[&](IHostMessageHandler& Next) { Next.OnMouseUp(Button, Position, Modifiers); });
}

void FRecordedWindow::OnMouseWheel(const FVector2D& Delta, const FVector2D& Position, const FModifierKeysState& Modifiers)
{
	Enter(
		MoveTemp(Event(ERecordKind::Wheel).Real(Delta.X).Real(Delta.Y).Real(Position.X).Real(Position.Y).Number(PackModifiers(Modifiers))),
		[&](IHostMessageHandler& Next) { Next.OnMouseWheel(Delta, Position, Modifiers); });
}

void FRecordedWindow::OnMouseLeave()
{
	Enter(Event(ERecordKind::Leave), [](IHostMessageHandler& Next) { Next.OnMouseLeave(); });
}

void FRecordedWindow::OnWindowResized()
{
	Enter(Event(ERecordKind::Resized), [](IHostMessageHandler& Next) { Next.OnWindowResized(); });
}

void FRecordedWindow::OnWindowActivated(bool bActive)
{
	Enter(MoveTemp(Event(ERecordKind::Active).Flag(bActive)), [&](IHostMessageHandler& Next) { Next.OnWindowActivated(bActive); });
}

void FRecordedWindow::OnWindowExposed()
{
	Enter(Event(ERecordKind::Exposed), [](IHostMessageHandler& Next) { Next.OnWindowExposed(); });
}

void FRecordedWindow::OnCloseRequested()
{
	Enter(Event(ERecordKind::Close), [](IHostMessageHandler& Next) { Next.OnCloseRequested(); });
}
