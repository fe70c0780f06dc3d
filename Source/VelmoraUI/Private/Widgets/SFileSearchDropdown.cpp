#include "Widgets/SFileSearchDropdown.h"

#include "FileSearch/FileSearchViewModel.h"
#include "InputCoreTypes.h"
#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SFileSearchItem.h"
#include "Widgets/SOverlay.h"
#include "Widgets/Text/STextBlock.h"
#include "Widgets/Views/STableRow.h"
#include "Widgets/WidgetLook.h"

#define LOCTEXT_NAMESPACE "VelmoraUI"

void SFileSearchDropdown::Construct(const FArguments& InArgs)
{
	using Velmora::UI::FFileSearchViewModel;
	OnFileSelected = InArgs._OnFileSelected;
	OnCancelled = InArgs._OnCancelled;
	SelectedIndex = 0;
	ViewModel = MakeShared<FFileSearchViewModel>();
	// Before the query is set, whose results come by this way.
	ViewModel->OnResultsChanged().AddSP(this, &SFileSearchDropdown::OnResultsChanged);
	if (!InArgs._InitialQuery.IsEmpty())
	{
		ViewModel->SetSearchQuery(InArgs._InitialQuery);
	}

	// clang-format off
	ChildSlot
	[
		SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush("Menu.Background"))
		.BorderBackgroundColor(FSlateColor(FVelmoraUIStyles::GetToolMessageBackgroundColor().CopyWithNewOpacity(0.95f)))
		.Padding(FMargin(4.0f))
		[
			SNew(SBox)
			.MinDesiredWidth(400.0f)
			.MaxDesiredWidth(600.0f)
			.MaxDesiredHeight(400.0f)
			[
				SNew(SVerticalBox)
				+ SVerticalBox::Slot()
				.FillHeight(1.0f)
				.Padding(4.0f, 0.0f)
				[
					BuildBody()
				]
			]
		]
	];
	// clang-format on
	// The list exists only now, so what the query above found is selected here.
	ShowSelectedIndex();
}

TSharedRef<SWidget> SFileSearchDropdown::BuildBody()
{
	// All three lie in one place, and each knows itself when it shows.
	// clang-format off
	return SNew(SOverlay)
		+ SOverlay::Slot()
		[
			SNew(SBox)
			.Visibility(this, &SFileSearchDropdown::GetResultsListVisibility)
			[
				BuildResultsList()
			]
		]
		+ SOverlay::Slot()
		.HAlign(HAlign_Center)
		.VAlign(VAlign_Center)
		[
			SNew(SBox)
			.Visibility(this, &SFileSearchDropdown::GetNoResultsVisibility)
			[
				BuildNoResultsMessage()
			]
		]
		+ SOverlay::Slot()
		.HAlign(HAlign_Center)
		.VAlign(VAlign_Center)
		[
			SNew(SBox)
			.Visibility(this, &SFileSearchDropdown::GetLoadingVisibility)
			[
				BuildLoadingIndicator()
			]
		];
	// clang-format on
}

TSharedRef<SWidget> SFileSearchDropdown::BuildResultsList()
{
	// Not focusable: a press on the list leaves the keyboard in the text box.
	return SAssignNew(ResultsListView, SListView<FItem>)
		.ListItemsSource(&ListItems)
		.SelectionMode(ESelectionMode::Single)
		.IsFocusable(false)
		.OnGenerateRow(this, &SFileSearchDropdown::OnGenerateRow)
		.OnMouseButtonClick(this, &SFileSearchDropdown::OnListItemClicked)
		.OnMouseButtonDoubleClick(this, &SFileSearchDropdown::OnListItemDoubleClicked);
}

TSharedRef<SWidget> SFileSearchDropdown::BuildNoResultsMessage()
{
	return SNew(STextBlock)
		.Text(this, &SFileSearchDropdown::GetNoResultsText)
		.Font(FVelmoraUIStyles::GetBodyFont())
		.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextColorSecondary()));
}

TSharedRef<SWidget> SFileSearchDropdown::BuildLoadingIndicator()
{
	return SNew(STextBlock)
		.Text(LOCTEXT("IndexingFiles", "Indexing files..."))
		.Font(FVelmoraUIStyles::GetBodyFont())
		.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextColorSecondary()));
}

void SFileSearchDropdown::SetSearchQuery(const FString& Query)
{
	if (ViewModel.IsValid())
	{
		ViewModel->SetSearchQuery(Query);
	}
}

FString SFileSearchDropdown::GetSearchQuery() const
{
	return ViewModel.IsValid() ? ViewModel->GetSearchQuery() : FString();
}

void SFileSearchDropdown::NavigateNext()
{
	if (ListItems.Num() > 0)
	{
		// Round at both ends.
		SelectedIndex = SelectedIndex + 1 < ListItems.Num() ? SelectedIndex + 1 : 0;
		ShowSelectedIndex();
	}
}

