#include "AgentMenus.h"

#include "AgentChoice.h"
#include "AgentPages.h"
#include "EditorFrameCommands.h"
#include "Framework/Commands/UICommandList.h"
#include "Framework/MultiBox/MultiBoxBuilder.h"
#include "Host/AgentQuestions.h"
#include "LastMessage.h"
#include "QuestionToasts.h"

#define LOCTEXT_NAMESPACE "AgentMenus"

namespace
{
	using Velmora::EAgentAnswer;

	void MapAnswer(FUICommandList& Commands, const TSharedPtr<FUICommandInfo>& Command, EAgentAnswer Answer)
	{
		Commands.MapAction(Command, FExecuteAction::CreateLambda([Answer] { FQuestionToasts::Answer(Answer); }),
			FCanExecuteAction::CreateLambda([Answer] { return FQuestionToasts::CanAnswer(Answer); }));
	}
}

void FAgentMenus::MapCommands(FUICommandList& Commands)
{
	const FEditorFrameCommands& Known = FEditorFrameCommands::Get();
	MapAnswer(Commands, Known.AllowOnce, EAgentAnswer::AllowOnce);
	MapAnswer(Commands, Known.AllowAlways, EAgentAnswer::AllowAlways);
	MapAnswer(Commands, Known.RefuseQuestion, EAgentAnswer::Refuse);
	const FCanExecuteAction CanTakeBack = FCanExecuteAction::CreateStatic(&FLastMessageCommands::CanTakeBack);
	Commands.MapAction(Known.SendAgain, FExecuteAction::CreateStatic(&FLastMessageCommands::SendAgain), CanTakeBack);
	Commands.MapAction(Known.EditLast, FExecuteAction::CreateStatic(&FLastMessageCommands::Edit), CanTakeBack);
	Commands.MapAction(Known.Permissions, FExecuteAction::CreateLambda([] { FAgentPages::Show(FAgentPages::GetPermissionsName()); }));
}

void FAgentMenus::BuildEditSection(FMenuBuilder& Builder)
{
	Builder.BeginSection("EditMessage", LOCTEXT("MessageSection", "Last Message"));
	Builder.AddMenuEntry(FEditorFrameCommands::Get().SendAgain);
	Builder.AddMenuEntry(FEditorFrameCommands::Get().EditLast);
	Builder.EndSection();
}

void FAgentMenus::BuildToolsSection(FMenuBuilder& Builder)
{
	const FEditorFrameCommands& Known = FEditorFrameCommands::Get();
	Builder.BeginSection("Agent", LOCTEXT("AgentSection", "Agent"));
	Builder.AddSubMenu(LOCTEXT("AgentMenu", "Agent"), LOCTEXT("AgentMenuTip", "Choose who answers"),
		FNewMenuDelegate::CreateStatic(&FAgentChoice::BuildMenu));
	Builder.AddMenuEntry(Known.Permissions);
	Builder.EndSection();
	// They stand there greyed while nothing is asked, so that their keys can be learnt before they are needed.
	Builder.BeginSection("AgentQuestion", LOCTEXT("QuestionSection", "Question of the Agent"));
	Builder.AddMenuEntry(Known.AllowOnce);
	Builder.AddMenuEntry(Known.AllowAlways);
	Builder.AddMenuEntry(Known.RefuseQuestion);
	Builder.EndSection();
}

#undef LOCTEXT_NAMESPACE
