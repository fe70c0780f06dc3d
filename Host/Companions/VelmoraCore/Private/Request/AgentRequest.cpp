#include "Request/AgentRequest.h"

#include <algorithm>
#include <optional>

#include "Request/MainWords.h"
#include "Request/QuoteMarks.h"
#include "Request/RequestWords.h"
#include "Text/Utf8Text.h"

namespace Velmora
{
	namespace
	{
		/** Nobody asks a question in more bytes than this; what follows is material. */
		constexpr size_t MaxRequestBytes = 4000;

		/** A request in two aligned views: bytes as written, and in lower case. */
		struct FRequestText
		{
			std::string Written;
			std::string Lower;

			explicit FRequestText(std::string_view Text)
				: Written(Text)
				, Lower(Utf8Text::ToLower(Text))
			{
			}
			void Keep(size_t From, size_t Count)
			{
				Written = Written.substr(From, Count);
				Lower = Lower.substr(From, Count);
			}
			void TrimEnds()
			{
				// A full stop belongs to a name (".gitignore", "..", "X.h"), unless it ends a sentence.
				const std::string_view Openers = " \t\n,;:!";
				const std::string_view Closers = " \t\n,;:!?";
				const size_t First = std::min(Lower.find_first_not_of(Openers), Lower.size());
				size_t End = Lower.size();
				while (End > First &&
					(Closers.find(Lower[End - 1]) != std::string_view::npos ||
						(Lower[End - 1] == '.' && End - First > 1 && Lower[End - 2] != '.' && Lower[End - 2] != ' ' &&
							Lower[End - 2] != '/')))
				{
					--End;
				}
				Keep(First, End - First);
			}
		};

		bool BeginsWithWords(std::string_view Text, std::string_view Words)
		{
			// "show" must not open "shower", nor "open" the name "open.txt".
			return Utf8Text::StartsWith(Text, Words) &&
				(Text.size() == Words.size() ||
					(!Utf8Text::IsWordByte(Text[Words.size()]) && Text[Words.size()] != '.' && Text[Words.size()] != '/' &&
						Text[Words.size()] != ':'));
		}

		bool EndsWithWords(std::string_view Text, std::string_view Words)
		{
			return Utf8Text::EndsWith(Text, Words) && Text.size() > Words.size() && Text[Text.size() - Words.size() - 1] == ' ';
		}

		/** How a request begins. The longest phrase decides: "where is the definition of" is more than "where is". */
		std::optional<FPhraseRow> FindPhrase(std::string_view Lower)
		{
			std::optional<FPhraseRow> Best;
			const auto Try = [&](std::string_view Phrase, ERequestKind Kind)
			{
				if (BeginsWithWords(Lower, Phrase) && (!Best || Phrase.size() > Best->Phrase.size()))
				{
					Best = { Phrase, Kind };
				}
			};
			for (const FPhraseGroup& Group : RequestPhrases)
			{
				for (size_t Start = 0; Start < Group.Phrases.size();)
				{
					const size_t End = std::min(Group.Phrases.find('|', Start), Group.Phrases.size());
					Try(Group.Phrases.substr(Start, End - Start), Group.Kind);
					Start = End + 1;
				}
			}
			for (const FVerbRow& Row : Verbs)
			{
				Try(Row.Phrase, ERequestKind::ChangeFiles);
			}
			return Best;
		}

		/** Cuts phrases off one end as long as one fits and something is left. */
		template <size_t Size>
		void CutOpeners(FRequestText& Text, const std::string_view (&Phrases)[Size], bool bKeepRequests = false)
		{
			for (bool bHasCut = true; bHasCut;)
			{
				bHasCut = false;
				size_t Longest = 0;
				for (const std::string_view Phrase : Phrases)
				{
					if (Phrase.size() > Longest && Text.Lower.size() > Phrase.size() && BeginsWithWords(Text.Lower, Phrase))
					{
						Longest = Phrase.size();
					}
				}
				// "tell me about X" opens with a courtesy by its letters only.
				const std::optional<FPhraseRow> Phrase = bKeepRequests ? FindPhrase(Text.Lower) : std::nullopt;
				if (Phrase && Phrase->Phrase.size() > Longest)
				{
					return;
				}
				FRequestText Rest = Text;
				Rest.Keep(Longest, std::string::npos);
				Rest.TrimEnds();
				// Something must be left: a courtesy alone is a greeting, not a request for nothing.
				if (Longest > 0 && !Rest.Lower.empty())
				{
					Text = Rest;
					bHasCut = true;
				}
			}
		}

