#include "Widgets/Input/SHyperlink.h"

#include "Host/HostAccess.h"
#include "Host/HostWidgetPaint.h"
#include "Host/TextShaper.h"
#include "Rendering/DrawElements.h"
#include "Styling/AppStyle.h"
#include "Widgets/Text/STextBlock.h"

namespace
{
	/** The ring stands this far outside the text. */
	constexpr float LinkRingGap = 2.0f;
	constexpr float LinkRingRadius = 3.0f;
}

void SHyperlink::Construct(const FArguments& InArgs)
{
	LinkStyle = InArgs._Style ? InArgs._Style : &FAppStyle::Get().GetWidgetStyle<FHyperlinkStyle>("Hyperlink");
	LinkTextStyle = InArgs._TextStyle ? InArgs._TextStyle : &LinkStyle->TextStyle;
	NavigateHandler = InArgs._OnNavigate;
	// clang-format off
	SButton::Construct(SButton::FArguments()
		.ButtonStyle(FAppStyle::Get(), "NoBorder")
		.ContentPadding(InArgs._Padding.IsSet() ? InArgs._Padding : TAttribute<FMargin>(FMargin(0.0f)))
		.HAlign(HAlign_Left)
		[
			SNew(STextBlock)
			.Text(InArgs._Text)
			.TextStyle(LinkTextStyle)
			.ColorAndOpacity(FSlateColor::UseForeground())
		]);
	// clang-format on
	SetCursor(TOptional<EMouseCursor::Type>(EMouseCursor::Hand));
}

FReply SHyperlink::ExecuteOnClick()
{
	NavigateHandler.ExecuteIfBound();
	return FReply::Handled();
}

void SHyperlink::DescribeAccess(FHostAccess& Out) const
{
	SButton::DescribeAccess(Out);
	Out.Role = EHostRole::Link;
	Out.Action = "jump";
}

int32 SHyperlink::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	const bool bEnabled = ShouldBeEnabled(bParentEnabled);
	const bool bPressedLook = bEnabled && LooksPressed();
	const bool bHoveredLook = bEnabled && IsHovered();
	const FSlateColor& Which = bPressedLook ? LinkStyle->PressedColor : (bHoveredLook ? LinkStyle->HoveredColor : LinkStyle->NormalColor);
	const FLinearColor Color = Which.GetColor(InWidgetStyle);
	const float Scale = AllottedGeometry.GetAccumulatedScale();

	FWidgetStyle TextStyle = InWidgetStyle;
	TextStyle.SetForegroundColor(Color);
	if (!bEnabled)
	{
		TextStyle.BlendOpacity(GetButtonStyle().DisabledContentOpacity);
	}
	FArrangedChildren Arranged(EVisibility::Visible, OutDrawElements.GetClip());
	ArrangeChildren(AllottedGeometry, Arranged);
	const int32 Result = PaintArrangedChildren(Args, Arranged, MyCullingRect, OutDrawElements, LayerId, TextStyle, bEnabled);
	if (Arranged.Num() > 0)
	{
		const FSlateRect Text = Arranged[0].Geometry.GetLayoutBoundingRect();
		const FFontLineMetrics Metrics = ITextShaper::Get().GetLineMetrics(LinkTextStyle->Font, Scale);
		const float Top = FMath::RoundToFloat(Text.Top + Metrics.Ascent + Metrics.UnderlineOffset);
		const float Thickness = FMath::Max(FMath::RoundToFloat(Scale), 1.0f);
		FLinearColor Line = Color * TextStyle.GetColorAndOpacityTint();
		Line.A *= bHoveredLook ? 1.0f : LinkStyle->UnderlineOpacity;
		OutDrawElements.AddBox(FSlateRect(Text.Left, Top, Text.Right, Top + Thickness), Line.ToFColorSRGB());
	}
	if (bEnabled && ShouldShowFocusRing())
	{
		FHostWidgetPaint::AddFocusRing(
			OutDrawElements, AllottedGeometry.GetLayoutBoundingRect().ExtendBy(LinkRingGap * Scale), LinkRingRadius, Scale, InWidgetStyle);
	}
	return Result;
}
