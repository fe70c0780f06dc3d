#include "InputCoreTypes.h"

#define VELMORA_KEY(Name) const FKey EKeys::Name(FName(TEXT(#Name)));

VELMORA_KEY(AnyKey)
VELMORA_KEY(MouseX)
VELMORA_KEY(MouseY)
VELMORA_KEY(MouseWheelAxis)
VELMORA_KEY(LeftMouseButton)
VELMORA_KEY(RightMouseButton)
VELMORA_KEY(MiddleMouseButton)
VELMORA_KEY(ThumbMouseButton)
VELMORA_KEY(ThumbMouseButton2)
VELMORA_KEY(BackSpace)
VELMORA_KEY(Tab)
VELMORA_KEY(Enter)
VELMORA_KEY(Pause)
VELMORA_KEY(CapsLock)
VELMORA_KEY(Escape)
VELMORA_KEY(SpaceBar)
VELMORA_KEY(PageUp)
VELMORA_KEY(PageDown)
VELMORA_KEY(End)
VELMORA_KEY(Home)
VELMORA_KEY(Left)
VELMORA_KEY(Up)
VELMORA_KEY(Right)
VELMORA_KEY(Down)
VELMORA_KEY(Insert)
VELMORA_KEY(Delete)
VELMORA_KEY(Zero)
VELMORA_KEY(One)
VELMORA_KEY(Two)
VELMORA_KEY(Three)
VELMORA_KEY(Four)
VELMORA_KEY(Five)
VELMORA_KEY(Six)
VELMORA_KEY(Seven)
VELMORA_KEY(Eight)
VELMORA_KEY(Nine)
VELMORA_KEY(A)
VELMORA_KEY(B)
VELMORA_KEY(C)
VELMORA_KEY(D)
VELMORA_KEY(E)
VELMORA_KEY(F)
VELMORA_KEY(G)
VELMORA_KEY(H)
VELMORA_KEY(I)
VELMORA_KEY(J)
VELMORA_KEY(K)
VELMORA_KEY(L)
VELMORA_KEY(M)
VELMORA_KEY(N)
VELMORA_KEY(O)
VELMORA_KEY(P)
VELMORA_KEY(Q)
VELMORA_KEY(R)
VELMORA_KEY(S)
VELMORA_KEY(T)
VELMORA_KEY(U)
VELMORA_KEY(V)
VELMORA_KEY(W)
VELMORA_KEY(X)
VELMORA_KEY(Y)
VELMORA_KEY(Z)
VELMORA_KEY(NumPadZero)
VELMORA_KEY(NumPadOne)
VELMORA_KEY(NumPadTwo)
VELMORA_KEY(NumPadThree)
VELMORA_KEY(NumPadFour)
VELMORA_KEY(NumPadFive)
VELMORA_KEY(NumPadSix)
VELMORA_KEY(NumPadSeven)
VELMORA_KEY(NumPadEight)
VELMORA_KEY(NumPadNine)
VELMORA_KEY(Multiply)
VELMORA_KEY(Add)
VELMORA_KEY(Subtract)
VELMORA_KEY(Decimal)
VELMORA_KEY(Divide)
VELMORA_KEY(F1)
VELMORA_KEY(F2)
VELMORA_KEY(F3)
VELMORA_KEY(F4)
VELMORA_KEY(F5)
VELMORA_KEY(F6)
VELMORA_KEY(F7)
VELMORA_KEY(F8)
VELMORA_KEY(F9)
VELMORA_KEY(F10)
VELMORA_KEY(F11)
VELMORA_KEY(F12)
VELMORA_KEY(LeftShift)
VELMORA_KEY(RightShift)
VELMORA_KEY(LeftControl)
VELMORA_KEY(RightControl)
VELMORA_KEY(LeftAlt)
VELMORA_KEY(RightAlt)
VELMORA_KEY(LeftCommand)
VELMORA_KEY(RightCommand)
VELMORA_KEY(Semicolon)
VELMORA_KEY(Equals)
VELMORA_KEY(Comma)
VELMORA_KEY(Hyphen)
VELMORA_KEY(Period)
VELMORA_KEY(Slash)
VELMORA_KEY(Tilde)
VELMORA_KEY(LeftBracket)
VELMORA_KEY(Backslash)
VELMORA_KEY(RightBracket)
VELMORA_KEY(Apostrophe)
const FKey EKeys::Invalid;

#undef VELMORA_KEY

FKey EKeys::Find(FName Name)
{
	static const FKey* const All[] = { &BackSpace, &Tab, &Enter, &Pause, &CapsLock, &Escape, &SpaceBar, &PageUp, &PageDown, &End, &Home,
		&Left, &Up, &Right, &Down, &Insert, &Delete, &Zero, &One, &Two, &Three, &Four, &Five, &Six, &Seven, &Eight, &Nine, &A, &B, &C, &D,
		&E, &F, &G, &H, &I, &J, &K, &L, &M, &N, &O, &P, &Q, &R, &S, &T, &U, &V, &W, &X, &Y, &Z, &Multiply, &Add, &Subtract, &Decimal,
		&Divide, &F1, &F2, &F3, &F4, &F5, &F6, &F7, &F8, &F9, &F10, &F11, &F12, &LeftShift, &RightShift, &LeftControl, &RightControl,
		&LeftAlt, &RightAlt, &Semicolon, &Equals, &Comma, &Hyphen, &Period, &Slash, &Tilde, &LeftBracket, &Backslash, &RightBracket,
		&Apostrophe };
	for (const FKey* Key : All)
	{
		if (Key->GetFName() == Name)
		{
			return *Key;
		}
	}
	return Invalid;
}

bool FKey::IsModifierKey() const
{
	return *this == EKeys::LeftShift || *this == EKeys::RightShift || *this == EKeys::LeftControl || *this == EKeys::RightControl ||
		*this == EKeys::LeftAlt || *this == EKeys::RightAlt || *this == EKeys::LeftCommand || *this == EKeys::RightCommand;
}
