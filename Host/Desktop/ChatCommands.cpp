#include "ChatCommands.h"

#include "EditorFrameCommands.h"
#include "Framework/Application/SlateApplication.h"
#include "Framework/Commands/UICommandList.h"
#include "Framework/Docking/TabManager.h"
#include "Framework/MultiBox/MultiBoxBuilder.h"
#include "HAL/PlatformApplicationMisc.h"
#include "Host/WidgetFinder.h"
#include "OpenChat.h"
#include "PromptBox.h"
#include "SEditorFrame.h"
#include "SFindStrip.h"
#include "SKeysPage.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/Input/SEditableTextBox.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"
#include "WindowZoom.h"

#define LOCTEXT_NAMESPACE "ChatCommands"

namespace
{
	/** A button of the chat that is shown and can be pressed. */
	TSharedPtr<SWidget> FindButton(FName Tag)
	{
		const TSharedPtr<SWidget> Button = FOpenChat::IsInFront() ? FOpenChat::FindByTag(Tag) : nullptr;
		return Button && FWidgetFinder::IsEnabledInTree(*Button) ? Button : nullptr;
	}

	void PressButton(FName Tag)
	{
		if (const TSharedPtr<SWidget> Button = FindButton(Tag))
		{
			FOpenChat::Press(Button.ToSharedRef());
		}
	}

	void MapButton(FUICommandList& Commands, const TSharedPtr<FUICommandInfo>& Command, FName Tag)
	{
		Commands.MapAction(Command, FExecuteAction::CreateLambda([Tag] { PressButton(Tag); }),
			FCanExecuteAction::CreateLambda([Tag] { return FindButton(Tag).IsValid(); }));
	}

	/** The last text of a kind; empty when there is none. */
	FString GetLastText(bool bOfUser)
	{
		const TSharedPtr<FChatViewModel> ViewModel = FOpenChat::GetViewModel();
		const int32 Count = ViewModel ? ViewModel->GetMessages().Num() : 0;
		for (int32 Index = Count - 1; Index >= 0; --Index)
		{
			const FChatMessage& Message = *ViewModel->GetMessages()[Index];
			if (bOfUser ? Message.IsUserMessage() : Message.IsAIMessage())
			{
				return Message.Content;
			}
		}
		return FString();
	}

	TSharedPtr<SMultiLineEditableTextBox> FindPrompt()
	{
		return StaticCastSharedPtr<SMultiLineEditableTextBox>(FOpenChat::IsInFront() ? FOpenChat::FindByTag("InputTextBox") : nullptr);
	}

	bool CanRecall()
	{
		const TSharedPtr<SMultiLineEditableTextBox> Prompt = FindPrompt();
		return Prompt && Prompt->GetText().IsEmpty() && !GetLastText(true).IsEmpty();
	}

	void Recall()
	{
		if (CanRecall())
		{
			// Through the box: it tells the window of the change, and undo takes it back.
			FPromptBox::Focus();
			FindPrompt()->InsertTextAtCursor(GetLastText(true));
		}
	}

	void ShowConversations()
	{
		FGlobalTabmanager::Get()->TryInvokeTab(FTabId(SEditorFrame::GetConversationsTabName()));
		// A tab that opens goes to its search itself; one that stands there already is worked in elsewhere.
		if (const TSharedPtr<SWidget> Search = FWidgetFinder::FindByTag("ConversationSearch"))
		{
			FSlateApplication::Get().SetKeyboardFocus(Search, EFocusCause::SetDirectly);
			StaticCastSharedPtr<SEditableTextBox>(Search)->SelectAllText();
		}
	}

	void ShowChat()
	{
		FOpenChat::Show();
		FPromptBox::Focus();
	}

	void AddEntries(FMenuBuilder& Builder, std::initializer_list<TSharedPtr<FUICommandInfo>> Entries)
	{
		for (const TSharedPtr<FUICommandInfo>& Entry : Entries)
		{
			Builder.AddMenuEntry(Entry);
		}
	}
}

