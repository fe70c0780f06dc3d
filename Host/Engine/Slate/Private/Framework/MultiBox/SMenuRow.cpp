#include "SMenuRow.h"

#include "Host/HostAccess.h"
#include "SMenu.h"
#include "Styling/AppStyle.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

// A row of a menu. The menu decides what is highlighted and picked; the row reports the pointer and shows the state.

namespace
{

	constexpr float MenuRowHeight = 26.0f;
	constexpr float MenuRowSide = 8.0f;
	constexpr float MenuMarkSize = 16.0f;
	constexpr float MenuKeyTextGap = 24.0f;
	constexpr float MenuArrowGap = 16.0f;

	const FTableRowStyle& GetMenuRowStyle()
	{
		return FAppStyle::Get().GetWidgetStyle<FTableRowStyle>("Menu.Row");
	}

} // namespace

void SMenuRow::Construct(const FArguments& InArgs, const TSharedRef<FMenuItem>& InItem, const TWeakPtr<SMenu>& InMenu, int32 InIndex)
{
	Item = InItem;
	Menu = InMenu;
	Index = InIndex;
	SetEnabled(TAttribute<bool>::CreateSP(this, &SMenuRow::CanBePicked));
	SetToolTipText(Item->ToolTip);
	const bool bSubMenu = Item->Kind == FMenuItem::EKind::SubMenu;
	const TSharedRef<SWidget> AtTheRight = bSubMenu
		? StaticCastSharedRef<SWidget>(SNew(SImage)
										   .Image(FAppStyle::GetBrush("Icons.ChevronRight"))
										   .DesiredSizeOverride(TOptional<FVector2D>(FVector2D(MenuMarkSize, MenuMarkSize)))
										   .ColorAndOpacity(this, &SMenuRow::GetIconColor))
		: StaticCastSharedRef<SWidget>(SNew(STextBlock).Text(Item->KeyText).ColorAndOpacity(this, &SMenuRow::GetKeyTextColor));
	// clang-format off
	ChildSlot
	[
		SNew(SBox)
		.HeightOverride(MenuRowHeight)
		[
			SNew(SHorizontalBox)
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.VAlign(VAlign_Center)
			.Padding(MenuRowSide, 0.0f, MenuRowSide, 0.0f)
			[
				SNew(SImage)
				.Image(this, &SMenuRow::GetMark)
				.DesiredSizeOverride(TOptional<FVector2D>(FVector2D(MenuMarkSize, MenuMarkSize)))
				.ColorAndOpacity(this, &SMenuRow::GetIconColor)
			]
			+ SHorizontalBox::Slot()
			.FillWidth(1.0f)
			.VAlign(VAlign_Center)
			[
				SNew(STextBlock)
				.Text(Item->Label)
				.ColorAndOpacity(this, &SMenuRow::GetForeground)
			]
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.VAlign(VAlign_Center)
			.Padding(bSubMenu ? MenuArrowGap : MenuKeyTextGap, 0.0f, MenuRowSide, 0.0f)
			[
				AtTheRight
			]
		]
	];
	// clang-format on
}

bool SMenuRow::IsHighlighted() const
{
	const TSharedPtr<SMenu> Owner = Menu.Pin();
	return Owner && Owner->IsHighlighted(Index) && CanBePicked();
}

FSlateColor SMenuRow::GetForeground() const
{
	if (!CanBePicked())
	{
		return GetMenuRowStyle().DisabledTextColor;
	}
	return IsHighlighted() ? GetMenuRowStyle().SelectedTextColor : FSlateColor(FAppStyle::GetColor("Colors.ForegroundStrong"));
}

FSlateColor SMenuRow::GetIconColor() const
{
	return CanBePicked() && !IsHighlighted() ? FSlateColor(FAppStyle::GetColor("Colors.Foreground")) : GetForeground();
}

FSlateColor SMenuRow::GetKeyTextColor() const
{
	return CanBePicked() && !IsHighlighted() ? FSlateColor(FAppStyle::GetColor("Colors.ForegroundSubdued")) : GetForeground();
}

