#include "Widgets/SChatWindow.h"

#include "Framework/Application/SlateApplication.h"
#include "Framework/Text/PlainTextLayoutMarshaller.h"
#include "InputCoreTypes.h"
#include "Settings/VelmoraSettings.h"
#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "UObject/Class.h"
#include "UObject/UObjectGlobals.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/IconButton.h"
#include "Widgets/Input/SMenuAnchor.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/PromptBox.h"
#include "Widgets/PromptLines.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SChangedFilesList.h"
#include "Widgets/SFileSearchDropdown.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "VelmoraUI"

namespace
{

	struct FModeWords
	{
		FText Label;
		FText ToolTip;
	};

	/** Made once: the selector asks each frame. */
	const FModeWords& GetModeWords(Velmora::EConversationMode Mode)
	{
		using Velmora::EConversationMode;
		static const FModeWords Advisor = { LOCTEXT("ModeAdvisor", "Advisor"),
			LOCTEXT("ModeAdvisor_Tooltip", "Project guidance and best practices (no code/asset changes). ") };
		static const FModeWords Code = { LOCTEXT("ModeCode", "Code"),
			LOCTEXT("ModeCode_Tooltip", "C++ code generation, refactoring, and implementation work.") };
		static const FModeWords Assets = { LOCTEXT("ModeAssets", "Assets"),
			LOCTEXT("ModeAssets_Tooltip", "Blueprints and asset-focused changes. ") };
		static const FModeWords General = { LOCTEXT("ModeGeneral", "General"),
			LOCTEXT("ModeGeneral_Tooltip", "Multi-purpose assistance across code, assets, and guidance.") };
		static const FModeWords Unknown = { LOCTEXT("UnknownMode", "Unknown"),
			LOCTEXT("UnknownMode_Tooltip", "Unknown conversation mode.") };
		switch (Mode)
		{
		case EConversationMode::Advisor:
			return Advisor;
		case EConversationMode::Code:
			return Code;
		case EConversationMode::Assets:
			return Assets;
		case EConversationMode::General:
			return General;
		}
		return Unknown;
	}

	/** Settings and stored conversations hold a number that may be any; one that is not a mode means General. */
	Velmora::EConversationMode ToKnownMode(uint8 Number)
	{
		using Velmora::EConversationMode;
		return Number <= static_cast<uint8>(EConversationMode::Assets) ? static_cast<EConversationMode>(Number)
																	   : EConversationMode::General;
	}

	Velmora::EConversationMode GetDefaultMode()
	{
		const UVelmoraSettings* Settings = GetDefault<UVelmoraSettings>();
		return Settings != nullptr ? ToKnownMode(Settings->DefaultConversationMode) : Velmora::EConversationMode::General;
	}

	FIconButton MakeActionButtonLook(FName Tag, FName Icon, double IconSize, const TAttribute<FSlateColor>& Tint)
	{
		FIconButton Look;
		Look.Tag = Tag;
		Look.Style = "SimpleButton";
		Look.ContentPadding = FMargin(6.0f);
		Look.Icon = Icon;
		Look.IconSize = IconSize;
		Look.Tint = Tint;
		return Look;
	}

	bool IsEitherControlDown(const FInputEvent& Event)
	{
		return Event.IsLeftControlDown() || Event.IsRightControlDown();
	}

} // namespace

TSharedRef<SWidget> SChatWindow::BuildInputArea()
{
	// The controller knows nothing of text boxes: it is given the mapping between places and indexes.
	AtTokenIndex = -1;
	AtFileController = MakeUnique<Velmora::UI::FAtFileReferenceController>(
		&SChatWindow::TextLocationToLinearIndex, &SChatWindow::LinearIndexToTextLocation);

	// clang-format off
	return SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush("ToolPanel.DarkGroupBorder"))
		.Padding(FMargin(8.0f, 4.0f, 8.0f, 4.0f))
		[
			SNew(SVerticalBox)
			+ SVerticalBox::Slot()
			.AutoHeight()
			.Padding(0.0f, 0.0f, 0.0f, 4.0f)
			[
				BuildContextChipsArea()
			]
			+ SVerticalBox::Slot()
			.AutoHeight()
			.HAlign(HAlign_Left)
			.Padding(0.0f, 0.0f, 0.0f, 4.0f)
			[
				SAssignNew(ChangedFilesList, SChangedFilesList)
				.Tag(FName("ChangedFilesList"))
				.ConversationId(this, &SChatWindow::GetCurrentConversationId)
				.OnFileClicked(this, &SChatWindow::OnFileClicked)
			]
			+ SVerticalBox::Slot()
			.AutoHeight()
			.Padding(0.0f, 0.0f, 0.0f, 4.0f)
			[
				SAssignNew(FileSearchAnchor, SMenuAnchor)
				.Placement(MenuPlacement_AboveAnchor)
				.OnGetMenuContent(this, &SChatWindow::BuildFileSearchDropdownContent)
				[
					BuildPrompt()
				]
			]
			+ SVerticalBox::Slot()
			.AutoHeight()
			[
				BuildActionRow()
			]
		];
	// clang-format on
}

