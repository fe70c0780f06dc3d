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

void FSlotBase::InvalidateLayout()
{
	if (Owner)
	{
		Owner->Invalidate(EInvalidateWidgetReason::Layout);
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
