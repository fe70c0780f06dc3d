#include "ReplayTape.h"

#include "ConversationPrinter.h"
#include "History/AssetHistoryTracker.h"
#include "History/FileHistoryTracker.h"
#include "Host/AgentSeam.h"
#include "Host/HostClock.h"
#include "Host/HostMotion.h"
#include "Host/HostTasks.h"
#include "Host/UpdateGateControl.h"
#include "ProblemToasts.h"
#include "ReplayAgent.h"
#include "WindowContrast.h"

#include <chrono>
#include <thread>

using Velmora::EConversationMode;
using Velmora::EConversationRole;
using Velmora::EConversationState;
using Velmora::FConversationMessage;
using Velmora::FConversationMetadata;

namespace
{
	/** A worker that was let go needs a moment to hand its list over. */
	constexpr auto HandOverTime = std::chrono::seconds(2);
	constexpr auto LookTime = std::chrono::microseconds(200);

	/** Numbers of a vocabulary that a later version may have more of. */
	template <typename EWord>
	EWord ToWord(int64 Number, EWord Last)
	{
		return Number >= 0 && Number <= static_cast<int64>(Last) ? static_cast<EWord>(Number) : Last;
	}

	FDateTime ToTime(int64 Ticks)
	{
		return FDateTime(FMath::Clamp<int64>(Ticks, 0, FDateTime::MaxValue().GetTicks()));
	}

	FConversationMessage MakeMessage(int64 Role, bool bHasToolCalls, FString&& Content)
	{
		FConversationMessage Message;
		Message.Role = ToWord(Role, EConversationRole::Tool);
		Message.bHasToolCalls = bHasToolCalls;
		Message.Content = MoveTemp(Content);
		return Message;
	}

	bool IsAnswer(ERecordKind Kind)
	{
		return Kind >= ERecordKind::State && Kind <= ERecordKind::File;
	}

	template <typename FTracker, typename FOperations>
	void ForgetAll(FTracker& Tracker, const FOperations& All)
	{
		TArray<TPair<FString, FString>> Groups;
		for (const auto& Conversation : All)
		{
			for (const auto& Group : Conversation.Value)
			{
				Groups.Emplace(Conversation.Key, Group.Key);
			}
		}
		for (const TPair<FString, FString>& Group : Groups)
		{
			Tracker.RemoveGroup(Group.Key, Group.Value);
		}
	}
}

void FReplayTape::NoteDifference()
{
	if (bCompares && Reader.HasTurn())
	{
		bCompares = false;
		PrintToStandardError(
			FString::Printf(TEXT("velmora: From %.2f s on the picture is not the recorded one: the session showed something "
								 "that no recording holds, or was one of another version.\n"),
				FHostClock::GetElapsed()));
	}
}

void FReplayTape::SetAgent(int32 Number, FReplayAgent* Agent)
{
	Agents.Add(Number, Agent);
}

void FReplayTape::TakeAnswers()
{
	for (const FRecordLine* Head = Reader.Peek(); Head; Head = Reader.Peek())
	{
		const ERecordKind Kind = Head->GetKind();
		if (IsAnswer(Kind))
		{
			TakeAnswer(Reader.Take());
		}
		else if (Kind == ERecordKind::Gone || Kind == ERecordKind::Note || Kind == ERecordKind::End)
		{
			Reader.Take();
		}
		else
		{
			return;
		}
	}
}

