#include "Widgets/SChatWindow.h"

#include "Math/UnrealMathUtility.h"
#include "Style/AnimationHelper.h"
#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Images/SThrobber.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SChangedFilesList.h"
#include "Widgets/SEmptyState.h"
#include "Widgets/SMessageList.h"
#include "Widgets/SOverlay.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "VelmoraUI"

const float SChatWindow::ColorTransitionDuration = 0.3f;
const float SChatWindow::ConversationHistoryRefreshInterval = 60.0f;

void SChatWindow::Construct(const FArguments& InArgs)
{
	using Velmora::EConversationMode;
	ModeOptions.Empty();
	for (const EConversationMode Mode :
		{ EConversationMode::Advisor, EConversationMode::Code, EConversationMode::Assets, EConversationMode::General })
	{
		ModeOptions.Add(MakeShared<EConversationMode>(Mode));
	}

	// First of all, so that whatever asks for a frame finds whom to ask.
	SetUpStayingAwake();
	const TSharedRef<SWidget> Header = BuildHeaderArea();
	const TSharedRef<SWidget> Messages = BuildMessageArea();
	const TSharedRef<SWidget> Input = BuildInputArea();
	const TSharedRef<SWidget> Status = BuildStatusBar();
	// clang-format off
	ChildSlot
	[
		SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush("ToolPanel.GroupBorder"))
		.Padding(FMargin(0.0f))
		[
			SNew(SVerticalBox)
			+ SVerticalBox::Slot()
			.AutoHeight()
			[
				Header
			]
			+ SVerticalBox::Slot()
			.FillHeight(1.0f)
			[
				Messages
			]
			+ SVerticalBox::Slot()
			.AutoHeight()
			[
				SNew(SBox)
				.Visibility(this, &SChatWindow::GetInputAreaVisibility)
				[
					Input
				]
			]
			+ SVerticalBox::Slot()
			.AutoHeight()
			[
				Status
			]
		]
	];
	// clang-format on
}

void SChatWindow::SetViewModel(TSharedPtr<FChatViewModel> InViewModel)
{
	// 1. Nothing of the old conversation reaches this window any more.
	if (ViewModel.IsValid())
	{
		ViewModel->OnMessagesChanged().RemoveAll(this);
		ViewModel->OnStateChanged().RemoveAll(this);
		ViewModel->OnContextFilesChanged().RemoveAll(this);
	}
	if (UpdateGateHandle.IsValid())
	{
		Velmora::FUpdateGate::Get().OnStateChanged().Remove(UpdateGateHandle);
		UpdateGateHandle.Reset();
	}
	// 2. Frames are brought by the new one from here on, even by none: the window has to show that there is none.
	const TSharedPtr<FChatViewModel> OldViewModel = ViewModel;
	ViewModel = InViewModel;
	HearOfChanges(OldViewModel);
	if (!ViewModel.IsValid())
	{
		return;
	}
	// 3. What is pushed. All else is polled. The bindings are weak, so the end of the window needs no care.
	ViewModel->OnMessagesChanged().AddSP(this, &SChatWindow::OnMessagesChanged);
	ViewModel->OnStateChanged().AddSP(this, &SChatWindow::OnStateChanged);
	ViewModel->OnContextFilesChanged().AddSP(this, &SChatWindow::OnContextFilesChanged);
	UpdateGateHandle = Velmora::FUpdateGate::Get().OnStateChanged().AddSP(this, &SChatWindow::OnUpdateGateStateChanged);

	// 4. The colour stands at once: a blend would tell of a change that nobody has made.
	OnStateChanged(ViewModel->GetState());
	CurrentStatusColor = TargetStatusColor;
	ColorTransitionProgress = 1.0f;

	// 5. What the conversation holds already, and the stored ones beside it.
	OnMessagesChanged();
	SyncModeComboBoxSelection();
	RequestRefreshConversationHistoriesAsync();
}

void SChatWindow::OnMessagesChanged()
{
	// 1. The rows at once, but the scroll with the next tick: a burst of changes scrolls once.
	if (ViewModel.IsValid() && MessageList.IsValid())
	{
		MessageList->SetMessages(ViewModel->GetMessages());
		bPendingScrollToBottom = true;
	}
	// 2. A message may have come with changes of files.
	if (ChangedFilesList.IsValid())
	{
		ChangedFilesList->UpdateFileList();
	}
	// 3. The first message of a conversation gives it its title, and with another one the whole list is another.
	SyncComboBoxSelection(true);
	StayAwake.Start();
}

