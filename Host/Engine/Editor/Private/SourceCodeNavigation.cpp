#include "SourceCodeNavigation.h"

#include "Host/HostEditor.h"
#include "Logging/LogMacros.h"
#include "Misc/Paths.h"

DEFINE_LOG_CATEGORY_STATIC(LogSourceCodeNavigation, Log, All);

bool FSourceCodeNavigation::OpenSourceFile(const FString& AbsoluteSourcePath, int32 LineNumber, int32 ColumnNumber)
{
	if (!FPaths::FileExists(AbsoluteSourcePath))
	{
		UE_LOG(LogSourceCodeNavigation, Warning, TEXT("There is no source file %s"), *AbsoluteSourcePath);
		return false;
	}
	return FHostEditor::OpenSource(FHostOpenedSource{ AbsoluteSourcePath, LineNumber, ColumnNumber });
}
