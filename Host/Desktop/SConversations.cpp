#include "SConversations.h"

#include "FoundMarks.h"
#include "Framework/Application/SlateApplication.h"
#include "Host/StoreLocation.h"
#include "SettingRows.h"
#include "Styling/AppStyle.h"
#include "ToolTab.h"
#include "ViewModels/ConversationLabel.h"
#include "Widgets/Input/SEditableTextBox.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SWrapBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SOverlay.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "Conversations"

namespace
{
	constexpr float RowBarRoom = 12.0f;
	/** Before the list has a size. */
	constexpr float MinExcerptWidth = 40.0f;

	FSlateColor GetSubdued()
	{
		return FSlateColor(FAppStyle::GetColor("Colors.ForegroundSubdued"));
	}

	FSlateFontInfo GetExcerptFont()
	{
		return FAppStyle::GetFontStyle("NormalFont");
	}

	TSharedRef<SWidget> MakeSmallText(const TAttribute<FText>& Text)
	{
		return SNew(STextBlock).Text(Text).TextStyle(FAppStyle::Get(), TEXT("SmallText")).ColorAndOpacity(GetSubdued());
	}
}

void SConversations::Construct(const FArguments& InArgs)
{
	OnShowFoundMessage = InArgs._OnShowFoundMessage;
	bKeepsNothing = !Velmora::GetStoreLocation().KeepsConversations();
	// The list first: the others ask what is selected in it.
	const TSharedRef<SWidget> Rows = MakeList();
	ChildSlot[ToolTab::MakeFrame(MakeHead(), Rows, MakeButtons())];
	ReadStore();
	// Nothing to find yet, but the index takes in what it does not know.
	Search();
}

TSharedRef<SWidget> SConversations::MakeHead()
{
	// clang-format off
	return SNew(SVerticalBox)
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			SAssignNew(SearchBox, SEditableTextBox)
			.Tag("ConversationSearch")
			.HintText(LOCTEXT("SearchHint", "Search all messages"))
			.ToolTipText(LOCTEXT("SearchTip", "Each word must begin a word of the message; Down goes to the list"))
			.ClearKeyboardFocusOnCommit(false)
			.OnTextChanged_Lambda([this](const FText&) { Search(); })
			.OnKeyDownHandler(this, &SConversations::OnSearchKey)
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		.Padding(2.0f, 4.0f, 0.0f, 0.0f)
		[
			SNew(STextBlock)
			.Tag("ConversationsStatus")
			.Text(this, &SConversations::GetStatusText)
			.TextStyle(FAppStyle::Get(), TEXT("SmallText"))
			.ColorAndOpacity_Lambda([this]()
				{
					return Problem.IsEmpty() ? GetSubdued() : FSlateColor(FAppStyle::GetColor("Colors.Error"));
				})
			.AutoWrapText(true)
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			MakeNameBar()
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			MakeUndoBar()
		];
	// clang-format on
}

TSharedRef<SWidget> SConversations::MakeNameBar()
{
	const auto GetVisibility = [this]() { return RenamedId.IsEmpty() ? EVisibility::Collapsed : EVisibility::Visible; };
	// clang-format off
	SAssignNew(NameBox, SEditableTextBox)
		.Tag("ConversationName")
		.HintText(LOCTEXT("NameHint", "Name; empty for what was said first"))
		.ClearKeyboardFocusOnCommit(false)
		.SelectAllTextWhenFocused(true)
		.OnKeyDownHandler(this, &SConversations::OnNameKey);
	return SNew(SBox)
		.Padding(0.0f, 8.0f, 0.0f, 0.0f)
		.Visibility_Lambda(GetVisibility)
		[
			ToolTab::MakeBar({ NameBox.ToSharedRef(),
				SettingRows::MakeButton("SaveConversationName", LOCTEXT("SaveName", "Save"),
					LOCTEXT("SaveNameTip", "Take the name (Enter)"), [this] { EndRename(true); }),
				SettingRows::MakeButton("CancelConversationName", LOCTEXT("CancelName", "Cancel"),
					LOCTEXT("CancelNameTip", "Leave the name as it was (Escape)"), [this] { EndRename(false); }) })
		];
	// clang-format on
}

