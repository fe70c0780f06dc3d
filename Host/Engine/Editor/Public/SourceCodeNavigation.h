#pragma once

#include "Containers/UnrealString.h"

/** Opens source files in the user's code editor; which one is the program's affair (FHostEditor). Game thread. */
class EDITOR_API FSourceCodeNavigation
{
public:
	/** @return False when the file does not exist or could not be opened. Line and column count from 1; 0 leaves them open. */
	static bool OpenSourceFile(const FString& AbsoluteSourcePath, int32 LineNumber = 0, int32 ColumnNumber = 0);
};
