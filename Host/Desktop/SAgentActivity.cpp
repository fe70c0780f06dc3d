#include "SAgentActivity.h"

#include "ActivityText.h"
#include "AgentChoice.h"
#include "Framework/Application/SlateApplication.h"
#include "HAL/PlatformApplicationMisc.h"
#include "Host/HostSleep.h"
#include "SettingRows.h"
#include "Styling/AppStyle.h"
#include "Styling/CoreStyle.h"
#include "ToolTab.h"
#include "Widgets/Input/SCheckBox.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SExpandableArea.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/Layout/SSplitter.h"
#include "Widgets/Layout/SWrapBox.h"
#include "Widgets/Notifications/SProgressBar.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "AgentActivity"

namespace
{
	using Velmora::EAgentActivityKind;
	using Velmora::FAgentActivity;
	using Velmora::FAgentActivityEntry;

	constexpr double TakeOverSeconds = 0.1;
	/** Of a text that grows: what is laid out anew each time. */
	constexpr int32 MaxLiveLength = 4000;
	/** Of one that stands. */
	constexpr int32 MaxShownLength = 32000;
	constexpr float ContextBarWidth = 96.0f;
	constexpr float ContextBarHeight = 4.0f;
	constexpr float FullContextShare = 0.8f;
	/** Beside less than this the controls stand below the figures. */
	constexpr float MinFiguresWidth = 240.0f;
	/** Of the controls beside the figures, with the gaps and the sides of the tab. */
	constexpr float ControlsWidth = 276.0f;
	constexpr float TabSides = 16.0f;
	/** Of the time before an event. */
	constexpr float ActivityTimeRoom = 72.0f;

	/** A caret-wide block stands where the next piece will. */
	FString MakeLiveText(const FString& Text)
	{
		const FString Tail = Text.Len() > MaxLiveLength ? TEXT("\u2026") + Text.Right(MaxLiveLength) : Text;
		return Tail + TEXT("\u258F");
	}
}

void SAgentActivity::Construct(const FArguments& InArgs)
{
	// clang-format off
	ChildSlot
	[
		ToolTab::MakeFrame(MakeBar(),
			SNew(SSplitter)
			.Orientation(Orient_Vertical)
			+ SSplitter::Slot()
			.Value(0.4f)
			[
				MakeEvents()
			]
			+ SSplitter::Slot()
			.Value(0.6f)
			[
				MakeDetails()
			])
	];
	// clang-format on
	// A batch of pieces is a change that only this tab shows, so nobody else brings the frame for it.
	FAgentActivity::SetListener(
		[]()
		{
			if (FSlateApplication::IsInitialized())
			{
				FSlateApplication::Get().NoteActivity();
			}
		});
	TakeOver();
	List->ScrollToBottom();
}

SAgentActivity::~SAgentActivity()
{
	FAgentActivity::SetListener(nullptr);
}

TSharedRef<SWidget> SAgentActivity::MakeBar()
{
	const TSharedRef<SWrapBox> Bar = SNew(SWrapBox).UseAllottedSize(true).InnerSlotPadding(FVector2D(8.0, 4.0));
	const auto GetWidth = [this]() { return FOptionalSize(GetFiguresWidth()); };
	Bar->AddSlot().VAlign(VAlign_Center)[SNew(SBox).WidthOverride_Lambda(GetWidth)[MakeFigures()]];
	for (const TSharedRef<SWidget>& Control : { MakeFollowBox(), MakeCopyButton(), MakeClearButton() })
	{
		Bar->AddSlot().VAlign(VAlign_Center)[Control];
	}
	return Bar;
}

float SAgentActivity::GetFiguresWidth() const
{
	const float Width = static_cast<float>(GetCachedGeometry().GetLocalSize().X);
	const float Beside = Width - ControlsWidth;
	return Beside >= MinFiguresWidth ? Beside : FMath::Max(Width - TabSides, 0.0f);
}

