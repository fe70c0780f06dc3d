#include "Widgets/SChatWindow.h"

#include "HAL/IConsoleManager.h"
#include "Misc/AssertionMacros.h"
#include "Misc/DateTime.h"
#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "ViewModels/ChatViewModel.h"
#include "ViewModels/ConversationLabel.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SNullWidget.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "VelmoraUI"

using Velmora::FConversationMetadata;

namespace
{

	TAutoConsoleVariable<int32> ForceSyncHistoryRefresh(TEXT("velmora.ConversationHistoryRefresh.ForceSync"), 0,
		TEXT("If non-zero, forces synchronous conversation history refresh on the game thread (will stall UI)."));

	FString GetAgeOfConversation(const FConversationMetadata& Conversation)
	{
		return FConversationLabel::MakeAge(Conversation.LastUpdated, FDateTime::Now());
	}

	/** Titles are as long as what was asked first, and the row is as wide as its box: they are cut where the room ends. */
	TSharedRef<SWidget> MakeTitle(FName Tag, const TAttribute<FText>& Text)
	{
		return SNew(STextBlock)
			.Tag(Tag)
			.Text(Text)
			.Font(FAppStyle::GetFontStyle("NormalFont"))
			.OverflowPolicy(ETextOverflowPolicy::Ellipsis);
	}

	/** What stands beside a title. */
	TSharedRef<SWidget> MakeSideText(FName Tag, const TAttribute<FText>& Text)
	{
		return SNew(STextBlock)
			.Tag(Tag)
			.Text(Text)
			.Font(FVelmoraUIStyles::GetSmallFont())
			.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextColorSecondary()));
	}

} // namespace

TSharedRef<SWidget> SChatWindow::BuildConversationSelector()
{
	// clang-format off
	return SAssignNew(ConversationComboBox, SComboBox<TSharedPtr<FConversationMetadata>>)
		.Tag(FName("ConversationComboBox"))
		.OptionsSource(&ConversationHistories)
		.OnGenerateWidget(this, &SChatWindow::OnGenerateConversationWidget)
		.OnSelectionChanged(this, &SChatWindow::OnConversationSelected)
		.IsEnabled(this, &SChatWindow::IsConversationDropdownEnabled)
		.ToolTipText(LOCTEXT("ConversationHistoryTooltip", "Conversations are stored in the Velmora folder in your Engine's Saved folder"))
		[
			SNew(SHorizontalBox)
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.VAlign(VAlign_Center)
			[
				SNew(SImage)
				.Image(FVelmoraUIStyles::GetBrush("Toolbar_ChatHistory_32"))
				.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetActionIconNormalColor()))
				.DesiredSizeOverride(FVector2D(15.0, 15.0))
			]
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.VAlign(VAlign_Center)
			.Padding(4.0f, 0.0f, 0.0f, 0.0f)
			[
				MakeSideText("ConversationId", TAttribute<FText>::CreateSP(this, &SChatWindow::GetConversationHeaderIdText))
			]
			+ SHorizontalBox::Slot()
			.FillWidth(1.0f)
			.VAlign(VAlign_Center)
			.Padding(4.0f, 0.0f, 0.0f, 0.0f)
			[
				MakeTitle("ConversationTitle", TAttribute<FText>::CreateSP(this, &SChatWindow::GetConversationHeaderTitleText))
			]
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.VAlign(VAlign_Center)
			.Padding(6.0f, 0.0f, 0.0f, 0.0f)
			[
				MakeSideText("ConversationAge", TAttribute<FText>::CreateSP(this, &SChatWindow::GetConversationHeaderTimeText))
			]
		];
	// clang-format on
}

void SChatWindow::RequestRefreshConversationHistoriesAsync()
{
	if (ForceSyncHistoryRefresh.GetValueOnGameThread() != 0)
	{
		RefreshConversationHistories();
		return;
	}
	if (!ViewModel.IsValid())
	{
		return;
	}
	HistoryRefresh.Request(ConversationHistorySaveDir,
		[WeakWindow = TWeakPtr<SChatWindow>(SharedThis(this))](const TArray<FConversationMetadata>& Summaries)
		{
			if (const TSharedPtr<SChatWindow> Window = WeakWindow.Pin())
			{
				Window->FinishHistoryRefresh(Summaries);
			}
		});
}

