#pragma once

#include "ConnectionList.h"
#include "Widgets/SCompoundWidget.h"

class SBox;
template <typename OptionType>
class SComboBox;
class SEditableTextBox;
class SVerticalBox;
struct FConnectionField;

/**
 * The page "Connections": the list at the left, the fields of the chosen connection at the right. What is typed is stored by itself
 * as soon as the connection can be used. Whatever talks to a server or a keyring does so on another thread.
 */
class SConnectionsPage : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SConnectionsPage) {}
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;

private:
	using FItem = TSharedRef<FEditedConnection>;
	using SModelList = SComboBox<TSharedPtr<FString>>;

	TSharedRef<SWidget> MakeListColumn();
	TSharedRef<SWidget> MakeListRow(const FItem& Item);
	TSharedRef<SWidget> MakeEmptyText() const;
	TSharedRef<SWidget> MakeField(const FConnectionField& Field, bool bOdd);
	TSharedRef<SWidget> MakeNameBox();
	TSharedRef<SWidget> MakeModelBox();
	TSharedRef<SWidget> MakeKeyRow();
	TSharedRef<SWidget> MakeTestRow();
	TSharedRef<SWidget> MakeActions();
	void RebuildList();
	void RebuildFields();
	void Show(const TSharedPtr<FEditedConnection>& Item);
	void ShowFirst();

	/** After a change of the shown connection. */
	void NoteChange();
	FSlateColor GetStateColor() const;
	FText GetStateText() const;
	FText GetKeyText() const;

	void ListModels();
	/** The list begins at the name that the box has. */
	void MarkModel();
	void SetModelOptions(const TArray<FString>& Models, const FString& Instead);
	void LookUpKey();
	/** Keeps the clipboard's text as the key; an empty key forgets it. */
	void StoreKey(const FString& Key);
	void Test();

	FEditedConnections Connections;
	TSharedPtr<FEditedConnection> Shown;
	TSharedPtr<SVerticalBox> List;
	TSharedPtr<SBox> Fields;
	TSharedPtr<SEditableTextBox> NameBox;
	TSharedPtr<SEditableTextBox> ModelBox;
	TSharedPtr<SModelList> ModelList;
	/** What the model box offers; a sentence while there is nothing to offer. */
	TArray<TSharedPtr<FString>> ModelOptions;
	bool bOffersModels = false;
	TMap<FString, FString> Complaints;
	FText TestText;
	bool bIsTesting = false;
	FString KeySource;
	bool bKnowsKey = false;
	bool bWantsKey = false;
	/** Answers that were asked for before the shown connection changed count no more. */
	int32 ShownNumber = 0;
	double LastTick = -1.0;
};
