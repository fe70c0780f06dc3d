#include "Changes/UndoRun.h"

#include <algorithm>
#include <set>

#include "Changes/ChangeJournal.h"
#include "Host/FolderLock.h"

namespace Velmora
{
	namespace
	{
		/** Each wait for the disk takes milliseconds; beyond this, one wait for all is shorter. */
		constexpr std::ptrdiff_t MaxSingleFlushes = 6;

		std::string Refuse(const FUndoTarget& Target, const std::string& Problem)
		{
			return Problem.empty() ? Problem : "`" + Target.Path + "` cannot be restored: " + Problem;
		}
	}

	FUndoRun::FUndoRun(FUndoPlan& InPlan, bool bInIsDurable)
		: Plan(InPlan)
		, bIsDurable(bInIsDurable)
		, bIsWrittenBeside(InPlan.Targets.size())
		, bIsFlushed(InPlan.Targets.size())
	{
	}

	FUndoRun::~FUndoRun()
	{
		for (size_t Index = 0; Index < Plan.Targets.size(); ++Index)
		{
			const FUndoTarget& Target = Plan.Targets[Index];
			if (bIsWrittenBeside[Index])
			{
				Target.Access->Remove(Target.GetFolder() + Target.TemporaryName);
			}
		}
	}

	std::string FUndoRun::PrepareFiles()
	{
		for (size_t Index = 0; Index < Plan.Targets.size(); ++Index)
		{
			const FUndoTarget& Target = Plan.Targets[Index];
			Plan.NoteStep();
			FEntryInfo Parent;
			const std::string Folder = Target.GetFolder();
			const bool bHasFolder = Folder.empty() ||
				(Target.Access->Look(Folder.substr(0, Folder.size() - 1), Parent).empty() && Parent.Kind == EEntryKind::Folder);
			if (Target.Wanted.Kind != EEntryKind::File || Target.IsInPlace() || Target.bIsOurFolder ||
				Target.Present.Kind == EEntryKind::Link || !bHasFolder)
			{
				continue;
			}
			std::string Bytes;
			std::string Problem = Plan.ReadBytes(Target, Target.Wanted, Bytes);
			std::string Lost;
			FProjectAccess::FWriteOptions Options = Target.MakeOptions(Target.Wanted);
			Options.OutLost = &Lost;
			Problem = Problem.empty() ? Target.Access->WriteBeside(Target.Path, Bytes, Options) : Problem;
			if (!Lost.empty())
			{
				Plan.Notices.push_back("`" + Target.Path + "` is back as it was, but for " + Lost + '.');
			}
			if (Target.bHasMoreNames && Target.OtherNames.empty())
			{
				Plan.Notices.push_back("`" + Target.Path + "` is back as it was, but is no longer one file with its other names.");
			}
			if (!Problem.empty())
			{
				return Refuse(Target, Problem);
			}
			bIsWrittenBeside[Index] = true;
		}
		if (!bIsDurable)
		{
			return std::string();
		}
		const bool bFlushAll = std::count(bIsWrittenBeside.begin(), bIsWrittenBeside.end(), true) > MaxSingleFlushes;
		if (bFlushAll)
		{
			FlushAll();
		}
		for (size_t Index = 0; Index < Plan.Targets.size(); ++Index)
		{
			const FUndoTarget& Target = Plan.Targets[Index];
			const std::string Problem =
				bIsWrittenBeside[Index] && !bFlushAll ? Target.Access->FlushFile(Target.GetFolder() + Target.TemporaryName) : std::string();
			if (!Problem.empty())
			{
				return Refuse(Target, Problem);
			}
			bIsFlushed[Index] = bIsWrittenBeside[Index];
		}
		return std::string();
	}

	std::string FUndoRun::Apply()
	{
		std::string Problem;
		for (auto Copy = Plan.Copies.begin(); Copy != Plan.Copies.end() && Problem.empty(); ++Copy)
		{
			Problem = Refuse(Plan.Targets[Copy->Target], MakeCopy(*Copy));
		}
		Problem = Problem.empty() ? RestoreAll(true) : Problem;
		if (!Problem.empty())
		{
			return Problem;
		}
		// The inner ones first. One that holds something of the user's stays.
		std::stable_sort(Plan.MadeFolders.begin(), Plan.MadeFolders.end(),
			[](const FUndoFolder& A, const FUndoFolder& B) { return A.Path.size() > B.Path.size(); });
		for (const FUndoFolder& Made : Plan.MadeFolders)
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
		Problem = RestoreAll(false);
		if (Problem.empty())
		{
			LinkNames(true);
		}
		return Problem;
	}

