#include "SMenu.h"

#include "Framework/Application/SlateApplication.h"
#include "HAL/PlatformTime.h"
#include "Host/HostAccess.h"
#include "Host/HostSleep.h"
#include "Host/SMenuBar.h"
#include "SMenuRow.h"
#include "Styling/AppStyle.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

// An open menu. Keys and pointer share one highlight, and whichever moved last has it; the time since which the pointer
// rests says whether it was the pointer. A sub-menu opens where the pointer rests for a moment, so that a way across
// other rows does not open theirs. Menu, sub-menus and bar know each other weakly: each may be closed by anyone at any
// time.

namespace
{

	constexpr float MenuPadding = 4.0f;
	constexpr float MenuTextLeft = 32.0f;
	constexpr float MenuHeadingHeight = 25.0f;
	constexpr float MenuSeparatorSide = 8.0f;
	constexpr double SubMenuDelay = 0.15;

} // namespace

void SMenu::Construct(const FArguments& InArgs, const TArray<TSharedRef<FMenuItem>>& Items)
{
	// clang-format off
	ChildSlot
	[
		SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush("Menu.Background"))
		.Padding(MenuPadding)
		[
			SAssignNew(List, SScrollBox)
		]
	];
	// clang-format on
	FirstRowTop = MenuPadding;
	for (int32 Index = 0; Index < Items.Num(); ++Index)
	{
		List->AddSlot()[MakeItem(Items[Index], Index == 0)];
	}
}

TSharedRef<SWidget> SMenu::MakeItem(const TSharedRef<FMenuItem>& Item, bool bFirst)
{
	// clang-format off
	switch (Item->Kind)
	{
	case FMenuItem::EKind::Separator:
		return SNew(SBox)
			.Padding(MenuSeparatorSide, MenuPadding, MenuSeparatorSide, MenuPadding)
			[
				SNew(SBox)
				.HeightOverride(1.0f)
				[
					SNew(SBorder)
					.BorderImage(FAppStyle::GetBrush("WhiteBrush"))
					.BorderBackgroundColor(FSlateColor(FAppStyle::GetColor("Colors.PopupLine")))
					.Padding(0.0f)
				]
			];
	case FMenuItem::EKind::Section:
		FirstRowTop = bFirst ? MenuPadding + MenuHeadingHeight : FirstRowTop;
		return SNew(SBox)
			.HeightOverride(MenuHeadingHeight)
			.VAlign(VAlign_Bottom)
			.Padding(MenuTextLeft, 0.0f, MenuSeparatorSide, MenuPadding)
			[
				SNew(STextBlock)
				.Text(FText::FromString(Item->Label.Get().ToString().ToUpper()))
				.TextStyle(FAppStyle::Get(), "Menu.Heading")
			];
	case FMenuItem::EKind::Widget:
		return SNew(SHorizontalBox)
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.VAlign(VAlign_Center)
			.Padding(MenuTextLeft, 0.0f, Item->Label.Get().IsEmpty() ? 0.0f : MenuSeparatorSide, 0.0f)
			[
				SNew(STextBlock)
				.Text(Item->Label)
			]
			+ SHorizontalBox::Slot()
			.FillWidth(1.0f)
			.Padding(0.0f, 0.0f, MenuSeparatorSide, 0.0f)
			[
				Item->Widget.ToSharedRef()
			];
	case FMenuItem::EKind::Entry:
	case FMenuItem::EKind::SubMenu:
		break;
	}
	// clang-format on
	const TSharedRef<SMenuRow> Row = SNew(SMenuRow, Item, SharedThis(this), Rows.Num());
	Rows.Add(Row);
	return Row;
}

void SMenu::NotePointerOver(int32 Index)
{
	if (Index != Highlighted || PointerSince < 0.0)
	{
		Highlighted = Index;
		PointerSince = FPlatformTime::Seconds();
	}
	if (!HasKeyboardFocus())
	{
		// The keys go on where the pointer is.
		FSlateApplication::Get().SetKeyboardFocus(SharedThis(this), EFocusCause::Mouse);
	}
}

