#pragma once

#include "Layout/SlateRect.h"
#include "Widgets/Notifications/SNotificationList.h"

/** A toast as a driver sees it. */
struct FHostToast
{
	FText Text;
	SNotificationItem::ECompletionState State = SNotificationItem::CS_None;
};

/** The toasts on screen, for drivers, dumps and tests, and where they stand. Game thread only. */
class SLATE_API FHostNotifications
{
public:
	/** From the oldest to the newest. Those still fading count. */
	static TArray<FHostToast> GetVisible();
	/** Takes all toasts away at once. */
	static void Clear();

	/** Device pixels of the window, the most important one first. */
	using FKeepClear = TFunction<TArray<FSlateRect>()>;
	/** What toasts do not stand on. Asked in frames that have toasts, and null at the end of whoever answers. */
	static void SetKeepClear(FKeepClear InKeepClear);
	/**
	 * Where a stack of toasts goes: to the lower right, and so far up that it covers nothing that is to be kept clear. Where the window is
	 * too low for that, the last of these give way first. The first never does: the upper end of the stack is then above the window. Pure.
	 */
	static FSlateRect FindPlace(const FVector2D& Stack, const FVector2D& Window, const TArray<FSlateRect>& KeepClear);

	// For the layers of the window.
	/** The place of the stack in this frame. */
	static FSlateRect PlaceStack(const FVector2D& Stack, const FVector2D& Window);
	/** What is to be kept clear has moved since the stack was placed. */
	static bool IsMisplaced();
};
