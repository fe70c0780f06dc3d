#pragma once

#include "Containers/ContainersFwd.h"
#include "Misc/AssertionMacros.h"
#include "Templates/UnrealTemplate.h"

/** Refers to elements that lie in one block and must outlive the view. */
template <typename T>
class TArrayView
{
public:
	using ElementType = T;
	using SizeType = int32;

	TArrayView() = default;
	TArrayView(T* InData, int32 InNum)
		: Data(InData)
		, Count(InNum)
	{
		check(InNum >= 0);
	}
	template <typename OtherRangeType>
	requires(!std::is_same_v<std::decay_t<OtherRangeType>, TArrayView> && !std::is_array_v<std::remove_reference_t<OtherRangeType>> &&
		requires(OtherRangeType & Range) {
			{
				::GetData(Range)
				} -> std::convertible_to<T*>;
			::GetNum(Range);
		}) TArrayView(OtherRangeType&& Range)
		: Data(::GetData(Range))
		, Count((int32)::GetNum(Range))
	{
	}
	template <std::size_t N>
	TArrayView(T (&Array)[N])
		: Data(Array)
		, Count((int32)N)
	{
	}
	/** Only for parameters: the list lives to the end of the call. */
	TArrayView(std::initializer_list<std::remove_const_t<T>> List) requires std::is_const_v<T> : Count((int32)List.size())
	{
		Data = List.begin();
	}

	T* GetData() const { return Data; }
	int32 Num() const { return Count; }
	bool IsEmpty() const { return Count == 0; }
	bool IsValidIndex(int32 Index) const { return Index >= 0 && Index < Count; }
	T& operator[](int32 Index) const
	{
		check(IsValidIndex(Index));
		return Data[Index];
	}
	T& Last(int32 IndexFromTheEnd = 0) const { return (*this)[Count - IndexFromTheEnd - 1]; }
	TArrayView Left(int32 N) const { return TArrayView(Data, Clamped(N)); }
	TArrayView Right(int32 N) const { return TArrayView(Data + Count - Clamped(N), Clamped(N)); }
	TArrayView RightChop(int32 N) const { return TArrayView(Data + Clamped(N), Count - Clamped(N)); }
	TArrayView LeftChop(int32 N) const { return TArrayView(Data, Count - Clamped(N)); }
	template <typename OtherType>
	int32 Find(const OtherType& Item) const
	{
		for (int32 Index = 0; Index < Count; ++Index)
		{
			if (Data[Index] == Item)
			{
				return Index;
			}
		}
		return INDEX_NONE;
	}
	template <typename OtherType>
	bool Contains(const OtherType& Item) const
	{
		return Find(Item) != INDEX_NONE;
	}
	template <typename Predicate>
	bool ContainsByPredicate(Predicate Pred) const
	{
		return FindByPredicate(Pred) != nullptr;
	}
	template <typename Predicate>
	T* FindByPredicate(Predicate Pred) const
	{
		for (T& Item : *this)
		{
			if (Pred(Item))
			{
				return &Item;
			}
		}
		return nullptr;
	}
	T* begin() const { return Data; }
	T* end() const { return Data + Count; }

private:
	int32 Clamped(int32 N) const { return N < 0 ? 0 : (N > Count ? Count : N); }
	T* Data = nullptr;
	int32 Count = 0;
};
