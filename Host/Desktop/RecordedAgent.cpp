#include "RecordedAgent.h"

#include "RecordMask.h"

using Velmora::EConversationState;
using Velmora::FConversationMessage;
using Velmora::FConversationMetadata;

namespace
{
	/** More conversations than a list shows without scrolling for long. */
	constexpr int32 MaxSummaries = 500;

	/** The beginning of a callback's line. */
	FRecordWords CalledBack(int32 Number, const TCHAR* Name)
	{
		return MoveTemp(FRecordWords(ERecordKind::Callback).Number(Number).Word(Name));
	}

	FString ToFlag(bool bValue)
	{
		return bValue ? FString(TEXT("1")) : FString(TEXT("0"));
	}

	FString VeilJson(const FRecordWriter& Writer, const FString& Text)
	{
		return Writer.Masks() ? FRecordMask::MaskJson(Text) : Text;
	}
}

FRecordedCall::FRecordedCall(
	int32 InNumber, const std::shared_ptr<FRecordWriter>& InWriter, const TCHAR* InOperation, const TArray<FString>& Given)
	: Number(InNumber)
	, Writer(InWriter)
	, Operation(InOperation)
{
	FRecordWords Words(ERecordKind::Call);
	Words.Number(Number).Word(Operation);
	for (const FString& Text : Given)
	{
		Words.Text(Text);
	}
	Writer->Add(MoveTemp(Words));
}

FString FRecordedCall::Return(const FString& Answer) const
{
	Writer->Add(MoveTemp(FRecordWords(ERecordKind::Return).Number(Number).Word(Operation).Text(Answer)));
	return Answer;
}

bool FRecordedCall::Return(bool bAnswer) const
{
	Return(ToFlag(bAnswer));
	return bAnswer;
}

std::string MakeSummaryLines(const TArray<FConversationMetadata>& Conversations, const FRecordWriter& Writer)
{
	std::string Lines;
	for (int32 Index = 0; Index < FMath::Min(Conversations.Num(), MaxSummaries); ++Index)
	{
		const FConversationMetadata& Conversation = Conversations[Index];
		Lines += FRecordWords(ERecordKind::Summary)
					 .Text(Conversation.Id)
					 .Number(static_cast<int64>(Conversation.Mode))
					 .Number(Conversation.LastUpdated.GetTicks())
					 .Number(Conversation.Messages.Num())
					 .GetLine();
		for (const FConversationMessage& Message : Conversation.Messages)
		{
			Lines += FRecordWords(ERecordKind::SummaryMessage)
						 .Number(static_cast<int64>(Message.Role))
						 .Flag(Message.bHasToolCalls)
						 .Text(Writer.Veil(Message.Content))
						 .GetLine();
		}
	}
	return Lines;
}

FRecordedAgent::FRecordedAgent(const TSharedRef<Velmora::FAgent>& InAgent, int32 InNumber, const std::shared_ptr<FRecordWriter>& InWriter)
	: Agent(InAgent)
	, Number(InNumber)
	, Writer(InWriter)
{
	ListenToTurn();
	ListenToConversation();
}

FRecordedAgent::~FRecordedAgent()
{
	Writer->Add(Beginning(ERecordKind::Gone));
}

FRecordWords FRecordedAgent::Beginning(ERecordKind Kind) const
{
	return MoveTemp(FRecordWords(Kind).Number(Number));
}

// What is called may let go of this object: nothing of it is touched after the call.
FString FRecordedAgent::Perform(const FAgentCall& Call, TFunctionRef<FString(Velmora::FAgent&)> Do)
{
	TArray<FString> Given = Call.Plain;
	for (const FString& Text : Call.Texts)
	{
		Given.Add(Writer->Veil(Text));
	}
	const FRecordedCall Recorded(Number, Writer, Call.Operation, Given);
	return Recorded.Return(Do(*Agent));
}

const FAgentAnswers& FRecordedAgent::Look(ERecordKind Kind) const
{
	switch (Kind)
	{
	case ERecordKind::State:
		Answers.State = Agent->GetState();
		NoteNumber(Kind, static_cast<int32>(Answers.State));
		break;
	case ERecordKind::HasActive:
		Answers.bHasActive = Agent->HasActiveConversation();
		NoteNumber(Kind, Answers.bHasActive ? 1 : 0);
		break;
	case ERecordKind::CanUndo:
		Answers.bCanUndo = Agent->CanUndo();
		NoteNumber(Kind, Answers.bCanUndo ? 1 : 0);
		break;
	case ERecordKind::Transaction:
		Answers.Transaction = Agent->GetCurrentTransactionId();
		NoteText(Kind, Answers.Transaction);
		break;
	case ERecordKind::Title:
		Answers.Title = Agent->GetCurrentConversationTitle();
		NoteText(Kind, Answers.Title);
		break;
	default:
		Answers.Plan = Agent->GetCurrentPlan();
		NoteText(Kind, Answers.Plan);
		break;
	}
	return Answers;
}

