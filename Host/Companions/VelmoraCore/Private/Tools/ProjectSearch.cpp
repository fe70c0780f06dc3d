#include "Tools/ProjectSearch.h"

#include <algorithm>

#include "Host/ProjectWalk.h"
#include "Text/CodeLines.h"
#include "Text/Utf8Text.h"

namespace Velmora
{
	namespace
	{
		/** Hits held before the best are chosen. Beyond it only better kinds than a mere mention get in. */
		constexpr size_t MaxGatheredHits = 2000;

		/** Characters of a line that a hit keeps. */
		constexpr size_t MaxHitCharacters = 120;

		/** Words in front of a name that define it, in the usual languages. */
		// clang-format off
		constexpr std::string_view DefiningWords[] = {
			"class", "struct", "enum", "union", "namespace", "interface", "trait", "concept", "typedef", "using", "def", "function",
			"func", "fn", "sub",
			"module", "package", "define", "type", "macro", "object", "record", "protocol", "impl", "alias",
		};
		// clang-format on

		/** Words that define a name only when a value follows it. */
		constexpr std::string_view ValueWords[] = { "const", "constexpr", "let", "var", "val", "auto", "set", "static" };

		/** Endings of files that are written to be read by people, and what leads to tests. */
		constexpr std::string_view ProseEndings[] = { ".md", ".txt", ".rst", ".html", ".log" };

		/** Words after which a name and a bracket are a call and no definition. */
		// clang-format off
		constexpr std::string_view CallingWords[] = {
			"return", "else", "new", "delete", "throw", "case", "in", "and", "or", "not", "await", "yield", "if", "while", "do",
			"co_return", "co_await", "emit",
		};
		// clang-format on

		bool Contains(const std::string_view* Begin, const std::string_view* End, std::string_view Word)
		{
			return std::find(Begin, End, Word) != End;
		}

		std::string_view TrimRight(std::string_view Text)
		{
			const size_t Last = Text.find_last_not_of(" \t");
			return Text.substr(0, Last == std::string_view::npos ? 0 : Last + 1);
		}

		/** Takes the last word off Text; empty when Text ends with something else. */
		std::string_view TakeLastWord(std::string_view& Text)
		{
			Text = TrimRight(Text);
			size_t Start = Text.size();
			while (Start > 0 && Utf8Text::IsWordByte(Text[Start - 1]))
			{
				--Start;
			}
			const std::string_view Word = Text.substr(Start);
			Text = Text.substr(0, Start);
			return Word;
		}

		/** A word in capitals, such as the export marker between "class" and the name. */
		bool IsMarker(std::string_view Word)
		{
			return Word.size() > 1 && std::none_of(Word.begin(), Word.end(), [](char Byte) { return Byte >= 'a' && Byte <= 'z'; });
		}

		/**
		 * Kind and letter case decide. Among mentions, code goes before comments, prose and tests, and a text that is
		 * exactly the term, quotes and all, before one that merely holds it.
		 */
		int RankOf(const FSearchHit& Hit, std::string_view Line, size_t Start, size_t End)
		{
			const std::string Path = Utf8Text::ToLower(Hit.File.Relative);
			const bool bIsProse = std::any_of(std::begin(ProseEndings), std::end(ProseEndings),
				[&Path](std::string_view Ending) { return Utf8Text::EndsWith(Path, Ending); });
			const bool bIsTest = Path.find("test") != std::string::npos;
			const bool bIsQuoted =
				Start > 0 && End < Line.size() && (Line[Start - 1] == '"' || Line[Start - 1] == '\'') && Line[End] == Line[Start - 1];
			return static_cast<int>(Hit.Kind) * 20 + (Hit.bIsExactCase ? 0 : 100) + (bIsProse ? 8 : 0) + (bIsTest ? 4 : 0) +
				(CodeLines::IsComment(Line) ? 2 : 0) - (bIsQuoted ? 1 : 0);
		}

		/** A term made ready: its bytes in lower case, and its words for the second attempt. */
		struct FSearchTerm
		{
			std::string Written;
			std::string Lower;
			std::vector<std::string> LowerWords;

