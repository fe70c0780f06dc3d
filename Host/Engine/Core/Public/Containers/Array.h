#pragma once

#include "Containers/ArrayView.h"
#include "Containers/ContainersFwd.h"
#include "Misc/AssertionMacros.h"
#include "Templates/TypeHash.h"
#include "Templates/UnrealTemplate.h"

#include <algorithm>
#include <concepts>
#include <vector>

namespace UE::Array
{
	/** std::vector<bool> packs bits and has no bool&; one bool in a struct keeps the plain layout. */
	struct FBoolCell
	{
		FBoolCell() = default;
		FBoolCell(bool bInValue)
			: bValue(bInValue)
		{
		}
		operator bool() const { return bValue; }
		bool bValue = false;
	};
	static_assert(sizeof(FBoolCell) == sizeof(bool));

	/** Gives a predicate the pointed-to objects where the elements are raw pointers. */
	template <typename T, typename PredicateType>
	auto DereferencingPredicate(const PredicateType& Predicate)
	{
		return [&Predicate](const T& A, const T& B) -> bool
		{
			if constexpr (std::is_pointer_v<T>)
			{
				return Predicate(*A, *B);
			}
			else
			{
				return Predicate(A, B);
			}
		};
	}
}

/**
 * Elements in one block, in order. An index out of range is an assertion in every configuration. Adding may move the elements.
 */
template <typename T, typename Allocator>
class TArray
{
	using CellType = std::conditional_t<std::is_same_v<T, bool>, UE::Array::FBoolCell, T>;

public:
	using ElementType = T;
	using SizeType = int32;
	using RangedForIteratorType = T*;
	using RangedForConstIteratorType = const T*;

	TArray() = default;
	TArray(std::initializer_list<T> List)
		: Cells(List.begin(), List.end())
	{
	}
	TArray(const T* Source, int32 Count)
	{
		check(Count >= 0);
		Cells.assign(Source, Source + Count);
	}
	template <typename OtherType>
	requires std::is_constructible_v<T, OtherType&>
	explicit TArray(TArrayView<OtherType> View)
		: Cells(View.begin(), View.end())
	{
	}
	template <typename OtherAllocator>
	requires(!std::is_same_v<Allocator, OtherAllocator>) explicit TArray(const TArray<T, OtherAllocator>& Other) { Append(Other); }
	TArray(const TArray&) = default;
	TArray(TArray&&) noexcept = default;
	TArray& operator=(const TArray&) = default;
	TArray& operator=(TArray&&) noexcept = default;
	TArray& operator=(std::initializer_list<T> List)
	{
		Cells.assign(List.begin(), List.end());
		return *this;
	}

	// Reading.
	int32 Num() const { return (int32)Cells.size(); }
	int32 Max() const { return (int32)Cells.capacity(); }
	bool IsEmpty() const { return Cells.empty(); }
	T* GetData() { return ToElements(Cells.data()); }
	const T* GetData() const { return ToElements(Cells.data()); }
	bool IsValidIndex(int32 Index) const { return Index >= 0 && (SIZE_T)Index < Cells.size(); }
	T& operator[](int32 Index)
	{
		check(IsValidIndex(Index));
		return GetData()[Index];
	}
	const T& operator[](int32 Index) const
	{
		check(IsValidIndex(Index));
		return GetData()[Index];
	}
	T& Last(int32 IndexFromTheEnd = 0) { return (*this)[Num() - IndexFromTheEnd - 1]; }
	const T& Last(int32 IndexFromTheEnd = 0) const { return (*this)[Num() - IndexFromTheEnd - 1]; }
	T& Top() { return Last(); }
	const T& Top() const { return Last(); }
	T* begin() { return GetData(); }
	T* end() { return GetData() + Num(); }
	const T* begin() const { return GetData(); }
	const T* end() const { return GetData() + Num(); }
	bool operator==(const TArray& Other) const { return Num() == Other.Num() && std::equal(begin(), end(), Other.begin()); }

