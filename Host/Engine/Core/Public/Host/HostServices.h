#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"
#include "GenericPlatform/GenericPlatformMisc.h"
#include "Internationalization/Text.h"
#include "Templates/Function.h"

/** Something that another program is to open. */
struct FHostLaunchRequest
{
	enum class EKind : uint8
	{
		Url,
		File,
		/** A file to be read and changed in the user's editor. */
		Source,
	};
	EKind Kind = EKind::Url;
	FString Target;
	FString Parameters;
};

/** A question for the user. */
struct FHostMessageDialog
{
	EAppMsgType::Type Type = EAppMsgType::Ok;
	EAppMsgCategory Category = EAppMsgCategory::Info;
	EAppReturnType::Type DefaultAnswer = EAppReturnType::Ok;
	FText Message;
	/** Empty when the caller gave none. */
	FText Title;
};

/**
 * What lower rooms ask of the program that hosts them. Each service has a hook that the program or a test fills; an
 * empty hook takes the service back to its default. Hooks may be set and called on any thread, except that dialogs
 * are opened on the game thread only.
 */
class CORE_API FHostServices
{
public:
	/** Returns whether the target was opened; fills OutError if not. */
	using FLaunchHook = TFunction<bool(const FHostLaunchRequest& Request, FString& OutError)>;
	static void SetLaunchHook(FLaunchHook Hook);
	/** Without a hook the request is recorded, printed on the standard error stream and counts as opened. */
	static bool Launch(const FHostLaunchRequest& Request, FString& OutError);
	/** The requests so far, with or without a hook; the oldest are dropped beyond 1,000. */
	static TArray<FHostLaunchRequest> GetLaunchRecord();
	static void ClearLaunchRecord();

	/** Without hooks a text within the process serves as the clipboard. Both or none should be set. */
	static void SetClipboardHooks(TFunction<void(const FString&)> Copy, TFunction<void(FString&)> Paste);

	/**
	 * Called with what text boxes find on the clipboard, and with whether there is anything, when they ask; both may put something else
	 * in its place. Who asks by ClipboardPaste, as for a secret that no box shows, is let alone. Null for neither. Game thread.
	 */
	static void SetPasteSeam(TFunction<void(FString&)> OnPaste, TFunction<void(bool&)> OnAsk);
	/** What a text box inserts. Game thread. */
	static void PasteIntoBox(FString& OutText);
	/** Whether a text box has anything to insert. Game thread. */
	static bool CanPasteIntoBox();

	using FMessageDialogHook = TFunction<EAppReturnType::Type(const FHostMessageDialog& Dialog)>;
	static void SetMessageDialogHook(FMessageDialogHook Hook);

	/** Told of every save that failed, on the thread that saved. Without a hook the log's warning is all there is. */
	using FSaveFailureHook = TFunction<void(const FString& Path, const FString& Reason)>;
	static void SetSaveFailureHook(FSaveFailureHook Hook);
	/** Logs a warning and calls the hook. */
	static void ReportSaveFailure(const FString& Path, const FString& Reason);

	/** The services themselves, for the engine interfaces in front of them. */
	static void ClipboardCopy(const FString& Text);
	static void ClipboardPaste(FString& OutText);
	static EAppReturnType::Type OpenMessageDialog(const FHostMessageDialog& Dialog);
};
