#include "Changes/ChangeJournal.h"

#include <algorithm>
#include <set>

namespace Velmora
{
	namespace
	{
		constexpr int MaxSetAsideCopies = 1000;

		/** What stands there now is held in memory for going back, up to this; the rest goes through the journal. In bytes. */
		constexpr uint64_t MaxHeldBytes = 32 * 1024 * 1024;

		/** Each wait for the disk takes milliseconds; beyond this, one wait for all is shorter. */
		constexpr std::ptrdiff_t MaxSingleFlushes = 6;

		/** "Docs/notes.md" and 2: "Docs/notes.conflict-2.md". A dot at the start of a name opens no extension. */
		std::string MakeCopyName(const std::string& Path, int Number)
		{
			const size_t NameStart = Path.rfind('/') + 1;
			const size_t Dot = Path.rfind('.');
			const size_t End = Dot == std::string::npos || Dot <= NameStart ? Path.size() : Dot;
			return Path.substr(0, End) + ".conflict-" + std::to_string(Number) + Path.substr(End);
		}
	}

	/** One undo under way: first looks at everything, then changes it, and can go back. */
	class FChangeJournal::FUndoRun
	{
	public:
		explicit FUndoRun(FChangeJournal& InJournal)
			: Journal(InJournal)
		{
		}
		~FUndoRun()
		{
			for (const FTarget& Target : Targets)
			{
				Journal.Release(Target.PresentKept);
				if (Target.bIsWrittenBeside)
				{
					Target.Access->Remove(GetFolderOf(Target.Path) + Target.TemporaryName);
				}
			}
		}

		/** Takes the records of a transaction in; the last transaction comes first. */
		void Add(const FTransaction& Transaction)
		{
			for (auto Record = Transaction.Records.rbegin(); Record != Transaction.Records.rend(); ++Record)
			{
				std::unique_ptr<FProjectAccess>& Access = Accesses[Record->Root];
				if (!Access)
				{
					Access = std::make_unique<FProjectAccess>(Record->Root);
					Access->SetDurable(false); // Flushed together, in PrepareFiles and Flush.
				}
				const auto [Known, bIsNew] = Indices.try_emplace({ Record->Root, Record->Path }, Targets.size());
				if (bIsNew)
				{
					FTarget& Target = Targets.emplace_back();
					Target.Access = Access.get();
					Target.Path = Record->Path;
					Target.Expected = Record->After;
					Target.TemporaryName = Record->TemporaryName;
				}
				Targets[Known->second].Wanted = Record->Before;
				for (auto Made = Record->MadeFolders.rbegin(); Made != Record->MadeFolders.rend(); ++Made)
				{
					MadeFolders.push_back({ Access.get(), *Made });
				}
			}
		}

		/** Finds out whether all can be restored; changes nothing. */
		std::string Inspect()
		{
			for (FTarget& Target : Targets)
			{
				const std::string Refusal = "`" + Target.Path + "` cannot be restored: ";
				if (!Target.Access->IsOpen())
				{
					return Refusal + Target.Access->DescribeRefusal();
				}
				FEntryInfo Info;
				std::string Bytes;
				std::string Problem = Target.Access->Look(Target.Path, Info);
				if (Problem.empty() && Info.Kind == EEntryKind::File)
				{
					Problem = Target.Access->Read(Target.Path, MaxFileBytes, Bytes, Info);
				}
				const bool bIsOurFolder = Info.Kind == EEntryKind::Folder &&
					std::any_of(
						MadeFolders.begin(), MadeFolders.end(), [&Target](const FFolder& Made) { return Made.Path == Target.Path; });
				if (Problem.empty() && ((Info.Kind == EEntryKind::Folder && !bIsOurFolder) || Info.Kind == EEntryKind::Other))
				{
					Problem = "something that is no file has taken its place";
				}
				std::string Former;
				if (Problem.empty() && Target.Wanted.Kind == EEntryKind::File)
				{
					Problem = Journal.ReadKept(Target.Wanted.Hash, Former);
					Problem = Problem.empty() ? Problem : "its former content is lost (" + Problem + ')';
				}
				if (!Problem.empty())
				{
					return Refusal + Problem;
				}
				Target.bIsOurFolder = bIsOurFolder;
				Target.Present = bIsOurFolder ? FEntryState() : MakeEntryState(Info, Bytes);
				if (Target.Present == Target.Wanted)
				{
					continue;
				}
				if (Target.Present.Kind == EEntryKind::File && HeldBytes + Bytes.size() <= MaxHeldBytes)
				{
					HeldBytes += Bytes.size();
					Target.PresentBytes = std::move(Bytes);
				}
				else if (Target.Present.Kind == EEntryKind::File)
				{
					Problem = Journal.Keep(Bytes, Target.Present.Hash, nullptr);
					if (!Problem.empty())
					{
						return Refusal + Problem;
					}
					Target.PresentKept = Target.Present.Hash;
				}
				Target.bIsConflict = !(Target.Present == Target.Expected);
			}
			return std::string();
		}

