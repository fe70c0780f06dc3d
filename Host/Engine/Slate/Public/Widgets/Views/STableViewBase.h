#pragma once

#include "Styling/SlateTypes.h"
#include "Types/SlateEnums.h"
#include "Widgets/SPanel.h"
#include "Widgets/Views/ITableRow.h"

struct FScrollThumb;

/**
 * The part of a list that does not depend on the type of its items: makes rows for what is in view while it is painted,
 * scrolls, moves the selection by keys. Rows may differ in height; those out of view are taken to be of average height.
 */
class SLATE_API STableViewBase : public SPanel
{
public:
	virtual ~STableViewBase() override;

	/** The items changed: rows are made anew before the next paint. */
	void RequestListRefresh();
	void ScrollToTop();
	void ScrollToBottom();
	/** The last row was wholly in view when the list was painted last, or there was none. */
	bool IsAtBottom() const;
	/** Rows that exist now. */
	int32 GetNumGeneratedChildren() const { return Rows.Num(); }
	const FTableRowStyle& GetRowStyle() const { return *RowStyle; }

	// What rows ask and tell.
	bool IsRowSelected(int32 Index) const;
	void NotifyRowPressed(int32 Index);
	void NotifyRowClicked(int32 Index);
	void NotifyRowDoubleClicked(int32 Index);

	/** Moves the selection as the key does; false when it is no key of a list. */
	bool MoveSelectionByKey(const FKey& Key, ESelectInfo::Type SelectInfo);
	/** Brings a row into view at the next paint. */
	void ScrollToIndex(int32 Index);

	virtual bool SupportsKeyboardFocus() const override { return bFocusable; }
	virtual FReply OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;
	virtual FReply OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseButtonUp(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseMove(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseWheel(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual void OnMouseLeave(const FPointerEvent& MouseEvent) override;
	virtual void OnMouseCaptureLost() override;
	virtual FChildren* GetChildren() override { return &Children; }
	virtual void DescribeAccess(FHostAccess& Out) const override;

protected:
	STableViewBase();
	/** @param InMaxRows  The list wants at most this many rows' height; zero means no limit. */
	void ConstructBase(const FTableRowStyle* InRowStyle, bool bInFocusable, int32 InMaxRows);

	// What the typed list knows.
	virtual int32 GetItemCount() const = 0;
	virtual TSharedRef<ITableRow> MakeRow(int32 Index) = 0;
	virtual bool IsIndexSelected(int32 Index) const = 0;
	/** INDEX_NONE without a selection in the list. */
	virtual int32 GetSelectedIndex() const = 0;
	virtual void SelectIndex(int32 Index, ESelectInfo::Type SelectInfo) = 0;
	virtual void ClickIndex(int32 Index) = 0;
	virtual void DoubleClickIndex(int32 Index) = 0;

	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;
	virtual void OnArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const override;

private:
	class FSlot;
	struct FSlotArguments : public TSlotArgumentsBase<FSlot, FSlotArguments>
	{
	};
	class FSlot : public FSlotBase
	{
	public:
		using FSlotArguments = STableViewBase::FSlotArguments;
		void Construct(const FSlotArguments& Arguments) { AttachWidget(Arguments._Child.ToSharedRef()); }
	};
	struct FRow
	{
		int32 Index = 0;
		TSharedPtr<ITableRow> Row;
		float Top = 0.0f;
		float Height = 0.0f;
	};

	/** Makes and places the rows for a height in units; drops those out of view. */
	void UpdateRows(const FGeometry& Geometry);
	/** Moves the top no further than it takes to show all of a row. */
	void BringIntoView(int32 Wanted, float ViewHeight, TArray<FRow>& Kept);
	/** Makes the top a row within the list, and the list reach the lower edge of the view where it is long enough. */
	void SettleTop(int32 Count, float ViewHeight, TArray<FRow>& Kept);
	/** Takes the rows in view as children, and lets go of all others. */
	void ShowFromTop(int32 Count, float ViewHeight, TArray<FRow>& Kept);
	/** The row of an index, with its height measured. */
	FRow& FindOrMakeRow(int32 Index, TArray<FRow>& Kept);
	void DropRows();
	float GetAverageHeight() const;
	double GetContentHeight() const;
	double GetScrollOffset() const;
	void SetScrollOffset(double Offset);
	FSlateRect GetBarRect(const FGeometry& Geometry) const;
	bool HasOverflow(const FGeometry& Geometry) const;

	TPanelChildren<FSlot> Children;
	TArray<FRow> Rows;
	/** Made to learn the height before any row is in view; becomes the first row. */
	mutable TSharedPtr<ITableRow> Probe;
	mutable float KnownHeight = 0.0f;
	const FTableRowStyle* RowStyle = nullptr;
	TUniquePtr<FScrollThumb> Thumb;
	int32 TopIndex = 0;
	float TopDistance = 0.0f;
	int32 WantedIndex = INDEX_NONE;
	int32 MaxRows = 0;
	/** Items at the last paint. */
	int32 PaintedCount = 0;
	bool bFocusable = true;
	bool bRefresh = false;
	bool bToBottom = false;
};
