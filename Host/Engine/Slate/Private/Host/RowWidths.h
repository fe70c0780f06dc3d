#pragma once

#include "CoreMinimal.h"

class SWidget;
struct FGeometry;

/** What a tab needs so that no row of its widgets is cut. Game thread. */
namespace RowWidths
{
	/**
	 * By how much the row that is cut most would have to be wider, units; zero when none is. Rows out of view count nothing, nor does
	 * what scrolls sideways by itself or is clipped by a border of its own.
	 */
	float FindMissing(const SWidget& Root, const FGeometry& Geometry);
}