TSharedRef<SWidget> SChatWindow::BuildPrompt()
{
	// clang-format off
	return SNew(SBox)
		.MinDesiredHeight(80.0f)
		.MaxDesiredHeight(200.0f)
		[
			SNew(SBorder)
			.BorderImage(FAppStyle::GetBrush("ToolPanel.GroupBorder"))
			.Padding(FMargin(4.0f))
			[
				SAssignNew(InputTextBox, TPromptBox<SMultiLineEditableTextBox>,
					FOnPromptCursorMoved::CreateSP(this, &SChatWindow::OnInputCursorMoved))
				.Tag(FName("InputTextBox"))
				.Marshaller(FPlainTextLayoutMarshaller::Create())
				.AllowMultiLine(true)
				.AutoWrapText(true)
				.HintText(LOCTEXT("InputHint", "Let's build something amazing… (@ to add context, Ctrl+Enter to send)"))
				.IsEnabled(this, &SChatWindow::IsInputTextBoxEnabled)
				.ToolTipText(LOCTEXT("InputTooltip", "Multi-line message input\n\nEnter: New line\nCtrl+Enter: Send message\n"
					"@: Open file search\n\nYou can type multi-line prompts for Velmora AI.\n"
					"Longer, detailed prompts often get better results."))
				.OnTextCommitted(this, &SChatWindow::OnInputTextCommitted)
				.OnTextChanged(this, &SChatWindow::OnInputTextChanged)
				.OnKeyDownHandler(this, &SChatWindow::OnInputKeyDown)
			]
		];
	// clang-format on
}

TSharedRef<SWidget> SChatWindow::BuildActionRow()
{
	// clang-format off
	return SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		.Padding(0.0f, 0.0f, 12.0f, 0.0f)
		[
			SNew(SBox)
			.MinDesiredWidth(110.0f)
			.MaxDesiredWidth(160.0f)
			[
				BuildModeSelector()
			]
		]
		+ SHorizontalBox::Slot()
		.FillWidth(1.0f)
		.VAlign(VAlign_Center)
		[
			SNew(STextBlock)
			.Tag(FName("CharacterCount"))
			.Text(this, &SChatWindow::GetCharacterCountText)
			.Font(FAppStyle::GetFontStyle("SmallFont"))
			.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextColorSecondary()))
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		.Padding(4.0f, 0.0f)
		[
			BuildSendButton()
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		.Padding(4.0f, 0.0f, 0.0f, 0.0f)
		[
			BuildPauseButton()
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		.Padding(4.0f, 0.0f, 0.0f, 0.0f)
		[
			BuildContinueButton()
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		[
			BuildCancelButton()
		];
	// clang-format on
}

TSharedRef<SWidget> SChatWindow::BuildModeSelector()
{
	// clang-format off
	return SAssignNew(ModeComboBox, SComboBox<TSharedPtr<Velmora::EConversationMode>>)
		.Tag(FName("ModeComboBox"))
		.OptionsSource(&ModeOptions)
		.ContentPadding(FMargin(8.0f, 2.0f))
		.IsEnabled(this, &SChatWindow::IsModeSelectorEnabled)
		.OnGenerateWidget(this, &SChatWindow::GenerateModeWidget)
		.OnSelectionChanged(this, &SChatWindow::OnModeSelectionChanged)
		.ToolTipText(LOCTEXT("ModeSelectorTooltip", "Select conversation mode\n\nOnly available before the first message is sent."))
		[
			SNew(STextBlock)
			.Text(this, &SChatWindow::GetCurrentModeText)
			.Font(FAppStyle::GetFontStyle("SmallFont"))
			.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextColorTertiary()))
		];
	// clang-format on
}