bool FRecordedAgent::IsNew(ERecordKind Kind, const FString& Answer) const
{
	TOptional<FString>& Last = Noted.Answers[static_cast<size_t>(Kind) - static_cast<size_t>(ERecordKind::State)];
	const bool bIsNew = !Last.IsSet() || !Last.GetValue().Equals(Answer, ESearchCase::CaseSensitive);
	Last = Answer;
	return bIsNew;
}

void FRecordedAgent::NoteNumber(ERecordKind Kind, int32 Answer) const
{
	if (IsNew(Kind, FString::FromInt(Answer)))
	{
		Writer->Add(MoveTemp(Beginning(Kind).Number(Answer)));
	}
}

void FRecordedAgent::NoteText(ERecordKind Kind, const FString& Answer) const
{
	if (IsNew(Kind, Answer))
	{
		// Numbers of transactions are our own.
		const FString Shown = Kind == ERecordKind::Transaction ? Answer : Writer->Veil(Answer);
		Writer->Add(MoveTemp(Beginning(Kind).Text(Shown)));
	}
}

TArray<FConversationMetadata> FRecordedAgent::GetConversationHistories() const
{
	const TArray<FConversationMetadata> Now = Agent->GetConversationHistories();
	const int32 Count = FMath::Min(Now.Num(), MaxSummaries);
	Writer->AddLines(FRecordWords(ERecordKind::Stored).Number(Count).GetLine() + MakeSummaryLines(Now, *Writer));
	return Now;
}

TSharedPtr<FConversationMetadata> FRecordedAgent::GetCurrentConversationMetadata() const
{
	const TSharedPtr<FConversationMetadata> Now = Agent->GetCurrentConversationMetadata();
	NoteConversation(Now);
	return Now;
}

void FRecordedAgent::NoteConversation(const TSharedPtr<FConversationMetadata>& Now) const
{
	// 1. Another one, or none.
	FNoted& Last = Noted;
	const bool bIsSame = Last.bConversationWritten && Now.IsValid() == Last.bHasConversation &&
		(!Now || (Last.Conversation.HasSameObject(Now.Get()) && Last.Id.Equals(Now->Id)));
	if (!bIsSame)
	{
		Last.bConversationWritten = true;
		Last.bHasConversation = Now.IsValid();
		Last.Conversation = Now;
		Last.Id = Now ? Now->Id : FString();
		Last.Mode = Now ? static_cast<int32>(Now->Mode) : 0;
		Last.Ticks = Now ? Now->LastUpdated.GetTicks() : 0;
		Last.MessageCount = 0;
		Writer->Add(MoveTemp(Beginning(ERecordKind::Conversation).Flag(Now.IsValid()).Text(Last.Id).Number(Last.Mode).Number(Last.Ticks)));
	}
	if (!Now)
	{
		return;
	}

	// 2. What has changed in it.
	if (Last.Mode != static_cast<int32>(Now->Mode))
	{
		Last.Mode = static_cast<int32>(Now->Mode);
		Writer->Add(MoveTemp(Beginning(ERecordKind::Mode).Number(Last.Mode)));
	}
	if (Last.Ticks != Now->LastUpdated.GetTicks())
	{
		Last.Ticks = Now->LastUpdated.GetTicks();
		Writer->Add(MoveTemp(Beginning(ERecordKind::Time).Number(Last.Ticks)));
	}
	NoteMessages(*Now);
}

void FRecordedAgent::NoteMessages(const FConversationMetadata& Now) const
{
	int32& Count = Noted.MessageCount;
	if (Now.Messages.Num() < Count)
	{
		Count = Now.Messages.Num();
		Writer->Add(MoveTemp(Beginning(ERecordKind::Cut).Number(Count)));
	}
	for (; Count < Now.Messages.Num(); ++Count)
	{
		const FConversationMessage& Message = Now.Messages[Count];
		Writer->Add(MoveTemp(Beginning(ERecordKind::Message)
								 .Number(static_cast<int64>(Message.Role))
								 .Flag(Message.bHasToolCalls)
								 .Text(Writer->Veil(Message.Content))));
	}
}

