#include "InputRouter.h"

#include "LayerStack.h"

// Without a pointer: what is pressed need not be in view, nor lie on top. What a modal window covers stays out of reach.
bool FInputRouter::DoAccessAction(const TSharedRef<SWidget>& Widget)
{
	const FEventPath Path = FEventPath::To(Widget);
	if (!IsReachable(Widget) || Path.EnabledCount < Path.Widgets.Num())
	{
		return false;
	}
	bActivity = true;
	CloseToolTip();
	const FReply Reply = Widget->DoAccessAction();
	ApplyReply(Reply, Path);
	return Reply.IsEventHandled();
}
