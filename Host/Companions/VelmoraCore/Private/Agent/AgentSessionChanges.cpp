#include "Agent/AgentSession.h"

#include <algorithm>

#include "Async/Async.h"
#include "Host/HostFileNames.h"
#include "Host/HostProgress.h"
#include "Host/ProjectFolder.h"
#include "Host/ProjectWalk.h"
#include "Host/StoreLocation.h"
#include "Misc/Guid.h"
#include "Misc/ScopeExit.h"

#include "Changes/ChangeJournal.h"
#include "Changes/ChangePublisher.h"
#include "Changes/UndoPlan.h"
#include "Host/BuiltInAgentOptions.h"
#include "Store/ConversationStore.h"
#include "Text/Utf8Text.h"
#include "Tools/PermissionRules.h"

namespace Velmora
{
	namespace
	{
		/** What a later start knows the messages from a place on by. */
		std::vector<std::string> MarkMessages(const TArray<FConversationMessage>& Messages, int32 First)
		{
			std::vector<std::string> Marks;
			for (int32 Index = First; Index < Messages.Num(); ++Index)
			{
				Marks.push_back(HashMessageText(HostFileNameToBytes(Messages[Index].Content)));
			}
			return Marks;
		}

		/** Any thread. */
		FOutcome CutStoredMessages(
			FConversationStore& Store, const FString& Id, int32 MessageIndex, int32 StoredCount, int32 TimeoutMilliseconds)
		{
			const FOutcome Cut = Store.TruncateMessages(Id, MessageIndex, TimeoutMilliseconds);
			// A store that cannot be written keeps nothing back of what it never had.
			return Cut || Cut.Is(EOutcome::Missing) || StoredCount <= MessageIndex ? FOutcome() : Cut;
		}

		/** Cuts the messages that an undo of a process that died was to cut, unless the conversation has gone on since. */
		std::string FinishMessages(FConversationStore& Store, const FLoggedUndo& Undo, std::string& OutNotice)
		{
			const FString Id = HostFileNameFromBytes(Undo.ConversationId);
			bool bHasGoneOn = false;
			const FOutcome Cut = Store.TruncateMessagesIf(Id, Undo.MessageIndex,
				[&Undo, &bHasGoneOn](const TArray<FConversationMessage>& Messages)
				{
					// The store may have been a message behind.
					const std::vector<std::string> Marks = MarkMessages(Messages, Undo.MessageIndex);
					bHasGoneOn =
						Marks.size() > Undo.MessageMarks.size() || !std::equal(Marks.begin(), Marks.end(), Undo.MessageMarks.begin());
					return !bHasGoneOn && !Marks.empty();
				});
			OutNotice = bHasGoneOn ? "Its conversation had gone on by then, so all of its messages stay." : "";
			return Cut || Cut.Is(EOutcome::Missing) ? std::string() : Cut.GetWords();
		}
	}

	void FAgentSession::OpenTransaction()
	{
		const FString Folder = GetStoreLocation().GetUndoFolder();
		if (!Journal || JournalFolder != Folder)
		{
			Journal = std::make_shared<FChangeJournal>(HostFileNameToBytes(Folder));
			JournalFolder = Folder;
		}
		TransactionId = FGuid::NewGuid().ToString();
		const int32 Index = Current->Messages.Num() - 1;
		Journal->OpenTransaction(HostFileNameToBytes(TransactionId), HostFileNameToBytes(Current->Id), Index, MarkOf(Index));
	}

	std::string FAgentSession::MarkOf(int32 MessageIndex) const
	{
		return HashMessageText(HostFileNameToBytes(Current->Messages[MessageIndex].Content));
	}

	void FAgentSession::AddToTransaction()
	{
		if (Journal && !TransactionId.IsEmpty())
		{
			Journal->AddMessage(HostFileNameToBytes(TransactionId), Current->Messages.Num() - 1);
		}
	}

	void FAgentSession::ForgetChanges(const FString& ConversationId)
	{
		if (!bHasFormerJournals)
		{
			ForgottenEarly.Add(ConversationId);
		}
		ForgetIn(ListJournals(), ConversationId);
	}

