#pragma once

#include "Layout/Children.h"
#include "Styling/SlateColor.h"
#include "Widgets/DeclarativeSyntaxSupport.h"
#include "Widgets/SWidget.h"

/** A widget made of other widgets: one child slot that Construct fills. */
class SLATECORE_API SCompoundWidget : public SWidget
{
public:
	/** The one slot of a compound widget: ChildSlot.Padding(..)[ widget ]. Setting it takes effect at once. */
	class SLATECORE_API FCompoundWidgetOneChildSlot : public FSlotBase
	{
	public:
		FCompoundWidgetOneChildSlot& operator[](const TSharedRef<SWidget>& InChild)
		{
			AttachWidget(InChild);
			return *this;
		}
		FCompoundWidgetOneChildSlot& Padding(TAttribute<FMargin> InPadding);
		FCompoundWidgetOneChildSlot& Padding(float Uniform) { return Padding(TAttribute<FMargin>(FMargin(Uniform))); }
		FCompoundWidgetOneChildSlot& Padding(float Horizontal, float Vertical)
		{
			return Padding(TAttribute<FMargin>(FMargin(Horizontal, Vertical)));
		}
		FCompoundWidgetOneChildSlot& Padding(float Left, float Top, float Right, float Bottom)
		{
			return Padding(TAttribute<FMargin>(FMargin(Left, Top, Right, Bottom)));
		}
		FCompoundWidgetOneChildSlot& HAlign(EHorizontalAlignment InAlignment);
		FCompoundWidgetOneChildSlot& VAlign(EVerticalAlignment InAlignment);
		FMargin GetPadding() const { return PaddingAttribute.Get(); }
		EHorizontalAlignment GetHorizontalAlignment() const { return HAlignment; }
		EVerticalAlignment GetVerticalAlignment() const { return VAlignment; }

	private:
		TAttribute<FMargin> PaddingAttribute = FMargin(0.0f);
		EHorizontalAlignment HAlignment = HAlign_Fill;
		EVerticalAlignment VAlignment = VAlign_Fill;
	};

	virtual FChildren* GetChildren() override { return &Children; }
	/** Tints and fades everything below. */
	void SetColorAndOpacity(const TAttribute<FLinearColor>& InColorAndOpacity) { ColorAndOpacity = InColorAndOpacity; }
	void SetForegroundColor(const TAttribute<FSlateColor>& InForegroundColor) { ForegroundColor = InForegroundColor; }

protected:
	SCompoundWidget();

	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;
	virtual void OnArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const override;
	/** What children inherit: this widget's tint blended in, and its foreground colour when one was given. */
	FWidgetStyle GetChildStyle(const FWidgetStyle& InWidgetStyle) const;

private:
	TSingleChild<FCompoundWidgetOneChildSlot> Children;

protected:
	FCompoundWidgetOneChildSlot& ChildSlot;
	TAttribute<FLinearColor> ColorAndOpacity = FLinearColor(1.0f, 1.0f, 1.0f, 1.0f);
	TAttribute<FSlateColor> ForegroundColor;
};
