#pragma once

#include "Agent/ConversationTypes.h"
#include "AgentGate.h"
#include "Containers/Map.h"
#include "CoreMinimal.h"
#include "Host/AgentActivity.h"
#include "Host/AgentMessages.h"
#include "Host/ProjectFileCacheControl.h"
#include "RecordFile.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

class FReplayAgent;

/** What an agent of a recording answers now. */
struct FReplayAnswers : FAgentAnswers
{
	TSharedPtr<Velmora::FConversationMetadata> Conversation;
};

/**
 * A recording that is being shown: one place in it, which everybody who asks moves on. What stands there next is what happened next, so
 * who asks out of turn shows that the replay has become another session; that is reported once. Game thread, where nothing else is said.
 */
class FReplayTape
{
public:
	explicit FReplayTape(FRecordReader&& InReader)
		: Reader(MoveTemp(InReader))
	{
	}

	FRecordReader& GetReader() { return Reader; }

	/** Takes over the answers that stand at this place, and passes what nobody waits for. */
	void TakeAnswers();
	/** Makes the next thing happen that comes from the agent's side; false when something else comes next. */
	bool DeliverNext();
	/** All of them. */
	void Deliver();
	/** A call that the recording has, too: what it led to happens again. Its answer, or nothing when it is not there. */
	TOptional<FString> Call(int32 Number, const char* Operation);
	/** A call that stands here and that nobody has made. */
	void PassCall();
	/** Of the agent that is made here; negative when the recording has none here. */
	int32 TakeAgent();
	/** What a text box finds on the clipboard here; as it is where the recording does not say. */
	void TakeClipboard(FString& Text);
	void TakeCanPaste(bool& bCanPaste);
	/** The list of conversations that is asked for here. */
	TArray<Velmora::FConversationMetadata> TakeStored();
	/** Waits until the recording has come to where such a list arrived. Workers alone; empty when it never does. */
	TArray<Velmora::FConversationMetadata> WaitForSummaries();
	/** Lets workers go that wait for a list. Any thread. */
	void Stop();

	/** Callbacks of that agent go there; null for nobody. */
	void SetAgent(int32 Number, FReplayAgent* Agent);
	FReplayAnswers& GetAnswers(int32 Number) { return Answers.FindOrAdd(Number); }
	const TOptional<Velmora::FLastMessage>& GetLastMessage() const { return LastMessage; }
	const Velmora::FAgentTurnStatus& GetTurnStatus() const { return TurnStatus; }
	const TArray<Velmora::FProjectFileCacheEntry>& GetFiles() const { return Files; }
	bool AreFilesReady() const { return bFilesReady; }
	bool AreFilesIndexing() const { return bFilesIndexing; }
	int32 GetFileCount() const { return FileCount; }
	/** A sentence that is shown comes from the recording, and not from this run. */
	bool IsTelling() const { return bIsTelling; }

	/** The replay does not show what was recorded. Reported once, and not beyond the end or with masked texts. */
	void NoteDifference();
	void SetComparing(bool bInCompares) { bCompares = bInCompares; }
	/** True once after a call in which a window showed progress: what was painted to take it away is not painted here. */
	bool TakePassedTurns() { return std::exchange(bHasPassedTurns, false); }

private:
	void TakeAnswer(const FRecordLine& Line);
	void TakeConversationAnswer(const FRecordLine& Line);
	void TakeLastMessage(const FRecordLine& Line);
	void TakeFile(const FRecordLine& Line);
	void TakeOperation(const FRecordLine& Line);
	static void ForgetOperations();
	void FireCallback(const FRecordLine& Line);
	void Ask(const FRecordLine& Line);
	void ReleaseSummaries();
	/** The list behind the line that was taken. */
	TArray<Velmora::FConversationMetadata> ReadList(int64 Count, TArray<Velmora::FConversationMetadata>& Last);

	FRecordReader Reader;
	TMap<int32, FReplayAnswers> Answers;
	TMap<int32, FReplayAgent*> Agents;
	TOptional<Velmora::FLastMessage> LastMessage;
	Velmora::FAgentTurnStatus TurnStatus;
	TArray<Velmora::FProjectFileCacheEntry> Files;
	bool bFilesReady = false;
	bool bFilesIndexing = false;
	int32 FileCount = 0;
	TArray<Velmora::FConversationMetadata> LastStored;
	TArray<Velmora::FConversationMetadata> LastSummaries;
	bool bIsTelling = false;
	bool bCompares = true;
	bool bHasPassedTurns = false;

	// Lists on their way to workers.
	std::mutex Mutex;
	std::condition_variable Changed;
	std::deque<TArray<Velmora::FConversationMetadata>> Released;
	bool bStopped = false;
};
