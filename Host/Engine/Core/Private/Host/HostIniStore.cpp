#include "Host/HostIniStore.h"

#include "Containers/Map.h"
#include "Host/FolderLock.h"
#include "Host/HostAtomicFile.h"
#include "Host/HostDelayedWork.h"
#include "Host/HostFileSystem.h"
#include "Host/HostFolders.h"
#include "Host/HostIniFile.h"
#include "Host/HostServices.h"
#include "Misc/FileHelper.h"
#include "HAL/FileManager.h"
#include "Misc/Optional.h"
#include "Misc/Paths.h"

#include <mutex>
#include <utility>

// Settings in memory, written a moment after they change, on a thread of their own: a slider that is dragged sets a
// value in each frame, and a slow disk must not hold up one of them.
//
// Several programs may have the same file open. So a change is not "the file as I know it" but "this key, from this
// value to that": when it is written, the file is read afresh under a lock and the changes alone are applied. What
// others wrote to other keys stays. A write that fails keeps its changes, in front of newer ones, and is tried again
// with the next; the user hears of each new reason once.

namespace
{
	constexpr double IniWriteSeconds = 0.5;
	/** A write takes a few. Where somebody sits on the lock, or there are none, it goes on without. */
	constexpr int32 IniLockMilliseconds = 1000;
	/** No configuration is nearly as long; a file that is one is something else. */
	constexpr int64 MaxIniBytes = 32 * 1024 * 1024;

	struct FIniChange
	{
		FString Section;
		FString Key;
		/** Unset takes the key away. */
		TOptional<FString> Value;
		/** What this program last knew of the key when it began to change it. */
		TOptional<FString> Before;
	};

	/** What this program has read or set last, by section and key. A line feed occurs in no name of an ini file. */
	using FIniKnown = TMap<FString, TOptional<FString>>;

	FString MakeKnownKey(const FString& Section, const FString& Key)
	{
		return Section + TEXT("\n") + Key;
	}

	TOptional<FString> GetValue(const FHostIniFile& Document, const FString& Section, const FString& Key)
	{
		FString Value;
		return Document.Get(Section, Key, Value) ? TOptional<FString>(MoveTemp(Value)) : TOptional<FString>();
	}

	bool IsSame(const TOptional<FString>& Left, const TOptional<FString>& Right)
	{
		return Left.IsSet() == Right.IsSet() && (!Left.IsSet() || Left.GetValue().Equals(Right.GetValue()));
	}

	bool IsEmptyValue(const TOptional<FString>& Value)
	{
		return !Value.IsSet() || Value.GetValue().IsEmpty();
	}

	struct FIniEntry
	{
		FString Path;
		FHostIniFile Document;
		FIniKnown Known;
		/** What is not on the disk yet, in order; each key once. */
		TArray<FIniChange> Changes;
		/** What was told last about the file; empty while it can be written. */
		FString Failure;
	};

	void Apply(FHostIniFile& Document, const TArray<FIniChange>& Changes)
	{
		for (const FIniChange& Change : Changes)
		{
			if (Change.Value.IsSet())
			{
				Document.Set(Change.Section, Change.Key, Change.Value.GetValue());
			}
			else
			{
				Document.Remove(Change.Section, Change.Key);
			}
		}
	}

	/** False, with a reason, when there is something that cannot be read. A missing file is an empty one. */
	bool ReadIni(const FString& Path, FHostIniFile& OutDocument, FString& OutReason)
	{
		OutDocument = FHostIniFile();
		switch (HostGetPathKind(Path))
		{
		case EHostPathKind::Missing:
			return true;
		case EHostPathKind::Folder:
			OutReason = TEXT("the path is a folder");
			return false;
		case EHostPathKind::Other:
			OutReason = TEXT("the path is no file");
			return false;
		case EHostPathKind::File:
			break;
		}
		if (IFileManager::Get().FileSize(*Path) > MaxIniBytes)
		{
			OutReason = TEXT("the file there is too large to be a configuration");
			return false;
		}
		TArray<uint8> Bytes;
		if (!FFileHelper::LoadFileToArray(Bytes, *Path, FILEWRITE_Silent))
		{
			OutReason = TEXT("the file there cannot be read, and would be lost");
			return false;
		}
		OutDocument = FHostIniFile(std::string_view(reinterpret_cast<const char*>(Bytes.GetData()), static_cast<std::size_t>(Bytes.Num())));
		return true;
	}
}