TSharedRef<SWidget> SConversations::MakeUndoBar()
{
	const auto GetVisibility = [this]() { return Deletions.GetLatest() ? EVisibility::Visible : EVisibility::Collapsed; };
	// clang-format off
	const TSharedRef<SWidget> Words = SNew(STextBlock)
		.Tag("DeletedConversation")
		.Text(this, &SConversations::GetUndoText)
		.OverflowPolicy(ETextOverflowPolicy::Ellipsis);
	return SNew(SBox)
		.Padding(2.0f, 8.0f, 0.0f, 0.0f)
		.Visibility_Lambda(GetVisibility)
		[
			ToolTab::MakeBar({ Words,
				SettingRows::MakeButton("UndoDeleteConversation", LOCTEXT("Undo", "Undo"),
					LOCTEXT("UndoTip", "Keep the conversation (Ctrl+Z)"), [this] { UndoDelete(); }) })
		];
	// clang-format on
}

TSharedRef<SWidget> SConversations::MakeList()
{
	const auto GetEmptyVisibility = [this]()
	{ return Items.GetShown().Num() == 0 ? EVisibility::HitTestInvisible : EVisibility::Collapsed; };
	// clang-format off
	SAssignNew(List, SListView<FItem>)
		.Tag("ConversationList")
		.ListItemsSource(&Items.GetShown())
		.OnGenerateRow(this, &SConversations::MakeRow)
		.OnMouseButtonDoubleClick_Lambda([this](FItem) { Open(); });
	return SNew(SOverlay)
		+ SOverlay::Slot()
		[
			ToolTab::MakeListFrame(List.ToSharedRef())
		]
		+ SOverlay::Slot()
		.Padding(16.0f)
		[
			SNew(STextBlock)
			.Tag("ConversationsEmpty")
			.Text(this, &SConversations::GetEmptyText)
			.ColorAndOpacity(GetSubdued())
			.AutoWrapText(true)
			.Visibility_Lambda(GetEmptyVisibility)
		];
	// clang-format on
}

TSharedRef<SWidget> SConversations::MakeButtons()
{
	const TSharedRef<SWrapBox> Buttons = SNew(SWrapBox).UseAllottedSize(true).InnerSlotPadding(FVector2D(8.0, 8.0));
	const struct
	{
		const char* Tag;
		FText Label;
		FText ToolTip;
		void (SConversations::*Action)();
	} Rows[] = {
		{ "OpenConversation", LOCTEXT("Open", "Open"), LOCTEXT("OpenTip", "Show the conversation and go on with it (Enter)"),
			&SConversations::Open },
		{ "RenameConversation", LOCTEXT("Rename", "Rename"), LOCTEXT("RenameTip", "Give the conversation a name (F2)"),
			&SConversations::BeginRename },
		{ "PinConversation", FText(), LOCTEXT("PinTip", "Pinned conversations stand at the top of the list (Ctrl+P)"),
			&SConversations::TogglePin },
		{ "ExportConversation", LOCTEXT("Export", "Export"), LOCTEXT("ExportTip", "Write all that was said into a file (Ctrl+E)"),
			&SConversations::Export },
		{ "DeleteConversation", LOCTEXT("Delete", "Delete"),
			LOCTEXT("DeleteTip", "Delete the conversation (Delete); for ten seconds this can be taken back"), &SConversations::Delete },
	};
	for (const auto& Row : Rows)
	{
		Buttons->AddSlot()[MakeButton(Row.Tag, Row.Label, Row.ToolTip, Row.Action)];
	}
	return Buttons;
}

TSharedRef<SWidget> SConversations::MakeButton(const char* Tag, const FText& Label, const FText& ToolTip, void (SConversations::*Action)())
{
	const auto GetLabel = [this, Label]() { return Label.IsEmpty() ? GetPinText() : Label; };
	return SettingRows::MakeButton(
		Tag, TAttribute<FText>::CreateLambda(GetLabel), ToolTip, [this, Action] { (this->*Action)(); },
		TAttribute<bool>::CreateLambda([this]() { return GetSelected().IsValid(); }));
}

TSharedRef<ITableRow> SConversations::MakeRow(FItem Item, const TSharedRef<STableViewBase>& Owner)
{
	const TSharedRef<SVerticalBox> Lines = SNew(SVerticalBox);
	Lines->AddSlot().AutoHeight()[MakeTitleLine(Item)];
	if (!Item->Excerpt.IsEmpty())
	{
		Lines->AddSlot().AutoHeight().Padding(0.0f, 2.0f, 0.0f, 0.0f)[MakeExcerpt(Item)];
	}
	return SNew(STableRow<FItem>, Owner).Padding(FMargin(ToolTab::RowSide, 4.0f))[Lines];
}