		/** Writes the files to be restored beside their places: most of the work, and nothing is lost if it fails. */
		std::string PrepareFiles()
		{
			for (FTarget& Target : Targets)
			{
				FEntryInfo Parent;
				const std::string Folder = GetFolderOf(Target.Path);
				const bool bHasFolder = Folder.empty() ||
					(Target.Access->Look(Folder.substr(0, Folder.size() - 1), Parent).empty() && Parent.Kind == EEntryKind::Folder);
				const bool bIsInPlace = Target.Present == Target.Wanted;
				if (Target.Wanted.Kind != EEntryKind::File || bIsInPlace || Target.bIsOurFolder ||
					Target.Present.Kind == EEntryKind::Link || !bHasFolder)
				{
					continue;
				}
				std::string Bytes;
				std::string Problem = Journal.ReadKept(Target.Wanted.Hash, Bytes);
				Problem = Problem.empty() ? Target.Access->WriteBeside(Target.Path, Bytes, MakeOptions(Target, Target.Wanted)) : Problem;
				if (!Problem.empty())
				{
					return "`" + Target.Path + "` cannot be restored: " + Problem;
				}
				Target.bIsWrittenBeside = true;
			}
			if (!Journal.bIsDurable)
			{
				return std::string();
			}
			const bool bFlushAll = std::count_if(Targets.begin(), Targets.end(),
									   [](const FTarget& Target) { return Target.bIsWrittenBeside; }) > MaxSingleFlushes;
			if (bFlushAll)
			{
				FlushAll();
			}
			for (FTarget& Target : Targets)
			{
				const std::string Problem = Target.bIsWrittenBeside && !bFlushAll
					? Target.Access->FlushFile(GetFolderOf(Target.Path) + Target.TemporaryName)
					: std::string();
				if (!Problem.empty())
				{
					return "`" + Target.Path + "` cannot be restored: " + Problem;
				}
				Target.bIsFlushed = Target.bIsWrittenBeside;
			}
			return std::string();
		}

		/** Waits until all that was done is on the disk. */
		void Flush() const
		{
			if (std::count_if(Targets.begin(), Targets.end(), [](const FTarget& Target) { return !(Target.Present == Target.Wanted); }) >
				MaxSingleFlushes)
			{
				FlushAll();
				return;
			}
			std::set<std::pair<const FProjectAccess*, std::string>> Flushed;
			for (const FTarget& Target : Targets)
			{
				if (Target.Present == Target.Wanted)
				{
					continue;
				}
				if (Target.Wanted.Kind == EEntryKind::File && !Target.bIsFlushed)
				{
					Target.Access->FlushFile(Target.Path);
				}
				if (Flushed.insert({ Target.Access, GetFolderOf(Target.Path) }).second)
				{
					Target.Access->FlushFolderOf(Target.Path);
				}
			}
			for (const FFolder& Made : MadeFolders)
			{
				if (Flushed.insert({ Made.Access, GetFolderOf(Made.Path) }).second)
				{
					Made.Access->FlushFolderOf(Made.Path);
				}
			}
		}

		std::string Apply()
		{
			for (FTarget& Target : Targets)
			{
				if (Target.Wanted.Kind == EEntryKind::Absent && Target.Present.Kind != EEntryKind::Absent)
				{
					const std::string Problem = Restore(Target);
					if (!Problem.empty())
					{
						return Problem;
					}
				}
			}
			// The inner ones first. One that holds something of the user's stays.
			std::stable_sort(
				MadeFolders.begin(), MadeFolders.end(), [](const FFolder& A, const FFolder& B) { return A.Path.size() > B.Path.size(); });
			for (const FFolder& Made : MadeFolders)
			{
				if (Made.Access->RemoveFolder(Made.Path).empty())
				{
					Steps.push_back(
						[Made]
						{
							std::vector<std::string> Again;
							return Made.Access->MakeParents(Made.Path + "/x", Again);
						});
				}
			}
			for (FTarget& Target : Targets)
			{
				if (Target.Wanted.Kind != EEntryKind::Absent && !(Target.Wanted == Target.Present))
				{
					const std::string Problem = Restore(Target);
					if (!Problem.empty())
					{
						return Problem;
					}
				}
			}
			return std::string();
		}