			explicit FSearchTerm(std::string_view Text)
				: Written(Text)
				, Lower(Utf8Text::ToLower(Text))
			{
				for (size_t Start = 0; Start < Lower.size();)
				{
					const size_t End = std::min(Lower.find(' ', Start), Lower.size());
					if (End > Start)
					{
						LowerWords.push_back(Lower.substr(Start, End - Start));
					}
					Start = End + 1;
				}
			}
		};

		class FSearch
		{
		public:
			FSearch(const FProjectFiles& InFiles, const FSearchTerm& InTerm, bool bInAllWords)
				: Files(InFiles)
				, Term(InTerm)
				, bAllWords(bInAllWords)
			{
			}

			void SearchFile(const FProjectPath& File)
			{
				const FProjectText Content = Files.Read(File.Absolute);
				if (!Content.IsValid())
				{
					(Content.Result == EReadResult::Binary			  ? Result.BinaryFiles
							: Content.Result == EReadResult::TooLarge ? Result.LargeFiles
																	  : Result.UnreadableItems) += 1;
					return;
				}
				++Result.SearchedFiles;

				const std::string Lower = Utf8Text::ToLower(Content.Text);
				const std::string& Needle = bAllWords ? Term.LowerWords.front() : Term.Lower;
				size_t Matches = 0;
				size_t CountedTo = 0;
				int Line = 1;
				for (size_t At = Lower.find(Needle); At != std::string::npos;)
				{
					Line += static_cast<int>(std::count(
						Lower.begin() + static_cast<std::ptrdiff_t>(CountedTo), Lower.begin() + static_cast<std::ptrdiff_t>(At), '\n'));
					CountedTo = At;
					const size_t Before = Lower.rfind('\n', At);
					const size_t LineStart = At == 0 || Before == std::string::npos ? 0 : Before + 1;
					const size_t LineEnd = std::min(Lower.find('\n', At), Lower.size());
					if (!bAllWords || HoldsAllWords(std::string_view(Lower).substr(LineStart, LineEnd - LineStart)))
					{
						++Matches;
						AddHit(File, Line, std::string_view(Content.Text).substr(LineStart, LineEnd - LineStart), At - LineStart,
							Needle.size());
					}
					At = LineEnd >= Lower.size() ? std::string::npos : Lower.find(Needle, LineEnd);
				}
				if (Matches > 0)
				{
					Result.MatchCount += Matches;
					++Result.FileCount;
					if (Result.Files.size() < MaxSearchFiles)
					{
						Result.Files.push_back({ File, Matches });
					}
				}
			}

			FSearchResult Finish()
			{
				std::stable_sort(
					Result.Hits.begin(), Result.Hits.end(), [](const FSearchHit& A, const FSearchHit& B) { return A.Rank < B.Rank; });
				Result.Hits.resize(std::min(Result.Hits.size(), MaxSearchHits));
				return std::move(Result);
			}

			FSearchResult Result;

		private:
			bool HoldsAllWords(std::string_view LowerLine) const
			{
				return std::all_of(Term.LowerWords.begin(), Term.LowerWords.end(),
					[LowerLine](const std::string& Word) { return LowerLine.find(Word) != std::string_view::npos; });
			}

			/** Of several places in a line the one that says most counts. */
			void AddHit(const FProjectPath& File, int Line, std::string_view Text, size_t Start, size_t Length)
			{
				FSearchHit Hit;
				const std::string LowerLine = Utf8Text::ToLower(Text);
				const std::string LowerNeedle = LowerLine.substr(Start, Length);
				// A line of megabytes may hold the term any number of times; a few places tell enough.
				int PlacesLeft = 8;
				for (size_t At = Start; At != std::string::npos && PlacesLeft > 0;
					 At = LowerLine.find(LowerNeedle, At + Length), --PlacesLeft)
				{
					FSearchHit Candidate;
					Candidate.File = File;
					Candidate.Kind = ClassifyHit(Text, At, At + Length);
					Candidate.bIsExactCase = bAllWords || Text.substr(At, Length) == Term.Written;
					Candidate.Rank = RankOf(Candidate, Text, At, At + Length);
					if (Hit.File.Absolute.empty() || Candidate.Rank < Hit.Rank)
					{
						Hit = Candidate;
						Start = At;
					}
				}
				if (Result.Hits.size() >= MaxGatheredHits && Hit.Kind > EHitKind::Declaration)
				{
					return;
				}
				if (Result.Hits.size() >= 2 * MaxGatheredHits)
				{
					return;
				}
				Hit.Line = Line;
				// Of a very long line, show the part around the place.
				const size_t From = Start > 400 ? Start - 40 : 0;
				Hit.Text = Utf8Text::Shorten(Utf8Text::Sanitise(Utf8Text::Trim(Text.substr(From, 800))), MaxHitCharacters);
				Result.Hits.push_back(std::move(Hit));
			}

