#pragma once

#include "Framework/Application/IMenu.h"
#include "Misc/Attribute.h"
#include "Widgets/SCompoundWidget.h"

class SMenuBarEntry;
struct FMenuBarPullDown;

/** The bar of an application's menus. One is open at a time; moving over the bar, and the arrow keys, change to another. */
class SLATE_API SMenuBar : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SMenuBar) {}
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs, const TArray<TSharedRef<FMenuBarPullDown>>& InPullDowns);

	/** F10 opens the first menu, Alt with a letter the first whose label begins with it. For the window's root. */
	bool HandleKey(const FKeyEvent& KeyEvent);
	/** Called before a menu is built, with the keyboard still where the user worked. */
	void SetOnMenuOpening(FSimpleDelegate InHandler) { MenuOpeningHandler = MoveTemp(InHandler); }

	// What entries and open menus call.
	void Open(int32 Index, bool bByKeyboard);
	void OpenNeighbour(int32 Step);
	/** INDEX_NONE while none is open. */
	int32 GetOpenIndex() const { return OpenIndex; }
	virtual void DescribeAccess(FHostAccess& Out) const override;

private:
	void OnMenuClosed(TSharedRef<IMenu> Closed);

	TArray<TSharedRef<FMenuBarPullDown>> PullDowns;
	TArray<TSharedRef<SMenuBarEntry>> Entries;
	FSimpleDelegate MenuOpeningHandler;
	TWeakPtr<IMenu> OpenMenu;
	int32 OpenIndex = INDEX_NONE;
};
