#pragma once

#include "CoreMinimal.h"

/** A key or mouse button by name; compares like its name. */
struct SLATECORE_API FKey
{
	FKey() = default;
	FKey(FName InName)
		: KeyName(InName)
	{
	}
	FName GetFName() const { return KeyName; }
	FString ToString() const { return KeyName.ToString(); }
	bool IsValid() const { return !KeyName.IsNone(); }
	bool IsModifierKey() const;
	bool operator==(const FKey& Other) const { return KeyName == Other.KeyName; }
	bool operator!=(const FKey& Other) const { return KeyName != Other.KeyName; }

private:
	FName KeyName;
};

/** The keys that the host knows. Letters and digits of the main block are named like the engine's. */
struct SLATECORE_API EKeys
{
	static const FKey AnyKey, MouseX, MouseY, MouseWheelAxis;
	static const FKey LeftMouseButton, RightMouseButton, MiddleMouseButton, ThumbMouseButton, ThumbMouseButton2;
	static const FKey BackSpace, Tab, Enter, Pause, CapsLock, Escape, SpaceBar, PageUp, PageDown, End, Home;
	static const FKey Left, Up, Right, Down, Insert, Delete;
	static const FKey Zero, One, Two, Three, Four, Five, Six, Seven, Eight, Nine;
	static const FKey A, B, C, D, E, F, G, H, I, J, K, L, M, N, O, P, Q, R, S, T, U, V, W, X, Y, Z;
	static const FKey NumPadZero, NumPadOne, NumPadTwo, NumPadThree, NumPadFour, NumPadFive, NumPadSix, NumPadSeven, NumPadEight,
		NumPadNine;
	static const FKey Multiply, Add, Subtract, Decimal, Divide;
	static const FKey F1, F2, F3, F4, F5, F6, F7, F8, F9, F10, F11, F12;
	static const FKey LeftShift, RightShift, LeftControl, RightControl, LeftAlt, RightAlt, LeftCommand, RightCommand;
	static const FKey Semicolon, Equals, Comma, Hyphen, Period, Slash, Tilde, LeftBracket, Backslash, RightBracket, Apostrophe;
	static const FKey Invalid;

	/** The key of that name, or Invalid. "ctrl" and "return" style aliases are not known here. */
	static FKey Find(FName Name);
};
