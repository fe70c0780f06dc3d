#pragma once

#include "CoreMinimal.h"
#include "Layout/Margin.h"
#include "Misc/Attribute.h"

class SWidget;

/** An attribute that is seldom bound: while it is not, it takes little more room than its value. */
template <typename ObjectType>
class TSlotAttribute
{
public:
	TSlotAttribute(const ObjectType& InValue)
		: Value(InValue)
	{
	}
	TSlotAttribute& operator=(const TAttribute<ObjectType>& Attribute)
	{
		if (Attribute.IsBound())
		{
			Bound = MakeUnique<TAttribute<ObjectType>>(Attribute);
		}
		else
		{
			Bound.Reset();
			Value = Attribute.Get();
		}
		return *this;
	}
	ObjectType Get() const { return Bound ? Bound->Get() : Value; }
	bool IsBound() const { return Bound.IsValid(); }

private:
	ObjectType Value;
	TUniquePtr<TAttribute<ObjectType>> Bound;
};

/** Holds one child of a widget and keeps the child's link to its parent. */
class SLATECORE_API FSlotBase
{
public:
	FSlotBase();
	virtual ~FSlotBase();
	FSlotBase(const FSlotBase&) = delete;
	FSlotBase& operator=(const FSlotBase&) = delete;

	const TSharedRef<SWidget>& GetWidget() const { return Widget; }
	SWidget& GetWidgetRef() const { return *Widget; }
	/** Puts a widget into the slot in place of the one before. */
	void AttachWidget(const TSharedRef<SWidget>& InWidget);
	void SetOwner(SWidget* InOwner);
	/** True when an attribute of the slot that can change its size is bound. */
	bool HasSizeBinding() const { return bBindingNoted; }
	/** Asks for a new layout of a widget; for templates that do not see its class. */
	static void InvalidateWidget(SWidget& Widget);

protected:
	/** The slot changed in a way that moves or sizes children. */
	void InvalidateLayout();
	/** Tells the owner that an attribute of the slot that can change its size is bound. */
	void NoteBinding(bool bBound);

private:
	TSharedRef<SWidget> Widget;
	SWidget* Owner = nullptr;
	bool bBindingNoted = false;
};

/** What every slot declaration shares: the child, and where to leave a pointer to the slot. FThis is the declaration's own class. */
template <typename SlotType, typename FThis>
struct TSlotArgumentsBase
{
	FThis& operator[](const TSharedRef<SWidget>& InChild)
	{
		_Child = InChild;
		return static_cast<FThis&>(*this);
	}
	/** Leaves the slot's address behind once it exists. */
	FThis& Expose(SlotType*& OutSlot)
	{
		_ExposedSlot = &OutSlot;
		return static_cast<FThis&>(*this);
	}
	TSharedPtr<SWidget> _Child;
	SlotType** _ExposedSlot = nullptr;
};

/** Declaration of a slot with padding and alignment. */
template <typename SlotType, typename FThis>
struct TLayoutSlotArguments : public TSlotArgumentsBase<SlotType, FThis>
{
	FThis& Padding(TAttribute<FMargin> InPadding)
	{
		_Padding = MoveTemp(InPadding);
		return static_cast<FThis&>(*this);
	}
	FThis& Padding(float Uniform) { return Padding(TAttribute<FMargin>(FMargin(Uniform))); }
	FThis& Padding(float Horizontal, float Vertical) { return Padding(TAttribute<FMargin>(FMargin(Horizontal, Vertical))); }
	FThis& Padding(float Left, float Top, float Right, float Bottom)
	{
		return Padding(TAttribute<FMargin>(FMargin(Left, Top, Right, Bottom)));
	}
	FThis& HAlign(EHorizontalAlignment InAlignment)
	{
		_HAlign = InAlignment;
		return static_cast<FThis&>(*this);
	}
	FThis& VAlign(EVerticalAlignment InAlignment)
	{
		_VAlign = InAlignment;
		return static_cast<FThis&>(*this);
	}
	TAttribute<FMargin> _Padding = FMargin(0.0f);
	EHorizontalAlignment _HAlign = HAlign_Fill;
	EVerticalAlignment _VAlign = VAlign_Fill;
};

/** A slot with padding and alignment. */
template <typename SlotType>
class TBasicLayoutWidgetSlot : public FSlotBase
{
public:
	FMargin GetPadding() const { return PaddingAttribute.Get(); }
	EHorizontalAlignment GetHorizontalAlignment() const { return HAlignment; }
	EVerticalAlignment GetVerticalAlignment() const { return VAlignment; }

protected:
	template <typename ArgumentsType>
	void ConstructLayout(const ArgumentsType& Arguments)
	{
		PaddingAttribute = Arguments._Padding;
		HAlignment = Arguments._HAlign;
		VAlignment = Arguments._VAlign;
		NoteBinding(PaddingAttribute.IsBound());
		if (Arguments._Child)
		{
			AttachWidget(Arguments._Child.ToSharedRef());
		}
		InvalidateLayout();
	}

private:
	TSlotAttribute<FMargin> PaddingAttribute = FMargin(0.0f);
	EHorizontalAlignment HAlignment = HAlign_Fill;
	EVerticalAlignment VAlignment = VAlign_Fill;
};
