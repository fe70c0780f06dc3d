#include "Agent/AgentSession.h"

#include "Store/ConversationStore.h"
#include "Store/StoreNotices.h"
#include "Store/TurnRecorder.h"
#include "Text/Utf8Text.h"

#include "Async/Async.h"

#include <utility>

DEFINE_LOG_CATEGORY_STATIC(LogConversationStore, Log, All);

// What the session does with the conversation store. Everything that a callback tells is in the store before, unless the store
// cannot be written: then it goes on in memory, and is stored in order as soon as that works.

namespace Velmora
{
	namespace
	{
		constexpr int32 MaxTitleLength = 50;

		/** How often a store that does not take what was said is tried again, and how long a frame may wait for it then. */
		constexpr float RetrySeconds = 1.0f;
		constexpr int32 RetryTimeoutMilliseconds = 5;

		/**
		 * One line of at most 50 characters: each line break becomes a blank, white space at the ends goes, what is too
		 * long is cut and marked. Looks no further into the text than that needs.
		 */
		FString MakeConversationTitle(const FString& Text)
		{
			const int32 Length = Text.Len();
			int32 Index = 0;
			while (Index < Length && FChar::IsWhitespace(Text[Index]))
			{
				++Index;
			}
			FString Title;
			for (; Index < Length && Title.Len() <= MaxTitleLength; ++Index)
			{
				const TCHAR Unit = Text[Index];
				if (Unit == TEXT('\r') && Index + 1 < Length && Text[Index + 1] == TEXT('\n'))
				{
					++Index;
				}
				Title.AppendChar(Unit == TEXT('\r') || Unit == TEXT('\n') ? TEXT(' ') : Unit);
			}
			// Blanks at the place of the cut are the end of the title only if nothing else follows.
			while (Index < Length && FChar::IsWhitespace(Text[Index]))
			{
				++Index;
			}
			if (Index == Length)
			{
				Title.TrimEndInline();
			}
			return Title.Len() > MaxTitleLength ? Title.Left(MaxTitleLength) + TEXT("...") : Title;
		}
	}

	void FAgentSession::OpenStore()
	{
		const TSharedRef<FConversationStore> Default = FConversationStore::GetDefault();
		if (Store != Default.ToSharedPtr())
		{
			Store = Default;
			Default->CheckSoon();
		}
	}

	FConversationStore& FAgentSession::GetStore()
	{
		if (!Store.IsValid())
		{
			OpenStore();
		}
		return *Store;
	}

	void FAgentSession::AddMessage(const FString& Text, EConversationRole Role, bool bHasToolCalls)
	{
		// An undo may have dropped messages, here and in the store.
		StoredCount = FMath::Min(StoredCount, Current->Messages.Num());
		FConversationMessage Message;
		Message.Content = Text;
		Message.Role = Role;
		Message.bHasToolCalls = bHasToolCalls;
		Current->Messages.Add(MoveTemp(Message));
	}

	FOutcome FAgentSession::RecordUserMessage(const FString& Text, const TArray<FString>& Files)
	{
		AddMessage(Text, EConversationRole::User);
		if (!Files.IsEmpty())
		{
			Attached.Add(Current->Messages.Num() - 1, Files);
		}
		return CatchUp();
	}

	FOutcome FAgentSession::RecordReported(const FTurnReport& Report)
	{
		AddMessage(Report.Text, Report.Kind == ETurnReportKind::Answer ? EConversationRole::Assistant : EConversationRole::Tool,
			Report.bHasToolCalls);
		Current->LastUpdated = FDateTime::Now();
		if (Recorder->TakeStored())
		{
			StoredCount = Current->Messages.Num();
		}
		return CatchUp();
	}

	FOutcome FAgentSession::CatchUp()
	{
		bIsBehind = StoredCount < Current->Messages.Num();
		FOutcome Stored = CatchUpOnce(FConversationStore::FrameTimeoutMilliseconds);
		if (!Stored)
		{
			RetryLater();
		}
		return Stored;
	}

	FOutcome FAgentSession::CatchUpOnce(int32 TimeoutMilliseconds)
	{
		FOutcome Stored = Unstored.Store(TimeoutMilliseconds);
		if (bIsBehind)
		{
			Stored = Stored ? GetStore().Append(*Current, StoredCount, TimeoutMilliseconds, Attached) : Stored;
			StoredCount = Stored ? Current->Messages.Num() : StoredCount;
			bIsBehind = !Stored;
		}
		if (Stored && std::exchange(bHasToldStoreProblem, false))
		{
			TellSoon({ "All that was said is stored now." });
		}
		return Stored;
	}

