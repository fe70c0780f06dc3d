#include "Widgets/Notifications/SNotificationList.h"

#include "Host/HostNotifications.h"
#include "Widgets/SBoxPanel.h"

namespace
{
	/** To the window's edges, and between two toasts. */
	constexpr float ToastEdge = 16.0f;
	constexpr float ToastGap = 8.0f;
}

void SNotificationList::Construct(const FArguments& InArgs)
{
	// Only the toasts themselves take the mouse.
	SetVisibility(EVisibility::SelfHitTestInvisible);
	// clang-format off
	ChildSlot.HAlign(HAlign_Right).VAlign(VAlign_Bottom).Padding(0.0f, 0.0f, ToastEdge, ToastEdge)
	[
		SAssignNew(Stack, SVerticalBox)
		.Visibility(EVisibility::SelfHitTestInvisible)
	];
	// clang-format on
}

TSharedRef<SNotificationItem> SNotificationList::AddNotification(const FNotificationInfo& Info)
{
	const TSharedRef<SNotificationItem> Item = SNew(SNotificationItem, Info);
	int32 Slot = Stack->NumSlots();
	for (const TSharedRef<SNotificationItem>& Other : Items)
	{
		Slot -= Other->IsAsking() && !Item->IsAsking() ? 1 : 0;
	}
	Items.Add(Item);
	Stack->InsertSlot(Slot).AutoHeight().HAlign(HAlign_Right).Padding(0.0f, ToastGap, 0.0f, 0.0f)[Item];
	return Item;
}

void SNotificationList::RemoveAll()
{
	Stack->ClearChildren();
	Items.Empty();
}

void SNotificationList::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	for (int32 Index = Items.Num() - 1; Index >= 0; --Index)
	{
		if (!Items[Index]->IsShown())
		{
			Stack->RemoveSlot(Items[Index]);
			Items.RemoveAt(Index);
		}
	}
	if (FHostNotifications::IsMisplaced())
	{
		// The layers below have been arranged by now; this one is placed anew before anything is shown.
		Invalidate(EInvalidateWidgetReason::Layout);
	}
}
