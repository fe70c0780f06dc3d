#include "ReplayAgent.h"

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
	if (Name == "message")
	{
		CallBack(Listeners->Message, Given(Line, 0), GivenFlag(Line, 1));
	}
	else if (Name == "tool-started")
	{
		CallBack(Listeners->ToolStarted, Given(Line, 0), Given(Line, 1), Given(Line, 2), Given(Line, 3));
	}
	else if (Name == "tool-completed")
	{
		CallBack(Listeners->ToolCompleted, Given(Line, 0), Given(Line, 1), GivenFlag(Line, 2), Given(Line, 3));
	}
	else if (Name == "state")
	{
		CallBack(Listeners->State, GivenState(Line, 0), GivenState(Line, 1), Given(Line, 2));
	}
	else if (Name == "error")
	{
		CallBack(Listeners->Error, Given(Line, 0));
	}
	else if (Name == "completed")
	{
		CallBack(Listeners->Completed, GivenFlag(Line, 0), Given(Line, 1));
	}
	else if (Name == "loaded")
	{
		CallBack(Listeners->Loaded, Given(Line, 0));
	}
	else if (Name == "progress")
	{
		CallBack(Listeners->Progress, Given(Line, 0));
	}
	else if (Name == "plan")
	{
		CallBack(Listeners->Plan, Given(Line, 0), Given(Line, 1));
	}
}

FString FReplayAgent::Perform(const FAgentCall& Call, TFunctionRef<FString(Velmora::FAgent&)> Do)
{
	// A callback within may let go of this object.
	const std::shared_ptr<FReplayTape> Keep = Tape;
	return Keep->Call(Number, TCHAR_TO_UTF8(Call.Operation)).Get(FString());
}

const FAgentAnswers& FReplayAgent::Look(ERecordKind Kind) const
{
	Tape->TakeAnswers();
	return Tape->GetAnswers(Number);
}

TSharedPtr<FConversationMetadata> FReplayAgent::GetCurrentConversationMetadata() const
{
	Tape->TakeAnswers();
	return Tape->GetAnswers(Number).Conversation;
}

TArray<FConversationMetadata> FReplayAgent::GetConversationHistories() const
{
	return Tape->TakeStored();
}
