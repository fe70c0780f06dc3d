#pragma once

#include "Host/HostAccess.h"
#include "Styling/AppStyle.h"
#include "Widgets/Input/SComboButton.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Views/SListView.h"

/**
 * A box that shows a choice and opens a list of all. The keyboard stays on the box: Up and Down walk through the list
 * while it is open and change the choice while it is closed; Enter takes the marked row, Escape leaves it.
 *
 * OnSelectionChanged comes only when the choice differs from the present one: OnMouseClick and OnKeyPress for the user,
 * OnNavigation for SetSelectedItem, Direct for ClearSelection.
 */
template <typename OptionType>
class SComboBox : public SComboButton
{
public:
	using FOnGenerateWidget = TDelegate<TSharedRef<SWidget>(OptionType)>;
	using FOnSelectionChanged = TDelegate<void(OptionType, ESelectInfo::Type)>;

	SLATE_BEGIN_ARGS(SComboBox<OptionType>) {}
	SLATE_DEFAULT_SLOT(typename SComboBox<OptionType>::FArguments, Content)
	/** Must outlive the widget. */
	SLATE_ARGUMENT_DEFAULT(const TArray<OptionType>*, OptionsSource) = nullptr;
	SLATE_EVENT(FOnGenerateWidget, OnGenerateWidget)
	SLATE_EVENT(FOnSelectionChanged, OnSelectionChanged)
	SLATE_EVENT(FSimpleDelegate, OnComboBoxOpening)
	/** Chosen from the start; tells nobody. */
	SLATE_ARGUMENT(OptionType, InitiallySelectedItem)
	SLATE_ATTRIBUTE(FMargin, ContentPadding)
	HOST_MARGIN_NUMBERS(ContentPadding)
	SLATE_ATTRIBUTE(FSlateColor, ForegroundColor)
	SLATE_STYLE_ARGUMENT(FComboButtonStyle, ComboBoxStyle)
	SLATE_STYLE_ARGUMENT(FButtonStyle, ButtonStyle)
	SLATE_STYLE_ARGUMENT(FTableRowStyle, ItemStyle)
	/** Units; zero or less means ten rows. */
	SLATE_ARGUMENT_DEFAULT(float, MaxListHeight) = 0.0f;
	SLATE_ARGUMENT_DEFAULT(bool, HasDownArrow) = true;
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs)
	{
		Options = InArgs._OptionsSource;
		GenerateWidget = InArgs._OnGenerateWidget;
		SelectionHandler = InArgs._OnSelectionChanged;
		OpeningHandler = InArgs._OnComboBoxOpening;
		SelectedItem = InArgs._InitiallySelectedItem;
		RowStyle = InArgs._ItemStyle ? InArgs._ItemStyle : &FAppStyle::Get().GetWidgetStyle<FTableRowStyle>(TEXT("TableView.Row"));
		MaxListHeight = InArgs._MaxListHeight;
		SMenuAnchor::Construct(SMenuAnchor::FArguments().Placement(MenuPlacement_ComboBox));
		if (InArgs._ForegroundColor.IsSet())
		{
			this->SetForegroundColor(InArgs._ForegroundColor);
		}
		ConstructButton(InArgs._ComboBoxStyle, InArgs._ButtonStyle, InArgs._Content.Widget, InArgs._ContentPadding, InArgs._HasDownArrow);
	}

	const OptionType& GetSelectedItem() const { return SelectedItem; }
	void SetSelectedItem(OptionType InItem) { Choose(InItem, InItem == OptionType() ? ESelectInfo::Direct : ESelectInfo::OnNavigation); }
	void ClearSelection() { Choose(OptionType(), ESelectInfo::Direct); }
	/** To be called after a change of the options. */
	void RefreshOptions()
	{
		if (List)
		{
			List->RequestListRefresh();
		}
	}

	virtual FReply OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override
	{
		const FKey Key = InKeyEvent.GetKey();
		const bool bPlain = !InKeyEvent.IsControlDown() && !InKeyEvent.IsAltDown() && !InKeyEvent.IsShiftDown();
		if (this->IsOpen() && List && bPlain)
		{
			if (Key == EKeys::Enter || Key == EKeys::SpaceBar)
			{
				const TArray<OptionType> Marked = List->GetSelectedItems();
				this->SetIsOpen(false);
				if (Marked.Num() > 0)
				{
					Choose(Marked[0], ESelectInfo::OnKeyPress);
				}
				return FReply::Handled();
			}
			if (List->MoveSelectionByKey(Key, ESelectInfo::OnNavigation))
			{
				return FReply::Handled();
			}
		}
		const bool bStep = Key == EKeys::Up || Key == EKeys::Down || Key == EKeys::Home || Key == EKeys::End;
		if (!this->IsOpen() && bPlain && bStep)
		{
			Step(Key);
			return FReply::Handled();
		}
		return SComboButton::OnKeyDown(MyGeometry, InKeyEvent);
	}

	virtual void DescribeAccess(FHostAccess& Out) const override
	{
		SComboButton::DescribeAccess(Out);
		// What is inside is the choice and not what is chosen.
		Out.Role = EHostRole::ComboBox;
		Out.bNamedByContents = false;
	}

