#include "PromptBox.h"

#include "Framework/Application/SlateApplication.h"
#include "HAL/PlatformTime.h"
#include "Host/HostInput.h"
#include "Host/WidgetFinder.h"
#include "OpenChat.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"

TSharedPtr<SWidget> FPromptBox::Find()
{
	return FWidgetFinder::FindByTag(TEXT("InputTextBox"));
}

void FPromptBox::Focus()
{
	FSlateApplication::Get().SetKeyboardFocus(Find(), EFocusCause::SetDirectly);
}

void FPromptBox::Clear()
{
	if (const TSharedPtr<SWidget> Box = Find())
	{
		StaticCastSharedPtr<SMultiLineEditableTextBox>(Box)->SetText(FText::GetEmpty());
	}
}

TArray<FString> FPromptBox::GetFiles()
{
	const TSharedPtr<FChatViewModel> ViewModel = FOpenChat::GetViewModel();
	return ViewModel ? ViewModel->GetContextFiles() : TArray<FString>();
}

void FPromptBox::AttachFiles(const TArray<FString>& Files)
{
	if (const TSharedPtr<FChatViewModel> ViewModel = FOpenChat::GetViewModel())
	{
		for (const FString& File : Files)
		{
			ViewModel->AddContextFile(File);
		}
	}
}

void FPromptBox::PutBefore(const FString& Text)
{
	if (const TSharedPtr<SWidget> Box = Find())
	{
		SMultiLineEditableTextBox& Edited = static_cast<SMultiLineEditableTextBox&>(*Box);
		const FString Draft = Edited.GetText().ToString();
		Edited.SetText(FText::FromString(Draft.IsEmpty() ? Text : Text + TEXT("\n") + Draft));
		Edited.GoTo(ETextLocation::EndOfDocument);
	}
}

void FPromptBox::ShowWaitingMessages()
{
	// To the window around the box a moment that has passed is a long frame.
	constexpr float LongFrameSeconds = 1.0f;
	for (TSharedPtr<SWidget> Widget = Find(); Widget; Widget = Widget->GetParentWidget())
	{
		if (Widget->GetType() == FName(TEXT("SChatWindow")))
		{
			Widget->Tick(Widget->GetCachedGeometry(), FPlatformTime::Seconds(), LongFrameSeconds);
		}
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
