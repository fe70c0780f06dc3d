#include "DescendantView.h"

#include "Layout/ArrangedWidget.h"

namespace DescendantView
{
	FGeometry ArrangeDown(const TArray<TSharedPtr<SWidget>>& Path, FGeometry Place)
	{
		for (int32 Depth = Path.Num() - 1; Depth > 0; --Depth)
		{
			FArrangedChildren Inner(EVisibility::Visible);
			Path[Depth]->ArrangeChildren(Place, Inner);
			for (int32 Child = 0; Child < Inner.Num(); ++Child)
			{
				if (&Inner[Child].Widget.Get() == Path[Depth - 1].Get())
				{
					Place = Inner[Child].Geometry;
				}
			}
		}
		return Place;
	}

	double GetOffset(EDescendantScrollDestination Destination, double Begin, double Length, double Offset, double ViewLength)
	{
		switch (Destination)
		{
		case EDescendantScrollDestination::IntoView:
			if (Begin < Offset || Length > ViewLength)
			{
				return Begin;
			}
			return Begin + Length > Offset + ViewLength ? Begin + Length - ViewLength : Offset;
		case EDescendantScrollDestination::TopOrLeft:
			return Begin;
		case EDescendantScrollDestination::Center:
			return Begin + (Length - ViewLength) * 0.5;
		case EDescendantScrollDestination::BottomOrRight:
			return Begin + Length - ViewLength;
		}
		return Offset;
	}
}
