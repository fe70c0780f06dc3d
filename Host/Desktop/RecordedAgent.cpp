#include "RecordedAgent.h"

#include "RecordMask.h"

using Velmora::EConversationMode;
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
}

FRecordedAgent::~FRecordedAgent()
{
	Writer->Add(Beginning(ERecordKind::Gone));
}

FRecordWords FRecordedAgent::Beginning(ERecordKind Kind) const
{
	return MoveTemp(FRecordWords(Kind).Number(Number));
}

// What is called may let go of this object: nothing of it is touched after a call.

FString FRecordedAgent::StartConversation(EConversationMode Mode)
{
	const FRecordedCall Call(Number, Writer, TEXT("start"), { FString::FromInt(static_cast<int32>(Mode)) });
	return Call.Return(Agent->StartConversation(Mode));
}

bool FRecordedAgent::SendMessage(const FString& Text, const TArray<FString>& ContextFiles)
{
	TArray<FString> Given = { Writer->Veil(Text) };
	for (const FString& File : ContextFiles)
	{
		Given.Add(Writer->Veil(File));
	}
	const FRecordedCall Call(Number, Writer, TEXT("send"), Given);
	return Call.Return(Agent->SendMessage(Text, ContextFiles));
}

void FRecordedAgent::PauseConversation()
{
	const FRecordedCall Call(Number, Writer, TEXT("pause"));
	Agent->PauseConversation();
	Call.Return(FString());
}

void FRecordedAgent::ResumeConversation(const FString& Prompt)
{
	const FRecordedCall Call(Number, Writer, TEXT("resume"), { Writer->Veil(Prompt) });
	Agent->ResumeConversation(Prompt);
	Call.Return(FString());
}

void FRecordedAgent::CancelConversation()
{
	const FRecordedCall Call(Number, Writer, TEXT("cancel"));
	Agent->CancelConversation();
	Call.Return(FString());
}

void FRecordedAgent::EndConversation()
{
	const FRecordedCall Call(Number, Writer, TEXT("end"));
	Agent->EndConversation();
	Call.Return(FString());
}

bool FRecordedAgent::LoadConversation(const FString& Id)
{
	const FRecordedCall Call(Number, Writer, TEXT("load"), { Id });
	return Call.Return(Agent->LoadConversation(Id));
}

bool FRecordedAgent::DeleteConversationHistory(const FString& Id)
{
	const FRecordedCall Call(Number, Writer, TEXT("delete"), { Id });
	return Call.Return(Agent->DeleteConversationHistory(Id));
}

void FRecordedAgent::ClearAllHistories()
{
	const FRecordedCall Call(Number, Writer, TEXT("clear"));
	Agent->ClearAllHistories();
	Call.Return(FString());
}

bool FRecordedAgent::UndoToTransaction(const FString& TransactionId)
{
	const FRecordedCall Call(Number, Writer, TEXT("undo"), { TransactionId });
	return Call.Return(Agent->UndoToTransaction(TransactionId));
}

EConversationState FRecordedAgent::GetState() const
{
	const EConversationState Now = Agent->GetState();
	if (!Answers.State.IsSet() || Answers.State.GetValue() != static_cast<int32>(Now))
	{
		Answers.State = static_cast<int32>(Now);
		Writer->Add(MoveTemp(Beginning(ERecordKind::State).Number(static_cast<int64>(Now))));
	}
	return Now;
}

bool FRecordedAgent::HasActiveConversation() const
{
	const bool bNow = Agent->HasActiveConversation();
	if (!Answers.bHasActive.IsSet() || Answers.bHasActive.GetValue() != bNow)
	{
		Answers.bHasActive = bNow;
		Writer->Add(MoveTemp(Beginning(ERecordKind::HasActive).Flag(bNow)));
	}
	return bNow;
}

bool FRecordedAgent::CanUndo() const
{
	const bool bNow = Agent->CanUndo();
	if (!Answers.bCanUndo.IsSet() || Answers.bCanUndo.GetValue() != bNow)
	{
		Answers.bCanUndo = bNow;
		Writer->Add(MoveTemp(Beginning(ERecordKind::CanUndo).Flag(bNow)));
	}
	return bNow;
}

void FRecordedAgent::NoteText(ERecordKind Kind, TOptional<FString>& Last, const FString& Now) const
{
	if (!Last.IsSet() || !Last.GetValue().Equals(Now, ESearchCase::CaseSensitive))
	{
		Last = Now;
		// Numbers of transactions are our own.
		const FString Shown = Kind == ERecordKind::Transaction ? Now : Writer->Veil(Now);
		Writer->Add(MoveTemp(Beginning(Kind).Text(Shown)));
	}
}

FString FRecordedAgent::GetCurrentConversationTitle() const
{
	const FString Now = Agent->GetCurrentConversationTitle();
	NoteText(ERecordKind::Title, Answers.Title, Now);
	return Now;
}

FString FRecordedAgent::GetCurrentTransactionId() const
{
	const FString Now = Agent->GetCurrentTransactionId();
	NoteText(ERecordKind::Transaction, Answers.Transaction, Now);
	return Now;
}

