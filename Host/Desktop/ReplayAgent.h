#pragma once

#include "Agent/Agent.h"
#include "ReplayTape.h"

#include <memory>

/** An agent that does what one of a recording did: calls lead to what they led to then, answers are those of then. Game thread. */
class FReplayAgent : public Velmora::FAgent
{
public:
	FReplayAgent(const std::shared_ptr<FReplayTape>& InTape, int32 InNumber);
	virtual ~FReplayAgent() override;

	/** Calls back what a line says. */
	void Fire(const FRecordLine& Line);

	virtual FString StartConversation(Velmora::EConversationMode Mode) override;
	virtual bool SendMessage(const FString& Text, const TArray<FString>& ContextFiles) override;
	virtual void PauseConversation() override;
	virtual void ResumeConversation(const FString& Prompt) override;
	virtual void CancelConversation() override;
	virtual void EndConversation() override;
	virtual bool LoadConversation(const FString& Id) override;
	virtual bool DeleteConversationHistory(const FString& Id) override;
	virtual void ClearAllHistories() override;
	virtual bool UndoToTransaction(const FString& TransactionId) override;

	virtual Velmora::EConversationState GetState() const override;
	virtual bool HasActiveConversation() const override;
	virtual TSharedPtr<Velmora::FConversationMetadata> GetCurrentConversationMetadata() const override;
	virtual FString GetCurrentConversationTitle() const override;
	virtual TArray<Velmora::FConversationMetadata> GetConversationHistories() const override;
	virtual bool CanUndo() const override;
	virtual FString GetCurrentTransactionId() const override;
	virtual FString GetCurrentPlan() const override;

	virtual void OnMessageReceived(TFunction<void(const FString&, bool)> Callback) override;
	virtual void OnToolExecutionStarted(TFunction<void(const FString&, const FString&, const FString&, const FString&)> Callback) override;
	virtual void OnToolExecutionCompleted(TFunction<void(const FString&, const FString&, bool, const FString&)> Callback) override;
	virtual void OnStateChanged(
		TFunction<void(Velmora::EConversationState, Velmora::EConversationState, const FString&)> Callback) override;
	virtual void OnError(TFunction<void(const FString&)> Callback) override;
	virtual void OnConversationCompleted(TFunction<void(bool, const FString&)> Callback) override;
	virtual void OnConversationLoaded(TFunction<void(const FString&)> Callback) override;
	virtual void OnProcessMessage(TFunction<void(const FString&)> Callback) override;
	virtual void OnPlanUpdate(TFunction<void(const FString&, const FString&)> Callback) override;

private:
	/** As a line gives them. */
	using FGiven = TFunction<void(const FRecordLine&)>;

	/** The answers of this moment. */
	const FReplayAnswers& Look() const;
	/** False where the recording has no such call. */
	bool Call(const char* Operation) const;
	void Listen(const char* Name, bool bIsSet, FGiven&& Given);

	struct FListener
	{
		std::string Name;
		FGiven Given;
	};

	const std::shared_ptr<FReplayTape> Tape;
	const int32 Number;
	TArray<FListener> Listeners;
};
