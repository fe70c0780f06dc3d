#pragma once

#include "CoreMinimal.h"
#include "Input/CursorReply.h"
#include "Input/Events.h"
#include "Input/Reply.h"
#include "Layout/ArrangedWidget.h"
#include "Layout/Children.h"
#include "Layout/Clipping.h"
#include "Layout/Geometry.h"
#include "Layout/Visibility.h"
#include "Misc/Attribute.h"
#include "Rendering/DrawElements.h"
#include "Rendering/PaintArgs.h"
#include "Styling/WidgetStyle.h"
#include "Types/WidgetActiveTimerDelegate.h"
#include "Widgets/InvalidateWidgetReason.h"

class IToolTip;
struct FHostAccess;
struct FSlateBaseNamedArgs;

/** Counts of layout work, for tests and benchmarks. */
struct FWidgetCounters
{
	uint64 Measured = 0;
	uint64 Painted = 0;
	uint64 Ticked = 0;
};

/**
 * Base of everything on screen. A frame measures (desired sizes, bottom up, in layout units), then arranges, ticks and
 * paints in one walk; a widget that is not painted is not ticked. Game thread only.
 *
 * Measured sizes are kept: a widget is measured again when something in it was set (Invalidate), or when an attribute that
 * can change its size is bound below it. Widgets say so with NoteSizeBinding, so that finished subtrees cost nothing.
 */
class SLATECORE_API SWidget : public TSharedFromThis<SWidget>
{
public:
	virtual ~SWidget();
	SWidget(const SWidget&) = delete;
	SWidget& operator=(const SWidget&) = delete;

	/** Called by SNew before Construct. */
	void SWidgetConstruct(const FSlateBaseNamedArgs& Args);

