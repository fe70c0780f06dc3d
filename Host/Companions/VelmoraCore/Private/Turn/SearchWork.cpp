#include "Turn/SearchWork.h"

#include <algorithm>

#include "Text/CodeLines.h"
#include "Text/Utf8Text.h"
#include "Tools/AnswerMarkdown.h"
#include "Turn/BrowseWork.h"

namespace Velmora
{
	namespace
	{
		/** Lines shown on each side of a mere mention. */
		constexpr int NeighbourLines = 2;

		/** Files told by the question which ones hold a text. */
		constexpr size_t MaxNamedFiles = 50;

		/** Words of a free question that are looked for, and places shown for them. */
		constexpr size_t MaxMainWords = 5;
		constexpr size_t MaxQuestionHits = 8;

		std::string HitItem(const FSearchHit& Hit)
		{
			return "- " + AnswerMarkdown::FileLink(Hit.File, Hit.Line) + ' ' + AnswerMarkdown::InlineCode(Hit.Text, 90) + '\n';
		}

		std::string HitList(const std::vector<FSearchHit>& Hits)
		{
			std::string Text;
			for (const FSearchHit& Hit : Hits)
			{
				Text += HitItem(Hit);
			}
			return Text;
		}

		/** What a search could not look into. Binary files are worth a word only when nothing else was found. */
		std::string LeftOutNotes(const FSearchResult& Result)
		{
			std::string Notes;
			if (Result.MatchCount == 0 && Result.BinaryFiles > 0)
			{
				Notes += Utf8Text::Count(Result.BinaryFiles, "binary file was", "binary files were") + " left out.\n";
			}
			if (Result.LargeFiles > 0)
			{
				Notes += Utf8Text::Count(Result.LargeFiles, "file was", "files were") + " left out as larger than 4 MB.\n";
			}
			if (Result.UnreadableItems > 0)
			{
				Notes += Utf8Text::Count(Result.UnreadableItems, "file or folder", "files or folders") + " could not be read.\n";
			}
			if (Result.bTruncated)
			{
				Notes += "The project is larger than one search takes, so not all of it was searched.\n";
			}
			return Notes;
		}
	}

	bool FSearchWork::AppendSnippet(const FSearchHit& Hit, std::string& Answer)
	{
		FProjectText Content;
		const bool bIsDefinition = Hit.Kind == EHitKind::Definition;
		if (!Desk.RunReadTool(Hit.File, std::max(1, Hit.Line - NeighbourLines),
				Hit.Line + (bIsDefinition ? CodeLines::MaxDefinitionLines : NeighbourLines), Content))
		{
			return false;
		}
		if (!Content.IsValid())
		{
			Answer += "The file could not be shown: " + Content.Problem + ".\n";
			return true;
		}
		const std::vector<std::string_view> Lines = Utf8Text::SplitLines(Content.Text);
		const int Count = static_cast<int>(Lines.size());
		auto [First, Last] = bIsDefinition ? CodeLines::MeasureDefinition(Lines, Hit.Line)
										   : std::pair<int, int>{ Hit.Line - NeighbourLines, Hit.Line + NeighbourLines };
		First = std::max(First, 1);
		Last = std::min(Last, Count);
		Answer += AnswerMarkdown::CodeLines(Lines, First, Last, Hit.File.Relative);
		if (bIsDefinition && Last - Hit.Line + 1 >= CodeLines::MaxDefinitionLines && Last < Count)
		{
			Answer += "It goes on below line " + std::to_string(Last) + ".\n";
		}
		return true;
	}

	const FSearchHit& FSearchWork::FCombinedSearch::FindBest() const
	{
		// A definition wins over a mention, then the attached files over the rest.
		const bool bIsAttached =
			!Attached.Hits.empty() && (Project.Hits.empty() || Attached.Hits.front().Kind <= Project.Hits.front().Kind);
		return bIsAttached ? Attached.Hits.front() : Project.Hits.front();
	}