	// Adding. The index of the new element is returned.
	int32 Add(const T& Item)
	{
		Cells.push_back(Item);
		return Num() - 1;
	}
	int32 Add(T&& Item)
	{
		Cells.push_back(static_cast<T&&>(Item));
		return Num() - 1;
	}
	T& Add_GetRef(const T& Item)
	{
		Add(Item); // Moves the elements, so their address is taken afterwards.
		return Last();
	}
	T& Add_GetRef(T&& Item)
	{
		Add(static_cast<T&&>(Item));
		return Last();
	}
	template <typename... ArgTypes>
	int32 Emplace(ArgTypes&&... Args)
	{
		Cells.emplace_back(Forward<ArgTypes>(Args)...);
		return Num() - 1;
	}
	template <typename... ArgTypes>
	T& Emplace_GetRef(ArgTypes&&... Args)
	{
		Emplace(Forward<ArgTypes>(Args)...);
		return Last();
	}
	int32 AddDefaulted(int32 Count = 1)
	{
		check(Count >= 0);
		const int32 Index = Num();
		Cells.resize(Cells.size() + (SIZE_T)Count);
		return Index;
	}
	T& AddDefaulted_GetRef()
	{
		AddDefaulted();
		return Last();
	}
	int32 AddUnique(const T& Item)
	{
		const int32 Index = Find(Item);
		return Index != INDEX_NONE ? Index : Add(Item);
	}
	int32 AddUnique(T&& Item)
	{
		const int32 Index = Find(Item);
		return Index != INDEX_NONE ? Index : Add(static_cast<T&&>(Item));
	}
	int32 Insert(const T& Item, int32 Index)
	{
		check(Index >= 0 && Index <= Num());
		Cells.insert(Cells.begin() + Index, Item);
		return Index;
	}
	int32 Insert(T&& Item, int32 Index)
	{
		check(Index >= 0 && Index <= Num());
		Cells.insert(Cells.begin() + Index, static_cast<T&&>(Item));
		return Index;
	}
	int32 Insert(std::initializer_list<T> List, int32 Index)
	{
		check(Index >= 0 && Index <= Num());
		Cells.insert(Cells.begin() + Index, List.begin(), List.end());
		return Index;
	}
	template <typename OtherAllocator>
	int32 Insert(const TArray<T, OtherAllocator>& Items, int32 Index)
	{
		check((const void*)this != (const void*)&Items);
		return Insert(Items.GetData(), Items.Num(), Index);
	}
	int32 Insert(const T* Source, int32 Count, int32 Index)
	{
		check(Index >= 0 && Index <= Num() && Count >= 0);
		Cells.insert(Cells.begin() + Index, Source, Source + Count);
		return Index;
	}
	int32 InsertDefaulted(int32 Index, int32 Count = 1)
	{
		check(Index >= 0 && Index <= Num() && Count >= 0);
		const int32 OldNum = AddDefaulted(Count);
		std::rotate(Cells.begin() + Index, Cells.begin() + OldNum, Cells.end());
		return Index;
	}
	template <typename OtherAllocator>
	void Append(const TArray<T, OtherAllocator>& Source)
	{
		if constexpr (std::is_same_v<Allocator, OtherAllocator>)
		{
			if (this == &Source)
			{
				const TArray Copy(Source);
				Append(Copy.GetData(), Copy.Num());
				return;
			}
		}
		Append(Source.GetData(), Source.Num());
	}
	void Append(TArray&& Source)
	{
		check(this != &Source);
		if (Cells.empty())
		{
			Cells.swap(Source.Cells);
		}
		else
		{
			Cells.insert(Cells.end(), std::make_move_iterator(Source.Cells.begin()), std::make_move_iterator(Source.Cells.end()));
		}
		Source.Cells.clear();
	}
	void Append(TArrayView<const T> Source) { Append(Source.GetData(), Source.Num()); }
	void Append(TArrayView<T> Source) requires(!std::is_const_v<T>) { Append(Source.GetData(), Source.Num()); }
	void Append(std::initializer_list<T> List) { Cells.insert(Cells.end(), List.begin(), List.end()); }
	/** Source must not lie in this array. */
	void Append(const T* Source, int32 Count)
	{
		check(Count >= 0);
		Cells.insert(Cells.end(), Source, Source + Count);
	}
	TArray& operator+=(const TArray& Other)
	{
		Append(Other);
		return *this;
	}
	TArray& operator+=(TArray&& Other)
	{
		Append(static_cast<TArray&&>(Other));
		return *this;
	}
	TArray& operator+=(std::initializer_list<T> List)
	{
		Append(List);
		return *this;
	}
	void Init(const T& Element, int32 Count)
	{
		check(Count >= 0);
		const T Copy(Element);
		Cells.assign((SIZE_T)Count, Copy);
	}