// Callbacks hold the file and who listens, and not this object, which they may let go of. A copy is called: it may replace itself.

void FRecordedAgent::ListenToTurn()
{
	Agent->OnMessageReceived(
		[Number = Number, Writer = Writer, Listeners = Listeners](const FString& Text, bool bHasToolCalls)
		{
			if (const auto Listener = Listeners->Message)
			{
				Writer->Add(MoveTemp(CalledBack(Number, TEXT("message")).Text(Writer->Veil(Text)).Text(ToFlag(bHasToolCalls))));
				Listener(Text, bHasToolCalls);
			}
		});
	Agent->OnToolExecutionStarted(
		[Number = Number, Writer = Writer, Listeners = Listeners](
			const FString& Id, const FString& Name, const FString& Parameters, const FString& Metadata)
		{
			if (const auto Listener = Listeners->ToolStarted)
			{
				Writer->Add(MoveTemp(CalledBack(Number, TEXT("tool-started"))
										 .Text(Id)
										 .Text(Name)
										 .Text(VeilJson(*Writer, Parameters))
										 .Text(VeilJson(*Writer, Metadata))));
				Listener(Id, Name, Parameters, Metadata);
			}
		});
	Agent->OnToolExecutionCompleted(
		[Number = Number, Writer = Writer, Listeners = Listeners](
			const FString& Id, const FString& Name, bool bSuccess, const FString& Result)
		{
			if (const auto Listener = Listeners->ToolCompleted)
			{
				Writer->Add(MoveTemp(
					CalledBack(Number, TEXT("tool-completed")).Text(Id).Text(Name).Text(ToFlag(bSuccess)).Text(Writer->Veil(Result))));
				Listener(Id, Name, bSuccess, Result);
			}
		});
	Agent->OnProcessMessage(
		[Number = Number, Writer = Writer, Listeners = Listeners](const FString& Text)
		{
			if (const auto Listener = Listeners->Progress)
			{
				Writer->Add(MoveTemp(CalledBack(Number, TEXT("progress")).Text(Writer->Masks() ? FRecordMask::MaskProgress(Text) : Text)));
				Listener(Text);
			}
		});
	Agent->OnPlanUpdate(
		[Number = Number, Writer = Writer, Listeners = Listeners](const FString& First, const FString& PlanText)
		{
			if (const auto Listener = Listeners->Plan)
			{
				Writer->Add(MoveTemp(CalledBack(Number, TEXT("plan")).Text(Writer->Veil(First)).Text(Writer->Veil(PlanText))));
				Listener(First, PlanText);
			}
		});
}

void FRecordedAgent::ListenToConversation()
{
	Agent->OnStateChanged(
		[Number = Number, Writer = Writer, Listeners = Listeners](
			EConversationState OldState, EConversationState NewState, const FString& Reason)
		{
			if (const auto Listener = Listeners->State)
			{
				Writer->Add(MoveTemp(CalledBack(Number, TEXT("state"))
										 .Text(FString::FromInt(static_cast<int32>(OldState)))
										 .Text(FString::FromInt(static_cast<int32>(NewState)))
										 .Text(Writer->Veil(Reason))));
				Listener(OldState, NewState, Reason);
			}
		});
	Agent->OnError(
		[Number = Number, Writer = Writer, Listeners = Listeners](const FString& Error)
		{
			if (const auto Listener = Listeners->Error)
			{
				Writer->Add(MoveTemp(CalledBack(Number, TEXT("error")).Text(Writer->Veil(Error))));
				Listener(Error);
			}
		});
	Agent->OnConversationCompleted(
		[Number = Number, Writer = Writer, Listeners = Listeners](bool bSuccess, const FString& Summary)
		{
			if (const auto Listener = Listeners->Completed)
			{
				Writer->Add(MoveTemp(CalledBack(Number, TEXT("completed")).Text(ToFlag(bSuccess)).Text(Writer->Veil(Summary))));
				Listener(bSuccess, Summary);
			}
		});
	Agent->OnConversationLoaded(
		[Number = Number, Writer = Writer, Listeners = Listeners](const FString& Id)
		{
			if (const auto Listener = Listeners->Loaded)
			{
				Writer->Add(MoveTemp(CalledBack(Number, TEXT("loaded")).Text(Id)));
				Listener(Id);
			}
		});
}
