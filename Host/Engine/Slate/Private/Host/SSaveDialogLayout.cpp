#include "Host/SSaveDialog.h"

#include "Host/HostFocus.h"
#include "Styling/AppStyle.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SComboBox.h"
#include "Widgets/Input/SEditableTextBox.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SOverlay.h"
#include "Widgets/Text/STextBlock.h"

// The widgets of the save dialog, one function for each row from top to bottom.

namespace
{
	constexpr float SaveGap = 8.0f;
	constexpr float SaveLabelWidth = 64.0f;
	constexpr double SaveIconSize = 16.0;
	/** Room for two lines, so that a complaint moves nothing. */
	constexpr float SaveProblemHeight = 36.0f;
	constexpr float SaveButtonWidth = 88.0f;

	const FTextBlockStyle& GetSaveTextStyle()
	{
		return FAppStyle::Get().GetWidgetStyle<FTextBlockStyle>(TEXT("NormalText"));
	}
}

void SSaveDialog::Construct(const FArguments& InArgs, const FHostSaveDialog& Dialog)
{
	ChosenHandler = InArgs._OnChosen;
	CancelHandler = InArgs._OnCancelled;
	SuggestedName = Dialog.File;
	bChoosesFolder = Dialog.bChoosesFolder;
	Folder = FSaveTarget::Collapse(Dialog.Folder);
	for (const FSaveFilter& Row : FSaveFilter::Parse(Dialog.FileTypes))
	{
		Filters.Add(MakeShared<FSaveFilter>(Row));
	}
	Filter = Filters[0];
	// clang-format off
	ChildSlot
	[
		SNew(SVerticalBox)
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			MakeFolderRow()
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			MakeNewFolderRow()
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		.Padding(0.0f, SaveGap, 0.0f, 0.0f)
		[
			MakeList(InArgs._ListHeight)
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		.Padding(0.0f, SaveGap, 0.0f, 0.0f)
		[
			MakeNameRow()
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		.Padding(0.0f, SaveGap, 0.0f, 0.0f)
		[
			MakeFilterRow()
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		.Padding(0.0f, SaveGap, 0.0f, 0.0f)
		[
			MakeProblemRow()
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		.HAlign(HAlign_Right)
		.Padding(0.0f, SaveGap, 0.0f, 0.0f)
		[
			MakeButtonRow()
		]
	];
	// clang-format on
	ShowFirstFolder();
}

// A folder that is not there yet is a fair answer to "where to": it is made when the file is saved.
void SSaveDialog::ShowFirstFolder()
{
	while (bChoosesFolder && !Folder.Equals(TEXT("/")) && HostGetPathKind(Folder) != EHostPathKind::Folder)
	{
		Folder = FSaveTarget::GetParent(Folder);
	}
	FString Reason;
	const bool bRead = HostListFolder(Folder, Found, Reason);
	ShowEntries();
	if (!bRead)
	{
		EmptyNote = HostGetPathKind(Folder) == EHostPathKind::Missing
			? FString(TEXT("This folder does not exist yet. It is made when you save."))
			: FString::Printf(TEXT("This folder cannot be read: %s."), *Reason);
	}
	ShowFolderPath();
	if (!bChoosesFolder)
	{
		SetName(SuggestedName);
	}
}

TSharedRef<SWidget> SSaveDialog::MakeProblemRow() const
{
	// clang-format off
	return SNew(SBox)
		.MinDesiredHeight(SaveProblemHeight)
		[
			SNew(STextBlock)
			.Tag(FName(TEXT("SaveProblem")))
			.Text_Lambda([this]() { return FText::FromString(Problem); })
			.TextStyle(&GetSaveTextStyle())
			.ColorAndOpacity(FAppStyle::GetColor(TEXT("Colors.Error")))
			.AutoWrapText(true)
		];
	// clang-format on
}

TSharedRef<SWidget> SSaveDialog::MakeLabel(const FText& Text) const
{
	// clang-format off
	return SNew(SBox)
		.WidthOverride(SaveLabelWidth)
		.VAlign(VAlign_Center)
		[
			SNew(STextBlock)
			.Text(Text)
			.TextStyle(&GetSaveTextStyle())
			.ColorAndOpacity(FAppStyle::GetColor(TEXT("Colors.ForegroundSubdued")))
		];
	// clang-format on
}

TSharedRef<SWidget> SSaveDialog::MakeFolderRow()
{
	// clang-format off
	return SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.AutoWidth()
		[
			MakeLabel(NSLOCTEXT("HostSaveDialog", "Folder", "Folder"))
		]
		+ SHorizontalBox::Slot()
		.FillWidth(1.0f)
		[
			SAssignNew(FolderBox, SEditableTextBox)
			.Tag(FName(TEXT("SaveFolderBox")))
			.ClearKeyboardFocusOnCommit(false)
			.OnTextCommitted(this, &SSaveDialog::OnFolderCommitted)
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.Padding(SaveGap, 0.0f, 0.0f, 0.0f)
		[
			SNew(SButton)
			.Tag(FName(TEXT("SaveNewFolderButton")))
			.Text(NSLOCTEXT("HostSaveDialog", "NewFolder", "New folder"))
			.OnClicked_Lambda([this]()
			{
				ShowNewFolder(!bNewFolderShown);
				return FReply::Handled();
			})
		];
	// clang-format on
}

// Always there and mostly collapsed, so that the tab order does not depend on when it was first shown.
TSharedRef<SWidget> SSaveDialog::MakeNewFolderRow()
{
	// clang-format off
	return SNew(SBox)
		.Padding(FMargin(SaveLabelWidth, SaveGap, 0.0f, 0.0f))
		.Visibility_Lambda([this]() { return bNewFolderShown ? EVisibility::Visible : EVisibility::Collapsed; })
		[
			SAssignNew(NewFolderBox, SEditableTextBox)
			.Tag(FName(TEXT("SaveNewFolderBox")))
			.HintText(NSLOCTEXT("HostSaveDialog", "NewFolderHint", "Name of the new folder, then Enter"))
			.ClearKeyboardFocusOnCommit(false)
			.OnTextCommitted_Lambda([this](const FText&, ETextCommit::Type Type)
			{
				if (Type == ETextCommit::OnEnter)
				{
					MakeNewFolder();
				}
			})
		];
	// clang-format on
}

TSharedRef<SWidget> SSaveDialog::MakeList(float Height)
{
	// clang-format off
	return SNew(SBox)
		.HeightOverride(Height)
		[
			SNew(SBorder)
			.BorderImage_Lambda([this]()
			{
				// A list without a marked row shows by its frame alone that it has the keyboard.
				return List->HasKeyboardFocus() && FHostFocus::Get().bWindowActive
					? &FAppStyle::Get().GetWidgetStyle<FEditableTextBoxStyle>(TEXT("NormalEditableTextBox")).BackgroundImageFocused
					: FAppStyle::GetBrush(TEXT("ExpandableArea.Border"));
			})
			.Padding(FMargin(4.0f))
			[
				SNew(SOverlay)
				+ SOverlay::Slot()
				[
					SAssignNew(List, SListView<FEntry>)
					.Tag(FName(TEXT("SaveList")))
					.ListItemsSource(&Entries)
					.OnGenerateRow(this, &SSaveDialog::MakeEntryRow)
					.OnSelectionChanged(this, &SSaveDialog::OnEntryPicked)
					.OnMouseButtonDoubleClick(this, &SSaveDialog::OpenEntry)
				]
				+ SOverlay::Slot()
				.VAlign(VAlign_Center)
				.Padding(SaveGap, 0.0f)
				[
					SNew(STextBlock)
					.Justification(ETextJustify::Center)
					.AutoWrapText(true)
					.Visibility_Lambda([this]() { return EmptyNote.IsEmpty() ? EVisibility::Collapsed : EVisibility::HitTestInvisible; })
					.Text_Lambda([this]() { return FText::FromString(EmptyNote); })
					.TextStyle(&GetSaveTextStyle())
					.ColorAndOpacity(FAppStyle::GetColor(TEXT("Colors.ForegroundSubdued")))
				]
			]
		];
	// clang-format on
}

TSharedRef<ITableRow> SSaveDialog::MakeEntryRow(FEntry Entry, const TSharedRef<STableViewBase>& Owner)
{
	// clang-format off
	return SNew(STableRow<FEntry>, Owner)
		.Padding(FMargin(8.0f, 3.0f))
		[
			SNew(SHorizontalBox)
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.VAlign(VAlign_Center)
			[
				SNew(SImage)
				.Image(FAppStyle::GetBrush(Entry->bIsFolder ? TEXT("Icons.FolderClosed") : TEXT("Icons.GenericFile")))
				.DesiredSizeOverride(FVector2D(SaveIconSize, SaveIconSize))
				.ColorAndOpacity(FAppStyle::GetColor(Entry->bIsFolder ? TEXT("Colors.Accent") : TEXT("Colors.Icon")))
			]
			+ SHorizontalBox::Slot()
			.FillWidth(1.0f)
			.VAlign(VAlign_Center)
			.Padding(SaveGap, 0.0f, 0.0f, 0.0f)
			[
				SNew(STextBlock)
				.Text(FText::FromString(Entry->Name))
				.TextStyle(&GetSaveTextStyle())
				.OverflowPolicy(ETextOverflowPolicy::Ellipsis)
			]
		];
	// clang-format on
}

// A complaint is about the name as it was; it goes with the first key.
TSharedRef<SWidget> SSaveDialog::MakeNameRow()
{
	// clang-format off
	return SNew(SHorizontalBox)
		.Visibility(bChoosesFolder ? EVisibility::Collapsed : EVisibility::Visible)
		+ SHorizontalBox::Slot()
		.AutoWidth()
		[
			MakeLabel(NSLOCTEXT("HostSaveDialog", "Name", "Name"))
		]
		+ SHorizontalBox::Slot()
		.FillWidth(1.0f)
		[
			SAssignNew(NameBox, SEditableTextBox)
			.Tag(FName(TEXT("SaveNameBox")))
			.SelectAllTextWhenFocused(true)
			.ClearKeyboardFocusOnCommit(false)
			.OnTextChanged_Lambda([this](const FText&) { Problem.Reset(); })
			.OnTextCommitted(this, &SSaveDialog::OnNameCommitted)
		];
	// clang-format on
}

TSharedRef<SWidget> SSaveDialog::MakeFilterRow()
{
	// clang-format off
	return SNew(SHorizontalBox)
		.Visibility(bChoosesFolder ? EVisibility::Collapsed : EVisibility::Visible)
		+ SHorizontalBox::Slot()
		.AutoWidth()
		[
			MakeLabel(NSLOCTEXT("HostSaveDialog", "Type", "Show"))
		]
		+ SHorizontalBox::Slot()
		.FillWidth(1.0f)
		[
			SNew(SComboBox<FFilter>)
			.Tag(FName(TEXT("SaveFilterBox")))
			.OptionsSource(&Filters)
			.InitiallySelectedItem(Filter)
			.OnSelectionChanged(this, &SSaveDialog::OnFilterPicked)
			.OnGenerateWidget_Lambda([](FFilter Row) -> TSharedRef<SWidget>
			{
				return SNew(STextBlock).Text(FText::FromString(Row->Label)).TextStyle(&GetSaveTextStyle());
			})
			[
				SNew(STextBlock)
				.Text_Lambda([this]() { return FText::FromString(Filter->Label); })
				.TextStyle(&GetSaveTextStyle())
			]
		];
	// clang-format on
}

TSharedRef<SWidget> SSaveDialog::MakeButtonRow()
{
	// clang-format off
	return SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.AutoWidth()
		[
			SNew(SBox)
			.MinDesiredWidth(SaveButtonWidth)
			[
				SNew(SButton)
				.Tag(FName(TEXT("SaveButton")))
				.ButtonStyle(FAppStyle::Get(), TEXT("PrimaryButton"))
				.Text(bChoosesFolder ? NSLOCTEXT("HostSaveDialog", "Choose", "Choose") : NSLOCTEXT("HostSaveDialog", "Save", "Save"))
				.OnClicked_Lambda([this]()
				{
					Accept(false);
					return FReply::Handled();
				})
			]
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.Padding(SaveGap, 0.0f, 0.0f, 0.0f)
		[
			SNew(SBox)
			.MinDesiredWidth(SaveButtonWidth)
			[
				SNew(SButton)
				.Tag(FName(TEXT("SaveCancelButton")))
				.Text(NSLOCTEXT("HostSaveDialog", "Cancel", "Cancel"))
				.OnClicked_Lambda([this]()
				{
					const FSimpleDelegate Handler = CancelHandler;
					Handler.ExecuteIfBound();
					return FReply::Handled();
				})
			]
		];
	// clang-format on
}