	void FAgentSession::ForgetIn(std::vector<std::shared_ptr<FChangeJournal>>&& Journals, const FString& ConversationId)
	{
		const std::string Staying = Current.IsValid() ? HostFileNameToBytes(Current->Id) : std::string();
		Workers.Add(Async(EAsyncExecution::Thread,
			[Journals = MoveTemp(Journals), Gone = HostFileNameToBytes(ConversationId), Staying]
			{
				for (const std::shared_ptr<FChangeJournal>& Known : Journals)
				{
					Known->ForgetConversations([&](const std::string& Id) { return Gone.empty() ? Id != Staying : Id == Gone; });
				}
			}));
	}

	void FAgentSession::TakeFormerJournals(std::vector<std::shared_ptr<FChangeJournal>>&& Adopted)
	{
		FormerJournals = MoveTemp(Adopted);
		bHasFormerJournals = true;
		for (const FString& ConversationId : TArray<FString>(MoveTemp(ForgottenEarly)))
		{
			ForgetIn(std::vector<std::shared_ptr<FChangeJournal>>(FormerJournals), ConversationId);
		}
	}

	std::vector<std::shared_ptr<FChangeJournal>> FAgentSession::ListJournals() const
	{
		std::vector<std::shared_ptr<FChangeJournal>> All;
		if (Journal)
		{
			All.push_back(Journal);
		}
		All.insert(All.end(), FormerJournals.begin(), FormerJournals.end());
		return All;
	}

	bool FAgentSession::PublishChanges()
	{
		const std::vector<FPerformedChange> Changes = Journal ? Journal->TakePerformed() : std::vector<FPerformedChange>();
		PublishToTrackers(Changes);
		return !Changes.empty();
	}

	FUndoResult FAgentSession::PerformUndo(const FString& Id, int32& OutMessageIndex)
	{
		// 1. What the worker does. The conversation is only looked at meanwhile, on this thread as well (bIsUndoing).
		const TSharedRef<FConversationMetadata> Conversation = Current.ToSharedRef();
		const auto Progress = std::make_shared<FUndoProgress>();
		const auto FirstUndone = std::make_shared<int32>(INDEX_NONE);
		FUndoRequest Request;
		Request.TransactionId = HostFileNameToBytes(Id);
		Request.ConversationId = HostFileNameToBytes(Conversation->Id);
		Request.Progress = Progress.get();
		Request.MarkMessages = [Conversation](int MessageIndex) { return MarkMessages(Conversation->Messages, MessageIndex); };
		Request.Commit = [Conversation, FirstUndone, DefaultStore = GetStore().AsShared(), Count = StoredCount](int MessageIndex)
		{
			*FirstUndone = MessageIndex;
			constexpr int32 Timeout = FConversationStore::WorkerTimeoutMilliseconds;
			return CutStoredMessages(*DefaultStore, Conversation->Id, MessageIndex, Count, Timeout).GetWords();
		};
		// One that nobody knows is refused in words by the first.
		const std::vector<std::shared_ptr<FChangeJournal>> Journals = ListJournals();
		const auto Knows = std::find_if(Journals.begin(), Journals.end(),
			[&Request](const std::shared_ptr<FChangeJournal>& Known) { return Known->Has(Request.TransactionId); });
		const std::shared_ptr<FChangeJournal> Chosen = Knows == Journals.end() ? Journals.front() : *Knows;
		// 2. Waiting for it, with the window alive.
		const TGuardValue<bool> Undoing(bIsUndoing, true);
		TFuture<FUndoResult> Done = Async(EAsyncExecution::Thread, [Chosen, Request, Progress] { return Chosen->Undo(Request); });
		FHostLongWork Work;
		Work.GetMessage = [&Progress]
		{
			const size_t Count = Progress->GetFileCount();
			return FText::FromString(
				Utf8Text::ToString(Count == 0 ? std::string("Undoing the changes …")
											  : "Undoing the changes of " + Utf8Text::Count(Count, "file", "files") + " …"));
		};
		Work.GetFraction = [&Progress] { return Progress->GetFraction(); };
		Work.WaitForEnd = [&Done](double Seconds) { return Done.WaitFor(FTimespan::FromSeconds(Seconds)); };
		FHostProgress::WaitFor(Work);
		OutMessageIndex = *FirstUndone;
		return Done.Consume();
	}

