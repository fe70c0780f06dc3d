#pragma once

#include "CoreMinimal.h"

/**
 * Which tabs are open, from one start to the next, in a file of the user's: one name a line in their order, a star before the one in
 * front. Game thread.
 */
class FOpenTabs
{
public:
	explicit FOpenTabs(const FString& InPath);
	/** Keeps what has changed since the last turn: while the tabs still stand open. */
	~FOpenTabs();
	FOpenTabs(const FOpenTabs&) = delete;
	FOpenTabs& operator=(const FOpenTabs&) = delete;

	/** Opens what was open behind those that are, and brings to the front what stood there. Names that nobody knows are left out. */
	void Restore();

	/** Once a turn of the loop: keeps what has changed. */
	void NoteTurn();

private:
	void Look();
	static FString Describe();

	const FString Path;
	/** As the file has it, or as it could not be written. */
	FString Kept;
	uint64 SeenFrames = 0;
};
