#include "Settings/SSettingsPage.h"

#include "DesktopPlatformModule.h"
#include "Host/SFoldingRow.h"
#include "IDesktopPlatform.h"
#include "Misc/MessageDialog.h"
#include "Misc/Paths.h"
#include "Styling/AppStyle.h"
#include "Styling/CoreStyle.h"
#include "UObject/Object.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SCheckBox.h"
#include "Widgets/Input/SEditableTextBox.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SSpacer.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

// One control for each kind of property: check boxes, numbers, texts, choices, lists.

namespace
{
	constexpr float MaxValueWidth = 560.0f;
	constexpr float ShortValueWidth = 200.0f;
	constexpr float ShortValueHeight = 26.0f;
	constexpr float RowSide = 16.0f;

	bool HasManyLines(const FSettingsProperty& Property)
	{
		return (Property.Kind == FSettingsProperty::EKind::Text && !Property.IsPath()) || Property.Kind == FSettingsProperty::EKind::Lines;
	}
}

// A heading goes when the search leaves none of its rows.
TSharedRef<SWidget> SSettingsPage::MakeGroupHeading(const FString& Group)
{
	const auto GetHeadingVisibility = [this, Group]()
	{
		const bool bAny = Rows.ContainsByPredicate(
			[this, &Group](const TSharedRef<FRow>& Row) { return Row->Property.Group.Equals(Group) && IsFound(*Row); });
		return bAny ? EVisibility::Visible : EVisibility::Collapsed;
	};
	// clang-format off
	return SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush("ToolPanel.DarkGroupBorder"))
		.Padding(FMargin(RowSide, 5.0f))
		.Visibility_Lambda(GetHeadingVisibility)
		[
			SNew(STextBlock)
			.Text(FText::FromString(Group))
			.TextStyle(FAppStyle::Get(), TEXT("NormalText.Important"))
		];
	// clang-format on
}

// Rows are hidden and not built anew while one searches: what was typed in one stays, and so does the keyboard.
TSharedRef<SWidget> SSettingsPage::MakeRow(const TSharedRef<FRow>& Row, bool bOdd)
{
	const bool bTall = HasManyLines(Row->Property);
	const auto GetRowVisibility = [this, Row]() { return IsFound(*Row) ? EVisibility::Visible : EVisibility::Collapsed; };
	const auto GetComplaintVisibility = [Row]() { return Row->Complaint.IsEmpty() ? EVisibility::Collapsed : EVisibility::Visible; };
	// clang-format off
	return SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush("WhiteBrush"))
		.BorderBackgroundColor(FSlateColor(FLinearColor(FColor::FromHex(bOdd ? TEXT("FFFFFF06") : TEXT("FFFFFF00")))))
		.Padding(FMargin(RowSide, 6.0f))
		.Visibility_Lambda(GetRowVisibility)
		[
			SNew(SFoldingRow)
			+ SFoldingRow::Slot()
			.VAlign(bTall ? VAlign_Top : VAlign_Center)
			.Padding(0.0f, bTall ? 5.0f : 0.0f, 0.0f, 0.0f)
			[
				MakeName(Row)
			]
			+ SFoldingRow::Slot()
			.VAlign(VAlign_Center)
			[
				SNew(SVerticalBox)
				+ SVerticalBox::Slot()
				.AutoHeight()
				[
					MakeValue(Row)
				]
				+ SVerticalBox::Slot()
				.AutoHeight()
				.Padding(0.0f, 4.0f, 0.0f, 0.0f)
				[
					SNew(STextBlock)
					.Text_Lambda([Row]() { return FText::FromString(Row->Complaint); })
					.TextStyle(FAppStyle::Get(), TEXT("SmallText"))
					.ColorAndOpacity(FSlateColor(FAppStyle::GetColor("Colors.Error")))
					.AutoWrapText(true)
					.Visibility_Lambda(GetComplaintVisibility)
				]
			]
		];
	// clang-format on
}

