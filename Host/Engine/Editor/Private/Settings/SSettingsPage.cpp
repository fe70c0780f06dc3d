#include "Settings/SSettingsPage.h"

#include "Brushes/SlateRoundedBoxBrush.h"
#include "Host/SFoldingRow.h"
#include "Styling/AppStyle.h"
#include "Styling/CoreStyle.h"
#include "UObject/Object.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SEditableTextBox.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/Layout/SSplitter.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SOverlay.h"
#include "Widgets/Text/STextBlock.h"

// The page of settings: sections at the left, rows of the chosen one at the right. A row writes its property at once and
// saves; values that change elsewhere are read again. While rows are refreshed their own change handlers are not
// listened to, or each refresh would save.

#define LOCTEXT_NAMESPACE "SettingsPage"

namespace
{
	constexpr float SectionListWidth = 240.0f;
	/** In a tab that is narrower the sections stand above their rows. */
	constexpr float FoldWidth = 600.0f;

	const FSlateBrush* GetSelectedSectionBrush()
	{
		static const FSlateRoundedBoxBrush Brush(FLinearColor(FColor::FromHex(TEXT("7CB9FF3D"))), 4.0f);
		return &Brush;
	}
}

void SSettingsPage::Construct(const FArguments& InArgs, const TSharedRef<FSettingsRegistry>& InRegistry)
{
	Registry = InRegistry;
	Registry->OnSectionsChanged.AddSP(this, &SSettingsPage::OnSectionsChanged);

	// clang-format off
	ChildSlot
	[
		SNew(SFoldingRow)
		.FirstWidth(SectionListWidth)
		.FoldWidth(FoldWidth)
		.Gap(4.0f)
		+ SFoldingRow::Slot()
		[
			SNew(SBorder)
			.BorderImage(FAppStyle::GetBrush("ToolPanel.DarkGroupBorder"))
			.Padding(FMargin(8.0f))
			[
				SNew(SVerticalBox)
				+ SVerticalBox::Slot()
				.AutoHeight()
				.Padding(0.0f, 0.0f, 0.0f, 8.0f)
				[
					MakeSearchBox()
				]
				+ SVerticalBox::Slot()
				.FillHeight(1.0f)
				[
					SAssignNew(SectionScroll, SScrollBox)
					+ SScrollBox::Slot()
					[
						SAssignNew(SectionList, SVerticalBox)
					]
				]
			]
		]
		+ SFoldingRow::Slot()
		[
			SNew(SBorder)
			.BorderImage(FAppStyle::GetBrush("ToolPanel.GroupBorder"))
			.Padding(FMargin(0.0f))
			[
				SAssignNew(RowHolder, SBox)
			]
		]
	];
	// clang-format on

	ShowSection(nullptr);
}

void SSettingsPage::ShowSection(const TSharedPtr<FSettingsSection>& InSection)
{
	TSharedPtr<FSettingsSection> Wanted = InSection;
	if (!Wanted && Registry->Sections.Num() > 0)
	{
		Wanted = Registry->Sections[0];
	}
	if (Wanted != Section || Rows.Num() == 0)
	{
		Section = Wanted;
		RebuildRows();
	}
	RebuildSections();
}

// Modules come and go: the page stays at its place, also when that place is a new object now.
void SSettingsPage::OnSectionsChanged()
{
	const bool bKept = Section && Registry->Sections.Contains(Section.ToSharedRef());
	// The same place again, should it have been registered anew.
	ShowSection(bKept || !Section ? Section : Registry->Find(Section->GetContainer(), Section->GetCategory(), Section->GetName()));
}

// Values are asked for and never kept: a settings object may be changed by its module at any time.
void SSettingsPage::RefreshValues()
{
	bRefreshing = true;
	for (const TSharedRef<FRow>& Row : Rows)
	{
		Row->Refresh();
	}
	bRefreshing = false;
}

UObject* SSettingsPage::GetObject() const
{
	return Section ? Section->GetSettingsObject().Get() : nullptr;
}

FString SSettingsPage::GetValue(const FRow& Row) const
{
	UObject* const Object = GetObject();
	return Object ? FSettingsProperties::GetText(*Object, Row.Property) : FString();
}

