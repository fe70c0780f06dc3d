#include "Widgets/Docking/SDockTab.h"

#include "Host/HostAccess.h"
#include "Host/HostWidgetPaint.h"
#include "Host/SDockArea.h"
#include "Styling/AppStyle.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

// The head of a tab and what belongs to it. The dock area shows the content; the tab knows it weakly, since it lives on
// while it is moved or closed by somebody else.

namespace
{
	constexpr float DockTabHeight = 29.0f;
	constexpr float DockTabSide = 10.0f;
	constexpr float DockTabGap = 8.0f;
	constexpr float DockTabRadius = 5.0f;
	constexpr float DockTabBar = 2.0f;
	constexpr double DockTabIconSize = 16.0;
	constexpr double DockTabCloseSize = 12.0;
}

void SDockTab::Construct(const FArguments& InArgs)
{
	TabRole = InArgs._TabRole;
	Label = InArgs._Label;
	TabClosedHandler = InArgs._OnTabClosed;
	TabActivatedHandler = InArgs._OnTabActivated;
	CanCloseHandler = InArgs._OnCanCloseTab;
	TabContent = InArgs._Content.Widget;
	// clang-format off
	ChildSlot
	[
		SNew(SBox)
		.HeightOverride(DockTabHeight)
		.Padding(FMargin(DockTabSide, 0.0f))
		[
			SNew(SHorizontalBox)
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.VAlign(VAlign_Center)
			[
				SNew(SBox)
				.Visibility(this, &SDockTab::GetIconVisibility)
				.Padding(FMargin(0.0f, 0.0f, DockTabGap, 0.0f))
				[
					SNew(SImage)
					.Image(this, &SDockTab::GetTabIcon)
					.DesiredSizeOverride(FVector2D(DockTabIconSize, DockTabIconSize))
					.ColorAndOpacity(this, &SDockTab::GetIconColor)
				]
			]
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.VAlign(VAlign_Center)
			[
				SNew(STextBlock)
				.Text(this, &SDockTab::GetTabLabel)
				.TextStyle(FAppStyle::Get(), TEXT("NormalText"))
				.ColorAndOpacity(FSlateColor::UseForeground())
			]
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.VAlign(VAlign_Center)
			.Padding(DockTabGap, 0.0f, 0.0f, 0.0f)
			[
				MakeCloseButton()
			]
		]
	];
	// clang-format on
}

TSharedRef<SWidget> SDockTab::MakeCloseButton()
{
	// clang-format off
	return SAssignNew(CloseButton, SButton)
		.Tag(TEXT("CloseTab"))
		.ToolTipText(NSLOCTEXT("HostDock", "CloseTab", "Close tab"))
		.ButtonStyle(FAppStyle::Get(), TEXT("SimpleButton"))
		.ContentPadding(FMargin(2.0f))
		.IsFocusable(false)
		.OnClicked(this, &SDockTab::OnCloseClicked)
		[
			SNew(SImage)
			.Image(FAppStyle::GetBrush(TEXT("Icons.X")))
			.DesiredSizeOverride(FVector2D(DockTabCloseSize, DockTabCloseSize))
			.ColorAndOpacity(this, &SDockTab::GetIconColor)
		];
	// clang-format on
}

// What the tab has been given by its own module wins over what its spawner says.
void SDockTab::SetUpBySpawner(const FTabId& InTabId, const FTabSpawnerEntry& Spawner)
{
	TabId = InTabId;
	if (!Label.IsSet())
	{
		SetLabel(Spawner.GetDisplayName());
	}
	if (!Icon.IsSet() && Spawner.GetIcon().IsSet())
	{
		// Looked up when it is drawn: a style set may go while the tab is open.
		const FSlateIcon SpawnerIcon = Spawner.GetIcon();
		Icon = TAttribute<const FSlateBrush*>::CreateLambda([SpawnerIcon]() { return SpawnerIcon.GetIcon(); });
	}
	if (!Spawner.GetTooltipText().IsEmpty() && GetToolTipText().IsEmpty())
	{
		SetToolTipText(Spawner.GetTooltipText());
	}
}

void SDockTab::SetLabel(const TAttribute<FText>& InLabel)
{
	Label = InLabel;
	Invalidate(EInvalidateWidgetReason::Layout);
}

void SDockTab::SetContent(const TSharedRef<SWidget>& InContent)
{
	TabContent = InContent;
	if (const TSharedPtr<SDockArea> Dock = Area.Pin())
	{
		Dock->RefreshContent();
	}
}

bool SDockTab::IsForeground() const
{
	const TSharedPtr<SDockArea> Dock = Area.Pin();
	return Dock && Dock->GetActiveTab().Get() == this;
}

void SDockTab::ActivateInParent(ETabActivationCause ActivationCause)
{
	if (const TSharedPtr<SDockArea> Dock = Area.Pin())
	{
		Dock->ActivateTab(SharedThis(this), ActivationCause);
	}
}

void SDockTab::NotifyActivated(ETabActivationCause Cause)
{
	const FOnTabActivatedCallback Handler = TabActivatedHandler;
	Handler.ExecuteIfBound(SharedThis(this), Cause);
}