TSharedRef<SWidget> SConversations::MakeTitleLine(const FItem& Item) const
{
	const auto GetSideText = [Item]()
	{
		FString Side = FConversationLabel::MakeAge(Item->LastUpdated, FDateTime::Now());
		Side = Item->bIsPinned ? TEXT("Pinned \u00b7 ") + Side : Side;
		return FText::FromString(Item->Speaker.IsEmpty() ? Side : Item->Speaker + TEXT(" \u00b7 ") + Side);
	};
	// clang-format off
	return SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.FillWidth(1.0f)
		.VAlign(VAlign_Center)
		[
			SNew(STextBlock)
			.Text(FText::FromString(Item->Title))
			.OverflowPolicy(ETextOverflowPolicy::Ellipsis)
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		.Padding(8.0f, 0.0f, RowBarRoom, 0.0f)
		[
			MakeSmallText(TAttribute<FText>::CreateLambda(GetSideText))
		];
	// clang-format on
}

TSharedRef<SWidget> SConversations::MakeExcerpt(const FItem& Item)
{
	// clang-format off
	return SNew(SOverlay)
		+ SOverlay::Slot()
		[
			SNew(SFoundMarks)
			.Text(Item->PlainExcerpt)
			.Font(GetExcerptFont())
			.Places(Item->PlainPlaces)
			.WrapTextAt(this, &SConversations::GetWrapWidth)
		]
		+ SOverlay::Slot()
		[
			SNew(STextBlock)
			.Text(FText::FromString(Item->PlainExcerpt))
			.Font(GetExcerptFont())
			.ColorAndOpacity(GetSubdued())
			.WrapTextAt(this, &SConversations::GetWrapWidth)
		];
	// clang-format on
}

float SConversations::GetWrapWidth() const
{
	return FMath::Max(ToolTab::GetTextWidth(*List), MinExcerptWidth);
}

FText SConversations::GetStatusText() const
{
	if (!Problem.IsEmpty())
	{
		return FText::FromString(Problem);
	}
	if (!bWasRead)
	{
		return LOCTEXT("Reading", "Reading\u2026");
	}
	const int32 Count = Items.GetQuery().IsEmpty() ? Items.GetStoredCount() : Items.GetShown().Num();
	if (bIsSearching)
	{
		return FText::Format(LOCTEXT("Searching", "{0} found, searching\u2026"), FText::AsNumber(Count));
	}
	if (Items.GetQuery().IsEmpty())
	{
		const FText Words = Count == 1 ? LOCTEXT("OneConversation", "1 conversation")
									   : FText::Format(LOCTEXT("Conversations", "{0} conversations"), FText::AsNumber(Count));
		return bKeepsNothing
			? FText::Format(LOCTEXT("KeepsNothing", "{0}. This session keeps no history: they are gone when it ends."), Words)
			: Words;
	}
	return Count >= Velmora::FConversationSearch::MaxHits ? LOCTEXT("MostFound", "The 50 newest hits")
														  : FText::Format(LOCTEXT("Found", "{0} found"), FText::AsNumber(Count));
}

FText SConversations::GetEmptyText() const
{
	if (!bWasRead || bIsSearching || !Problem.IsEmpty())
	{
		return FText();
	}
	const FText Query = FText::FromString(Items.GetQuery());
	const FConversationDeletions::FDeletion* const Latest = Deletions.GetLatest();
	const FText Title = Latest ? FText::FromString(Latest->Title) : FText();
	if (Items.GetQuery().IsEmpty())
	{
		return Latest
			? FText::Format(LOCTEXT("AllDeleted", "Every conversation is deleted. Undo (Ctrl+Z) brings \u201c{0}\u201d back."), Title)
			: bKeepsNothing ? LOCTEXT("NoHistory",
								  "This session keeps no history (--no-history). What is said in it stands here until it ends; earlier "
								  "conversations do not.")
							: LOCTEXT("NoConversations",
								  "There are no conversations in this project yet. What you say to the agent is kept, and stands here.");
	}
	return Latest && Items.HidesHits()
		? FText::Format(LOCTEXT("LastFoundDeleted",
							"No other message has words that begin with \u201c{0}\u201d. Undo (Ctrl+Z) brings \u201c{1}\u201d back."),
			  Query, Title)
		: FText::Format(LOCTEXT("NothingFound", "No message has words that begin with \u201c{0}\u201d."), Query);
}

FText SConversations::GetUndoText() const
{
	const FConversationDeletions::FDeletion* const Latest = Deletions.GetLatest();
	return Latest ? FText::Format(LOCTEXT("Deleted", "Deleted: {0}"), FText::FromString(Latest->Title)) : FText();
}

FText SConversations::GetPinText() const
{
	const FItem Item = GetSelected();
	return Item && Item->bIsPinned ? LOCTEXT("Unpin", "Unpin") : LOCTEXT("Pin", "Pin");
}

#undef LOCTEXT_NAMESPACE