	bool FAgentSession::UndoToTransaction(const FString& Id)
	{
		if (HasTurn() && !IsWorking())
		{
			// What the turn still wanted to do is not done any more; what a tool does at this moment is undone with the rest.
			CancelConversation();
		}
		if (!Current.IsValid() || HasTurn() || bIsUndoing || ListJournals().empty())
		{
			Fire(Callbacks.Error,
				FString(Current.IsValid() && (HasTurn() || bIsUndoing) ? TEXT("A request is under way; nothing was undone.")
																	   : TEXT("There is nothing to undo.")));
			return false;
		}
		int32 MessageIndex = INDEX_NONE;
		const FUndoResult Result = PerformUndo(Id, MessageIndex);
		if (!Result.bSuccess)
		{
			Fire(Callbacks.Error, Utf8Text::ToString(Result.Problem));
			return false;
		}
		NoteProjectChange();
		PublishChanges();
		if (!Current.IsValid())
		{
			// The agent was let go of while frames ran.
			return true;
		}
		ForgetMessages(MessageIndex);
		RemoveFromTrackers(HostFileNameToBytes(Current->Id), Result.TransactionIds);
		TransactionId.Empty();
		Current->LastUpdated = FDateTime::Now();
		SetPlan(FAgentPlan(), TEXT("The request was undone."));
		TellSoon(Result.Notices);
		return true;
	}

	FOutcome FAgentSession::CutMessages(int32 MessageIndex)
	{
		const FOutcome Cut =
			CutStoredMessages(GetStore(), Current->Id, MessageIndex, StoredCount, FConversationStore::FrameTimeoutMilliseconds);
		if (Cut)
		{
			ForgetMessages(MessageIndex);
		}
		return Cut;
	}

	void FAgentSession::ForgetMessages(int32 MessageIndex)
	{
		for (int32 Index = MessageIndex; Index < Current->Messages.Num(); ++Index)
		{
			Attached.Remove(Index);
		}
		Current->Messages.SetNum(FMath::Min(MessageIndex, Current->Messages.Num()));
		StoredCount = FMath::Min(StoredCount, MessageIndex);
	}

	int32 FAgentSession::FindLastMessage(std::string& OutTransactionId) const
	{
		int32 Last = Current.IsValid() ? Current->Messages.Num() - 1 : INDEX_NONE;
		while (Last >= 0 && !Current->Messages[Last].IsUserMessage())
		{
			--Last;
		}
		for (const std::shared_ptr<FChangeJournal>& Known : Last >= 0 ? ListJournals() : std::vector<std::shared_ptr<FChangeJournal>>())
		{
			if (const auto Found = Known->FindTransactionOf(HostFileNameToBytes(Current->Id), Last, MarkOf(Last)))
			{
				// A text that changed the course of a paused turn belongs to the transaction of the message before it.
				OutTransactionId = Found->TransactionId;
				return Found->MessageIndex;
			}
		}
		return Last;
	}

	TOptional<FLastMessage> FAgentSession::GetLastMessage() const
	{
		std::string Transaction;
		const int32 Index = HasTurn() && State != EConversationState::Paused ? INDEX_NONE : FindLastMessage(Transaction);
		if (Index == INDEX_NONE)
		{
			return TOptional<FLastMessage>();
		}
		FLastMessage Last;
		Last.Text = Current->Messages[Index].Content;
		Last.bCanUndo = !Transaction.empty();
		Last.Files = Attached.FindRef(Index);
		return Last;
	}

