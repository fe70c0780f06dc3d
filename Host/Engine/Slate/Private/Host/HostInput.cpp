#include "Host/HostInput.h"

#include "Framework/Application/SlateApplication.h"
#include "Host/HostWindow.h"

namespace
{
	IHostMessageHandler& GetInputEntry()
	{
		return FSlateApplication::Get().GetMessageHandler();
	}

	FString GetTypedText(const FKey& Key, const FModifierKeysState& Modifiers)
	{
		// With these a key is a command; a keyboard sends no text for it.
		if (Modifiers.IsControlDown() || Modifiers.IsAltDown())
		{
			return FString();
		}
		if (Key == EKeys::SpaceBar)
		{
			return TEXT(" ");
		}
		// Letters are named after themselves; digits and signs come as text, since their layout is nobody's.
		const FString Letter = Key.GetFName().ToString();
		return Letter.Len() == 1 ? (Modifiers.IsShiftDown() ? Letter.ToUpper() : Letter.ToLower()) : FString();
	}
}

void HostInput::PressKey(const FKey& Key, const FModifierKeysState& Modifiers)
{
	GetInputEntry().OnKeyDown(Key, Modifiers, false);
	const FString Typed = GetTypedText(Key, Modifiers);
	if (!Typed.IsEmpty())
	{
		GetInputEntry().OnTextInput(Typed);
	}
	GetInputEntry().OnKeyUp(Key, FModifierKeysState());
}

void HostInput::Type(FStringView Text, bool bTabsAreText)
{
	int32 Start = 0;
	for (int32 Index = 0; Index <= Text.Len(); ++Index)
	{
		const TCHAR Letter = Index < Text.Len() ? Text[Index] : TEXT('\n');
		if (Letter != TEXT('\n') && (bTabsAreText || Letter != TEXT('\t')))
		{
			continue;
		}
		if (Index > Start)
		{
			GetInputEntry().OnTextInput(Text.Mid(Start, Index - Start));
		}
		if (Index < Text.Len())
		{
			PressKey(Letter == TEXT('\n') ? EKeys::Enter : EKeys::Tab);
		}
		Start = Index + 1;
	}
}

void HostInput::Click(const FVector2D& Position)
{
	GetInputEntry().OnMouseMove(Position, FModifierKeysState());
	GetInputEntry().OnMouseDown(EKeys::LeftMouseButton, Position, FModifierKeysState());
	GetInputEntry().OnMouseUp(EKeys::LeftMouseButton, Position, FModifierKeysState());
}