struct FHostIniStore::FState
{
	explicit FState(const FString& InFolder)
		: Folder(InFolder)
		, Writer([this]() { WriteAll(); }, IniWriteSeconds)
	{
	}

	/** Reads the file at the first call. Under the lock. */
	FIniEntry& FindEntry(const FString& Path)
	{
		for (const TUniquePtr<FIniEntry>& Entry : Entries)
		{
			if (Entry->Path.Equals(Path))
			{
				return *Entry;
			}
		}
		TUniquePtr<FIniEntry>& Entry = Entries.Add_GetRef(MakeUnique<FIniEntry>());
		Entry->Path = Path;
		FString Reason;
		ReadIni(Path, Entry->Document, Reason);
		return *Entry;
	}

	// 1. What stands in memory is changed at once, for whoever reads it next.
	void Change(const FString& Path, FIniChange&& NewChange)
	{
		{
			const std::lock_guard<std::mutex> Lock(Mutex);
			FIniEntry& Entry = FindEntry(Path);
			const TOptional<FString> Old = GetValue(Entry.Document, NewChange.Section, NewChange.Key);
			TOptional<FString>* const Known = Entry.Known.Find(MakeKnownKey(NewChange.Section, NewChange.Key));
			NewChange.Before = Known ? *Known : Old;
			Entry.Known.Add(MakeKnownKey(NewChange.Section, NewChange.Key), NewChange.Value);
			if (IsSame(Old, NewChange.Value))
			{
				return;
			}
			Apply(Entry.Document, { NewChange });
			// 2. A key waits for the disk once, with its newest value and with what stood there before the first change.
			if (const FIniChange* const Waiting = Entry.Changes.FindByPredicate(
					[&NewChange](const FIniChange& Other) { return Other.Key == NewChange.Key && Other.Section == NewChange.Section; }))
			{
				NewChange.Before = Waiting->Before;
			}
			Entry.Changes.RemoveAll(
				[&NewChange](const FIniChange& Other) { return Other.Key == NewChange.Key && Other.Section == NewChange.Section; });
			Entry.Changes.Add(MoveTemp(NewChange));
		}
		Writer.Request();
	}

	/** On the writer's thread; entries are never removed, so they stay where they are. */
	void WriteAll()
	{
		TArray<FIniEntry*> Waiting;
		{
			const std::lock_guard<std::mutex> Lock(Mutex);
			for (const TUniquePtr<FIniEntry>& Entry : Entries)
			{
				if (Entry->Changes.Num() > 0)
				{
					Waiting.Add(Entry.Get());
				}
			}
		}
		for (FIniEntry* const Entry : Waiting)
		{
			Write(*Entry);
		}
	}

