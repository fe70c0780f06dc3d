#pragma once

#include "CoreMinimal.h"

#include <fstream>

/** Writes down the frames of a session, one a line as it comes: who measures sees when Slate was awake. */
class FFrameLog
{
public:
	/** False when the file cannot be written. */
	bool Open(const FString& Path);
	/** The frame that has just been run: seconds since 1970, milliseconds of work, pixels painted. */
	void NoteFrame();

private:
	std::ofstream File;
};
