#include "PromptBox.h"

#include "Framework/Application/SlateApplication.h"
#include "Host/HostInput.h"
#include "Host/WidgetFinder.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"

namespace
{
	TSharedPtr<SWidget> FindPromptBox()
	{
		return FWidgetFinder::FindByTag(TEXT("InputTextBox"));
	}
}

void FPromptBox::Focus()
{
	FSlateApplication::Get().SetKeyboardFocus(FindPromptBox(), EFocusCause::SetDirectly);
}

void FPromptBox::Clear()
{
	if (const TSharedPtr<SWidget> Box = FindPromptBox())
	{
		StaticCastSharedPtr<SMultiLineEditableTextBox>(Box)->SetText(FText::GetEmpty());
	}
}

void FPromptBox::PutBefore(const FString& Text)
{
	if (const TSharedPtr<SWidget> Box = FindPromptBox())
	{
		SMultiLineEditableTextBox& Edited = static_cast<SMultiLineEditableTextBox&>(*Box);
		const FString Draft = Edited.GetText().ToString();
		Edited.SetText(FText::FromString(Draft.IsEmpty() ? Text : Text + TEXT("\n") + Draft));
		Edited.GoTo(ETextLocation::EndOfDocument);
	}
}

void FPromptBox::TypeAndSend(const FString& Text)
{
	Focus();
	// A line feed is a key of its own to the box, as from a keyboard; a tab would leave the box.
	TArray<FString> Lines;
	Text.ParseIntoArrayLines(Lines, false);
	HostInput::Type(FString::Join(Lines, TEXT("\n")), /*bTabsAreText*/ true);
	// The box reports its change with a frame, and only a changed text can be sent.
	constexpr double FrameSeconds = 1.0 / 60.0;
	FSlateApplication::Get().RunTurn(FrameSeconds);
	const FModifierKeysState Control(false, false, true, false, false, false);
	HostInput::PressKey(EKeys::Enter, Control);
}
