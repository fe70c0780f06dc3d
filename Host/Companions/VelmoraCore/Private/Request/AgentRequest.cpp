#include "Request/AgentRequest.h"

#include <algorithm>

#include "Text/Utf8Text.h"

namespace Velmora
{
	namespace
	{
		/** Nobody asks a question in more bytes than this; what follows is material. */
		constexpr size_t MaxRequestBytes = 4000;

		struct FQuotePair
		{
			std::string_view Open;
			std::string_view Close;
		};
		// clang-format off
		constexpr FQuotePair QuotePairs[] = {
			{ "«", "»" }, { "“", "”" }, { "„", "“" }, { "‘", "’" }, { "`", "`" }, { "\"", "\"" }, { "'", "'" },
		};
		// clang-format on

		struct FPhraseRow
		{
			std::string_view Phrase; // Lower case, words apart by one blank.
			ERequestKind Kind;
		};

		/** How a request may begin. The longest phrase that fits decides, so the order is free. */
		constexpr FPhraseRow RequestPhrases[] = {
			{ "help", ERequestKind::Help },
			{ "what can you do", ERequestKind::Help },
			{ "what can i ask", ERequestKind::Help },
			{ "what do you do", ERequestKind::Help },
			{ "who are you", ERequestKind::Help },
			{ "hello", ERequestKind::Greeting },
			{ "hi", ERequestKind::Greeting },
			{ "hey", ERequestKind::Greeting },
			{ "good morning", ERequestKind::Greeting },
			{ "good evening", ERequestKind::Greeting },
			{ "thanks", ERequestKind::Thanks },
			{ "thank you", ERequestKind::Thanks },

			{ "find", ERequestKind::FindText },
			{ "find all", ERequestKind::FindText },
			{ "search", ERequestKind::FindText },
			{ "search for", ERequestKind::FindText },
			{ "grep", ERequestKind::FindText },
			{ "grep for", ERequestKind::FindText },
			{ "look for", ERequestKind::FindText },
			{ "look up", ERequestKind::FindText },
			{ "locate", ERequestKind::FindText },
			{ "where", ERequestKind::FindText },
			{ "where is", ERequestKind::FindText },
			{ "where are", ERequestKind::FindText },
			{ "where's", ERequestKind::FindText },
			{ "wheres", ERequestKind::FindText },
			{ "where do we", ERequestKind::FindText },
			{ "where do you", ERequestKind::FindText },
			{ "where does", ERequestKind::FindText },
			{ "where can i find", ERequestKind::FindText },
			{ "find out where", ERequestKind::FindText },
			{ "who calls", ERequestKind::FindText },
			{ "who uses", ERequestKind::FindText },
			{ "what calls", ERequestKind::FindText },
			{ "what uses", ERequestKind::FindText },

			{ "find symbol", ERequestKind::FindSymbol },
			{ "find the symbol", ERequestKind::FindSymbol },
			{ "look up symbol", ERequestKind::FindSymbol },
			{ "look up the symbol", ERequestKind::FindSymbol },
			{ "definition of", ERequestKind::FindSymbol },
			{ "find definition of", ERequestKind::FindSymbol },
			{ "find the definition of", ERequestKind::FindSymbol },
			{ "show definition of", ERequestKind::FindSymbol },
			{ "show the definition of", ERequestKind::FindSymbol },
			{ "show me the definition of", ERequestKind::FindSymbol },
			{ "where is the definition of", ERequestKind::FindSymbol },
			{ "go to definition of", ERequestKind::FindSymbol },
			{ "go to the definition of", ERequestKind::FindSymbol },
			{ "which file defines", ERequestKind::FindSymbol },

			{ "outline", ERequestKind::Outline },
			{ "outline of", ERequestKind::Outline },
			{ "show outline of", ERequestKind::Outline },
			{ "show the outline of", ERequestKind::Outline },
			{ "show me the outline of", ERequestKind::Outline },
			{ "show me an outline of", ERequestKind::Outline },
			{ "give me the outline of", ERequestKind::Outline },
			{ "give me an outline of", ERequestKind::Outline },
			{ "list symbols in", ERequestKind::Outline },
			{ "list the symbols in", ERequestKind::Outline },
			{ "symbols in", ERequestKind::Outline },
			{ "which symbols are in", ERequestKind::Outline },

			{ "which files mention", ERequestKind::WhichFiles },
			{ "which files contain", ERequestKind::WhichFiles },
			{ "which files use", ERequestKind::WhichFiles },
			{ "which files include", ERequestKind::WhichFiles },
			{ "which files reference", ERequestKind::WhichFiles },
			{ "which files have", ERequestKind::WhichFiles },
			{ "which file mentions", ERequestKind::WhichFiles },
			{ "which file contains", ERequestKind::WhichFiles },
			{ "what files mention", ERequestKind::WhichFiles },
			{ "what files contain", ERequestKind::WhichFiles },
			{ "what files use", ERequestKind::WhichFiles },
			{ "files that mention", ERequestKind::WhichFiles },
			{ "how many files mention", ERequestKind::WhichFiles },
			{ "how many files contain", ERequestKind::WhichFiles },
			{ "how many files use", ERequestKind::WhichFiles },
			{ "how many files include", ERequestKind::WhichFiles },
			{ "list files that mention", ERequestKind::WhichFiles },
			{ "list files containing", ERequestKind::WhichFiles },
			{ "list the files that mention", ERequestKind::WhichFiles },
			{ "list all files that mention", ERequestKind::WhichFiles },
			{ "show files that mention", ERequestKind::WhichFiles },
			{ "show me the files that mention", ERequestKind::WhichFiles },
			{ "show me all files that mention", ERequestKind::WhichFiles },
			{ "find files that mention", ERequestKind::WhichFiles },
			{ "find files containing", ERequestKind::WhichFiles },

			{ "what does", ERequestKind::Explain },
			{ "what is", ERequestKind::Explain },
			{ "what's", ERequestKind::Explain },
			{ "whats", ERequestKind::Explain },
			{ "what are", ERequestKind::Explain },
			{ "explain", ERequestKind::Explain },
			{ "describe", ERequestKind::Explain },
			{ "tell me about", ERequestKind::Explain },
			{ "how does", ERequestKind::Explain },
			{ "how do", ERequestKind::Explain },
			{ "explain how", ERequestKind::Explain },
			{ "explain what", ERequestKind::Explain },

			{ "show", ERequestKind::Show },
			{ "show me", ERequestKind::Show },
			{ "open", ERequestKind::Show },
			{ "read", ERequestKind::Show },
			{ "cat", ERequestKind::Show },
			{ "print", ERequestKind::Show },
			{ "display", ERequestKind::Show },
			{ "view", ERequestKind::Show },

			{ "list", ERequestKind::List },
			{ "ls", ERequestKind::List },
			{ "dir", ERequestKind::List },
			{ "what is in", ERequestKind::List },
			{ "what's in", ERequestKind::List },
			{ "whats in", ERequestKind::List },
			{ "what is inside", ERequestKind::List },
			{ "what's inside", ERequestKind::List },
			{ "what files are in", ERequestKind::List },
			{ "which files are in", ERequestKind::List },
			{ "what files are there in", ERequestKind::List },
			{ "what does the folder", ERequestKind::List },
			{ "show files in", ERequestKind::List },
			{ "show the files in", ERequestKind::List },
			{ "show me the files in", ERequestKind::List },
			{ "show me what is in", ERequestKind::List },

			{ "summarise", ERequestKind::Summarise },
			{ "summarize", ERequestKind::Summarise },
			{ "sum up", ERequestKind::Summarise },
			{ "summary of", ERequestKind::Summarise },
			{ "give me a summary of", ERequestKind::Summarise },
			{ "give me an overview of", ERequestKind::Summarise },
			{ "give me an overview", ERequestKind::Summarise },
			{ "overview", ERequestKind::Summarise },
			{ "overview of", ERequestKind::Summarise },

			{ "how many", ERequestKind::Count },
			{ "how big is", ERequestKind::Count },
			{ "how large is", ERequestKind::Count },
			{ "how long is", ERequestKind::Count },
			{ "count", ERequestKind::Count },

			{ "create", ERequestKind::ChangeFiles },
			{ "add", ERequestKind::ChangeFiles },
			{ "write", ERequestKind::ChangeFiles },
			{ "delete", ERequestKind::ChangeFiles },
			{ "remove", ERequestKind::ChangeFiles },
			{ "rename", ERequestKind::ChangeFiles },
			{ "replace", ERequestKind::ChangeFiles },
			{ "edit", ERequestKind::ChangeFiles },
			{ "change", ERequestKind::ChangeFiles },
			{ "fix", ERequestKind::ChangeFiles },
			{ "refactor", ERequestKind::ChangeFiles },
			{ "implement", ERequestKind::ChangeFiles },
			{ "make", ERequestKind::ChangeFiles },
			{ "generate", ERequestKind::ChangeFiles },
			{ "append", ERequestKind::ChangeFiles },
			{ "overwrite", ERequestKind::ChangeFiles },
			{ "save", ERequestKind::ChangeFiles },
			{ "store", ERequestKind::ChangeFiles },
			{ "put", ERequestKind::ChangeFiles },
			{ "substitute", ERequestKind::ChangeFiles },
			{ "swap", ERequestKind::ChangeFiles },
			{ "erase", ERequestKind::ChangeFiles },
			{ "get rid of", ERequestKind::ChangeFiles },
			{ "move", ERequestKind::ChangeFiles },
		};

