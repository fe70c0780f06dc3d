#pragma once

#include "Widgets/DeclarativeSyntaxSupport.h"
#include "Widgets/SWidget.h"

/** A widget that arranges any number of children and paints nothing itself. */
class SLATECORE_API SPanel : public SWidget
{
protected:
	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;
};
