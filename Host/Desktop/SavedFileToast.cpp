#include "SavedFileToast.h"

#include "Framework/Notifications/NotificationManager.h"
#include "Host/HostFileNames.h"
#include "Host/HostServices.h"
#include "Widgets/Notifications/SNotificationList.h"

#include <chrono>
#include <sys/stat.h>

#define LOCTEXT_NAMESPACE "SavedFileToast"

namespace
{
	constexpr float SavedSeconds = 6.0f;

	double GetSystemSeconds()
	{
		return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
	}

	/** File systems count in steps of their own, and the dialog may be answered at once. */
	constexpr double ClockGrainSeconds = 1.0;

	bool WasWrittenSince(const FString& Path, double Seconds)
	{
		struct stat Info = {};
		return stat(HostFileNameToBytes(Path).c_str(), &Info) == 0 && S_ISREG(Info.st_mode) &&
			static_cast<double>(Info.st_mtim.tv_sec) + static_cast<double>(Info.st_mtim.tv_nsec) * 1e-9 >= Seconds - ClockGrainSeconds;
	}

	/** The file that the dialog gave out, which may have got its ending from the kind; empty when none was written. */
	FString FindWritten(const FHostOpenSaveDialog& Asked, double Seconds)
	{
		const FString Path = Asked.Name.StartsWith(TEXT("/")) ? Asked.Name : Asked.Folder / Asked.Name;
		for (const TCHAR* Ending : { TEXT(""), TEXT(".md"), TEXT(".txt"), TEXT(".html"), TEXT(".json") })
		{
			if (WasWrittenSince(Path + Ending, Seconds))
			{
				return Path + Ending;
			}
		}
		return FString();
	}

	void TellSaved(const FString& Path)
	{
		FNotificationInfo Info(LOCTEXT("Saved", "The file is saved."));
		Info.ExpireDuration = SavedSeconds;
		Info.HyperlinkText = FText::FromString(Path);
		Info.Hyperlink = FSimpleDelegate::CreateLambda(
			[Path]
			{
				FHostLaunchRequest Request;
				Request.Kind = FHostLaunchRequest::EKind::File;
				Request.Target = Path;
				// What keeps it from opening is told by the launcher.
				FString Reason;
				(void)FHostServices::Launch(Request, Reason);
			});
		if (const TSharedPtr<SNotificationItem> Toast = FSlateNotificationManager::Get().AddNotification(Info))
		{
			Toast->SetCompletionState(SNotificationItem::CS_Success);
		}
	}
}

void FSavedFileToast::NoteTurn()
{
	TOptional<FHostOpenSaveDialog> Open = FHostFileDialogs::GetOpen();
	if (Open.IsSet())
	{
		OpenedAt = Asked.IsSet() ? OpenedAt : GetSystemSeconds();
		Asked = MoveTemp(Open);
		return;
	}
	if (Asked.IsSet())
	{
		const FHostOpenSaveDialog Closed = MoveTemp(Asked.GetValue());
		Asked.Reset();
		if (const FString Path = FindWritten(Closed, OpenedAt); !Path.IsEmpty())
		{
			TellSaved(Path);
		}
	}
}

#undef LOCTEXT_NAMESPACE
