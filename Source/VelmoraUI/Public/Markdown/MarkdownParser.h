#pragma once

#include "CoreMinimal.h"
#include "Markdown/MarkdownToken.h"

namespace Velmora::Markdown
{

	/**
	 * Parses the agent's dialect of Markdown into a flat list of tokens, in one pass and in time that grows with the length
	 * of the text, whatever the text. No input is an error: bad or unfinished syntax reads as text, or loses the one
	 * delimiter character that no rule accepts. Holds no state between calls; any thread.
	 *
	 *     Parse(TEXT("# Plan\n- [x] **done**"))
	 *     // Header 'Plan' level 1, TaskListItem '**done**' (checked). The renderer parses item texts once more.
	 */
	class VELMORAUI_API FMarkdownParser
	{
	public:
		/** Characters of a fence's language tag and of one Text token. A longer stretch of text becomes several tokens. */
		static constexpr int32 MAX_LINE_LENGTH = 10000;
		/** Bounds nothing: a flat parser has no recursion. Kept for callers that render nested text. */
		static constexpr int32 MAX_NESTING_DEPTH = 20;
		/** Steps of one search for a closer. */
		static constexpr int32 MAX_LOOP_ITERATIONS = 100000;
		/** Rows of one table. The rows after them are tried as a new table. */
		static constexpr int32 MAX_TABLE_ROWS = 1000;
		/** Characters that one search for a closer walks. A closer this far away, or farther, does not exist. */
		static constexpr int32 MAX_SEARCH_LENGTH = 50000;

		/** Tokens in document order. Empty for a text of whitespace alone. */
		static TArray<FMarkdownToken> Parse(const FString& Input);

		/** What a rule looks for after its opener. */
		enum class ECloser : uint8
		{
			TripleStar,
			DoubleStar,
			DoubleUnderscore,
			Star,
			Underscore,
			DoubleTilde,
			Backtick,
			SquareBracket,
			RoundBracket,
			SummaryTag,
			DetailsTag,
			Count
		};

		/** The whole state of one parse. Holds a pointer into the parsed text, which must outlive it. */
		struct VELMORAUI_API FParseContext
		{
			explicit FParseContext(const FString& Input);

			const TCHAR* Text;
			int32 Length;
			int32 Position = 0;
			TArray<FMarkdownToken> Tokens;
			/** Characters passed by the latest search for a closer. */
			int32 SearchCounter = 0;

			bool IsAtEnd() const { return Position >= Length; }
			bool IsAtLineStart() const { return Position == 0 || Text[Position - 1] == TEXT('\n'); }

			/** The character at an index as the rules see it: control characters read as blanks. 0 outside of the text. */
			TCHAR PeekAt(int32 Index) const { return Index >= 0 && Index < Length ? FilterControl(Text[Index]) : TEXT('\0'); }
			TCHAR Peek() const { return PeekAt(Position); }

			/** Gives what Peek gives and moves on by one, unless at the end. */
			TCHAR Advance();

			/** True if the N characters of the literal stand at the read position, letter case included. */
			bool MatchAt(const TCHAR* Literal, int32 N) const
			{
				if (N > Length - Position)
				{
					return false;
				}
				int32 Matched = 0;
				while (Matched < N && Text[Position + Matched] == Literal[Matched])
				{
					++Matched;
				}
				return Matched == N;
			}

			/** Skips whitespace of every kind: unlike the blanks and tabs inside of a line, it crosses line ends. */
			void SkipWhitespace();

			/** Skips blanks and tabs and returns how many there were. */
			int32 SkipBlanks();
			void SkipBlanksAndLineFeeds();

			/** Moves after the next line feed, or to the end. Returns the index of the line feed or of the end. */
			int32 SkipLine();

			/**
			 * Index of the closer that a construct whose inner text begins at From ends with, INDEX_NONE if there is none
			 * within MAX_SEARCH_LENGTH or, but for the two tags, on the line.
			 */
			int32 FindCloser(ECloser Closer, int32 From);

			/** Where a search for the closer stops when nothing bounds its length: at a closer, a line feed or the end. */
			int32 FindStop(ECloser Closer, int32 From);

			/** Where the body of a collapsible section begins, from the index after its summary's closer. */
			int32 FindSectionBody(int32 SummaryTagEnd);

			static TCHAR FilterControl(TCHAR Char)
			{
				const bool bControl = Char < 32 && Char != TEXT('\n') && Char != TEXT('\r') && Char != TEXT('\t');
				return bControl ? TEXT(' ') : Char;
			}

		private:
			/**
			 * The outcome of a search: from every index in [From, Stop] it stops at Stop. Whether a closer is valid depends
			 * on its neighbours only, so one walk serves all openers before the closer, and any number of openers
			 * without one costs a single walk.
			 */
			struct FSearchMemo
			{
				int32 From = 0;
				int32 Stop = INDEX_NONE;
			};

			FSearchMemo Memos[static_cast<int32>(ECloser::Count)];
			FSearchMemo SectionBodyMemo;
		};

	private:
		static void ParseBlockElement(FParseContext& Context);
		static void ParseInlineElement(FParseContext& Context);
		static void AddTextToken(FParseContext& Context, int32 Start, int32 End);
		static int32 CountLeadingChars(const FParseContext& Context, TCHAR Char);
		static FString ExtractText(const FParseContext& Context, int32 Start, int32 End);

		// Each rule moves the read position after its construct and fills the token, or gives up with the position where
		// it was.
		static bool TryParseCodeBlock(FParseContext& Context, FMarkdownToken& OutToken);
		static bool TryParseHeader(FParseContext& Context, FMarkdownToken& OutToken);
		static bool TryParseHorizontalRule(FParseContext& Context, FMarkdownToken& OutToken);
		static bool TryParseListItem(FParseContext& Context, FMarkdownToken& OutToken);
		static bool TryParseBlockquote(FParseContext& Context, FMarkdownToken& OutToken);
		static bool TryParseTable(FParseContext& Context, FMarkdownToken& OutToken);
		static bool TryParseCollapsibleSection(FParseContext& Context, FMarkdownToken& OutToken);
		static bool TryParseFootnoteDefinition(FParseContext& Context, FMarkdownToken& OutToken);
		static bool TryParseBoldItalic(FParseContext& Context, FMarkdownToken& OutToken);
		static bool TryParseBold(FParseContext& Context, FMarkdownToken& OutToken);
		static bool TryParseItalic(FParseContext& Context, FMarkdownToken& OutToken);
		static bool TryParseStrikethrough(FParseContext& Context, FMarkdownToken& OutToken);
		static bool TryParseInlineCode(FParseContext& Context, FMarkdownToken& OutToken);
		static bool TryParseLink(FParseContext& Context, FMarkdownToken& OutToken);
		static bool TryParseFootnoteReference(FParseContext& Context, FMarkdownToken& OutToken);
		using FRule = bool (*)(FParseContext&, FMarkdownToken&);
		/** Takes in what the rule made, if it accepts. */
		static bool TryRule(FRule Rule, FParseContext& Context);
		/** The block rules that a line can belong to: by its first character that is no blank, and whether blanks stand before it. */
		static bool TryBlockRulesFor(TCHAR First, bool bIndented, FParseContext& Context);
		/** The inline rules that a construct beginning with the character can belong to. */
		static bool TryRulesFor(TCHAR First, FParseContext& Context, FMarkdownToken& OutToken);
	};

} // namespace Velmora::Markdown
