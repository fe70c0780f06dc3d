#pragma once

#include "Agent/Agent.h"
#include "RecordLine.h"

#include <memory>

/** What an agent answers whenever it is asked. */
struct FAgentAnswers
{
	Velmora::EConversationState State = Velmora::EConversationState::Ready;
	bool bHasActive = false;
	bool bCanUndo = false;
	FString Transaction;
	FString Title;
	FString Plan;
};

/** Who is called back; any of them may be nobody. */
struct FAgentListeners
{
	TFunction<void(const FString&, bool)> Message;
	TFunction<void(const FString&, const FString&, const FString&, const FString&)> ToolStarted;
	TFunction<void(const FString&, const FString&, bool, const FString&)> ToolCompleted;
	TFunction<void(Velmora::EConversationState, Velmora::EConversationState, const FString&)> State;
	TFunction<void(const FString&)> Error;
	TFunction<void(bool, const FString&)> Completed;
	TFunction<void(const FString&)> Loaded;
	TFunction<void(const FString&)> Progress;
	TFunction<void(const FString&, const FString&)> Plan;
};

/** An operation of an agent by the name that a recording has for it, with what it is given. */
struct FAgentCall
{
	const TCHAR* Operation = TEXT("");
	/** Ids and numbers. */
	TArray<FString> Plain = {};
	/** What may hold a secret. */
	TArray<FString> Texts = {};
};

/** An agent of which everything that is asked of it passes one of three places. Game thread. */
class FAgentGate : public Velmora::FAgent
{
public:
	virtual FString StartConversation(Velmora::EConversationMode Mode) final;
	virtual bool SendMessage(const FString& Text, const TArray<FString>& ContextFiles) final;
	virtual void PauseConversation() final;
	virtual void ResumeConversation(const FString& Prompt) final;
	virtual void CancelConversation() final;
	virtual void EndConversation() final;
	virtual bool LoadConversation(const FString& Id) final;
	virtual bool DeleteConversationHistory(const FString& Id) final;
	virtual void ClearAllHistories() final;
	virtual bool UndoToTransaction(const FString& TransactionId) final;

	virtual Velmora::EConversationState GetState() const final { return Look(ERecordKind::State).State; }
	virtual bool HasActiveConversation() const final { return Look(ERecordKind::HasActive).bHasActive; }
	virtual FString GetCurrentConversationTitle() const final { return Look(ERecordKind::Title).Title; }
	virtual bool CanUndo() const final { return Look(ERecordKind::CanUndo).bCanUndo; }
	virtual FString GetCurrentTransactionId() const final { return Look(ERecordKind::Transaction).Transaction; }
	virtual FString GetCurrentPlan() const final { return Look(ERecordKind::Plan).Plan; }

	virtual void OnMessageReceived(TFunction<void(const FString&, bool)> Callback) final;
	virtual void OnToolExecutionStarted(TFunction<void(const FString&, const FString&, const FString&, const FString&)> Callback) final;
	virtual void OnToolExecutionCompleted(TFunction<void(const FString&, const FString&, bool, const FString&)> Callback) final;
	virtual void OnStateChanged(TFunction<void(Velmora::EConversationState, Velmora::EConversationState, const FString&)> Callback) final;
	virtual void OnError(TFunction<void(const FString&)> Callback) final;
	virtual void OnConversationCompleted(TFunction<void(bool, const FString&)> Callback) final;
	virtual void OnConversationLoaded(TFunction<void(const FString&)> Callback) final;
	virtual void OnProcessMessage(TFunction<void(const FString&)> Callback) final;
	virtual void OnPlanUpdate(TFunction<void(const FString&, const FString&)> Callback) final;

protected:
	/**
	 * Answers a call; yes and no are "1" and "0". It may let go of this object.
	 * @param Do  Does it with another agent, and gives that one's answer.
	 */
	virtual FString Perform(const FAgentCall& Call, TFunctionRef<FString(Velmora::FAgent&)> Do) = 0;
	/** The answers, of which the kind's own is the one of this moment. */
	virtual const FAgentAnswers& Look(ERecordKind Kind) const = 0;

	/** Outlives this object as long as somebody who calls back holds it. */
	const std::shared_ptr<FAgentListeners> Listeners = std::make_shared<FAgentListeners>();
};

/** Calls back on a copy: the callback may replace itself, or let go of its agent. */
template <typename... FGiven, typename... FWords>
void CallBack(TFunction<void(FGiven...)> Listener, FWords&&... Words)
{
	if (Listener)
	{
		Listener(Words...);
	}
}
