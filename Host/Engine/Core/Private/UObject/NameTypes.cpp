#include "UObject/NameTypes.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <new>
#include <shared_mutex>
#include <unordered_map>

namespace
{
	struct FNameTable
	{
		std::shared_mutex Mutex;
		std::unordered_multimap<uint32, std::unique_ptr<FNameEntry>> Entries;

		const FNameEntry* Find(uint32 Hash, FStringView Name) const
		{
			const auto [First, Last] = Entries.equal_range(Hash);
			for (auto It = First; It != Last; ++It)
			{
				if (FStringView(It->second->Text) == Name)
				{
					return It->second.get();
				}
			}
			return nullptr;
		}
	};

	/** Never destroyed, since names are used to the very end of the process. */
	FNameTable& GetNameTable()
	{
		alignas(FNameTable) static unsigned char Storage[sizeof(FNameTable)];
		static FNameTable* const Table = new (Storage) FNameTable;
		return *Table;
	}

	/**
	 * What this thread asked for last, by where its text stands: nearly all names are literals that are asked for again and again,
	 * and for those the table needs neither its lock nor a hash of the text.
	 */
	const FNameEntry*& GetRecentEntry(const TCHAR* Text)
	{
		constexpr std::size_t Count = 64;
		thread_local const FNameEntry* Recent[Count] = {};
		const std::uintptr_t Address = reinterpret_cast<std::uintptr_t>(Text);
		return Recent[(Address >> 2 ^ Address >> 8) % Count];
	}
}

const FNameEntry* FName::Intern(FStringView Name)
{
	if (Name.IsEmpty())
	{
		return nullptr;
	}
	const FNameEntry*& Recent = GetRecentEntry(Name.GetData());
	if (Recent && FStringView(Recent->Text).Equals(Name, ESearchCase::CaseSensitive))
	{
		return Recent;
	}
	if (Name == FStringView(TEXT("None")))
	{
		return nullptr;
	}
	FNameTable& Table = GetNameTable();
	const uint32 Hash = GetTypeHash(Name);
	{
		const std::shared_lock<std::shared_mutex> Lock(Table.Mutex);
		if (const FNameEntry* Known = Table.Find(Hash, Name))
		{
			Recent = Known;
			return Known;
		}
	}
	const std::unique_lock<std::shared_mutex> Lock(Table.Mutex);
	if (const FNameEntry* Known = Table.Find(Hash, Name))
	{
		return Known; // Added by another thread in between.
	}
	std::unique_ptr<FNameEntry> Entry = std::make_unique<FNameEntry>();
	Entry->Text = FString(Name);
	Entry->Hash = Hash;
	const FNameEntry* Added = Entry.get();
	Table.Entries.emplace(Hash, std::move(Entry));
	return Added;
}

const FString& FName::GetText() const
{
	static const FString None(TEXT("None"));
	return Entry ? Entry->Text : None;
}
