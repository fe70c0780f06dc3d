#pragma once

#include "Framework/Application/IMenu.h"
#include "MenuItem.h"
#include "Widgets/SCompoundWidget.h"

class SMenuBar;
class SMenuRow;
class SScrollBox;

/**
 * An open menu. Highlights one row, by the pointer or by keys, and opens the sub-menu of a row on which the pointer
 * rests. Has the keyboard while it is the innermost one that the user works in.
 */
class SMenu : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SMenu) {}
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs, const TArray<TSharedRef<FMenuItem>>& Items);

	/** The bar gets the keys that lead to its other menus. */
	void SetBar(const TWeakPtr<SMenuBar>& InBar) { Bar = InBar; }
	bool IsHighlighted(int32 Index) const
	{
		return Highlighted != INDEX_NONE ? Index == Highlighted : Index != INDEX_NONE && Index == OpenIndex;
	}
	void HighlightFirst() { MoveHighlight(INDEX_NONE, 1); }

	// What rows tell.
	void NotePointerOver(int32 Index);
	void NotePointerLeft(int32 Index);
	/** Executes an entry, or opens a sub-menu. */
	void Pick(int32 Index, bool bByKeyboard);

	virtual bool SupportsKeyboardFocus() const override { return true; }
	virtual void DescribeAccess(FHostAccess& Out) const override;
	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;
	virtual FReply OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;
	virtual FReply OnKeyChar(const FGeometry& MyGeometry, const FCharacterEvent& InCharacterEvent) override { return FReply::Handled(); }
	virtual FReply OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override { return FReply::Handled(); }

private:
	TSharedRef<SWidget> MakeItem(const TSharedRef<FMenuItem>& Item, bool bFirst);
	/** To the next row that can be picked, round at the ends. */
	void MoveHighlight(int32 From, int32 Step);
	void HighlightByLetter(TCHAR Letter);
	void HandleKey(const FKey& Key);
	void OpenSubMenu(int32 Index, bool bByKeyboard);
	void CloseSubMenu();
	void OnSubMenuClosed(TSharedRef<IMenu> Closed);

	TArray<TSharedRef<SMenuRow>> Rows;
	TSharedPtr<SScrollBox> List;
	TWeakPtr<SMenu> Parent;
	TWeakPtr<SMenuBar> Bar;
	TWeakPtr<IMenu> SubMenu;
	TWeakPtr<SMenu> SubMenuContent;
	int32 Highlighted = INDEX_NONE;
	/** The row whose sub-menu is open. */
	int32 OpenIndex = INDEX_NONE;
	/** Since when the pointer rests on the highlighted row; below zero when keys took it there. */
	double PointerSince = -1.0;
	/** From the top of the menu to its first row, in units, so that a first row can stand level with what opened it. */
	float FirstRowTop = 0.0f;
};
