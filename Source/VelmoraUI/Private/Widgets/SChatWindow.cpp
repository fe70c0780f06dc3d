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
#include "Widgets/SEmptyState.h"
#include "Widgets/SMessageList.h"
#include "Widgets/SOverlay.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "VelmoraUI"

const float SChatWindow::ColorTransitionDuration = 0.3f;
const float SChatWindow::ConversationHistoryRefreshInterval = 60.0f;

namespace
{

	/** Seconds since the last refresh of the history. One for all windows: two of them ask twice as often, which does no harm. */
	float HistoryRefreshAccumulator = 0.0f;

} // namespace

void SChatWindow::Construct(const FArguments& InArgs)
{
	using Velmora::EConversationMode;
	ModeOptions.Empty();
	for (const EConversationMode Mode :
		{ EConversationMode::Advisor, EConversationMode::Code, EConversationMode::Assets, EConversationMode::General })
	{
		ModeOptions.Add(MakeShared<EConversationMode>(Mode));
	}

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
	const TSharedPtr<FChatViewModel> OldViewModel = ViewModel;
	ViewModel = InViewModel;
	HearOfChanges(OldViewModel);
	if (!ViewModel.IsValid())
	{
		return;
	}
	ViewModel->OnMessagesChanged().AddSP(this, &SChatWindow::OnMessagesChanged);
	ViewModel->OnStateChanged().AddSP(this, &SChatWindow::OnStateChanged);
	ViewModel->OnContextFilesChanged().AddSP(this, &SChatWindow::OnContextFilesChanged);
	UpdateGateHandle = Velmora::FUpdateGate::Get().OnStateChanged().AddSP(this, &SChatWindow::OnUpdateGateStateChanged);

	OnStateChanged(ViewModel->GetState());
	CurrentStatusColor = TargetStatusColor;
	ColorTransitionProgress = 1.0f;

	OnMessagesChanged();
	SyncModeComboBoxSelection();
	RequestRefreshConversationHistoriesAsync();
}

void SChatWindow::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	if (ViewModel.IsValid())
	{
		ViewModel->Tick(InDeltaTime);
	}
	if (bPendingScrollToBottom && MessageList.IsValid())
	{
		MessageList->ScrollToBottom();
		bPendingScrollToBottom = false;
	}
	if (ColorTransitionProgress < 1.0f)
	{
		// Blends on from the colour of the last frame, so the target is near sooner than the curve alone would have it.
		ColorTransitionProgress = FMath::Clamp(ColorTransitionProgress + InDeltaTime / ColorTransitionDuration, 0.0f, 1.0f);
		CurrentStatusColor = FAnimationHelper::LerpColor(CurrentStatusColor, TargetStatusColor, ColorTransitionProgress);
	}
	HistoryRefreshAccumulator += InDeltaTime;
	if (HistoryRefreshAccumulator >= ConversationHistoryRefreshInterval)
	{
		RequestRefreshConversationHistoriesAsync();
		HistoryRefreshAccumulator = 0.0f;
	}
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