	void FAgentSession::RetryLater()
	{
		if (RetryTicker.IsValid())
		{
			return;
		}
		RetryTicker = FTSTicker::GetCoreTicker().AddTicker(TEXT("StoreAgain"), RetrySeconds,
			[WeakSession = TWeakPtr<FAgentSession>(AsShared())](float)
			{
				const TSharedPtr<FAgentSession> Session = WeakSession.Pin();
				// What is being undone is not stored first.
				const bool bGoesOn = Session.IsValid() && (Session->bIsUndoing || !Session->CatchUpOnce(RetryTimeoutMilliseconds));
				if (Session.IsValid() && !bGoesOn)
				{
					Session->RetryTicker.Reset();
				}
				return bGoesOn;
			});
	}

	void FAgentSession::KeepUnstored()
	{
		if (Current.IsValid() && bIsBehind && StoredCount < Current->Messages.Num())
		{
			Unstored.Add(GetStore().AsShared(), Current.ToSharedRef(), StoredCount, Attached);
			RetryLater();
		}
		bIsBehind = false;
	}

	void FAgentSession::StoreAtLast()
	{
		FTSTicker::RemoveTicker(RetryTicker);
		KeepUnstored();
		FTSTicker::RemoveTicker(RetryTicker);
		const FOutcome Stored = Unstored.Store(FConversationStore::WorkerTimeoutMilliseconds);
		if (!Stored)
		{
			const std::string Count = Utf8Text::Count(static_cast<size_t>(Unstored.CountMessages()), "message", "messages");
			UE_LOG(LogConversationStore, Error, TEXT("%s could not be stored. %s"), *Utf8Text::ToString(Count),
				*Utf8Text::ToString(Stored.GetWords()));
		}
		Unstored.Clear();
	}

	void FAgentSession::TellStoreProblemSoon(const FOutcome& Failure)
	{
		AsyncTask(ENamedThreads::GameThread,
			[WeakSession = TWeakPtr<FAgentSession>(AsShared()), Failure]
			{
				const TSharedPtr<FAgentSession> Session = WeakSession.Pin();
				if (Session.IsValid() && Session->bIsBehind)
				{
					Session->TellStoreProblem(Failure);
				}
			});
	}

	void FAgentSession::TellStoreProblem(const FOutcome& Failure)
	{
		if (!bHasToldStoreProblem)
		{
			bHasToldStoreProblem = true;
			Fire(Callbacks.Error,
				FString(TEXT("What is said is not stored for now; it will be as soon as that works. ")) +
					Utf8Text::ToString(Failure.GetWords()));
		}
	}

	bool FAgentSession::LoadConversation(const FString& Id)
	{
		if (HasTurn() && !IsWorking())
		{
			CancelConversation();
		}
		if (HasTurn() || bIsUndoing)
		{
			Fire(Callbacks.Error, FString(TEXT("Another conversation can be opened when the agent has finished or is stopped.")));
			return false;
		}
		const bool bIsCurrent = Current.IsValid() && Current->Id == Id;
		const bool bIsUnstored = !bIsCurrent && Unstored.Has(Id);
		TOutcome<FConversationMetadata> Stored = GetStore().Load(Id);
		if (!Stored && !bIsCurrent && !bIsUnstored)
		{
			Fire(Callbacks.Error,
				Stored.Is(EOutcome::Missing) ? FString(TEXT("The conversation is no longer in the store; it cannot be opened."))
											 : Utf8Text::ToString(Stored.GetWords()));
			return false;
		}
		if (bIsUnstored)
		{
			EndConversation();
			Current = Unstored.Take(Id, StoredCount, Attached);
			bIsBehind = true;
		}
		else if (!bIsCurrent)
		{
			EndConversation();
			Current = MakeShared<FConversationMetadata>(MoveTemp(*Stored));
			StoredCount = Current->Messages.Num();
			TakeAttached();
		}
		else if (Stored && StoredCount == Current->Messages.Num())
		{
			// Another program may have gone on with it.
			Current->Messages = MoveTemp(Stored->Messages);
			StoredCount = Current->Messages.Num();
			TakeAttached();
		}
		const FString LoadedId = Current->Id;
		const uint32 StartEpoch = Epoch;
		SetOpened(TEXT("A stored conversation was opened."));
		if (Epoch == StartEpoch)
		{
			if (!bIsCurrent)
			{
				TellWhereItStopped();
			}
			Fire(Callbacks.ConversationLoaded, LoadedId);
		}
		return true;
	}

