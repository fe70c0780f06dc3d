#pragma once

#include "CoreMinimal.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"
#include "Widgets/Notifications/SNotificationList.h"

/**
 * Puts the events of the code index into the editor's toasts. What goes on for a while keeps its toast, so that the
 * event that ends it can turn it into a finished one. Game thread.
 */
class VELMORAUI_API FCodeIntelNotifications
{
public:
	/** In place of everything that still stands there. */
	static void ShowBuildStarted();
	static void ShowBuildComplete(int32 Symbols, double Seconds);
	/** Stays until it is dismissed, with a button to the log. */
	static void ShowBuildFailed(const FString& Error);
	static void ShowCompactionStarted();
	static void ShowCompactionComplete(double SavedMB);
	static void ShowReconcileStarted();
	static void ShowReconcileComplete(int32 Deleted, int32 New);
	/** A toast that is still there gets the new count. */
	static void ShowReindexActive(int32 Count);
	/** At most one at a time. */
	static void ShowIndexStale();
	/** Takes the toasts of build, reindexing and staleness away. */
	static void DismissAll();

private:
	/**
	 * @param Duration  Seconds until it fades; zero for a toast that stays.
	 * @param bButton   With a button, if it has a text and something to do.
	 * @return Null when there is nothing to show it on.
	 */
	static TSharedPtr<SNotificationItem> ShowNotification(const FText& Text, SNotificationItem::ECompletionState State, float Duration,
		bool bButton, const FText& ButtonText, TFunction<void()> Callback);

	static TWeakPtr<SNotificationItem> ActiveBuildNotification;
	static TWeakPtr<SNotificationItem> ActiveReindexNotification;
	static TWeakPtr<SNotificationItem> ActiveStaleNotification;
};
