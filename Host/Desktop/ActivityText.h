#pragma once

#include "CoreMinimal.h"
#include "Host/AgentActivity.h"

/** What the agent's activity says in words. Pure: times come as arguments. */
namespace ActivityText
{
	/** "1,234" */
	FString MakeCount(int64 Number);

	/** "0:17", "12:03", "1:02:03" */
	FString MakeDuration(double Seconds);

	/** "request  local, qwen3  3.2 s, 1,234 + 56 tokens, 1,290 of 8,192 used": one line, without the time of day. */
	FString DescribeEntry(const Velmora::FAgentActivityEntry& Entry, double Seconds);

	/** What is copied of an event: when it began, its line, and all that belongs to it, whole. */
	FString MakeCopy(const Velmora::FAgentActivityEntry& Entry, double Seconds);

	/**
	 * "local, qwen3: 0:17, 1,234 tokens" for a turn that takes long; empty before.
	 * @param FromSeconds  How long a turn must have taken to be worth a word.
	 */
	FString DescribeTurn(const Velmora::FAgentTurnStatus& Turn, double FromSeconds);

	/** At most so many characters from the beginning, and how many are not shown. */
	FString CutForScreen(const FString& Text, int32 MaxLength);
}
