#pragma once

#include "CoreMinimal.h"

class FRecordLine;
class FRecordWriter;

/**
 * Small files of the user's that decide how the window looks and what keys do: they go with a recording, and are put below a folder of
 * its own for a replay. What they are is a table here, so that a recording from elsewhere can name no other file.
 */
namespace RecordSeeds
{
	/** The project folder's own name. */
	FString GetProjectName();
	/** The folder for a project of that name below another one; a name that could lead elsewhere becomes "project". */
	FString MakeProjectPath(const FString& Folder, const FString& Name);
	/** Writes those that there are; with masked texts those alone that hold none. */
	void Write(FRecordWriter& Writer, bool bHasUser);
	/** Makes the file that a line holds. False when it names none of the table. Paths and project folder are those of the replay. */
	bool Restore(const FRecordLine& Line);
}