		template <size_t Size>
		void CutClosers(FRequestText& Text, const std::string_view (&Phrases)[Size])
		{
			for (bool bHasCut = true; bHasCut;)
			{
				bHasCut = false;
				for (const std::string_view Phrase : Phrases)
				{
					if (EndsWithWords(Text.Lower, Phrase))
					{
						Text.Keep(0, Text.Lower.size() - Phrase.size());
						Text.TrimEnds();
						bHasCut = true;
					}
				}
			}
		}

		/** "where is X defined", "where is X declared in Y". */
		bool AsksForDefinition(std::string_view Phrase, std::string_view Rest)
		{
			constexpr std::string_view Verbs[] = { "defined", "declared" };
			return Utf8Text::StartsWith(Phrase, "where") &&
				std::any_of(std::begin(Verbs), std::end(Verbs),
					[Rest](std::string_view Verb)
					{ return EndsWithWords(Rest, Verb) || Rest.find(' ' + std::string(Verb) + " in ") != std::string_view::npos; });
		}

		/** Stands for the quoted text: a control character that no sanitised text holds. */
		constexpr char QuotePlace = '\x01';

		/** Takes the first quoted text out. An apostrophe inside a word ("what's") opens nothing, and a fence is no part of a question. */
		std::string TakeQuoted(std::string& Text)
		{
			for (size_t Open = 0; Open < Text.size(); ++Open)
			{
				for (const FQuoteMarks& Marks : QuoteMarks)
				{
					const bool bIsInWord = Open > 0 && Utf8Text::IsWordByte(Text[Open - 1]) && Marks.Open.size() == 1;
					if (bIsInWord || Marks.bIsFence || Text.compare(Open, Marks.Open.size(), Marks.Open) != 0)
					{
						continue;
					}
					const size_t From = Open + Marks.Open.size();
					const size_t Close = FindClosingMark(Text, From, Marks.Close);
					if (Close != std::string::npos && Close != From)
					{
						const std::string Quoted(Utf8Text::Trim(std::string_view(Text).substr(From, Close - From)));
						Text.replace(Open, Close + Marks.Close.size() - Open, 1, QuotePlace);
						return Quoted;
					}
				}
			}
			return std::string();
		}

		/** Line feeds and tabs become blanks, runs of blanks one. */
		std::string FoldBlanks(std::string_view Text)
		{
			std::string Out;
			for (const char Byte : Text)
			{
				if (!Utf8Text::IsBlank(Byte))
				{
					Out.push_back(Byte);
				}
				else if (!Out.empty() && Out.back() != ' ')
				{
					Out.push_back(' ');
				}
			}
			return Out;
		}

		/** Reads digits at Index and moves behind them. Zero if there are none. */
		int ReadNumber(std::string_view Text, size_t& Index)
		{
			int Number = 0;
			for (; Index < Text.size() && Text[Index] >= '0' && Text[Index] <= '9'; ++Index)
			{
				// Bounded, so that a number of a thousand digits is merely too large.
				Number = std::min(Number * 10 + (Text[Index] - '0'), 100000000);
			}
			return Number;
		}

		/** The number behind a word at the beginning, and where it ends. Zero when either is missing. */
		int ReadNumberAfter(std::string_view Word, std::string_view Lower, size_t& OutEnd)
		{
			OutEnd = Word.size() + 1;
			return BeginsWithWords(Lower, Word) && OutEnd <= Lower.size() ? ReadNumber(Lower, OutEnd) : 0;
		}

