#include "FileCache/ProjectFileList.h"

#include <algorithm>

#include "FileCache/ProjectFileKinds.h"
#include "Host/HostFileNames.h"

namespace Velmora
{
	/** Fills an array from its start. */
	struct FRecordWriter
	{
		TArray<FProjectFileCacheEntry>& Out;

		/** Records from before, whose memory is used again. */
		const int32 OldCount;
		int32 Count;

		void Add(FStringView Folder, FStringView Name, EProjectFileType Type, bool bIsDirectory)
		{
			FProjectFileCacheEntry& Record = Count < OldCount ? Out.GetData()[Count] : Out.Emplace_GetRef();
			++Count;
			// Both parts go straight to their place: copied together elsewhere first, they would be read before they are written out.
			Record.Path.Reset(Folder.Len() + Name.Len());
			Record.Path.AppendChars(Folder.GetData(), Folder.Len());
			Record.Path.AppendChars(Name.GetData(), Name.Len());
			Record.bIsDirectory = bIsDirectory;
			Record.Type = Type;
		}
	};

	FFolderFiles::FFolderFiles(const FString& Folder)
		: Text(Folder.IsEmpty() ? Folder : Folder + TEXT('/'))
		, FolderLength(Text.Len())
	{
	}

	void FFolderFiles::Add(std::string_view Name)
	{
		if (std::all_of(Name.begin(), Name.end(), [](char Byte) { return static_cast<unsigned char>(Byte) < 0x80; }))
		{
			for (const char Byte : Name)
			{
				Text.AppendChar(static_cast<TCHAR>(Byte));
			}
		}
		else
		{
			Text += HostFileNameFromBytes(Name);
		}
		Marks.Add({ static_cast<uint32>(Text.Len()), static_cast<uint32>(ClassifyProjectFile(Name)) });
	}

	void FFolderFiles::Finish()
	{
		Text.Shrink();
		Marks.Shrink();
	}

	FStringView FFolderFiles::GetName(int32 Index) const
	{
		const int32 Start = Index == 0 ? FolderLength : static_cast<int32>(Marks[Index - 1].End);
		return FStringView(*Text + Start, static_cast<int32>(Marks[Index].End) - Start);
	}

	bool FFolderFiles::HasSameNames(const FFolderFiles& Other) const
	{
		return Marks == Other.Marks && Text.Equals(Other.Text, ESearchCase::CaseSensitive);
	}

	FString FFolderFiles::MakePath(FStringView Name) const
	{
		return FStringView(*Text, FolderLength) + FString(Name);
	}

	void FFolderFiles::AppendRecords(FRecordWriter& Writer) const
	{
		const FStringView Folder(*Text, FolderLength);
		if (FolderLength > 0)
		{
			Writer.Add(Folder.LeftChop(1), FStringView(*Text, 0), EProjectFileType::Other, true);
		}
		int32 Start = FolderLength;
		for (const FMark& Mark : Marks)
		{
			const int32 End = static_cast<int32>(Mark.End);
			Writer.Add(Folder, FStringView(*Text + Start, End - Start), static_cast<EProjectFileType>(Mark.Type), false);
			Start = End;
		}
	}

	FProjectFileList::FProjectFileList(std::vector<std::shared_ptr<const FFolderFiles>> InFolders)
		: Folders(std::move(InFolders))
	{
		for (const std::shared_ptr<const FFolderFiles>& Folder : Folders)
		{
			Count += Folder->GetRecordCount();
		}
	}

	void FProjectFileList::CopyTo(TArray<FProjectFileCacheEntry>& Out) const
	{
		if (Out.Num() > Count)
		{
			Out.SetNum(Count);
		}
		Out.Reserve(Count);
		FRecordWriter Writer{ Out, Out.Num(), 0 };
		for (const std::shared_ptr<const FFolderFiles>& Folder : Folders)
		{
			Folder->AppendRecords(Writer);
		}
	}
}
