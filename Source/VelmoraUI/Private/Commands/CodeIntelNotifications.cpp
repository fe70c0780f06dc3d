#include "Commands/CodeIntelNotifications.h"

#include "Framework/Docking/TabManager.h"
#include "Framework/Notifications/NotificationManager.h"
#include "Widgets/SVelmoraTab.h"

#define LOCTEXT_NAMESPACE "CodeIntel"

TWeakPtr<SNotificationItem> FCodeIntelNotifications::ActiveBuildNotification;
TWeakPtr<SNotificationItem> FCodeIntelNotifications::ActiveReindexNotification;
TWeakPtr<SNotificationItem> FCodeIntelNotifications::ActiveStaleNotification;

namespace
{

	TWeakPtr<SNotificationItem> ActiveCompactionNotification;
	TWeakPtr<SNotificationItem> ActiveReconcileNotification;

	void FinishNotification(TWeakPtr<SNotificationItem>& Kept, SNotificationItem::ECompletionState State)
	{
		// Weak, since the user or its own time may have taken the toast away already.
		if (const TSharedPtr<SNotificationItem> Item = Kept.Pin())
		{
			Item->SetCompletionState(State);
			Item->ExpireAndFadeout();
		}
		Kept.Reset();
	}

	FText FormatOneDecimal(double Value)
	{
		return FText::FromString(FString::Printf(TEXT("%.1f"), Value));
	}

} // namespace

void FCodeIntelNotifications::ShowBuildStarted()
{
	// A new build makes every word about the old index stale.
	DismissAll();
	ActiveBuildNotification = ShowNotification(LOCTEXT("BuildStarted", "Building code intelligence index..."),
		SNotificationItem::CS_Pending, 0.0f, false, FText::GetEmpty(), nullptr);
}

void FCodeIntelNotifications::ShowBuildComplete(int32 Symbols, double Seconds)
{
	FinishNotification(ActiveBuildNotification, SNotificationItem::CS_Success);
	const FText Message = FText::Format(
		LOCTEXT("BuildComplete", "Code index ready! ({0} symbols, {1}s)"), FText::AsNumber(Symbols), FormatOneDecimal(Seconds));
	ShowNotification(Message, SNotificationItem::CS_Success, 5.0f, false, FText::GetEmpty(), nullptr);
}

void FCodeIntelNotifications::ShowBuildFailed(const FString& Error)
{
	FinishNotification(ActiveBuildNotification, SNotificationItem::CS_Fail);
	const FText Message = FText::Format(
		LOCTEXT("BuildFailed", "Index build failed: {0}"), FText::FromString(Error.IsEmpty() ? FString(TEXT("Unknown error")) : Error));
	ShowNotification(Message, SNotificationItem::CS_Fail, 0.0f, true, LOCTEXT("ViewLog", "View Log"),
		[] { FGlobalTabmanager::Get()->TryInvokeTab(FTabId("OutputLog")); });
}

void FCodeIntelNotifications::ShowCompactionStarted()
{
	ActiveCompactionNotification = ShowNotification(
		LOCTEXT("CompactionStarted", "Compacting index..."), SNotificationItem::CS_Pending, 0.0f, false, FText::GetEmpty(), nullptr);
}

void FCodeIntelNotifications::ShowCompactionComplete(double SavedMB)
{
	FinishNotification(ActiveCompactionNotification, SNotificationItem::CS_Success);
	const FText Message = FText::Format(LOCTEXT("CompactionComplete", "Index compacted ({0} MB saved)"), FormatOneDecimal(SavedMB));
	ShowNotification(Message, SNotificationItem::CS_Success, 4.0f, false, FText::GetEmpty(), nullptr);
}

void FCodeIntelNotifications::ShowReconcileStarted()
{
	ActiveReconcileNotification = ShowNotification(
		LOCTEXT("ReconcileStarted", "Reconciling file changes..."), SNotificationItem::CS_Pending, 0.0f, false, FText::GetEmpty(), nullptr);
}

void FCodeIntelNotifications::ShowReconcileComplete(int32 Deleted, int32 New)
{
	FinishNotification(ActiveReconcileNotification, SNotificationItem::CS_Success);
	const FText Message = FText::Format(LOCTEXT("ReconcileComplete", "Reconciliation complete: {0} deleted, {1} new files"),
		FText::AsNumber(Deleted), FText::AsNumber(New));
	ShowNotification(Message, SNotificationItem::CS_Success, 4.0f, false, FText::GetEmpty(), nullptr);
}

void FCodeIntelNotifications::ShowReindexActive(int32 Count)
{
	const FText Message = FText::Format(LOCTEXT("ReindexActive", "Reindexing {0} changed files..."), FText::AsNumber(Count));
	if (const TSharedPtr<SNotificationItem> Item = ActiveReindexNotification.Pin())
	{
		// One toast that counts, and no column of them.
		Item->SetText(Message);
		return;
	}
	ActiveReindexNotification = ShowNotification(Message, SNotificationItem::CS_Pending, 3.0f, false, FText::GetEmpty(), nullptr);
}

void FCodeIntelNotifications::ShowIndexStale()
{
	if (!ActiveStaleNotification.IsValid())
	{
		const FText Message = LOCTEXT("IndexStale", "Code index may be out of date. Consider rebuilding.");
		ActiveStaleNotification = ShowNotification(Message, SNotificationItem::CS_None, 0.0f, true, LOCTEXT("RebuildNow", "Rebuild Now"),
			[] { FGlobalTabmanager::Get()->TryInvokeTab(FTabId(SVelmoraTab::GetTabName())); });
	}
}

void FCodeIntelNotifications::DismissAll()
{
	FinishNotification(ActiveBuildNotification, SNotificationItem::CS_None);
	FinishNotification(ActiveReindexNotification, SNotificationItem::CS_None);
	FinishNotification(ActiveStaleNotification, SNotificationItem::CS_None);
}

TSharedPtr<SNotificationItem> FCodeIntelNotifications::ShowNotification(const FText& Text, SNotificationItem::ECompletionState State,
	float Duration, bool bButton, const FText& ButtonText, TFunction<void()> Callback)
{
	FNotificationInfo Info(Text);
	// A toast without a time waits for the event that ends it.
	Info.bFireAndForget = Duration > 0.0f;
	Info.FadeOutDuration = 0.5f;
	Info.ExpireDuration = Duration;
	Info.bUseSuccessFailIcons = State != SNotificationItem::CS_None;
	if (bButton && !ButtonText.IsEmpty() && Callback)
	{
		// A button shows in one state of its toast; this toast never leaves the state that it begins with.
		Info.ButtonDetails.Add(
			FNotificationButtonInfo(ButtonText, FText::GetEmpty(), FSimpleDelegate::CreateLambda(MoveTemp(Callback)), State));
	}
	const TSharedPtr<SNotificationItem> Item = FSlateNotificationManager::Get().AddNotification(Info);
	// Null where the editor shows no toasts, as when it runs without windows.
	if (Item.IsValid())
	{
		Item->SetCompletionState(State);
	}
	return Item;
}

#undef LOCTEXT_NAMESPACE
