#pragma once

#include "CoreMinimal.h"

/**
 * Which file a program keeps its unsent prompt in. Several programs at work on one project have one each, so that none
 * overwrites or deletes another's; a lock that ends with the process tells whose is whose. What a program left that is no more
 * is taken over by the next one that has no draft of its own.
 */
class FDraftFile
{
public:
	/** @param Path  The file of a program that is alone; the others stand beside it. */
	explicit FDraftFile(const FString& Path);
	~FDraftFile();
	FDraftFile(const FDraftFile&) = delete;
	FDraftFile& operator=(const FDraftFile&) = delete;

	/** That of the constructor, too, where nothing can be locked. */
	const FString& GetPath() const { return Own; }

private:
	FString Own;
	int Lock = -1;
};