		/** Courtesies in front of a request. */
		// clang-format off
		constexpr std::string_view OpeningCourtesies[] = {
			"please", "pls", "kindly", "hello", "hi", "hey", "ok", "okay", "so", "now", "then", "and", "well", "velmora", "dear",
			"can you", "could you", "would you", "will you", "can i", "could i", "may i", "can we", "i want to", "i want you to",
			"i would like to", "i would like you to", "i'd like to", "i'd like you to", "i need to", "i need you to", "let's", "let us",
			"let me",
			"do you know", "can you tell me", "could you tell me", "tell me", "help me to", "help me", "try to", "just", "quickly",
			"go and",
		};

		/** What may close a request without adding to it. */
		constexpr std::string_view ClosingCourtesies[] = {
			"please", "pls", "thanks", "thank you", "for me", "now", "if you can", "would you", "right now", "again",
		};

		/** Words in front of a target that only say what sort of thing it is. */
		constexpr std::string_view TargetOpeners[] = {
			"the", "a", "an", "all", "any", "every", "each", "of", "me", "my", "our", "this", "that", "for", "in", "on", "to", "inside",
			"file", "files", "folder", "directory", "function", "functions", "class", "struct", "method", "symbol", "enum", "macro",
			"variable", "type", "namespace",
			"text", "word", "string", "phrase", "term", "name", "named", "called", "content of", "contents of", "source of", "code of",
			"source code of", "body of",
			"occurrence of", "occurrences of", "use of", "uses of", "usage of", "usages of", "reference to", "references to",
			"mention of", "mentions of",
			"definition of", "declaration of", "implementation of", "places where", "where", "lines with", "lines in", "lines of",
			"calls to", "calls of",
		};