// A highlight that the keys made stays.
void SMenu::NotePointerLeft(int32 Index)
{
	if (Highlighted == Index && PointerSince >= 0.0)
	{
		Highlighted = INDEX_NONE;
	}
}

void SMenu::DescribeAccess(FHostAccess& Out) const
{
	Out.Role = EHostRole::Menu;
	Out.Name = NSLOCTEXT("HostAccess", "Menu", "Menu");
}

void SMenu::Pick(int32 Index, bool bByKeyboard)
{
	if (!Rows.IsValidIndex(Index) || !Rows[Index]->GetItem().IsEnabled())
	{
		return;
	}
	const FMenuItem& Item = Rows[Index]->GetItem();
	if (Item.Kind == FMenuItem::EKind::SubMenu)
	{
		Highlighted = Index;
		OpenSubMenu(Index, bByKeyboard);
		return;
	}
	// The menu is gone, and the keyboard back where it was, before the action works with either.
	const FUIAction Action = Item.Action;
	if (Item.bCloseAfterSelection)
	{
		const TSharedRef<SWidget> KeepAlive = AsShared();
		FSlateApplication::Get().DismissAllMenus();
	}
	Action.Execute();
}

void SMenu::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	const bool bRests = Highlighted != INDEX_NONE && PointerSince >= 0.0 && FPlatformTime::Seconds() - PointerSince >= SubMenuDelay;
	if (!bRests && Highlighted != INDEX_NONE && PointerSince >= 0.0)
	{
		FHostSleep::RequestFrameAt(PointerSince + SubMenuDelay);
	}
	if (!bRests || Highlighted == OpenIndex)
	{
		return;
	}
	CloseSubMenu();
	const FMenuItem& Item = Rows[Highlighted]->GetItem();
	if (Item.Kind == FMenuItem::EKind::SubMenu && !Item.bOpenOnClick)
	{
		OpenSubMenu(Highlighted, false);
	}
}

// Over rows that cannot be picked, around the end; a menu without any stays as it is.
void SMenu::MoveHighlight(int32 From, int32 Step)
{
	const int32 Count = Rows.Num();
	int32 Index = From == INDEX_NONE && Step < 0 ? Count : From;
	for (int32 Tries = 0; Tries < Count; ++Tries)
	{
		Index = ((Index + Step) % Count + Count) % Count;
		if (Rows[Index]->GetItem().IsEnabled())
		{
			Highlighted = Index;
			PointerSince = -1.0;
			List->ScrollDescendantIntoView(Rows[Index], false);
			return;
		}
	}
}

// The next entry that begins with the letter, from the present one on.
void SMenu::HighlightByLetter(TCHAR Letter)
{
	for (int32 Step = 1; Step <= Rows.Num(); ++Step)
	{
		const int32 Index = (FMath::Max(Highlighted, -1) + Step) % Rows.Num();
		const FString Label = Rows[Index]->GetItem().Label.Get().ToString();
		if (!Label.IsEmpty() && FChar::ToUpper(Label[0]) == Letter && Rows[Index]->GetItem().IsEnabled())
		{
			MoveHighlight(Index - 1, 1);
			return;
		}
	}
}

FReply SMenu::OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	const TSharedRef<SWidget> KeepAlive = AsShared();
	HandleKey(InKeyEvent.GetKey());
	// While a menu is open no key reaches what lies below.
	return FReply::Handled();
}

