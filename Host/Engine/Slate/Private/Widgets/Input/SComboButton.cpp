#include "Widgets/Input/SComboButton.h"

#include "Host/HostAccess.h"
#include "Host/HostWidgetPaint.h"
#include "Styling/AppStyle.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

// A button that opens a menu below itself. It paints itself like a button and not as one: the menu opens at the press and
// not at the release, and stays pressed as long as the menu is open.

namespace
{
	constexpr float ComboArrowSize = 16.0f;
	constexpr float ComboArrowGap = 4.0f;

	/** Titles in a combo box end in an ellipsis, whoever made their text blocks. */
	void ElideTexts(SWidget& Widget)
	{
		static const FName TextBlock(TEXT("STextBlock"));
		if (Widget.GetType() == TextBlock)
		{
			static_cast<STextBlock&>(Widget).SetOverflowPolicy(ETextOverflowPolicy::Ellipsis);
		}
		FChildren& Children = *Widget.GetChildren();
		for (int32 Index = 0; Index < Children.Num(); ++Index)
		{
			ElideTexts(Children.GetChildRefAt(Index));
		}
	}
}

void SComboButton::Construct(const FArguments& InArgs)
{
	SMenuAnchor::FArguments Anchor;
	Anchor.OnGetMenuContent(InArgs._OnGetMenuContent);
	Anchor.OnMenuOpenChanged(InArgs._OnMenuOpenChanged);
	Anchor.Placement(InArgs._MenuPlacement.IsSet() ? InArgs._MenuPlacement : TAttribute<EMenuPlacement>(MenuPlacement_ComboBox));
	if (InArgs._MenuContent.Widget != SNullWidget::NullWidget)
	{
		Anchor.MenuContent(InArgs._MenuContent.Widget);
	}
	SMenuAnchor::Construct(Anchor);
	OpenedHandler = InArgs._OnComboBoxOpened;
	bFocusable = InArgs._IsFocusable;
	if (InArgs._ForegroundColor.IsSet())
	{
		SetForegroundColor(InArgs._ForegroundColor);
	}
	ConstructButton(
		InArgs._ComboButtonStyle, InArgs._ButtonStyle, InArgs._ButtonContent.Widget, InArgs._ContentPadding, InArgs._HasDownArrow);
}

void SComboButton::ConstructButton(const FComboButtonStyle* InStyle, const FButtonStyle* InButtonStyle,
	const TSharedRef<SWidget>& InContent, const TAttribute<FMargin>& InPadding, bool bHasDownArrow)
{
	Style = InStyle ? InStyle : &FAppStyle::Get().GetWidgetStyle<FComboButtonStyle>(TEXT("ComboButton"));
	Button = InButtonStyle ? InButtonStyle : &Style->ButtonStyle;
	ContentPadding = InPadding;
	bArrow = bHasDownArrow;
	// clang-format off
	SetContent(
		SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.FillWidth(1.0f)
		.VAlign(VAlign_Center)
		.Padding(TAttribute<FMargin>::CreateSP(this, &SComboButton::GetContentPadding))
		[
			SAssignNew(ContentHolder, SBox)
			.Clipping(EWidgetClipping::ClipToBounds)
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		.Padding(ComboArrowGap, 0.0f, ComboArrowGap, 0.0f)
		[
			SNew(SImage)
			.Visibility(bArrow ? EVisibility::HitTestInvisible : EVisibility::Collapsed)
			.Image(&Style->DownArrowImage)
			.DesiredSizeOverride(FVector2D(ComboArrowSize, ComboArrowSize))
			.ColorAndOpacity(Style->ArrowColor)
		]);
	// clang-format on
	SetButtonContent(InContent);
}

// What is left over goes to the title, which ends in an ellipsis where it has no room.
FMargin SComboButton::GetContentPadding() const
{
	FMargin Padding = ContentPadding.Get(Style->ContentPadding);
	if (bArrow)
	{
		// The arrow brings its own room.
		Padding.Right = 0.0f;
	}
	return Padding;
}

void SComboButton::SetButtonContent(const TSharedRef<SWidget>& InContent)
{
	ElideTexts(*InContent);
	ContentHolder->SetContent(InContent);
}

TSharedRef<SWidget> SComboButton::MakeMenuSurface(const TSharedRef<SWidget>& InContent) const
{
	// clang-format off
	return SNew(SBorder)
		.BorderImage(&Style->MenuBorderBrush)
		.Padding(Style->MenuBorderPadding)
		[
			InContent
		];
	// clang-format on
}

TSharedPtr<SWidget> SComboButton::MakeMenuContent()
{
	const TSharedPtr<SWidget> Content = SMenuAnchor::MakeMenuContent();
	return Content ? TSharedPtr<SWidget>(MakeMenuSurface(Content.ToSharedRef())) : nullptr;
}

void SComboButton::OnOpenChanged(bool bIsOpen)
{
	if (bIsOpen)
	{
		const FSimpleDelegate Opened = OpenedHandler;
		Opened.ExecuteIfBound();
	}
	SMenuAnchor::OnOpenChanged(bIsOpen);
}

// Alt with an arrow opens as in other programs, whichever way the arrow points.
FReply SComboButton::OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	const FKey Key = InKeyEvent.GetKey();
	if (Key == EKeys::Escape && IsOpen())
	{
		SetIsOpen(false);
		return FReply::Handled();
	}
	if (Key == EKeys::Enter || Key == EKeys::SpaceBar || (InKeyEvent.IsAltDown() && (Key == EKeys::Down || Key == EKeys::Up)))
	{
		SetIsOpen(!IsOpen(), FocusesMenu());
		return FReply::Handled();
	}
	return FReply::Unhandled();
}

