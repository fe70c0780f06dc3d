#include "Widgets/SChatWindow.h"

#include "Brushes/SlateColorBrush.h"
#include "DesktopPlatformModule.h"
#include "IDesktopPlatform.h"
#include "Misc/DateTime.h"
#include "Misc/MessageDialog.h"
#include "Misc/Paths.h"
#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"
#include "Widgets/WidgetLook.h"

#define LOCTEXT_NAMESPACE "VelmoraUI"

TSharedRef<SWidget> SChatWindow::BuildHeaderArea()
{
	static const FSlateColorBrush BackgroundBrush(FVelmoraUIStyles::GetBackgroundColor());
	static const FSlateColorBrush HistoryBrush(FVelmoraUIStyles::GetInputBackgroundColor());
	// clang-format off
	return SNew(SBorder)
		.BorderImage(&BackgroundBrush)
		.Padding(FMargin(8.0f, 4.0f, 8.0f, 4.0f))
		[
			SNew(SHorizontalBox)
			+ SHorizontalBox::Slot()
			.FillWidth(1.0f)
			.Padding(0.0f, 0.0f, 8.0f, 0.0f)
			[
				SNew(SBorder)
				.BorderImage(&HistoryBrush)
				.Padding(FMargin(4.0f, 2.0f))
				[
					BuildConversationSelector()
				]
			]
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.Padding(4.0f, 0.0f)
			[
				BuildNewConversationButton()
			]
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.Padding(4.0f, 0.0f)
			[
				BuildExportButton()
			]
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.Padding(4.0f, 0.0f)
			[
				BuildClearButton()
			]
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.Padding(4.0f, 0.0f)
			[
				BuildUpdateButton()
			]
		];
	// clang-format on
}

/** Wherein the plain buttons of the header differ. */
struct SChatWindow::FHeaderButton
{
	TSharedPtr<SButton> SChatWindow::*Button;
	FName Tag;
	FName Icon;
	FText Label;
	FText ToolTip;
	FReply (SChatWindow::*OnClicked)();
	TAttribute<bool> IsEnabled = true;
};

TSharedRef<SWidget> SChatWindow::BuildNewConversationButton()
{
	return BuildHeaderButton(
		{ &SChatWindow::NewConversationButton, "NewConversationButton", "Toolbar_NewChat_32", LOCTEXT("NewConversationLabel", "New"),
			LOCTEXT("NewConversationTooltip_Short", "Start a new chat and keep this conversation in history."),
			&SChatWindow::OnNewConversationClicked, TAttribute<bool>::CreateSP(this, &SChatWindow::IsNewConversationButtonEnabled) });
}

TSharedRef<SWidget> SChatWindow::BuildExportButton()
{
	return BuildHeaderButton({ &SChatWindow::ExportButton, "ExportButton", "Toolbar_Export_32", LOCTEXT("ExportLabel", "Export"),
		LOCTEXT("ExportTooltip_Short", "Export this chat as a file."), &SChatWindow::OnExportClicked });
}

TSharedRef<SWidget> SChatWindow::BuildClearButton()
{
	return BuildHeaderButton({ &SChatWindow::ClearButton, "ClearButton", "Toolbar_ClearChat_32", LOCTEXT("ClearLabel", "Clear"),
		LOCTEXT("ClearTooltip_Short", "Delete this chat from history. This can’t be undone."), &SChatWindow::OnClearHistoryClicked });
}

TSharedRef<SWidget> SChatWindow::BuildHeaderButton(const FHeaderButton& Look)
{
	// clang-format off
	return SAssignNew(this->*Look.Button, SButton)
		.Tag(Look.Tag)
		.ButtonStyle(FAppStyle::Get(), "SimpleButton")
		.ToolTipText(Look.ToolTip)
		.OnClicked(this, Look.OnClicked)
		.IsEnabled(Look.IsEnabled)
		.ContentPadding(FMargin(6.0f, 4.0f))
		[
			BuildHeaderButtonContent(Look)
		];
	// clang-format on
}

TSharedRef<SWidget> SChatWindow::BuildHeaderButtonContent(const FHeaderButton& Look)
{
	// The button itself does not exist before its content does, so its tint is asked for by where it will stand.
	const TWeakPtr<SChatWindow> WeakWindow = SharedThis(this);
	const auto GetTint = [WeakWindow, Button = Look.Button]
	{
		const TSharedPtr<SChatWindow> Window = WeakWindow.Pin();
		return GetActionIconTint(Window.IsValid() ? Window.Get()->*Button : nullptr);
	};
	// clang-format off
	return SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		[
			SNew(SImage)
			.Image(FVelmoraUIStyles::GetBrush(Look.Icon))
			.ColorAndOpacity_Lambda(GetTint)
			.DesiredSizeOverride(FVector2D(20.0, 20.0))
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		.Padding(6.0f, 0.0f, 0.0f, 0.0f)
		[
			SNew(STextBlock)
			.Text(Look.Label)
			.Font(FAppStyle::GetFontStyle("NormalFont"))
			.Visibility(this, &SChatWindow::GetHeaderLabelVisibility)
		];
	// clang-format on
}

FReply SChatWindow::OnExportClicked()
{
	// Without a desktop there is nobody to ask for a name, and none is made up.
	IDesktopPlatform* Desktop = ViewModel.IsValid() ? FDesktopPlatformModule::Get() : nullptr;
	if (Desktop == nullptr)
	{
		return FReply::Handled();
	}
	// A suggestion; nothing appends an extension to what is typed instead.
	const FString Folder = FPaths::Combine(FPaths::ProjectSavedDir(), TEXT("Velmora"));
	const FString Name = FString::Printf(TEXT("conversation_%s"), *FDateTime::Now().ToString(TEXT("%Y%m%d_%H%M%S")));
	const FString Types = TEXT("Markdown Files (*.md)|*.md|Plain Text (*.txt)|*.txt|HTML Files (*.html)|*.html|JSON Files (*.json)|*.json");
	const TSharedPtr<FChatViewModel> Exported = ViewModel; // The dialog runs frames of its own.
	TArray<FString> Files;
	if (Desktop->SaveFileDialog(nullptr, TEXT("Export Conversation"), Folder, Name, Types, 0, Files) && Files.Num() > 0)
	{
		// What was typed decides, not the filter. A failed save is reported by whoever writes files.
		Exported->ExportConversation(Files[0], FConversationExport::GetFormatOfFile(Files[0]));
	}
	return FReply::Handled();
}

FReply SChatWindow::OnClearHistoryClicked()
{
	const TSharedPtr<FChatViewModel> Cleared = ViewModel; // The dialog runs frames of its own.
	if (!Cleared.IsValid())
	{
		return FReply::Handled();
	}
	const FText Question = LOCTEXT("ClearConversationConfirmMessage",
		"This will permanently delete this conversation from your history.\nAll messages in this chat will be removed.\n\nYou can’t undo "
		"this action.");
	if (FMessageDialog::Open(EAppMsgType::YesNo, Question, LOCTEXT("ClearConversationConfirmTitle", "Delete this chat?")) !=
		EAppReturnType::Yes)
	{
		return FReply::Handled();
	}
	// First what is stored, while its name is known; the list in the window is cleared in any case.
	const TSharedPtr<Velmora::FConversationMetadata> Metadata = Cleared->GetCurrentConversationMetadata();
	if (Metadata.IsValid())
	{
		Cleared->DeleteConversationHistory(Metadata->Id);
	}
	Cleared->ClearHistory();
	RequestRefreshConversationHistoriesAsync();
	return FReply::Handled();
}

#undef LOCTEXT_NAMESPACE