		/** Words behind a target that only say what is done with it. */
		constexpr std::string_view TargetClosers[] = {
			"do", "does", "work", "works", "mean", "means", "about", "for", "handled", "defined", "declared", "implemented", "used",
			"called", "located", "found", "mentioned",
			"set", "initialised", "initialized", "created", "checked", "parsed", "read", "written", "stored", "is", "are", "being",
			"function", "class", "struct", "method", "file", "folder", "directory", "symbol", "anywhere", "everywhere", "here", "there",
			"at",
			"in the project", "in this project", "in my project", "in our project", "in the code", "in this code", "in the codebase",
			"in the sources", "in the source code", "in the repository", "of the project", "of this project",
		};

		/** Names for everything there is. */
		constexpr std::string_view WholeProjectNames[] = {
			"", ".", "./", "/", "project", "the project", "this project", "my project", "our project", "the code", "code", "codebase",
			"the codebase", "this codebase",
			"here", "it", "there", "repository", "the repository", "everything", "files", "all files", "root", "project folder",
			"project root",
			"are there", "files are there", "what", "all",
		};
		// clang-format on

		/** Words that point at something said before, or at an attached file. */
		constexpr std::string_view PointingWords[] = { "it", "this", "that", "them", "they", "these", "those", "this file", "file", "files",
			"attached file", "attached files", "attachment" };

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
				size_t First = Lower.find_first_not_of(Openers);
				if (First == std::string::npos)
				{
					First = Lower.size();
				}
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
			return Utf8Text::StartsWith(Text, Words) &&
				(Text.size() == Words.size() ||
					(!Utf8Text::IsWordByte(Text[Words.size()]) && Text[Words.size()] != '.' && Text[Words.size()] != '/' &&
						Text[Words.size()] != ':'));
		}

		bool EndsWithWords(std::string_view Text, std::string_view Words)
		{
			return Utf8Text::EndsWith(Text, Words) && Text.size() > Words.size() && Text[Text.size() - Words.size() - 1] == ' ';
		}