FString FRecordedAgent::GetCurrentPlan() const
{
	const FString Now = Agent->GetCurrentPlan();
	NoteText(ERecordKind::Plan, Answers.Plan, Now);
	return Now;
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
	FAnswers& Last = Answers;
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
	int32& Count = Answers.MessageCount;
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

// Callbacks hold the file and not this object, which they may let go of. None stays none.

void FRecordedAgent::OnMessageReceived(TFunction<void(const FString&, bool)> Callback)
{
	if (!Callback)
	{
		Agent->OnMessageReceived(nullptr);
		return;
	}
	Agent->OnMessageReceived(
		[Number = Number, Writer = Writer, Callback = MoveTemp(Callback)](const FString& Text, bool bHasToolCalls)
		{
			Writer->Add(MoveTemp(CalledBack(Number, TEXT("message")).Text(Writer->Veil(Text)).Text(ToFlag(bHasToolCalls))));
			Callback(Text, bHasToolCalls);
		});
}

void FRecordedAgent::OnToolExecutionStarted(TFunction<void(const FString&, const FString&, const FString&, const FString&)> Callback)
{
	if (!Callback)
	{
		Agent->OnToolExecutionStarted(nullptr);
		return;
	}
	Agent->OnToolExecutionStarted(
		[Number = Number, Writer = Writer, Callback = MoveTemp(Callback)](
			const FString& Id, const FString& Name, const FString& Parameters, const FString& Metadata)
		{
			Writer->Add(MoveTemp(CalledBack(Number, TEXT("tool-started"))
									 .Text(Id)
									 .Text(Name)
									 .Text(VeilJson(*Writer, Parameters))
									 .Text(VeilJson(*Writer, Metadata))));
			Callback(Id, Name, Parameters, Metadata);
		});
}

void FRecordedAgent::OnToolExecutionCompleted(TFunction<void(const FString&, const FString&, bool, const FString&)> Callback)
{
	if (!Callback)
	{
		Agent->OnToolExecutionCompleted(nullptr);
		return;
	}
	Agent->OnToolExecutionCompleted(
		[Number = Number, Writer = Writer, Callback = MoveTemp(Callback)](
			const FString& Id, const FString& Name, bool bSuccess, const FString& Result)
		{
			Writer->Add(
				MoveTemp(CalledBack(Number, TEXT("tool-completed")).Text(Id).Text(Name).Text(ToFlag(bSuccess)).Text(Writer->Veil(Result))));
			Callback(Id, Name, bSuccess, Result);
		});
}

void FRecordedAgent::OnStateChanged(TFunction<void(EConversationState, EConversationState, const FString&)> Callback)
{
	if (!Callback)
	{
		Agent->OnStateChanged(nullptr);
		return;
	}
	Agent->OnStateChanged(
		[Number = Number, Writer = Writer, Callback = MoveTemp(Callback)](
			EConversationState OldState, EConversationState NewState, const FString& Reason)
		{
			Writer->Add(MoveTemp(CalledBack(Number, TEXT("state"))
									 .Text(FString::FromInt(static_cast<int32>(OldState)))
									 .Text(FString::FromInt(static_cast<int32>(NewState)))
									 .Text(Writer->Veil(Reason))));
			Callback(OldState, NewState, Reason);
		});
}

void FRecordedAgent::OnError(TFunction<void(const FString&)> Callback)
{
	if (!Callback)
	{
		Agent->OnError(nullptr);
		return;
	}
	Agent->OnError(
		[Number = Number, Writer = Writer, Callback = MoveTemp(Callback)](const FString& Error)
		{
			Writer->Add(MoveTemp(CalledBack(Number, TEXT("error")).Text(Writer->Veil(Error))));
			Callback(Error);
		});
}

void FRecordedAgent::OnConversationCompleted(TFunction<void(bool, const FString&)> Callback)
{
	if (!Callback)
	{
		Agent->OnConversationCompleted(nullptr);
		return;
	}
	Agent->OnConversationCompleted(
		[Number = Number, Writer = Writer, Callback = MoveTemp(Callback)](bool bSuccess, const FString& Summary)
		{
			Writer->Add(MoveTemp(CalledBack(Number, TEXT("completed")).Text(ToFlag(bSuccess)).Text(Writer->Veil(Summary))));
			Callback(bSuccess, Summary);
		});
}

void FRecordedAgent::OnConversationLoaded(TFunction<void(const FString&)> Callback)
{
	if (!Callback)
	{
		Agent->OnConversationLoaded(nullptr);
		return;
	}
	Agent->OnConversationLoaded(
		[Number = Number, Writer = Writer, Callback = MoveTemp(Callback)](const FString& Id)
		{
			Writer->Add(MoveTemp(CalledBack(Number, TEXT("loaded")).Text(Id)));
			Callback(Id);
		});
}

void FRecordedAgent::OnProcessMessage(TFunction<void(const FString&)> Callback)
{
	if (!Callback)
	{
		Agent->OnProcessMessage(nullptr);
		return;
	}
	Agent->OnProcessMessage(
		[Number = Number, Writer = Writer, Callback = MoveTemp(Callback)](const FString& Text)
		{
			Writer->Add(MoveTemp(CalledBack(Number, TEXT("progress")).Text(Writer->Masks() ? FRecordMask::MaskProgress(Text) : Text)));
			Callback(Text);
		});
}

void FRecordedAgent::OnPlanUpdate(TFunction<void(const FString&, const FString&)> Callback)
{
	if (!Callback)
	{
		Agent->OnPlanUpdate(nullptr);
		return;
	}
	Agent->OnPlanUpdate(
		[Number = Number, Writer = Writer, Callback = MoveTemp(Callback)](const FString& First, const FString& PlanText)
		{
			Writer->Add(MoveTemp(CalledBack(Number, TEXT("plan")).Text(Writer->Veil(First)).Text(Writer->Veil(PlanText))));
			Callback(First, PlanText);
		});
}
