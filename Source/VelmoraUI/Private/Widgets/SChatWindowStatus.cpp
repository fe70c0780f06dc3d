#include "Widgets/SChatWindow.h"

#include "Math/UnrealMathUtility.h"
#include "Style/VelmoraUIStyles.h"
#include "UpdateGate.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/WidgetLook.h"

#define LOCTEXT_NAMESPACE "VelmoraUI"

namespace
{

	FLinearColor GetColorOfState(Velmora::EConversationState State)
	{
		using Velmora::EConversationState;
		switch (State)
		{
		case EConversationState::Thinking:
		case EConversationState::ExecutingTools:
			return FVelmoraUIStyles::GetStatusBusyColor();
		case EConversationState::AwaitingInput:
			return FVelmoraUIStyles::GetStatusReadyColor();
		case EConversationState::Error:
			return FVelmoraUIStyles::GetStatusErrorColor();
		case EConversationState::NotStarted:
		case EConversationState::Initializing:
		case EConversationState::Ready:
		case EConversationState::Paused:
		case EConversationState::Completed:
		case EConversationState::Cancelled:
			break;
		}
		return FVelmoraUIStyles::GetStatusIdleColor();
	}

	/** The installed version may be used, whether or not there is a newer one. */
	bool DoesGateAllowInput()
	{
		const Velmora::EUpdateGateState Gate = Velmora::FUpdateGate::Get().GetState();
		return Gate == Velmora::EUpdateGateState::Ready || Gate == Velmora::EUpdateGateState::UpdateAvailable;
	}

} // namespace

void SChatWindow::OnStateChanged(Velmora::EConversationState NewState)
{
	// Several states share a colour; a change between those must not start a running blend over.
	const FLinearColor NewTarget = GetColorOfState(NewState);
	constexpr float Tolerance = 0.01f;
	const bool bSameTarget = FMath::Abs(NewTarget.R - TargetStatusColor.R) < Tolerance &&
		FMath::Abs(NewTarget.G - TargetStatusColor.G) < Tolerance && FMath::Abs(NewTarget.B - TargetStatusColor.B) < Tolerance &&
		FMath::Abs(NewTarget.A - TargetStatusColor.A) < Tolerance;
	if (!bSameTarget)
	{
		TargetStatusColor = NewTarget;
		ColorTransitionProgress = 0.0f;
	}
	StayAwake.Start();
}

FText SChatWindow::GetStatusText() const
{
	return ViewModel.IsValid() ? FText::FromString(ViewModel->GetStatusText()) : LOCTEXT("NotInitialized", "Not initialized");
}

FSlateColor SChatWindow::GetStatusColor() const
{
	// An update speaks louder than whatever the conversation does.
	if (IsUpdateButtonVisible())
	{
		return FSlateColor(FVelmoraUIStyles::GetUpdateAvailableColor());
	}
	return FSlateColor(ViewModel.IsValid() ? CurrentStatusColor : FVelmoraUIStyles::GetStatusIdleColor());
}

bool SChatWindow::IsBusy() const
{
	return ViewModel.IsValid() && ViewModel->IsBusy();
}

bool SChatWindow::IsPaused() const
{
	return ViewModel.IsValid() && ViewModel->GetState() == Velmora::EConversationState::Paused;
}

EVisibility SChatWindow::GetSendButtonVisibility() const
{
	using Velmora::EConversationState;
	if (!ViewModel.IsValid())
	{
		return EVisibility::Visible;
	}
	const EConversationState State = ViewModel->GetState();
	return VisibleIf(
		State != EConversationState::Paused && State != EConversationState::Thinking && State != EConversationState::ExecutingTools);
}

bool SChatWindow::IsSendButtonEnabled() const
{
	return ViewModel.IsValid() && ViewModel->CanSendMessage() && !CurrentInputText.IsEmpty();
}

EVisibility SChatWindow::GetPauseButtonVisibility() const
{
	return VisibleIf(IsBusy() && !IsPaused());
}

bool SChatWindow::IsPauseButtonEnabled() const
{
	return IsBusy();
}

EVisibility SChatWindow::GetContinueButtonVisibility() const
{
	return VisibleIf(IsPaused());
}

bool SChatWindow::IsContinueButtonEnabled() const
{
	return ViewModel.IsValid() && !IsBusy();
}

bool SChatWindow::IsCancelButtonEnabled() const
{
	// While a turn is being paused it is still busy, and neither way out is open until it has stopped.
	return ViewModel.IsValid() && (IsPaused() ? !IsBusy() : IsBusy());
}

FSlateColor SChatWindow::GetCancelButtonTint() const
{
	// A button that is disabled does not answer the pointer either.
	const bool bEnabled = IsCancelButtonEnabled();
	const float Alpha = bEnabled ? 1.0f : 0.4f;
	const bool bHovered = bEnabled && CancelButton.IsValid() && CancelButton->IsHovered();
	return FSlateColor(
		bHovered ? FVelmoraUIStyles::GetSecondaryActionNeutralHoverColor(Alpha) : FVelmoraUIStyles::GetSecondaryActionNeutralColor(Alpha));
}

bool SChatWindow::IsNewConversationButtonEnabled() const
{
	return ViewModel.IsValid() && !IsBusy();
}

bool SChatWindow::IsConversationDropdownEnabled() const
{
	return ViewModel.IsValid() && !IsBusy();
}

EVisibility SChatWindow::GetHeaderLabelVisibility() const
{
	return VisibleIf(!IsCompactHeader());
}

EVisibility SChatWindow::GetBusyIndicatorVisibility() const
{
	return VisibleIf(IsBusy());
}

EVisibility SChatWindow::GetMessageListVisibility() const
{
	return VisibleIf(ViewModel.IsValid());
}

EVisibility SChatWindow::GetEmptyStateVisibility() const
{
	return VisibleIf(ViewModel.IsValid() && ViewModel->GetMessages().Num() == 0);
}

EVisibility SChatWindow::GetContextChipsVisibility() const
{
	return VisibleIf(ViewModel.IsValid() && ViewModel->HasContextFiles());
}

EVisibility SChatWindow::GetInputAreaVisibility() const
{
	return VisibleIf(DoesGateAllowInput());
}

bool SChatWindow::IsInputTextBoxEnabled() const
{
	return DoesGateAllowInput();
}

bool SChatWindow::IsCompactHeader() const
{
	// Slate units. Before the first layout the width is 0, and nothing is known yet.
	constexpr double CompactBelow = 720.0;
	const double Width = GetCachedGeometry().GetLocalSize().X;
	return Width > 0.0 && Width < CompactBelow;
}

bool SChatWindow::CanUndo() const
{
	return ViewModel.IsValid() && ViewModel->CanUndo();
}

void SChatWindow::OnUndoToMessage(TSharedPtr<FChatMessage> Message)
{
	if (const TSharedPtr<FChatViewModel> Kept = ViewModel) // The question runs frames of its own.
	{
		Kept->UndoToMessage(Message);
	}
}

#undef LOCTEXT_NAMESPACE
