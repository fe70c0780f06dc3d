#include "Agent/BuiltInAgent.h"

namespace Velmora
{
	FBuiltInAgent::FBuiltInAgent()
		: Session(MakeShared<FAgentSession>())
	{
		NoteSession(Session);
		Session->CleanUpAfterOthers();
	}

	FBuiltInAgent::~FBuiltInAgent()
	{
		Session->Abandon();
	}

	// A callback may let go of this object while one of the calls below is under way: each keeps the session alive
	// and touches nothing else afterwards.

	FString FBuiltInAgent::StartConversation(EConversationMode Mode)
	{
		const TSharedRef<FAgentSession> Keep = Session;
		return Keep->StartConversation(Mode);
	}

	bool FBuiltInAgent::SendMessage(const FString& Text, const TArray<FString>& ContextFiles)
	{
		const TSharedRef<FAgentSession> Keep = Session;
		return Keep->SendMessage(Text, ContextFiles);
	}

	void FBuiltInAgent::PauseConversation()
	{
		const TSharedRef<FAgentSession> Keep = Session;
		Keep->PauseConversation();
	}

	void FBuiltInAgent::ResumeConversation(const FString& Prompt)
	{
		const TSharedRef<FAgentSession> Keep = Session;
		Keep->ResumeConversation(Prompt);
	}

	void FBuiltInAgent::CancelConversation()
	{
		const TSharedRef<FAgentSession> Keep = Session;
		Keep->CancelConversation();
	}

	void FBuiltInAgent::EndConversation()
	{
		Session->EndConversation();
	}

	bool FBuiltInAgent::LoadConversation(const FString& Id)
	{
		const TSharedRef<FAgentSession> Keep = Session;
		return Keep->LoadConversation(Id);
	}

	bool FBuiltInAgent::DeleteConversationHistory(const FString& Id)
	{
		const TSharedRef<FAgentSession> Keep = Session;
		return Keep->DeleteConversationHistory(Id);
	}

	void FBuiltInAgent::ClearAllHistories()
	{
		const TSharedRef<FAgentSession> Keep = Session;
		Keep->ClearAllHistories();
	}

	bool FBuiltInAgent::UndoToTransaction(const FString& TransactionId)
	{
		const TSharedRef<FAgentSession> Keep = Session;
		return Keep->UndoToTransaction(TransactionId);
	}

	EConversationState FBuiltInAgent::GetState() const
	{
		return Session->GetState();
	}

	bool FBuiltInAgent::HasActiveConversation() const
	{
		return Session->GetCurrent().IsValid();
	}

	TSharedPtr<FConversationMetadata> FBuiltInAgent::GetCurrentConversationMetadata() const
	{
		return Session->GetCurrent();
	}

	FString FBuiltInAgent::GetCurrentConversationTitle() const
	{
		return Session->GetTitle();
	}

	TArray<FConversationMetadata> FBuiltInAgent::GetConversationHistories() const
	{
		const TSharedRef<FAgentSession> Keep = Session;
		return Keep->GetHistories();
	}

	bool FBuiltInAgent::CanUndo() const
	{
		return !Session->IsWorking() && !Session->IsUndoing();
	}

	FString FBuiltInAgent::GetCurrentTransactionId() const
	{
		return Session->GetTransactionId();
	}

	FString FBuiltInAgent::GetCurrentPlan() const
	{
		return Session->GetPlan();
	}

	void FBuiltInAgent::OnMessageReceived(TFunction<void(const FString&, bool)> Callback)
	{
		Session->Callbacks.MessageReceived = MoveTemp(Callback);
	}

	void FBuiltInAgent::OnToolExecutionStarted(TFunction<void(const FString&, const FString&, const FString&, const FString&)> Callback)
	{
		Session->Callbacks.ToolStarted = MoveTemp(Callback);
	}

	void FBuiltInAgent::OnToolExecutionCompleted(TFunction<void(const FString&, const FString&, bool, const FString&)> Callback)
	{
		Session->Callbacks.ToolCompleted = MoveTemp(Callback);
	}

	void FBuiltInAgent::OnStateChanged(TFunction<void(EConversationState, EConversationState, const FString&)> Callback)
	{
		Session->Callbacks.StateChanged = MoveTemp(Callback);
	}

	void FBuiltInAgent::OnError(TFunction<void(const FString&)> Callback)
	{
		Session->Callbacks.Error = MoveTemp(Callback);
		Session->ListenForNotices();
	}

	void FBuiltInAgent::OnConversationCompleted(TFunction<void(bool, const FString&)> Callback)
	{
		Session->Callbacks.ConversationCompleted = MoveTemp(Callback);
	}

	void FBuiltInAgent::OnConversationLoaded(TFunction<void(const FString&)> Callback)
	{
		Session->Callbacks.ConversationLoaded = MoveTemp(Callback);
	}

	void FBuiltInAgent::OnProcessMessage(TFunction<void(const FString&)> Callback)
	{
		Session->Callbacks.ProcessMessage = MoveTemp(Callback);
	}

	void FBuiltInAgent::OnPlanUpdate(TFunction<void(const FString&, const FString&)> Callback)
	{
		Session->Callbacks.PlanUpdate = MoveTemp(Callback);
	}
}