const FSlateBrush* SMenuRow::GetMark() const
{
	if (Item->IsChecked())
	{
		return FAppStyle::GetBrush("Symbols.Check");
	}
	return Item->Icon.IsSet() ? Item->Icon.GetIcon() : FAppStyle::GetNoBrush();
}

// A row that cannot be picked takes the highlight away from the others without taking it itself.
void SMenuRow::OnMouseEnter(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	SCompoundWidget::OnMouseEnter(MyGeometry, MouseEvent);
	if (const TSharedPtr<SMenu> Owner = Menu.Pin())
	{
		Owner->NotePointerOver(CanBePicked() ? Index : INDEX_NONE);
	}
}

void SMenuRow::OnMouseLeave(const FPointerEvent& MouseEvent)
{
	SCompoundWidget::OnMouseLeave(MouseEvent);
	if (const TSharedPtr<SMenu> Owner = Menu.Pin())
	{
		Owner->NotePointerLeft(Index);
	}
}

FReply SMenuRow::OnMouseMove(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	// The keys may have taken the highlight elsewhere meanwhile.
	const TSharedPtr<SMenu> Owner = Menu.Pin();
	if (Owner && MouseEvent.GetScreenSpacePosition() != MouseEvent.GetLastScreenSpacePosition())
	{
		Owner->NotePointerOver(Index);
	}
	return FReply::Handled();
}

// A submenu opens at the press. An entry is picked at the release, so that one press can open a menu, go to an entry and
// pick it.
FReply SMenuRow::OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	const TSharedPtr<SMenu> Owner = Menu.Pin();
	if (Owner && Item->Kind == FMenuItem::EKind::SubMenu)
	{
		Owner->Pick(Index, false);
	}
	return FReply::Handled();
}

FReply SMenuRow::OnMouseButtonUp(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	const TSharedPtr<SMenu> Owner = Menu.Pin();
	if (Owner && Item->Kind == FMenuItem::EKind::Entry && MouseEvent.GetEffectingButton() == EKeys::LeftMouseButton)
	{
		Owner->Pick(Index, false);
	}
	return FReply::Handled();
}

void SMenuRow::DescribeAccess(FHostAccess& Out) const
{
	const bool bSubMenu = Item->Kind == FMenuItem::EKind::SubMenu;
	const bool bCheckable = !bSubMenu &&
		(Item->Type == EUserInterfaceActionType::ToggleButton || Item->Type == EUserInterfaceActionType::RadioButton ||
			Item->Type == EUserInterfaceActionType::Check);
	const TSharedPtr<SMenu> Owner = Menu.Pin();
	Out.Role = bCheckable ? EHostRole::CheckMenuItem : EHostRole::MenuItem;
	Out.Name = Item->Label.Get();
	Out.bNamedByContents = true;
	Out.Action = "click";
	Out.States |= bCheckable ? EHostAccessState::Checkable : EHostAccessState::None;
	Out.States |= Item->IsChecked() ? EHostAccessState::Checked : EHostAccessState::None;
	Out.States |= bSubMenu ? EHostAccessState::HasPopup | EHostAccessState::Expandable : EHostAccessState::None;
	// The menu has the keyboard; what it works on is this row.
	if (IsHighlighted() && Owner && Owner->HasKeyboardFocus())
	{
		Out.States |= EHostAccessState::Selected | EHostAccessState::Focused;
	}
}

FReply SMenuRow::DoAccessAction()
{
	if (const TSharedPtr<SMenu> Owner = Menu.Pin())
	{
		Owner->Pick(Index, true);
	}
	return FReply::Handled();
}

int32 SMenuRow::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	if (IsHighlighted())
	{
		OutDrawElements.AddBrush(AllottedGeometry.GetLayoutBoundingRect(), GetMenuRowStyle().HoveredBrush, FLinearColor::White,
			InWidgetStyle.GetColorAndOpacityTint());
	}
	return SCompoundWidget::OnPaint(Args, AllottedGeometry, MyCullingRect, OutDrawElements, LayerId, InWidgetStyle, bParentEnabled);
}
