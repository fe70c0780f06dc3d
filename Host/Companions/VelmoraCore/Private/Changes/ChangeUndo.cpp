#include "Changes/ChangeJournal.h"

#include <algorithm>
#include <iterator>

#include "Changes/UndoPlan.h"
#include "Changes/UndoRun.h"

namespace Velmora
{
	FChangeJournal::FTransactions FChangeJournal::ListFrom(const std::string& TransactionId, const std::string& ConversationId) const
	{
		FTransactions Found;
		const std::scoped_lock Guard(ListMutex);
		const auto First = std::find_if(Transactions.begin(), Transactions.end(),
			[&](const std::shared_ptr<FChangeTransaction>& Transaction)
			{ return Transaction->Id == TransactionId && Transaction->ConversationId == ConversationId; });
		std::copy_if(First, Transactions.end(), std::back_inserter(Found),
			[&](const std::shared_ptr<FChangeTransaction>& Transaction) { return Transaction->ConversationId == ConversationId; });
		return Found;
	}

	FUndoResult FChangeJournal::Undo(const FUndoRequest& Request)
	{
		const std::scoped_lock Guard(WorkMutex);
		const FTransactions Undone = ListFrom(Request.TransactionId, Request.ConversationId);
		FUndoResult Result;
		if (Undone.empty())
		{
			Result.Problem = "What was done after that message is not known any more, so nothing was undone.";
			return Result;
		}
		if (std::any_of(Undone.begin(), Undone.end(),
				[](const std::shared_ptr<FChangeTransaction>& Transaction) { return Transaction->bIsDropped; }))
		{
			Result.Problem = "Former contents are kept up to " + std::to_string(Limit / (1024 * 1024)) +
				" MB; those of that message had to make room for later ones, so nothing was undone.";
			return Result;
		}
		const FUndoEnd End = UndoFiles(Undone, Request, Result.Notices);
		if (!End.Problem.empty())
		{
			bMayHaveLeftovers = true;
			Result.Notices.clear();
			Result.Problem = End.Lost.empty()
				? "Nothing was undone. " + End.Problem
				: "The undo stopped half-way and could not be taken back; try it again. " + End.Problem + End.Lost;
			return Result;
		}
		Result.bSuccess = true;
		for (const std::shared_ptr<FChangeTransaction>& Transaction : Undone)
		{
			Result.TransactionIds.push_back(Transaction->Id);
		}
		Forget(Undone);
		return Result;
	}

	FUndoEnd FChangeJournal::UndoFiles(const FTransactions& Undone, const FUndoRequest& Request, std::vector<std::string>& OutNotices)
	{
		const int MessageIndex = Undone.front()->MessageIndex;
		if (std::all_of(Undone.begin(), Undone.end(),
				[](const std::shared_ptr<FChangeTransaction>& Transaction) { return Transaction->Records.empty(); }))
		{
			// Messages alone go in one piece.
			const std::string Problem = Request.Commit(MessageIndex);
			if (Problem.empty() && Log.IsOpen())
			{
				std::vector<std::string> Ids;
				std::transform(Undone.begin(), Undone.end(), std::back_inserter(Ids),
					[](const std::shared_ptr<FChangeTransaction>& Transaction) { return Transaction->Id; });
				Log.AppendForgotten(Ids);
			}
			return { Problem, std::string() };
		}
		Contents->SetDurable(false); // What is kept meanwhile serves this run only.
		FUndoEnd End;
		{
			FUndoPlan Plan(*Contents);
			Plan.Progress = Request.Progress;
			FLoggedUndo Logged;
			Logged.ConversationId = Request.ConversationId;
			Logged.MessageIndex = MessageIndex;
			Logged.MessageMarks = Request.MarkMessages ? Request.MarkMessages(MessageIndex) : std::vector<std::string>();
			for (auto Transaction = Undone.rbegin(); Transaction != Undone.rend(); ++Transaction)
			{
				Plan.Add(**Transaction);
				Logged.TransactionIds.insert(Logged.TransactionIds.begin(), (*Transaction)->Id);
			}
			bool bIsWrittenDown = false;
			End = PerformUndo(
				Plan, bIsDurable,
				[&]
				{
					Logged.Notices = Plan.Notices;
					const std::string Reason = Log.AppendUndo(Logged);
					bIsWrittenDown = Reason.empty();
					return bIsWrittenDown ? Reason : "Its steps cannot be noted in " + UndoFolder + ": " + Reason + '.';
				},
				[&] { return Request.Commit(MessageIndex); });
			if (bIsWrittenDown)
			{
				Log.AppendEndOfUndo(End.Problem.empty() ? Logged.TransactionIds : std::vector<std::string>());
			}
			OutNotices = std::move(Plan.Notices);
		}
		Contents->SetDurable(bIsDurable);
		return End;
	}

	void FChangeJournal::Forget(const FTransactions& Undone)
	{
		{
			const std::scoped_lock ListGuard(ListMutex);
			std::erase_if(Transactions,
				[&Undone](const std::shared_ptr<FChangeTransaction>& Transaction)
				{ return std::find(Undone.begin(), Undone.end(), Transaction) != Undone.end(); });
			std::erase_if(Performed,
				[&](const FPerformedChange& Change)
				{
					return std::any_of(Undone.begin(), Undone.end(),
						[&Change](const std::shared_ptr<FChangeTransaction>& Transaction)
						{ return Transaction->Id == Change.TransactionId; });
				});
		}
		for (const std::shared_ptr<FChangeTransaction>& Transaction : Undone)
		{
			for (const FChangeRecord& Record : Transaction->Records)
			{
				Contents->Release(Record.Before.Hash);
			}
		}
	}
}