	void FUndoRun::LinkNames(bool bTells)
	{
		std::set<std::pair<const FProjectAccess*, std::string>> Done;
		for (const FUndoTarget& Target : Plan.Targets)
		{
			FEntryInfo Info;
			std::string Bytes;
			if (Target.OtherNames.empty() || !Done.insert({ Target.Access, Target.Path }).second ||
				!Target.Access->Read(Target.Path, FKeptContents::MaxFileBytes, Bytes, Info).empty())
			{
				continue;
			}
			const FEntryState State = MakeEntryState(Info, Bytes);
			for (const std::string& Name : Target.OtherNames)
			{
				FEntryInfo Other;
				std::string OtherBytes;
				const bool bIsNew = Done.insert({ Target.Access, Name }).second;
				const bool bIsFile = bIsNew && Target.Access->Look(Name, Other).empty() && Other.Kind == EEntryKind::File &&
					Target.Access->Read(Name, FKeptContents::MaxFileBytes, OtherBytes, Other).empty();
				const bool bIsOne = bIsFile && Other.Number == Info.Number && Other.Device == Info.Device;
				if (bIsNew && !bIsOne &&
					(!bIsFile || !(MakeEntryState(Other, OtherBytes) == State) ||
						!Target.Access->LinkTo(Target.Path, Name, Target.TemporaryName).empty()) &&
					bTells)
				{
					Plan.Notices.push_back("`" + Target.Path + "` and `" + Name + "` are no longer one file.");
				}
			}
		}
	}

	std::string FUndoRun::RestoreAll(bool bRemoves)
	{
		std::string Problem;
		for (size_t Index = 0; Index < Plan.Targets.size() && Problem.empty(); ++Index)
		{
			const FUndoTarget& Target = Plan.Targets[Index];
			if ((Target.Wanted.Kind == EEntryKind::Absent) == bRemoves)
			{
				Problem = Target.IsInPlace() ? std::string() : Refuse(Target, Restore(Index));
				Plan.NoteStep();
			}
		}
		return Problem;
	}

	std::string FUndoRun::MakeParents(const FUndoTarget& Target, const std::string& Path)
	{
		std::vector<std::string> Made;
		const std::string Problem = Target.Access->MakeParents(Path, Made);
		for (const std::string& Folder : Made)
		{
			Steps.push_back([Access = Target.Access, Folder] { return Access->RemoveFolder(Folder); });
		}
		return Problem;
	}

	std::string FUndoRun::MakeCopy(const FUndoCopy& Copy)
	{
		if (Copy.bIsThere)
		{
			return std::string();
		}
		const FUndoTarget& Target = Plan.Targets[Copy.Target];
		FProjectAccess::FWriteOptions Options = Target.MakeOptions(Copy.State);
		Options.TemporaryName += FChangeJournal::CopyEnding;
		Options.bMayReplace = false;
		std::string Problem = MakeParents(Target, Copy.Path);
		Problem = Problem.empty() ? Put(Target, Copy.Path, Copy.State, Options) : Problem;
		if (!Problem.empty())
		{
			return Problem;
		}
		Steps.push_back([Access = Target.Access, Path = Copy.Path] { return Access->Remove(Path); });
		if (bIsDurable && Copy.State.Kind == EEntryKind::File)
		{
			// Before what it was copied from is gone.
			Target.Access->FlushFile(Copy.Path);
			Target.Access->FlushFolderOf(Copy.Path);
		}
		return std::string();
	}

	std::string FUndoRun::Restore(size_t Index)
	{
		const FUndoTarget& Target = Plan.Targets[Index];
		std::string Problem = Target.Wanted.Kind == EEntryKind::Absent ? std::string() : MakeParents(Target, Target.Path);
		if (Problem.empty())
		{
			// What somebody has made of it since it was looked at stays.
			FProjectAccess::FWriteOptions Options = Target.MakeOptions(Target.Wanted);
			Options.Replaced = &Target.PresentStamp;
			Problem = bIsWrittenBeside[Index] ? Target.Access->PutInPlace(Target.Path, Options)
											  : Put(Target, Target.Path, Target.Wanted, Options);
			bIsWrittenBeside[Index] = false; // In place, or cleared away.
		}
		if (Problem.empty())
		{
			Steps.push_back(
				[this, &Target]
				{
					const std::string Failure = Put(Target, Target.Path, Target.Present, Target.MakeOptions(Target.Present));
					return Failure.empty() ? Failure : "`" + Target.Path + "`: " + Failure;
				});
		}
		return Problem;
	}

