#include "Widgets/SToolTip.h"

#include "Host/HostAccess.h"
#include "Host/HostWidgetPaint.h"
#include "Styling/AppStyle.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Text/STextBlock.h"

namespace
{
	constexpr float ToolTipMaxWidth = 320.0f;
	constexpr float ToolTipLineHeight = 16.0f;
}

void SToolTip::Construct(const FArguments& InArgs)
{
	SetCanTick(false);
	Text = InArgs._Text;
	bOwnContent = &InArgs._Content.Widget.Get() != &SNullWidget::NullWidget.Get();
	TSharedRef<SWidget> Content = InArgs._Content.Widget;
	if (!bOwnContent)
	{
		const FMargin Margin = InArgs._TextMargin.Get();
		const FTextBlockStyle& Style = FAppStyle::Get().GetWidgetStyle<FTextBlockStyle>("SmallText");
		// clang-format off
		Content = SNew(SBox)
			.MaxDesiredWidth(ToolTipMaxWidth - Margin.Left - Margin.Right)
			[
				SNew(STextBlock)
				.Text(Text)
				.TextStyle(&Style)
				.ColorAndOpacity(FSlateColor(FAppStyle::GetColor("Colors.ForegroundStrong")))
				.LineHeightPercentage(FHostWidgetPaint::GetLineHeightPercentage(Style.Font, ToolTipLineHeight))
				.AutoWrapText(true)
			];
		// clang-format on
	}
	ChildSlot.Padding(InArgs._TextMargin)[Content];
}

bool SToolTip::HasContent() const
{
	return bOwnContent || !Text.Get().IsEmpty();
}

int32 SToolTip::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	FHostWidgetPaint::AddToolTipSurface(
		OutDrawElements, AllottedGeometry.GetLayoutBoundingRect(), AllottedGeometry.GetAccumulatedScale(), InWidgetStyle);
	return SCompoundWidget::OnPaint(Args, AllottedGeometry, MyCullingRect, OutDrawElements, LayerId, InWidgetStyle, bParentEnabled);
}

void SToolTip::DescribeAccess(FHostAccess& Out) const
{
	Out.Role = EHostRole::ToolTip;
	Out.Name = Text.Get();
	Out.bNamedByContents = true;
}
