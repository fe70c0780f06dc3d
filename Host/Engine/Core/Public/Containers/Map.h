#pragma once

#include "Containers/Array.h"
#include "Containers/Set.h"
#include "Containers/SlotTable.h"
#include "Templates/Tuple.h"

/** How a map tells keys apart. Replace it for another equality, such as FString keys that respect case. */
template <typename KeyType, typename ValueType>
struct TDefaultMapHashableKeyFuncs
{
	static bool Matches(const KeyType& A, const KeyType& B) { return A == B; }
	static uint32 GetKeyHash(const KeyType& Key) { return GetTypeHash(Key); }
};

/**
 * Values by key, in the order of insertion until one is removed; later additions take freed places. A key added again keeps
 * its place, and FString keys, which ignore case, their first spelling. Adding may move the values.
 */
template <typename InKeyType, typename InValueType, typename Allocator, typename KeyFuncs>
class TMap
{
public:
	using KeyType = InKeyType;
	using ValueType = InValueType;
	using ElementType = TPair<KeyType, ValueType>;

private:
	using FTable = UE::Slots::TTable<ElementType>;

	template <typename TableType, typename PairType, typename ItemValueType>
	class TMapIterator : public UE::Slots::TSlotIterator<TableType, PairType>
	{
	public:
		using UE::Slots::TSlotIterator<TableType, PairType>::TSlotIterator;
		const KeyType& Key() const { return (**this).Key; }
		ItemValueType& Value() const { return (**this).Value; }
		TMapIterator& operator++()
		{
			UE::Slots::TSlotIterator<TableType, PairType>::operator++();
			return *this;
		}
	};

public:
	using TIterator = TMapIterator<FTable, ElementType, ValueType>;
	using TConstIterator = TMapIterator<const FTable, const ElementType, const ValueType>;

	TMap() = default;
	TMap(std::initializer_list<ElementType> List)
	{
		Reserve((int32)List.size());
		for (const ElementType& Element : List)
		{
			Add(Element.Key, Element.Value);
		}
	}

	int32 Num() const { return Table.Num(); }
	bool IsEmpty() const { return Table.Num() == 0; }
	bool Contains(const KeyType& Key) const { return FindSlot(Key) != INDEX_NONE; }
	ValueType* Find(const KeyType& Key)
	{
		const int32 Slot = FindSlot(Key);
		return Slot != INDEX_NONE ? &Table.At(Slot).Value : nullptr;
	}
	const ValueType* Find(const KeyType& Key) const { return const_cast<TMap*>(this)->Find(Key); }
	ValueType& FindChecked(const KeyType& Key)
	{
		ValueType* Value = Find(Key);
		check(Value != nullptr);
		return *Value;
	}
	const ValueType& FindChecked(const KeyType& Key) const { return const_cast<TMap*>(this)->FindChecked(Key); }
	ValueType& operator[](const KeyType& Key) { return FindChecked(Key); }
	const ValueType& operator[](const KeyType& Key) const { return FindChecked(Key); }
	/** A copy of the value, or a default one. */
	ValueType FindRef(const KeyType& Key) const
	{
		const ValueType* Value = Find(Key);
		return Value ? *Value : ValueType();
	}
	ValueType FindRef(const KeyType& Key, ValueType Default) const
	{
		const ValueType* Value = Find(Key);
		return Value ? *Value : Default;
	}
	/** Some key with this value, by walking the map; null when there is none. */
	const KeyType* FindKey(const ValueType& Value) const
	{
		for (const ElementType& Element : *this)
		{
			if (Element.Value == Value)
			{
				return &Element.Key;
			}
		}
		return nullptr;
	}

