#include "Host/HostServices.h"

#include "Async/TaskGraphInterfaces.h"
#include "Host/HostStderr.h"
#include "Logging/LogMacros.h"

#include <mutex>
#include <utility>

// Where the program hooks in what the engine's interfaces need and cannot do themselves: clipboard, dialogs, launching,
// reports of failed saves. Without a hook each has an answer that does no harm. Hooks are copied before they are called,
// since a call may run the program's loop.

DEFINE_LOG_CATEGORY_STATIC(LogHostServices, Log, All);

namespace
{
	constexpr int32 MaxLaunchRecord = 1000;
	/** What a pasted text may grow by where it is, as a share of its length. */
	constexpr int32 PasteRoomShare = 16;

	struct FServiceState
	{
		std::mutex Mutex;
		FHostServices::FLaunchHook Launch;
		TArray<FHostLaunchRequest> LaunchRecord;
		TFunction<void(const FString&)> Copy;
		TFunction<void(FString&)> Paste;
		TFunction<void(FString&)> OnPaste;
		TFunction<void(bool&)> OnAsk;
		FString Clipboard;
		FHostServices::FMessageDialogHook Dialog;
		FHostServices::FSaveFailureHook SaveFailure;
	};

	FServiceState& GetServiceState()
	{
		static FServiceState State;
		return State;
	}

	/** Hooks are called outside the lock, since they may come back here. */
	template <typename THook>
	THook CopyHook(const THook& Hook)
	{
		const std::lock_guard<std::mutex> Lock(GetServiceState().Mutex);
		return Hook;
	}

	template <typename THook>
	void SetHook(THook& Hook, THook& NewHook)
	{
		{
			const std::lock_guard<std::mutex> Lock(GetServiceState().Mutex);
			std::swap(Hook, NewHook);
		}
		NewHook = nullptr; // What the old hook held is destroyed outside the lock.
	}
}

void FHostServices::SetLaunchHook(FLaunchHook Hook)
{
	SetHook(GetServiceState().Launch, Hook);
}

bool FHostServices::Launch(const FHostLaunchRequest& Request, FString& OutError)
{
	FServiceState& State = GetServiceState();
	FLaunchHook Hook;
	{
		const std::lock_guard<std::mutex> Lock(State.Mutex);
		if (State.LaunchRecord.Num() >= MaxLaunchRecord)
		{
			State.LaunchRecord.RemoveAt(0);
		}
		State.LaunchRecord.Add(Request);
		Hook = State.Launch;
	}
	if (Hook)
	{
		const bool bOpened = Hook(Request, OutError);
		UE_CLOG(!bOpened, LogHostServices, Warning, TEXT("Cannot open %s: %s"), *Request.Target, *OutError);
		return bOpened;
	}
	const TCHAR* Kind = Request.Kind == FHostLaunchRequest::EKind::Url ? TEXT("address") : TEXT("file");
	HostPrintError(FString::Printf(TEXT("Would open %s: %s"), Kind, *Request.Target));
	return true;
}

TArray<FHostLaunchRequest> FHostServices::GetLaunchRecord()
{
	FServiceState& State = GetServiceState();
	const std::lock_guard<std::mutex> Lock(State.Mutex);
	return State.LaunchRecord;
}

void FHostServices::ClearLaunchRecord()
{
	FServiceState& State = GetServiceState();
	const std::lock_guard<std::mutex> Lock(State.Mutex);
	State.LaunchRecord.Empty();
}

void FHostServices::SetClipboardHooks(TFunction<void(const FString&)> Copy, TFunction<void(FString&)> Paste)
{
	SetHook(GetServiceState().Copy, Copy);
	SetHook(GetServiceState().Paste, Paste);
}

void FHostServices::ClipboardCopy(const FString& Text)
{
	FServiceState& State = GetServiceState();
	if (const TFunction<void(const FString&)> Hook = CopyHook(State.Copy))
	{
		Hook(Text);
		return;
	}
	const std::lock_guard<std::mutex> Lock(State.Mutex);
	State.Clipboard = Text;
}

void FHostServices::ClipboardPaste(FString& OutText)
{
	OutText.Reset();
	FServiceState& State = GetServiceState();
	if (const TFunction<void(FString&)> Hook = CopyHook(State.Paste))
	{
		Hook(OutText);
		return;
	}
	const std::lock_guard<std::mutex> Lock(State.Mutex);
	// With room for what is typed after it: a text of many megabytes would be copied once more for the first letter.
	OutText.Reserve(State.Clipboard.Len() + State.Clipboard.Len() / PasteRoomShare);
	OutText = State.Clipboard;
}

void FHostServices::SetPasteSeam(TFunction<void(FString&)> OnPaste, TFunction<void(bool&)> OnAsk)
{
	SetHook(GetServiceState().OnPaste, OnPaste);
	SetHook(GetServiceState().OnAsk, OnAsk);
}

void FHostServices::PasteIntoBox(FString& OutText)
{
	ClipboardPaste(OutText);
	if (const TFunction<void(FString&)> Hook = CopyHook(GetServiceState().OnPaste))
	{
		Hook(OutText);
	}
}

bool FHostServices::CanPasteIntoBox()
{
	FString Text;
	ClipboardPaste(Text);
	bool bCanPaste = !Text.IsEmpty();
	if (const TFunction<void(bool&)> Hook = CopyHook(GetServiceState().OnAsk))
	{
		Hook(bCanPaste);
	}
	return bCanPaste;
}

void FHostServices::SetMessageDialogHook(FMessageDialogHook Hook)
{
	SetHook(GetServiceState().Dialog, Hook);
}

EAppReturnType::Type FHostServices::OpenMessageDialog(const FHostMessageDialog& Dialog)
{
	if (IsInGameThread())
	{
		if (const FMessageDialogHook Hook = CopyHook(GetServiceState().Dialog))
		{
			return Hook(Dialog);
		}
	}
	HostPrintError(FString::Printf(TEXT("Nobody to ask, taking \"%s\": %s%s%s"), LexToString(Dialog.DefaultAnswer),
		*Dialog.Title.ToString(), Dialog.Title.IsEmpty() ? TEXT("") : TEXT(": "), *Dialog.Message.ToString()));
	return Dialog.DefaultAnswer;
}

void FHostServices::SetSaveFailureHook(FSaveFailureHook Hook)
{
	SetHook(GetServiceState().SaveFailure, Hook);
}

void FHostServices::ReportSaveFailure(const FString& Path, const FString& Reason)
{
	UE_LOG(LogHostServices, Warning, TEXT("Cannot save %s: %s"), *Path, *Reason);
	if (const FSaveFailureHook Hook = CopyHook(GetServiceState().SaveFailure))
	{
		Hook(Path, Reason);
	}
}
