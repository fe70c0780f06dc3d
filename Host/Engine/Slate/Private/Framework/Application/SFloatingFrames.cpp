#include "SFloatingFrames.h"

#include "Brushes/SlateRoundedBoxBrush.h"
#include "Host/HostAccess.h"
#include "Styling/AppStyle.h"
#include "Styling/CoreStyle.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

// The surfaces around floating content: popups and windows within the program's one window.

namespace
{
	constexpr float PopupRadius = 6.0f;
	constexpr float TitleBarHeight = 32.0f;
	constexpr float BodyPadding = 20.0f;

	const FSlateBrush& GetBarBrush()
	{
		constexpr double BarRadius = PopupRadius - 1.0;
		static const FSlateRoundedBoxBrush Brush(FAppStyle::GetColor(TEXT("Colors.Bar")), FVector4(BarRadius, BarRadius, 0.0, 0.0));
		return Brush;
	}

	/** Title and cross of a window. Holds the window weakly: the bar is a part of what the window's frame owns. */
	TSharedRef<SWidget> MakeTitleBar(const TWeakPtr<SWindow>& WeakWindow)
	{
		// clang-format off
		return SNew(SHorizontalBox)
			+ SHorizontalBox::Slot()
			.FillWidth(1.0f)
			.VAlign(VAlign_Center)
			.Padding(16.0f, 0.0f)
			[
				SNew(STextBlock)
				.Text_Lambda([WeakWindow]()
				{
					const TSharedPtr<SWindow> Pinned = WeakWindow.Pin();
					return Pinned ? Pinned->GetTitle() : FText::GetEmpty();
				})
				.TextStyle(FAppStyle::Get(), TEXT("NormalText.Important"))
			]
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.VAlign(VAlign_Center)
			.Padding(4.0f, 0.0f)
			[
				SNew(SButton)
				.Tag(TEXT("CloseWindow"))
				// Escape does the same; Tab goes through what the window asks.
				.IsFocusable(false)
				.ButtonStyle(FAppStyle::Get(), TEXT("SimpleButton"))
				.ContentPadding(FMargin(6.0f))
				.OnClicked_Lambda([WeakWindow]()
				{
					if (const TSharedPtr<SWindow> Pinned = WeakWindow.Pin())
					{
						Pinned->RequestDestroyWindow();
					}
					return FReply::Handled();
				})
				[
					SNew(SImage)
					.Image(FAppStyle::GetBrush(TEXT("Icons.X")))
					.DesiredSizeOverride(FVector2D(12.0, 12.0))
					.ColorAndOpacity(FAppStyle::GetColor(TEXT("Colors.ForegroundSubdued")))
				]
			];
		// clang-format on
	}
}

void SPopupFrame::Construct(const FArguments& InArgs)
{
	MinWidth = InArgs._MinWidth;
	ChildSlot[InArgs._Content.Widget];
}

FVector2D SPopupFrame::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	const FVector2D Wanted = SCompoundWidget::ComputeDesiredSize(LayoutScaleMultiplier);
	return FVector2D(FMath::Max(Wanted.X, static_cast<double>(MinWidth)), Wanted.Y);
}

int32 SPopupFrame::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	const float Scale = AllottedGeometry.GetAccumulatedScale();
	const FSlateRect Rect = AllottedGeometry.GetLayoutBoundingRect();
	const float Radius = PopupRadius * Scale;
	OutDrawElements.AddShadow(Rect, Radius, 24.0f * Scale, 8.0f * Scale, FColor(0, 0, 0, 140));
	// Opaque, so that a translucent list lets no text below shine through.
	OutDrawElements.AddRoundedBox(Rect, FVector4f(Radius, Radius, Radius, Radius), FAppStyle::GetColor(TEXT("Colors.Popup")).ToFColorSRGB(),
		FColor(0, 0, 0, 0), 0.0f);
	return SCompoundWidget::OnPaint(Args, AllottedGeometry, MyCullingRect, OutDrawElements, LayerId, InWidgetStyle, bParentEnabled);
}

void SWindowFrame::Construct(const FArguments& InArgs, const TSharedRef<SWindow>& InWindow, bool bInModal)
{
	Window = InWindow;
	bModal = bInModal;
	const FVector2D Client = InWindow->GetClientSize();
	// clang-format off
	ChildSlot
	.HAlign(HAlign_Center)
	.VAlign(VAlign_Center)
	[
		SAssignNew(Panel, SBorder)
		.BorderImage(FAppStyle::GetBrush(TEXT("Window.Body")))
		.Padding(FMargin(1.0f))
		[
			SNew(SVerticalBox)
			+ SVerticalBox::Slot()
			.AutoHeight()
			[
				SNew(SBorder)
				.BorderImage(&GetBarBrush())
				.Padding(FMargin(0.0f))
				[
					SNew(SBox)
					.HeightOverride(TitleBarHeight)
					[
						MakeTitleBar(InWindow)
					]
				]
			]
			+ SVerticalBox::Slot()
			.FillHeight(1.0f)
			[
				SNew(SBox)
				.Padding(FMargin(Client.Y > 0.0 ? 0.0f : BodyPadding))
				.WidthOverride(Client.X > 0.0 ? FOptionalSize(static_cast<float>(Client.X)) : FOptionalSize())
				.HeightOverride(Client.Y > 0.0 ? FOptionalSize(static_cast<float>(Client.Y)) : FOptionalSize())
				[
					InWindow
				]
			]
		]
	];
	// clang-format on
}

FReply SWindowFrame::OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	// The darkened rest swallows presses, so that nothing below is hit.
	return bModal ? FReply::Handled() : FReply::Unhandled();
}

FReply SWindowFrame::OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	if (InKeyEvent.GetKey() == EKeys::Escape)
	{
		Window->RequestDestroyWindow();
		return FReply::Handled();
	}
	return FReply::Unhandled();
}

int32 SWindowFrame::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	const float Scale = AllottedGeometry.GetAccumulatedScale();
	if (bModal)
	{
		OutDrawElements.AddBox(AllottedGeometry.GetLayoutBoundingRect(), FColor(0, 0, 0, 128));
	}
	FArrangedChildren Arranged(EVisibility::Visible);
	ArrangeChildren(AllottedGeometry, Arranged);
	for (int32 Index = 0; Index < Arranged.Num(); ++Index)
	{
		const FSlateRect Rect = Arranged[Index].Geometry.GetLayoutBoundingRect();
		OutDrawElements.AddShadow(Rect, PopupRadius * Scale, 40.0f * Scale, 16.0f * Scale, FColor(0, 0, 0, 153));
	}
	return PaintArrangedChildren(
		Args, Arranged, MyCullingRect, OutDrawElements, LayerId, GetChildStyle(InWidgetStyle), ShouldBeEnabled(bParentEnabled));
}

void SWindowFrame::DescribeAccess(FHostAccess& Out) const
{
	Out.Role = EHostRole::Dialog;
	Out.Name = Window->GetTitle();
	Out.States |= bModal ? EHostAccessState::Modal : EHostAccessState::None;
}