void FReplayTape::TakeAnswer(const FRecordLine& Line)
{
	FReplayAnswers& Of = Answers.FindOrAdd(static_cast<int32>(Line.Number(0)));
	switch (Line.GetKind())
	{
	case ERecordKind::State:
		Of.State = ToWord(Line.Number(1), EConversationState::Error);
		break;
	case ERecordKind::HasActive:
		Of.bHasActive = Line.Flag(1);
		break;
	case ERecordKind::CanUndo:
		Of.bCanUndo = Line.Flag(1);
		break;
	case ERecordKind::Transaction:
		Of.Transaction = Line.Text(1);
		break;
	case ERecordKind::Title:
		Of.Title = Line.Text(1);
		break;
	case ERecordKind::Plan:
		Of.Plan = Line.Text(1);
		break;
	case ERecordKind::Last:
		TakeLastMessage(Line);
		break;
	case ERecordKind::Look:
		FWindowContrast::SetHigh(Line.Flag(0));
		FHostMotion::SetReduced(Line.Flag(1));
		break;
	case ERecordKind::TurnStatus:
		TurnStatus.bIsRunning = Line.Flag(0);
		TurnStatus.Seconds = Line.Real(1);
		TurnStatus.Tokens = Line.Number(2);
		TurnStatus.Agent = Line.Text(3);
		break;
	case ERecordKind::Operations:
		ForgetOperations();
		break;
	case ERecordKind::Operation:
		TakeOperation(Line);
		break;
	case ERecordKind::Files:
		bFilesReady = Line.Flag(0);
		bFilesIndexing = Line.Flag(1);
		FileCount = static_cast<int32>(Line.Number(2));
		break;
	case ERecordKind::FileList:
		Files.Empty();
		break;
	case ERecordKind::File:
		TakeFile(Line);
		break;
	default:
		TakeConversationAnswer(Line);
		break;
	}
}

void FReplayTape::TakeLastMessage(const FRecordLine& Line)
{
	LastMessage.Reset();
	if (Line.Flag(0))
	{
		Velmora::FLastMessage Last;
		Last.bCanUndo = Line.Flag(1);
		Last.Text = Line.Text(2);
		for (int32 Index = 3; Index < Line.Num(); ++Index)
		{
			Last.Files.Add(Line.Text(Index));
		}
		LastMessage = MoveTemp(Last);
	}
}

void FReplayTape::TakeFile(const FRecordLine& Line)
{
	Velmora::FProjectFileCacheEntry File;
	File.Path = Line.Text(0);
	File.bIsDirectory = Line.Flag(1);
	File.Type = ToWord(Line.Number(2), Velmora::EProjectFileType::Other);
	Files.Add(MoveTemp(File));
}

void FReplayTape::TakeConversationAnswer(const FRecordLine& Line)
{
	TSharedPtr<FConversationMetadata>& Conversation = Answers.FindOrAdd(static_cast<int32>(Line.Number(0))).Conversation;
	if (Line.GetKind() == ERecordKind::Conversation)
	{
		Conversation.Reset();
		if (Line.Flag(1))
		{
			Conversation = MakeShared<FConversationMetadata>();
			Conversation->Id = Line.Text(2);
			Conversation->Mode = ToWord(Line.Number(3), EConversationMode::General);
			Conversation->LastUpdated = ToTime(Line.Number(4));
		}
	}
	else if (!Conversation)
	{
		return;
	}
	else if (Line.GetKind() == ERecordKind::Mode)
	{
		Conversation->Mode = ToWord(Line.Number(1), EConversationMode::General);
	}
	else if (Line.GetKind() == ERecordKind::Time)
	{
		Conversation->LastUpdated = ToTime(Line.Number(1));
	}
	else if (Line.GetKind() == ERecordKind::Message)
	{
		Conversation->Messages.Add(MakeMessage(Line.Number(1), Line.Flag(2), Line.Text(3)));
	}
	else if (Line.GetKind() == ERecordKind::Cut)
	{
		const int64 Count = FMath::Clamp<int64>(Line.Number(1), 0, Conversation->Messages.Num());
		Conversation->Messages.SetNum(static_cast<int32>(Count));
	}
}

void FReplayTape::ForgetOperations()
{
	ForgetAll(FFileHistoryTracker::Get(), FFileHistoryTracker::Get().GetAllFileOperations());
	ForgetAll(FAssetHistoryTracker::Get(), FAssetHistoryTracker::Get().GetAllAssetOperations());
}

