#pragma once

#include "ConversationItems.h"
#include "OneReading.h"
#include "Widgets/SCompoundWidget.h"
#include "Widgets/Views/SListView.h"

struct FSoughtMessage;

/** A message that was found is to be shown, its conversation being open. */
DECLARE_DELEGATE_TwoParams(FOnShowFoundMessage, const FString& /*Words*/, const FSoughtMessage&);

class ITableRow;
class SEditableTextBox;

/**
 * The tab "Conversations": all that are stored of the project, the search over their messages, and what can be done with one.
 * The store is read and searched on workers; the list follows it. A deletion is done when its time is over, or with the tab.
 */
class SConversations : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SConversations) {}
	SLATE_EVENT(FOnShowFoundMessage, OnShowFoundMessage)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	virtual ~SConversations() override;

	/** Gives the keyboard to the search, with its text selected. */
	void FocusSearch();

	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;
	virtual FReply OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;

private:
	using FItem = FConversationItems::FItem;

	/** Search, state, and the bars that come and go. */
	TSharedRef<SWidget> MakeHead();
	TSharedRef<SWidget> MakeButtons();
	TSharedRef<SWidget> MakeButton(const char* Tag, const FText& Label, const FText& ToolTip, void (SConversations::*Action)());
	TSharedRef<SWidget> MakeNameBar();
	TSharedRef<SWidget> MakeUndoBar();
	TSharedRef<SWidget> MakeList();
	TSharedRef<ITableRow> MakeRow(FItem Item, const TSharedRef<STableViewBase>& Owner);
	TSharedRef<SWidget> MakeTitleLine(const FItem& Item) const;
	TSharedRef<SWidget> MakeExcerpt(const FItem& Item);
	float GetWrapWidth() const;
	FText GetStatusText() const;
	FText GetEmptyText() const;
	FText GetUndoText() const;
	FText GetPinText() const;

	// Reading.
	/** Whether the store's files differ from those read last. */
	bool HasStoreChanged();
	void ReadStore();
	void Search();
	void ShowItems();

	// What can be done with the selected one.
	FItem GetSelected() const;
	void Open();
	void BeginRename();
	void EndRename(bool bTakesName);
	void TogglePin();
	void Export();
	void Delete();
	void FinishDeletions();
	void UndoDelete();
	void ChangeMark(const FString& Id, const Velmora::FConversationMark& Mark);
	/** For good. */
	static void DeleteNow(const FString& Id);
	FReply OnSearchKey(const FGeometry& Geometry, const FKeyEvent& KeyEvent);
	FReply OnNameKey(const FGeometry& Geometry, const FKeyEvent& KeyEvent);
	void FocusList();

	FOnShowFoundMessage OnShowFoundMessage;
	FConversationItems Items;
	FConversationDeletions Deletions;
	Velmora::FConversationSearch Finder;
	TSharedPtr<SListView<FItem>> List;
	TSharedPtr<SEditableTextBox> SearchBox;
	TSharedPtr<SEditableTextBox> NameBox;
	/** The one that is being renamed; empty for none. */
	FString RenamedId;
	/** Why the last search failed. */
	FString Problem;
	FOneReading Reading;
	/** What stands here goes with the session. */
	bool bKeepsNothing = false;
	bool bWasRead = false;
	/** Names and pins that were changed, ever, and those that are not stored yet: each ends with a reading of the store. */
	int32 MarkChanges = 0;
	int32 MarksUnderWay = 0;
	bool bIsSearching = false;
	bool bWantsFocus = true;
	double LastLook = -1.0;
	/** Times and sizes of the store's files at the last read. */
	FString SeenStore;
};
