#include "Host/TurnOutcome.h"

#include "Agent/AgentSession.h"

namespace Velmora
{
	namespace
	{
		FString& GetLastFailure()
		{
			static FString Failure;
			return Failure;
		}
	}

	const FString& FTurnOutcome::GetFailure()
	{
		return GetLastFailure();
	}

	void NoteTurnFailure(const FString& Why)
	{
		int32 LineEnd = INDEX_NONE;
		GetLastFailure() = Why.FindChar(TEXT('\n'), LineEnd) ? Why.Left(LineEnd) : Why;
	}
}
