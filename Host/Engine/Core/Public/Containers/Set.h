#pragma once

#include "Containers/Array.h"
#include "Containers/SlotTable.h"

/** How a set tells elements apart. Replace it for another equality. */
template <typename ElementType>
struct DefaultKeyFuncs
{
	static bool Matches(const ElementType& A, const ElementType& B) { return A == B; }
	static uint32 GetKeyHash(const ElementType& Key) { return GetTypeHash(Key); }
};

struct FSetElementId
{
	int32 Index = INDEX_NONE;
	bool operator==(const FSetElementId&) const = default;
};

/** Elements without duplicates, in the order of insertion until one is removed. Of equal elements the first stays. */
template <typename InElementType, typename KeyFuncs, typename Allocator>
class TSet
{
	using FTable = UE::Slots::TTable<InElementType>;

public:
	using ElementType = InElementType;
	using TIterator = UE::Slots::TSlotIterator<FTable, const ElementType>;
	using TConstIterator = UE::Slots::TSlotIterator<const FTable, const ElementType>;

	TSet() = default;
	TSet(std::initializer_list<ElementType> List) { Append(List); }
	explicit TSet(const TArray<ElementType>& Array) { Append(Array); }

	int32 Num() const { return Table.Num(); }
	bool IsEmpty() const { return Table.Num() == 0; }
	bool Contains(const ElementType& Key) const { return FindSlot(Key) != INDEX_NONE; }
	const ElementType* Find(const ElementType& Key) const
	{
		const int32 Slot = FindSlot(Key);
		return Slot != INDEX_NONE ? &Table.At(Slot) : nullptr;
	}
	ElementType* Find(const ElementType& Key)
	{
		const int32 Slot = FindSlot(Key);
		return Slot != INDEX_NONE ? &Table.At(Slot) : nullptr;
	}

	FSetElementId Add(const ElementType& Element, bool* bIsAlreadyInSetPtr = nullptr)
	{
		return Emplace(ElementType(Element), bIsAlreadyInSetPtr);
	}
	FSetElementId Add(ElementType&& Element, bool* bIsAlreadyInSetPtr = nullptr)
	{
		return Emplace(static_cast<ElementType&&>(Element), bIsAlreadyInSetPtr);
	}
	FSetElementId Emplace(ElementType&& Element, bool* bIsAlreadyInSetPtr = nullptr)
	{
		const uint32 Hash = KeyFuncs::GetKeyHash(Element);
		int32 Slot = Table.Find(Hash, [&Element](const ElementType& Other) { return KeyFuncs::Matches(Other, Element); });
		if (bIsAlreadyInSetPtr)
		{
			*bIsAlreadyInSetPtr = Slot != INDEX_NONE;
		}
		if (Slot == INDEX_NONE)
		{
			Slot = Table.Add(Hash, static_cast<ElementType&&>(Element));
		}
		return { Slot };
	}
	ElementType& FindOrAdd(const ElementType& Element, bool* bIsAlreadyInSetPtr = nullptr)
	{
		int32 Slot = FindSlot(Element);
		if (bIsAlreadyInSetPtr)
		{
			*bIsAlreadyInSetPtr = Slot != INDEX_NONE;
		}
		if (Slot == INDEX_NONE)
		{
			Slot = Table.Add(KeyFuncs::GetKeyHash(Element), ElementType(Element));
		}
		return Table.At(Slot);
	}
	template <typename RangeType>
	requires requires(const RangeType& Range) { Range.begin(); }
	void Append(const RangeType& Range)
	{
		for (const auto& Element : Range)
		{
			Add(Element);
		}
	}
	void Append(std::initializer_list<ElementType> List)
	{
		for (const ElementType& Element : List)
		{
			Add(Element);
		}
	}
	/** How many were removed: 0 or 1. */
	int32 Remove(const ElementType& Key) { return Table.TryRemove(FindSlot(Key)); }
	void Reset() { Table.Clear(/*bKeepMemory*/ true); }
	void Empty(int32 ExpectedNumElements = 0) { Table.Empty(ExpectedNumElements); }
	void Reserve(int32 Number) { Table.Reserve(Number); }
	void Compact() { Table.Compact(); }
	void Shrink() {}
	void Sort()
	{
		Sort([](const ElementType& A, const ElementType& B) { return A < B; });
	}
	template <typename PredicateType>
	void Sort(const PredicateType& Predicate)
	{
		Table.Sort([&Predicate](const ElementType& A, const ElementType& B) { return Predicate(A, B); });
	}
	TArray<ElementType> Array() const
	{
		TArray<ElementType> Result;
		Result.Reserve(Num());
		for (const ElementType& Element : *this)
		{
			Result.Add(Element);
		}
		return Result;
	}
	TSet Intersect(const TSet& Other) const
	{
		TSet Result;
		for (const ElementType& Element : *this)
		{
			if (Other.Contains(Element))
			{
				Result.Add(Element);
			}
		}
		return Result;
	}
	TSet Difference(const TSet& Other) const
	{
		TSet Result;
		for (const ElementType& Element : *this)
		{
			if (!Other.Contains(Element))
			{
				Result.Add(Element);
			}
		}
		return Result;
	}

	TIterator begin() { return TIterator(Table, 0); }
	TIterator end() { return TIterator(Table, Table.NumSlots()); }
	TConstIterator begin() const { return TConstIterator(Table, 0); }
	TConstIterator end() const { return TConstIterator(Table, Table.NumSlots()); }

private:
	int32 FindSlot(const ElementType& Key) const
	{
		return Num() == 0
			? INDEX_NONE
			: Table.Find(KeyFuncs::GetKeyHash(Key), [&Key](const ElementType& Other) { return KeyFuncs::Matches(Other, Key); });
	}
	FTable Table;
};