void FReplayTape::TakeOperation(const FRecordLine& Line)
{
	const auto Fill = [&Line](auto Operation)
	{
		Operation.Path = Line.Text(3);
		Operation.Action = static_cast<uint8>(FMath::Clamp<int64>(Line.Number(4), 0, 255));
		Operation.Time = ToTime(Line.Number(5));
		return Operation;
	};
	if (Line.Flag(0))
	{
		FAssetHistoryTracker::Get().AddOperation(Line.Text(1), Line.Text(2), Fill(FAssetOperation()));
	}
	else
	{
		FFileHistoryTracker::Get().AddOperation(Line.Text(1), Line.Text(2), Fill(FFileOperation()));
	}
}

void FReplayTape::Deliver()
{
	while (DeliverNext())
	{
	}
}

bool FReplayTape::DeliverNext()
{
	TakeAnswers();
	const FRecordLine* const Head = Reader.Peek();
	if (!Head)
	{
		return false;
	}
	switch (Head->GetKind())
	{
	case ERecordKind::Callback:
		FireCallback(Reader.Take());
		return true;
	case ERecordKind::Ask:
		Ask(Reader.Take());
		return true;
	case ERecordKind::Asked:
		Reader.Take();
		Velmora::FAgentSeam::TellQuestion(nullptr);
		return true;
	case ERecordKind::Gate:
	{
		const FRecordLine Line = Reader.Take();
		Velmora::FUpdateGateControl::SetState(
			ToWord(Line.Number(0), Velmora::EUpdateGateState::RestartRequired), Line.Text(1), Line.Text(2));
		return true;
	}
	case ERecordKind::Toast:
	{
		const FRecordLine Line = Reader.Take();
		bIsTelling = true;
		FProblemToasts::Tell(Line.Text(0));
		bIsTelling = false;
		return true;
	}
	case ERecordKind::Summaries:
		ReleaseSummaries();
		return true;
	default:
		return false;
	}
}

void FReplayTape::FireCallback(const FRecordLine& Line)
{
	FReplayAgent* const* const Agent = Agents.Find(static_cast<int32>(Line.Number(0)));
	if (Agent && *Agent)
	{
		(*Agent)->Fire(Line);
	}
}

void FReplayTape::Ask(const FRecordLine& Line)
{
	Velmora::FAgentQuestion Question;
	Question.Id = static_cast<uint32>(Line.Number(0));
	Question.Tool = Line.Text(1);
	Question.Subject = Line.Text(2);
	Question.Text = Line.Text(3);
	Question.bMayBeRemembered = Line.Flag(4);
	Velmora::FAgentSeam::TellQuestion(&Question);
}

TOptional<FString> FReplayTape::Call(int32 Number, const char* Operation)
{
	// 1. It must stand here: who calls is what came before. Sentences and the like may have come in between.
	Deliver();
	const FRecordLine* Head = Reader.Peek();
	if (!Head || Head->GetKind() != ERecordKind::Call || Head->Number(0) != Number || Head->Word(1) != Operation)
	{
		NoteDifference();
		return TOptional<FString>();
	}
	Reader.Take();

	// 2. What happened within it. Turns are those of a window that shows progress, which a replay needs none of.
	while (Reader.Peek())
	{
		if (DeliverNext())
		{
			continue;
		}
		Head = Reader.Peek();
		if (!Head)
		{
			break;
		}
		if (Head->GetKind() == ERecordKind::Call)
		{
			PassCall();
			continue;
		}
		const FRecordLine Line = Reader.Take();
		if (Line.GetKind() == ERecordKind::Turn)
		{
			FHostClock::SetElapsed(Line.Real(0));
			bHasPassedTurns = true;
		}
		if (Line.GetKind() == ERecordKind::Return && Line.Number(0) == Number && Line.Word(1) == Operation)
		{
			return Line.Text(2);
		}
	}
	return TOptional<FString>();
}

