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

namespace
{
	FHostNotifications::FKeepClear& GetKeepClear()
	{
		static FHostNotifications::FKeepClear KeepClear;
		return KeepClear;
	}

	/** As of the frame at hand. */
	TArray<FSlateRect> PlacedBeside;

	TArray<FSlateRect> AskKeepClear()
	{
		const TSharedPtr<SNotificationList> Stack = FSlateNotificationManager::Get().GetList();
		return Stack && !Stack->GetItems().IsEmpty() && GetKeepClear() ? GetKeepClear()() : TArray<FSlateRect>();
	}
}

void FHostNotifications::SetKeepClear(FKeepClear InKeepClear)
{
	GetKeepClear() = MoveTemp(InKeepClear);
}

FSlateRect FHostNotifications::FindPlace(const FVector2D& Stack, const FVector2D& Window, const TArray<FSlateRect>& KeepClear)
{
	const float Right = static_cast<float>(Window.X);
	const float Height = static_cast<float>(Stack.Y);
	FSlateRect Place(FMath::Max(Right - static_cast<float>(Stack.X), 0.0f), 0.0f, Right, 0.0f);
	for (int32 Count = KeepClear.Num(); Count >= 0; --Count)
	{
		Place.Bottom = static_cast<float>(Window.Y);
		Place.Top = Place.Bottom - Height;
		// What is above one may be on another; each moves the stack once at the most.
		for (int32 Index = 0; Index < Count; ++Index)
		{
			if (!KeepClear[Index].IsEmpty() && FSlateRect::DoRectanglesIntersect(Place, KeepClear[Index]))
			{
				Place.Bottom = KeepClear[Index].Top;
				Place.Top = Place.Bottom - Height;
				Index = -1;
			}
		}
		if (Place.Top >= 0.0f || Count <= 1)
		{
			break;
		}
	}
	return Place;
}

FSlateRect FHostNotifications::PlaceStack(const FVector2D& Stack, const FVector2D& Window)
{
	PlacedBeside = AskKeepClear();
	return FindPlace(Stack, Window, PlacedBeside);
}

bool FHostNotifications::IsMisplaced()
{
	return !(AskKeepClear() == PlacedBeside);
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