	FString FAgentSession::TakeBackLastMessage()
	{
		const TSharedRef<FAgentSession> Keep = AsShared();
		std::string Transaction;
		const int32 Index = FindLastMessage(Transaction);
		if (Index == INDEX_NONE || IsWorking() || bIsUndoing)
		{
			return Index == INDEX_NONE ? FString(TEXT("There is no message to take back.")) : FString(TEXT("A request is under way."));
		}
		if (!Transaction.empty())
		{
			// What went wrong has been reported as an error of the conversation.
			if (!UndoToTransaction(HostFileNameFromBytes(Transaction)))
			{
				return TEXT("The message was not taken back.");
			}
		}
		else
		{
			if (HasTurn())
			{
				CancelConversation();
			}
			if (const FOutcome Cut = CutMessages(Index); !Cut)
			{
				return Utf8Text::ToString(Cut.GetWords());
			}
			TransactionId.Empty();
			Current->LastUpdated = FDateTime::Now();
			SetPlan(FAgentPlan(), TEXT("The request was taken back."));
		}
		if (Current.IsValid())
		{
			Fire(Callbacks.ConversationLoaded, FString(Current->Id));
		}
		return FString();
	}

	void FAgentSession::TellSoon(const std::vector<std::string>& Sentences)
	{
		for (const std::string& Sentence : Sentences)
		{
			// Once the front end has cut its rows; one told before would go with them.
			AsyncTask(ENamedThreads::GameThread,
				[WeakSession = TWeakPtr<FAgentSession>(AsShared()), Text = Utf8Text::ToString(Sentence)]
				{
					if (const TSharedPtr<FAgentSession> Session = WeakSession.Pin())
					{
						Session->Fire(Session->Callbacks.ProcessMessage, Text);
					}
				});
		}
	}

	const std::shared_ptr<FPermissionRules>& FAgentSession::GetRules()
	{
		const FString Path = GetStoreLocation().GetRulesPath();
		if (!Rules || RulesPath != Path)
		{
			std::vector<std::string> AllowedCalls;
			for (const FString& Call : GetBuiltInAgentOptions().AllowedCalls)
			{
				AllowedCalls.push_back(Utf8Text::FromString(Call));
			}
			Rules = std::make_shared<FPermissionRules>(HostFileNameToBytes(Path), MoveTemp(AllowedCalls));
			RulesPath = Path;
		}
		return Rules;
	}

	void FAgentSession::CleanUpAfterOthers()
	{
		if (GetProjectFolder().IsEmpty())
		{
			return;
		}
		Workers.Add(Async(EAsyncExecution::Thread,
			[Folder = HostFileNameToBytes(GetStoreLocation().GetUndoFolder()), DefaultStore = FConversationStore::GetDefault(),
				WeakSession = TWeakPtr<FAgentSession>(AsShared())]
			{
				const std::vector<FRecoveredUndo> AllRecovered = FChangeJournal::RecoverDeadJournals(Folder,
					[&DefaultStore](const FLoggedUndo& Undo, std::string& OutNotice)
					{ return FinishMessages(*DefaultStore, Undo, OutNotice); });
				AsyncTask(ENamedThreads::GameThread,
					[WeakSession, Adopted = FChangeJournal::AdoptDeadJournals(Folder)]() mutable
					{
						if (const TSharedPtr<FAgentSession> Session = WeakSession.Pin())
						{
							Session->TakeFormerJournals(MoveTemp(Adopted));
						}
					});
				for (const FRecoveredUndo& Recovered : AllRecovered)
				{
					AsyncTask(ENamedThreads::GameThread,
						[WeakSession, Recovered]
						{
							if (const TSharedPtr<FAgentSession> Session = WeakSession.Pin())
							{
								Session->OnUndoRecovered(Recovered);
							}
						});
				}
			}));
	}

	void FAgentSession::OnUndoRecovered(const FRecoveredUndo& Recovered)
	{
		const FString Id = HostFileNameFromBytes(Recovered.ConversationId);
		if (Recovered.bIsFinished && Current.IsValid() && Current->Id == Id && !HasTurn())
		{
			// It was opened before its messages were cut.
			LoadConversation(Id);
		}
		TellSoon(Recovered.Sentences);
	}
}
