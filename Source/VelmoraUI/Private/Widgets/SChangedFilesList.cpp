#include "Widgets/SChangedFilesList.h"

#include "History/AssetHistoryTracker.h"
#include "History/FileHistoryTracker.h"
#include "Misc/Paths.h"
#include "Misc/Timespan.h"
#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SExpandableArea.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"
#include "Widgets/WidgetLook.h"

#define LOCTEXT_NAMESPACE "VelmoraUI"

namespace
{

	struct FChangeLook
	{
		const TCHAR* Word;
		const TCHAR* Color;
		const TCHAR* Icon;
	};

	/** By EChangeActionType. */
	constexpr FChangeLook ChangeLooks[] = {
		{ TEXT("Changed"), TEXT("999999FF"), TEXT("Icons.File") },
		{ TEXT("Created"), TEXT("10B981FF"), TEXT("Icons.Plus") },
		{ TEXT("Modified"), TEXT("95CBFFFF"), TEXT("Icons.CircleArrowRight") },
		{ TEXT("Deleted"), TEXT("D97777FF"), TEXT("Icons.Delete") },
	};
	constexpr uint8 ChangeLookCount = sizeof(ChangeLooks) / sizeof(ChangeLooks[0]);

	EChangeActionType ToActionType(uint8 Action)
	{
		return Action < ChangeLookCount ? static_cast<EChangeActionType>(Action) : EChangeActionType::Changed;
	}

	const FChangeLook& GetChangeLook(EChangeActionType ActionType)
	{
		return ChangeLooks[static_cast<uint8>(ToActionType(static_cast<uint8>(ActionType)))];
	}

	/** Takes the operations of a conversation into the map; of equal times the one that is there already stays. */
	template <typename OperationType>
	void MergeOperations(const TMap<FString, TMap<FString, TArray<OperationType>>>& All, const FString& ConversationId, bool bIsAsset,
		TMap<FString, FChangedItemEntry>& Items)
	{
		const TMap<FString, TArray<OperationType>>* Groups = All.Find(ConversationId);
		if (Groups == nullptr)
		{
			return;
		}
		for (const TPair<FString, TArray<OperationType>>& Group : *Groups)
		{
			// A path may stand in several groups, and in each several times: the list shows what happened to it last.
			for (const OperationType& Operation : Group.Value)
			{
				FChangedItemEntry* Held = Items.Find(Operation.Path);
				if (Held == nullptr)
				{
					Items.Add(
						Operation.Path, FChangedItemEntry{ Operation.Path, ToActionType(Operation.Action), Operation.Time, bIsAsset });
				}
				else if (Operation.Time > Held->Timestamp)
				{
					*Held = FChangedItemEntry{ Operation.Path, ToActionType(Operation.Action), Operation.Time, bIsAsset };
				}
			}
		}
	}

	/** The text for a number out of those that were made before. */
	const FText& FormatOnce(FText* Texts, const FText& Pattern, int64 Number)
	{
		FText& Text = Texts[Number];
		if (Text.IsEmpty())
		{
			Text = FText::Format(Pattern, Number);
		}
		return Text;
	}

} // namespace

void SChangedFilesList::Construct(const FArguments& InArgs)
{
	ConversationId = InArgs._ConversationId;
	OnFileClicked = InArgs._OnFileClicked;

	// clang-format off
	ChildSlot
	[
		SNew(SBox)
		.MaxDesiredWidth(600.0f)
		.WidthOverride(600.0f)
		[
			SNew(SExpandableArea)
			.InitiallyCollapsed(true)
			.BorderBackgroundColor(FSlateColor(FVelmoraUIStyles::GetSystemMessageBackgroundColor()))
			.Padding(FMargin(0.0f))
			.HeaderContent()
			[
				BuildHeader()
			]
			.BodyContent()
			[
				BuildBody()
			]
		]
	];
	// clang-format on

	UpdateFileList();
}

