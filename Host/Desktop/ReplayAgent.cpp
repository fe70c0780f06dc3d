#include "ReplayAgent.h"

using Velmora::EConversationMode;
using Velmora::EConversationState;
using Velmora::FConversationMetadata;

namespace
{
	/** What a callback or a call was given begins behind the agent and the name. */
	constexpr int32 FirstGiven = 2;

	FString Given(const FRecordLine& Line, int32 Index)
	{
		return Line.Text(FirstGiven + Index);
	}

	bool GivenFlag(const FRecordLine& Line, int32 Index)
	{
		return Given(Line, Index).Equals(TEXT("1"));
	}

	EConversationState GivenState(const FRecordLine& Line, int32 Index)
	{
		const int32 State = FCString::Atoi(*Given(Line, Index));
		const bool bIsKnown = State >= 0 && State <= static_cast<int32>(EConversationState::Error);
		return bIsKnown ? static_cast<EConversationState>(State) : EConversationState::Error;
	}
}

FReplayAgent::FReplayAgent(const std::shared_ptr<FReplayTape>& InTape, int32 InNumber)
	: Tape(InTape)
	, Number(InNumber)
{
	Tape->SetAgent(Number, this);
}

FReplayAgent::~FReplayAgent()
{
	Tape->SetAgent(Number, nullptr);
}

void FReplayAgent::Fire(const FRecordLine& Line)
{
	const std::string Name = Line.Word(1);
	for (const FListener& Listener : Listeners)
	{
		if (Listener.Name == Name)
		{
			// On a copy: the callback may replace itself, or let go of this object.
			const FGiven Copy = Listener.Given;
			Copy(Line);
			return;
		}
	}
}

void FReplayAgent::Listen(const char* Name, bool bIsSet, FGiven&& InGiven)
{
	Listeners.RemoveAll([Name](const FListener& Listener) { return Listener.Name == Name; });
	if (bIsSet)
	{
		Listeners.Add(FListener{ Name, MoveTemp(InGiven) });
	}
}

const FReplayAnswers& FReplayAgent::Look() const
{
	Tape->TakeAnswers();
	return Tape->GetAnswers(Number);
}

bool FReplayAgent::Call(const char* Operation) const
{
	// A callback within may let go of this object.
	const std::shared_ptr<FReplayTape> Keep = Tape;
	const TOptional<FString> Answer = Keep->Call(Number, Operation);
	return Answer.IsSet() && Answer->Equals(TEXT("1"));
}

FString FReplayAgent::StartConversation(EConversationMode Mode)
{
	const std::shared_ptr<FReplayTape> Keep = Tape;
	return Keep->Call(Number, "start").Get(FString());
}

bool FReplayAgent::SendMessage(const FString& Text, const TArray<FString>& ContextFiles)
{
	return Call("send");
}

void FReplayAgent::PauseConversation()
{
	(void)Call("pause");
}

void FReplayAgent::ResumeConversation(const FString& Prompt)
{
	(void)Call("resume");
}

void FReplayAgent::CancelConversation()
{
	(void)Call("cancel");
}

void FReplayAgent::EndConversation()
{
	(void)Call("end");
}

bool FReplayAgent::LoadConversation(const FString& Id)
{
	return Call("load");
}

bool FReplayAgent::DeleteConversationHistory(const FString& Id)
{
	return Call("delete");
}

void FReplayAgent::ClearAllHistories()
{
	(void)Call("clear");
}

bool FReplayAgent::UndoToTransaction(const FString& TransactionId)
{
	return Call("undo");
}

EConversationState FReplayAgent::GetState() const
{
	return Look().State;
}

bool FReplayAgent::HasActiveConversation() const
{
	return Look().bHasActive;
}

TSharedPtr<FConversationMetadata> FReplayAgent::GetCurrentConversationMetadata() const
{
	return Look().Conversation;
}

FString FReplayAgent::GetCurrentConversationTitle() const
{
	return Look().Title;
}

TArray<FConversationMetadata> FReplayAgent::GetConversationHistories() const
{
	return Tape->TakeStored();
}

bool FReplayAgent::CanUndo() const
{
	return Look().bCanUndo;
}

FString FReplayAgent::GetCurrentTransactionId() const
{
	return Look().Transaction;
}

FString FReplayAgent::GetCurrentPlan() const
{
	return Look().Plan;
}

void FReplayAgent::OnMessageReceived(TFunction<void(const FString&, bool)> Callback)
{
	Listen("message", Callback.IsSet(), [Callback](const FRecordLine& Line) { Callback(Given(Line, 0), GivenFlag(Line, 1)); });
}

void FReplayAgent::OnToolExecutionStarted(TFunction<void(const FString&, const FString&, const FString&, const FString&)> Callback)
{
	Listen("tool-started", Callback.IsSet(),
		[Callback](const FRecordLine& Line) { Callback(Given(Line, 0), Given(Line, 1), Given(Line, 2), Given(Line, 3)); });
}

void FReplayAgent::OnToolExecutionCompleted(TFunction<void(const FString&, const FString&, bool, const FString&)> Callback)
{
	Listen("tool-completed", Callback.IsSet(),
		[Callback](const FRecordLine& Line) { Callback(Given(Line, 0), Given(Line, 1), GivenFlag(Line, 2), Given(Line, 3)); });
}

void FReplayAgent::OnStateChanged(TFunction<void(EConversationState, EConversationState, const FString&)> Callback)
{
	Listen("state", Callback.IsSet(),
		[Callback](const FRecordLine& Line) { Callback(GivenState(Line, 0), GivenState(Line, 1), Given(Line, 2)); });
}

void FReplayAgent::OnError(TFunction<void(const FString&)> Callback)
{
	Listen("error", Callback.IsSet(), [Callback](const FRecordLine& Line) { Callback(Given(Line, 0)); });
}

void FReplayAgent::OnConversationCompleted(TFunction<void(bool, const FString&)> Callback)
{
	Listen("completed", Callback.IsSet(), [Callback](const FRecordLine& Line) { Callback(GivenFlag(Line, 0), Given(Line, 1)); });
}

void FReplayAgent::OnConversationLoaded(TFunction<void(const FString&)> Callback)
{
	Listen("loaded", Callback.IsSet(), [Callback](const FRecordLine& Line) { Callback(Given(Line, 0)); });
}

void FReplayAgent::OnProcessMessage(TFunction<void(const FString&)> Callback)
{
	Listen("progress", Callback.IsSet(), [Callback](const FRecordLine& Line) { Callback(Given(Line, 0)); });
}

void FReplayAgent::OnPlanUpdate(TFunction<void(const FString&, const FString&)> Callback)
{
	Listen("plan", Callback.IsSet(), [Callback](const FRecordLine& Line) { Callback(Given(Line, 0), Given(Line, 1)); });
}