void FChatCommands::MapCommands(FUICommandList& Commands, const TSharedRef<SFindStrip>& Find)
{
	const FEditorFrameCommands& Known = FEditorFrameCommands::Get();
	MapButton(Commands, Known.NewConversation, "NewConversationButton");
	MapButton(Commands, Known.Pause, "PauseButton");
	MapButton(Commands, Known.Continue, "ContinueButton");
	// Escape closes what lies on top before it stops anything.
	const auto IsFinding = [Find] { return Find->IsOpen() && Find->CanFind(); };
	Commands.MapAction(Known.Stop,
		FExecuteAction::CreateLambda([Find, IsFinding] { IsFinding() ? Find->Close() : PressButton("CancelButton"); }),
		FCanExecuteAction::CreateLambda([IsFinding] { return IsFinding() || FindButton("CancelButton").IsValid(); }));
	Commands.MapAction(Known.Conversations, FExecuteAction::CreateStatic(&ShowConversations));
	Commands.MapAction(Known.FocusPrompt, FExecuteAction::CreateStatic(&ShowChat));
	Commands.MapAction(Known.RecallPrompt, FExecuteAction::CreateStatic(&Recall), FCanExecuteAction::CreateStatic(&CanRecall));
	Commands.MapAction(Known.CopyLastAnswer,
		FExecuteAction::CreateLambda([] { FPlatformApplicationMisc::ClipboardCopy(*GetLastText(false)); }),
		FCanExecuteAction::CreateLambda([] { return !GetLastText(false).IsEmpty(); }));
	const FCanExecuteAction CanFind = FCanExecuteAction::CreateLambda([Find] { return Find->CanFind(); });
	Commands.MapAction(Known.Find, FExecuteAction::CreateLambda([Find] { Find->Open(); }), CanFind);
	const FCanExecuteAction CanStep = FCanExecuteAction::CreateLambda(IsFinding);
	Commands.MapAction(Known.FindNext, FExecuteAction::CreateLambda([Find] { Find->Step(1); }), CanStep);
	Commands.MapAction(Known.FindPrevious, FExecuteAction::CreateLambda([Find] { Find->Step(-1); }), CanStep);
	Commands.MapAction(Known.ZoomIn, FExecuteAction::CreateLambda([] { FWindowZoom::Step(1); }));
	Commands.MapAction(Known.ZoomOut, FExecuteAction::CreateLambda([] { FWindowZoom::Step(-1); }));
	Commands.MapAction(Known.ZoomReset, FExecuteAction::CreateLambda([] { FWindowZoom::Step(0); }));
	Commands.MapAction(Known.Keys, FExecuteAction::CreateStatic(&SKeysPage::ShowPage));
}

void FChatCommands::BuildFileSection(FMenuBuilder& Builder)
{
	const FEditorFrameCommands& Known = FEditorFrameCommands::Get();
	Builder.BeginSection("FileConversation", LOCTEXT("ConversationSection", "Conversation"));
	AddEntries(Builder, { Known.NewConversation, Known.Conversations });
	Builder.EndSection();
}

void FChatCommands::BuildEditSection(FMenuBuilder& Builder)
{
	const FEditorFrameCommands& Known = FEditorFrameCommands::Get();
	Builder.BeginSection("EditFind", LOCTEXT("FindSection", "Find"));
	AddEntries(Builder, { Known.Find, Known.FindNext, Known.FindPrevious });
	Builder.EndSection();
	Builder.BeginSection("EditPrompt", LOCTEXT("PromptSection", "Prompt and Answer"));
	AddEntries(Builder, { Known.FocusPrompt, Known.RecallPrompt, Known.CopyLastAnswer });
	Builder.EndSection();
}

void FChatCommands::BuildTurnSection(FMenuBuilder& Builder)
{
	const FEditorFrameCommands& Known = FEditorFrameCommands::Get();
	Builder.BeginSection("AgentTurn", LOCTEXT("TurnSection", "Turn"));
	AddEntries(Builder, { Known.Stop, Known.Pause, Known.Continue });
	Builder.EndSection();
	Builder.BeginSection("Keys", LOCTEXT("KeysSection", "Keyboard"));
	AddEntries(Builder, { Known.Keys });
	Builder.EndSection();
}

void FChatCommands::BuildViewSection(FMenuBuilder& Builder)
{
	const FEditorFrameCommands& Known = FEditorFrameCommands::Get();
	Builder.BeginSection("WindowZoom", LOCTEXT("ZoomSection", "Zoom"));
	AddEntries(Builder, { Known.ZoomIn, Known.ZoomOut, Known.ZoomReset });
	Builder.EndSection();
}

#undef LOCTEXT_NAMESPACE