		/** Gives a sentence on what could not be brought back, or nothing. */
		std::string GoBack()
		{
			std::string Lost;
			for (; !Steps.empty(); Steps.pop_back())
			{
				const std::string Problem = Steps.back()();
				Lost += Problem.empty() ? std::string() : " " + Problem + ".";
			}
			return Lost;
		}

		std::vector<std::string> Notices;

	private:
		struct FTarget
		{
			const FProjectAccess* Access = nullptr;
			std::string Path;

			/** What stood there before the first change, what the last one left, and what stands there now. */
			FEntryState Wanted;
			FEntryState Expected;
			FEntryState Present;

			/** The bytes of Present: in memory, or else kept in the journal under this hash. */
			std::string PresentBytes;
			std::string PresentKept;
			std::string TemporaryName;
			bool bIsConflict = false;

			/** The wanted content stands under the temporary name. */
			bool bIsWrittenBeside = false;
			bool bIsFlushed = false;

			/** A folder stands there that was made for a later file, and goes with it. */
			bool bIsOurFolder = false;
		};
		struct FFolder
		{
			const FProjectAccess* Access = nullptr;
			std::string Path;
		};

		/** With the slash behind it, empty for the project folder. */
		static std::string GetFolderOf(const std::string& Path) { return Path.substr(0, Path.rfind('/') + 1); }

		static FProjectAccess::FWriteOptions MakeOptions(const FTarget& Target, const FEntryState& State)
		{
			FProjectAccess::FWriteOptions Options;
			Options.TemporaryName = Target.TemporaryName;
			Options.Mode = State.Mode;
			return Options;
		}

		void FlushAll() const
		{
			for (const auto& [Root, Access] : Accesses)
			{
				Access->FlushAll();
			}
		}

		std::string Restore(FTarget& Target)
		{
			std::string Problem = Target.bIsConflict ? SetAside(Target) : std::string();
			if (Problem.empty())
			{
				std::vector<std::string> Made;
				Problem = Target.Wanted.Kind == EEntryKind::Absent ? std::string() : Target.Access->MakeParents(Target.Path, Made);
				for (const std::string& Folder : Made)
				{
					Steps.push_back([Access = Target.Access, Folder] { return Access->RemoveFolder(Folder); });
				}
			}
			if (Problem.empty())
			{
				Problem = Target.bIsWrittenBeside ? Target.Access->PutInPlace(Target.Path, MakeOptions(Target, Target.Wanted))
												  : Put(Target, Target.Wanted);
				Target.bIsWrittenBeside = false; // In place, or cleared away.
			}
			if (!Problem.empty())
			{
				return "`" + Target.Path + "` cannot be restored: " + Problem;
			}
			Steps.push_back(
				[this, &Target]
				{
					const std::string Failure = Put(Target, Target.Present);
					return Failure.empty() ? Failure : "`" + Target.Path + "`: " + Failure;
				});
			return std::string();
		}

		/** Makes a name hold what a state says. */
		std::string Put(const FTarget& Target, const FEntryState& State) const
		{
			const FProjectAccess::FWriteOptions Options = MakeOptions(Target, State);
			if (State.Kind == EEntryKind::Absent)
			{
				return Target.Access->Remove(Target.Path);
			}
			if (State.Kind == EEntryKind::Link)
			{
				return Target.Access->MakeLink(Target.Path, State.LinkTarget, Options);
			}
			std::string Bytes;
			const bool bIsHeld = &State == &Target.Present && Target.PresentKept.empty();
			const std::string Problem = bIsHeld ? std::string() : Journal.ReadKept(State.Hash, Bytes);
			return bIsHeld		  ? Target.Access->Write(Target.Path, Target.PresentBytes, Options)
				: Problem.empty() ? Target.Access->Write(Target.Path, Bytes, Options)
								  : Problem;
		}

