#pragma once

#include "Layout/Margin.h"

/** Inside SLATE_BEGIN_ARGS: lets a margin attribute also be given as one, two or four numbers. */
#define HOST_MARGIN_NUMBERS(AttrName) \
	WidgetArgsType& AttrName(float Uniform) \
	{ \
		return AttrName(TAttribute<FMargin>(FMargin(Uniform))); \
	} \
	WidgetArgsType& AttrName(float Horizontal, float Vertical) \
	{ \
		return AttrName(TAttribute<FMargin>(FMargin(Horizontal, Vertical))); \
	} \
	WidgetArgsType& AttrName(float Left, float Top, float Right, float Bottom) \
	{ \
		return AttrName(TAttribute<FMargin>(FMargin(Left, Top, Right, Bottom))); \
	}