TSharedRef<SWidget> SAgentActivity::MakeEvents()
{
	const auto OnChosen = [this](FEntry Entry, ESelectInfo::Type)
	{
		// Who has chosen an event stays with it.
		bFollows = !Entry.IsValid();
		ShowDetails();
	};
	// clang-format off
	return ToolTab::MakeListFrame(
		SAssignNew(List, SListView<FEntry>)
		.Tag("ActivityList")
		.ListItemsSource(&Entries)
		.OnGenerateRow(this, &SAgentActivity::MakeRow)
		.OnSelectionChanged_Lambda(OnChosen));
	// clang-format on
}

TSharedRef<SWidget> SAgentActivity::MakeModelRow()
{
	// clang-format off
	return SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.FillWidth(1.0f)
		.VAlign(VAlign_Center)
		[
			SNew(STextBlock)
			.Tag("ActivityModel")
			.Text(this, &SAgentActivity::GetModelText)
			.TextStyle(FAppStyle::Get(), TEXT("NormalText.Important"))
			.OverflowPolicy(ETextOverflowPolicy::Ellipsis)
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		.Padding(8.0f, 0.0f, 12.0f, 0.0f)
		[
			SNew(SBox)
			.WidthOverride(ContextBarWidth)
			.HeightOverride(ContextBarHeight)
			.ToolTipText(LOCTEXT("ContextTip", "How much of what the model can take the conversation uses"))
			.Visibility_Lambda([this]() { return GetContextShare().IsSet() ? EVisibility::Visible : EVisibility::Collapsed; })
			[
				SNew(SProgressBar)
				.Percent(this, &SAgentActivity::GetContextShare)
				.FillColorAndOpacity(this, &SAgentActivity::GetContextColor)
			]
		];
	// clang-format on
}

TSharedRef<SWidget> SAgentActivity::MakeFigures()
{
	// They change with every frame while an answer streams, and what changes is painted as far as it is clipped.
	// clang-format off
	return SNew(SVerticalBox)
		.Clipping(EWidgetClipping::ClipToBounds)
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			MakeModelRow()
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			SNew(STextBlock)
			.Tag("ActivityFigures")
			.Text(this, &SAgentActivity::GetFiguresText)
			.TextStyle(FAppStyle::Get(), TEXT("SmallText"))
			.ColorAndOpacity(FSlateColor(FAppStyle::GetColor("Colors.ForegroundSubdued")))
			.AutoWrapText(true)
		];
	// clang-format on
}

TSharedRef<SWidget> SAgentActivity::MakeFollowBox()
{
	const auto OnFollow = [this](ECheckBoxState State)
	{
		if (State == ECheckBoxState::Checked)
		{
			List->ClearSelection();
			List->ScrollToBottom();
		}
		bFollows = State == ECheckBoxState::Checked;
		ShowDetails();
	};
	// clang-format off
	return SNew(SCheckBox)
		.Tag("FollowActivity")
		.ToolTipText(LOCTEXT("FollowTip", "Show what happens now; choosing an event stays with it"))
		.IsChecked_Lambda([this]() { return bFollows ? ECheckBoxState::Checked : ECheckBoxState::Unchecked; })
		.OnCheckStateChanged_Lambda(OnFollow)
		[
			SNew(STextBlock)
			.Text(LOCTEXT("Follow", "Follow"))
			.Margin(FMargin(4.0f, 0.0f, 0.0f, 0.0f))
		];
	// clang-format on
}

TSharedRef<SWidget> SAgentActivity::MakeCopyButton()
{
	const auto OnCopy = [this]()
	{
		const TArray<FEntry> Selected = List->GetSelectedItems();
		FPlatformApplicationMisc::ClipboardCopy(*MakeCopy(Selected.Num() > 0 && Selected[0] ? Selected : Entries));
	};
	return SettingRows::MakeButton("CopyActivity", LOCTEXT("Copy", "Copy"),
		LOCTEXT("CopyTip", "Copy the chosen event with all that belongs to it, or all events; keys are never among them"), OnCopy);
}