void SChatWindow::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	// 1. The agent and what it has said: from in here the reports come that set the flags below.
	if (ViewModel.IsValid())
	{
		ViewModel->Tick(InDeltaTime);
	}
	// 2. One scroll for all messages of this frame.
	if (bPendingScrollToBottom && MessageList.IsValid())
	{
		MessageList->ScrollToBottom();
		bPendingScrollToBottom = false;
	}
	// 3. The colour of the status.
	if (ColorTransitionProgress < 1.0f)
	{
		// Blends on from the colour of the last frame, so the target is near sooner than the curve alone would have it.
		ColorTransitionProgress = FMath::Clamp(ColorTransitionProgress + InDeltaTime / ColorTransitionDuration, 0.0f, 1.0f);
		CurrentStatusColor = FAnimationHelper::LerpColor(CurrentStatusColor, TargetStatusColor, ColorTransitionProgress);
	}
	// 4. The stored conversations, which another editor may have changed. The minute counts while the window ticks and wakes nobody.
	if (FConversationHistoryRefresh::IsDueAfter(InDeltaTime, ConversationHistoryRefreshInterval))
	{
		RequestRefreshConversationHistoriesAsync();
	}
	// 5. Last, since all of the above decides whether another frame is due.
	StayAwake.Update();
	LookNowAndThen.Update();
}

TSharedRef<SWidget> SChatWindow::BuildMessageArea()
{
	// clang-format off
	return SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush("NoBorder"))
		.BorderBackgroundColor(FSlateColor(FVelmoraUIStyles::GetBackgroundColor()))
		.Padding(FMargin(6.0f))
		[
			SAssignNew(MessageOverlay, SOverlay)
			+ SOverlay::Slot()
			[
				SAssignNew(MessageList, SMessageList)
				.Tag(FName("MessageList"))
				.AutoScroll(true)
				.Visibility(this, &SChatWindow::GetMessageListVisibility)
				.CanUndo(this, &SChatWindow::CanUndo)
				.OnUndoToMessage(this, &SChatWindow::OnUndoToMessage)
			]
			+ SOverlay::Slot()
			[
				SAssignNew(EmptyState, SEmptyState)
				.Tag(FName("EmptyState"))
				.Visibility(this, &SChatWindow::GetEmptyStateVisibility)
				.Title(LOCTEXT("EmptyStateTitle", "Welcome to Velmora"))
				.Message(LOCTEXT("EmptyStateMessage", "Start a conversation by typing a message below.\n\n"
					"Velmora AI Co-Developer can help you with:\n\n  • Ideation, game design, and technical scoping\n"
					"  • Building gameplay systems in C++ and Blueprints\n  • Debugging, optimizing, and refactoring code & Blueprints\n"
					"  • Creating game AI and behaviors (BTs, EQS, etc.)\n"
					"  • Creating and updating assets (IA, DT, DA, Enums, configs, etc.)\n\n"
					"💡 Tip: Enable 'Include Engine Source' in Settings to search Unreal Engine code."))
			]
		];
	// clang-format on
}

TSharedRef<SWidget> SChatWindow::BuildStatusBar()
{
	// clang-format off
	return SNew(SBox)
		.HeightOverride(24.0f)
		[
			SNew(SBorder)
			.BorderImage(FAppStyle::GetBrush("ToolPanel.DarkGroupBorder"))
			.Padding(FMargin(8.0f, 2.0f))
			[
				SNew(SHorizontalBox)
				+ SHorizontalBox::Slot()
				.AutoWidth()
				.VAlign(VAlign_Center)
				.Padding(0.0f, 0.0f, 8.0f, 0.0f)
				[
					SNew(SThrobber)
					.Tag(FName("BusyIndicator"))
					.Visibility(this, &SChatWindow::GetBusyIndicatorVisibility)
				]
				+ SHorizontalBox::Slot()
				.FillWidth(1.0f)
				.VAlign(VAlign_Center)
				[
					SNew(STextBlock)
					.Tag(FName("StatusText"))
					.Text(this, &SChatWindow::GetStatusText)
					.ColorAndOpacity(this, &SChatWindow::GetStatusColor)
					.Font(FAppStyle::GetFontStyle("NormalFontBold"))
				]
			]
		];
	// clang-format on
}

#undef LOCTEXT_NAMESPACE
