#pragma once

#include "Widgets/Layout/SScrollBox.h"

/** Where a widget deep within a scroll box stands, and the offset that shows it. */
namespace DescendantView
{
	/**
	 * Where the widget at the front of a path stands when the one at its back stands at Place. Arranged step by step: it need
	 * not have been painted yet.
	 */
	FGeometry ArrangeDown(const TArray<TSharedPtr<SWidget>>& Path, FGeometry Place);
	/** The offset that shows a stretch of the content as it is asked for; not yet within the content's bounds. */
	double GetOffset(EDescendantScrollDestination Destination, double Begin, double Length, double Offset, double ViewLength);
}
