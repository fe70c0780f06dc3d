#include "Changes/ChangeJournal.h"

#include <algorithm>

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

	FUndoResult FChangeJournal::Undo(
		const std::string& TransactionId, const std::string& ConversationId, const std::function<std::string(int MessageIndex)>& Commit)
	{
		const std::scoped_lock Guard(WorkMutex);
		const FTransactions Undone = ListFrom(TransactionId, ConversationId);
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

		std::string Lost;
		std::string Problem = Contents ? std::string() : Commit(Undone.front()->MessageIndex);
		if (Contents)
		{
			Contents->SetDurable(false); // What is kept meanwhile serves this run only.
			FUndoPlan Plan(*Contents);
			for (auto Transaction = Undone.rbegin(); Transaction != Undone.rend(); ++Transaction)
			{
				Plan.Add(**Transaction);
			}
			Problem = Plan.Inspect();
			FUndoRun Run(Plan, bIsDurable);
			Problem = Problem.empty() ? Run.PrepareFiles() : Problem;
			if (Problem.empty())
			{
				Problem = Run.Apply();
				if (Problem.empty())
				{
					if (bIsDurable)
					{
						Run.Flush();
					}
					Problem = Commit(Undone.front()->MessageIndex);
				}
				if (!Problem.empty())
				{
					Lost = Run.GoBack();
				}
			}
			Result.Notices = std::move(Plan.Notices);
			Contents->SetDurable(bIsDurable);
		}
		if (!Problem.empty())
		{
			bMayHaveLeftovers = true;
			Problem += Problem.back() == '.' ? "" : ".";
			Result.Notices.clear();
			Result.Problem = Lost.empty() ? "Nothing was undone. " + Problem
										  : "The undo stopped half-way and could not be taken back; try it again. " + Problem + Lost;
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
