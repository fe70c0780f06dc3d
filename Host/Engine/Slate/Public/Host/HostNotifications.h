#pragma once

#include "Widgets/Notifications/SNotificationList.h"

/** A toast as a driver sees it. */
struct FHostToast
{
	FText Text;
	SNotificationItem::ECompletionState State = SNotificationItem::CS_None;
};

/** The toasts on screen, for drivers, dumps and tests. Game thread only. */
class SLATE_API FHostNotifications
{
public:
	/** From the uppermost, which is the oldest, to the newest. Those still fading count. */
	static TArray<FHostToast> GetVisible();
	/** Takes all toasts away at once. */
	static void Clear();
};