void SChatWindow::FinishHistoryRefresh(const TArray<FConversationMetadata>& Summaries)
{
	RebuildConversationHistoriesFrom(Summaries);
	// Through the front door once more: the way to read, or the conversation itself, may have changed meanwhile.
	if (HistoryRefresh.Finish())
	{
		RequestRefreshConversationHistoriesAsync();
	}
}

void SChatWindow::RefreshConversationHistories()
{
	if (ViewModel.IsValid())
	{
		SetConversationOptions(ViewModel->GetConversationHistories());
	}
}

void SChatWindow::RebuildConversationHistoriesFrom(const TArray<FConversationMetadata>& Summaries)
{
	check(IsInGameThread());
	if (ViewModel.IsValid())
	{
		SetConversationOptions(Summaries);
	}
}

void SChatWindow::SetConversationOptions(const TArray<FConversationMetadata>& Summaries)
{
	// 1. All objects are made anew, and one place more is kept for the conversation that is not stored yet.
	ConversationHistories.Empty(Summaries.Num() + 1);
	const TSharedPtr<FConversationMetadata> Current = ViewModel->GetCurrentConversationMetadata();
	const auto IsCurrent = [&Current](const FConversationMetadata& Summary) { return FConversationLabel::IsSame(Summary, *Current); };
	if (Current.IsValid() && !Summaries.ContainsByPredicate(IsCurrent))
	{
		// Not stored yet; it stands at the top all the same.
		ConversationHistories.Add(Current);
	}
	// 2. The rest in the order of the store, which knows which is the latest.
	for (const FConversationMetadata& Summary : Summaries)
	{
		ConversationHistories.Add(MakeShared<FConversationMetadata>(Summary));
	}
	// 3. The box shows the new objects; the choice is found again by its id.
	if (ConversationComboBox.IsValid())
	{
		ConversationComboBox->RefreshOptions();
		if (const TSharedPtr<FConversationMetadata> Option = FindConversationOption(SelectedConversation))
		{
			// The choice is the same as before, but another object stands for it, and the box goes by objects.
			SelectedConversation = Option;
			ConversationComboBox->SetSelectedItem(Option);
		}
		SyncComboBoxSelection(false);
	}
	StayAwake.Start();
}

TSharedPtr<FConversationMetadata> SChatWindow::FindConversationOption(const TSharedPtr<FConversationMetadata>& Conversation) const
{
	const auto IsIt = [&Conversation](const TSharedPtr<FConversationMetadata>& Option)
	{ return Option.IsValid() && Conversation.IsValid() && FConversationLabel::IsSame(*Option, *Conversation); };
	const TSharedPtr<FConversationMetadata>* const Found = ConversationHistories.FindByPredicate(IsIt);
	return Found != nullptr ? *Found : nullptr;
}

void SChatWindow::SyncComboBoxSelection(bool bRequestRefreshIfMissing)
{
	if (!ViewModel.IsValid() || !ConversationComboBox.IsValid())
	{
		return;
	}
	// Nothing to do for a conversation that the box shows already; this is what most calls find.
	const TSharedPtr<FConversationMetadata> Current = ViewModel->GetCurrentConversationMetadata();
	if (!Current.IsValid() || (SelectedConversation.IsValid() && FConversationLabel::IsSame(*SelectedConversation, *Current)))
	{
		return;
	}
	if (const TSharedPtr<FConversationMetadata> Option = FindConversationOption(Current))
	{
		// First of all remembered: the box reports the selection, and what is selected already is not loaded again.
		SelectedConversation = Option;
		ConversationComboBox->SetSelectedItem(Option);
	}
	else if (bRequestRefreshIfMissing)
	{
		RequestRefreshConversationHistoriesAsync();
	}
}

void SChatWindow::OnConversationSelected(TSharedPtr<FConversationMetadata> Item, ESelectInfo::Type SelectInfo)
{
	// The box reports what it was told to show just as what was picked. Only the latter differs from what is held for chosen.
	if (!Item.IsValid() || !ViewModel.IsValid())
	{
		return;
	}
	if (SelectedConversation.IsValid() && FConversationLabel::IsSame(*SelectedConversation, *Item))
	{
		return;
	}
	// Before the load, whose own reports sync the box.
	SelectedConversation = Item;
	if (ViewModel->LoadConversation(Item->Id))
	{
		SyncModeComboBoxSelection();
		RequestRefreshConversationHistoriesAsync();
	}
}