TSharedRef<SWidget> SChangedFilesList::BuildHeader()
{
	// clang-format off
	return SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush("ToolPanel.DarkGroupBorder"))
		.Padding(FMargin(8.0f, 6.0f))
		[
			SNew(SHorizontalBox)
			+ SHorizontalBox::Slot()
			.FillWidth(1.0f)
			.VAlign(VAlign_Center)
			[
				SNew(STextBlock)
				.Tag(FName("ChangedFilesHeader"))
				.Text(this, &SChangedFilesList::GetChangedFilesCount)
				.Font(FAppStyle::GetFontStyle("NormalFontBold"))
				.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextColorPrimary()))
			]
		];
	// clang-format on
}

TSharedRef<SWidget> SChangedFilesList::BuildBody()
{
	// clang-format off
	return SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush("ToolPanel.GroupBorder"))
		.BorderBackgroundColor(FSlateColor(FVelmoraUIStyles::GetToolMessageBackgroundColor()))
		.Padding(FMargin(0.0f))
		[
			SNew(SBox)
			.MaxDesiredHeight(250.0f)
			[
				SNew(SVerticalBox)
				+ SVerticalBox::Slot()
				.AutoHeight()
				.Padding(12.0f, 16.0f)
				[
					SNew(STextBlock)
					.Text(LOCTEXT("NoChangedFiles", "No files changed yet"))
					.Font(FVelmoraUIStyles::GetSmallFont())
					.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextMutedColor()))
					.Justification(ETextJustify::Center)
					.Visibility(this, &SChangedFilesList::GetEmptyStateVisibility)
				]
				+ SVerticalBox::Slot()
				.FillHeight(1.0f)
				[
					SNew(SScrollBox)
					.Visibility(this, &SChangedFilesList::GetFileListVisibility)
					+ SScrollBox::Slot()
					.Padding(4.0f, 2.0f)
					[
						SAssignNew(FileListBox, SVerticalBox)
					]
				]
			]
		];
	// clang-format on
}

TSharedRef<SWidget> SChangedFilesList::BuildFileRow(const FChangedItemEntry& Entry)
{
	const bool bHasTime = Entry.Timestamp.GetTicks() != 0;
	// clang-format off
	return SNew(SButton)
		.ButtonStyle(FAppStyle::Get(), "SimpleButton")
		.OnClicked(this, &SChangedFilesList::OnFileRowClicked, Entry.Path)
		.ToolTipText(GetFileActionTooltip(Entry.ActionType, Entry.Path))
		.ContentPadding(FMargin(4.0f, 2.0f))
		[
			SNew(SHorizontalBox)
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.VAlign(VAlign_Center)
			.Padding(0.0f, 0.0f, 6.0f, 0.0f)
			[
				SNew(SImage)
				.Image(GetFileActionIcon(Entry.ActionType))
				.ColorAndOpacity(GetFileActionColor(Entry.ActionType))
			]
			+ SHorizontalBox::Slot()
			.FillWidth(1.0f)
			.VAlign(VAlign_Center)
			[
				SNew(STextBlock)
				.Text(FText::FromString(GetFileDisplayName(Entry.Path)))
				.Font(FVelmoraUIStyles::GetMessageBodyFont())
			]
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.VAlign(VAlign_Center)
			.Padding(8.0f, 0.0f, 0.0f, 0.0f)
			[
				SNew(STextBlock)
				.Text(this, &SChangedFilesList::GetRelativeTimestamp, Entry.Timestamp)
				.Font(FVelmoraUIStyles::GetTimestampFont())
				.ColorAndOpacity(FSlateColor::UseSubduedForeground())
				.Visibility(VisibleIf(bHasTime))
			]
		];
	// clang-format on
}

void SChangedFilesList::SetConversationId(const FString& InConversationId)
{
	ConversationId = InConversationId;
	UpdateFileList();
}

