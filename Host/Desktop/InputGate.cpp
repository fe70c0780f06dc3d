#include "InputGate.h"

void FHostInput::Give(IHostMessageHandler& To) const
{
	switch (Kind)
	{
	case ERecordKind::Down:
		To.OnKeyDown(Key, Modifiers, bFlag);
		break;
	case ERecordKind::Up:
		To.OnKeyUp(Key, Modifiers);
		break;
	case ERecordKind::Text:
		To.OnTextInput(Text);
		break;
	case ERecordKind::Preedit:
		To.OnPreedit(Text, Cursor);
		break;
	case ERecordKind::Move:
		To.OnMouseMove(Position, Modifiers);
		break;
	case ERecordKind::Press:
		To.OnMouseDown(Key, Position, Modifiers);
		break;
	case ERecordKind::Release:
		To.OnMouseUp(Key, Position, Modifiers);
		break;
	case ERecordKind::Wheel:
		To.OnMouseWheel(Delta, Position, Modifiers);
		break;
	case ERecordKind::Leave:
		To.OnMouseLeave();
		break;
	case ERecordKind::Resized:
		To.OnWindowResized();
		break;
	case ERecordKind::Active:
		To.OnWindowActivated(bFlag);
		break;
	case ERecordKind::Exposed:
		To.OnWindowExposed();
		break;
	default:
		To.OnCloseRequested();
		break;
	}
}

void FInputGate::OnKeyDown(const FKey& Key, const FModifierKeysState& Modifiers, bool bRepeat)
{
	Enter(FHostInput{ .Kind = ERecordKind::Down, .Key = Key, .Modifiers = Modifiers, .bFlag = bRepeat });
}

void FInputGate::OnKeyUp(const FKey& Key, const FModifierKeysState& Modifiers)
{
	Enter(FHostInput{ .Kind = ERecordKind::Up, .Key = Key, .Modifiers = Modifiers });
}

void FInputGate::OnTextInput(FStringView Text)
{
	Enter(FHostInput{ .Kind = ERecordKind::Text, .Text = FString(Text) });
}

void FInputGate::OnPreedit(FStringView Text, int32 Cursor)
{
	Enter(FHostInput{ .Kind = ERecordKind::Preedit, .Text = FString(Text), .Cursor = Cursor });
}

void FInputGate::OnMouseMove(const FVector2D& Position, const FModifierKeysState& Modifiers)
{
	Enter(FHostInput{ .Kind = ERecordKind::Move, .Modifiers = Modifiers, .Position = Position });
}

void FInputGate::OnMouseDown(const FKey& Button, const FVector2D& Position, const FModifierKeysState& Modifiers)
{
	Enter(FHostInput{ .Kind = ERecordKind::Press, .Key = Button, .Modifiers = Modifiers, .Position = Position });
}

void FInputGate::OnMouseUp(const FKey& Button, const FVector2D& Position, const FModifierKeysState& Modifiers)
{
	Enter(FHostInput{ .Kind = ERecordKind::Release, .Key = Button, .Modifiers = Modifiers, .Position = Position });
}

void FInputGate::OnMouseWheel(const FVector2D& Delta, const FVector2D& Position, const FModifierKeysState& Modifiers)
{
	Enter(FHostInput{ .Kind = ERecordKind::Wheel, .Modifiers = Modifiers, .Position = Position, .Delta = Delta });
}

void FInputGate::OnMouseLeave()
{
	Enter(FHostInput{ .Kind = ERecordKind::Leave });
}

void FInputGate::OnWindowResized()
{
	Enter(FHostInput{ .Kind = ERecordKind::Resized });
}

void FInputGate::OnWindowActivated(bool bActive)
{
	Enter(FHostInput{ .Kind = ERecordKind::Active, .bFlag = bActive });
}

void FInputGate::OnWindowExposed()
{
	Enter(FHostInput{ .Kind = ERecordKind::Exposed });
}

void FInputGate::OnCloseRequested()
{
	Enter(FHostInput{ .Kind = ERecordKind::Close });
}
