#pragma once

#include "Widgets/Notifications/SNotificationList.h"

/** Shows toasts at the lower right of the program's window. Game thread only. */
class SLATE_API FSlateNotificationManager
{
public:
	static FSlateNotificationManager& Get();

	/** Null when there is no application to show it. */
	TSharedPtr<SNotificationItem> AddNotification(const FNotificationInfo& Info);
	/** The stack, null before the first toast. */
	TSharedPtr<SNotificationList> GetList() const { return List.Pin(); }

private:
	/** The application owns the stack, as one of its layers. */
	TWeakPtr<SNotificationList> List;
};