TSharedRef<SWidget> SAgentActivity::MakeClearButton()
{
	const auto OnClear = [this]()
	{
		FAgentActivity::Clear();
		List->ClearSelection();
		TakeOver();
	};
	return SettingRows::MakeButton(
		"ClearActivity", LOCTEXT("Clear", "Clear"), LOCTEXT("ClearTip", "Take all events away; the conversation stays"), OnClear);
}

TSharedRef<SWidget> SAgentActivity::MakePart(const FText& Title, const char* Tag, bool bItalic, bool bCollapsed,
	TSharedPtr<SMultiLineEditableTextBox>& OutBox, TSharedPtr<SExpandableArea>& OutArea)
{
	const FSlateFontInfo Font = bItalic ? FCoreStyle::GetDefaultFontStyle("Italic", 10.0f) : ToolTab::GetMonoFont();
	// clang-format off
	return SAssignNew(OutArea, SExpandableArea)
		.AreaTitle(Title)
		.InitiallyCollapsed(bCollapsed)
		.Padding(FMargin(0.0f, 4.0f, 0.0f, 8.0f))
		.BodyContent()
		[
			SAssignNew(OutBox, SMultiLineEditableTextBox)
			.Tag(FName(Tag))
			.IsReadOnly(true)
			.AutoWrapText(true)
			.Font(Font)
			.ForegroundColor(FSlateColor(FAppStyle::GetColor(bItalic ? "Colors.ForegroundSubdued" : "Colors.Foreground")))
		];
	// clang-format on
}

TSharedRef<SWidget> SAgentActivity::MakeDetails()
{
	// clang-format off
	return SAssignNew(Details, SScrollBox)
		.Visibility_Lambda([this]() { return Entries.Num() > 0 ? EVisibility::Visible : EVisibility::Collapsed; })
		+ SScrollBox::Slot()
		[
			SNew(SVerticalBox)
			+ SVerticalBox::Slot()
			.AutoHeight()
			[
				MakePart(LOCTEXT("Thinking", "Thinking"), "ActivityThinking", true, true, ThinkingBox, ThinkingArea)
			]
			+ SVerticalBox::Slot()
			.AutoHeight()
			[
				MakePart(LOCTEXT("Text", "Answer or Result"), "ActivityText", false, false, TextBox, TextArea)
			]
			+ SVerticalBox::Slot()
			.AutoHeight()
			[
				MakePart(LOCTEXT("Sent", "Request as Sent, or Arguments"), "ActivitySent", false, true, SentBox, SentArea)
			]
		];
	// clang-format on
}

TSharedRef<ITableRow> SAgentActivity::MakeRow(FEntry Entry, const TSharedRef<STableViewBase>& Owner)
{
	const auto GetText = [Entry]() { return FText::FromString(ActivityText::DescribeEntry(*Entry, FAgentActivity::GetSeconds(*Entry))); };
	const auto GetColor = [Entry]()
	{
		const bool bHasFailed = Entry->bIsDone && !Entry->bSuccess;
		return FSlateColor(FAppStyle::GetColor(bHasFailed ? "Colors.Error" : "Colors.Foreground"));
	};
	// clang-format off
	return SNew(STableRow<FEntry>, Owner)
		.Padding(FMargin(ToolTab::RowSide, 1.0f))
		[
			SNew(SHorizontalBox)
			.Clipping(EWidgetClipping::ClipToBounds)
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.VAlign(VAlign_Top)
			.Padding(0.0f, 0.0f, 8.0f, 0.0f)
			[
				SNew(STextBlock)
				.Text(FText::FromString(Entry->StartedAt.ToString(TEXT("%H:%M:%S"))))
				.Font(ToolTab::GetMonoFont())
				.ColorAndOpacity(FSlateColor(FLinearColor(FColor::FromHex(TEXT("808896")))))
			]
			+ SHorizontalBox::Slot()
			.FillWidth(1.0f)
			[
				SNew(STextBlock)
				.Text_Lambda(GetText)
				.Font(ToolTab::GetMonoFont())
				.ColorAndOpacity_Lambda(GetColor)
				.WrapTextAt(this, &SAgentActivity::GetWrapWidth)
			]
		];
	// clang-format on
}