TSharedRef<SWidget> SChatWindow::BuildSendButton()
{
	FIconButton Look =
		MakeActionButtonLook("SendButton", "ChatAction_Send_50", 36.0, FSlateColor(FVelmoraUIStyles::GetPrimaryActionSendColor()));
	Look.OnClicked = FOnClicked::CreateSP(this, &SChatWindow::OnSendButtonClicked);
	Look.IsEnabled = TAttribute<bool>::CreateSP(this, &SChatWindow::IsSendButtonEnabled);
	Look.Visibility = TAttribute<EVisibility>::CreateSP(this, &SChatWindow::GetSendButtonVisibility);
	Look.ToolTip = LOCTEXT("SendTooltip",
		"Send message to Velmora AI\n\nKeyboard shortcut: Ctrl+Enter\n\n"
		"The AI will process your message and respond\nbased on the current conversation mode.");
	SendButton = MakeIconButton(Look);
	return SendButton.ToSharedRef();
}

TSharedRef<SWidget> SChatWindow::BuildPauseButton()
{
	FIconButton Look =
		MakeActionButtonLook("PauseButton", "ChatAction_Pause_50", 40.0, FSlateColor(FVelmoraUIStyles::GetPrimaryActionPauseResumeColor()));
	Look.OnClicked = FOnClicked::CreateSP(this, &SChatWindow::OnPauseClicked);
	Look.IsEnabled = TAttribute<bool>::CreateSP(this, &SChatWindow::IsPauseButtonEnabled);
	Look.Visibility = TAttribute<EVisibility>::CreateSP(this, &SChatWindow::GetPauseButtonVisibility);
	Look.ToolTip = LOCTEXT("PauseTooltip", "Pause processing\n\nYou can then continue, add more context via the input box, or cancel.");
	PauseButton = MakeIconButton(Look);
	return PauseButton.ToSharedRef();
}

TSharedRef<SWidget> SChatWindow::BuildContinueButton()
{
	FIconButton Look = MakeActionButtonLook(
		"ContinueButton", "ChatAction_Play_50", 36.0, FSlateColor(FVelmoraUIStyles::GetPrimaryActionPauseResumeColor()));
	Look.OnClicked = FOnClicked::CreateSP(this, &SChatWindow::OnContinueClicked);
	Look.IsEnabled = TAttribute<bool>::CreateSP(this, &SChatWindow::IsContinueButtonEnabled);
	Look.Visibility = TAttribute<EVisibility>::CreateSP(this, &SChatWindow::GetContinueButtonVisibility);
	Look.ToolTip = LOCTEXT("ContinueTooltip", "Resume processing\n\nAny text in the input box will be sent as additional context.");
	ContinueButton = MakeIconButton(Look);
	return ContinueButton.ToSharedRef();
}

TSharedRef<SWidget> SChatWindow::BuildCancelButton()
{
	// Never hidden: the row would jump under the pointer. It fades when there is nothing to cancel.
	FIconButton Look = MakeActionButtonLook(
		"CancelButton", "ChatAction_Cancel_50", 36.0, TAttribute<FSlateColor>::CreateSP(this, &SChatWindow::GetCancelButtonTint));
	Look.OnClicked = FOnClicked::CreateSP(this, &SChatWindow::OnCancelClicked);
	Look.IsEnabled = TAttribute<bool>::CreateSP(this, &SChatWindow::IsCancelButtonEnabled);
	Look.ToolTip = LOCTEXT("CancelTooltip",
		"Cancel ongoing operation\n\nStops the current AI response generation\n"
		"or tool execution in progress.");
	CancelButton = MakeIconButton(Look);
	return CancelButton.ToSharedRef();
}

FText SChatWindow::GetCharacterCountText() const
{
	return FText::Format(LOCTEXT("CharCount", "{0} characters"), CurrentInputText.ToString().Len());
}

FReply SChatWindow::OnPreviewKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	// Before the box sees the key, which would make a line of it. Not while sending is shut: then the key goes its usual way.
	const bool bSendKey = InKeyEvent.GetKey() == EKeys::Enter && IsEitherControlDown(InKeyEvent);
	if (bSendKey && InputTextBox.IsValid() && InputTextBox->HasKeyboardFocus() && IsSendButtonEnabled())
	{
		return OnSendButtonClicked();
	}
	return FReply::Unhandled();
}

void SChatWindow::OnInputTextChanged(const FText& NewText)
{
	// 1. From here on all rules work on line feeds alone: what the box shows and what is sent are the same text.
	CurrentInputText = FPromptLines::WithLineFeeds(NewText);
	// 2. The cursor may not have been reported yet, so the box is asked.
	if (InputTextBox.IsValid())
	{
		UpdateFileSearch(InputTextBox->GetCursorLocation());
	}
}

