#include "Layout/ArrangedWidget.h"

#include "Widgets/SWidget.h"

namespace
{
	/** Longer lists are given back: one that was long once need not be so again. */
	constexpr int32 MaxSpareLength = 1024;
	constexpr int32 MaxSpares = 64;

	TArray<TArray<FArrangedWidget>>& GetSpareLists()
	{
		static TArray<TArray<FArrangedWidget>> Spares;
		return Spares;
	}
}

FArrangedChildren::FArrangedChildren(EVisibility InFilter)
	: Filter(InFilter)
{
	TArray<TArray<FArrangedWidget>>& Spares = GetSpareLists();
	if (Spares.Num() > 0)
	{
		Array = MoveTemp(Spares.Last());
		Spares.Pop();
	}
}

FArrangedChildren::FArrangedChildren(EVisibility InFilter, const FSlateRect& InClip)
	: FArrangedChildren(InFilter)
{
	bHasClip = true;
	Clip = InClip;
}

FArrangedChildren::~FArrangedChildren()
{
	// Emptied first: the last reference to a widget may go here, and what its destructor runs may arrange as well.
	Array.Reset();
	TArray<TArray<FArrangedWidget>>& Spares = GetSpareLists();
	if (Array.Max() > 0 && Array.Max() <= MaxSpareLength && Spares.Num() < MaxSpares)
	{
		Spares.Add(MoveTemp(Array));
	}
}
