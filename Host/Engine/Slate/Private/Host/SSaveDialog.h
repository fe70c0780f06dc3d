#pragma once

#include "Host/HostFileDialogs.h"
#include "Host/HostFolders.h"
#include "Host/SaveTarget.h"
#include "Widgets/SCompoundWidget.h"
#include "Widgets/Views/SListView.h"

class SEditableTextBox;

DECLARE_DELEGATE_OneParam(FOnSaveFileChosen, const FString&)

	/**
	 * What a save dialog's window holds: the folder, what is in it, the name and the filter. Tab goes through them in this order;
	 * Enter opens a folder of the list, and saves anywhere else; Backspace in the list and Alt+Up anywhere go one folder up.
	 */
	class SSaveDialog : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SSaveDialog) {}
	/** Units. */
	SLATE_ARGUMENT_DEFAULT(float, ListHeight) = 240.0f;
	SLATE_EVENT(FOnSaveFileChosen, OnChosen)
	SLATE_EVENT(FSimpleDelegate, OnCancelled)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs, const FHostSaveDialog& Dialog);

	/** Saves under what stands in the name box, or goes to the folder that it names. Where a folder is asked for, takes the one shown. */
	void Accept(bool bReplaceWithoutAsking);
	void SetName(const FString& Name);
	FString GetName() const;
	const FString& GetFolder() const { return Folder; }
	const FString& GetProblem() const { return Problem; }

	virtual bool SupportsKeyboardFocus() const override { return true; }
	virtual bool IsTabStop() const override { return false; }
	virtual FReply OnFocusReceived(const FGeometry& MyGeometry, const FFocusEvent& InFocusEvent) override;
	virtual FReply OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;
	virtual FReply OnKeyChar(const FGeometry& MyGeometry, const FCharacterEvent& InCharacterEvent) override;

private:
	using FEntry = TSharedPtr<FHostFolderEntry>;
	using FFilter = TSharedPtr<FSaveFilter>;

	// Parts of the layout.
	TSharedRef<SWidget> MakeFolderRow();
	TSharedRef<SWidget> MakeNewFolderRow();
	TSharedRef<SWidget> MakeList(float Height);
	TSharedRef<SWidget> MakeNameRow();
	TSharedRef<SWidget> MakeFilterRow();
	TSharedRef<SWidget> MakeButtonRow();
	TSharedRef<ITableRow> MakeEntryRow(FEntry Entry, const TSharedRef<STableViewBase>& Owner);
	/** Lists the folder that the dialog opens with, which need not exist yet. */
	void ShowFirstFolder();
	TSharedRef<SWidget> MakeProblemRow() const;
	TSharedRef<SWidget> MakeLabel(const FText& Text) const;

	/** Shows a folder; false, with the reason told, when it cannot be read. */
	bool GoTo(const FString& NewFolder);
	void GoUp();
	/** Fills the list from what was found, by the filter. */
	void ShowEntries();
	void ShowFolderPath();
	void ChooseFolder();
	/** Where the answer stands. */
	SEditableTextBox& GetAnswerBox() const { return bChoosesFolder ? *FolderBox : *NameBox; }
	void OpenEntry(FEntry Entry);
	void OnEntryPicked(FEntry Entry, ESelectInfo::Type Info);
	void OnNameCommitted(const FText& Text, ETextCommit::Type Type);
	void OnFolderCommitted(const FText& Text, ETextCommit::Type Type);
	void OnFilterPicked(FFilter Filter, ESelectInfo::Type Info);
	void ShowNewFolder(bool bShow);
	void MakeNewFolder();
	bool AskToReplace(const FString& Path) const;

	FString Folder;
	/** What the name box holds when nothing better is known. */
	FString SuggestedName;
	/** A name taken from the list, and how the box shows it: a box of one line shows a line feed otherwise. */
	FString TakenName;
	FString TakenText;
	/** Told below the name; empty when all is well. */
	FString Problem;
	/** Told in place of an empty list. */
	FString EmptyNote;
	TArray<FHostFolderEntry> Found;
	TArray<FEntry> Entries;
	TArray<FFilter> Filters;
	FFilter Filter;
	FOnSaveFileChosen ChosenHandler;
	FSimpleDelegate CancelHandler;
	TSharedPtr<SEditableTextBox> FolderBox;
	TSharedPtr<SEditableTextBox> NewFolderBox;
	TSharedPtr<SEditableTextBox> NameBox;
	TSharedPtr<SListView<FEntry>> List;
	bool bNewFolderShown = false;
	bool bChoosesFolder = false;
};
