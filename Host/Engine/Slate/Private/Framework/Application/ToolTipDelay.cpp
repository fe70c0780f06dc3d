#include "ToolTipDelay.h"

#include "Host/HostSleep.h"
#include "LayerStack.h"
#include "Widgets/IToolTip.h"
#include "Widgets/SToolTip.h"

// A tooltip comes once the pointer has rested for half a second on something that has one, goes when the pointer leaves
// it, and does not come back before the pointer has moved: a press or a key ends it for now.

namespace
{
	constexpr double ToolTipDelaySeconds = 0.5;
}

void FToolTipDelay::Close(const FVector2D& Pointer)
{
	Owner.Reset();
	RestSince = -1.0;
	Layers.SetToolTip(nullptr, Pointer);
}

TSharedPtr<SWidget> FToolTipDelay::FindOwner(const TArray<TWeakPtr<SWidget>>& Hovered)
{
	for (int32 Index = Hovered.Num() - 1; Index >= 0; --Index)
	{
		const TSharedPtr<SWidget> Widget = Hovered[Index].Pin();
		if (Widget && ((Widget->GetToolTip() && Widget->GetToolTip()->HasContent()) || !Widget->GetToolTipText().IsEmpty()))
		{
			return Widget;
		}
	}
	return nullptr;
}

bool FToolTipDelay::Update(double Now, const TArray<TWeakPtr<SWidget>>& Hovered, const FVector2D& Pointer, bool bMayShow)
{
	const TSharedPtr<SWidget> NewOwner = bMayShow && RestSince >= 0.0 ? FindOwner(Hovered) : nullptr;
	if (Layers.HasToolTip())
	{
		// An open one goes with its owner; the next waits for its delay anew.
		if (NewOwner && Owner.HasSameObject(NewOwner.Get()))
		{
			return false;
		}
		Layers.SetToolTip(nullptr, Pointer);
		Owner.Reset();
		return true;
	}
	if (!NewOwner)
	{
		return false;
	}
	if (Now - RestSince < ToolTipDelaySeconds)
	{
		// Nothing else may happen until then, and frames come only when something does.
		FHostSleep::RequestFrameAt(RestSince + ToolTipDelaySeconds);
		return false;
	}
	Show(NewOwner.ToSharedRef(), Pointer);
	return true;
}

void FToolTipDelay::Show(const TSharedRef<SWidget>& NewOwner, const FVector2D& Pointer)
{
	TSharedPtr<IToolTip> ToolTip = NewOwner->GetToolTip();
	if (!ToolTip)
	{
		const TWeakPtr<SWidget> WeakOwner = NewOwner;
		ToolTip = SNew(SToolTip).Text_Lambda(
			[WeakOwner]()
			{
				const TSharedPtr<SWidget> Pinned = WeakOwner.Pin();
				return Pinned ? Pinned->GetToolTipText() : FText::GetEmpty();
			});
	}
	Owner = NewOwner;
	Layers.SetToolTip(ToolTip->AsWidget(), Pointer, NewOwner);
}