TSharedRef<SWidget> SSettingsPage::MakeName(const TSharedRef<FRow>& Row)
{
	const TSharedRef<SVerticalBox> Lines = SNew(SVerticalBox);
	Lines->AddSlot().AutoHeight()[SNew(STextBlock).Text(FText::FromString(Row->Label)).AutoWrapText(true)];
	if (!Row->Property.Description.IsEmpty())
	{
		// clang-format off
		Lines->AddSlot()
		.AutoHeight()
		.Padding(0.0f, 2.0f, 0.0f, 0.0f)
		[
			SNew(STextBlock)
			.Text(FText::FromString(Row->Property.Description))
			.TextStyle(FAppStyle::Get(), TEXT("SmallText"))
			.ColorAndOpacity(FSlateColor(FAppStyle::GetColor("Colors.ForegroundSubdued")))
			.AutoWrapText(true)
		];
		// clang-format on
	}
	return Lines;
}

TSharedRef<SWidget> SSettingsPage::MakeValue(const TSharedRef<FRow>& Row)
{
	FRow* const Plain = &Row.Get();
	// Hidden and not collapsed, so that nothing moves while one types.
	const auto GetDefaultVisibility = [this, Plain]()
	{
		const bool bIsDefault = Plain->Complaint.IsEmpty() && GetValue(*Plain).Equals(Plain->DefaultText);
		return bIsDefault ? EVisibility::Hidden : EVisibility::Visible;
	};
	const FText ToolTip = Row->DefaultText.IsEmpty() ? NSLOCTEXT("Settings", "DefaultEmpty", "Back to the default, which is empty")
													 : NSLOCTEXT("Settings", "DefaultTip", "Back to the default");
	// clang-format off
	return SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.FillWidth(1.0f)
		[
			MakeEditor(Row)
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Top)
		.Padding(8.0f, 0.0f, 0.0f, 0.0f)
		[
			SNew(SButton)
			.Tag(FName(*(TEXT("Default.") + Row->Property.Name)))
			.Text(NSLOCTEXT("Settings", "Default", "Default"))
			.ToolTipText(ToolTip)
			.Visibility_Lambda(GetDefaultVisibility)
			.OnClicked_Lambda([this, Row]()
			{
				GoToDefault(*Row);
				return FReply::Handled();
			})
		];
	// clang-format on
}

// A text of the user's own is not taken away by one click.
void SSettingsPage::GoToDefault(FRow& Row)
{
	if (HasManyLines(Row.Property) && !GetValue(Row).IsEmpty())
	{
		const FText Question =
			FText::Format(NSLOCTEXT("Settings", "DefaultQuestion", "Replace what stands in \u201c{0}\u201d by its default?"),
				FText::FromString(Row.Label));
		if (FMessageDialog::Open(EAppMsgType::YesNo, Question, NSLOCTEXT("Settings", "DefaultTitle", "Back to the Default")) !=
			EAppReturnType::Yes)
		{
			return;
		}
	}
	SetValue(Row, Row.DefaultText);
	RefreshValues();
}

