#pragma once

#include "AgentGate.h"
#include "RecordFile.h"

#include <memory>

/**
 * Hands everything on to an agent and writes down what it calls back and what it answers. An answer is written when it is asked for and
 * differs from the last one: a replay asks at the same places. Game thread.
 */
class FRecordedAgent : public FAgentGate
{
public:
	/** @param InNumber  By which the recording knows this agent. */
	FRecordedAgent(const TSharedRef<Velmora::FAgent>& InAgent, int32 InNumber, const std::shared_ptr<FRecordWriter>& InWriter);
	virtual ~FRecordedAgent() override;

	virtual TSharedPtr<Velmora::FConversationMetadata> GetCurrentConversationMetadata() const override;
	virtual TArray<Velmora::FConversationMetadata> GetConversationHistories() const override;

protected:
	virtual FString Perform(const FAgentCall& Call, TFunctionRef<FString(Velmora::FAgent&)> Do) override;
	virtual const FAgentAnswers& Look(ERecordKind Kind) const override;

private:
	/** What was written last. */
	struct FNoted
	{
		/** From State to Plan. */
		TOptional<FString> Answers[static_cast<size_t>(ERecordKind::Plan) - static_cast<size_t>(ERecordKind::State) + 1];
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
	/** Lines for callbacks that somebody listens to. */
	void ListenToTurn();
	void ListenToConversation();
	/** Whether an answer differs from the last one of its kind. */
	bool IsNew(ERecordKind Kind, const FString& Answer) const;
	void NoteNumber(ERecordKind Kind, int32 Answer) const;
	void NoteText(ERecordKind Kind, const FString& Answer) const;
	void NoteConversation(const TSharedPtr<Velmora::FConversationMetadata>& Now) const;
	void NoteMessages(const Velmora::FConversationMetadata& Now) const;

	const TSharedRef<Velmora::FAgent> Agent;
	const int32 Number;
	const std::shared_ptr<FRecordWriter> Writer;
	// Asking changes nothing but what is known to be written.
	mutable FAgentAnswers Answers;
	mutable FNoted Noted;
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
