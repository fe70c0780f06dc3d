#pragma once

#include "Host/HostMarginArguments.h"
#include "Widgets/SCompoundWidget.h"

/** Gives its content padding, alignment and a size of the caller's. Overrides win over limits; all count the padding in. */
class SLATE_API SBox : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SBox) {}
	SLATE_ARGUMENT_DEFAULT(EHorizontalAlignment, HAlign) = HAlign_Fill;
	SLATE_ARGUMENT_DEFAULT(EVerticalAlignment, VAlign) = VAlign_Fill;
	SLATE_ATTRIBUTE(FMargin, Padding)
	HOST_MARGIN_NUMBERS(Padding)
	SLATE_ATTRIBUTE(FOptionalSize, WidthOverride)
	SLATE_ATTRIBUTE(FOptionalSize, HeightOverride)
	SLATE_ATTRIBUTE(FOptionalSize, MinDesiredWidth)
	SLATE_ATTRIBUTE(FOptionalSize, MinDesiredHeight)
	SLATE_ATTRIBUTE(FOptionalSize, MaxDesiredWidth)
	SLATE_ATTRIBUTE(FOptionalSize, MaxDesiredHeight)
	SLATE_DEFAULT_SLOT(FArguments, Content)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

	void SetContent(const TSharedRef<SWidget>& InContent) { ChildSlot.AttachWidget(InContent); }
	void SetWidthOverride(TAttribute<FOptionalSize> InSize) { AssignSizeAttribute(WidthOverride, MoveTemp(InSize)); }
	void SetHeightOverride(TAttribute<FOptionalSize> InSize) { AssignSizeAttribute(HeightOverride, MoveTemp(InSize)); }
	void SetMinDesiredWidth(TAttribute<FOptionalSize> InSize) { AssignSizeAttribute(MinDesiredWidth, MoveTemp(InSize)); }
	void SetMinDesiredHeight(TAttribute<FOptionalSize> InSize) { AssignSizeAttribute(MinDesiredHeight, MoveTemp(InSize)); }
	void SetMaxDesiredWidth(TAttribute<FOptionalSize> InSize) { AssignSizeAttribute(MaxDesiredWidth, MoveTemp(InSize)); }
	void SetMaxDesiredHeight(TAttribute<FOptionalSize> InSize) { AssignSizeAttribute(MaxDesiredHeight, MoveTemp(InSize)); }

protected:
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;

private:
	TAttribute<FOptionalSize> WidthOverride;
	TAttribute<FOptionalSize> HeightOverride;
	TAttribute<FOptionalSize> MinDesiredWidth;
	TAttribute<FOptionalSize> MinDesiredHeight;
	TAttribute<FOptionalSize> MaxDesiredWidth;
	TAttribute<FOptionalSize> MaxDesiredHeight;
};