TSharedRef<SWidget> SSettingsPage::MakeFolderEditor(const TSharedRef<FRow>& Row)
{
	// clang-format off
	return SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.FillWidth(1.0f)
		.MaxWidth(MaxValueWidth)
		[
			MakeLineEditor(Row, MaxValueWidth)
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		.Padding(8.0f, 0.0f, 0.0f, 0.0f)
		[
			SNew(SButton)
			.Tag(FName(*(TEXT("Choose.") + Row->Property.Name)))
			.Text(NSLOCTEXT("Settings", "ChooseFolder", "Choose\u2026"))
			.ToolTipText(NSLOCTEXT("Settings", "ChooseFolderTip", "Pick the folder in a dialog"))
			.OnClicked_Lambda([this, Row]()
			{
				ChooseFolder(*Row);
				return FReply::Handled();
			})
		];
	// clang-format on
}

void SSettingsPage::ChooseFolder(FRow& Row)
{
	const FString Present = GetValue(Row);
	FString Chosen;
	IDesktopPlatform* const Desktop = FDesktopPlatformModule::Get();
	if (Desktop && Desktop->OpenDirectoryDialog(nullptr, Row.Label, Present.IsEmpty() ? FPaths::ProjectDir() : Present, Chosen))
	{
		SetValue(Row, Chosen);
		RefreshValues();
	}
}

TSharedRef<SWidget> SSettingsPage::MakeEditor(const TSharedRef<FRow>& Row)
{
	switch (Row->Property.Kind)
	{
	case FSettingsProperty::EKind::Bool:
		return MakeCheckBox(Row);
	case FSettingsProperty::EKind::WholeNumber:
	case FSettingsProperty::EKind::Number:
		return Row->Property.Choices.Num() > 0 ? MakeChoice(Row) : MakeLineEditor(Row, ShortValueWidth);
	case FSettingsProperty::EKind::Text:
	case FSettingsProperty::EKind::Lines:
		break;
	}
	return Row->Property.IsFolder() ? MakeFolderEditor(Row)
		: Row->Property.IsPath()	? MakeLineEditor(Row, MaxValueWidth)
									: MakeTextEditor(Row);
}

// Saved with every key. A text is set only when it differs, or the caret would jump at each refresh.
TSharedRef<SWidget> SSettingsPage::MakeTextEditor(const TSharedRef<FRow>& Row)
{
	// Handlers point at the page and hold the row: the page owns the editors.
	TSharedPtr<SMultiLineEditableTextBox> Box;
	// clang-format off
	const TSharedRef<SWidget> Editor = SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.FillWidth(1.0f)
		.MaxWidth(MaxValueWidth)
		[
			SNew(SBox)
			.MinDesiredHeight(64.0f)
			.MaxDesiredHeight(160.0f)
			[
				SAssignNew(Box, SMultiLineEditableTextBox)
				.Tag(FName(*Row->Property.Name))
				.AutoWrapText(true)
				.OnTextChanged_Lambda([this, Row](const FText& Text) { SetValue(*Row, Text.ToString()); })
			]
		]
		+ SHorizontalBox::Slot()
		.FillWidth(0.001f)
		[
			SNew(SSpacer)
		];
	// clang-format on
	const TWeakPtr<SMultiLineEditableTextBox> WeakBox = Box;
	FRow* const Plain = &Row.Get();
	Row->Refresh = [this, Plain, WeakBox]()
	{
		const FString Value = GetValue(*Plain);
		const TSharedPtr<SMultiLineEditableTextBox> Shown = WeakBox.Pin();
		if (Shown && !Shown->GetText().ToString().Equals(Value))
		{
			Shown->SetText(FText::FromString(Value));
		}
	};
	return Editor;
}

TSharedRef<SWidget> SSettingsPage::MakeLineEditor(const TSharedRef<FRow>& Row, float Width)
{
	TSharedPtr<SEditableTextBox> Box;
	// clang-format off
	const TSharedRef<SWidget> Editor = SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.FillWidth(1.0f)
		.MaxWidth(Width)
		[
			SAssignNew(Box, SEditableTextBox)
			.Tag(FName(*Row->Property.Name))
			.SelectAllTextWhenFocused(true)
			.ClearKeyboardFocusOnCommit(false)
			.OnTextChanged_Lambda([this, Row](const FText& Text) { SetValue(*Row, Text.ToString()); })
		]
		+ SHorizontalBox::Slot()
		.FillWidth(0.001f)
		[
			SNew(SSpacer)
		];
	// clang-format on
	const TWeakPtr<SEditableTextBox> WeakBox = Box;
	FRow* const Plain = &Row.Get();
	Row->Refresh = [this, Plain, WeakBox]()
	{
		const TSharedPtr<SEditableTextBox> Shown = WeakBox.Pin();
		// A text that was not taken stays until it is mended. One that is the same keeps its caret.
		const FString Value = GetValue(*Plain);
		if (Shown && Plain->Complaint.IsEmpty() && !Shown->GetText().ToString().Equals(Value))
		{
			Shown->SetText(FText::FromString(Value));
		}
	};
	return Editor;
}

TSharedRef<SWidget> SSettingsPage::MakeCheckBox(const TSharedRef<FRow>& Row)
{
	FRow* const Plain = &Row.Get();
	const auto GetState = [this, Plain]()
	{ return GetValue(*Plain) == TEXT("True") ? ECheckBoxState::Checked : ECheckBoxState::Unchecked; };
	const auto OnChanged = [this, Row](ECheckBoxState State)
	{ SetValue(*Row, State == ECheckBoxState::Checked ? TEXT("True") : TEXT("False")); };
	// The mark is bound, so there is nothing to refresh.
	Row->Refresh = []() {};
	// clang-format off
	return SNew(SBox)
		.HAlign(HAlign_Left)
		.VAlign(VAlign_Center)
		.MinDesiredHeight(ShortValueHeight)
		[
			SNew(SCheckBox)
			.Tag(FName(*Row->Property.Name))
			.IsChecked_Lambda(GetState)
			.OnCheckStateChanged_Lambda(OnChanged)
			[
				SNew(STextBlock)
				.Text_Lambda([GetState]()
				{
					return GetState() == ECheckBoxState::Checked ? NSLOCTEXT("Settings", "On", "On") : NSLOCTEXT("Settings", "Off", "Off");
				})
				.Margin(FMargin(6.0f, 0.0f, 0.0f, 0.0f))
			]
		];
	// clang-format on
}

// The value is the place in the list of names. One that no name stands for shows nothing and is not changed.
TSharedRef<SWidget> SSettingsPage::MakeChoice(const TSharedRef<FRow>& Row)
{
	using SChoiceBox = SComboBox<TSharedPtr<int32>>;
	for (int32 Index = 0; Index < Row->Property.Choices.Num(); ++Index)
	{
		Row->Options.Add(MakeShared<int32>(Index));
	}
	FRow* const Plain = &Row.Get();
	const auto MakeOption = [Plain](TSharedPtr<int32> Option)
	{ return TSharedRef<SWidget>(SNew(STextBlock).Text(FText::FromString(Option ? Plain->Property.Choices[*Option] : FString()))); };
	const auto OnChosen = [this, Row](TSharedPtr<int32> Option, ESelectInfo::Type)
	{
		if (Option)
		{
			SetValue(*Row, FString::FromInt(*Option));
		}
	};
	TSharedPtr<SChoiceBox> Box;
	TSharedPtr<STextBlock> Shown;
	// clang-format off
	const TSharedRef<SWidget> Editor = SNew(SBox)
		.HAlign(HAlign_Left)
		[
			SNew(SBox)
			.WidthOverride(ShortValueWidth)
			.MinDesiredHeight(ShortValueHeight)
			[
				SAssignNew(Box, SChoiceBox)
				.Tag(FName(*Row->Property.Name))
				.OptionsSource(&Row->Options)
				.OnGenerateWidget_Lambda(MakeOption)
				.OnSelectionChanged_Lambda(OnChosen)
				[
					SAssignNew(Shown, STextBlock)
				]
			]
		];
	// clang-format on
	const TWeakPtr<SChoiceBox> WeakBox = Box;
	const auto GetShownText = [Plain, WeakBox]()
	{
		const TSharedPtr<SChoiceBox> Owner = WeakBox.Pin();
		const TSharedPtr<int32> Option = Owner ? Owner->GetSelectedItem() : nullptr;
		return FText::FromString(Option ? Plain->Property.Choices[*Option] : FString());
	};
	Shown->SetText(TAttribute<FText>::CreateLambda(GetShownText));
	Row->Refresh = [this, Plain, WeakBox]()
	{
		const int32 Value = FCString::Atoi(*GetValue(*Plain));
		if (const TSharedPtr<SChoiceBox> Owner = WeakBox.Pin())
		{
			Owner->SetSelectedItem(Plain->Options.IsValidIndex(Value) ? Plain->Options[Value] : nullptr);
		}
	};
	return Editor;
}
