#pragma once

#include "CoreMinimal.h"

#include <string>

/**
 * Where this run keeps conversations, undo and the unsent prompt: in the user's data folder; for the time of the run alone; or, where
 * that folder cannot be written, in memory, so that everything works and nothing typed is lost before the computer is turned off.
 */
namespace StoreFolders
{
	/**
	 * Before the library is used.
	 * @param bKeepsNothing  Nothing is left behind: what is kept goes with Remove, and no folder is made for the user.
	 * @param OutNotice      What is to be said to the user once; empty when all is as usual.
	 * @return Empty, or a sentence that says why no folder can be had.
	 */
	FString SetUp(bool bKeepsNothing, FString& OutNotice);

	/**
	 * After SetUp found the user's folder fit to be written: what runs kept in memory that could not write to it is there again.
	 * @return What is to be said to the user once; empty when all is as usual.
	 */
	FString BringBack();

	/** A new folder for this user alone, in memory where there is one; empty with a reason in errno. Whoever makes it deletes it. */
	std::string MakeVolatileFolder();

	/** Deletes what was kept for the time of the run. */
	void Remove();
}