float SAgentActivity::GetWrapWidth() const
{
	return ToolTab::GetTextWidth(*List, ActivityTimeRoom);
}

void SAgentActivity::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	if (SeenRevision == FAgentActivity::GetRevision())
	{
		return;
	}
	if (InCurrentTime - LastTakeOver < TakeOverSeconds)
	{
		FHostSleep::RequestFrameAt(LastTakeOver + TakeOverSeconds);
		return;
	}
	LastTakeOver = InCurrentTime;
	TakeOver();
}

FReply SAgentActivity::OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	const TArray<FEntry> Selected = List->GetSelectedItems();
	if (InKeyEvent.GetKey() == EKeys::C && InKeyEvent.IsControlDown() && Selected.Num() > 0 && Selected[0])
	{
		FPlatformApplicationMisc::ClipboardCopy(*MakeCopy(Selected));
		return FReply::Handled();
	}
	return FReply::Unhandled();
}

void SAgentActivity::TakeOver()
{
	SeenRevision = FAgentActivity::GetRevision();
	const TArray<TSharedRef<const FAgentActivityEntry>>& Kept = FAgentActivity::GetEntries();
	const bool bIsSame =
		Kept.Num() == Entries.Num() && (Kept.IsEmpty() || (Kept[0]->Id == Entries[0]->Id && Kept.Last()->Id == Entries.Last()->Id));
	if (!bIsSame)
	{
		const bool bAtBottom = List->IsAtBottom();
		Entries.Reset();
		for (const TSharedRef<const FAgentActivityEntry>& Entry : Kept)
		{
			Entries.Add(Entry);
		}
		List->RequestListRefresh();
		if (bAtBottom || bFollows)
		{
			List->ScrollToBottom();
		}
	}
	ShowDetails();
}

SAgentActivity::FEntry SAgentActivity::GetLastRequest() const
{
	for (int32 Index = Entries.Num() - 1; Index >= 0; --Index)
	{
		if (Entries[Index]->Kind == EAgentActivityKind::Request)
		{
			return Entries[Index];
		}
	}
	return nullptr;
}

SAgentActivity::FEntry SAgentActivity::GetShown() const
{
	const TArray<FEntry> Selected = List->GetSelectedItems();
	if (!bFollows && Selected.Num() > 0 && Selected[0])
	{
		return Selected[0];
	}
	const FEntry Last = Entries.IsEmpty() ? nullptr : Entries.Last();
	return Last && Last->Kind == EAgentActivityKind::Tool ? Last : GetLastRequest();
}