		/** "lines 10-20 of X", "line 7 in X", "first 20 lines of X", "last 5 lines of X": reads the range, keeps X. */
		void TakeLeadingLineRange(FRequestText& Text, FAgentRequest& Request)
		{
			const std::string_view Lower = Text.Lower;
			size_t End = 0;
			int First = 0;
			int Last = 0;
			int Tail = 0;
			if (BeginsWithWords(Lower, "first") || BeginsWithWords(Lower, "last"))
			{
				const bool bIsFirst = Lower.front() == 'f';
				const int Count = ReadNumberAfter(bIsFirst ? "first" : "last", Lower, End);
				if (Count == 0 || !Utf8Text::StartsWith(Lower.substr(End), " line"))
				{
					return;
				}
				End += Utf8Text::StartsWith(Lower.substr(End), " lines") ? 6 : 5;
				First = bIsFirst ? 1 : 0;
				(bIsFirst ? Last : Tail) = Count;
			}
			else
			{
				First = Last = ReadNumberAfter(BeginsWithWords(Lower, "lines") ? "lines" : "line", Lower, End);
				if (First == 0)
				{
					return;
				}
				for (const std::string_view Separator : RangeSeparators)
				{
					size_t After = End + Separator.size();
					if (Utf8Text::StartsWith(Lower.substr(End), Separator) && After < Lower.size() && Lower[After] >= '0' &&
						Lower[After] <= '9')
					{
						Last = ReadNumber(Lower, After);
						End = After;
						break;
					}
				}
			}
			Request.FirstLine = std::min(First, Last);
			Request.LastLine = std::max(First, Last);
			Request.TailLines = Tail;
			Text.Keep(End, std::string::npos);
			Text.TrimEnds();
		}

		/** "X:12", "X:12-20", "X lines 12-20". */
		void TakeTrailingLineRange(FRequestText& Text, FAgentRequest& Request)
		{
			const size_t Words = std::max(Text.Lower.rfind(" line ") + 1, Text.Lower.rfind(" lines ") + 1);
			if (Words > 0)
			{
				FRequestText Range = Text;
				Range.Keep(Words, std::string::npos);
				TakeLeadingLineRange(Range, Request);
				if (Request.FirstLine > 0)
				{
					Text.Keep(0, Words);
					Text.TrimEnds();
				}
				return;
			}
			const size_t Colon = Text.Lower.rfind(':');
			if (Colon == std::string::npos || Colon == 0 || Colon + 1 >= Text.Lower.size())
			{
				return;
			}
			size_t Index = Colon + 1;
			const int First = ReadNumber(Text.Lower, Index);
			int Last = First;
			if (First > 0 && Index < Text.Lower.size() && Text.Lower[Index] == '-')
			{
				++Index;
				Last = ReadNumber(Text.Lower, Index);
			}
			if (First > 0 && Last > 0 && Index == Text.Lower.size())
			{
				Request.FirstLine = std::min(First, Last);
				Request.LastLine = std::max(First, Last);
				Text.Keep(0, Colon);
			}
		}

		/** One word that is hardly a sentence: a path, or a name with a capital, a digit or an underscore. */
		bool LooksLikeSymbol(std::string_view Text)
		{
			return Text.find(' ') == std::string_view::npos &&
				Text.find_first_of("_/.:0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ") != std::string_view::npos;
		}

		std::string PutBackQuoted(std::string_view Text, const std::string& Quoted)
		{
			std::string Out(Text);
			for (size_t Place = Out.find(QuotePlace); Place != std::string::npos; Place = Out.find(QuotePlace, Place + Quoted.size()))
			{
				Out.replace(Place, 1, Quoted);
			}
			return std::string(Utf8Text::Trim(Out));
		}

