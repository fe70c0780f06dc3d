#pragma once

#include "CoreMinimal.h"

#include "UpdateGate.h"

namespace Velmora
{
	/**
	 * The side of the update gate that programs and tests drive. Game thread.
	 *
	 * A release file is a JSON object:
	 *   "state"            "Checking", "Ready", "UpdateAvailable", "Downloading" or "RestartRequired"
	 *   "version"          the version on offer, if any
	 *   "message"          a text for the state, if any
	 *   "progress"         0 to 100, put behind the message of "Downloading"
	 *   "package"          the file that an offer downloads: a path, relative to the release file's folder or absolute
	 *   "downloadSeconds"  a download takes at least this long, so that it can be watched
	 */
	class VELMORAAUTODOWNLOADFRAMEWORK_API FUpdateGateControl
	{
	public:
		/** Takes on all three values, then tells the listeners. Nobody is told when nothing differs. */
		static void SetState(EUpdateGateState State, const FString& Message, const FString& Version);

		/** The same by the word of a release file; a percent figure goes behind the message. False for an unknown word. */
		static bool SetStateByWord(const FString& Word, TOptional<int32> Progress);

		/** The words of the states, for messages: "Checking, Ready, ...". */
		static FString GetStateWords();

		/**
		 * Takes on what a release file says.
		 * @return False, with the gate as it was and one sentence in OutComplaint, for a file that says no such thing. A missing
		 *         file is no complaint and changes nothing.
		 */
		static bool ReadReleaseFile(const FString& Path, FString& OutComplaint);

		/**
		 * Reads a release file now, and again within a second of every change, until StopFollowing. When the file goes away the
		 * gate is Ready. What is wrong with it is told to the problem handler.
		 * @param DownloadFolder  Where downloads are put. An offer whose download was finished by an earlier run counts as installed.
		 */
		static void Follow(const FString& Path, const FString& DownloadFolder);
		/** Stops a download, too. */
		static void StopFollowing();

		/** Begins the download of the offer that the followed file makes. What goes wrong is told, and the offer stays. */
		static void StartDownload();

		/** Told, in a sentence for the user, what went wrong. Empty takes it away; the log says it in any case. */
		static void SetProblemHandler(TFunction<void(const FString&)> Handler);
	};
}
