#pragma once

#include "CoreMinimal.h"

class SWidget;
struct FGeometry;

/** What a tab needs so that the parts of it which take the room that is left have enough to be used. Game thread. */
namespace ColumnHeights
{
	/**
	 * By how much the content would have to be higher for that, units; negative by how much it could be lower. Unset when no part of it
	 * takes what is left. What scrolls upright by itself counts as such a part, whatever is in it.
	 */
	TOptional<float> FindMissing(const SWidget& Root, const FGeometry& Geometry);
}