	std::string FUndoRun::Put(
		const FUndoTarget& Target, const std::string& Path, const FEntryState& State, const FProjectAccess::FWriteOptions& Options) const
	{
		if (State.Kind == EEntryKind::Absent)
		{
			return Target.Access->Remove(Path, Options.Replaced);
		}
		if (State.Kind == EEntryKind::Link)
		{
			return Target.Access->MakeLink(Path, State.LinkTarget, Options);
		}
		std::string Bytes;
		const std::string Problem = Plan.ReadBytes(Target, State, Bytes);
		return Problem.empty() ? Target.Access->Write(Path, Bytes, Options) : Problem;
	}

	std::string FUndoRun::GoBack()
	{
		std::string Lost;
		for (; !Steps.empty(); Steps.pop_back())
		{
			const std::string Problem = Steps.back()();
			Lost += Problem.empty() ? std::string() : " " + Problem + ".";
		}
		LinkNames(false);
		return Lost;
	}

	bool FUndoRun::IsManyFlushes() const
	{
		return std::count_if(Plan.Targets.begin(), Plan.Targets.end(), [](const FUndoTarget& Target) { return !Target.IsInPlace(); }) >
			MaxSingleFlushes;
	}

	void FUndoRun::FlushAll() const
	{
		for (const auto& [Root, Access] : Plan.Accesses)
		{
			Access->FlushAll();
		}
	}

	void FUndoRun::Flush() const
	{
		if (IsManyFlushes())
		{
			FlushAll();
			return;
		}
		std::set<std::pair<const FProjectAccess*, std::string>> Flushed;
		for (size_t Index = 0; Index < Plan.Targets.size(); ++Index)
		{
			const FUndoTarget& Target = Plan.Targets[Index];
			if (Target.IsInPlace())
			{
				continue;
			}
			if (Target.Wanted.Kind == EEntryKind::File && !bIsFlushed[Index])
			{
				Target.Access->FlushFile(Target.Path);
			}
			if (Flushed.insert({ Target.Access, Target.GetFolder() }).second)
			{
				Target.Access->FlushFolderOf(Target.Path);
			}
		}
		for (const FUndoFolder& Made : Plan.MadeFolders)
		{
			if (Flushed.insert({ Made.Access, Made.Path.substr(0, Made.Path.rfind('/') + 1) }).second)
			{
				Made.Access->FlushFolderOf(Made.Path);
			}
		}
	}

	FUndoEnd PerformUndo(
		FUndoPlan& Plan, bool bIsDurable, const std::function<std::string()>& WriteDown, const std::function<std::string()>& Commit)
	{
		FUndoEnd End;
		std::vector<FFolderLock> Turns;
		for (const auto& [Root, Access] : Plan.Accesses)
		{
			Turns.emplace_back(Root, FProjectAccess::TurnMilliseconds);
		}
		FUndoRun Run(Plan, bIsDurable);
		// 1. All that can fail without a trace.
		End.Problem = Plan.Inspect();
		End.Problem = End.Problem.empty() ? Run.PrepareFiles() : End.Problem;
		End.Problem = End.Problem.empty() ? WriteDown() : End.Problem;
		if (!End.Problem.empty())
		{
			End.Problem += End.Problem.back() == '.' ? "" : ".";
			return End;
		}
		// 2. The files, then the messages: until they are gone, everything can go back.
		End.Problem = Run.Apply();
		if (End.Problem.empty() && bIsDurable)
		{
			Run.Flush();
		}
		End.Problem = End.Problem.empty() ? Commit() : End.Problem;
		if (!End.Problem.empty())
		{
			End.Problem += End.Problem.back() == '.' ? "" : ".";
			End.Lost = Run.GoBack();
			if (bIsDurable)
			{
				Run.Flush();
			}
		}
		return End;
	}
}
