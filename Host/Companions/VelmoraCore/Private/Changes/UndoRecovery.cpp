#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>

#include "Changes/ChangeJournal.h"
#include "Changes/UndoPlan.h"
#include "Changes/UndoRun.h"

namespace Velmora
{
	namespace
	{
		constexpr const char* Opening = "An undo had been cut short when the program ended";

		/** Gives up then. */
		constexpr int MaxTries = 3;

		/** The number of a device changes with a restart of the machine; nothing else of a folder does. */
		void AdoptDevices(FLoggedHistory& History)
		{
			for (FChangeTransaction& Transaction : History.Transactions)
			{
				for (FChangeRecord& Record : Transaction.Records)
				{
					const FFolderIdentity Now = FProjectAccess(Record.Root).GetIdentity();
					if (Now.Number == Record.RootIdentity.Number && Now.BornAt == Record.RootIdentity.BornAt)
					{
						Record.RootIdentity = Now;
					}
				}
			}
		}

		std::vector<std::string> JoinOnce(std::vector<std::string> First, const std::vector<std::string>& Second)
		{
			for (const std::string& Text : Second)
			{
				if (std::find(First.begin(), First.end(), Text) == First.end())
				{
					First.push_back(Text);
				}
			}
			return First;
		}

		/** Finishes what the log speaks of. The folder may go if the result says that it is finished or given up. */
		FRecoveredUndo Recover(const std::string& Folder, FLoggedHistory& History, const FChangeJournal::FFinishMessages& FinishMessages,
			bool bIsDurable, bool& bOutIsOver)
		{
			FLoggedUndo& Undo = *History.OpenUndo;
			FRecoveredUndo Recovered;
			Recovered.ConversationId = Undo.ConversationId;
			AdoptDevices(History);
			FKeptContents Contents(Folder);
			Contents.SetDurable(false);
			FUndoPlan Plan(Contents);
			for (auto Transaction = History.Transactions.rbegin(); Transaction != History.Transactions.rend(); ++Transaction)
			{
				if (std::count(Undo.TransactionIds.begin(), Undo.TransactionIds.end(), Transaction->Id) != 0)
				{
					Plan.Add(*Transaction);
				}
			}
			FChangeLog Log;
			Log.SetDurable(bIsDurable);
			std::string MessageNotice;
			const FUndoEnd End = PerformUndo(
				Plan, bIsDurable,
				[&]
				{
					// Should this be cut short as well, what it has found out must not be lost.
					return Log.OpenAgain(Folder) ? Log.AppendNotices(Plan.Notices) : std::string("the list of changes cannot be opened");
				},
				[&] { return FinishMessages(Undo, MessageNotice); });
			Recovered.bIsFinished = End.Problem.empty();
			if (Recovered.bIsFinished)
			{
				bOutIsOver = true;
				Recovered.Sentences.push_back(std::string(Opening) + ". It is finished now: " +
					(MessageNotice.empty() ? "the files and the conversation are as they were before the request."
										   : "the files are as they were before the request. " + MessageNotice));
				Recovered.Sentences = JoinOnce(JoinOnce(Recovered.Sentences, Undo.Notices), Plan.Notices);
				return Recovered;
			}
			const bool bIsTried = (Log.IsOpen() || Log.OpenAgain(Folder)) && Log.AppendTry().empty();
			bOutIsOver = Undo.Tries + 1 >= MaxTries;
			Recovered.Sentences.push_back(std::string(Opening) + " and could not be finished. " + End.Problem + End.Lost +
				" Some of its files may be restored and others not. " +
				(bOutIsOver ? "It is not tried again." : "It is tried again at the next start."));
			bOutIsOver = bOutIsOver || (!bIsTried && Undo.Tries > 0);
			return Recovered;
		}

		/** Half-written files beside those that they were to replace. */
		void RemoveTemporaries(const std::vector<FChangeRecord>& Records, std::map<std::string, std::unique_ptr<FProjectAccess>>& Accesses)
		{
			for (const FChangeRecord& Record : Records)
			{
				std::unique_ptr<FProjectAccess>& Access = Accesses[Record.Root];
				if (!Access)
				{
					Access = std::make_unique<FProjectAccess>(Record.Root);
				}
				std::string Path;
				const std::string Beside = Record.Path.substr(0, Record.Path.rfind('/') + 1) + Record.TemporaryName;
				if (Access->IsOpen() && Access->Normalise(Beside, Path).empty())
				{
					Access->Remove(Path);
					Access->Remove(Path + FChangeJournal::CopyEnding);
				}
			}
		}
	}

	void FChangeJournal::RemoveTemporaries(const FLoggedHistory& History)
	{
		std::map<std::string, std::unique_ptr<FProjectAccess>> Accesses;
		for (const FChangeTransaction& Transaction : History.Transactions)
		{
			Velmora::RemoveTemporaries(Transaction.Records, Accesses);
		}
		Velmora::RemoveTemporaries(History.FailedRecords, Accesses);
	}

	bool FChangeJournal::IsWorthKeeping(const FLoggedHistory& History)
	{
		return std::any_of(History.Transactions.begin(), History.Transactions.end(),
			[](const FChangeTransaction& Transaction) { return !Transaction.Records.empty() && !Transaction.ConversationId.empty(); });
	}