		const FPhraseRow* FindPhrase(std::string_view Lower)
		{
			const FPhraseRow* Best = nullptr;
			for (const FPhraseRow& Row : RequestPhrases)
			{
				if (BeginsWithWords(Lower, Row.Phrase) && (!Best || Row.Phrase.size() > Best->Phrase.size()))
				{
					Best = &Row;
				}
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
				const FPhraseRow* Phrase = bKeepRequests ? FindPhrase(Text.Lower) : nullptr;
				if (Phrase && Phrase->Phrase.size() > Longest)
				{
					return;
				}
				FRequestText Rest = Text;
				Rest.Keep(Longest, std::string::npos);
				Rest.TrimEnds();
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

		bool IsWholeProject(std::string_view Target)
		{
			const std::string Lower = Utf8Text::ToLower(Target);
			return std::find(std::begin(WholeProjectNames), std::end(WholeProjectNames), Lower) != std::end(WholeProjectNames);
		}

		/**
		 * Takes the first quoted text out and leaves one byte in its place, a control character that no sanitised
		 * text holds. An apostrophe inside a word ("what's") opens nothing.
		 */
		constexpr char QuotePlace = '\x01';

		std::string TakeQuoted(std::string& Text)
		{
			size_t BestStart = std::string::npos;
			size_t BestEnd = 0;
			std::string Best;
			for (const FQuotePair& Pair : QuotePairs)
			{
				for (size_t Open = Text.find(Pair.Open); Open != std::string::npos; Open = Text.find(Pair.Open, Open + 1))
				{
					const bool bIsInWord = Open > 0 && Utf8Text::IsWordByte(Text[Open - 1]) && Pair.Open.size() == 1;
					const size_t From = Open + Pair.Open.size();
					size_t Close = Text.find(Pair.Close, From);
					while (
						Pair.Close == "'" && Close != std::string::npos && Close + 1 < Text.size() && Utf8Text::IsWordByte(Text[Close + 1]))
					{
						Close = Text.find(Pair.Close, Close + 1);
					}
					if (bIsInWord || Close == std::string::npos || Close == From)
					{
						continue;
					}
					if (Open < BestStart)
					{
						BestStart = Open;
						BestEnd = Close + Pair.Close.size();
						Best = Text.substr(From, Close - From);
					}
					break;
				}
			}
			if (BestStart != std::string::npos)
			{
				Text.replace(BestStart, BestEnd - BestStart, std::string(1, QuotePlace));
			}
			return std::string(Utf8Text::Trim(Best));
		}

		/** Line feeds and tabs become blanks, runs of blanks one. */
		std::string FoldBlanks(std::string_view Text)
		{
			std::string Out;
			for (const char Byte : Text)
			{
				const bool bIsBlank = Byte == ' ' || Byte == '\t' || Byte == '\n' || Byte == '\r';
				if (!bIsBlank)
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
				Number = std::min(Number * 10 + (Text[Index] - '0'), 100000000);
			}
			return Number;
		}

		/** "lines 10-20 of X", "line 7 in X", "first 20 lines of X", "last 5 lines of X": reads the range, keeps X. */
		void TakeLeadingLineRange(FRequestText& Text, FAgentRequest& Request)
		{
			const std::string_view Lower = Text.Lower;
			const bool bIsFirst = BeginsWithWords(Lower, "first");
			const bool bIsLast = BeginsWithWords(Lower, "last");
			size_t Index = 0;
			int First = 0;
			int Last = 0;
			if (bIsFirst || bIsLast)
			{
				Index = bIsFirst ? 6 : 5;
				Last = Index <= Lower.size() ? ReadNumber(Lower, Index) : 0;
				const std::string_view Rest = Last > 0 ? Lower.substr(Index) : std::string_view();
				if (!Utf8Text::StartsWith(Rest, " line"))
				{
					return;
				}
				Index += Utf8Text::StartsWith(Rest, " lines") ? 6 : 5;
				First = 1;
			}
			else if (BeginsWithWords(Lower, "lines") || BeginsWithWords(Lower, "line"))
			{
				Index = BeginsWithWords(Lower, "lines") ? 6 : 5;
				First = Index <= Lower.size() ? ReadNumber(Lower, Index) : 0;
				if (First == 0)
				{
					return;
				}
				Last = First;
				for (const std::string_view Separator :
					{ std::string_view("-"), std::string_view(" - "), std::string_view("–"), std::string_view(" to "),
						std::string_view(".."), std::string_view(" through "), std::string_view(" until "), std::string_view(" and ") })
				{
					size_t After = Index + Separator.size();
					if (Utf8Text::StartsWith(Lower.substr(Index), Separator) && After < Lower.size() && Lower[After] >= '0' &&
						Lower[After] <= '9')
					{
						Last = ReadNumber(Lower, After);
						Index = After;
						break;
					}
				}
			}
			else
			{
				return;
			}
			Request.FirstLine = bIsLast ? 0 : std::min(First, Last);
			Request.LastLine = bIsLast ? 0 : std::max(First, Last);
			Request.TailLines = bIsLast ? Last : 0;
			Text.Keep(Index, std::string::npos);
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
			if (Text.empty() || Text.find(' ') != std::string_view::npos)
			{
				return false;
			}
			for (const char Byte : Text)
			{
				if (Byte == '_' || Byte == '/' || Byte == '.' || Byte == ':' || (Byte >= '0' && Byte <= '9') ||
					(Byte >= 'A' && Byte <= 'Z'))
				{
					return true;
				}
			}
			return false;
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
			CutOpeners(Rest, TargetOpeners);
			TakeLeadingLineRange(Rest, Request);
			CutOpeners(Rest, TargetOpeners);
			CutClosers(Rest, TargetClosers);
			if (Request.FirstLine == 0 && Request.TailLines == 0)
			{
				TakeTrailingLineRange(Rest, Request);
			}

			size_t In = std::string::npos;
			size_t InLength = 0;
			for (const std::string_view Word :
				{ std::string_view(" in "), std::string_view(" inside "), std::string_view(" under "), std::string_view(" within ") })
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
			if (Place != std::string::npos)
			{
				const bool bIsQuoteInScope = In != std::string::npos && Place > In;
				Request.Target = bIsQuoteInScope ? PutBackQuoted(Rest.Written, Quoted) : Quoted;
				if (!bIsQuoteInScope)
				{
					Request.TargetInScope = Quoted;
				}
				return;
			}
			Request.Target = Rest.Written;
		}
	}

	FAgentRequest ParseAgentRequest(std::string_view Text)
	{
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
		const FPhraseRow* Phrase = FindPhrase(Words.Lower);
		if (!Phrase)
		{
			// "hi" and "thanks" are courtesies too, and may be all there is.
			Phrase = FindPhrase(Whole.Lower);
			if (Phrase && Phrase->Kind != ERequestKind::Greeting && Phrase->Kind != ERequestKind::Thanks)
			{
				Phrase = nullptr;
			}
		}
		if (!Phrase && BeginsWithWords(Words.Lower, "in"))
		{
			// "In notes.md replace …"
			Request.Change = ParseChangeRequest(Text);
			if (Request.Change.Kind != EChangeRequest::Unclear)
			{
				Request.Kind = ERequestKind::ChangeFiles;
				return Request;
			}
		}
		if (!Phrase)
		{
			Request.Target = PutBackQuoted(Words.Written, Quoted);
			const bool bIsQuotedAlone = Words.Written == std::string(1, QuotePlace);
			if (bIsQuotedAlone || LooksLikeSymbol(Words.Written))
			{
				ReadTarget(Words, Quoted, Request);
				Request.Kind = ERequestKind::Explain;
			}
			return Request;
		}

		Request.Kind = Phrase->Kind;
		if (Request.Kind == ERequestKind::Help || Request.Kind == ERequestKind::Greeting || Request.Kind == ERequestKind::Thanks ||
			Request.Kind == ERequestKind::ChangeFiles)
		{
			Request.Change = Request.Kind == ERequestKind::ChangeFiles ? ParseChangeRequest(Text) : FChangeRequest();
			return Request;
		}
		FRequestText Rest = Words;
		Rest.Keep(Phrase->Phrase.size(), std::string::npos);
		Rest.TrimEnds();
		ReadTarget(Rest, Quoted, Request);
		if (Request.Kind == ERequestKind::FindText && AsksForDefinition(Phrase->Phrase, Rest.Lower))
		{
			// Several words are no symbol.
			const bool bIsOneWord = (Request.TargetInScope.empty() ? Request.Target : Request.TargetInScope).find(' ') == std::string::npos;
			Request.Kind = bIsOneWord ? ERequestKind::FindSymbol : Request.Kind;
		}

		const bool bIsQuoted = Rest.Written.find(QuotePlace) != std::string::npos;
		if (!bIsQuoted && Utf8Text::EndsWith(Request.Target, "()"))
		{
			Request.Target.resize(Request.Target.size() - 2);
		}
		const bool bPoints =
			std::find(std::begin(PointingWords), std::end(PointingWords), Utf8Text::ToLower(Request.Target)) != std::end(PointingWords);
		if (!bIsQuoted && bPoints &&
			(Request.Kind == ERequestKind::FindText || Request.Kind == ERequestKind::FindSymbol || Request.Kind == ERequestKind::Outline ||
				Request.Kind == ERequestKind::WhichFiles || Request.Kind == ERequestKind::Explain || Request.Kind == ERequestKind::Show))
		{
			Request.Target.clear();
			return Request;
		}

		const bool bIsWholeProject = !bIsQuoted && IsWholeProject(Request.Target);
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
		return Request;
	}
}
