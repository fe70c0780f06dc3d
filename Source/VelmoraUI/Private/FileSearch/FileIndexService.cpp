#include "FileSearch/FileIndexService.h"

#include "CodeIntel/IgnorePatterns.h"
#include "Containers/StringView.h"
#include "FileCache/ProjectFileCache.h"
#include "FileSearch/BestFiles.h"
#include "FileSearch/FuzzyScore.h"
#include "Misc/Paths.h"
#include "Misc/ScopeLock.h"

namespace Velmora::UI
{

	namespace
	{

		struct FFileTypeExtension
		{
			const TCHAR* Extension;
			EFileType Type;
		};

		constexpr FFileTypeExtension FileTypeExtensions[] = {
			{ TEXT(".h"), EFileType::Code },
			{ TEXT(".hpp"), EFileType::Code },
			{ TEXT(".hh"), EFileType::Code },
			{ TEXT(".cpp"), EFileType::Code },
			{ TEXT(".cc"), EFileType::Code },
			{ TEXT(".cxx"), EFileType::Code },
			{ TEXT(".c"), EFileType::Code },
			{ TEXT(".cs"), EFileType::Code },
			{ TEXT(".uasset"), EFileType::Asset },
			{ TEXT(".umap"), EFileType::Asset },
			{ TEXT(".umat"), EFileType::Asset },
			{ TEXT(".uanim"), EFileType::Asset },
			{ TEXT(".ufont"), EFileType::Asset },
			{ TEXT(".umaterial"), EFileType::Asset },
			{ TEXT(".uparticlesystem"), EFileType::Asset },
			{ TEXT(".usoundcue"), EFileType::Asset },
			{ TEXT(".ini"), EFileType::Config },
			{ TEXT(".uplugin"), EFileType::Config },
			{ TEXT(".uproject"), EFileType::Config },
		};

		const FStringView HiddenExtensions[] = { TEXT(".uasset"), TEXT(".umap") };

		/** How much of a path its display path keeps. */
		int32 GetDisplayLength(const FString& FilePath)
		{
			for (const FStringView& Extension : HiddenExtensions)
			{
				const int32 Dot = FilePath.Len() - Extension.Len();
				if (Dot >= 0 && (*FilePath)[Dot] == TEXT('.') && FilePath.EndsWith(Extension))
				{
					return Dot;
				}
			}
			return FilePath.Len();
		}

	} // namespace

	FFileIndexService& FFileIndexService::Get()
	{
		static FFileIndexService Instance;
		return Instance;
	}

	FFileIndexService::~FFileIndexService()
	{
		Shutdown();
	}

	void FFileIndexService::StartIndexing()
	{
		FProjectFileCache& Cache = FProjectFileCache::Get();
		// The cache does the work. The flags mirror it for whoever reads them without asking it.
		Cache.StartIndexing();
		bIsIndexing.exchange(Cache.IsIndexing());
		bIsReady.exchange(Cache.IsReady());
	}

	void FFileIndexService::RefreshIndex()
	{
		FProjectFileCache::Get().RefreshCache();
	}

	void FFileIndexService::Shutdown()
	{
		// The cache belongs to the editor and goes on; only what is held here goes.
		bShutdownRequested.exchange(true);
		const FScopeLock Lock(&EntriesLock);
		Entries.Empty();
	}

	int32 FFileIndexService::GetFileCount() const
	{
		return FProjectFileCache::Get().GetFileCount();
	}

	bool FFileIndexService::IsReady() const
	{
		return FProjectFileCache::Get().IsReady();
	}

	bool FFileIndexService::IsIndexing() const
	{
		return FProjectFileCache::Get().IsIndexing();
	}

