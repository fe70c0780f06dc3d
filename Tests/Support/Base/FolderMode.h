#pragma once

#include "Host/HostPaths.h"

/** For a scope, FPaths hands its folders out as the editor does, relative to that base folder, or absolute after all. */
class FFolderMode
{
public:
	FFolderMode(bool bRelative, const FString& BaseFolder)
		: BaseBefore(FHostPaths::GetBaseDir())
		, bRelativeBefore(FHostPaths::AreFoldersRelative())
	{
		FHostPaths::SetBaseDir(BaseFolder);
		FHostPaths::UseRelativeFolders(bRelative);
	}
	~FFolderMode()
	{
		FHostPaths::UseRelativeFolders(bRelativeBefore);
		FHostPaths::SetBaseDir(BaseBefore);
	}
	FFolderMode(const FFolderMode&) = delete;
	FFolderMode& operator=(const FFolderMode&) = delete;

private:
	FString BaseBefore;
	bool bRelativeBefore;
};
