#pragma once

#include "Framework/SlateDelegates.h"
#include "Host/TextShaper.h"
#include "Layout/Margin.h"
#include "Styling/SlateTypes.h"
#include "Types/SlateEnums.h"
#include "Widgets/SLeafWidget.h"

/** What is done with a line that is wider than its room. */
enum class ETextOverflowPolicy : uint8
{
	Clip,
	Ellipsis,
};

/**
 * Shows text of one font and colour.
 *
 * A text that wraps to its allotted width wants the width of its longest line unwrapped and the height that it has at the
 * width allotted last; once it meets a width that changes its height it asks for a new layout of the same frame.
 */
class SLATE_API STextBlock : public SLeafWidget
{
public:
	SLATE_BEGIN_ARGS(STextBlock) {}
	SLATE_ATTRIBUTE(FText, Text)
	/** The widget keeps the pointer. Without a style: normal text in the foreground colour. */
	SLATE_STYLE_ARGUMENT(FTextBlockStyle, TextStyle)
	SLATE_ATTRIBUTE(FSlateFontInfo, Font)
	SLATE_ATTRIBUTE(FSlateColor, ColorAndOpacity)
	SLATE_ATTRIBUTE(bool, AutoWrapText)
	/** Units; zero or less means none. With AutoWrapText the smaller width counts. */
	SLATE_ATTRIBUTE(float, WrapTextAt)
	SLATE_ATTRIBUTE(FMargin, Margin)
	/** 1 is the font's own line height. */
	SLATE_ATTRIBUTE(float, LineHeightPercentage)
	SLATE_ATTRIBUTE(ETextJustify::Type, Justification)
	SLATE_ATTRIBUTE(float, MinDesiredWidth)
	/** Concerns text that does not wrap. */
	SLATE_ARGUMENT(TOptional<ETextOverflowPolicy>, OverflowPolicy)
	SLATE_EVENT(FOnClicked, OnDoubleClicked)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

	FText GetText() const { return Text.Get(); }
	void SetText(TAttribute<FText> InText);
	void SetFont(TAttribute<FSlateFontInfo> InFont);
	void SetColorAndOpacity(const TAttribute<FSlateColor>& InColorAndOpacity) { GetLook().ColorAndOpacity = InColorAndOpacity; }
	void SetAutoWrapText(TAttribute<bool> InAutoWrapText);
	void SetWrapTextAt(TAttribute<float> InWrapTextAt);
	void SetMargin(TAttribute<FMargin> InMargin);
	void SetLineHeightPercentage(TAttribute<float> InLineHeightPercentage);
	void SetMinDesiredWidth(TAttribute<float> InMinDesiredWidth);
	void SetJustification(TAttribute<ETextJustify::Type> InJustification) { GetRare().Justification = MoveTemp(InJustification); }
	void SetOverflowPolicy(TOptional<ETextOverflowPolicy> InOverflowPolicy);
	FSlateFontInfo GetFont() const;

	virtual FText GetDisplayedText() const override { return Text.Get(); }
	virtual void DescribeAccess(FHostAccess& Out) const override;
	virtual FReply OnMouseButtonDoubleClick(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;

protected:
	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;

private:
	/** What differs from the style; kept apart, since there are many texts. */
	struct FLook
	{
		TAttribute<FSlateFontInfo> Font;
		TAttribute<FSlateColor> ColorAndOpacity;
	};
	/** Arguments that few texts have. */
	struct FRareArguments
	{
		TAttribute<bool> AutoWrapText;
		TAttribute<ETextJustify::Type> Justification;
		TAttribute<float> WrapTextAt;
		TAttribute<FMargin> Margin;
		TAttribute<float> LineHeightPercentage;
		TAttribute<float> MinDesiredWidth;
		FOnClicked OnDoubleClicked;
	};

	/** The shaped text, cut to a width and ended by an ellipsis. */
	struct FElided
	{
		TSharedPtr<ITextParagraph> Paragraph;
		float Pixels = 0.0f;
	};

	FLook& GetLook();
	FRareArguments& GetRare();
	bool WrapsToAllotted() const { return bAutoWrapBound ? Rare->AutoWrapText.Get() : bAutoWrap; }
	ETextJustify::Type GetJustification() const { return Rare ? Rare->Justification.Get() : ETextJustify::Left; }
	FMargin GetMargin() const { return Rare ? Rare->Margin.Get() : FMargin(); }
	float GetLineHeight() const { return Rare ? Rare->LineHeightPercentage.Get(1.0f) : 1.0f; }
	const FSlateFontInfo& ReadFont() const { return Look && Look->Font.IsSet() ? Look->Font.Get() : TextStyle->Font; }
	/** Shapes anew when text, font or scale differ from what was shaped. */
	void UpdateParagraph(float Scale) const;
	/** Device pixels to wrap at for a width in units; zero for none. */
	float GetWrapPixels(float AllottedWidth, float Scale) const;
	void WrapTo(float Pixels) const;
	float GetNaturalPixels() const;
	FVector2D MeasureParagraph(float Scale) const;
	/** The shaped text, cut and ended by an ellipsis where it is too wide. */
	const ITextParagraph& GetElided(float RoomPixels) const;
	void PaintLines(const ITextParagraph& Lines, const FVector2D& Origin, float RoomPixels, const FLinearColor& Color,
		const FLinearColor& Tint, FSlateWindowElementList& OutDrawElements, float Scale) const;

	TAttribute<FText> Text;
	const FTextBlockStyle* TextStyle = nullptr;
	TUniquePtr<FLook> Look;
	TUniquePtr<FRareArguments> Rare;

	mutable TSharedPtr<ITextParagraph> Paragraph;
	mutable TUniquePtr<FElided> Elided;
	mutable FText ShapedText;
	mutable FSlateFontInfo ShapedFont;
	mutable FVector2D Measured = FVector2D(0, 0);
	mutable float ShapedScale = 0.0f;
	mutable float WrapPixels = 0.0f;
	mutable float NaturalPixels = 0.0f;
	mutable float LastAllottedWidth = 0.0f;
	ETextOverflowPolicy OverflowPolicy = ETextOverflowPolicy::Clip;
	bool bAutoWrap = false;
	bool bAutoWrapBound = false;
	mutable bool bShapeAnew = true;
};
