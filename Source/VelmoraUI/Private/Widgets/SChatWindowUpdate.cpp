#include "Widgets/SChatWindow.h"

#include "Misc/MessageDialog.h"
#include "Modules/ModuleManager.h"
#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "UpdateGate.h"
#include "VelmoraAutoDownloadFrameworkModule.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "VelmoraUI"

using Velmora::EUpdateGateState;
using Velmora::FUpdateGate;

TSharedRef<SWidget> SChatWindow::BuildUpdateButton()
{
	// clang-format off
	return SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush("WhiteBrush"))
		.BorderBackgroundColor(FSlateColor(FVelmoraUIStyles::GetUpdateAvailableColor()))
		.Visibility(this, &SChatWindow::GetUpdateButtonVisibility)
		[
			SAssignNew(UpdateButton, SButton)
			.Tag(FName("UpdateButton"))
			.ButtonStyle(FAppStyle::Get(), "SimpleButton")
			.ToolTipText(LOCTEXT("UpdateAvailableTooltip", "A new version of Velmora is available. Click to download and install on "
				"next restart."))
			.OnClicked(this, &SChatWindow::OnUpdateButtonClicked)
			.IsEnabled(this, &SChatWindow::IsUpdateButtonEnabled)
			.ContentPadding(FMargin(8.0f, 4.0f))
			[
				SNew(SHorizontalBox)
				+ SHorizontalBox::Slot()
				.AutoWidth()
				.VAlign(VAlign_Center)
				[
					SNew(SImage)
					.Image(FAppStyle::GetBrush("Icons.Download"))
					.ColorAndOpacity(FSlateColor(FLinearColor::White))
					.DesiredSizeOverride(FVector2D(16.0, 16.0))
				]
				+ SHorizontalBox::Slot()
				.AutoWidth()
				.VAlign(VAlign_Center)
				.Padding(6.0f, 0.0f, 0.0f, 0.0f)
				[
					SNew(STextBlock)
					.Text(this, &SChatWindow::GetUpdateButtonText)
					.Font(FAppStyle::GetFontStyle("NormalFont"))
					.ColorAndOpacity(FSlateColor(FLinearColor::White))
					.Visibility(this, &SChatWindow::GetHeaderLabelVisibility)
				]
			]
		];
	// clang-format on
}

void SChatWindow::OnUpdateGateStateChanged(Velmora::EUpdateGateState NewState)
{
	// All that depends on the gate is polled.
}

bool SChatWindow::IsUpdateButtonVisible() const
{
	const EUpdateGateState Gate = FUpdateGate::Get().GetState();
	return Gate == EUpdateGateState::UpdateAvailable || Gate == EUpdateGateState::Downloading || Gate == EUpdateGateState::RestartRequired;
}

EVisibility SChatWindow::GetUpdateButtonVisibility() const
{
	return IsUpdateButtonVisible() ? EVisibility::Visible : EVisibility::Collapsed;
}

bool SChatWindow::IsUpdateButtonEnabled() const
{
	return FUpdateGate::Get().GetState() == EUpdateGateState::UpdateAvailable;
}

FText SChatWindow::GetUpdateButtonText() const
{
	const FUpdateGate& Gate = FUpdateGate::Get();
	switch (Gate.GetState())
	{
	case EUpdateGateState::Downloading:
	{
		// With a figure the message is the progress.
		const FString Message = Gate.GetMessage();
		return Message.Contains(TEXT("%")) ? FText::FromString(Message) : LOCTEXT("DownloadingUpdate", "Downloading...");
	}
	case EUpdateGateState::RestartRequired:
		return LOCTEXT("RestartRequired", "Restart Required");
	case EUpdateGateState::Checking:
	case EUpdateGateState::Ready:
	case EUpdateGateState::UpdateAvailable:
		break;
	}
	// In every other state the button offers, or is not shown at all.
	const FString Version = Gate.GetVersion();
	if (Version.IsEmpty())
	{
		return LOCTEXT("UpdateAvailable", "Update Available");
	}
	return FText::Format(LOCTEXT("UpdateAvailableVersion", "Update Available ({0})"), FText::FromString(Version));
}

FText SChatWindow::GetUpdateNoticeText() const
{
	const FUpdateGate& Gate = FUpdateGate::Get();
	// The gate's own words come first where it has some: it knows best what goes on.
	const FString Message = Gate.GetMessage();
	const FString Version = Gate.GetVersion();
	FString Notice;
	switch (Gate.GetState())
	{
	case EUpdateGateState::Checking:
		Notice = TEXT("Initializing (checking for updates…)");
		break;
	case EUpdateGateState::UpdateAvailable:
		Notice = (Version.IsEmpty() ? FString(TEXT("Update available")) : TEXT("Update available: ") + Version) +
			TEXT(". Click the 'Update Available' button in the top bar to download.");
		break;
	case EUpdateGateState::Downloading:
		Notice = Message.IsEmpty() ? FString(TEXT("Downloading update...")) : Message;
		break;
	case EUpdateGateState::RestartRequired:
		Notice = Message.IsEmpty() ? FString(TEXT("A Velmora update has been downloaded. Restart the editor to install.")) : Message;
		if (!Version.IsEmpty())
		{
			Notice = FString::Printf(TEXT("%s (Version: %s)"), *Notice, *Version);
		}
		break;
	case EUpdateGateState::Ready:
		break;
	}
	return FText::FromString(Notice);
}

EVisibility SChatWindow::GetUpdateNoticeVisibility() const
{
	// An offer needs no notice: its button says it.
	const EUpdateGateState Gate = FUpdateGate::Get().GetState();
	const bool bUnderWay =
		Gate == EUpdateGateState::Checking || Gate == EUpdateGateState::Downloading || Gate == EUpdateGateState::RestartRequired;
	return bUnderWay ? EVisibility::Visible : EVisibility::Collapsed;
}

FReply SChatWindow::OnUpdateButtonClicked()
{
	const FText Question =
		LOCTEXT("ConfirmUpdateMessage", "This will download and apply the update on next editor startup.\n\nDo you want to proceed?");
	// Asked first, since the download begins at once and installs at the next start.
	if (FMessageDialog::Open(EAppMsgType::YesNo, Question, LOCTEXT("ConfirmUpdateTitle", "Download Update")) == EAppReturnType::Yes)
	{
		FModuleManager::Get()
			.LoadModuleChecked<FVelmoraAutoDownloadFrameworkModule>("VelmoraAutoDownloadFramework")
			.TriggerManualDownload();
	}
	return FReply::Handled();
}

#undef LOCTEXT_NAMESPACE
