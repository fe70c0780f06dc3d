#pragma once

#include "CoreMinimal.h"
#include "Input/Events.h"

class SWidget;

/** Answer of a widget to an input event, with what the application is to do next. */
class FReply
{
public:
	static FReply Handled() { return FReply(true); }
	static FReply Unhandled() { return FReply(false); }

	FReply& SetUserFocus(TSharedRef<SWidget> Widget, EFocusCause Cause = EFocusCause::SetDirectly, bool bInAllUsers = false)
	{
		FocusRecipient = Widget;
		FocusCause = Cause;
		return *this;
	}
	FReply& CaptureMouse(TSharedRef<SWidget> Widget)
	{
		MouseCaptor = Widget;
		return *this;
	}
	FReply& ReleaseMouseCapture()
	{
		bReleaseMouse = true;
		return *this;
	}

	bool IsEventHandled() const { return bHandled; }
	const TSharedPtr<SWidget>& GetUserFocusRecepient() const { return FocusRecipient; }
	EFocusCause GetFocusCause() const { return FocusCause; }
	const TSharedPtr<SWidget>& GetMouseCaptor() const { return MouseCaptor; }
	bool ShouldReleaseMouse() const { return bReleaseMouse; }
	bool ShouldReleaseUserFocus() const { return bReleaseFocus; }

private:
	explicit FReply(bool bInHandled)
		: bHandled(bInHandled)
	{
	}

	bool bHandled;
	bool bReleaseMouse = false;
	bool bReleaseFocus = false;
	EFocusCause FocusCause = EFocusCause::SetDirectly;
	TSharedPtr<SWidget> FocusRecipient;
	TSharedPtr<SWidget> MouseCaptor;
};
