#include "Host/StoredConversations.h"

#include "Host/FolderLock.h"
#include "Host/HostAtomicFile.h"
#include "Host/HostFileNames.h"
#include "Host/HostFolders.h"
#include "Host/StoreLocation.h"
#include "Misc/FileHelper.h"
#include "Store/ConversationStore.h"
#include "Text/Utf8Text.h"

namespace Velmora
{
	namespace
	{
		constexpr int32 MaxNameLength = 200;
		constexpr TCHAR PinnedWord[] = TEXT("pinned");
		constexpr TCHAR NamedWord[] = TEXT("named");

		using FMarks = TMap<FString, FConversationMark>;

		/** "id<TAB>pinned<TAB>name", a line each. Lines that read otherwise are left out. What is not there has none. */
		TOutcome<FMarks> ReadFile(const FString& Path)
		{
			FMarks Marks;
			if (HostGetPathKind(Path) == EHostPathKind::Missing)
			{
				return Marks;
			}
			TArray<FString> Lines;
			if (HostGetPathKind(Path) != EHostPathKind::File || !FFileHelper::LoadFileToStringArray(Lines, *Path))
			{
				return FOutcome(EOutcome::Failed,
					"The names of conversations in " + HostFileNameToBytes(Path) + " cannot be read, so they stay as they are.",
					HostFileNameToBytes(Path));
			}
			for (const FString& Line : Lines)
			{
				TArray<FString> Fields;
				Line.ParseIntoArray(Fields, TEXT("\t"), false);
				const bool bIsPinned = Fields.Num() == 3 && Fields[1] == PinnedWord;
				if (bIsPinned || (Fields.Num() == 3 && Fields[1] == NamedWord))
				{
					Marks.Add(Fields[0], FConversationMark{ Fields[2], bIsPinned });
				}
			}
			return Marks;
		}

		FString WriteFile(const FString& Path, const TMap<FString, FConversationMark>& Marks)
		{
			FString Text;
			for (const TPair<FString, FConversationMark>& Mark : Marks)
			{
				if (!Mark.Value.IsEmpty())
				{
					Text +=
						Mark.Key + TEXT("\t") + (Mark.Value.bIsPinned ? PinnedWord : NamedWord) + TEXT("\t") + Mark.Value.Name + TEXT("\n");
				}
			}
			const std::string Bytes = Utf8Text::FromString(Text);
			FString Reason;
			HostSaveFile(Path, Bytes.data(), static_cast<int64>(Bytes.size()), HostWritePrivate, Reason);
			return Reason;
		}

		FString MakeOneLine(const FString& Name)
		{
			FString Line = Name.Left(MaxNameLength);
			for (const TCHAR Break : { TEXT('\t'), TEXT('\n'), TEXT('\r') })
			{
				Line.ReplaceCharInline(Break, TEXT(' '));
			}
			return Line.TrimStartAndEnd();
		}

		/** The operators of texts ignore letter case; a name does not. */
		bool IsSame(const FConversationMark& A, const FConversationMark& B)
		{
			return A.bIsPinned == B.bIsPinned && A.Name.Equals(B.Name, ESearchCase::CaseSensitive);
		}
	}

	FString FStoredConversations::Load(const FString& Id, FConversationMetadata& OutConversation)
	{
		TOutcome<FConversationMetadata> Loaded = FConversationStore::GetDefault()->Load(Id);
		if (!Loaded)
		{
			return Loaded.Is(EOutcome::Missing) ? FString(TEXT("The conversation is no longer in the store."))
												: Utf8Text::ToString(Loaded.GetWords());
		}
		OutConversation = MoveTemp(*Loaded);
		return FString();
	}

	FString FStoredConversations::Delete(const FString& Id)
	{
		if (const FOutcome Deleted = FConversationStore::GetDefault()->Delete(Id); !Deleted && !Deleted.Is(EOutcome::Missing))
		{
			return Utf8Text::ToString(Deleted.GetWords());
		}
		return ChangeMark(Id, [](FConversationMark& Mark) { Mark = FConversationMark(); });
	}

	TMap<FString, FConversationMark> FStoredConversations::ReadMarks()
	{
		TOutcome<FMarks> Marks = ReadFile(GetStoreLocation().GetMarksPath());
		return Marks ? MoveTemp(*Marks) : FMarks();
	}

	FString FStoredConversations::ChangeMark(const FString& Id, TFunctionRef<void(FConversationMark&)> Edit)
	{
		const FStoreLocation Location = GetStoreLocation();
		if (const FOutcome Made = MakePrivateFolder(Location.ConversationFolder); !Made)
		{
			return Utf8Text::ToString(Made.GetWords());
		}
		// One program and one thread at a time. Where no lock can be had the later one stays, as with any file.
		const FFolderLock Turn(HostFileNameToBytes(Location.ConversationFolder), FConversationStore::WorkerTimeoutMilliseconds);
		TOutcome<FMarks> Marks = ReadFile(Location.GetMarksPath());
		if (!Marks)
		{
			return Utf8Text::ToString(Marks.GetWords());
		}
		FConversationMark& Mark = Marks->FindOrAdd(Id);
		const FConversationMark Before = Mark;
		Edit(Mark);
		Mark.Name = MakeOneLine(Mark.Name);
		return IsSame(Mark, Before) ? FString() : WriteFile(Location.GetMarksPath(), *Marks);
	}
}
