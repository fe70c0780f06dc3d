#pragma once

#include "Host/AccessTree.h"

/** What differs between two looks at the window. Pure. */
class FAccessChanges
{
public:
	using FNodes = TMap<uint32, FAccessNode>;
	static TArray<FAccessChange> Compare(const FNodes& Before, const FNodes& Now, uint32 RootId);

private:
	/** One change each for what was taken out of the tree or moved to another parent, and not for what is below it. */
	static void AddRemoved(const FNodes& Before, const FNodes& Now, const FAccessNode& Node, TArray<FAccessChange>& Out);
	static void AddAdded(const FNodes& Before, const FNodes& Now, const FAccessNode& Node, TArray<FAccessChange>& Out);
	static void AddDifferences(const FAccessNode& Old, const FAccessNode& New, TArray<FAccessChange>& Out);
	static void AddTextDifferences(const FAccessNode& Old, const FAccessNode& New, TArray<FAccessChange>& Out);
};
