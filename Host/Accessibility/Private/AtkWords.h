#pragma once

#include "Host/AccessTree.h"

#include <atk/atk.h>

#include <string>

/** The host's words for roles, states and places in ATK's. Pure. */
namespace AtkWords
{
	AtkRole GetRole(const FAccessNode& Node);
	/** Adds what holds of a node that is shown. */
	void AddStates(const FAccessNode& Node, AtkStateSet* Out);
	/** Calls with each of ATK's states that one of the host's bits stands for. */
	void ForEachState(uint32 Bits, TFunctionRef<void(AtkStateType State, uint32 Bit)> Visit);

	/** Places are UTF-16 units here and characters there. Both clamp to the text. */
	int32 ToCharacters(const FString& Text, int32 Units);
	int32 ToUnits(const FString& Text, int32 Characters);
	std::string ToUtf8(const FString& Text);
}
