#include "SlotBase.h"

#include "Widgets/SNullWidget.h"
#include "Widgets/SWidget.h"

FSlotBase::FSlotBase()
	: Widget(SNullWidget::GetNullWidget())
{
}

FSlotBase::~FSlotBase()
{
	SetOwner(nullptr);
}

void FSlotBase::AttachWidget(const TSharedRef<SWidget>& InWidget)
{
	if (&Widget.Get() == &InWidget.Get())
	{
		return;
	}
	// The old child is released last: its destructor may run code that looks at this slot.
	const TSharedRef<SWidget> Old = Widget;
	if (Owner && Old->ParentWidget == Owner)
	{
		Old->SetParent(nullptr);
	}
	Widget = InWidget;
	if (Owner)
	{
		Widget->SetParent(Owner);
		InvalidateLayout();
	}
}

void FSlotBase::SetOwner(SWidget* InOwner)
{
	if (Owner == InOwner)
	{
		return;
	}
	if (Owner)
	{
		if (Widget->ParentWidget == Owner)
		{
			Widget->SetParent(nullptr);
		}
		if (bBindingNoted)
		{
			Owner->ChangeSizeBindings(-1);
		}
	}
	Owner = InOwner;
	if (Owner)
	{
		Widget->SetParent(Owner);
		if (bBindingNoted)
		{
			Owner->ChangeSizeBindings(1);
		}
		InvalidateLayout();
	}
}

void FSlotBase::InvalidateWidget(SWidget& InWidget)
{
	InWidget.Invalidate(EInvalidateWidgetReason::Layout);
}

// A panel that watches its children hears which slot it was, and measures that one alone: what it keeps of the others stays good.
void FSlotBase::InvalidateLayout()
{
	if (!Owner)
	{
		return;
	}
	const bool bOwnChange = Owner->bNeedsPrepass;
	Owner->Invalidate(EInvalidateWidgetReason::Layout);
	if (Owner->bWatchesChildren)
	{
		Owner->bNeedsPrepass = bOwnChange;
		Owner->bDescendantNeedsPrepass = true;
		Owner->OnChildChanged(*Widget);
	}
}

void FSlotBase::NoteBinding(bool bBound)
{
	if (bBound == bBindingNoted)
	{
		return;
	}
	bBindingNoted = bBound;
	if (Owner)
	{
		Owner->ChangeSizeBindings(bBound ? 1 : -1);
	}
}
