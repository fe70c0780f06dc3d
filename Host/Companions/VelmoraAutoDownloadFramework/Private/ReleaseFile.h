#pragma once

#include "CoreMinimal.h"

#include "UpdateGate.h"

namespace Velmora
{
	/** What a release file says (Host/UpdateGateControl.h tells its form). */
	struct FReleaseFile
	{
		EUpdateGateState State = EUpdateGateState::Ready;
		FString Version;
		/** With the percent figure. */
		FString Message;
		/** Absolute; empty without a package. */
		FString Package;
		double DownloadSeconds = 0.0;

		/** @return Empty when all is well; else one sentence that says what is wrong. */
		static FString Read(const FString& Path, FReleaseFile& OutRelease);
		static bool FindState(const FString& Word, EUpdateGateState& OutState);
		/** "Fetching 40%"; without a message of one's own "Downloading update... 40%". Pure. */
		static FString MakeProgressMessage(const FString& Message, int32 Percent);
	};
}
