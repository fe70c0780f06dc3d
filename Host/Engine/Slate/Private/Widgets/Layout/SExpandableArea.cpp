#include "Widgets/Layout/SExpandableArea.h"

#include "Host/HostAccess.h"
#include "Styling/AppStyle.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

// A header that folds its body away. The body is built at once and collapsed, so that it costs no layout and keeps what the
// user has done in it.

namespace
{
	constexpr double AreaArrowSize = 16.0;

	bool IsEmptySlot(const FSlateNamedSlotContent& Slot)
	{
		return &Slot.Widget.Get() == &SNullWidget::NullWidget.Get();
	}

	/** Content stands inside the outline, which it would cover otherwise. */
	float GetOutlineWidth(const FSlateBrush& Brush)
	{
		return Brush.DrawAs == ESlateBrushDrawType::RoundedBox ? Brush.OutlineSettings.Width : 0.0f;
	}
}

void SExpandableArea::Construct(const FArguments& InArgs)
{
	SetCanTick(false);
	Style = InArgs._Style ? InArgs._Style : &FAppStyle::Get().GetWidgetStyle<FExpandableAreaStyle>("ExpandableArea");
	ExpansionChangedHandler = InArgs._OnAreaExpansionChanged;
	bAreaExpanded = !InArgs._InitiallyCollapsed;
	const FSlateBrush* Border = InArgs._BorderImage ? InArgs._BorderImage : FAppStyle::GetBrush("ExpandableArea.Border");
	Body = MakeBody(InArgs);
	// clang-format off
	ChildSlot
	[
		SNew(SBorder)
		.BorderImage(Border)
		.BorderBackgroundColor(InArgs._BorderBackgroundColor)
		.Padding(GetOutlineWidth(*Border))
		[
			SNew(SVerticalBox)
			+ SVerticalBox::Slot()
			.AutoHeight()
			[
				MakeHeader(InArgs)
			]
			+ SVerticalBox::Slot()
			.FillHeight(1.0f)
			[
				Body.ToSharedRef()
			]
		]
	];
	// clang-format on
}

// A header is one button over its whole width: the arrow alone would be a small thing to hit.
TSharedRef<SWidget> SExpandableArea::MakeHeader(const FArguments& InArgs)
{
	TSharedRef<SWidget> Content = InArgs._HeaderContent.Widget;
	if (IsEmptySlot(InArgs._HeaderContent))
	{
		Content = SNew(STextBlock)
					  .Text(InArgs._AreaTitle)
					  .Font(InArgs._AreaTitleFont.IsSet() ? InArgs._AreaTitleFont
														  : TAttribute<FSlateFontInfo>(FAppStyle::GetFontStyle("NormalFontBold")))
					  .ColorAndOpacity(FSlateColor(FAppStyle::GetColor("Colors.ForegroundStrong")))
					  .Margin(FMargin(2.0f, 6.0f));
	}
	const bool bOwnPadding = InArgs._HeaderPadding.IsSet();
	// clang-format off
	return SNew(SButton)
		.ButtonStyle(FAppStyle::Get(), "NoBorder")
		.ContentPadding(bOwnPadding ? InArgs._HeaderPadding : TAttribute<FMargin>(FMargin(0.0f)))
		.VAlign(VAlign_Fill)
		.OnClicked(this, &SExpandableArea::OnHeaderClicked)
		[
			SNew(SHorizontalBox)
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.VAlign(VAlign_Center)
			.Padding(bOwnPadding ? FMargin(0.0f) : FMargin(6.0f, 0.0f, 2.0f, 0.0f))
			[
				SAssignNew(Arrow, SImage)
				.Image(GetArrow())
				.DesiredSizeOverride(TOptional<FVector2D>(FVector2D(AreaArrowSize, AreaArrowSize)))
				.ColorAndOpacity(Style->ArrowColor)
			]
			+ SHorizontalBox::Slot()
			.FillWidth(1.0f)
			.VAlign(VAlign_Center)
			[
				Content
			]
		];
	// clang-format on
}

TSharedRef<SWidget> SExpandableArea::MakeBody(const FArguments& InArgs)
{
	TAttribute<FOptionalSize> MaxHeight;
	if (InArgs._MaxHeight > 0.0f)
	{
		MaxHeight = FOptionalSize(InArgs._MaxHeight);
	}
	// clang-format off
	return SNew(SBox)
		.Visibility(bAreaExpanded ? EVisibility::Visible : EVisibility::Collapsed)
		.MaxDesiredHeight(MaxHeight)
		[
			SNew(SBorder)
			.BorderImage(InArgs._BodyBorderImage)
			.BorderBackgroundColor(InArgs._BodyBorderBackgroundColor)
			.Padding(InArgs._Padding)
			[
				InArgs._BodyContent.Widget
			]
		];
	// clang-format on
}

// The handler comes last, when everything stands as it will be.
void SExpandableArea::SetExpanded(bool bExpanded)
{
	if (bAreaExpanded == bExpanded)
	{
		return;
	}
	bAreaExpanded = bExpanded;
	Arrow->SetImage(GetArrow());
	Body->SetVisibility(bExpanded ? EVisibility::Visible : EVisibility::Collapsed);
	ExpansionChangedHandler.ExecuteIfBound(bExpanded);
}

FReply SExpandableArea::OnHeaderClicked()
{
	SetExpanded(!bAreaExpanded);
	return FReply::Handled();
}

void SExpandableArea::DescribeAccess(FHostAccess& Out) const
{
	Out.Role = EHostRole::Group;
	Out.Action = "expand or contract";
	Out.States |= EHostAccessState::Expandable;
	Out.States |= bAreaExpanded ? EHostAccessState::Expanded : EHostAccessState::None;
}

FReply SExpandableArea::DoAccessAction()
{
	return OnHeaderClicked();
}