void SFileSearchDropdown::NavigatePrevious()
{
	if (ListItems.Num() > 0)
	{
		SelectedIndex = SelectedIndex > 0 ? SelectedIndex - 1 : ListItems.Num() - 1;
		ShowSelectedIndex();
	}
}

void SFileSearchDropdown::ShowSelectedIndex()
{
	if (ResultsListView.IsValid() && ListItems.IsValidIndex(SelectedIndex))
	{
		ResultsListView->SetSelection(ListItems[SelectedIndex], ESelectInfo::Direct);
		ResultsListView->RequestScrollIntoView(ListItems[SelectedIndex]);
	}
}

void SFileSearchDropdown::SelectCurrentItem()
{
	if (ListItems.IsValidIndex(SelectedIndex))
	{
		ReportItem(ListItems[SelectedIndex]);
	}
}

void SFileSearchDropdown::ReportItem(const FItem& Item)
{
	if (Item.IsValid())
	{
		// Held: whoever hears of the pick may set a query, which makes all items anew.
		const FItem Kept = Item;
		OnFileSelected.ExecuteIfBound(Kept->Entry);
	}
}

void SFileSearchDropdown::Cancel()
{
	OnCancelled.ExecuteIfBound();
}

FReply SFileSearchDropdown::OnPreviewKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	const FKey Key = InKeyEvent.GetKey();
	if (Key == EKeys::Escape)
	{
		Cancel();
	}
	else if (Key == EKeys::Up)
	{
		NavigatePrevious();
	}
	else if (Key == EKeys::Down)
	{
		NavigateNext();
	}
	else if (Key == EKeys::Enter)
	{
		SelectCurrentItem();
	}
	else
	{
		return FReply::Unhandled();
	}
	return FReply::Handled();
}

TSharedRef<ITableRow> SFileSearchDropdown::OnGenerateRow(FItem Item, const TSharedRef<STableViewBase>& OwnerTable)
{
	// clang-format off
	return SNew(STableRow<FItem>, OwnerTable)
		[
			SNew(SFileSearchItem)
			.FileEntry(Item->Entry)
			.SearchQuery(GetSearchQuery())
			.IsSelected(false)
		];
	// clang-format on
}

void SFileSearchDropdown::OnListItemClicked(FItem Item)
{
	ReportItem(Item);
}

void SFileSearchDropdown::OnListItemDoubleClicked(FItem Item)
{
	ReportItem(Item);
}

void SFileSearchDropdown::OnResultsChanged(const TArray<Velmora::UI::FFileSearchResult>& Results)
{
	using Velmora::UI::FFileSearchResult;
	// The list goes by objects, so all are made anew: rows of an old query must not stay.
	ListItems.Empty(Results.Num());
	for (const FFileSearchResult& Result : Results)
	{
		ListItems.Add(MakeShared<FFileSearchResult>(Result));
	}
	if (ResultsListView.IsValid())
	{
		ResultsListView->RequestListRefresh();
	}
	// Enter picks the best match.
	SelectedIndex = 0;
	ShowSelectedIndex();
}

void SFileSearchDropdown::OnSearchTextChanged(const FText& Text)
{
	SetSearchQuery(Text.ToString());
	SelectedIndex = 0;
}

void SFileSearchDropdown::OnSearchTextCommitted(const FText& Text, ETextCommit::Type CommitType)
{
	if (CommitType == ETextCommit::OnEnter)
	{
		SelectCurrentItem();
	}
}

FText SFileSearchDropdown::GetNoResultsText() const
{
	const bool bIdle = ViewModel.IsValid() && !ViewModel->IsReady() && !ViewModel->IsIndexing();
	return bIdle ? LOCTEXT("FileIndexNotReady", "File index not ready") : LOCTEXT("NoFilesFound", "No files found");
}

EVisibility SFileSearchDropdown::GetResultsListVisibility() const
{
	return VisibleIf(ViewModel.IsValid() && ListItems.Num() > 0 && ViewModel->IsReady());
}

EVisibility SFileSearchDropdown::GetNoResultsVisibility() const
{
	if (!ViewModel.IsValid())
	{
		return EVisibility::Collapsed;
	}
	// Nothing was found, or nothing can be: without a query there is neither.
	const bool bNothingFound = ViewModel->IsReady() && !ViewModel->GetSearchQuery().IsEmpty() && ListItems.IsEmpty();
	const bool bIdle = !ViewModel->IsReady() && !ViewModel->IsIndexing();
	return VisibleIf(bNothingFound || bIdle);
}

EVisibility SFileSearchDropdown::GetLoadingVisibility() const
{
	return VisibleIf(ViewModel.IsValid() && ViewModel->IsIndexing());
}

#undef LOCTEXT_NAMESPACE
