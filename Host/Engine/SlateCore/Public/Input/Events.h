#pragma once

#include "CoreMinimal.h"
#include "InputCoreTypes.h"

/** Which modifier keys are down. */
class FModifierKeysState
{
public:
	FModifierKeysState() = default;
	FModifierKeysState(bool bLeftShift, bool bRightShift, bool bLeftControl, bool bRightControl, bool bLeftAlt, bool bRightAlt,
		bool bLeftCommand = false, bool bRightCommand = false)
		: bIsLeftShiftDown(bLeftShift)
		, bIsRightShiftDown(bRightShift)
		, bIsLeftControlDown(bLeftControl)
		, bIsRightControlDown(bRightControl)
		, bIsLeftAltDown(bLeftAlt)
		, bIsRightAltDown(bRightAlt)
		, bIsLeftCommandDown(bLeftCommand)
		, bIsRightCommandDown(bRightCommand)
	{
	}
	bool IsShiftDown() const { return bIsLeftShiftDown || bIsRightShiftDown; }
	bool IsControlDown() const { return bIsLeftControlDown || bIsRightControlDown; }
	bool IsLeftControlDown() const { return bIsLeftControlDown; }
	bool IsRightControlDown() const { return bIsRightControlDown; }
	bool IsAltDown() const { return bIsLeftAltDown || bIsRightAltDown; }
	bool IsLeftAltDown() const { return bIsLeftAltDown; }
	bool IsCommandDown() const { return bIsLeftCommandDown || bIsRightCommandDown; }
	bool AnyModifiersDown() const { return IsShiftDown() || IsControlDown() || IsAltDown() || IsCommandDown(); }

private:
	bool bIsLeftShiftDown = false;
	bool bIsRightShiftDown = false;
	bool bIsLeftControlDown = false;
	bool bIsRightControlDown = false;
	bool bIsLeftAltDown = false;
	bool bIsRightAltDown = false;
	bool bIsLeftCommandDown = false;
	bool bIsRightCommandDown = false;
};

/** Why the keyboard focus moved. */
enum class EFocusCause : uint8
{
	Mouse,
	Navigation,
	SetDirectly,
	Cleared,
	OtherWidgetLostFocus,
	WindowActivate,
};

/** A change of focus. */
struct FFocusEvent
{
	FFocusEvent() = default;
	explicit FFocusEvent(EFocusCause InCause)
		: Cause(InCause)
	{
	}
	EFocusCause GetCause() const { return Cause; }

private:
	EFocusCause Cause = EFocusCause::SetDirectly;
};

/** What all input events share: the modifiers at that moment and whether it is an automatic repeat. */
struct FInputEvent
{
	FInputEvent() = default;
	FInputEvent(const FModifierKeysState& InModifiers, bool bInRepeat)
		: Modifiers(InModifiers)
		, bRepeat(bInRepeat)
	{
	}
	const FModifierKeysState& GetModifierKeys() const { return Modifiers; }
	bool IsRepeat() const { return bRepeat; }
	bool IsShiftDown() const { return Modifiers.IsShiftDown(); }
	bool IsControlDown() const { return Modifiers.IsControlDown(); }
	bool IsLeftControlDown() const { return Modifiers.IsLeftControlDown(); }
	bool IsRightControlDown() const { return Modifiers.IsRightControlDown(); }
	bool IsAltDown() const { return Modifiers.IsAltDown(); }
	bool IsCommandDown() const { return Modifiers.IsCommandDown(); }

private:
	FModifierKeysState Modifiers;
	bool bRepeat = false;
};

/** A key going down or up. */
struct FKeyEvent : public FInputEvent
{
	FKeyEvent() = default;
	FKeyEvent(const FKey& InKey, const FModifierKeysState& InModifiers, bool bInRepeat = false)
		: FInputEvent(InModifiers, bInRepeat)
		, Key(InKey)
	{
	}
	FKey GetKey() const { return Key; }

private:
	FKey Key;
};

/** Committed text. One event carries all characters that arrive together, whole surrogate pairs included. */
struct FCharacterEvent : public FInputEvent
{
	FCharacterEvent() = default;
	FCharacterEvent(FString InText, const FModifierKeysState& InModifiers)
		: FInputEvent(InModifiers, false)
		, Text(MoveTemp(InText))
	{
	}
	/** The first character. */
	TCHAR GetCharacter() const { return Text.IsEmpty() ? TCHAR(0) : Text[0]; }
	const FString& GetText() const { return Text; }

private:
	FString Text;
};

/** A mouse event; positions are device pixels in the window. */
struct FPointerEvent : public FInputEvent
{
	FPointerEvent() = default;
	FPointerEvent(const FVector2D& InPosition, const FVector2D& InLastPosition, const FKey& InButton, const FVector2D& InWheel,
		const FModifierKeysState& InModifiers)
		: FInputEvent(InModifiers, false)
		, Position(InPosition)
		, LastPosition(InLastPosition)
		, Wheel(InWheel)
		, Button(InButton)
	{
	}
	const FVector2D& GetScreenSpacePosition() const { return Position; }
	const FVector2D& GetLastScreenSpacePosition() const { return LastPosition; }
	FKey GetEffectingButton() const { return Button; }
	/** Notches, up positive. */
	float GetWheelDelta() const { return static_cast<float>(Wheel.Y); }
	const FVector2D& GetWheelDelta2D() const { return Wheel; }

private:
	FVector2D Position = FVector2D(0, 0);
	FVector2D LastPosition = FVector2D(0, 0);
	FVector2D Wheel = FVector2D(0, 0);
	FKey Button;
};