	bool FSearchWork::RunCombinedSearch(FCombinedSearch& OutSearch)
	{
		// 1. Where to look: in the place that was named, if it is one; "in C++" is none, so the words are part of what is looked for.
		OutSearch.bHasScope = FindScope(OutSearch.Where);
		OutSearch.Term = OutSearch.bHasScope ? Request.TargetInScope : Request.Target;

		// 2. The attached files, each by itself, since they are what the user has just pointed at.
		if (!Desk.Attachments.empty() && !OutSearch.bHasScope)
		{
			if (!Desk.BeginStep("Searching the attached files for " + OutSearch.Term))
			{
				return false;
			}
			for (const FProjectPath& Attachment : Desk.Attachments)
			{
				FSearchResult Result;
				if (!Desk.RunSearchTool(Attachment, OutSearch.Term, Result))
				{
					return false;
				}
				FSearchResult& Sum = OutSearch.Attached;
				Sum.Hits.insert(Sum.Hits.end(), Result.Hits.begin(), Result.Hits.end());
				Sum.Files.insert(Sum.Files.end(), Result.Files.begin(), Result.Files.end());
				Sum.MatchCount += Result.MatchCount;
				Sum.FileCount += Result.FileCount;
			}
			// The hits of several files in one order; stable, so that files attached earlier come first among equals.
			std::stable_sort(OutSearch.Attached.Hits.begin(), OutSearch.Attached.Hits.end(),
				[](const FSearchHit& A, const FSearchHit& B) { return A.Rank < B.Rank; });
			OutSearch.Attached.Hits.resize(std::min(OutSearch.Attached.Hits.size(), MaxSearchHits));
		}
		// 3. The project.
		const std::string Place = OutSearch.bHasScope && !OutSearch.Where.Relative.empty() ? OutSearch.Where.Relative : "the project";
		return Desk.BeginStep("Searching " + Place + " for " + OutSearch.Term) &&
			Desk.RunSearchTool(OutSearch.Where, OutSearch.Term, OutSearch.Project);
	}

	bool FSearchWork::RunFindText()
	{
		if (Request.Target.empty())
		{
			return Say("What should I look for? For example: `find TryParseTable`\n");
		}
		FCombinedSearch Search;
		if (!RunCombinedSearch(Search))
		{
			return false;
		}
		if (!Search.HasFound())
		{
			return AnswerNotFound(Search);
		}

		const FSearchHit& Best = Search.FindBest();
		std::string Text = AnswerMarkdown::InlineCode(Search.Term) +
			(Best.Kind == EHitKind::Definition			 ? " is defined in "
					: Best.Kind == EHitKind::Declaration ? " is declared in "
														 : " is found in ") +
			AnswerMarkdown::FileLink(Best.File, Best.Line) + '\n';
		if (!AppendSnippet(Best, Text))
		{
			return false;
		}

		if (Search.Attached.MatchCount > 0)
		{
			Text += "**In the attached files: " + Search.Attached.CountMatches() + "**\n" + HitList(Search.Attached.Hits);
		}
		Text += "**" + std::string(Search.bHasScope ? "" : "In the project: ") + Search.Project.CountMatches() +
			(Search.Project.MatchCount > Search.Project.Hits.size() ? ", the best " + std::to_string(Search.Project.Hits.size())
																	: std::string()) +
			"**\n";
		return Say(Text + HitList(Search.Project.Hits) + LeftOutNotes(Search.Project));
	}

	bool FSearchWork::AnswerNotFound(const FCombinedSearch& Search)
	{
		// What stands in no text may still be the name of a file.
		std::vector<FProjectPath> Named;
		if (!Desk.RunFindFileTool(Search.Term, Named))
		{
			return false;
		}
		const std::string Code = AnswerMarkdown::InlineCode(Search.Term);
		const std::string Looked = Utf8Text::Count(Search.Project.SearchedFiles, "text file", "text files");
		std::string Text = Named.empty() ? "Nothing was found for " + Code + "\n"
										 : "No text holds " + Code + ", but these names do:\n" + AnswerMarkdown::FileList(Named);
		Text += "I searched " + Looked + (Search.Project.SearchedFiles == 0 && !Search.Where.bIsFolder ? "" : " below") + ' ' +
			AnswerMarkdown::FileName(Search.Where.Absolute, 160) + "\n";
		return Say(Text + LeftOutNotes(Search.Project));
	}

	bool FSearchWork::RunWhichFiles()
	{
		if (Request.Target.empty())
		{
			return Say("Which text should the files hold? For example: `which files mention Health?`\n");
		}
		FCombinedSearch Search;
		if (!RunCombinedSearch(Search))
		{
			return false;
		}
		if (Search.Project.MatchCount == 0)
		{
			return AnswerNotFound(Search);
		}
		std::string Text = AnswerMarkdown::InlineCode(Search.Term) + ": " + Search.Project.CountMatches() + "\n";
		size_t Shown = 0;
		for (const auto& [File, Matches] : Search.Project.Files)
		{
			if (++Shown > MaxNamedFiles)
			{
				break;
			}
			Text += "- " + AnswerMarkdown::FileLink(File) + ' ' + Utf8Text::Count(Matches, "line", "lines") + '\n';
		}
		if (Search.Project.FileCount > MaxNamedFiles)
		{
			Text += Utf8Text::Count(Search.Project.FileCount - MaxNamedFiles, "more file", "more files") + " are not listed.\n";
		}
		return Say(Text + LeftOutNotes(Search.Project));
	}