// The user asks, and whoever made the tab may refuse. A tab that is removed by the program is not asked.
bool SDockTab::RequestCloseTab()
{
	const FCanCloseTab Handler = CanCloseHandler;
	if (Handler.IsBound() && !Handler.Execute())
	{
		return false;
	}
	RemoveTabFromParent();
	return true;
}

// Once only, and alive until the end: the handlers may close it again or let go of the last reference.
void SDockTab::RemoveTabFromParent()
{
	const TSharedRef<SDockTab> KeepAlive = SharedThis(this);
	if (bClosed)
	{
		return;
	}
	bClosed = true;
	if (const TSharedPtr<SDockArea> Dock = Area.Pin())
	{
		Dock->RemoveTab(KeepAlive);
	}
	FGlobalTabmanager::Get()->ForgetTab(*this);
	const FOnTabClosedCallback Handler = TabClosedHandler;
	Handler.ExecuteIfBound(KeepAlive);
	TabContent = SNullWidget::NullWidget;
}

FReply SDockTab::OnCloseClicked()
{
	RequestCloseTab();
	return FReply::Handled();
}

// Arrows move the keyboard along the heads and open nothing; Enter and the blank open.
FReply SDockTab::OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	const FKey Key = InKeyEvent.GetKey();
	const TSharedPtr<SDockArea> Dock = Area.Pin();
	if (!Dock || InKeyEvent.IsControlDown() || InKeyEvent.IsAltDown())
	{
		return FReply::Unhandled();
	}
	if (Key == EKeys::Enter || Key == EKeys::SpaceBar)
	{
		ActivateInParent(ETabActivationCause::UserClickedOnTab);
		return FReply::Handled();
	}
	if (Key == EKeys::Left || Key == EKeys::Right)
	{
		return FReply::Handled().SetUserFocus(Dock->GetNeighbour(SharedThis(this), Key == EKeys::Left ? -1 : 1), EFocusCause::Navigation);
	}
	return FReply::Unhandled();
}

FReply SDockTab::OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	if (MouseEvent.GetEffectingButton() == EKeys::MiddleMouseButton)
	{
		RequestCloseTab();
		return FReply::Handled();
	}
	if (MouseEvent.GetEffectingButton() == EKeys::LeftMouseButton)
	{
		ActivateInParent(ETabActivationCause::UserClickedOnTab);
		return FReply::Handled();
	}
	return FReply::Unhandled();
}

void SDockTab::DescribeAccess(FHostAccess& Out) const
{
	Out.Role = EHostRole::Tab;
	Out.Name = Label.Get();
	Out.bNamedByContents = true;
	Out.Action = "switch";
	Out.States |= EHostAccessState::Selectable;
	Out.States |= IsForeground() ? EHostAccessState::Selected : EHostAccessState::None;
}

FReply SDockTab::DoAccessAction()
{
	ActivateInParent(ETabActivationCause::UserClickedOnTab);
	return FReply::Handled();
}

FSlateColor SDockTab::GetIconColor() const
{
	return FAppStyle::GetColor(IsForeground() ? TEXT("Colors.ForegroundStrong") : TEXT("Colors.Icon"));
}

EVisibility SDockTab::GetIconVisibility() const
{
	return Icon.Get() ? EVisibility::HitTestInvisible : EVisibility::Collapsed;
}

int32 SDockTab::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	const FSlateRect Rect = AllottedGeometry.GetLayoutBoundingRect();
	const float Scale = AllottedGeometry.GetAccumulatedScale();
	const float Radius = DockTabRadius * Scale;
	const FVector4f Radii(Radius, Radius, 0.0f, 0.0f);
	const FLinearColor& Tint = InWidgetStyle.GetColorAndOpacityTint();
	const bool bFront = IsForeground();
	const auto AddShape = [&](const FSlateRect& Shape, const TCHAR* Color)
	{ OutDrawElements.AddRoundedBox(Shape, Radii, (FAppStyle::GetColor(Color) * Tint).ToFColorSRGB(), FColor(0, 0, 0, 0), 0.0f); };
	if (bFront)
	{
		// The bar is what the lower shape leaves of the upper one, so that it follows the corners.
		AddShape(Rect, TEXT("Colors.Accent"));
		AddShape(FSlateRect(Rect.Left, FMath::RoundToFloat(Rect.Top + DockTabBar * Scale), Rect.Right, Rect.Bottom), TEXT("Colors.Group"));
	}
	else if (IsHovered())
	{
		AddShape(Rect, TEXT("Colors.TabHover"));
	}
	FWidgetStyle Style = InWidgetStyle;
	Style.SetForegroundColor(FAppStyle::GetColor(bFront ? TEXT("Colors.ForegroundStrong")
			: IsHovered()								? TEXT("Colors.Foreground")
														: TEXT("Colors.ForegroundSubdued")));
	const int32 Layer = SCompoundWidget::OnPaint(Args, AllottedGeometry, MyCullingRect, OutDrawElements, LayerId, Style, bParentEnabled);
	if (ShouldShowFocusRing())
	{
		FHostWidgetPaint::AddFocusRing(OutDrawElements, Rect, DockTabRadius, Scale, InWidgetStyle);
	}
	return Layer;
}
