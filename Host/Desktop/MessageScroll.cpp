#include "MessageScroll.h"

#include "Framework/Application/SlateApplication.h"
#include "Host/WidgetFinder.h"
#include "PromptBox.h"
#include "Widgets/Layout/SScrollBox.h"

namespace
{
	/** Units that an arrow moves by: three lines of text. */
	constexpr float ScrollLineUnits = 54.0f;
	/** Of a page that stays in view, so that the eye finds its place. */
	constexpr float KeptPageShare = 0.1f;

	TSharedPtr<SScrollBox> FindScrollBox(const TSharedRef<SWidget>& Widget)
	{
		if (Widget->GetType() == FName(TEXT("SScrollBox")))
		{
			return StaticCastSharedRef<SScrollBox>(Widget).ToSharedPtr();
		}
		FChildren& Children = *Widget->GetChildren();
		for (int32 Index = 0; Index < Children.Num(); ++Index)
		{
			if (const TSharedPtr<SScrollBox> Found = FindScrollBox(Children.GetChildAt(Index)))
			{
				return Found;
			}
		}
		return nullptr;
	}

	/** Units to move by; nothing for a key that does not scroll. Infinite for the ends. */
	TOptional<float> GetDistance(const FKeyEvent& KeyEvent, float PageUnits)
	{
		constexpr float Everything = TNumericLimits<float>::Max();
		const FKey Key = KeyEvent.GetKey();
		if (KeyEvent.IsControlDown() && !KeyEvent.IsAltDown() && !KeyEvent.IsShiftDown())
		{
			const float Page = PageUnits * (1.0f - KeptPageShare);
			return Key == EKeys::PageUp	 ? -Page
				: Key == EKeys::PageDown ? Page
				: Key == EKeys::Home	 ? -Everything
				: Key == EKeys::End		 ? TOptional<float>(Everything)
										 : TOptional<float>();
		}
		const bool bIsLine = KeyEvent.IsAltDown() && !KeyEvent.IsControlDown() && !KeyEvent.IsShiftDown();
		return bIsLine && Key == EKeys::Up	? -ScrollLineUnits
			: bIsLine && Key == EKeys::Down ? TOptional<float>(ScrollLineUnits)
											: TOptional<float>();
	}
}

bool FMessageScroll::HandleKey(const FKeyEvent& KeyEvent)
{
	FSlateApplication& Application = FSlateApplication::Get();
	const TSharedPtr<SWidget> Focused = Application.GetKeyboardFocusedWidget();
	// An open list takes these keys for itself.
	if (!Focused || Focused != FPromptBox::Find() || Application.AnyMenusVisible())
	{
		return false;
	}
	const TSharedPtr<SWidget> List = FWidgetFinder::FindByTag(TEXT("MessageList"));
	const TSharedPtr<SScrollBox> Box = List ? FindScrollBox(List.ToSharedRef()) : nullptr;
	if (!Box)
	{
		return false;
	}
	const TOptional<float> Distance = GetDistance(KeyEvent, static_cast<float>(Box->GetCachedGeometry().GetLocalSize().Y));
	if (!Distance.IsSet())
	{
		return false;
	}
	const float End = Box->GetScrollOffsetOfEnd();
	const float Target = FMath::Clamp(Box->GetScrollOffset() + Distance.GetValue(), 0.0f, End);
	// At the end it goes on following it.
	Target >= End ? Box->ScrollToEnd() : Box->SetScrollOffset(Target);
	return true;
}
