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
	/** Long enough to read a path and a reason. */
	constexpr float ProblemSeconds = 8.0f;

	bool bPrintsProblems = false;

	void ShowProblem(const FString& Sentence)
	{
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
		FNotificationInfo Info(FText::FromString(Sentence));
		Info.ExpireDuration = ProblemSeconds;
		if (const TSharedPtr<SNotificationItem> Toast = FSlateNotificationManager::Get().AddNotification(Info))
		{
			Toast->SetCompletionState(SNotificationItem::CS_Fail);
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

void FProblemToasts::Uninstall()
{
	FHostPlatform::SetProblemHandler(nullptr);
	FHostServices::SetSaveFailureHook(nullptr);
}