	// Removing.
	T Pop(EAllowShrinking AllowShrinking = EAllowShrinking::Default)
	{
		check(!IsEmpty());
		T Result = static_cast<T&&>(Last());
		Cells.pop_back();
		return Result;
	}
	void RemoveAt(int32 Index)
	{
		check(IsValidIndex(Index));
		Cells.erase(Cells.begin() + Index);
	}
	void RemoveAt(int32 Index, EAllowShrinking AllowShrinking) { RemoveAt(Index); }
	void RemoveAt(int32 Index, int32 Count, EAllowShrinking AllowShrinking = EAllowShrinking::Default)
	{
		check(Index >= 0 && Count >= 0 && Count <= Num() - Index);
		Cells.erase(Cells.begin() + Index, Cells.begin() + Index + Count);
	}
	/** How many were removed. */
	int32 Remove(const T& Item)
	{
		const CellType Copy(Item); // The item may be an element that is about to move.
		return RemoveAll([&Copy](const T& Other) { return Other == (const T&)Copy; });
	}
	template <typename PredicateType>
	int32 RemoveAll(const PredicateType& Predicate)
	{
		const auto NewEnd =
			std::remove_if(Cells.begin(), Cells.end(), [&Predicate](const CellType& Cell) -> bool { return !!Predicate(ToElement(Cell)); });
		const int32 Removed = (int32)(Cells.end() - NewEnd);
		Cells.erase(NewEnd, Cells.end());
		return Removed;
	}

	// Size.
	/** Removes all and keeps the memory. */
	void Reset(int32 NewSize = 0)
	{
		Cells.clear();
		Reserve(NewSize);
	}
	/** Removes all and gives the memory back. */
	void Empty(int32 Slack = 0)
	{
		std::vector<CellType>().swap(Cells);
		Reserve(Slack);
	}
	void Reserve(int32 Count)
	{
		if (Count > 0)
		{
			Cells.reserve((SIZE_T)Count);
		}
	}
	void Shrink() { Cells.shrink_to_fit(); }
	void SetNum(int32 NewNum, EAllowShrinking AllowShrinking = EAllowShrinking::Default)
	{
		check(NewNum >= 0);
		Cells.resize((SIZE_T)NewNum);
	}
	void SetNumZeroed(int32 NewNum, EAllowShrinking AllowShrinking = EAllowShrinking::Default) { SetNum(NewNum); }
	void SetNumUninitialized(int32 NewNum, EAllowShrinking AllowShrinking = EAllowShrinking::Default) { SetNum(NewNum); }

