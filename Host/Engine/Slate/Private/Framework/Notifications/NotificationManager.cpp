#include "Framework/Notifications/NotificationManager.h"

#include "Framework/Application/SlateApplication.h"
#include "Host/HostNotifications.h"

FSlateNotificationManager& FSlateNotificationManager::Get()
{
	static FSlateNotificationManager Instance;
	return Instance;
}

TSharedPtr<SNotificationItem> FSlateNotificationManager::AddNotification(const FNotificationInfo& Info)
{
	if (!FSlateApplication::IsInitialized())
	{
		return nullptr;
	}
	TSharedPtr<SNotificationList> Stack = List.Pin();
	if (!Stack)
	{
		Stack = SNew(SNotificationList);
		List = Stack;
		FSlateApplication::Get().SetToastLayer(Stack);
	}
	FSlateApplication::Get().NoteActivity();
	return Stack->AddNotification(Info);
}

TArray<FHostToast> FHostNotifications::GetVisible()
{
	TArray<FHostToast> Toasts;
	if (const TSharedPtr<SNotificationList> Stack = FSlateNotificationManager::Get().GetList())
	{
		for (const TSharedRef<SNotificationItem>& Item : Stack->GetItems())
		{
			if (Item->IsShown())
			{
				Toasts.Add({ Item->GetText(), Item->GetCompletionState() });
			}
		}
	}
	return Toasts;
}

void FHostNotifications::Clear()
{
	if (const TSharedPtr<SNotificationList> Stack = FSlateNotificationManager::Get().GetList())
	{
		Stack->RemoveAll();
	}
}
