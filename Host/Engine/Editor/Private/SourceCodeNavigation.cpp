#include "SourceCodeNavigation.h"

#include "Host/HostEditor.h"
#include "Misc/Paths.h"

bool FSourceCodeNavigation::OpenSourceFile(const FString& AbsoluteSourcePath, int32 LineNumber, int32 ColumnNumber)
{
	if (!FPaths::FileExists(AbsoluteSourcePath))
	{
		FHostEditor::TellMissingSource(AbsoluteSourcePath);
		return false;
	}
	return FHostEditor::OpenSource(FHostOpenedSource{ AbsoluteSourcePath, LineNumber, ColumnNumber });
}