// A value that is refused stays in its box with the complaint under it, and nothing is saved.
void SSettingsPage::SetValue(FRow& Row, const FString& Text)
{
	UObject* const Object = GetObject();
	if (bRefreshing || !Object)
	{
		return;
	}
	Row.Complaint = FSettingsProperties::SetText(*Object, Row.Property, Text);
	if (Row.Complaint.IsEmpty())
	{
		Section->Save();
	}
}

void SSettingsPage::OnSearchChanged(const FText& Text)
{
	Search = Text.ToString().TrimStartAndEnd();
	RebuildSections();
}

bool SSettingsPage::IsNamed(const FSettingsProperty& Property) const
{
	return Property.GetLabel().Contains(Search) || Property.Group.Contains(Search) || Property.Description.Contains(Search);
}

// A section's own name finds all of its rows.
bool SSettingsPage::IsFound(const FRow& Row) const
{
	return Search.IsEmpty() || IsNamed(Row.Property) || Section->GetDisplayName().ToString().Contains(Search);
}

bool SSettingsPage::IsFound(const FSettingsSection& Other) const
{
	if (Search.IsEmpty() || Other.GetDisplayName().ToString().Contains(Search))
	{
		return true;
	}
	UObject* const Object = Other.GetSettingsObject().Get();
	return Object &&
		FSettingsProperties::List(*Object).ContainsByPredicate([this](const FSettingsProperty& Property) { return IsNamed(Property); });
}

TSharedRef<SWidget> SSettingsPage::MakeSearchBox()
{
	// clang-format off
	return SNew(SOverlay)
		+ SOverlay::Slot()
		[
			SNew(SEditableTextBox)
			.Tag(FName(TEXT("SettingsSearch")))
			.HintText(LOCTEXT("Search", "Search settings"))
			.Padding(FMargin(30.0f, 6.0f, 8.0f, 6.0f))
			.OnTextChanged(this, &SSettingsPage::OnSearchChanged)
		]
		+ SOverlay::Slot()
		.HAlign(HAlign_Left)
		.VAlign(VAlign_Center)
		.Padding(8.0f, 0.0f)
		[
			SNew(SImage)
			.Image(FAppStyle::GetBrush("Icons.Search"))
			.DesiredSizeOverride(FVector2D(16.0, 16.0))
			.ColorAndOpacity(FSlateColor(FAppStyle::GetColor("Colors.Icon")))
			.Visibility(EVisibility::HitTestInvisible)
		];
	// clang-format on
}

TSharedRef<SWidget> SSettingsPage::MakeSectionHeading(const FText& Text)
{
	// clang-format off
	return SNew(STextBlock)
		.Text(Text)
		.TextStyle(FAppStyle::Get(), TEXT("NormalText.Important"))
		.Margin(FMargin(8.0f, 4.0f));
	// clang-format on
}

TSharedRef<SWidget> SSettingsPage::MakeSectionRow(const TSharedRef<FSettingsSection>& Shown)
{
	const bool bSelected = Section == Shown;
	const TWeakPtr<FSettingsSection> WeakSection = Shown;
	const auto Choose = [this, WeakSection]()
	{
		ShowSection(WeakSection.Pin());
		return FReply::Handled();
	};
	// clang-format off
	return SNew(SBorder)
		.BorderImage(bSelected ? GetSelectedSectionBrush() : FAppStyle::GetBrush("NoBorder"))
		.Padding(FMargin(0.0f))
		[
			SNew(SButton)
			.ButtonStyle(FAppStyle::Get(), TEXT("SimpleButton"))
			.HAlign(HAlign_Left)
			.ContentPadding(FMargin(20.0f, 4.0f, 8.0f, 4.0f))
			.OnClicked_Lambda(Choose)
			[
				SNew(STextBlock)
				.Text(Shown->GetDisplayName())
				.ColorAndOpacity(FSlateColor(FAppStyle::GetColor(bSelected ? "Colors.ForegroundHover" : "Colors.Foreground")))
			]
		];
	// clang-format on
}

