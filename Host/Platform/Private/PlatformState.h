#pragma once

#include "CoreMinimal.h"
#include "Templates/Function.h"

/** The handlers that the program has set (see FHostPlatform). */
namespace PlatformState
{
	/** Tells the user through the handler, or the log. From another thread it goes over to the game thread. */
	void ReportProblem(const FString& Sentence);
	void CallDisplayLost();
	/** By a signal of the system, which waits for no answer. */
	void NoteToldToEnd();
	void RecordTarget(const FString& Target);
	bool HasSourceViewer();
	/** Game thread. */
	void ShowSource(const FString& Path, int32 Line);
}
