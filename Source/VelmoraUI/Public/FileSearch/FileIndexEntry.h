#pragma once

#include "CoreMinimal.h"
#include "Misc/DateTime.h"

namespace Velmora::UI
{

	/** What a file is for, as far as the dropdown shows it. */
	enum class EFileType : uint8
	{
		Code = 0,
		Asset = 1,
		Config = 2,
		Other = 3
	};

	/** One file or folder of the project, as the search sees it. */
	struct FFileIndexEntry
	{
		/** As the project file cache reports it. This is what is attached to a conversation. */
		FString FilePath;
		/** What is shown and scored: assets stand without their extension. */
		FString DisplayPath;
		/** Always zero: the cache does not know it. */
		FDateTime ModifiedTime = FDateTime(0);
		/** Always 0, for the same reason. */
		int64 FileSize = 0;
		bool bIsDirectory = false;
		EFileType FileType = EFileType::Other;
	};

} // namespace Velmora::UI
