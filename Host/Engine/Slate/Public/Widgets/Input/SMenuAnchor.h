#pragma once

#include "Framework/Application/IMenu.h"
#include "Framework/SlateDelegates.h"
#include "Misc/Optional.h"
#include "Types/SlateEnums.h"
#include "Widgets/SCompoundWidget.h"

DECLARE_DELEGATE_OneParam(FOnIsOpenChanged, bool)

	/** Whether a popup is a window of its own. The host shows every popup as a layer of its one window. */
	enum class EPopupMethod : uint8 {
		CreateNewWindow,
		UseCurrentWindow,
	};

/**
 * Content that a popup can be opened beside. The popup is a layer of the program's window, stays inside it and follows
 * its anchor. While a popup is open that left the keyboard where it was, the anchor's content takes presses as always.
 */
class SLATE_API SMenuAnchor : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SMenuAnchor) {}
	SLATE_DEFAULT_SLOT(FArguments, Content)
	/** Asked at each opening; goes before MenuContent. */
	SLATE_EVENT(FOnGetContent, OnGetMenuContent)
	SLATE_ARGUMENT(TSharedPtr<SWidget>, MenuContent)
	SLATE_EVENT(FOnIsOpenChanged, OnMenuOpenChanged)
	/** Below the anchor unless given. */
	SLATE_ATTRIBUTE(EMenuPlacement, Placement)
	SLATE_ARGUMENT(TOptional<EPopupMethod>, Method)
	/** Popups always fit. */
	SLATE_ATTRIBUTE(bool, FitInWindow)
	SLATE_ARGUMENT_DEFAULT(bool, UseApplicationMenuStack) = true;
	SLATE_END_ARGS()

	virtual ~SMenuAnchor() override;
	void Construct(const FArguments& InArgs);

	void SetContent(const TSharedRef<SWidget>& InContent) { ChildSlot[InContent]; }
	/**
	 * Opens or closes the popup; nothing happens when it is so already.
	 * @param bFocusMenu  False leaves the keyboard where it is.
	 */
	virtual void SetIsOpen(bool bInIsOpen, bool bFocusMenu = true, int32 FocusUserIndex = 0);
	bool IsOpen() const;
	/** False for the press that has just closed the popup. */
	bool ShouldOpenDueToClick() const { return !IsOpen(); }

protected:
	/** What the popup shows; null opens nothing. */
	virtual TSharedPtr<SWidget> MakeMenuContent();
	virtual void OnOpenChanged(bool bIsOpen);
	/** Whether the anchor opens its popup by a press, so that the next one must only close it. */
	virtual bool OpensByPress() const { return false; }

private:
	void OnMenuDismissed(TSharedRef<IMenu> InMenu);

	FOnGetContent GetMenuContentHandler;
	FOnIsOpenChanged OpenChangedHandler;
	TSharedPtr<SWidget> MenuContent;
	TAttribute<EMenuPlacement> Placement = MenuPlacement_BelowAnchor;
	TSharedPtr<IMenu> Menu;
};