// Left and Right mean the sub-menus first, then the neighbours in the bar.
void SMenu::HandleKey(const FKey& Key)
{
	const bool bOnSubMenu = Rows.IsValidIndex(Highlighted) && Rows[Highlighted]->GetItem().Kind == FMenuItem::EKind::SubMenu;
	const TSharedPtr<SMenu> Outer = Parent.Pin();
	const TSharedPtr<SMenuBar> OwnBar = Bar.Pin();
	if (Key == EKeys::Down || Key == EKeys::Up || Key == EKeys::Tab)
	{
		MoveHighlight(Highlighted, Key == EKeys::Up ? -1 : 1);
	}
	else if (Key == EKeys::Home || Key == EKeys::End)
	{
		MoveHighlight(INDEX_NONE, Key == EKeys::Home ? 1 : -1);
	}
	else if (Key == EKeys::Enter || Key == EKeys::SpaceBar || (Key == EKeys::Right && bOnSubMenu))
	{
		Pick(Highlighted, true);
	}
	else if ((Key == EKeys::Left || Key == EKeys::Escape) && Outer)
	{
		Outer->CloseSubMenu();
	}
	else if (Key == EKeys::Escape || Key == EKeys::F10)
	{
		FSlateApplication::Get().DismissAllMenus();
	}
	else if ((Key == EKeys::Left || Key == EKeys::Right) && OwnBar)
	{
		OwnBar->OpenNeighbour(Key == EKeys::Left ? -1 : 1);
	}
	else if (Key.ToString().Len() == 1)
	{
		HighlightByLetter(Key.ToString()[0]);
	}
}

// Its first row stands beside the row that it belongs to. The keyboard goes over only when a key opened it.
void SMenu::OpenSubMenu(int32 Index, bool bByKeyboard)
{
	if (OpenIndex == Index)
	{
		if (const TSharedPtr<SMenu> Shown = SubMenuContent.Pin(); Shown && bByKeyboard)
		{
			FSlateApplication::Get().SetKeyboardFocus(Shown, EFocusCause::SetDirectly);
			Shown->HighlightFirst();
		}
		return;
	}
	CloseSubMenu();
	const FMenuItem& Item = Rows[Index]->GetItem();
	FMenuBuilder Builder(Item.bCloseAfterSelection, Item.CommandList, Item.Extender);
	Item.BuildSubMenu.ExecuteIfBound(Builder);
	const TSharedRef<SMenu> Content = StaticCastSharedRef<SMenu>(Builder.MakeWidget());
	Content->Parent = SharedThis(this);
	Content->Bar = Bar;
	const float Scale = GetCachedGeometry().GetAccumulatedScale();
	FSlateRect Anchor = GetCachedGeometry().GetLayoutBoundingRect();
	Anchor.Top = Rows[Index]->GetCachedGeometry().GetLayoutBoundingRect().Top - Content->FirstRowTop * Scale;
	Anchor.Bottom = Rows[Index]->GetCachedGeometry().GetLayoutBoundingRect().Bottom;
	const TSharedRef<IMenu> Opened =
		FSlateApplication::Get().PushMenu(Rows[Index], Content, Anchor, MenuPlacement_MenuRight, false, EHostOwnerPress::Reaches);
	Opened->GetOnMenuDismissed().AddSP(this, &SMenu::OnSubMenuClosed);
	SubMenu = Opened;
	SubMenuContent = Content;
	OpenIndex = Index;
	if (bByKeyboard)
	{
		FSlateApplication::Get().SetKeyboardFocus(Content, EFocusCause::SetDirectly);
		Content->HighlightFirst();
	}
}

void SMenu::CloseSubMenu()
{
	if (const TSharedPtr<SMenu> Shown = SubMenuContent.Pin())
	{
		Shown->CloseSubMenu();
	}
	if (const TSharedPtr<IMenu> Open = SubMenu.Pin())
	{
		Open->Dismiss();
	}
}

// The keyboard comes back if the sub-menu had it.
void SMenu::OnSubMenuClosed(TSharedRef<IMenu> Closed)
{
	if (!SubMenu.HasSameObject(&Closed.Get()))
	{
		return;
	}
	const TSharedPtr<SMenu> Shown = SubMenuContent.Pin();
	if (Shown && Shown->HasKeyboardFocus())
	{
		FSlateApplication::Get().SetKeyboardFocus(SharedThis(this), EFocusCause::SetDirectly);
		Highlighted = OpenIndex;
		PointerSince = -1.0;
	}
	OpenIndex = INDEX_NONE;
	SubMenu.Reset();
	SubMenuContent.Reset();
}