FString SChatWindow::OnGenerateConversationTitle(TSharedPtr<FConversationMetadata> Item) const
{
	return Item.IsValid() ? FConversationLabel::MakeTitle(*Item) : FString();
}

TSharedRef<SWidget> SChatWindow::OnGenerateConversationWidget(TSharedPtr<FConversationMetadata> Item)
{
	if (!Item.IsValid())
	{
		return SNew(STextBlock).Text(LOCTEXT("InvalidItem", "Invalid"));
	}
	const TSharedPtr<FConversationMetadata> Current = ViewModel.IsValid() ? ViewModel->GetCurrentConversationMetadata() : nullptr;
	const bool bIsCurrent = Current.IsValid() && FConversationLabel::IsSame(*Current, *Item);
	const FString Details = FString::Printf(TEXT("[%s] · %s"), *FConversationLabel::MakeShortId(*Item), *GetAgeOfConversation(*Item));
	TSharedRef<SWidget> Badge = SNullWidget::NullWidget;
	// clang-format off
	if (bIsCurrent)
	{
		Badge = SNew(SBorder)
			.BorderImage(FAppStyle::GetBrush("ToolPanel.GroupBorder"))
			.Padding(FMargin(6.0f, 2.0f))
			[
				SNew(STextBlock)
				.Text(LOCTEXT("CurrentConversationBadge", "Current"))
				.Font(FAppStyle::GetFontStyle("SmallFont"))
			];
	}
	return SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush("NoBorder"))
		.Padding(FMargin(0.0f, 2.0f))
		[
			SNew(SVerticalBox)
			+ SVerticalBox::Slot()
			.AutoHeight()
			[
				SNew(SHorizontalBox)
				+ SHorizontalBox::Slot()
				.FillWidth(1.0f)
				.VAlign(VAlign_Center)
				[
					MakeTitle(NAME_None, FText::FromString(OnGenerateConversationTitle(Item)))
				]
				+ SHorizontalBox::Slot()
				.AutoWidth()
				.VAlign(VAlign_Center)
				.Padding(6.0f, 0.0f, 0.0f, 0.0f)
				[
					Badge
				]
			]
			+ SVerticalBox::Slot()
			.AutoHeight()
			.Padding(0.0f, 2.0f, 0.0f, 0.0f)
			[
				SNew(STextBlock)
				.Text(FText::FromString(Details))
				.Font(FAppStyle::GetFontStyle("SmallFont"))
				.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextColorSecondary()))
			]
		];
	// clang-format on
}

FText SChatWindow::GetConversationDropdownText() const
{
	if (!ViewModel.IsValid())
	{
		return LOCTEXT("NoConversation", "No chats yet");
	}
	const FString Title = ViewModel->GetCurrentConversationTitle();
	if (Title.IsEmpty())
	{
		return LOCTEXT("NewConversationHeader", "Current: New chat");
	}
	return FText::Format(LOCTEXT("CurrentConversationHeader", "Current: {0}"), FText::FromString(Title));
}

FText SChatWindow::GetConversationHeaderIdText() const
{
	const TSharedPtr<FConversationMetadata> Current = ViewModel.IsValid() ? ViewModel->GetCurrentConversationMetadata() : nullptr;
	return Current.IsValid() ? FText::FromString(TEXT("[") + FConversationLabel::MakeShortId(*Current) + TEXT("]")) : FText::GetEmpty();
}

FText SChatWindow::GetConversationHeaderTitleText() const
{
	if (!ViewModel.IsValid())
	{
		return LOCTEXT("NoConversation", "No chats yet");
	}
	const TSharedPtr<FConversationMetadata> Current = ViewModel->GetCurrentConversationMetadata();
	if (!Current.IsValid())
	{
		return LOCTEXT("NewConversationHeaderTitle", "New conversation");
	}
	return FText::FromString(OnGenerateConversationTitle(Current));
}

FText SChatWindow::GetConversationHeaderTimeText() const
{
	const TSharedPtr<FConversationMetadata> Current = ViewModel.IsValid() ? ViewModel->GetCurrentConversationMetadata() : nullptr;
	return Current.IsValid() ? FText::FromString(GetAgeOfConversation(*Current)) : FText::GetEmpty();
}

#undef LOCTEXT_NAMESPACE
