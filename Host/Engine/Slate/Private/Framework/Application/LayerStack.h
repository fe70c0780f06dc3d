#pragma once

#include "CoreMinimal.h"
#include "Framework/Application/IMenu.h"
#include "Framework/Application/SlateApplication.h"
#include "Layout/ArrangedWidget.h"
#include "Types/SlateEnums.h"
#include "Widgets/SWidget.h"
#include "Widgets/SWindow.h"

/** One thing that lies over the whole window or a part of it. */
struct FLayer
{
	TSharedRef<SWidget> Root;
	FGeometry Geometry;
	/** Input below this layer is cut off. */
	bool bModal = false;
	/** Never hit nor focused. */
	bool bInert = false;
};

/** A popup: content, its owner and the place it belongs to. */
class FPopup : public IMenu, public TSharedFromThis<FPopup>
{
public:
	FPopup(const TSharedRef<SWidget>& InOwner, const TSharedRef<SWidget>& InContent, const TSharedRef<SWidget>& InFrame);

	virtual FOnMenuDismissed& GetOnMenuDismissed() override { return OnMenuDismissed; }
	virtual void Dismiss() override;
	virtual bool IsOpen() const override { return bOpen; }
	virtual TSharedPtr<SWidget> GetContent() const override { return Content; }

	/** Where the popup goes: beside its anchor, moved into the window. Pure but for the desired size of the frame. */
	static FSlateRect PlacePopup(
		const FSlateRect& Anchor, const FVector2D& PopupSize, EMenuPlacement Placement, const FVector2D& WindowSize);

	TWeakPtr<SWidget> Owner;
	TSharedRef<SWidget> Content;
	TSharedRef<SWidget> Frame;
	/** Anchor relative to the owner's upper left corner, so that the popup follows its owner; device pixels. */
	FSlateRect RelativeAnchor;
	EMenuPlacement Placement = MenuPlacement_BelowAnchor;
	TWeakPtr<SWidget> FocusBefore;
	bool bOpen = true;
	bool bTookFocus = false;
	/** The anchor is the owner's rectangle, whatever its size. */
	bool bFollowsOwnerSize = false;
	/** The owner had the keyboard at the opening; the popup closes when it goes elsewhere. */
	bool bOwnerHasKeyboard = false;
	EHostOwnerPress OwnerPress = EHostOwnerPress::OnlyCloses;
	FOnMenuDismissed OnMenuDismissed;
};

/** All layers of the program's window from the lowest up: content, windows, toasts, popups, tooltip. */
class FLayerStack
{
public:
	FLayerStack();
	~FLayerStack();

	/** Computes the geometry of every layer; measures what needs it. */
	void Arrange(const FVector2D& PixelSize, float Scale);
	/** Valid after Arrange, lowest first. */
	const TArray<FLayer>& GetLayers() const { return Layers; }
	bool NeedsPrepass() const;
	/** True while a popup or a window is open: the loop runs at full rate then. */
	bool IsAnythingOpen() const { return CountOpen() > 0; }
	int32 CountOpen() const { return Popups.Num() + Windows.Num(); }

	void SetContent(const TSharedRef<SWidget>& InContent) { Content = InContent; }
	void SetToasts(const TSharedPtr<SWidget>& InToasts) { Toasts = InToasts; }
	/**
	 * @param Pointer  Device pixels.
	 * @param Owner    What the tooltip tells about; a row of a menu has it beside the menu. Null hides the tooltip.
	 */
	void SetToolTip(const TSharedPtr<SWidget>& InToolTip, const FVector2D& Pointer, const TSharedPtr<SWidget>& Owner = nullptr);
	bool HasToolTip() const { return ToolTip.IsValid(); }

	void AddWindow(const TSharedRef<SWindow>& Window, bool bModal);
	TSharedPtr<SWindow> GetTopWindow(bool bModalOnly) const;
	/** Takes out windows that asked to be closed. Returns those taken out. */
	TArray<TSharedRef<SWindow>> RemoveClosedWindows();
	bool ContainsWindow(const TSharedRef<SWindow>& Window) const;
	/** Where the keyboard goes when nothing has it: the topmost modal window, else the content. */
	TSharedRef<SWidget> GetInputRoot() const;
	/** Whether this is the root of an open layer. */
	bool IsLayerRoot(const SWidget& Root) const;
	/** Whether the keyboard may reach the tree below this root: it is an open layer and no modal window lies over it. */
	bool TakesKeyboard(const SWidget& Root) const;

	void AddPopup(const TSharedRef<FPopup>& Popup) { Popups.Add(Popup); }
	const TArray<TSharedRef<FPopup>>& GetPopups() const { return Popups; }
	/** Drops closed popups and closes those whose owner is gone, hidden, no longer in the window or has lost the keyboard. */
	void PrunePopups(double FrameTime);

private:
	struct FWindowLayer
	{
		TSharedRef<SWindow> Window;
		TSharedRef<SWidget> Frame;
		bool bModal;
	};
	FSlateRect PlaceToolTip(const FVector2D& Size, const FVector2D& PixelSize, float Scale) const;
	FGeometry PlaceFloating(const SWidget& Widget, const FSlateRect& Rect, float Scale) const;

	TSharedRef<SWidget> Content;
	TArray<FWindowLayer> Windows;
	TArray<TSharedRef<FPopup>> Popups;
	TSharedPtr<SWidget> Toasts;
	TSharedPtr<SWidget> ToolTip;
	FVector2D ToolTipPointer = FVector2D(0, 0);
	TWeakPtr<SWidget> ToolTipOwner;
	TArray<FLayer> Layers;
};
