#include "AgentChoice.h"

#include "AgentPages.h"
#include "Framework/Application/SlateApplication.h"
#include "Framework/MultiBox/MultiBoxBuilder.h"
#include "Misc/Paths.h"
#include "ProblemToasts.h"
#include "Styling/AppStyle.h"

#define LOCTEXT_NAMESPACE "AgentChoice"

namespace
{
	using Velmora::FAgentConnection;
	using Velmora::FAgentConnections;

	/** "null" for the built-in agent. */
	bool IsChosen(const FString& Name)
	{
		const TOptional<FAgentConnection> Selected = FAgentConnections::GetSelected();
		return Selected.IsSet() ? Selected->Name.Equals(Name) : Name.IsEmpty();
	}

	void AddEntry(FMenuBuilder& Builder, const FText& Label, const FText& ToolTip, const TOptional<FAgentConnection>& Connection)
	{
		const FString Name = Connection.IsSet() ? Connection->Name : FString();
		Builder.AddMenuEntry(Label, ToolTip, FSlateIcon(),
			FUIAction(FExecuteAction::CreateLambda([Connection] { FAgentChoice::Choose(Connection); }), FCanExecuteAction(),
				FIsActionChecked::CreateLambda([Name] { return IsChosen(Name); })),
			NAME_None, EUserInterfaceActionType::RadioButton);
	}

	FText DescribeConnection(const FAgentConnection& Connection)
	{
		return Connection.Model.IsEmpty()
			? FText::FromString(Connection.Url)
			: FText::Format(LOCTEXT("ModelAt", "{0} at {1}"), FText::FromString(Connection.Model), FText::FromString(Connection.Url));
	}
}

FString FAgentChoice::GetName()
{
	const TOptional<FAgentConnection> Selected = FAgentConnections::GetSelected();
	return Selected.IsSet() ? Selected->Name : LOCTEXT("BuiltIn", "Built-in agent").ToString();
}

FString FAgentChoice::MakeTitle()
{
	FString Project = FPaths::ProjectDir();
	while (Project.Len() > 1 && Project.EndsWith(TEXT("/")))
	{
		Project.LeftChopInline(1);
	}
	return FPaths::GetCleanFilename(Project) + TEXT(" - ") + GetName() + TEXT(" - Velmora UI");
}

void FAgentChoice::ShowTitle()
{
	if (FSlateApplication::IsInitialized())
	{
		FSlateApplication::Get().GetWindow().SetTitle(MakeTitle());
	}
}

void FAgentChoice::Choose(const TOptional<FAgentConnection>& Connection)
{
	if (const FString Problem = Connection.IsSet() ? FAgentConnections::Check(Connection.GetValue()) : FString(); !Problem.IsEmpty())
	{
		FProblemToasts::Tell(Connection->Name + TEXT(": ") + Problem);
		return;
	}
	FAgentConnections::Select(Connection);
	ShowTitle();
}

void FAgentChoice::BuildMenu(FMenuBuilder& Builder)
{
	FString Problem;
	const TArray<FAgentConnection> Connections = FAgentConnections::List(Problem);
	Builder.BeginSection("AgentChoice", LOCTEXT("ChoiceSection", "Answers from the next message on"));
	AddEntry(Builder, LOCTEXT("BuiltIn", "Built-in agent"), LOCTEXT("BuiltInTip", "Takes commands; needs no network and no model"),
		TOptional<FAgentConnection>());
	for (const FAgentConnection& Connection : Connections)
	{
		AddEntry(Builder, FText::FromString(Connection.Name), DescribeConnection(Connection), Connection);
	}
	// One that was given for this run only, or deleted since, answers all the same and is named.
	const TOptional<FAgentConnection> Selected = FAgentConnections::GetSelected();
	if (Selected.IsSet() &&
		!Connections.ContainsByPredicate([&Selected](const FAgentConnection& Item) { return Item.Name.Equals(Selected->Name); }))
	{
		AddEntry(Builder, FText::FromString(Selected->Name), DescribeConnection(Selected.GetValue()), Selected);
	}
	Builder.EndSection();
	Builder.BeginSection("AgentSettings");
	if (!Problem.IsEmpty())
	{
		Builder.AddMenuEntry(LOCTEXT("BrokenList", "The connections cannot be read\u2026"), FText::FromString(Problem),
			FSlateIcon(FAppStyle::GetAppStyleSetName(), TEXT("Icons.Warning")),
			FUIAction(FExecuteAction::CreateLambda([Problem] { FProblemToasts::Tell(Problem); })));
	}
	Builder.AddMenuEntry(LOCTEXT("Connections", "Connections\u2026"), LOCTEXT("ConnectionsTip", "Set up the models that can answer"),
		FSlateIcon(FAppStyle::GetAppStyleSetName(), TEXT("Icons.Settings")),
		FUIAction(FExecuteAction::CreateLambda([] { FAgentPages::Show(FAgentPages::GetConnectionsName()); })));
	Builder.EndSection();
}

#undef LOCTEXT_NAMESPACE
