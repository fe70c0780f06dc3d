#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "CoreMinimal.h"
#include "FileCache/ProjectFileCache.h"

namespace Velmora
{
	struct FRecordWriter;

	/**
	 * The files that stand directly in one folder. Packed in two blocks, since a copy of the list walks over all of them. Not
	 * changed any more once a list holds it.
	 */
	class FFolderFiles
	{
	public:
		/** Folder is the folder's path below the project, empty for the project itself. */
		explicit FFolderFiles(const FString& Folder);

		/** Name as on disk. Names are added in order. */
		void Add(std::string_view Name);

		/** Gives back what was reserved while adding. */
		void Finish();

		int32 Num() const { return Marks.Num(); }
		FStringView GetName(int32 Index) const;
		bool HasSameNames(const FFolderFiles& Other) const;

		/** The path of a name in the folder. */
		FString MakePath(FStringView Name) const;

		/** Records in the list: the files, and the folder itself unless it is the project. */
		int32 GetRecordCount() const { return Num() + (FolderLength == 0 ? 0 : 1); }
		void AppendRecords(FRecordWriter& Writer) const;

	private:
		/** Where a name ends in the text, and what the file is for. */
		struct FMark
		{
			uint32 End : 30;
			uint32 Type : 2;

			bool operator==(const FMark&) const = default;
		};

		/** The folder's path with a '/' at the end, then the names one behind the other. */
		FString Text;
		TArray<FMark> Marks;

		/** With the '/'. */
		int32 FolderLength = 0;
	};

	/**
	 * The list of a project's files at one moment: a folder's files are shared with the list before and after as long as they
	 * are the same, so that a new list costs a pointer a folder. Immutable.
	 */
	class FProjectFileList
	{
	public:
		FProjectFileList() = default;
		explicit FProjectFileList(std::vector<std::shared_ptr<const FFolderFiles>> InFolders);

		int32 Num() const { return Count; }
		void CopyTo(TArray<FProjectFileCacheEntry>& Out) const;

	private:
		std::vector<std::shared_ptr<const FFolderFiles>> Folders;
		int32 Count = 0;
	};
}