	bool FSearchWork::RunExplain()
	{
		// 1. Attached files, and files by their name, are described.
		if (Request.Target.empty())
		{
			if (!Desk.Attachments.empty())
			{
				return FBrowseWork(Desk, Request).AnswerAttachments(Desk.Attachments);
			}
			return Say("What should I explain? For example: `what is class FThing?`\n");
		}
		if (const std::vector<FProjectPath> Named = Desk.FindNamedAttachments(Request.Target); !Named.empty())
		{
			return FBrowseWork(Desk, Request).AnswerAttachments(Named);
		}
		const bool bLooksLikeFile = Request.Target.find_first_of("./") != std::string::npos;
		FProjectPath Place;
		if (bLooksLikeFile && Desk.FindPlace(Request.Target, Place))
		{
			return Request.FirstLine > 0 ? FBrowseWork(Desk, Request).AnswerFile(Place)
										 : FBrowseWork(Desk, Request).AnswerDescription(Place);
		}

		// 2. All else is a name that stands somewhere.
		FCombinedSearch Search;
		if (!RunCombinedSearch(Search))
		{
			return false;
		}
		if (!Search.HasFound())
		{
			// "explain this" with a file attached means the file.
			if (!Desk.Attachments.empty())
			{
				return FBrowseWork(Desk, Request).AnswerAttachments(Desk.Attachments);
			}
			return AnswerNotFound(Search);
		}
		return AnswerExplanation(Search);
	}

	bool FSearchWork::AnswerExplanation(const FCombinedSearch& Search)
	{
		const FSearchHit& Best = Search.FindBest();
		const std::string Code = AnswerMarkdown::InlineCode(Search.Term);
		std::string Text = Best.Kind == EHitKind::Definition
			? Code + " is defined in " + AnswerMarkdown::FileLink(Best.File, Best.Line) + '\n'
			: Best.Kind == EHitKind::Declaration
			? "I found no definition of " + Code + ", but a declaration in " + AnswerMarkdown::FileLink(Best.File, Best.Line) + '\n'
			: "I found no definition of " + Code + ". It is mentioned in " + AnswerMarkdown::FileLink(Best.File, Best.Line) + '\n';
		if (!AppendSnippet(Best, Text))
		{
			return false;
		}
		std::string Others;
		size_t OtherCount = 0;
		for (const FSearchHit& Hit : Search.Project.Hits)
		{
			// The best hit stands above with its lines already.
			if (Hit.Line != Best.Line || Hit.File.Absolute != Best.File.Absolute)
			{
				Others += HitItem(Hit);
				++OtherCount;
			}
		}
		if (OtherCount > 0)
		{
			const std::string Total = Search.Project.CountMatches() + " in all";
			Text += OtherCount > 6 ? AnswerMarkdown::Collapsible("Other places (" + Total + ")", Others)
								   : "**Other places** (" + Total + ")\n" + Others;
		}
		return Say(Text + LeftOutNotes(Search.Project));
	}

	bool FSearchWork::RunFreeQuestion()
	{
		std::string Text = "I only carry out commands (`help` lists them); for a question like this one a model can be connected.\n";
		if (!Desk.Attachments.empty() || Request.MainWords.empty())
		{
			Desk.AttachmentNotes = Text + Desk.AttachmentNotes;
			return Desk.Attachments.empty() ? (Desk.Answer(std::string()), true)
											: FBrowseWork(Desk, Request).AnswerAttachments(Desk.Attachments);
		}

		// 1. A search for each of the words. Those that stand everywhere tell nothing.
		if (!Desk.BeginStep("Looking for " + Request.MainWords.front()))
		{
			return false;
		}
		struct FPlace
		{
			FSearchHit Hit;
			size_t Words = 0;
		};
		std::vector<FPlace> Places;
		const size_t Count = std::min(Request.MainWords.size(), MaxMainWords);
		for (size_t Index = 0; Index < Count; ++Index)
		{
			FSearchResult Result;
			if (!Desk.RunSearchTool(Desk.GetProjectPath(), Request.MainWords[Index], Result))
			{
				return false;
			}
			for (const FSearchHit& Hit : Result.Hits)
			{
				const auto Known = std::find_if(Places.begin(), Places.end(),
					[&Hit](const FPlace& Place) { return Place.Hit.Line == Hit.Line && Place.Hit.File.Absolute == Hit.File.Absolute; });
				if (Known != Places.end())
				{
					++Known->Words;
				}
				else
				{
					Places.push_back({ Hit, 1 });
				}
			}
		}

		// 2. Lines with more of the words first, then the better kind of place.
		std::stable_sort(Places.begin(), Places.end(),
			[](const FPlace& A, const FPlace& B) { return A.Words != B.Words ? A.Words > B.Words : A.Hit.Rank < B.Hit.Rank; });
		Places.resize(std::min(Places.size(), MaxQuestionHits));
		Text += Places.empty() ? "" : "**Places in the project that may help**\n";
		for (const FPlace& Place : Places)
		{
			Text += HitItem(Place.Hit);
		}
		return Say(Text);
	}
}
