#include "Changes/ChangeTools.h"

#include <algorithm>

#include "Text/Utf8Text.h"
#include "Text/TextPassage.h"

namespace Velmora
{
	namespace
	{
		/** The whole lines between what both have in front and what both have behind. Of an encoding with NULs there are none. */
		void FindChangedLines(std::string_view Before, std::string_view After, FChangeOutcome& OutLines)
		{
			if (Before.find('\0') != std::string_view::npos)
			{
				return;
			}
			const size_t Shorter = std::min(Before.size(), After.size());
			size_t Front = 0;
			while (Front < Shorter && Before[Front] == After[Front])
			{
				++Front;
			}
			size_t Back = 0;
			while (Back < Shorter - Front && Before[Before.size() - 1 - Back] == After[After.size() - 1 - Back])
			{
				++Back;
			}
			const size_t Start = Front == 0 ? 0 : Before.rfind('\n', Front - 1) + 1;
			const auto Cut = [Start, Back](std::string_view Text)
			{
				// Up to the end of the line that the change ends in.
				const size_t End = Text.size() - Back;
				const bool bIsWhole = End > Start && Text[End - 1] == '\n';
				return std::string(Text.substr(Start, (bIsWhole ? End : std::min(Text.find('\n', End), Text.size())) - Start));
			};
			OutLines.FirstLine =
				1 + static_cast<int>(std::count(Before.begin(), Before.begin() + static_cast<std::ptrdiff_t>(Start), '\n'));
			OutLines.OldLines = Cut(Before);
			OutLines.NewLines = Cut(After);
		}

		const char* DescribeAction(EChangeAction Action)
		{
			return Action == EChangeAction::Created ? "Created " : Action == EChangeAction::Deleted ? "Deleted " : "Changed ";
		}

		/** Why an existing entry is no file to be written to, or nothing. */
		std::string RefuseEntry(const FEntryInfo& Info)
		{
			switch (Info.Kind)
			{
			case EEntryKind::Folder:
				return "it is a folder";
			case EEntryKind::Link:
				return "it is a link to `" + Info.LinkTarget + "`; name that file itself";
			case EEntryKind::Other:
				return "it is no regular file";
			case EEntryKind::Absent:
			case EEntryKind::File:
				break;
			}
			return std::string();
		}

		std::string RefuseText(const std::string& Bytes)
		{
			if (TextPassage::IsBinary(Bytes))
			{
				return "it is a binary file";
			}
			return Bytes.size() > FChangeTools::MaxWrittenBytes ? "it is larger than 4 MB" : std::string();
		}
	}

	FChangeTools::FChangeTools(const std::string& InRoot, FChangeJournal& InJournal, std::string InTransactionId, EAccessMethod Method)
		: Root(InRoot)
		, Access(InRoot, Method)
		, Journal(InJournal)
		, TransactionId(std::move(InTransactionId))
	{
	}

	FChangeOutcome FChangeTools::Change(std::string_view Path, bool bNeedsFile,
		const std::function<std::string(const FEntryInfo&, const std::string&, FNewContent&)>& MakeContent, uint64_t MaxBytes)
	{
		FChangeOutcome Outcome;
		size_t Lines = 0;
		std::string Note;
		Outcome.Problem = Access.IsOpen() ? Access.Normalise(Path, Outcome.Path) : Access.DescribeRefusal();
		if (Outcome.Problem.empty())
		{
			Outcome.Problem = Journal.Change(
				TransactionId, Access, Root, Outcome.Path,
				[&](const FEntryInfo& Info, const std::string& Bytes, FNewContent& OutContent) -> std::string
				{
					if (IsCancelled && IsCancelled())
					{
						return "the request was stopped";
					}
					if (bNeedsFile && Info.Kind == EEntryKind::Absent)
					{
						return "it cannot be found";
					}
					std::string Problem = Info.Kind == EEntryKind::File ? Access.RefuseWriting(Outcome.Path) : std::string();
					Problem = Problem.empty() ? MakeContent(Info, Bytes, OutContent) : Problem;
					if (Problem.empty() && OutContent.Bytes.size() > MaxBytes)
					{
						return "the new content is larger than 4 MB";
					}
					if (Problem.empty() && Guard)
					{
						Problem = Guard(Outcome.Path, Info, Bytes, OutContent);
					}
					Outcome.Action = OutContent.bIsDeletion ? EChangeAction::Deleted
						: Info.Kind == EEntryKind::Absent	? EChangeAction::Created
															: EChangeAction::Modified;
					Lines = Utf8Text::SplitLines(OutContent.Bytes).size();
					return Problem;
				},
				&Note);
		}
		Outcome.bSuccess = Outcome.Problem.empty();
		if (!Outcome.bSuccess)
		{
			Outcome.Sentence = "Not changed: " + Outcome.Problem;
			return Outcome;
		}
		Outcome.Sentence = DescribeAction(Outcome.Action) + Outcome.Path;
		if (Outcome.Action != EChangeAction::Deleted)
		{
			Outcome.Sentence += ", " + Utf8Text::Count(Lines, "line", "lines");
		}
		Outcome.Sentence += Note.empty() ? Note : "; " + Note;
		return Outcome;
	}