protected:
	virtual bool FocusesMenu() const override { return false; }
	virtual TSharedPtr<SWidget> MakeMenuContent() override
	{
		const FSimpleDelegate Opening = OpeningHandler;
		Opening.ExecuteIfBound();
		if (!Options || Options->Num() == 0)
		{
			return nullptr;
		}
		constexpr int32 RowLimit = 10;
		const FMargin Border = this->GetStyle().MenuBorderPadding;
		const float Width = FMath::Max(static_cast<float>(this->GetCachedGeometry().GetLocalSize().X) - Border.Left - Border.Right, 0.0f);
		// clang-format off
		const TSharedRef<SWidget> Surface = this->MakeMenuSurface(
			SNew(SBox)
			.WidthOverride(Width)
			.MaxDesiredHeight(MaxListHeight > 0.0f ? FOptionalSize(MaxListHeight) : FOptionalSize())
			[
				SAssignNew(List, SListView<OptionType>)
				.ListItemsSource(Options)
				.OnGenerateRow(this, &SComboBox::MakeOptionRow)
				.OnMouseButtonClick(this, &SComboBox::OnOptionClicked)
				.IsFocusable(false)
				.MaxVisibleRows(MaxListHeight > 0.0f ? 0 : RowLimit)
				.RowStyle(RowStyle)
			]);
		// clang-format on
		if (Options->Contains(SelectedItem))
		{
			List->SetSelection(SelectedItem, ESelectInfo::Direct);
			List->RequestScrollIntoView(SelectedItem);
		}
		return Surface;
	}
	virtual void OnOpenChanged(bool bIsOpen) override
	{
		if (!bIsOpen)
		{
			List.Reset();
		}
		SComboButton::OnOpenChanged(bIsOpen);
	}

private:
	TSharedRef<ITableRow> MakeOptionRow(OptionType Option, const TSharedRef<STableViewBase>& Owner)
	{
		const TSharedRef<SWidget> Content = GenerateWidget.IsBound() ? GenerateWidget.Execute(Option) : SNullWidget::NullWidget;
		// clang-format off
		return SNew(STableRow<OptionType>, Owner)
			.Padding(FMargin(8.0f, 4.0f))
			[
				Content
			];
		// clang-format on
	}
	void OnOptionClicked(OptionType Option)
	{
		this->SetIsOpen(false);
		Choose(Option, ESelectInfo::OnMouseClick);
	}
	void Step(const FKey& Key)
	{
		const int32 Count = Options ? Options->Num() : 0;
		if (Count == 0)
		{
			return;
		}
		const int32 Current = Options->Find(SelectedItem);
		int32 Next = Key == EKeys::Home ? 0 : Count - 1;
		if (Key == EKeys::Down)
		{
			Next = Current + 1;
		}
		else if (Key == EKeys::Up)
		{
			Next = Current == INDEX_NONE ? Count - 1 : Current - 1;
		}
		Choose(OptionType((*Options)[FMath::Clamp(Next, 0, Count - 1)]), ESelectInfo::OnKeyPress);
	}
	void Choose(OptionType Item, ESelectInfo::Type SelectInfo)
	{
		if (Item == SelectedItem)
		{
			return;
		}
		SelectedItem = Item;
		if (List && Options && Options->Contains(Item))
		{
			List->SetSelection(Item, ESelectInfo::Direct);
		}
		const FOnSelectionChanged Handler = SelectionHandler;
		Handler.ExecuteIfBound(Item, SelectInfo);
	}

	const TArray<OptionType>* Options = nullptr;
	OptionType SelectedItem{};
	TSharedPtr<SListView<OptionType>> List;
	FOnGenerateWidget GenerateWidget;
	FOnSelectionChanged SelectionHandler;
	FSimpleDelegate OpeningHandler;
	const FTableRowStyle* RowStyle = nullptr;
	float MaxListHeight = 0.0f;
};
