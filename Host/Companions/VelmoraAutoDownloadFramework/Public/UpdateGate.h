#pragma once

#include "CoreMinimal.h"
#include "Delegates/Delegate.h"

namespace Velmora
{
	/** Whether the installed version may be used. The numbers are part of the contract. */
	enum class EUpdateGateState : uint8
	{
		Checking = 0, // An update check runs.
		Ready = 1, // The installed version may be used.
		UpdateAvailable = 2, // A download is on offer.
		Downloading = 3,
		RestartRequired = 4 // The update is in place and waits for a restart.
	};

	/** Gate between the user and an outdated version. Game thread. Ready as long as no update is known. */
	class VELMORAAUTODOWNLOADFRAMEWORK_API FUpdateGate
	{
	public:
		DECLARE_MULTICAST_DELEGATE_OneParam(FOnStateChanged, EUpdateGateState);

		static FUpdateGate& Get();

		/** Cheap: polled by widgets every frame. */
		EUpdateGateState GetState() const { return State; }

		/** Text for the current state, with a percent figure while downloading. May be empty. */
		FString GetMessage() const { return Message; }

		/** Version on offer. May be empty. */
		FString GetVersion() const { return Version; }

		/** Told the new state after it has been taken on. Adding and removing while it is told is allowed. */
		FOnStateChanged& OnStateChanged() { return StateChangedEvent; }

	private:
		friend class FUpdateGateControl;

		EUpdateGateState State = EUpdateGateState::Ready;
		FString Message;
		FString Version;
		FOnStateChanged StateChangedEvent;
	};
}