void SChangedFilesList::UpdateFileList()
{
	if (!FileListBox.IsValid())
	{
		return;
	}
	// 1. From nothing: rows hold their texts, and any of them may have changed.
	FileListBox->ClearChildren();
	ChangedItems.Empty();
	const FString Id = ConversationId.Get();
	if (Id.IsEmpty())
	{
		return;
	}

	// 2. One row a path. Files come before assets, and of equal times the first one stays.
	TMap<FString, FChangedItemEntry> Items;
	MergeOperations(FFileHistoryTracker::Get().GetAllFileOperations(), Id, false, Items);
	MergeOperations(FAssetHistoryTracker::Get().GetAllAssetOperations(), Id, true, Items);
	// 3. The latest on top; what has the same time keeps the order in which it was merged.
	Items.ValueStableSort([](const FChangedItemEntry& A, const FChangedItemEntry& B) { return A.Timestamp > B.Timestamp; });
	ChangedItems = MoveTemp(Items);
	for (const TPair<FString, FChangedItemEntry>& Item : ChangedItems)
	{
		// clang-format off
		FileListBox->AddSlot()
		.AutoHeight()
		.Padding(0.0f, 1.0f)
		[
			BuildFileRow(Item.Value)
		];
		// clang-format on
	}
}

FText SChangedFilesList::GetChangedFilesCount() const
{
	if (ChangedItems.IsEmpty())
	{
		return LOCTEXT("ChangedFilesHeader", "Changed Files");
	}
	return FText::Format(LOCTEXT("ChangedFilesHeaderWithCount", "Changed Files ({0})"), ChangedItems.Num());
}

EVisibility SChangedFilesList::GetEmptyStateVisibility() const
{
	return VisibleIf(ChangedItems.IsEmpty());
}

EVisibility SChangedFilesList::GetFileListVisibility() const
{
	return VisibleIf(!ChangedItems.IsEmpty());
}

FSlateColor SChangedFilesList::GetFileActionColor(EChangeActionType ActionType) const
{
	return FSlateColor(FVelmoraUIStyles::FromHexSRGB(GetChangeLook(ActionType).Color));
}

const FSlateBrush* SChangedFilesList::GetFileActionIcon(EChangeActionType ActionType) const
{
	return FAppStyle::GetBrush(FName(GetChangeLook(ActionType).Icon));
}

FText SChangedFilesList::GetFileActionTooltip(EChangeActionType ActionType, FString Path) const
{
	return FText::FromString(FString(GetChangeLook(ActionType).Word) + TEXT(": ") + Path + TEXT("\n\nClick to open in editor"));
}

FString SChangedFilesList::GetFileDisplayName(const FString& Path) const
{
	return FPaths::GetCleanFilename(Path);
}

FText SChangedFilesList::GetRelativeTimestamp(FDateTime Timestamp) const
{
	if (Timestamp.GetTicks() == 0)
	{
		return FText::GetEmpty();
	}
	// Made once each: the rows ask in every frame.
	static FText Minutes[60];
	static FText Hours[24];
	static FText Days[7];
	// A stamp in the future has a negative age, and is just now.
	const int64 Age = (FDateTime::Now() - Timestamp).GetTicks();
	if (Age < ETimespan::TicksPerMinute)
	{
		return LOCTEXT("JustNow", "just now");
	}
	if (Age < ETimespan::TicksPerHour)
	{
		return FormatOnce(Minutes, LOCTEXT("MinutesAgo", "{0}m ago"), Age / ETimespan::TicksPerMinute);
	}
	if (Age < ETimespan::TicksPerDay)
	{
		return FormatOnce(Hours, LOCTEXT("HoursAgo", "{0}h ago"), Age / ETimespan::TicksPerHour);
	}
	if (Age < 7 * ETimespan::TicksPerDay)
	{
		return FormatOnce(Days, LOCTEXT("DaysAgo", "{0}d ago"), Age / ETimespan::TicksPerDay);
	}
	// The stamp is in local time already; no zone keeps its day from being shifted once more.
	return FText::AsDate(Timestamp, EDateTimeStyle::Short, FText::GetInvariantTimeZone());
}

FReply SChangedFilesList::OnFileRowClicked(FString Path)
{
	OnFileClicked.ExecuteIfBound(Path);
	return FReply::Handled();
}

#undef LOCTEXT_NAMESPACE
