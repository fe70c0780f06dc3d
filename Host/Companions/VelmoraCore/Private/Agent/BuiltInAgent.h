#pragma once

#include "CoreMinimal.h"
#include "Templates/SharedPointer.h"

#include "Agent/Agent.h"
#include "Agent/AgentSession.h"

namespace Velmora
{
	/**
	 * The agent that needs no network: it answers from the files of the project, and changes them on request unless
	 * the mode is Advisor.
	 */
	class FBuiltInAgent : public FAgent
	{
	public:
		FBuiltInAgent();
		virtual ~FBuiltInAgent() override;

		virtual FString StartConversation(EConversationMode Mode) override;
		virtual bool SendMessage(const FString& Text, const TArray<FString>& ContextFiles) override;
		virtual void PauseConversation() override;
		virtual void ResumeConversation(const FString& Prompt) override;
		virtual void CancelConversation() override;
		virtual void EndConversation() override;
		virtual bool LoadConversation(const FString& Id) override;
		virtual bool DeleteConversationHistory(const FString& Id) override;
		virtual void ClearAllHistories() override;
		virtual bool UndoToTransaction(const FString& TransactionId) override;

		virtual EConversationState GetState() const override;
		virtual bool HasActiveConversation() const override;
		virtual TSharedPtr<FConversationMetadata> GetCurrentConversationMetadata() const override;
		virtual FString GetCurrentConversationTitle() const override;
		virtual TArray<FConversationMetadata> GetConversationHistories() const override;
		virtual bool CanUndo() const override;
		virtual FString GetCurrentTransactionId() const override;
		virtual FString GetCurrentPlan() const override;

		virtual void OnMessageReceived(TFunction<void(const FString&, bool)> Callback) override;
		virtual void OnToolExecutionStarted(
			TFunction<void(const FString&, const FString&, const FString&, const FString&)> Callback) override;
		virtual void OnToolExecutionCompleted(TFunction<void(const FString&, const FString&, bool, const FString&)> Callback) override;
		virtual void OnStateChanged(TFunction<void(EConversationState, EConversationState, const FString&)> Callback) override;
		virtual void OnError(TFunction<void(const FString&)> Callback) override;
		virtual void OnConversationCompleted(TFunction<void(bool, const FString&)> Callback) override;
		virtual void OnConversationLoaded(TFunction<void(const FString&)> Callback) override;
		virtual void OnProcessMessage(TFunction<void(const FString&)> Callback) override;
		virtual void OnPlanUpdate(TFunction<void(const FString&, const FString&)> Callback) override;

	private:
		const TSharedRef<FAgentSession> Session;
	};
}