	ValueType& Add(const KeyType& Key, const ValueType& Value) { return Put(KeyType(Key), ValueType(Value)); }
	ValueType& Add(const KeyType& Key, ValueType&& Value) { return Put(KeyType(Key), static_cast<ValueType&&>(Value)); }
	ValueType& Add(KeyType&& Key, const ValueType& Value) { return Put(static_cast<KeyType&&>(Key), ValueType(Value)); }
	ValueType& Add(KeyType&& Key, ValueType&& Value) { return Put(static_cast<KeyType&&>(Key), static_cast<ValueType&&>(Value)); }
	ValueType& Add(const KeyType& Key) { return Put(KeyType(Key), ValueType()); }
	ValueType& Add(const ElementType& Pair) { return Put(KeyType(Pair.Key), ValueType(Pair.Value)); }
	template <typename KeyArg, typename ValueArg>
	ValueType& Emplace(KeyArg&& Key, ValueArg&& Value)
	{
		return Put(KeyType(Forward<KeyArg>(Key)), ValueType(Forward<ValueArg>(Value)));
	}
	template <typename KeyArg>
	ValueType& Emplace(KeyArg&& Key)
	{
		return Put(KeyType(Forward<KeyArg>(Key)), ValueType());
	}
	ValueType& FindOrAdd(const KeyType& Key)
	{
		const uint32 Hash = KeyFuncs::GetKeyHash(Key);
		int32 Slot = FindSlotHashed(Hash, Key);
		if (Slot == INDEX_NONE)
		{
			Slot = Table.Add(Hash, ElementType(KeyType(Key), ValueType()));
		}
		return Table.At(Slot).Value;
	}
	template <typename InitType>
	ValueType& FindOrAdd(const KeyType& Key, InitType&& Value)
	{
		const uint32 Hash = KeyFuncs::GetKeyHash(Key);
		int32 Slot = FindSlotHashed(Hash, Key);
		if (Slot == INDEX_NONE)
		{
			Slot = Table.Add(Hash, ElementType(KeyType(Key), ValueType(Forward<InitType>(Value))));
		}
		return Table.At(Slot).Value;
	}
	template <typename OtherAllocator, typename OtherKeyFuncs>
	void Append(const TMap<KeyType, ValueType, OtherAllocator, OtherKeyFuncs>& Other)
	{
		for (const ElementType& Element : Other)
		{
			Add(Element.Key, Element.Value);
		}
	}

	/** How many were removed: 0 or 1. */
	int32 Remove(const KeyType& Key) { return Table.TryRemove(FindSlot(Key)); }
	void Reset() { Table.Clear(/*bKeepMemory*/ true); }
	void Empty(int32 ExpectedNumElements = 0) { Table.Empty(ExpectedNumElements); }
	void Reserve(int32 Number) { Table.Reserve(Number); }
	void Compact() { Table.Compact(); }
	void Shrink() {}

	template <typename PredicateType>
	void ValueSort(const PredicateType& Predicate)
	{
		Table.Sort([&Predicate](const ElementType& A, const ElementType& B) { return Predicate(A.Value, B.Value); });
	}
	template <typename PredicateType>
	void ValueStableSort(const PredicateType& Predicate)
	{
		ValueSort(Predicate);
	}
	template <typename PredicateType>
	TMap FilterByPredicate(const PredicateType& Predicate) const
	{
		TMap Result;
		for (const ElementType& Element : *this)
		{
			if (Predicate(Element))
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
	int32 FindSlotHashed(uint32 Hash, const KeyType& Key) const
	{
		return Table.Find(Hash, [&Key](const ElementType& Element) { return KeyFuncs::Matches(Element.Key, Key); });
	}
	int32 FindSlot(const KeyType& Key) const { return Num() == 0 ? INDEX_NONE : FindSlotHashed(KeyFuncs::GetKeyHash(Key), Key); }
	ValueType& Put(KeyType&& Key, ValueType&& Value)
	{
		const uint32 Hash = KeyFuncs::GetKeyHash(Key);
		int32 Slot = FindSlotHashed(Hash, Key);
		if (Slot != INDEX_NONE)
		{
			Table.At(Slot).Value = static_cast<ValueType&&>(Value);
		}
		else
		{
			Slot = Table.Add(Hash, ElementType(static_cast<KeyType&&>(Key), static_cast<ValueType&&>(Value)));
		}
		return Table.At(Slot).Value;
	}
	FTable Table;
};