		/** Reads what stands behind the opening phrase into target and scope. */
		void ReadTarget(FRequestText Rest, const std::string& Quoted, FAgentRequest& Request)
		{
			TakeLeadingLineRange(Rest, Request);
			// Openers and ranges may stand in either order: "the first 20 lines of the file X", "lines 1-5 of the file X".
			CutOpeners(Rest, TargetOpeners);
			TakeLeadingLineRange(Rest, Request);
			CutOpeners(Rest, TargetOpeners);
			CutClosers(Rest, TargetClosers);
			if (Request.FirstLine == 0 && Request.TailLines == 0)
			{
				TakeTrailingLineRange(Rest, Request);
			}

			// The last of these words parts the target from its place: "find in in notes.md" looks for "in".
			size_t In = std::string::npos;
			size_t InLength = 0;
			for (const std::string_view Word : ScopeWords)
			{
				const size_t At = Rest.Lower.rfind(Word);
				if (At != std::string::npos && (In == std::string::npos || At > In))
				{
					In = At;
					InLength = Word.size();
				}
			}
			if (In != std::string::npos)
			{
				FRequestText Scope = Rest;
				Scope.Keep(In + InLength, std::string::npos);
				CutOpeners(Scope, TargetOpeners);
				CutClosers(Scope, TargetClosers);
				FRequestText Inner = Rest;
				Inner.Keep(0, In);
				Inner.TrimEnds();
				CutClosers(Inner, TargetClosers);
				Request.Scope = PutBackQuoted(Scope.Written, Quoted);
				Request.TargetInScope = PutBackQuoted(Inner.Written, Quoted);
			}

			// What stands in quotes is meant to the letter; only a file named behind it adds something.
			const size_t Place = Rest.Written.find(QuotePlace);
			const bool bIsQuoteMeant = Place != std::string::npos && (In == std::string::npos || Place < In);
			Request.Target = bIsQuoteMeant ? Quoted : PutBackQuoted(Rest.Written, Quoted);
			Request.TargetInScope = bIsQuoteMeant ? Quoted : Request.TargetInScope;
		}

		/**
		 * A sentence that asks for advice or an explanation at large: several words, none of them a name of code. "what is
		 * FThing", "how does the cache work" and "explain notes.md" are none.
		 */
		bool IsFreeQuestion(const FRequestText& Words, const std::optional<FPhraseRow>& Phrase, std::string_view Target)
		{
			constexpr std::string_view Persons[] = { "i", "we", "you", "one", "to", "someone" };
			constexpr size_t MaxNameWords = 3;
			if (Words.Written.find(QuotePlace) != std::string::npos)
			{
				return false;
			}
			const std::vector<std::string> All = SplitWords(Words.Lower);
			if (!Phrase)
			{
				return All.size() > 2 && IsOneOf(All.front(), QuestionWords);
			}
			const std::vector<std::string> Left = SplitWords(Target);
			return Phrase->Kind == ERequestKind::Explain && !Left.empty() &&
				((Utf8Text::StartsWith(Phrase->Phrase, "how") && Left.size() > 1 && IsOneOf(Utf8Text::ToLower(Left.front()), Persons)) ||
					Left.size() > MaxNameWords);
		}

		FAgentRequest MakeFreeQuestion(const FRequestText& Words)
		{
			FAgentRequest Request;
			Request.Kind = ERequestKind::FreeQuestion;
			Request.Target = Words.Written;
			Request.MainWords = FindMainWords(Words.Written);
			return Request;
		}

		bool NeedsTarget(ERequestKind Kind)
		{
			using enum ERequestKind;
			return Kind == FindText || Kind == FindSymbol || Kind == Outline || Kind == WhichFiles || Kind == Explain || Kind == Show;
		}

		/** What a target such as "it" or "the project" makes of a request. */
		void SettleTarget(FAgentRequest& Request, bool bIsQuoted)
		{
			if (!bIsQuoted && Utf8Text::EndsWith(Request.Target, "()"))
			{
				Request.Target.resize(Request.Target.size() - 2);
			}
			if (!bIsQuoted && NeedsTarget(Request.Kind) && IsOneOf(Utf8Text::ToLower(Request.Target), PointingWords))
			{
				Request.Target.clear();
				return;
			}
			const bool bIsWholeProject = !bIsQuoted && IsOneOf(Utf8Text::ToLower(Request.Target), WholeProjectNames);
			if (bIsWholeProject && (Request.Kind == ERequestKind::Explain || Request.Kind == ERequestKind::Summarise))
			{
				Request.Kind = ERequestKind::Summarise;
				Request.Target.clear();
			}
			else if (Request.Kind == ERequestKind::Summarise)
			{
				Request.Kind = ERequestKind::Explain;
			}
			else if (bIsWholeProject &&
				(Request.Kind == ERequestKind::List || Request.Kind == ERequestKind::Show || Request.Kind == ERequestKind::Count))
			{
				Request.Target.clear();
				Request.Kind = Request.Kind == ERequestKind::Show ? ERequestKind::List : Request.Kind;
			}
		}