	std::vector<FRecoveredUndo> FChangeJournal::RecoverDeadJournals(
		const std::string& UndoFolder, const FFinishMessages& FinishMessages, bool bIsDurable)
	{
		std::vector<FRecoveredUndo> AllRecovered;
		std::error_code Error;
		for (std::filesystem::directory_iterator It(UndoFolder, Error), End; !Error && It != End; It.increment(Error))
		{
			const std::string Path = It->path().native();
			std::error_code Ignored;
			if (It->path().filename().native().rfind(NewFolderPrefix, 0) == 0)
			{
				// Another process may be making it right now; it takes no time.
				if (std::filesystem::last_write_time(It->path(), Ignored) <
					std::filesystem::file_time_type::clock::now() - std::chrono::hours(1))
				{
					std::filesystem::remove_all(Path, Ignored);
				}
				continue;
			}
			const FFileDescriptor TheirLock = FFileDescriptor::Open(Path + '/' + LockName, O_RDWR | O_NOFOLLOW | O_NONBLOCK);
			// Every journal has had a lock since it took its name; one without is half removed.
			const bool bIsHalfRemoved = !TheirLock.IsOpen() && errno == ENOENT;
			if (!bIsHalfRemoved && (!TheirLock.IsOpen() || flock(TheirLock.Get(), LOCK_EX | LOCK_NB) != 0))
			{
				continue;
			}
			FLoggedHistory History = FChangeLog::Read(Path);
			const size_t RecoveredBefore = AllRecovered.size();
			bool bIsOver = true;
			if (History.OpenUndo && !bIsHalfRemoved)
			{
				AllRecovered.push_back(Recover(Path, History, FinishMessages, bIsDurable, bIsOver));
			}
			RemoveTemporaries(History);
			if (bIsOver && !(AllRecovered.size() == RecoveredBefore && IsWorthKeeping(History)))
			{
				// What could be finished again goes first, so that a half removed one is never taken for cut short.
				std::filesystem::remove(Path + '/' + FChangeLog::FileName, Ignored);
				std::filesystem::remove_all(Path, Ignored);
				continue;
			}
			std::filesystem::remove(Path + '/' + FKeptContents::FolderName + '/' + FKeptContents::TemporaryName, Ignored);
		}
		return AllRecovered;
	}

	bool FChangeJournal::Adopt(const std::string& InFolder, FFileDescriptor&& InLock)
	{
		FLoggedHistory History = FChangeLog::Read(InFolder);
		auto Found = std::make_unique<FKeptContents>(InFolder);
		if (History.OpenUndo || !IsWorthKeeping(History) || !Found->DescribeRefusal().empty() || !Log.OpenAgain(InFolder))
		{
			return false;
		}
		AdoptDevices(History);
		Found->SetDurable(bIsDurable);
		for (FChangeTransaction& Logged : History.Transactions)
		{
			// What had to make room lacks its contents.
			for (const FChangeRecord& Record : Logged.Records)
			{
				Logged.bIsDropped = (Record.Before.Kind == EEntryKind::File && !Found->Adopt(Record.Before.Hash)) || Logged.bIsDropped;
			}
			Logged.bIsDropped = Logged.bIsDropped || Logged.ConversationId.empty();
			Transactions.push_back(std::make_shared<FChangeTransaction>(std::move(Logged)));
		}
		Contents = std::move(Found);
		Lock = std::move(InLock);
		Folder = InFolder;
		return true;
	}

	std::vector<std::shared_ptr<FChangeJournal>> FChangeJournal::AdoptDeadJournals(const std::string& UndoFolder, bool bIsDurable)
	{
		// 1. The latest first.
		std::vector<std::pair<std::filesystem::file_time_type, std::string>> Folders;
		std::error_code Error;
		for (std::filesystem::directory_iterator It(UndoFolder, Error), End; !Error && It != End; It.increment(Error))
		{
			std::error_code Ignored;
			const auto Time = std::filesystem::last_write_time(It->path() / FChangeLog::FileName, Ignored);
			if (!Ignored && It->path().filename().native().rfind(NewFolderPrefix, 0) != 0)
			{
				Folders.emplace_back(Time, It->path().native());
			}
		}
		std::sort(Folders.rbegin(), Folders.rend());

		// 2. What nobody else holds. A journal that is let go here removes its folder when nothing in it is to be undone.
		const auto Oldest = std::filesystem::file_time_type::clock::now() - std::chrono::hours(24 * MaxAdoptedDays);
		std::vector<std::shared_ptr<FChangeJournal>> Adopted;
		uint64_t KeptBytes = 0;
		for (const auto& [Time, Path] : Folders)
		{
			FFileDescriptor TheirLock = FFileDescriptor::Open(Path + '/' + LockName, O_RDWR | O_NOFOLLOW | O_NONBLOCK);
			if (!TheirLock.IsOpen() || flock(TheirLock.Get(), LOCK_EX | LOCK_NB) != 0)
			{
				continue;
			}
			auto Journal = std::make_shared<FChangeJournal>(UndoFolder);
			Journal->SetDurable(bIsDurable);
			if (!Journal->Adopt(Path, std::move(TheirLock)))
			{
				continue;
			}
			KeptBytes += Journal->GetKeptBytes();
			if (Time < Oldest || Adopted.size() == MaxAdopted || KeptBytes > MaxKeptBytes)
			{
				Journal->ForgetConversations([](const std::string&) { return true; });
				continue;
			}
			Adopted.push_back(std::move(Journal));
		}
		return Adopted;
	}
}
