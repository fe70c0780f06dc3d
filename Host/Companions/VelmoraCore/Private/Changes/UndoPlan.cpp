#include "Changes/UndoPlan.h"

#include <algorithm>
#include <climits>

#include "Changes/ContentHash.h"

namespace Velmora
{
	namespace
	{
		constexpr int MaxCopies = 1000;

		/** What stands there now is held in memory for going back, up to this; the rest goes through the journal. In bytes. */
		constexpr uint64_t MaxHeldBytes = 32 * 1024 * 1024;

		/** An extension that is longer is part of the name. In bytes. */
		constexpr size_t MaxExtension = 64;

		/**
		 * "Docs/notes.md" and 2: "Docs/notes.conflict-2.md". A dot at the start of a name opens no extension, and a name that is as long
		 * as names can be loses some of its end.
		 */
		std::string MakeCopyName(const std::string& Path, int Number)
		{
			const size_t NameStart = Path.rfind('/') + 1;
			const size_t Dot = Path.rfind('.');
			const bool bHasExtension = Dot != std::string::npos && Dot > NameStart && Path.size() - Dot <= MaxExtension;
			const size_t StemEnd = bHasExtension ? Dot : Path.size();
			const std::string Ending = ".conflict-" + std::to_string(Number) + Path.substr(StemEnd);
			size_t Length = std::min(StemEnd - NameStart, NAME_MAX - Ending.size());
			while (NameStart + Length < StemEnd && Length > 0 && (Path[NameStart + Length] & 0xC0) == 0x80)
			{
				--Length; // No character is cut in two.
			}
			return Path.substr(0, NameStart + Length) + Ending;
		}

		/** A file or link of that very content stands there, so that it need not be copied again. */
		bool StandsThere(const FProjectAccess& Access, const std::string& Path, const FEntryInfo& Info, const FEntryState& State)
		{
			FEntryInfo There;
			std::string Bytes;
			return Info.Kind == State.Kind &&
				(Info.Kind != EEntryKind::File || Access.Read(Path, FKeptContents::MaxFileBytes, Bytes, There).empty()) &&
				MakeEntryState(Info, Bytes).HoldsSame(State);
		}
	}

	FProjectAccess::FWriteOptions FUndoTarget::MakeOptions(const FEntryState& State) const
	{
		FProjectAccess::FWriteOptions Options;
		Options.TemporaryName = TemporaryName;
		Options.Mode = State.Mode;
		Options.Traits = State.Kind == EEntryKind::File ? &State.Traits : nullptr;
		return Options;
	}

	FUndoPlan::FUndoPlan(FKeptContents& InContents)
		: Contents(InContents)
	{
	}

	FUndoPlan::~FUndoPlan()
	{
		for (const FUndoTarget& Target : Targets)
		{
			Contents.Release(Target.PresentKept);
		}
	}

	void FUndoPlan::Add(const FChangeTransaction& Transaction)
	{
		for (auto Record = Transaction.Records.rbegin(); Record != Transaction.Records.rend(); ++Record)
		{
			std::unique_ptr<FProjectAccess>& Access = Accesses[Record->Root];
			if (!Access)
			{
				Access = std::make_unique<FProjectAccess>(Record->Root);
				Access->SetDurable(false); // Flushed together.
			}
			if (Access->IsOpen() && !(Access->GetIdentity() == Record->RootIdentity))
			{
				ReplacedRoots[Access.get()] = Record->Root;
			}
			const auto [Known, bIsNew] = Indices.try_emplace({ Record->RootIdentity, Record->Path }, Targets.size());
			if (bIsNew)
			{
				FUndoTarget& Added = Targets.emplace_back();
				Added.Access = Access.get();
				Added.Path = Record->Path;
				Added.Expected = Record->After;
				Added.TemporaryName = Record->TemporaryName;
			}
			FUndoTarget& Target = Targets[Known->second];
			// What the later change found is not what this one left: it was made by hand.
			if (!bIsNew && !Target.Wanted.HoldsSame(Record->After))
			{
				Target.HandEdits.push_back(Target.Wanted);
			}
			Target.Wanted = Record->Before;
			Target.OtherNames = Record->OtherNames;
			for (auto Made = Record->MadeFolders.rbegin(); Made != Record->MadeFolders.rend(); ++Made)
			{
				MadeFolders.push_back({ Access.get(), *Made });
			}
		}
	}

	std::string FUndoPlan::Inspect()
	{
		if (Progress)
		{
			Progress->SetFileCount(Targets.size());
		}
		for (FUndoTarget& Target : Targets)
		{
			const std::string Problem = InspectTarget(Target);
			NoteStep();
			if (!Problem.empty())
			{
				return "`" + Target.Path + "` cannot be restored: " + Problem;
			}
		}
		for (size_t Index = 0; Index < Targets.size(); ++Index)
		{
			const std::string Problem = PlanCopies(Index);
			if (!Problem.empty())
			{
				return "`" + Targets[Index].Path + "` cannot be restored: " + Problem;
			}
		}
		return std::string();
	}