		/** A request that opens with no phrase: a file first, a name alone, a question, or nothing that is known. */
		FAgentRequest ReadWithoutPhrase(std::string_view Text, const FRequestText& Words, const std::string& Quoted)
		{
			FAgentRequest Request;
			if (BeginsWithWords(Words.Lower, "in"))
			{
				// "In notes.md replace …"
				Request.Change = ParseChangeRequest(Text);
				if (Request.Change.Kind != EChangeRequest::Unclear)
				{
					Request.Kind = ERequestKind::ChangeFiles;
					return Request;
				}
			}
			if (IsFreeQuestion(Words, std::nullopt, std::string_view()))
			{
				return MakeFreeQuestion(Words);
			}
			Request.Target = PutBackQuoted(Words.Written, Quoted);
			if (Words.Written == std::string(1, QuotePlace) || LooksLikeSymbol(Words.Written))
			{
				ReadTarget(Words, Quoted, Request);
				Request.Kind = ERequestKind::Explain;
			}
			return Request;
		}
	}

	FAgentRequest ParseAgentRequest(std::string_view Text)
	{
		// 1. Quotes out, blanks folded, courtesies off both ends.
		FAgentRequest Request;
		std::string Folded = FoldBlanks(Utf8Text::Sanitise(Text.substr(0, MaxRequestBytes)));
		const std::string Quoted = TakeQuoted(Folded);
		FRequestText Words(Folded);
		Words.TrimEnds();
		if (Words.Lower.empty())
		{
			return Request;
		}
		const FRequestText Whole = Words;
		CutOpeners(Words, OpeningCourtesies, /*bKeepRequests*/ true);
		CutClosers(Words, ClosingCourtesies);

		// 2. What it opens with. "hi" and "thanks" are courtesies too, and may be all there is.
		std::optional<FPhraseRow> Phrase = FindPhrase(Words.Lower);
		const std::optional<FPhraseRow> WholePhrase = Phrase ? std::nullopt : FindPhrase(Whole.Lower);
		if (WholePhrase && (WholePhrase->Kind == ERequestKind::Greeting || WholePhrase->Kind == ERequestKind::Thanks))
		{
			Phrase = WholePhrase;
		}
		if (!Phrase)
		{
			return ReadWithoutPhrase(Text, Words, Quoted);
		}
		Request.Kind = Phrase->Kind;
		if (Request.Kind == ERequestKind::Help || Request.Kind == ERequestKind::Greeting || Request.Kind == ERequestKind::Thanks ||
			Request.Kind == ERequestKind::ChangeFiles)
		{
			Request.Change = Request.Kind == ERequestKind::ChangeFiles ? ParseChangeRequest(Text) : FChangeRequest();
			return Request;
		}

		// 3. What it is about.
		FRequestText Rest = Words;
		Rest.Keep(Phrase->Phrase.size(), std::string::npos);
		Rest.TrimEnds();
		ReadTarget(Rest, Quoted, Request);
		if (IsFreeQuestion(Words, Phrase, Request.Target))
		{
			return MakeFreeQuestion(Words);
		}
		if (Request.Kind == ERequestKind::FindText && AsksForDefinition(Phrase->Phrase, Rest.Lower))
		{
			// Several words are no symbol.
			const bool bIsOneWord = (Request.TargetInScope.empty() ? Request.Target : Request.TargetInScope).find(' ') == std::string::npos;
			Request.Kind = bIsOneWord ? ERequestKind::FindSymbol : Request.Kind;
		}
		SettleTarget(Request, Rest.Written.find(QuotePlace) != std::string::npos);
		if (Request.Kind == ERequestKind::List && Request.Target.empty() && IsOneOf(Phrase->Phrase, ContentQuestions))
		{
			// Who asks this of a project, and not of a folder, wants to know what it is.
			Request.Kind = ERequestKind::Summarise;
		}
		return Request;
	}
}
