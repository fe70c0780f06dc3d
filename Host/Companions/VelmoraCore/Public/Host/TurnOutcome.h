#pragma once

#include "CoreMinimal.h"

namespace Velmora
{
	/**
	 * What became of the last turn, for programs that have to tell it in one line. A turn ends well by the states of the agent even
	 * when the answer is that nothing could be done. Game thread.
	 */
	class VELMORACORE_API FTurnOutcome
	{
	public:
		/**
		 * Why the last turn did not do what was asked: a change that failed, a request that was not understood, an error. Empty when
		 * it did, and while a turn runs. No more than one line.
		 */
		static const FString& GetFailure();
	};
}
