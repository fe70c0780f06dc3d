#pragma once

#include "CoreMinimal.h"
#include "Delegates/Delegate.h"
#include "FileSearch/FileIndexEntry.h"
#include "FileSearch/FileSearchResult.h"
#include "Input/Events.h"
#include "Input/Reply.h"
#include "Layout/Visibility.h"
#include "Templates/SharedPointer.h"
#include "Types/SlateEnums.h"
#include "Widgets/DeclarativeSyntaxSupport.h"
#include "Widgets/SCompoundWidget.h"
#include "Widgets/Views/SListView.h"

class ITableRow;
class STableViewBase;

namespace Velmora::UI
{
	class FFileSearchViewModel;
}

/**
 * The files that match a query, best first, with one of them selected. Meant for a popup beside a text box that keeps the
 * keyboard: the box's owner forwards keys to the public operations. Closes nothing itself.
 */
class VELMORAUI_API SFileSearchDropdown : public SCompoundWidget
{
public:
	DECLARE_DELEGATE_OneParam(FOnFileSelected, const Velmora::UI::FFileIndexEntry&);

	SLATE_BEGIN_ARGS(SFileSearchDropdown) {}
	SLATE_ARGUMENT(FString, InitialQuery)
	SLATE_EVENT(FOnFileSelected, OnFileSelected)
	SLATE_EVENT(FSimpleDelegate, OnCancelled)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

	/** A new query selects its best match. The query that is already set does nothing. */
	void SetSearchQuery(const FString& Query);
	FString GetSearchQuery() const;

	/** From the last item to the first. */
	void NavigateNext();
	/** From the first item to the last. */
	void NavigatePrevious();
	/** Reports the selected item; nothing without one. */
	void SelectCurrentItem();
	void Cancel();

	/** For hosts that give the keyboard to the dropdown. */
	virtual FReply OnPreviewKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;

private:
	using FItem = TSharedPtr<Velmora::UI::FFileSearchResult>;

	TSharedRef<SWidget> BuildBody();
	TSharedRef<SWidget> BuildResultsList();
	TSharedRef<SWidget> BuildNoResultsMessage();
	TSharedRef<SWidget> BuildLoadingIndicator();

	TSharedRef<ITableRow> OnGenerateRow(FItem Item, const TSharedRef<STableViewBase>& OwnerTable);
	void OnListItemClicked(FItem Item);
	void OnListItemDoubleClicked(FItem Item);
	void OnResultsChanged(const TArray<Velmora::UI::FFileSearchResult>& Results);
	/** For a host with a search box, as is OnSearchTextCommitted. */
	void OnSearchTextChanged(const FText& Text);
	void OnSearchTextCommitted(const FText& Text, ETextCommit::Type CommitType);

	void ShowSelectedIndex();
	void ReportItem(const FItem& Item);
	FText GetNoResultsText() const;
	EVisibility GetResultsListVisibility() const;
	EVisibility GetNoResultsVisibility() const;
	EVisibility GetLoadingVisibility() const;

	TSharedPtr<Velmora::UI::FFileSearchViewModel> ViewModel;
	TSharedPtr<SListView<TSharedPtr<Velmora::UI::FFileSearchResult>>> ResultsListView;
	/** Copies of the results, which the list refers to. */
	TArray<TSharedPtr<Velmora::UI::FFileSearchResult>> ListItems;
	/** What the keyboard has selected. */
	int32 SelectedIndex = 0;
	FOnFileSelected OnFileSelected;
	FSimpleDelegate OnCancelled;
};
