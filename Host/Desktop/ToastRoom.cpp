#include "ToastRoom.h"

#include "Host/HostNotifications.h"
#include "OpenChat.h"
#include "Widgets/SWidget.h"

namespace
{
	/** As much of it as what lies around it lets through; empty while it is not to be seen. */
	FSlateRect FindShown(const TCHAR* Tag)
	{
		const TSharedPtr<SWidget> Widget = FOpenChat::FindByTag(FName(Tag));
		FSlateRect Shown = Widget ? Widget->GetCachedGeometry().GetLayoutBoundingRect() : FSlateRect();
		for (TSharedPtr<SWidget> Around = Widget; Around; Around = Around->GetParentWidget())
		{
			Shown = Shown.IntersectionWith(Around->GetCachedGeometry().GetLayoutBoundingRect());
		}
		return Shown.IsEmpty() ? FSlateRect() : Shown;
	}
}

void FToastRoom::Install()
{
	FHostNotifications::SetKeepClear(
		[]() -> TArray<FSlateRect>
		{
			if (!FOpenChat::IsInFront())
			{
				return {};
			}
			FSlateRect Buttons;
			for (const TCHAR* const Tag : { TEXT("SendButton"), TEXT("PauseButton"), TEXT("ContinueButton"), TEXT("CancelButton") })
			{
				Buttons = Buttons.Expand(FindShown(Tag));
			}
			return { Buttons, FindShown(TEXT("InputTextBox")) };
		});
}

void FToastRoom::Uninstall()
{
	FHostNotifications::SetKeepClear(nullptr);
}