// The press that closes an open menu must not open it again: the menu has seen it first (ShouldOpenDueToClick). Opening runs
// handlers of the owner, which may take the button down.
FReply SComboButton::OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	if (MouseEvent.GetEffectingButton() != EKeys::LeftMouseButton)
	{
		return FReply::Unhandled();
	}
	const TSharedRef<SWidget> KeepAlive = AsShared();
	FReply Reply = FReply::Handled();
	if (ShouldOpenDueToClick())
	{
		const bool bFocusMenu = FocusesMenu();
		SetIsOpen(true, bFocusMenu);
		if (bFocusMenu)
		{
			return Reply;
		}
	}
	if (bFocusable)
	{
		Reply.SetUserFocus(KeepAlive, EFocusCause::Mouse);
	}
	return Reply;
}

FReply SComboButton::OnMouseButtonDoubleClick(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	return OnMouseButtonDown(MyGeometry, MouseEvent);
}

void SComboButton::DescribeAccess(FHostAccess& Out) const
{
	Out.Role = EHostRole::Button;
	Out.bNamedByContents = true;
	Out.Action = "press";
	Out.States |= EHostAccessState::HasPopup | EHostAccessState::Expandable;
	Out.States |= IsOpen() ? EHostAccessState::Expanded : EHostAccessState::None;
}

FReply SComboButton::DoAccessAction()
{
	SetIsOpen(!IsOpen(), FocusesMenu());
	return FReply::Handled();
}

FVector2D SComboButton::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	const FVector2D Wanted = SMenuAnchor::ComputeDesiredSize(LayoutScaleMultiplier);
	return FVector2D(FMath::Max(Wanted.X, Button->MinSize.X), FMath::Max(Wanted.Y, Button->MinSize.Y));
}

// 1. Disabled wins over open, and open over hovered. 2. An open menu has the keyboard, so there is no ring then.
int32 SComboButton::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	const bool bEnabled = ShouldBeEnabled(bParentEnabled);
	const FSlateRect Rect = AllottedGeometry.GetLayoutBoundingRect();
	const FSlateBrush* Brush = &Button->Normal;
	FSlateColor Foreground = Button->NormalForeground;
	if (!bEnabled)
	{
		Brush = &Button->Disabled;
		Foreground = Button->DisabledForeground;
	}
	else if (IsOpen())
	{
		Brush = Style->OpenBrush.DrawAs != ESlateBrushDrawType::NoDrawType ? &Style->OpenBrush : &Button->Pressed;
		Foreground = Button->PressedForeground;
	}
	else if (IsHovered())
	{
		Brush = &Button->Hovered;
		Foreground = Button->HoveredForeground;
	}
	OutDrawElements.AddBrush(Rect, *Brush, FLinearColor::White, InWidgetStyle.GetColorAndOpacityTint());
	if (bEnabled && !IsOpen() && ShouldShowFocusRing())
	{
		FHostWidgetPaint::AddFocusRing(OutDrawElements, Rect, Button->Radius, AllottedGeometry.GetAccumulatedScale(), InWidgetStyle);
	}
	FWidgetStyle ContentStyle = InWidgetStyle;
	ContentStyle.SetForegroundColor(Foreground.GetColor(InWidgetStyle));
	if (!bEnabled)
	{
		ContentStyle.BlendOpacity(Button->DisabledContentOpacity);
	}
	return SMenuAnchor::OnPaint(Args, AllottedGeometry, MyCullingRect, OutDrawElements, LayerId, ContentStyle, bParentEnabled);
}