			const FProjectFiles& Files;
			const FSearchTerm& Term;
			const bool bAllWords;
		};

		FSearchResult RunSearch(const FProjectFiles& Files, const FProjectPath& Where, const FSearchTerm& Term, bool bAllWords,
			const std::function<bool()>& IsCancelled, const std::function<bool(std::string_view)>& IsLeftOut)
		{
			FSearch Search(Files, Term, bAllWords);
			if (!Where.bIsFolder)
			{
				Search.SearchFile(Where);
				return Search.Finish();
			}
			const FProjectWalkResult Walk = WalkProject(Files.GetRoot(), Where.Relative,
				[&](const FProjectWalkEntry& Entry)
				{
					if (IsCancelled())
					{
						return EProjectWalkStep::Stop;
					}
					if (!Entry.bIsDirectory)
					{
						const std::string Relative = Where.Relative.empty() ? std::string(Entry.RelativePath)
																			: Where.Relative + '/' + std::string(Entry.RelativePath);
						if (!IsLeftOut || !IsLeftOut(Relative))
						{
							Search.SearchFile({ std::string(Entry.AbsolutePath), Relative, false });
						}
					}
					return EProjectWalkStep::Continue;
				});
			Search.Result.UnreadableItems += static_cast<size_t>(Walk.UnreadableFolders);
			Search.Result.bTruncated = Walk.bTruncated;
			return Search.Finish();
		}

		/** What stands around a name in its line, as far as it tells a definition from a mention. */
		struct FHitContext
		{
			std::string_view Before;
			std::string_view After;

			/** Before without the qualifier and the word that follows. */
			std::string_view Head;

			/** The nearest word in front that is no marker in capitals: "class", "return", a type. */
			std::string_view Previous;
			bool bIsQualified = false;
			bool bEndsStatement = false;

			FHitContext(std::string_view Line, size_t Start, size_t End)
				: Before(Line.substr(0, Start))
				, After(Utf8Text::Trim(Line.substr(End)))
				, Head(Before)
				, bIsQualified(Utf8Text::EndsWith(Before, "::"))
				, bEndsStatement(Utf8Text::EndsWith(Utf8Text::Trim(Line), ";"))
			{
				if (bIsQualified)
				{
					Head = Head.substr(0, Head.size() - 2);
					TakeLastWord(Head);
				}
				Previous = TakeLastWord(Head);
				while (IsMarker(Previous) && !Utf8Text::Trim(Head).empty())
				{
					Previous = TakeLastWord(Head);
				}
			}

			/** Inside of brackets stand parameters and arguments. */
			bool IsInBrackets() const
			{
				return std::count(Before.begin(), Before.end(), '(') > std::count(Before.begin(), Before.end(), ')');
			}
		};