	// Searching.
	int32 Find(const T& Item) const
	{
		return IndexOfByPredicate([&Item](const T& Other) { return Other == Item; });
	}
	bool Find(const T& Item, int32& OutIndex) const
	{
		OutIndex = Find(Item);
		return OutIndex != INDEX_NONE;
	}
	int32 FindLast(const T& Item) const
	{
		return FindLastByPredicate([&Item](const T& Other) { return Other == Item; });
	}
	template <typename PredicateType>
	int32 FindLastByPredicate(PredicateType Predicate) const
	{
		for (int32 Index = Num() - 1; Index >= 0; --Index)
		{
			if (Predicate(GetData()[Index]))
			{
				return Index;
			}
		}
		return INDEX_NONE;
	}
	template <typename PredicateType>
	int32 IndexOfByPredicate(PredicateType Predicate) const
	{
		for (int32 Index = 0; Index < Num(); ++Index)
		{
			if (Predicate(GetData()[Index]))
			{
				return Index;
			}
		}
		return INDEX_NONE;
	}
	template <typename KeyType>
	int32 IndexOfByKey(const KeyType& Key) const
	{
		return IndexOfByPredicate([&Key](const T& Other) { return Other == Key; });
	}
	template <typename PredicateType>
	T* FindByPredicate(PredicateType Predicate)
	{
		const int32 Index = IndexOfByPredicate(Predicate);
		return Index != INDEX_NONE ? GetData() + Index : nullptr;
	}
	template <typename PredicateType>
	const T* FindByPredicate(PredicateType Predicate) const
	{
		return const_cast<TArray*>(this)->FindByPredicate(Predicate);
	}
	template <typename KeyType>
	T* FindByKey(const KeyType& Key)
	{
		const int32 Index = IndexOfByKey(Key);
		return Index != INDEX_NONE ? GetData() + Index : nullptr;
	}
	template <typename KeyType>
	const T* FindByKey(const KeyType& Key) const
	{
		return const_cast<TArray*>(this)->FindByKey(Key);
	}
	template <typename PredicateType>
	TArray FilterByPredicate(PredicateType Predicate) const
	{
		TArray Result;
		for (const T& Item : *this)
		{
			if (Predicate(Item))
			{
				Result.Add(Item);
			}
		}
		return Result;
	}
	template <typename OtherType>
	bool Contains(const OtherType& Item) const
	{
		return IndexOfByKey(Item) != INDEX_NONE;
	}
	template <typename PredicateType>
	bool ContainsByPredicate(PredicateType Predicate) const
	{
		return IndexOfByPredicate(Predicate) != INDEX_NONE;
	}

	// Order. Raw pointers are compared by what they point to.
	/** The order of equals is not promised. */
	void Sort()
	{
		Sort([](const auto& A, const auto& B) { return A < B; });
	}
	template <typename PredicateType>
	void Sort(const PredicateType& Predicate)
	{
		std::sort(begin(), end(), UE::Array::DereferencingPredicate<T>(Predicate));
	}
	/** Equals keep their order. */
	void StableSort()
	{
		StableSort([](const auto& A, const auto& B) { return A < B; });
	}
	template <typename PredicateType>
	void StableSort(const PredicateType& Predicate)
	{
		std::stable_sort(begin(), end(), UE::Array::DereferencingPredicate<T>(Predicate));
	}
	void Swap(int32 A, int32 B)
	{
		check(IsValidIndex(A) && IsValidIndex(B));
		if (A != B)
		{
			std::swap(GetData()[A], GetData()[B]);
		}
	}

	/** Walks by index, so the array may change meanwhile. */
	template <typename ArrayType, typename ItemType>
	class TIndexIterator
	{
	public:
		explicit TIndexIterator(ArrayType& InArray)
			: Array(InArray)
		{
		}
		explicit operator bool() const { return Array.IsValidIndex(Index); }
		ItemType& operator*() const { return Array[Index]; }
		ItemType* operator->() const { return &Array[Index]; }
		TIndexIterator& operator++()
		{
			++Index;
			return *this;
		}
		TIndexIterator& operator--()
		{
			--Index;
			return *this;
		}
		int32 GetIndex() const { return Index; }
		void Reset() { Index = 0; }

	private:
		ArrayType& Array;
		int32 Index = 0;
	};
	using TIterator = TIndexIterator<TArray, T>;
	using TConstIterator = TIndexIterator<const TArray, const T>;

private:
	static T* ToElements(CellType* Cells)
	{
		if constexpr (std::is_same_v<T, bool>)
		{
			return reinterpret_cast<bool*>(Cells);
		}
		else
		{
			return Cells;
		}
	}
	static const T* ToElements(const CellType* Cells)
	{
		if constexpr (std::is_same_v<T, bool>)
		{
			return reinterpret_cast<const bool*>(Cells);
		}
		else
		{
			return Cells;
		}
	}
	static const T& ToElement(const CellType& Cell) { return *ToElements(&Cell); }
	std::vector<CellType> Cells;
};

template <typename T, typename Allocator>
requires requires(const T& Item)
{
	GetTypeHash(Item);
}
uint32 GetTypeHash(const TArray<T, Allocator>& Array)
{
	uint32 Hash = (uint32)Array.Num();
	for (const T& Item : Array)
	{
		Hash = HashCombine(Hash, GetTypeHash(Item));
	}
	return Hash;
}
