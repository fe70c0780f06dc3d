#pragma once

#include "Agent/Agent.h"
#include "RecordFile.h"

#include <memory>

/**
 * Hands everything on to an agent and writes down what it calls back and what it answers. An answer is written when it is asked for and
 * differs from the last one: a replay asks at the same places. Game thread.
 */
class FRecordedAgent : public Velmora::FAgent
{
public:
	/** @param InNumber  By which the recording knows this agent. */
	FRecordedAgent(const TSharedRef<Velmora::FAgent>& InAgent, int32 InNumber, const std::shared_ptr<FRecordWriter>& InWriter);
	virtual ~FRecordedAgent() override;

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
	/** What was answered last. */
	struct FAnswers
	{
		TOptional<int32> State;
		TOptional<bool> bHasActive;
		TOptional<bool> bCanUndo;
		TOptional<FString> Transaction;
		TOptional<FString> Title;
		TOptional<FString> Plan;
		/** The very object: another one is another conversation, whatever its id. */
		TWeakPtr<Velmora::FConversationMetadata> Conversation;
		bool bHasConversation = false;
		bool bConversationWritten = false;
		FString Id;
		int32 Mode = 0;
		int64 Ticks = 0;
		int32 MessageCount = 0;
	};

	FRecordWords Beginning(ERecordKind Kind) const;
	/** Writes a text that differs from the last answer. */
	void NoteText(ERecordKind Kind, TOptional<FString>& Last, const FString& Now) const;
	void NoteConversation(const TSharedPtr<Velmora::FConversationMetadata>& Now) const;
	void NoteMessages(const Velmora::FConversationMetadata& Now) const;

	const TSharedRef<Velmora::FAgent> Agent;
	const int32 Number;
	const std::shared_ptr<FRecordWriter> Writer;
	/** Asking changes nothing but what is known to be written. */
	mutable FAnswers Answers;
};

/**
 * A call that is written down: what it was given now, its answer when it has one. Keeps what it needs, since a call may let go of whoever
 * made it. Number 0 is for calls of no agent.
 */
class FRecordedCall
{
public:
	FRecordedCall(
		int32 InNumber, const std::shared_ptr<FRecordWriter>& InWriter, const TCHAR* InOperation, const TArray<FString>& Given = {});
	FString Return(const FString& Answer) const;
	bool Return(bool bAnswer) const;

private:
	const int32 Number;
	const std::shared_ptr<FRecordWriter> Writer;
	const TCHAR* const Operation;
};

/** Lines that hold conversations, as a list of them is written. Any thread. */
std::string MakeSummaryLines(const TArray<Velmora::FConversationMetadata>& Conversations, const FRecordWriter& Writer);