		/** Keeps what somebody else made of a file, under a name beside it. */
		std::string SetAside(const FTarget& Target)
		{
			const std::string Name = "`" + Target.Path + "`";
			if (Target.Present.Kind == EEntryKind::Absent)
			{
				Notices.push_back(Name + " had been removed since; it is back as it was.");
				return std::string();
			}
			const bool bIsOnlyMode = Target.Present.Kind == EEntryKind::File &&
				(Target.Present.Hash == Target.Wanted.Hash || Target.Present.Hash == Target.Expected.Hash);
			if (bIsOnlyMode)
			{
				return std::string();
			}
			for (int Number = 1; Number <= MaxSetAsideCopies; ++Number)
			{
				FTarget Copy = Target;
				Copy.TemporaryName += CopyEnding;
				Copy.Path = MakeCopyName(Target.Path, Number);
				FEntryInfo There;
				std::string Problem = Copy.Access->Look(Copy.Path, There);
				if (!Problem.empty())
				{
					return Problem;
				}
				if (There.Kind == EEntryKind::Absent)
				{
					Problem = Put(Copy, Copy.Present);
					if (Problem.empty())
					{
						Steps.push_back([Access = Copy.Access, Path = Copy.Path] { return Access->Remove(Path); });
						if (Journal.bIsDurable && Target.Present.Kind == EEntryKind::File)
						{
							// Before what it was copied from is gone.
							Copy.Access->FlushFile(Copy.Path);
							Copy.Access->FlushFolderOf(Copy.Path);
						}
						const char* const Now = Target.Wanted.Kind == EEntryKind::Absent ? "It is gone again, as before the request"
																						 : "It is back as it was before the request";
						Notices.push_back(
							Name + " had been changed by hand since. " + Now + "; what you had made of it is in `" + Copy.Path + "`.");
					}
					return Problem;
				}
			}
			return "too many copies stand beside it";
		}

		FChangeJournal& Journal;
		std::map<std::string, std::unique_ptr<FProjectAccess>> Accesses;
		std::vector<FTarget> Targets;

		/** Place of a target by project folder and path. */
		std::map<std::pair<std::string, std::string>, size_t> Indices;
		std::vector<FFolder> MadeFolders;
		uint64_t HeldBytes = 0;

		/** What takes each change back, in the order of the changes. */
		std::vector<std::function<std::string()>> Steps;
	};

	FUndoResult FChangeJournal::Undo(
		const std::string& TransactionId, const std::string& ConversationId, const std::function<std::string(int MessageIndex)>& Commit)
	{
		const std::scoped_lock Guard(WorkMutex);
		FTransactions Undone;
		{
			const std::scoped_lock ListGuard(ListMutex);
			const auto First = std::find_if(Transactions.begin(), Transactions.end(),
				[&](const std::shared_ptr<FTransaction>& Transaction)
				{ return Transaction->Id == TransactionId && Transaction->ConversationId == ConversationId; });
			std::copy_if(First, Transactions.end(), std::back_inserter(Undone),
				[&](const std::shared_ptr<FTransaction>& Transaction) { return Transaction->ConversationId == ConversationId; });
		}
		FUndoResult Result;
		if (Undone.empty())
		{
			Result.Problem = "What was done after that message is not known any more, so nothing was undone.";
			return Result;
		}
		if (std::any_of(
				Undone.begin(), Undone.end(), [](const std::shared_ptr<FTransaction>& Transaction) { return Transaction->bIsDropped; }))
		{
			Result.Problem = "Former contents are kept up to " + std::to_string(Limit / (1024 * 1024)) +
				" MB; those of that message had to make room for later ones, so nothing was undone.";
			return Result;
		}

		FUndoRun Run(*this);
		for (auto Transaction = Undone.rbegin(); Transaction != Undone.rend(); ++Transaction)
		{
			Run.Add(**Transaction);
		}
		if (Store)
		{
			Store->SetDurable(false); // What is kept meanwhile serves this run only.
		}
		std::string Lost;
		std::string Problem = Run.Inspect();
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
		if (Store)
		{
			Store->SetDurable(bIsDurable);
		}
		if (!Problem.empty())
		{
			bMayHaveLeftovers = true;
			Problem += Problem.back() == '.' ? "" : ".";
			Result.Problem = Lost.empty() ? "Nothing was undone. " + Problem
										  : "The undo stopped half-way and could not be taken back; try it again. " + Problem + Lost;
			return Result;
		}

		Result.bSuccess = true;
		Result.Notices = std::move(Run.Notices);
		{
			const std::scoped_lock ListGuard(ListMutex);
			std::erase_if(Transactions,
				[&Undone](const std::shared_ptr<FTransaction>& Transaction)
				{ return std::find(Undone.begin(), Undone.end(), Transaction) != Undone.end(); });
			std::erase_if(Performed,
				[&](const FPerformedChange& Change)
				{
					return std::any_of(Undone.begin(), Undone.end(),
						[&Change](const std::shared_ptr<FTransaction>& Transaction) { return Transaction->Id == Change.TransactionId; });
				});
		}
		for (const std::shared_ptr<FTransaction>& Transaction : Undone)
		{
			Result.TransactionIds.push_back(Transaction->Id);
			for (const FRecord& Record : Transaction->Records)
			{
				Release(Record.Before.Hash);
			}
		}
		return Result;
	}
}
