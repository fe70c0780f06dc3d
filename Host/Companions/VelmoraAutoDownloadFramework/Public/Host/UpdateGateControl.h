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
	};
}
