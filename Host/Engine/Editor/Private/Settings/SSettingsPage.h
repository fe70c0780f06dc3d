#pragma once

#include "Settings/SettingsProperties.h"
#include "Settings/SettingsRegistry.h"
#include "Widgets/Input/SComboBox.h"
#include "Widgets/SCompoundWidget.h"

class SBox;
class SScrollBox;
class SVerticalBox;

/**
 * The sections at the left, the properties of the chosen one at the right, each with an editor of its kind. A change is
 * saved at once; a text that is no value of the property is kept in its box and answered in words below it.
 */
class SSettingsPage : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SSettingsPage) {}
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs, const TSharedRef<FSettingsRegistry>& InRegistry);

	/** Null shows the first one. */
	void ShowSection(const TSharedPtr<FSettingsSection>& InSection);
	/** Takes over what was changed elsewhere. */
	void RefreshValues();

private:
	/** A property on the page. Editors call it while it lives, so their handlers hold it. */
	struct FRow
	{
		FSettingsProperty Property;
		FString Label;
		FString DefaultText;
		/** Of a choice: the places of the names. */
		TArray<TSharedPtr<int32>> Options;
		/** Makes the editor show the present value. */
		TFunction<void()> Refresh;
		/** Why the text in the editor was not taken. */
		FString Complaint;
	};

	void OnSectionsChanged();
	void RebuildSections();
	void RebuildRows();
	TSharedRef<SWidget> MakeSearchBox();
	TSharedRef<SWidget> MakeSectionHeading(const FText& Text);
	TSharedRef<SWidget> MakeSectionRow(const TSharedRef<FSettingsSection>& Section);
	TSharedRef<SWidget> MakeTitle(const FSettingsSection& Shown);
	TSharedRef<SWidget> MakeGroupHeading(const FString& Group);
	TSharedRef<SWidget> MakeRow(const TSharedRef<FRow>& Row, bool bOdd);
	TSharedRef<SWidget> MakeName(const TSharedRef<FRow>& Row);
	/** The editor, and what goes back to the default beside it. */
	TSharedRef<SWidget> MakeValue(const TSharedRef<FRow>& Row);
	TSharedRef<SWidget> MakeFolderEditor(const TSharedRef<FRow>& Row);
	void ChooseFolder(FRow& Row);
	void GoToDefault(FRow& Row);
	TSharedRef<SWidget> MakeEditor(const TSharedRef<FRow>& Row);
	TSharedRef<SWidget> MakeTextEditor(const TSharedRef<FRow>& Row);
	/** A box of one line, units wide at the most. */
	TSharedRef<SWidget> MakeLineEditor(const TSharedRef<FRow>& Row, float Width);
	TSharedRef<SWidget> MakeCheckBox(const TSharedRef<FRow>& Row);
	TSharedRef<SWidget> MakeChoice(const TSharedRef<FRow>& Row);

	/** Null when nothing is shown or its object is gone. */
	UObject* GetObject() const;
	FString GetValue(const FRow& Row) const;
	void SetValue(FRow& Row, const FString& Text);
	void OnSearchChanged(const FText& Text);
	/** The property's own words have what is searched for. */
	bool IsNamed(const FSettingsProperty& Property) const;
	bool IsFound(const FRow& Row) const;
	bool IsFound(const FSettingsSection& Other) const;

	TSharedPtr<FSettingsRegistry> Registry;
	TSharedPtr<FSettingsSection> Section;
	TArray<TSharedRef<FRow>> Rows;
	FString Search;
	TSharedPtr<SScrollBox> SectionScroll;
	TSharedPtr<SVerticalBox> SectionList;
	TSharedPtr<SBox> RowHolder;
	/** An editor is being given the present value, which is no change by the user. */
	bool bRefreshing = false;
};