void SChatWindow::OnInputTextCommitted(const FText& NewText, ETextCommit::Type CommitType)
{
	// The second door to sending: reached when the preview declined. Whether the text goes out is the view model's word.
	const FModifierKeysState Keys = FSlateApplication::Get().GetModifierKeys();
	if (CommitType == ETextCommit::OnEnter && (Keys.IsLeftControlDown() || Keys.IsRightControlDown()))
	{
		OnSendButtonClicked();
	}
}

void SChatWindow::ClearInput()
{
	// The mirror first: the box reports its change, and whoever looks then must not find the old text.
	CurrentInputText = FText::GetEmpty();
	if (InputTextBox.IsValid())
	{
		InputTextBox->SetText(FText::GetEmpty());
	}
}

FReply SChatWindow::OnSendButtonClicked()
{
	if (ViewModel.IsValid() && !CurrentInputText.IsEmpty())
	{
		// A refused text stays, so that nothing typed is lost.
		const FString Text = CurrentInputText.ToString();
		if (ViewModel->SendMessage(Text))
		{
			ClearInput();
		}
	}
	return FReply::Handled();
}

FReply SChatWindow::OnPauseClicked()
{
	if (ViewModel.IsValid())
	{
		ViewModel->PauseConversation();
	}
	return FReply::Handled();
}

FReply SChatWindow::OnContinueClicked()
{
	if (ViewModel.IsValid())
	{
		// An empty text goes on as if nothing had happened.
		const FString Text = CurrentInputText.ToString();
		ViewModel->ResumeConversation(Text);
		ClearInput();
	}
	return FReply::Handled();
}

FReply SChatWindow::OnCancelClicked()
{
	if (ViewModel.IsValid())
	{
		ViewModel->CancelConversation();
	}
	return FReply::Handled();
}

FReply SChatWindow::OnNewConversationClicked()
{
	if (ViewModel.IsValid())
	{
		ViewModel->StartNewConversation(GetDefaultMode());
		SyncModeComboBoxSelection();
		RequestRefreshConversationHistoriesAsync();
	}
	return FReply::Handled();
}

FReply SChatWindow::OnSidepanelButtonClicked()
{
	return FReply::Handled();
}

bool SChatWindow::IsModeSelectorEnabled() const
{
	const TSharedPtr<Velmora::FConversationMetadata> Metadata = ViewModel.IsValid() ? ViewModel->GetCurrentConversationMetadata() : nullptr;
	return Metadata.IsValid() && Metadata->GetMessageCount() == 0;
}

Velmora::EConversationMode SChatWindow::GetEffectiveMode() const
{
	return ViewModel.IsValid() && ViewModel->HasActiveConversation() ? ViewModel->GetMode() : GetDefaultMode();
}

FText SChatWindow::GetCurrentModeText() const
{
	return GetModeWords(ToKnownMode(static_cast<uint8>(GetEffectiveMode()))).Label;
}

TSharedRef<SWidget> SChatWindow::GenerateModeWidget(TSharedPtr<Velmora::EConversationMode> Item)
{
	const FModeWords& Words = GetModeWords(Item.IsValid() ? *Item : Velmora::EConversationMode::General);
	return SNew(STextBlock).Text(Words.Label).ToolTipText(Words.ToolTip).Font(FAppStyle::GetFontStyle("SmallFont"));
}

void SChatWindow::OnModeSelectionChanged(TSharedPtr<Velmora::EConversationMode> Item, ESelectInfo::Type SelectInfo)
{
	// A selection made from code, by SyncModeComboBoxSelection, arrives as a navigation.
	if (!Item.IsValid() || SelectInfo == ESelectInfo::OnNavigation || !ViewModel.IsValid())
	{
		return;
	}
	ViewModel->SetModeForEmptyConversation(*Item);
	// A refused change snaps back.
	SyncModeComboBoxSelection();
}

void SChatWindow::SyncModeComboBoxSelection()
{
	if (!ModeComboBox.IsValid())
	{
		return;
	}
	// By value: the options are objects of their own, made once in Construct.
	const Velmora::EConversationMode Mode = GetEffectiveMode();
	for (const TSharedPtr<Velmora::EConversationMode>& Option : ModeOptions)
	{
		if (Option.IsValid() && *Option == Mode)
		{
			ModeComboBox->SetSelectedItem(Option);
			return;
		}
	}
}

#undef LOCTEXT_NAMESPACE
