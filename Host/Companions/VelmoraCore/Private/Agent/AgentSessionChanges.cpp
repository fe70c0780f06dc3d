#include "Agent/AgentSession.h"

#include "Async/Async.h"
#include "Host/HostFileNames.h"
#include "Host/StoreLocation.h"
#include "Misc/Guid.h"

#include "Text/Utf8Text.h"
#include "Agent/PermissionRules.h"
#include "Changes/ChangeJournal.h"
#include "Host/BuiltInAgentOptions.h"
#include "Changes/ChangePublisher.h"
#include "Store/ConversationStore.h"

namespace Velmora
{
	void FAgentSession::OpenTransaction()
	{
		const FString Folder = GetStoreLocation().GetUndoFolder();
		if (!Journal || JournalFolder != Folder)
		{
			Journal = std::make_shared<FChangeJournal>(HostFileNameToBytes(Folder));
			JournalFolder = Folder;
		}
		TransactionId = FGuid::NewGuid().ToString();
		Journal->OpenTransaction(HostFileNameToBytes(TransactionId), HostFileNameToBytes(Current->Id), Current->Messages.Num() - 1);
	}

	bool FAgentSession::PublishChanges()
	{
		const std::vector<FPerformedChange> Changes = Journal ? Journal->TakePerformed() : std::vector<FPerformedChange>();
		PublishToTrackers(Changes);
		return !Changes.empty();
	}

	bool FAgentSession::UndoToTransaction(const FString& Id)
	{
		if (HasTurn() && !IsWorking())
		{
			// What the turn still wanted to do is not done any more; what a tool does at this moment is undone with the rest.
			CancelConversation();
		}
		if (!Current.IsValid() || HasTurn() || !Journal)
		{
			Fire(Callbacks.Error,
				FString(Current.IsValid() && HasTurn() ? TEXT("A request is under way; nothing was undone.")
													   : TEXT("There is nothing to undo.")));
			return false;
		}
		const FUndoResult Result = Journal->Undo(HostFileNameToBytes(Id), HostFileNameToBytes(Current->Id),
			[this](int MessageIndex)
			{
				FString Problem;
				if (GetStore().TruncateMessages(Current->Id, MessageIndex, Problem) == EStoreResult::Failed)
				{
					return HostFileNameToBytes(Problem);
				}
				Current->Messages.SetNum(FMath::Min(MessageIndex, Current->Messages.Num()));
				StoredCount = FMath::Min(StoredCount, MessageIndex);
				return std::string();
			});
		if (!Result.bSuccess)
		{
			Fire(Callbacks.Error, Utf8Text::ToString(Result.Problem));
			return false;
		}
		PublishChanges();
		RemoveFromTrackers(HostFileNameToBytes(Current->Id), Result.TransactionIds);
		TransactionId.Empty();
		Current->LastUpdated = FDateTime::Now();
		SetPlan(FAgentPlan(), TEXT("The request was undone."));
		for (const std::string& Notice : Result.Notices)
		{
			// Once the front end has cut its rows; one told before would go with them.
			AsyncTask(ENamedThreads::GameThread,
				[WeakSession = TWeakPtr<FAgentSession>(AsShared()), Text = Utf8Text::ToString(Notice)]
				{
					if (const TSharedPtr<FAgentSession> Session = WeakSession.Pin())
					{
						Session->Fire(Session->Callbacks.ProcessMessage, Text);
					}
				});
		}
		return true;
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
		Workers.Add(Async(EAsyncExecution::Thread,
			[Folder = HostFileNameToBytes(GetStoreLocation().GetUndoFolder())] { FChangeJournal::RemoveDeadJournals(Folder); }));
	}
}
