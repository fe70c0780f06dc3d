#pragma once

#include "Host/FileDescriptor.h"
#include "Host/Outcome.h"

#include <string>

/**
 * Makes programs, and threads, that read, change and write something in one folder take turns, for the life of this object. By a lock
 * of the folder itself: it leaves nothing behind, and a file may be replaced while somebody waits, which would take its lock along.
 */
class CORE_API FFolderLock
{
public:
	/** Tries for that long, and then does without. The thread that holds one waits in vain for another. */
	FFolderLock(const std::string& Path, int32 TimeoutMilliseconds);

	/** Done when it is held, Busy when another program holds it, anything else where there are no locks or no such folder. */
	const FOutcome& GetOutcome() const { return Outcome; }

	/** Makes renamings and new files in the folder last. */
	FOutcome Flush() const;

private:
	FFileDescriptor Folder;
	FOutcome Outcome;
};