	std::string FUndoPlan::InspectTarget(FUndoTarget& Target)
	{
		if (!Target.Access->IsOpen())
		{
			return Target.Access->DescribeRefusal();
		}
		const auto Replaced = ReplacedRoots.find(Target.Access);
		if (Replaced != ReplacedRoots.end())
		{
			return "the folder " + Replaced->second + " is another one than when it was changed";
		}
		FEntryInfo Info;
		std::string Bytes;
		std::string Problem = Target.Access->Look(Target.Path, Info);
		if (Problem.empty() && Info.Kind == EEntryKind::File)
		{
			Problem = Target.Access->Read(Target.Path, FKeptContents::MaxFileBytes, Bytes, Info);
		}
		Target.bIsOurFolder = Info.Kind == EEntryKind::Folder &&
			std::any_of(MadeFolders.begin(), MadeFolders.end(), [&Target](const FUndoFolder& Made) { return Made.Path == Target.Path; });
		if (Problem.empty() && ((Info.Kind == EEntryKind::Folder && !Target.bIsOurFolder) || Info.Kind == EEntryKind::Other))
		{
			Problem = "something that is no file has taken its place";
		}
		if (Problem.empty() && Target.Wanted.Kind == EEntryKind::File)
		{
			std::string Former;
			Problem = Contents.Read(Target.Wanted.Hash, Former);
			Problem = Problem.empty() ? Problem : "its former content is lost (" + Problem + ')';
		}
		if (!Problem.empty())
		{
			return Problem;
		}
		Target.bHasMoreNames = Info.Kind == EEntryKind::File && Info.NameCount > 1;
		Target.Present = Target.bIsOurFolder ? FEntryState() : MakeEntryState(Info, Bytes);
		Target.PresentStamp = Target.bIsOurFolder ? FEntryStamp() : Info.GetStamp();
		if (Target.IsInPlace() || Target.Present.Kind != EEntryKind::File)
		{
			return std::string();
		}
		if (HeldBytes + Bytes.size() <= MaxHeldBytes)
		{
			HeldBytes += Bytes.size();
			Target.PresentBytes = std::move(Bytes);
			return std::string();
		}
		Problem = Contents.Keep(Bytes, Target.Present.Hash);
		Target.PresentKept = Problem.empty() ? Target.Present.Hash : std::string();
		return Problem;
	}

	std::string FUndoPlan::PlanCopies(size_t Index)
	{
		const FUndoTarget& Target = Targets[Index];
		const std::string Name = "`" + Target.Path + "`";
		const std::string Now = Target.Wanted.Kind == EEntryKind::Absent ? "It is gone again, as before the request"
																		 : "It is back as it was before the request";
		std::vector<FEntryState> Saved = { Target.Wanted };
		const auto Save = [&](const FEntryState& State, const std::string& When, const std::string& Which) -> std::string
		{
			const bool bIsSaved =
				std::any_of(Saved.begin(), Saved.end(), [&State](const FEntryState& Other) { return Other.HoldsSame(State); });
			std::string Path;
			const std::string Problem = bIsSaved ? std::string() : PlanCopy(Index, State, Path);
			if (bIsSaved || !Problem.empty())
			{
				return Problem;
			}
			Saved.push_back(State);
			Notices.push_back(
				Name + " had been changed by hand " + When + ". " + Now + "; what you had made of it " + Which + "is in `" + Path + "`.");
			return std::string();
		};

		// 1. What the user made of it between two changes, in the order of time.
		for (auto Edit = Target.HandEdits.rbegin(); Edit != Target.HandEdits.rend(); ++Edit)
		{
			const std::string Problem = Edit->Kind == EEntryKind::File || Edit->Kind == EEntryKind::Link
				? Save(*Edit, "between two changes", "then ")
				: std::string();
			if (!Problem.empty())
			{
				return Problem;
			}
		}
		// 2. What came last. A content that the agent made, with another mode, is no work of the user's.
		if (Target.IsInPlace() || Target.bIsOurFolder || Target.Present.HoldsSame(Target.Expected))
		{
			return std::string();
		}
		if (Target.Present.Kind != EEntryKind::Absent)
		{
			return Save(Target.Present, "since", std::string());
		}
		Notices.push_back(Name + " had been removed since; it is back as it was.");
		return std::string();
	}

	bool FUndoPlan::IsTaken(const FUndoTarget& Target, const std::string& Path) const
	{
		return std::any_of(Targets.begin(), Targets.end(),
				   [&](const FUndoTarget& Other) { return Other.Access == Target.Access && Other.Path == Path; }) ||
			std::any_of(Copies.begin(), Copies.end(),
				[&](const FUndoCopy& Copy) { return Targets[Copy.Target].Access == Target.Access && Copy.Path == Path; });
	}

	std::string FUndoPlan::PlanCopy(size_t Index, const FEntryState& State, std::string& OutPath)
	{
		const FUndoTarget& Target = Targets[Index];
		for (int Number = 1; Number <= MaxCopies; ++Number)
		{
			OutPath = MakeCopyName(Target.Path, Number);
			FEntryInfo There;
			const std::string Problem = Target.Access->Look(OutPath, There);
			if (!Problem.empty())
			{
				return Problem;
			}
			const bool bIsThere = StandsThere(*Target.Access, OutPath, There, State);
			if ((There.Kind == EEntryKind::Absent || bIsThere) && !IsTaken(Target, OutPath))
			{
				Copies.push_back({ Index, OutPath, State, bIsThere });
				return std::string();
			}
		}
		return "too many copies stand beside it";
	}

	std::string FUndoPlan::ReadBytes(const FUndoTarget& Target, const FEntryState& State, std::string& OutBytes) const
	{
		if (State.Hash == Target.Present.Hash && Target.PresentKept.empty() && !Target.IsInPlace())
		{
			OutBytes = Target.PresentBytes;
			return std::string();
		}
		return Contents.Read(State.Hash, OutBytes);
	}
}