	FChangeOutcome FChangeTools::CreateFile(std::string_view Path, std::string_view Bytes)
	{
		return Change(Path, false,
			[&](const FEntryInfo& Info, const std::string&, FNewContent& OutContent) -> std::string
			{
				OutContent.Bytes = Bytes;
				return Info.Kind == EEntryKind::Absent ? std::string()
					: Info.Kind == EEntryKind::Folder  ? "a folder of that name is there already"
													   : "it is there already";
			});
	}

	FChangeOutcome FChangeTools::WriteFile(std::string_view Path, std::string_view Bytes)
	{
		return Change(Path, false,
			[&](const FEntryInfo& Info, const std::string& Old, FNewContent& OutContent)
			{
				OutContent.Bytes = TextPassage::Rewrite(Old, Bytes);
				return RefuseEntry(Info);
			});
	}

	std::string FChangeTools::RefuseReading(std::string_view Path) const
	{
		std::string Normal;
		return ReadGuard && Access.IsOpen() && Access.Normalise(Path, Normal).empty() ? ReadGuard(Normal) : std::string();
	}

	FChangeOutcome FChangeTools::EditFile(std::string_view Path, std::string_view Old, std::string_view New)
	{
		FChangeOutcome Lines;
		if (Lines.Problem = RefuseReading(Path); !Lines.Problem.empty())
		{
			Lines.Sentence = "Not changed: " + Lines.Problem;
			return Lines;
		}
		FChangeOutcome Outcome = Change(Path, true,
			[&](const FEntryInfo& Info, const std::string& Bytes, FNewContent& OutContent)
			{
				const std::string EntryProblem = RefuseEntry(Info);
				const std::string Problem = EntryProblem.empty() ? RefuseText(Bytes) : EntryProblem;
				size_t Count = 0;
				if (!Problem.empty() || TextPassage::Replace(Bytes, Old, New, Count, OutContent.Bytes))
				{
					FindChangedLines(Bytes, OutContent.Bytes, Lines);
					return Problem;
				}
				return Old.empty() ? std::string("no text to replace was given")
					: Count == 0   ? std::string("the text to replace does not stand in it (0 occurrences)")
								   : "the text to replace stands in it " + std::to_string(Count) + " times; it must be one passage only";
			});
		if (Outcome.bSuccess)
		{
			Outcome.FirstLine = Lines.FirstLine;
			Outcome.OldLines = std::move(Lines.OldLines);
			Outcome.NewLines = std::move(Lines.NewLines);
		}
		return Outcome;
	}

	FChangeOutcome FChangeTools::AppendToFile(std::string_view Path, std::string_view Text)
	{
		return Change(Path, false,
			[&](const FEntryInfo& Info, const std::string& Bytes, FNewContent& OutContent)
			{
				const std::string Problem = RefuseEntry(Info);
				OutContent.Bytes = TextPassage::Append(Bytes, Text);
				return Problem.empty() ? RefuseText(Bytes) : Problem;
			});
	}

	FChangeOutcome FChangeTools::DeleteFile(std::string_view Path)
	{
		return Change(Path, true,
			[&](const FEntryInfo& Info, const std::string&, FNewContent& OutContent)
			{
				OutContent.bIsDeletion = true;
				return Info.Kind == EEntryKind::Link ? std::string() : RefuseEntry(Info);
			});
	}

	FChangeOutcome FChangeTools::MoveFile(std::string_view From, std::string_view To)
	{
		// 1. What is moved, as it is now.
		FChangeOutcome Outcome;
		FEntryInfo Info;
		std::string Bytes;
		Outcome.Problem = Access.IsOpen() ? Access.Normalise(From, Outcome.Path) : Access.DescribeRefusal();
		if (Outcome.Problem.empty())
		{
			Outcome.Problem = RefuseReading(From);
		}
		if (Outcome.Problem.empty())
		{
			Outcome.Problem = Access.Look(Outcome.Path, Info);
		}
		if (Outcome.Problem.empty())
		{
			Outcome.Problem = Info.Kind == EEntryKind::Absent ? "it cannot be found" : RefuseEntry(Info);
		}
		if (Outcome.Problem.empty())
		{
			Outcome.Problem = Access.Read(Outcome.Path, FChangeJournal::MaxFileBytes, Bytes, Info);
		}
		if (!Outcome.Problem.empty())
		{
			Outcome.Sentence = "Not changed: " + Outcome.Problem;
			return Outcome;
		}

		// 2. The new file first, so that at no moment there is none.
		FChangeOutcome Made = Change(
			To, false,
			[&](const FEntryInfo& There, const std::string&, FNewContent& OutContent) -> std::string
			{
				OutContent.Bytes = Bytes;
				OutContent.Mode = Info.Mode;
				return There.Kind == EEntryKind::Absent ? std::string() : "something of that name is there already";
			},
			FChangeJournal::MaxFileBytes);
		if (!Made.bSuccess)
		{
			return Made;
		}

		// 3. Then the old one goes, unless somebody has written to it meanwhile; the new one is taken back then.
		const FChangeOutcome Removed = Change(From, true,
			[&](const FEntryInfo&, const std::string& Now, FNewContent& OutContent) -> std::string
			{
				OutContent.bIsDeletion = true;
				return Now == Bytes ? std::string() : "it was changed by somebody else at that moment";
			});
		if (!Removed.bSuccess)
		{
			DeleteFile(To);
			return Removed;
		}
		Made.Sentence = "Moved " + Removed.Path + " to " + Made.Path;
		return Made;
	}
}