	// Input. Each is called along the path to the widget under the pointer or with the focus until one handles it.
	virtual FReply OnKeyChar(const FGeometry& MyGeometry, const FCharacterEvent& InCharacterEvent);
	virtual FReply OnPreviewKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent);
	virtual FReply OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent);
	virtual FReply OnKeyUp(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent);
	virtual FReply OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent);
	virtual FReply OnPreviewMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent);
	virtual FReply OnMouseButtonUp(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent);
	virtual FReply OnMouseMove(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent);
	virtual FReply OnMouseWheel(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent);
	virtual FReply OnMouseButtonDoubleClick(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent);
	virtual void OnMouseEnter(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent);
	virtual void OnMouseLeave(const FPointerEvent& MouseEvent);
	virtual void OnMouseCaptureLost();
	virtual FCursorReply OnCursorQuery(const FGeometry& MyGeometry, const FPointerEvent& CursorEvent) const;
	virtual FReply OnFocusReceived(const FGeometry& MyGeometry, const FFocusEvent& InFocusEvent);
	virtual void OnFocusLost(const FFocusEvent& InFocusEvent);
	virtual bool SupportsKeyboardFocus() const;
	/** False for widgets that take the focus by a press but are passed over by the Tab key. */
	virtual bool IsTabStop() const { return true; }
	/** Text of an input method that is not committed yet. True when the widget shows it; empty text ends it. */
	virtual bool OnPreedit(FStringView Text, int32 Cursor);
	/** While focused: true asks the platform for text input, and the caret's device rectangle is filled in. */
	virtual bool GetTextInputArea(FSlateRect& OutCaret) const;

	/** Called once a frame while painted, before OnPaint. */
	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime);

	// Layout.
	/** Measures what needs it, here and below. Scale is device pixels per unit. */
	void SlatePrepass(float LayoutScale);
	/** The size this widget wants; measured now when it is out of date. Zero for a collapsed child is the parent's rule. */
	const FVector2D& GetDesiredSize() const;
	void ArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const;
	/** Ticks (unless Args say otherwise) and paints this widget and what lies in view below it. Returns the topmost layer. */
	int32 Paint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const;
	/** Marks the widget as changed. Layout and anything that moves children measures it again, and all above it. */
	void Invalidate(EInvalidateWidgetReason InvalidateReason);
	bool NeedsPrepass() const { return bNeedsPrepass || bDescendantNeedsPrepass; }
	/** True when nothing here or below needs measuring at that scale, bound attributes aside. */
	bool IsMeasuredAt(float LayoutScale) const { return !NeedsPrepass() && MeasuredScale == LayoutScale; }
	/** True when a bound attribute here or below can change the size without being set. */
	bool HasSizeBindings() const { return SizeBindingCount > 0; }

	/** All children, in order, whatever their visibility. */
	virtual FChildren* GetChildren() = 0;
	TSharedPtr<SWidget> GetParentWidget() const;
	/** Geometry of the last paint; zero before the first. */
	const FGeometry& GetCachedGeometry() const { return CachedGeometry; }

	// State.
	EVisibility GetVisibility() const { return bVisibilityBound ? Rare->Visibility.Get() : Visibility; }
	void SetVisibility(TAttribute<EVisibility> InVisibility);
	bool IsEnabled() const { return bEnabledBound ? Rare->Enabled.Get() : bEnabled; }
	void SetEnabled(TAttribute<bool> InEnabled);
	bool ShouldBeEnabled(bool bParentEnabled) const { return bParentEnabled && IsEnabled(); }
	void SetToolTipText(const TAttribute<FText>& InToolTipText);
	void SetToolTip(const TSharedPtr<IToolTip>& InToolTip);
	virtual TSharedPtr<IToolTip> GetToolTip();
	/** The plain text of the tooltip, for drivers and tests; empty without one. */
	FText GetToolTipText() const { return Rare ? Rare->ToolTipText.Get() : FText(); }
	void SetCursor(const TAttribute<TOptional<EMouseCursor::Type>>& InCursor);
	void SetRenderOpacity(float InOpacity);
	float GetRenderOpacity() const { return RenderOpacity; }
	void SetClipping(EWidgetClipping InClipping);
	EWidgetClipping GetClipping() const { return Clipping; }
	void SetTag(FName InTag) { Tag = InTag; }
	FName GetTag() const { return Tag; }
	void SetCanTick(bool bInCanTick) { bCanTick = bInCanTick; }
	virtual bool IsHovered() const { return bIsHovered; }
	bool IsDirectlyHovered() const { return bIsDirectlyHovered; }
	bool HasKeyboardFocus() const;
	bool HasFocusedDescendants() const;
	bool HasMouseCapture() const;
	/** True when the focus ring is to be drawn: focused, and the keyboard moved the focus here. */
	bool ShouldShowFocusRing() const;
	TSharedRef<FActiveTimerHandle> RegisterActiveTimer(float TickPeriod, FWidgetActiveTimerDelegate TickFunction);
	void UnRegisterActiveTimer(const TSharedRef<FActiveTimerHandle>& ActiveTimerHandle);
	/** Class name, such as "STextBlock", for drivers, dumps and tests. */
	FName GetType() const { return TypeName; }
	void SetType(FName InType) { TypeName = InType; }
	/** The text that a user reads on this widget itself (not on children); empty for most. For drivers, dumps and tests. */
	virtual FText GetDisplayedText() const;

	// For those who do not see the window. Called only while an assistive technology listens, and by tests.
	/** Says what this widget is; most are nothing by themselves. */
	virtual void DescribeAccess(FHostAccess& Out) const;
	/** Does what DescribeAccess calls its action, as a press would. The caller holds the widget and has looked that it is enabled. */
	virtual FReply DoAccessAction();
	/** Sets the described number, limited to its range. False when it cannot be set. */
	virtual bool SetAccessValue(double Value);

	/** Scale at which widgets are measured when nobody passes one; set by the application before each frame. */
	static void SetLayoutScale(float Scale);
	static float GetLayoutScale();
	static FWidgetCounters& GetCounters();

