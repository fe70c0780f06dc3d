#pragma once

#include "CoreMinimal.h"
#include "SlotBase.h"

/** The children of a widget, whatever kind of slot holds them. */
class SLATECORE_API FChildren
{
public:
	virtual ~FChildren();
	virtual int32 Num() const = 0;
	/** @param Index  From 0 to Num - 1. */
	virtual TSharedRef<SWidget> GetChildAt(int32 Index) const = 0;
	/** The same without touching the reference count. */
	virtual SWidget& GetChildRefAt(int32 Index) const = 0;
};

/** For widgets that cannot have children. */
class SLATECORE_API FNoChildren : public FChildren
{
public:
	virtual int32 Num() const override { return 0; }
	virtual TSharedRef<SWidget> GetChildAt(int32 Index) const override;
	virtual SWidget& GetChildRefAt(int32 Index) const override;
	static FNoChildren& Get();
};

/** Children of a panel: an ordered list of slots of one kind. */
template <typename SlotType>
class TPanelChildren : public FChildren
{
public:
	explicit TPanelChildren(SWidget* InOwner)
		: Owner(InOwner)
	{
	}

	virtual int32 Num() const override { return Slots.Num(); }
	virtual TSharedRef<SWidget> GetChildAt(int32 Index) const override { return Slots[Index]->GetWidget(); }
	virtual SWidget& GetChildRefAt(int32 Index) const override { return Slots[Index]->GetWidgetRef(); }
	SlotType& operator[](int32 Index) { return *Slots[Index]; }
	const SlotType& operator[](int32 Index) const { return *Slots[Index]; }

	/** Inserts a slot made from the arguments; INDEX_NONE appends. */
	SlotType& InsertSlot(const typename SlotType::FSlotArguments& Arguments, int32 Index = INDEX_NONE)
	{
		TUniquePtr<SlotType> Slot = MakeUnique<SlotType>();
		SlotType& Result = *Slot;
		if (Index == INDEX_NONE || Index >= Slots.Num())
		{
			Slots.Add(MoveTemp(Slot));
		}
		else
		{
			Slots.Insert(MoveTemp(Slot), FMath::Max(Index, 0));
		}
		Result.SetOwner(Owner);
		Result.Construct(Arguments);
		if (Arguments._ExposedSlot)
		{
			*Arguments._ExposedSlot = &Result;
		}
		return Result;
	}
	void AddSlots(const TArray<typename SlotType::FSlotArguments>& All)
	{
		for (const typename SlotType::FSlotArguments& Arguments : All)
		{
			InsertSlot(Arguments);
		}
	}
	void RemoveAt(int32 Index)
	{
		// The slot outlives its place in the list, since a dying widget may look at its former parent.
		TUniquePtr<SlotType> Slot = MoveTemp(Slots[Index]);
		Slots.RemoveAt(Index);
		Slot->SetOwner(nullptr);
		InvalidateOwner();
	}
	/** Index of the removed slot, or INDEX_NONE when the widget is no child. */
	int32 Remove(const TSharedRef<SWidget>& Widget)
	{
		for (int32 Index = 0; Index < Slots.Num(); ++Index)
		{
			if (&Slots[Index]->GetWidgetRef() == &Widget.Get())
			{
				RemoveAt(Index);
				return Index;
			}
		}
		return INDEX_NONE;
	}
	void Empty()
	{
		TArray<TUniquePtr<SlotType>> Old = MoveTemp(Slots);
		Slots.Reset();
		for (TUniquePtr<SlotType>& Slot : Old)
		{
			Slot->SetOwner(nullptr);
		}
		InvalidateOwner();
	}

	/** Inserts its slot at the end of the statement in which it was made. Never store one. */
	struct FScopedWidgetSlotArguments : public SlotType::FSlotArguments
	{
		FScopedWidgetSlotArguments(TPanelChildren& InChildren, int32 InIndex)
			: Children(InChildren)
			, Index(InIndex)
		{
		}
		FScopedWidgetSlotArguments(const FScopedWidgetSlotArguments&) = delete;
		FScopedWidgetSlotArguments& operator=(const FScopedWidgetSlotArguments&) = delete;
		~FScopedWidgetSlotArguments() { Children.InsertSlot(*this, Index); }

	private:
		TPanelChildren& Children;
		int32 Index;
	};

private:
	void InvalidateOwner()
	{
		if (Owner)
		{
			FSlotBase::InvalidateWidget(*Owner);
		}
	}

	SWidget* Owner;
	TArray<TUniquePtr<SlotType>> Slots;
};

/** The one child of a compound widget. */
template <typename SlotType>
class TSingleChild : public FChildren
{
public:
	explicit TSingleChild(SWidget* InOwner) { Slot.SetOwner(InOwner); }
	virtual int32 Num() const override { return 1; }
	virtual TSharedRef<SWidget> GetChildAt(int32 Index) const override { return Slot.GetWidget(); }
	virtual SWidget& GetChildRefAt(int32 Index) const override { return Slot.GetWidgetRef(); }
	SlotType Slot;
};