// Sections of a category stand side by side in the registry, so a heading is due where the category changes.
void SSettingsPage::RebuildSections()
{
	SectionList->ClearChildren();
	TSharedPtr<SWidget> Chosen;
	FName Category;
	for (const TSharedRef<FSettingsSection>& Other : Registry->Sections)
	{
		if (!IsFound(*Other))
		{
			continue;
		}
		if (Other->GetCategory() != Category)
		{
			Category = Other->GetCategory();
			SectionList->AddSlot().AutoHeight()[MakeSectionHeading(FText::FromName(Category))];
		}
		const TSharedRef<SWidget> Row = MakeSectionRow(Other);
		SectionList->AddSlot().AutoHeight()[Row];
		Chosen = Section == Other ? TSharedPtr<SWidget>(Row) : Chosen;
	}
	if (Chosen)
	{
		// A menu may have opened a page whose row a low list does not reach.
		SectionScroll->ScrollDescendantIntoView(Chosen, false);
	}
	if (SectionList->NumSlots() == 0)
	{
		const FText Nothing =
			Search.IsEmpty() ? LOCTEXT("NoSettings", "There are no settings.") : LOCTEXT("NothingFound", "No setting has this name.");
		// clang-format off
		SectionList->AddSlot()
		.AutoHeight()
		[
			SNew(STextBlock)
			.Text(Nothing)
			.AutoWrapText(true)
			.Margin(FMargin(8.0f, 4.0f))
			.ColorAndOpacity(FSlateColor(FAppStyle::GetColor("Colors.ForegroundSubdued")))
		];
		// clang-format on
	}
}

TSharedRef<SWidget> SSettingsPage::MakeTitle(const FSettingsSection& Shown)
{
	// clang-format off
	return SNew(SVerticalBox)
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			SNew(STextBlock)
			.Text(Shown.GetDisplayName())
			.TextStyle(FAppStyle::Get(), TEXT("HeadingLarge"))
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		.Padding(0.0f, 2.0f, 0.0f, 0.0f)
		[
			SNew(STextBlock)
			.Text(Shown.GetDescription())
			.AutoWrapText(true)
			.ColorAndOpacity(FSlateColor(FAppStyle::GetColor("Colors.ForegroundSubdued")))
		];
	// clang-format on
}

// 1. A page of its own. 2. Nothing, where the object is gone. 3. Rows with a heading for each group, every second one darker.
void SSettingsPage::RebuildRows()
{
	Rows.Reset();
	if (const TSharedPtr<SWidget> Own = Section ? Section->GetCustomWidget().Pin() : nullptr)
	{
		// It has its own scrolling and its own way to save.
		const TSharedRef<SVerticalBox> Page = SNew(SVerticalBox);
		Page->AddSlot().AutoHeight().Padding(16.0f, 14.0f, 16.0f, 10.0f)[MakeTitle(*Section)];
		Page->AddSlot().FillHeight(1.0f)[Own.ToSharedRef()];
		RowHolder->SetContent(Page);
		return;
	}
	UObject* const Object = GetObject();
	if (!Object)
	{
		RowHolder->SetContent(SNullWidget::NullWidget);
		return;
	}
	const TSharedRef<SVerticalBox> List = SNew(SVerticalBox);
	List->AddSlot().AutoHeight().Padding(16.0f, 14.0f, 16.0f, 10.0f)[MakeTitle(*Section)];
	FString Group;
	bool bOdd = false;
	const TArray<FSettingsProperty> Properties = FSettingsProperties::List(*Object);
	const TArray<FString> Defaults = FSettingsProperties::ReadDefaults(*Object, Properties);
	for (int32 Index = 0; Index < Properties.Num(); ++Index)
	{
		const FSettingsProperty& Property = Properties[Index];
		if (!Property.Group.Equals(Group))
		{
			Group = Property.Group;
			bOdd = false;
			List->AddSlot().AutoHeight()[MakeGroupHeading(Group)];
		}
		const TSharedRef<FRow> Row = MakeShared<FRow>();
		Row->Property = Property;
		Row->Label = Property.GetLabel();
		Row->DefaultText = Defaults[Index];
		Rows.Add(Row);
		List->AddSlot().AutoHeight()[MakeRow(Row, bOdd)];
		bOdd = !bOdd;
	}
	// clang-format off
	RowHolder->SetContent(
		SNew(SScrollBox)
		+ SScrollBox::Slot()
		[
			List
		]);
	// clang-format on
	RefreshValues();
}

#undef LOCTEXT_NAMESPACE