		/** A name without a word of the language in front: a function's head, a value that is set, or a mere mention. */
		EHitKind ClassifyPlainName(const FHitContext& Hit)
		{
			const bool bHasBracket = !Hit.After.empty() && Hit.After.front() == '(';
			const std::string_view Lead = TrimRight(Hit.Before);
			const char LastLead = Lead.empty() ? '\0' : Lead.back();
			const bool bFollowsType =
				(!Hit.Previous.empty() && !Contains(std::begin(CallingWords), std::end(CallingWords), Hit.Previous)) || LastLead == '*' ||
				LastLead == '&' || LastLead == '>' || LastLead == '~';
			const bool bIsMember = Utf8Text::EndsWith(Lead, "->") || LastLead == '.';
			const bool bIsArgument = Lead.find('=') != std::string_view::npos || Lead.find('(') != std::string_view::npos;
			const bool bMayDeclare = !bIsMember && !bIsArgument;
			if (bHasBracket && bMayDeclare && bFollowsType && (!Hit.bIsQualified || !Hit.Head.empty() || !Hit.Previous.empty()))
			{
				return Hit.bEndsStatement ? EHitKind::Declaration : EHitKind::Definition;
			}
			// A constructor: "FThing::FThing(" at the start of the line, no type in front.
			if (bHasBracket && Hit.bIsQualified && !Hit.bEndsStatement && Utf8Text::Trim(Hit.Head).empty())
			{
				return EHitKind::Definition;
			}
			const bool bIsSet = !Hit.After.empty() &&
				((Hit.After.front() == '=' && !Utf8Text::StartsWith(Hit.After, "==")) ||
					(Hit.After.front() == ':' && !Utf8Text::StartsWith(Hit.After, "::")));
			const bool bOpensLine = Utf8Text::Trim(Hit.Before).empty() || Utf8Text::Trim(Hit.Before) == "\"";
			const bool bIsDeclared = (bIsSet && (bOpensLine || bFollowsType)) || (bFollowsType && Hit.After == ";");
			return bMayDeclare && bIsDeclared ? EHitKind::Declaration : EHitKind::Word;
		}
	}

	std::string FSearchResult::CountMatches() const
	{
		return Utf8Text::Count(MatchCount, "match", "matches") + " in " + Utf8Text::Count(FileCount, "file", "files");
	}

	std::string FSearchResult::Describe() const
	{
		return MatchCount == 0 ? "No match in " + Utf8Text::Count(SearchedFiles, "file", "files") : CountMatches();
	}

	EHitKind ClassifyHit(std::string_view Line, size_t Start, size_t End)
	{
		// 1. Parts of words and comments define nothing.
		const bool bTermIsWord = Start < End && Utf8Text::IsWordByte(Line[Start]);
		const bool bIsPart = bTermIsWord &&
			((Start > 0 && Utf8Text::IsWordByte(Line[Start - 1])) ||
				(End < Line.size() && Utf8Text::IsWordByte(Line[End]) && Utf8Text::IsWordByte(Line[End - 1])));
		if (bIsPart)
		{
			return EHitKind::Part;
		}
		if (!bTermIsWord || CodeLines::IsComment(Line))
		{
			return EHitKind::Word;
		}
		const FHitContext Hit(Line, Start, End);
		if (Hit.IsInBrackets())
		{
			return EHitKind::Word;
		}

		// 2. The word in front says what it is.
		if (Contains(std::begin(ValueWords), std::end(ValueWords), Hit.Previous) && Utf8Text::StartsWith(Hit.After, "=") &&
			!Utf8Text::StartsWith(Hit.After, "=="))
		{
			return EHitKind::Definition;
		}
		if (!Hit.Previous.empty() && Contains(std::begin(DefiningWords), std::end(DefiningWords), Hit.Previous))
		{
			// "class X;" only announces. "friend class X" and "enum class X" differ in what stands before.
			const bool bIsAnnounced = Hit.After == ";" && Hit.Previous != "using" && Hit.Previous != "namespace";
			std::string_view Earlier = Hit.Head;
			return bIsAnnounced || TakeLastWord(Earlier) == "friend" ? EHitKind::Declaration : EHitKind::Definition;
		}

		// 3. Else only its form does.
		return ClassifyPlainName(Hit);
	}

	FSearchResult SearchProject(const FProjectFiles& Files, const FProjectPath& Where, std::string_view Term,
		const std::function<bool()>& IsCancelled, const std::function<bool(std::string_view Path)>& IsLeftOut)
	{
		const FSearchTerm Ready(Utf8Text::Trim(Term));
		if (Ready.LowerWords.empty())
		{
			return FSearchResult();
		}
		FSearchResult Result = RunSearch(Files, Where, Ready, /*bAllWords*/ false, IsCancelled, IsLeftOut);
		if (Result.MatchCount == 0 && Ready.LowerWords.size() > 1 && !IsCancelled())
		{
			Result = RunSearch(Files, Where, Ready, /*bAllWords*/ true, IsCancelled, IsLeftOut);
		}
		return Result;
	}
}
