#pragma once

#include "Widgets/Views/STableRow.h"
#include "Widgets/Views/STableViewBase.h"

/**
 * A list over an array of the caller's, which must outlive it. Rows exist only while they are in view. After a change of
 * the array call RequestListRefresh. Items are compared by ==, shared pointers by what they point to.
 */
template <typename ItemType>
class SListView : public STableViewBase
{
public:
	using FOnGenerateRow = TDelegate<TSharedRef<ITableRow>(ItemType, const TSharedRef<STableViewBase>&)>;
	using FOnSelectionChanged = TDelegate<void(ItemType, ESelectInfo::Type)>;
	using FOnMouseButtonClick = TDelegate<void(ItemType)>;
	using FOnMouseButtonDoubleClick = TDelegate<void(ItemType)>;

	SLATE_BEGIN_ARGS(SListView<ItemType>) {}
	SLATE_ARGUMENT_DEFAULT(const TArray<ItemType>*, ListItemsSource) = nullptr;
	SLATE_EVENT(FOnGenerateRow, OnGenerateRow)
	/** The item is a default one when the selection was cleared. */
	SLATE_EVENT(FOnSelectionChanged, OnSelectionChanged)
	SLATE_EVENT(FOnMouseButtonClick, OnMouseButtonClick)
	SLATE_EVENT(FOnMouseButtonDoubleClick, OnMouseButtonDoubleClick)
	/** None, or one row at a time. */
	SLATE_ARGUMENT_DEFAULT(ESelectionMode::Type, SelectionMode) = ESelectionMode::Single;
	SLATE_ARGUMENT_DEFAULT(bool, IsFocusable) = true;
	/** The list wants the height of at most so many rows; zero means no limit. */
	SLATE_ARGUMENT_DEFAULT(int32, MaxVisibleRows) = 0;
	SLATE_STYLE_ARGUMENT(FTableRowStyle, RowStyle)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs)
	{
		Source = InArgs._ListItemsSource;
		GenerateRow = InArgs._OnGenerateRow;
		SelectionHandler = InArgs._OnSelectionChanged;
		ClickHandler = InArgs._OnMouseButtonClick;
		DoubleClickHandler = InArgs._OnMouseButtonDoubleClick;
		SelectionMode = InArgs._SelectionMode;
		ConstructBase(InArgs._RowStyle, InArgs._IsFocusable, InArgs._MaxVisibleRows);
	}

	void SetItemsSource(const TArray<ItemType>* InSource)
	{
		Source = InSource;
		RequestListRefresh();
	}
	TArrayView<const ItemType> GetItems() const
	{
		return Source ? TArrayView<const ItemType>(Source->GetData(), Source->Num()) : TArrayView<const ItemType>();
	}
	/** Tells OnSelectionChanged unless the item is selected already. */
	void SetSelection(ItemType SoleSelectedItem, ESelectInfo::Type SelectInfo = ESelectInfo::Direct)
	{
		if (SelectionMode != ESelectionMode::None && !IsItemSelected(SoleSelectedItem))
		{
			Selected = { SoleSelectedItem };
			const FOnSelectionChanged Handler = SelectionHandler;
			Handler.ExecuteIfBound(SoleSelectedItem, SelectInfo);
		}
	}
	void ClearSelection()
	{
		if (Selected.Num() > 0)
		{
			Selected.Reset();
			const FOnSelectionChanged Handler = SelectionHandler;
			Handler.ExecuteIfBound(ItemType(), ESelectInfo::Direct);
		}
	}
	TArray<ItemType> GetSelectedItems() const { return Selected; }
	int32 GetSelectedItems(TArray<ItemType>& OutItems) const
	{
		OutItems = Selected;
		return Selected.Num();
	}
	bool IsItemSelected(const ItemType& Item) const { return Selected.Contains(Item); }
	/** At the next paint. */
	void RequestScrollIntoView(ItemType Item, uint32 UserIndex = 0) { ScrollToIndex(Find(Item)); }

protected:
	virtual int32 GetItemCount() const override { return Source ? Source->Num() : 0; }
	virtual TSharedRef<ITableRow> MakeRow(int32 Index) override
	{
		const ItemType Item = (*Source)[Index];
		if (GenerateRow.IsBound())
		{
			return GenerateRow.Execute(Item, StaticCastSharedRef<STableViewBase>(AsShared()));
		}
		return SNew(STableRow<ItemType>, StaticCastSharedRef<STableViewBase>(AsShared()));
	}
	virtual bool IsIndexSelected(int32 Index) const override { return IsItemSelected((*Source)[Index]); }
	virtual int32 GetSelectedIndex() const override { return Selected.Num() > 0 ? Find(Selected[0]) : INDEX_NONE; }
	virtual void SelectIndex(int32 Index, ESelectInfo::Type SelectInfo) override { SetSelection(ItemType((*Source)[Index]), SelectInfo); }
	virtual void ClickIndex(int32 Index) override
	{
		const FOnMouseButtonClick Handler = ClickHandler;
		Handler.ExecuteIfBound(ItemType((*Source)[Index]));
	}
	virtual void DoubleClickIndex(int32 Index) override
	{
		const FOnMouseButtonDoubleClick Handler = DoubleClickHandler;
		Handler.ExecuteIfBound(ItemType((*Source)[Index]));
	}

private:
	int32 Find(const ItemType& Item) const { return Source ? Source->Find(Item) : INDEX_NONE; }

	const TArray<ItemType>* Source = nullptr;
	TArray<ItemType> Selected;
	FOnGenerateRow GenerateRow;
	FOnSelectionChanged SelectionHandler;
	FOnMouseButtonClick ClickHandler;
	FOnMouseButtonDoubleClick DoubleClickHandler;
	ESelectionMode::Type SelectionMode = ESelectionMode::Single;
};
