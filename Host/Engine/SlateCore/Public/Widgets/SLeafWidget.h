#pragma once

#include "Widgets/DeclarativeSyntaxSupport.h"
#include "Widgets/SWidget.h"

/** A widget without children. */
class SLATECORE_API SLeafWidget : public SWidget
{
public:
	virtual FChildren* GetChildren() override;

protected:
	virtual void OnArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const override;
};
