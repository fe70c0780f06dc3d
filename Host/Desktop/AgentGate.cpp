#include "AgentGate.h"

using Velmora::EConversationMode;
using Velmora::EConversationState;
using Velmora::FAgent;

namespace
{
	FString ToAnswer(bool bAnswer)
	{
		return bAnswer ? FString(TEXT("1")) : FString(TEXT("0"));
	}

	bool IsYes(const FString& Answer)
	{
		return Answer.Equals(TEXT("1"));
	}
}

FString FAgentGate::StartConversation(EConversationMode Mode)
{
	return Perform(
		{ TEXT("start"), { FString::FromInt(static_cast<int32>(Mode)) } }, [Mode](FAgent& Agent) { return Agent.StartConversation(Mode); });
}

bool FAgentGate::SendMessage(const FString& Text, const TArray<FString>& ContextFiles)
{
	FAgentCall Call = { TEXT("send"), {}, { Text } };
	Call.Texts.Append(ContextFiles);
	return IsYes(Perform(Call, [&](FAgent& Agent) { return ToAnswer(Agent.SendMessage(Text, ContextFiles)); }));
}

void FAgentGate::PauseConversation()
{
	(void)Perform({ TEXT("pause") },
		[](FAgent& Agent)
		{
			Agent.PauseConversation();
			return FString();
		});
}

void FAgentGate::ResumeConversation(const FString& Prompt)
{
	(void)Perform({ TEXT("resume"), {}, { Prompt } },
		[&Prompt](FAgent& Agent)
		{
			Agent.ResumeConversation(Prompt);
			return FString();
		});
}

void FAgentGate::CancelConversation()
{
	(void)Perform({ TEXT("cancel") },
		[](FAgent& Agent)
		{
			Agent.CancelConversation();
			return FString();
		});
}

void FAgentGate::EndConversation()
{
	(void)Perform({ TEXT("end") },
		[](FAgent& Agent)
		{
			Agent.EndConversation();
			return FString();
		});
}

bool FAgentGate::LoadConversation(const FString& Id)
{
	return IsYes(Perform({ TEXT("load"), { Id } }, [&Id](FAgent& Agent) { return ToAnswer(Agent.LoadConversation(Id)); }));
}

bool FAgentGate::DeleteConversationHistory(const FString& Id)
{
	return IsYes(Perform({ TEXT("delete"), { Id } }, [&Id](FAgent& Agent) { return ToAnswer(Agent.DeleteConversationHistory(Id)); }));
}

void FAgentGate::ClearAllHistories()
{
	(void)Perform({ TEXT("clear") },
		[](FAgent& Agent)
		{
			Agent.ClearAllHistories();
			return FString();
		});
}

bool FAgentGate::UndoToTransaction(const FString& TransactionId)
{
	return IsYes(Perform(
		{ TEXT("undo"), { TransactionId } }, [&TransactionId](FAgent& Agent) { return ToAnswer(Agent.UndoToTransaction(TransactionId)); }));
}

void FAgentGate::OnMessageReceived(TFunction<void(const FString&, bool)> Callback)
{
	Listeners->Message = MoveTemp(Callback);
}

void FAgentGate::OnToolExecutionStarted(TFunction<void(const FString&, const FString&, const FString&, const FString&)> Callback)
{
	Listeners->ToolStarted = MoveTemp(Callback);
}

void FAgentGate::OnToolExecutionCompleted(TFunction<void(const FString&, const FString&, bool, const FString&)> Callback)
{
	Listeners->ToolCompleted = MoveTemp(Callback);
}

void FAgentGate::OnStateChanged(TFunction<void(EConversationState, EConversationState, const FString&)> Callback)
{
	Listeners->State = MoveTemp(Callback);
}

void FAgentGate::OnError(TFunction<void(const FString&)> Callback)
{
	Listeners->Error = MoveTemp(Callback);
}

void FAgentGate::OnConversationCompleted(TFunction<void(bool, const FString&)> Callback)
{
	Listeners->Completed = MoveTemp(Callback);
}

void FAgentGate::OnConversationLoaded(TFunction<void(const FString&)> Callback)
{
	Listeners->Loaded = MoveTemp(Callback);
}

void FAgentGate::OnProcessMessage(TFunction<void(const FString&)> Callback)
{
	Listeners->Progress = MoveTemp(Callback);
}

void FAgentGate::OnPlanUpdate(TFunction<void(const FString&, const FString&)> Callback)
{
	Listeners->Plan = MoveTemp(Callback);
}