protected:
	SWidget();

	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const = 0;
	/** Desired size in units from the desired sizes of the children. */
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const = 0;
	virtual void OnArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const = 0;
	/** Paints all children of an arrangement that meet the clip, in order. */
	int32 PaintArrangedChildren(const FPaintArgs& Args, const FArrangedChildren& ArrangedChildren, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const;
	/** Counts a bound attribute that can change the size; false takes one back. Call it when an attribute is given. */
	void NoteSizeBinding(bool bBound);
	/** Replaces one size attribute by another: counts bindings and asks for a new layout. */
	template <typename AttributeType, typename ValueType>
	void AssignSizeAttribute(TAttribute<AttributeType>& Attribute, ValueType&& NewValue)
	{
		if (Attribute.IsBound())
		{
			NoteSizeBinding(false);
		}
		Attribute = Forward<ValueType>(NewValue);
		if (Attribute.IsBound())
		{
			NoteSizeBinding(true);
		}
		Invalidate(EInvalidateWidgetReason::Layout);
	}
	/**
	 * Measures the children that need it; those that need none may be passed over. Called before ComputeDesiredSize.
	 * @param bOwnChange  True when this widget itself was set or the scale has changed, so that nothing kept is to be trusted.
	 */
	virtual void PrepassChildren(float LayoutScale, bool bOwnChange);
	/**
	 * Asks for OnChildChanged. For panels of many children, which measure those that changed without looking at the others:
	 * they number their children by SetChildNumber and read the number back.
	 */
	void WatchChildren() { bWatchesChildren = true; }
	/** A child, or something below it, needs measuring, or its first size binding has come or its last one gone. */
	virtual void OnChildChanged(SWidget& Child);
	static void SetChildNumber(SWidget& Child, int32 Number) { Child.NumberInParent = Number; }
	/** Of no meaning when the panel has not numbered this child. */
	static int32 GetChildNumber(const SWidget& Child) { return Child.NumberInParent; }
	/** Hook of widgets that clip to a part of their bounds. Device pixels. */
	virtual FSlateRect GetClipRect(const FGeometry& AllottedGeometry) const { return AllottedGeometry.GetLayoutBoundingRect(); }

private:
	friend class FSlotBase;
	friend class FSlateApplication;
	friend class FInputRouter;

	/** What few widgets have; kept apart, since there are many widgets. */
	struct FRareState
	{
		TAttribute<EVisibility> Visibility = EVisibility();
		TAttribute<bool> Enabled = true;
		TAttribute<FText> ToolTipText;
		TSharedPtr<IToolTip> ToolTip;
		TAttribute<TOptional<EMouseCursor::Type>> Cursor;
		TArray<TSharedRef<FActiveTimerHandle>> ActiveTimers;
	};

	FRareState& GetRareState();
	void SetParent(SWidget* InParent);
	void ChangeSizeBindings(int32 Delta);
	void RunActiveTimers(double Now);

	SWidget* ParentWidget = nullptr;
	// What panels ask of every child stands together.
	mutable FVector2D DesiredSize = FVector2D(0, 0);
	int32 SizeBindingCount = 0;
	int32 NumberInParent = INDEX_NONE;
	float MeasuredScale = 0.0f;
	EVisibility Visibility;
	bool bNeedsPrepass = true;
	bool bDescendantNeedsPrepass = true;
	bool bVisibilityBound = false;
	bool bEnabledBound = false;
	bool bEnabled = true;
	bool bWatchesChildren = false;
	bool bCanTick = true;
	bool bIsHovered = false;
	bool bIsDirectlyHovered = false;
	EWidgetClipping Clipping = EWidgetClipping::Inherit;
	float RenderOpacity = 1.0f;
	TUniquePtr<FRareState> Rare;
	mutable FGeometry CachedGeometry;
	FName Tag;
	FName TypeName;
};
