#include "ProblemToasts.h"

#include "Async/Async.h"
#include "Async/TaskGraphInterfaces.h"
#include "ConversationPrinter.h"
#include "Framework/Application/SlateApplication.h"
#include "Framework/Notifications/NotificationManager.h"
#include "Host/HostNotifications.h"
#include "Host/HostServices.h"
#include "Host/Platform.h"

namespace
{
	/** More than these would cover the window; the oldest go. */
	constexpr int32 MaxProblems = 4;

	bool bPrintsProblems = false;
	TFunction<bool(const FString&)> ToastFilter;
	/** Oldest first. */
	TArray<TWeakPtr<SNotificationItem>> ProblemToasts;

	void ShowProblem(const FString& Sentence)
	{
		if (ToastFilter && !ToastFilter(Sentence))
		{
			return;
		}
		// Nobody sees the toasts of a run without a window.
		if (bPrintsProblems)
		{
			PrintToStandardError(TEXT("velmora: ") + Sentence + TEXT("\n"));
		}
		// A failure that comes again while it is told needs no second toast.
		const bool bShown = FHostNotifications::GetVisible().ContainsByPredicate(
			[&Sentence](const FHostToast& Toast) { return Toast.Text.ToString().Equals(Sentence); });
		if (bShown || !FSlateApplication::IsInitialized())
		{
			return;
		}
		// It may be the reason of a failure whose own notice stays until it is dismissed; so this stays as long.
		FNotificationInfo Info(FText::FromString(Sentence));
		Info.bFireAndForget = false;
		const TSharedPtr<SNotificationItem> Toast = FSlateNotificationManager::Get().AddNotification(Info);
		if (!Toast)
		{
			return;
		}
		Toast->SetCompletionState(SNotificationItem::CS_Fail);
		ProblemToasts.RemoveAll([](const TWeakPtr<SNotificationItem>& Old) { return !Old.IsValid(); });
		ProblemToasts.Add(Toast);
		if (ProblemToasts.Num() > MaxProblems)
		{
			ProblemToasts[0].Pin()->Fadeout();
			ProblemToasts.RemoveAt(0);
		}
	}
}

void FProblemToasts::Install(bool bAlsoPrint)
{
	bPrintsProblems = bAlsoPrint;
	FHostPlatform::SetProblemHandler([](const FString& Sentence) { ShowProblem(Sentence); });
	FHostServices::SetSaveFailureHook(
		[](const FString& Path, const FString& Reason)
		{
			// Saves fail on any thread, and a toast within the save itself could be asked for while widgets are laid out.
			const FString Sentence = FString::Printf(TEXT("%s could not be saved: %s"), *Path, *Reason);
			AsyncTask(ENamedThreads::GameThread, [Sentence]() { ShowProblem(Sentence); });
		});
}

void FProblemToasts::Tell(const FString& Sentence)
{
	ShowProblem(Sentence);
}

void FProblemToasts::SetFilter(TFunction<bool(const FString&)> Filter)
{
	ToastFilter = MoveTemp(Filter);
}

void FProblemToasts::Uninstall()
{
	ToastFilter.Reset();
	FHostPlatform::SetProblemHandler(nullptr);
	FHostServices::SetSaveFailureHook(nullptr);
}