void SAgentActivity::ShowDetails()
{
	const FEntry Entry = GetShown();
	const auto SetText = [](const TSharedPtr<SMultiLineEditableTextBox>& Box, const FString& Text)
	{
		if (!Box->GetText().ToString().Equals(Text, ESearchCase::CaseSensitive))
		{
			Box->SetText(FText::FromString(Text));
		}
	};
	const auto SetPart = [&SetText](
							 const TSharedPtr<SExpandableArea>& Area, const TSharedPtr<SMultiLineEditableTextBox>& Box, const FString& Text)
	{
		Area->SetVisibility(Text.IsEmpty() ? EVisibility::Collapsed : EVisibility::Visible);
		SetText(Box, Text);
	};
	if (!Entry)
	{
		SetPart(TextArea, TextBox, FString());
		SetPart(ThinkingArea, ThinkingBox, FString());
		SetPart(SentArea, SentBox, FString());
		ShownId = 0;
		return;
	}
	const bool bIsLive = !Entry->bIsDone && Entry->Kind == EAgentActivityKind::Request;
	SetPart(TextArea, TextBox, bIsLive ? MakeLiveText(Entry->Text) : ActivityText::CutForScreen(Entry->Text, MaxShownLength));
	SetPart(ThinkingArea, ThinkingBox,
		bIsLive && Entry->Thinking.Len() > MaxLiveLength ? MakeLiveText(Entry->Thinking)
														 : ActivityText::CutForScreen(Entry->Thinking, MaxShownLength));
	if (bIsLive && bFollows)
	{
		// The end is what grows.
		Details->ScrollToEnd();
	}
	if (ShownId != Entry->Id)
	{
		// It does not change once the event is there, and may be long.
		SetPart(SentArea, SentBox, ActivityText::CutForScreen(Entry->Input, MaxShownLength));
		ShownId = Entry->Id;
	}
}

FString SAgentActivity::MakeCopy(const TArray<FEntry>& Copied)
{
	FString Text;
	for (const FEntry& Entry : Copied)
	{
		Text += (Text.IsEmpty() ? TEXT("") : TEXT("\n")) + ActivityText::MakeCopy(*Entry, FAgentActivity::GetSeconds(*Entry));
	}
	return Text;
}

TOptional<float> SAgentActivity::GetContextShare() const
{
	// Of the last one that is known: a request under way has no figures yet.
	for (int32 Index = Entries.Num() - 1; Index >= 0; --Index)
	{
		int64 Used = 0;
		int64 Left = 0;
		if (Entries[Index]->Kind == EAgentActivityKind::Request && Entries[Index]->GetContext(Used, Left))
		{
			return FMath::Clamp(
				static_cast<float>(static_cast<double>(Used) / static_cast<double>(Entries[Index]->ContextTokens)), 0.0f, 1.0f);
		}
	}
	return TOptional<float>();
}

FSlateColor SAgentActivity::GetContextColor() const
{
	const TOptional<float> Share = GetContextShare();
	const bool bIsNearlyFull = Share.IsSet() && Share.GetValue() >= FullContextShare;
	return FSlateColor(bIsNearlyFull ? FAppStyle::GetColor("Colors.Warning") : FLinearColor(FColor::FromHex(TEXT("7CB9FF"))));
}

FText SAgentActivity::GetModelText() const
{
	const FEntry Request = GetLastRequest();
	return FText::FromString(Request ? Request->Title : FAgentChoice::GetName());
}

FText SAgentActivity::GetFiguresText() const
{
	const Velmora::FAgentTurnStatus Turn = FAgentActivity::GetTurnStatus();
	if (Turn.bIsRunning)
	{
		return FText::FromString(ActivityText::DescribeTurn(Turn, 0.0));
	}
	int64 Tokens = 0;
	double Cost = 0.0;
	int32 Requests = 0;
	for (const FEntry& Entry : Entries)
	{
		Requests += Entry->Kind == EAgentActivityKind::Request ? 1 : 0;
		Tokens += FMath::Max<int64>(Entry->PromptTokens, 0) + FMath::Max<int64>(Entry->CompletionTokens, 0);
		Cost += FMath::Max(Entry->Cost, 0.0);
	}
	if (Requests == 0)
	{
		return LOCTEXT("Nothing", "No request yet. What goes to a model, and what comes back, is shown here.");
	}
	const FString Sum = FString::Printf(TEXT("%s %s, %s tokens"), *ActivityText::MakeCount(Requests),
		Requests == 1 ? TEXT("request") : TEXT("requests"), *ActivityText::MakeCount(Tokens));
	return FText::FromString(Cost > 0.0 ? Sum + FString::Printf(TEXT(", cost %.4f"), Cost) : Sum);
}

#undef LOCTEXT_NAMESPACE