void FReplayTape::PassCall()
{
	NoteDifference();
	int32 Depth = 0;
	for (TakeAnswers(); Reader.Peek(); TakeAnswers())
	{
		const ERecordKind Kind = Reader.Peek()->GetKind();
		Depth += Kind == ERecordKind::Call ? 1 : 0;
		Depth -= Kind == ERecordKind::Return ? 1 : 0;
		// Its callbacks show what became of it.
		if (!DeliverNext())
		{
			Reader.Take();
		}
		if (Depth <= 0)
		{
			return;
		}
	}
}

int32 FReplayTape::TakeAgent()
{
	Deliver();
	const FRecordLine* const Head = Reader.Peek();
	if (!Head || Head->GetKind() != ERecordKind::Agent)
	{
		NoteDifference();
		return -1;
	}
	return static_cast<int32>(Reader.Take().Number(0));
}

void FReplayTape::TakeClipboard(FString& Text)
{
	Deliver();
	const FRecordLine* const Head = Reader.Peek();
	if (!Head || Head->GetKind() != ERecordKind::Clipboard)
	{
		NoteDifference();
		return;
	}
	Text = Reader.Take().Text(0);
}

void FReplayTape::TakeCanPaste(bool& bCanPaste)
{
	Deliver();
	const FRecordLine* const Head = Reader.Peek();
	if (!Head || Head->GetKind() != ERecordKind::CanPaste)
	{
		NoteDifference();
		return;
	}
	bCanPaste = Reader.Take().Flag(0);
}

TArray<FConversationMetadata> FReplayTape::ReadList(int64 Count, TArray<FConversationMetadata>& Last)
{
	if (Count < 0)
	{
		return Last;
	}
	Last.Empty();
	for (const FRecordLine* Head = Reader.Peek(); Head; Head = Reader.Peek())
	{
		if (Head->GetKind() == ERecordKind::Summary)
		{
			const FRecordLine Line = Reader.Take();
			FConversationMetadata& Conversation = Last.AddDefaulted_GetRef();
			Conversation.Id = Line.Text(0);
			Conversation.Mode = ToWord(Line.Number(1), EConversationMode::General);
			Conversation.LastUpdated = ToTime(Line.Number(2));
		}
		else if (Head->GetKind() == ERecordKind::SummaryMessage && Last.Num() > 0)
		{
			const FRecordLine Line = Reader.Take();
			Last.Last().Messages.Add(MakeMessage(Line.Number(0), Line.Flag(1), Line.Text(2)));
		}
		else
		{
			break;
		}
	}
	return Last;
}

TArray<FConversationMetadata> FReplayTape::TakeStored()
{
	Deliver();
	const FRecordLine* const Head = Reader.Peek();
	if (!Head || Head->GetKind() != ERecordKind::Stored)
	{
		NoteDifference();
		return LastStored;
	}
	return ReadList(Reader.Take().Number(0), LastStored);
}

void FReplayTape::ReleaseSummaries()
{
	const int64 Count = Reader.Take().Number(0);
	{
		const std::lock_guard<std::mutex> Lock(Mutex);
		Released.push_back(ReadList(Count, LastSummaries));
	}
	Changed.notify_all();
	// The task that the worker queues now is the one that ran here when it was recorded.
	const auto End = std::chrono::steady_clock::now() + HandOverTime;
	while (!FHostTasks::HasPending() && std::chrono::steady_clock::now() < End)
	{
		std::this_thread::sleep_for(LookTime);
	}
	FHostTasks::RunGameThreadTasks();
}

TArray<FConversationMetadata> FReplayTape::WaitForSummaries()
{
	std::unique_lock<std::mutex> Lock(Mutex);
	Changed.wait(Lock, [this] { return bStopped || !Released.empty(); });
	if (Released.empty())
	{
		return TArray<FConversationMetadata>();
	}
	TArray<FConversationMetadata> List = MoveTemp(Released.front());
	Released.pop_front();
	return List;
}

void FReplayTape::Stop()
{
	{
		const std::lock_guard<std::mutex> Lock(Mutex);
		bStopped = true;
	}
	Changed.notify_all();
}
