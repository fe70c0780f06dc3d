#pragma once

#include "CoreMinimal.h"

#include "UpdateGate.h"

namespace Velmora
{
	/** The side of the update gate that programs and tests drive. Game thread. */
	class VELMORAAUTODOWNLOADFRAMEWORK_API FUpdateGateControl
	{
	public:
		/** Takes on all three values, then tells the listeners. Nobody is told when nothing differs. */
		static void SetState(EUpdateGateState State, const FString& Message, const FString& Version);

		/**
		 * Takes on what a release file says: a JSON object with "state" ("Checking", "Ready", "UpdateAvailable", "Downloading" or
		 * "RestartRequired"), "version" and "message", the latter two optional.
		 * @return False, with the gate as it was and one sentence in OutComplaint, for a file that says no such thing. A missing
		 *         file is no complaint and changes nothing.
		 */
		static bool ReadReleaseFile(const FString& Path, FString& OutComplaint);
	};
}