	TArray<FFileSearchResult> FFileIndexService::SearchFiles(const FString& Query, int32 MaxResults) const
	{
		TArray<FFileSearchResult> Results;
		const FProjectFileCache& Cache = FProjectFileCache::Get();
		if (Query.IsEmpty() || !Cache.IsReady())
		{
			return Results;
		}
		// 1. A snapshot, so that a scan that ends meanwhile cannot pull the records away.
		TArray<FProjectFileCacheEntry> Records;
		Cache.GetCachedFiles(Records);

		// 2. Each file is scored, but only the best are kept: a project has many times more files than a list has rows.
		FBestFiles Best(Records, MaxResults);
		for (int32 Index = 0; Index < Records.Num(); ++Index)
		{
			const FProjectFileCacheEntry& Record = Records[Index];
			if (Record.bIsDirectory)
			{
				continue;
			}
			// The display path is the path with a shorter end, so it need not be made to be scored.
			const int32 DisplayLength = GetDisplayLength(Record.Path);
			const int32 Score = ScoreFuzzyMatch(FStringView(Record.Path).Left(DisplayLength), Query);
			if (Score > 0)
			{
				Best.Offer({ Score, DisplayLength, Index });
			}
		}

		// 3. Entries, with strings of their own, are made for those alone.
		const TArray<FRankedFile> Ranked = Best.Take();
		Results.Reserve(Ranked.Num());
		for (const FRankedFile& File : Ranked)
		{
			Results.Emplace(CreateEntry(Records[File.Index]), File.Score);
		}
		return Results;
	}

	int32 FFileIndexService::CalculateFuzzyScore(const FString& FilePath, const FString& Query)
	{
		return ScoreFuzzyMatch(FilePath, Query);
	}

	EFileType FFileIndexService::ClassifyFile(const FString& FilePath)
	{
		// Rule files of modules end in ".cs", too, so they come first.
		if (FilePath.EndsWith(TEXT(".Build.cs")) || FilePath.EndsWith(TEXT(".Target.cs")))
		{
			return EFileType::Config;
		}
		const FString Extension = FPaths::GetExtension(FilePath, true);
		for (const FFileTypeExtension& Known : FileTypeExtensions)
		{
			if (Extension.Equals(Known.Extension, ESearchCase::IgnoreCase))
			{
				return Known.Type;
			}
		}
		return EFileType::Other;
	}

	bool FFileIndexService::ShouldIgnorePath(const FString& Path)
	{
		return CodeIntel::ShouldIgnorePath(Path, TArray<FString>());
	}

	TArray<FFileIndexEntry> FFileIndexService::ScanFilesystem()
	{
		TArray<FProjectFileCacheEntry> Records;
		FProjectFileCache::Get().GetCachedFiles(Records);
		TArray<FFileIndexEntry> Found;
		Found.Reserve(Records.Num());
		for (const FProjectFileCacheEntry& Record : Records)
		{
			Found.Add(CreateEntry(Record));
		}
		return Found;
	}

	void FFileIndexService::ScanDirectory(const FString& Directory, TArray<FFileIndexEntry>& OutEntries) {}

	void FFileIndexService::OnIndexingComplete(
		TOptional<TArray<FFileIndexEntry>>&& Result, double ElapsedSeconds, const FString& ErrorMessage)
	{
		bIsIndexing.exchange(false);
		// A scan that failed leaves the files of the last good one.
		if (!ErrorMessage.IsEmpty() || !Result.IsSet())
		{
			return;
		}
		{
			const FScopeLock Lock(&EntriesLock);
			Entries = MoveTemp(Result.GetValue());
		}
		bIsReady.exchange(true);
	}

	FFileIndexEntry FFileIndexService::CreateEntry(const FProjectFileCacheEntry& Record)
	{
		FFileIndexEntry Entry;
		Entry.FilePath = Record.Path;
		Entry.DisplayPath = CreateDisplayPath(Record.Path);
		Entry.bIsDirectory = Record.bIsDirectory;
		Entry.FileType = ConvertFileType(Record.Type);
		return Entry;
	}

	EFileType FFileIndexService::ConvertFileType(EProjectFileType Type)
	{
		// By number: the list of kinds is that of another library and may grow.
		switch (static_cast<uint8>(Type))
		{
		case 0:
			return EFileType::Code;
		case 1:
			return EFileType::Asset;
		case 2:
			return EFileType::Config;
		default:
			return EFileType::Other;
		}
	}

	FString FFileIndexService::CreateDisplayPath(const FString& FilePath)
	{
		return GetDisplayLength(FilePath) < FilePath.Len() ? FPaths::GetBaseFilename(FilePath, false) : FilePath;
	}

} // namespace Velmora::UI
