#pragma once

#include "Containers/ContainersFwd.h"
#include "Misc/AssertionMacros.h"
#include "Templates/TypeHash.h"
#include "Templates/UnrealTemplate.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace UE::Slots
{
	/**
	 * Hashed elements in slots: what TMap and TSet share. Iteration goes by slot, which is the order of insertion until an
	 * element is removed; a freed slot is taken by the next element added, the slot freed last first. Adding may move elements.
	 */
	template <typename ElementType>
	class TTable
	{
	public:
		TTable() = default;
		TTable(const TTable&) = default;
		TTable(TTable&& Other) noexcept { Swap(Other); }
		TTable& operator=(const TTable&) = default;
		TTable& operator=(TTable&& Other) noexcept
		{
			TTable Taken(static_cast<TTable&&>(Other));
			Swap(Taken);
			return *this;
		}

		int32 Num() const { return Count; }
		int32 NumSlots() const { return (int32)Slots.size(); }
		bool IsUsed(int32 Slot) const { return Slots[(SIZE_T)Slot].Element.has_value(); }
		ElementType& At(int32 Slot) { return *Slots[(SIZE_T)Slot].Element; }
		const ElementType& At(int32 Slot) const { return *Slots[(SIZE_T)Slot].Element; }
		/** First used slot at or behind Slot, or NumSlots(). */
		int32 NextUsed(int32 Slot) const
		{
			while (Slot < NumSlots() && !IsUsed(Slot))
			{
				++Slot;
			}
			return Slot;
		}

		template <typename MatchType>
		int32 Find(uint32 Hash, const MatchType& Match) const
		{
			if (Buckets.empty())
			{
				return INDEX_NONE;
			}
			for (int32 Slot = Buckets[BucketOf(Hash)]; Slot != INDEX_NONE; Slot = Slots[(SIZE_T)Slot].Next)
			{
				const FSlot& Each = Slots[(SIZE_T)Slot];
				if (Each.Hash == Hash && Match(*Each.Element))
				{
					return Slot;
				}
			}
			return INDEX_NONE;
		}

		/** The caller has made sure that no equal element is there. */
		int32 Add(uint32 Hash, ElementType&& Element)
		{
			int32 Slot = FirstFree;
			if (Slot != INDEX_NONE)
			{
				FirstFree = Slots[(SIZE_T)Slot].Next;
				Slots[(SIZE_T)Slot].Element.emplace(static_cast<ElementType&&>(Element));
			}
			else
			{
				Slot = NumSlots();
				Slots.emplace_back();
				Slots.back().Element.emplace(static_cast<ElementType&&>(Element));
			}
			Slots[(SIZE_T)Slot].Hash = Hash;
			++Count;
			if ((SIZE_T)Count > Buckets.size())
			{
				Rehash(Buckets.empty() ? 8 : Buckets.size() * 2);
			}
			else
			{
				Link(Slot);
			}
			return Slot;
		}

		void Remove(int32 Slot)
		{
			FSlot& Gone = Slots[(SIZE_T)Slot];
			int32* Link = &Buckets[BucketOf(Gone.Hash)];
			while (*Link != Slot)
			{
				Link = &Slots[(SIZE_T)*Link].Next;
			}
			*Link = Gone.Next;
			--Count;
			Gone.Next = FirstFree;
			FirstFree = Slot;
			// Last, since the destructor of an element may look into this table.
			[[maybe_unused]] const std::optional<ElementType> Dying(static_cast<std::optional<ElementType>&&>(Gone.Element));
			Gone.Element.reset();
		}

		/** Removes the element of a slot, if there is one. @return How many were removed: 0 or 1. */
		int32 TryRemove(int32 Slot)
		{
			if (Slot == INDEX_NONE)
			{
				return 0;
			}
			Remove(Slot);
			return 1;
		}

		void Empty(int32 ExpectedNumElements)
		{
			Clear(/*bKeepMemory*/ false);
			Reserve(ExpectedNumElements);
		}

		void Clear(bool bKeepMemory)
		{
			TTable Dying(static_cast<TTable&&>(*this));
			if (bKeepMemory)
			{
				Reserve((int32)Dying.Slots.size());
			}
		}

		void Reserve(int32 Number)
		{
			if (Number > 0)
			{
				Slots.reserve((SIZE_T)Number);
				SIZE_T Wanted = Buckets.empty() ? 8 : Buckets.size();
				while (Wanted < (SIZE_T)Number)
				{
					Wanted *= 2;
				}
				if (Wanted != Buckets.size())
				{
					Rehash(Wanted);
				}
			}
		}

		/** Brings the elements into the order of Less and leaves no free slot. */
		template <typename LessType>
		void Sort(const LessType& Less)
		{
			std::vector<int32> Order;
			for (int32 Slot = NextUsed(0); Slot < NumSlots(); Slot = NextUsed(Slot + 1))
			{
				Order.push_back(Slot);
			}
			std::stable_sort(Order.begin(), Order.end(), [this, &Less](int32 A, int32 B) { return Less(At(A), At(B)); });
			Rebuild(Order);
		}

		/** Moves elements into the free slots' places, in order. */
		void Compact()
		{
			Sort([](const ElementType&, const ElementType&) { return false; });
		}

	private:
		struct FSlot
		{
			std::optional<ElementType> Element;
			uint32 Hash = 0;
			/** Next slot of the same bucket, or the next free slot. */
			int32 Next = INDEX_NONE;
		};

		void Swap(TTable& Other) noexcept
		{
			Slots.swap(Other.Slots);
			Buckets.swap(Other.Buckets);
			std::swap(FirstFree, Other.FirstFree);
			std::swap(Count, Other.Count);
		}
		SIZE_T BucketOf(uint32 Hash) const { return (Hash * 0x9e3779b1u >> 7) & (Buckets.size() - 1); }
		void Link(int32 Slot)
		{
			int32& Head = Buckets[BucketOf(Slots[(SIZE_T)Slot].Hash)];
			Slots[(SIZE_T)Slot].Next = Head;
			Head = Slot;
		}
		void Rebuild(const std::vector<int32>& Order)
		{
			std::vector<FSlot> Sorted;
			Sorted.reserve(Order.size());
			for (const int32 Slot : Order)
			{
				Sorted.push_back(static_cast<FSlot&&>(Slots[(SIZE_T)Slot]));
			}
			Slots.swap(Sorted);
			FirstFree = INDEX_NONE;
			Rehash(Buckets.size());
		}
		void Rehash(SIZE_T NumBuckets)
		{
			Buckets.assign(NumBuckets, INDEX_NONE);
			for (int32 Slot = 0; Slot < NumSlots(); ++Slot)
			{
				if (IsUsed(Slot))
				{
					Link(Slot);
				}
			}
		}

		std::vector<FSlot> Slots;
		/** Heads of the chains; the size is zero or a power of two. */
		std::vector<int32> Buckets;
		int32 FirstFree = INDEX_NONE;
		int32 Count = 0;
	};

	template <typename TableType, typename ElementType>
	class TSlotIterator
	{
	public:
		TSlotIterator(TableType& InTable, int32 InSlot)
			: Table(&InTable)
			, Slot(InTable.NextUsed(InSlot))
		{
		}
		explicit operator bool() const { return Slot < Table->NumSlots(); }
		ElementType& operator*() const { return Table->At(Slot); }
		ElementType* operator->() const { return &Table->At(Slot); }
		TSlotIterator& operator++()
		{
			Slot = Table->NextUsed(Slot + 1);
			return *this;
		}
		bool operator==(const TSlotIterator& Other) const { return Slot == Other.Slot; }

	protected:
		TableType* Table;
		int32 Slot;
	};
}