	// 1. The changes are taken out; those that come meanwhile gather anew.
	void Write(FIniEntry& Entry)
	{
		TArray<FIniChange> Writing;
		{
			const std::lock_guard<std::mutex> Lock(Mutex);
			std::swap(Writing, Entry.Changes);
		}
		// What stands there now, not what stood there at the start: somebody else may have written.
		// 2. Read, change, write, with everybody else locked out.
		const FString Folder = FPaths::GetPath(Entry.Path);
		IFileManager::Get().MakeDirectory(*Folder, true);
		const FFolderLock Lock(HostFileSystem::ToBytes(Folder), IniLockMilliseconds);
		FHostIniFile Document;
		FString Reason;
		bool bWritten = ReadIni(Entry.Path, Document, Reason);
		if (bWritten)
		{
			const std::string Before = Document.GetBytes();
			// Nobody empties what he has not seen.
			Writing.RemoveAll(
				[&Document](const FIniChange& Change)
				{
					const TOptional<FString> There = GetValue(Document, Change.Section, Change.Key);
					return IsEmptyValue(Change.Value) && !IsEmptyValue(There) && !IsSame(There, Change.Before);
				});
			Apply(Document, Writing);
			const std::string After = Document.GetBytes();
			bWritten =
				Before == After || HostSaveFile(Entry.Path, After.data(), static_cast<int64>(After.size()), HostWritePrivate, Reason);
		}
		// 3. Memory follows the disk, or the changes wait again.
		FString Told;
		{
			const std::lock_guard<std::mutex> Lock(Mutex);
			if (bWritten)
			{
				Entry.Document = MoveTemp(Document);
				Apply(Entry.Document, Entry.Changes);
				Entry.Failure.Reset();
			}
			else
			{
				// They wait again, in front of what was set meanwhile.
				Writing.RemoveAll(
					[&Entry](const FIniChange& Old) {
						return Entry.Changes.ContainsByPredicate(
							[&Old](const FIniChange& New) { return New.Key == Old.Key && New.Section == Old.Section; });
					});
				Writing.Append(Entry.Changes);
				Entry.Changes = MoveTemp(Writing);
				Told = Entry.Failure.Equals(Reason) ? FString() : Reason;
				Entry.Failure = Reason;
			}
		}
		if (!Told.IsEmpty())
		{
			FHostServices::ReportSaveFailure(Entry.Path, Told);
		}
	}

	const FString Folder;
	std::mutex Mutex;
	TArray<TUniquePtr<FIniEntry>> Entries;
	/** Last: its thread uses the others. */
	FHostDelayedWork Writer;
};

FHostIniStore::FHostIniStore(const FString& InFolder)
	: State(MakeUnique<FState>(InFolder))
{
}

FHostIniStore::~FHostIniStore()
{
	Finish();
}

FString FHostIniStore::GetPath(const FString& File) const
{
	int32 Slash = INDEX_NONE;
	if (File.FindChar(TEXT('/'), Slash))
	{
		return FPaths::ConvertRelativePathToFull(File);
	}
	return State->Folder / (File.EndsWith(TEXT(".ini")) ? File : File + TEXT(".ini"));
}

// A read counts as knowing the value: who clears a key afterwards means this value, and no newer one of another program.
bool FHostIniStore::Get(const FString& File, const FString& Section, const FString& Key, FString& OutValue) const
{
	const FString Path = GetPath(File);
	const std::lock_guard<std::mutex> Lock(State->Mutex);
	FIniEntry& Entry = State->FindEntry(Path);
	const TOptional<FString> Value = GetValue(Entry.Document, Section, Key);
	Entry.Known.Add(MakeKnownKey(Section, Key), Value);
	OutValue = Value.Get(OutValue);
	return Value.IsSet();
}

void FHostIniStore::Set(const FString& File, const FString& Section, const FString& Key, const FString& Value)
{
	State->Change(GetPath(File), FIniChange{ Section, Key, Value, {} });
}

void FHostIniStore::Remove(const FString& File, const FString& Section, const FString& Key)
{
	State->Change(GetPath(File), FIniChange{ Section, Key, {}, {} });
}

bool FHostIniStore::Flush(const FString& File)
{
	const FString Path = GetPath(File);
	const std::lock_guard<std::mutex> Lock(State->Mutex);
	return State->FindEntry(Path).Failure.IsEmpty();
}

void FHostIniStore::Finish()
{
	bool bWaiting = false;
	{
		const std::lock_guard<std::mutex> Lock(State->Mutex);
		bWaiting = State->Entries.ContainsByPredicate([](const TUniquePtr<FIniEntry>& Entry) { return Entry->Changes.Num() > 0; });
	}
	if (bWaiting)
	{
		State->Writer.Request();
	}
	State->Writer.Finish();
}
