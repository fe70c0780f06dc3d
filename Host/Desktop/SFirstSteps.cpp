#include "SFirstSteps.h"

#include "AgentPages.h"
#include "Async/Async.h"
#include "Host/HostAtomicFile.h"
#include "Host/HostFolders.h"
#include "Host/StoreLocation.h"
#include "OpenChat.h"
#include "PromptBox.h"
#include "Styling/AppStyle.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SWrapBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "FirstSteps"

namespace
{
	// Commands that the built-in agent carries out in any project.
	const TCHAR* const ExamplePrompts[] = { TEXT("what is in this project?"), TEXT("find main"), TEXT("help") };

	TSharedRef<STextBlock> MakeWords(const FText& Words)
	{
		// clang-format off
		return SNew(STextBlock)
			.Text(Words)
			.AutoWrapText(true)
			.ColorAndOpacity(FSlateColor(FAppStyle::GetColor("Colors.Foreground")));
		// clang-format on
	}
}

void SFirstSteps::Construct(const FArguments& InArgs)
{
	const auto GetVisibility = [this]() { return bIsOpen && FOpenChat::IsInFront() ? EVisibility::Visible : EVisibility::Collapsed; };
	const TSharedRef<SVerticalBox> Lines = SNew(SVerticalBox);
	Lines->AddSlot()
		.AutoHeight()[SNew(STextBlock).Text(LOCTEXT("Title", "First steps")).TextStyle(FAppStyle::Get(), TEXT("NormalText.Important"))];
	Lines->AddSlot().AutoHeight().Padding(0.0f, 4.0f)[MakePrompts()];
	Lines->AddSlot().AutoHeight()[MakeWords(LOCTEXT("Agent",
		"The built-in agent takes commands and works on this machine alone: while it answers, nothing is sent anywhere. A model of yours, "
		"here or on a server, can answer in its place: connect it in the settings. The title of the window says who answers."))];
	Kept = MakeWords(FText::GetEmpty());
	const Velmora::FStoreLocation Location = Velmora::GetStoreLocation();
	TellFolder(Location.KeepsConversations() ? Location.Folder : FString());
	Lines->AddSlot().AutoHeight().Padding(0.0f, 4.0f)[Kept.ToSharedRef()];
	Lines->AddSlot().AutoHeight()[MakeButtons()];
	// clang-format off
	ChildSlot
	[
		SNew(SBorder)
		.Tag("FirstSteps")
		.BorderImage(FAppStyle::GetBrush("ToolPanel.GroupBorder"))
		.Padding(FMargin(12.0f, 8.0f))
		.Visibility_Lambda(GetVisibility)
		[
			Lines
		]
	];
	// clang-format on
}

void SFirstSteps::TellFolder(const FString& Folder)
{
	Kept->SetText(Folder.IsEmpty()
			? LOCTEXT("KeptNowhere",
				  "This session keeps no history: conversations and what can be undone are gone when it ends. Settings are kept in the "
				  "project.")
			: FText::Format(
				  LOCTEXT("Kept",
					  "Conversations, the search over them and what can be undone are kept in {0}, for you alone; settings in the "
					  "project."),
				  FText::FromString(Folder)));
}

TSharedRef<SWidget> SFirstSteps::MakePrompts()
{
	const TSharedRef<SWrapBox> Prompts = SNew(SWrapBox).UseAllottedSize(true).InnerSlotPadding(FVector2D(8.0, 4.0));
	Prompts->AddSlot().VAlign(VAlign_Center)[MakeWords(LOCTEXT("Try", "Try:"))];
	for (const TCHAR* const Prompt : ExamplePrompts)
	{
		const auto OnClicked = [Prompt]()
		{
			// Not sent yet: the user sees what a prompt is and where it stands.
			FPromptBox::PutBefore(Prompt);
			FPromptBox::Focus();
			return FReply::Handled();
		};
		Prompts->AddSlot()[SNew(SButton)
							   .Text(FText::FromString(Prompt))
							   .ToolTipText(LOCTEXT("TryTip", "Put it into the box below; Ctrl+Enter sends it"))
							   .OnClicked_Lambda(OnClicked)];
	}
	return Prompts;
}

TSharedRef<SWidget> SFirstSteps::MakeButtons()
{
	const auto OnConnect = []()
	{
		FAgentPages::Show(FAgentPages::GetConnectionsName());
		return FReply::Handled();
	};
	const auto OnClose = [this]()
	{
		Close();
		return FReply::Handled();
	};
	const TSharedRef<SWrapBox> Buttons = SNew(SWrapBox).UseAllottedSize(true).InnerSlotPadding(FVector2D(8.0, 4.0));
	Buttons->AddSlot()[SNew(SButton)
						   .Tag("FirstStepsConnect")
						   .Text(LOCTEXT("Connect", "Connect a Model"))
						   .ToolTipText(LOCTEXT("ConnectTip", "Open the page of the connections"))
						   .OnClicked_Lambda(OnConnect)];
	Buttons->AddSlot()[SNew(SButton)
						   .Tag("CloseFirstSteps")
						   .Text(LOCTEXT("Close", "Close"))
						   .ToolTipText(LOCTEXT("CloseTip", "Help, First Steps shows this again"))
						   .OnClicked_Lambda(OnClose)];
	return Buttons;
}

void SFirstSteps::ShowOnce(const FString& Path)
{
	if (HostGetPathKind(Path) != EHostPathKind::Missing)
	{
		return;
	}
	Open();
	// Who cannot write it down shows it again next time.
	AsyncTask(ENamedThreads::AnyBackgroundThreadNormalTask,
		[Path]
		{
			FString Reason;
			HostSaveFile(Path, "1\n", 2, HostWritePrivate, Reason);
		});
}

void SFirstSteps::Open()
{
	bIsOpen = true;
	Invalidate(EInvalidateWidgetReason::Layout);
}

void SFirstSteps::Close()
{
	bIsOpen = false;
	Invalidate(EInvalidateWidgetReason::Layout);
	FPromptBox::Focus();
}

void SFirstSteps::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	const TSharedPtr<FChatViewModel> ViewModel = FOpenChat::GetViewModel();
	const bool bIsBusy = ViewModel && ViewModel->IsBusy();
	if (bIsOpen && bIsBusy && !bWasBusy)
	{
		// Who has sent a prompt needs the room for the answer. The keyboard stays where it is.
		bIsOpen = false;
		Invalidate(EInvalidateWidgetReason::Layout);
	}
	bWasBusy = bIsBusy;
}

FReply SFirstSteps::OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	if (InKeyEvent.GetKey() == EKeys::Escape)
	{
		Close();
		return FReply::Handled();
	}
	return FReply::Unhandled();
}

#undef LOCTEXT_NAMESPACE