	void FAgentSession::TakeAttached()
	{
		// A conversation is opened without them, too.
		TOutcome<FAttachedFiles> Stored = GetStore().LoadAttached(Current->Id);
		Attached = Stored ? MoveTemp(*Stored) : FAttachedFiles();
	}

	void FAgentSession::TellWhereItStopped()
	{
		const FConversationMessage* const Last = Current->Messages.Num() > 0 ? &Current->Messages.Last() : nullptr;
		if (Last && (Last->Role != EConversationRole::Assistant || Last->bHasToolCalls))
		{
			TellSoon(
				{ "The last turn of this conversation was cut short: it has no answer. What it did is kept; send a message to go on." });
		}
	}

	bool FAgentSession::DeleteConversationHistory(const FString& Id)
	{
		if (bIsUndoing)
		{
			return false;
		}
		const FOutcome Deleted = GetStore().Delete(Id);
		if (!Deleted && !Deleted.Is(EOutcome::Missing))
		{
			Fire(Callbacks.Error, Utf8Text::ToString(Deleted.GetWords()));
			return false;
		}
		ForgetChanges(Id);
		if (!Current.IsValid() || Current->Id != Id)
		{
			const bool bWasUnstored = Unstored.Has(Id);
			Unstored.Remove(Id);
			return Deleted.IsDone() || bWasUnstored;
		}
		bIsBehind = false;
		const EConversationMode Mode = Current->Mode;
		EndConversation();
		OpenEmptyConversation(Mode);
		SetOpened(TEXT("The conversation was deleted."));
		return true;
	}

	void FAgentSession::ClearAllHistories()
	{
		if (bIsUndoing)
		{
			return;
		}
		if (HasTurn() && !IsWorking())
		{
			CancelConversation();
		}
		if (const FOutcome Cleared = GetStore().Clear(); !Cleared)
		{
			Fire(Callbacks.Error, Utf8Text::ToString(Cleared.GetWords()));
			return;
		}
		ForgetChanges(FString());
		StoredCount = 0;
		bIsBehind = false;
		Unstored.Clear();
		if (Recorder.IsValid())
		{
			Recorder->Forget();
		}
	}

	TArray<FConversationMetadata> FAgentSession::GetHistories()
	{
		TOutcome<TArray<FConversationMetadata>> Summaries = GetStore().GetSummaries();
		if (!Summaries)
		{
			Fire(Callbacks.Error, Utf8Text::ToString(Summaries.GetWords()));
			return TArray<FConversationMetadata>();
		}
		TArray<FConversationMetadata> All = Unstored.GetAll();
		for (FConversationMetadata& Summary : *Summaries)
		{
			if (!Unstored.Has(Summary.Id))
			{
				All.Add(MoveTemp(Summary));
			}
		}
		return All;
	}

	FString FAgentSession::GetTitle() const
	{
		if (!Current.IsValid())
		{
			return FString();
		}
		const FConversationMessage* First = Current->Messages.FindByPredicate(
			[](const FConversationMessage& Message) { return Message.IsUserMessage() && !Message.Content.IsEmpty(); });
		return First ? MakeConversationTitle(First->Content) : FString();
	}

	void FAgentSession::ListenForNotices()
	{
		StoreNotices::SetListener(
			[WeakSession = TWeakPtr<FAgentSession>(AsShared())]
			{
				if (const TSharedPtr<FAgentSession> Session = WeakSession.Pin())
				{
					Session->TellNotices();
				}
			});
		StoreNotices::Remind();
	}

	void FAgentSession::TellNotices()
	{
		// An agent whose conversation has ended is silent; the next one tells.
		if (!Callbacks.Error || !Current.IsValid())
		{
			return;
		}
		for (const std::string& Notice : StoreNotices::Take())
		{
			Fire(Callbacks.Error, Utf8Text::ToString(Notice));
		}
		// Told as an error, it would fail the turn that it happens to come into.
		TellSoon(StoreNotices::TakeNews());
	}
}
