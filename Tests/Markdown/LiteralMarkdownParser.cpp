#include "Markdown/LiteralMarkdownParser.h"

#include "Misc/Char.h"

using Velmora::Markdown::ETokenType;
using Velmora::Markdown::FMarkdownToken;

namespace
{

	constexpr int32 LongestLine = 10000;
	constexpr int32 MostTableRows = 1000;
	constexpr int32 LongestSearch = 50000;

	/** One parse, a character at a time and without any memory. Every Try… gives up with the read position where it began. */
	class FLiteralParse
	{
	public:
		explicit FLiteralParse(const FString& Input)
			: Text(Input)
			, Length(Input.Len())
		{
		}

		TArray<FMarkdownToken> Run()
		{
			while (!IsAtEnd() && !Text.TrimStartAndEnd().IsEmpty())
			{
				const int32 Before = Position;
				if (!IsAtLineStart() ||
					!(TryCodeBlock() || TryHeader() || TryHorizontalRule() || TryListItem() || TryBlockquote() || TryTable() ||
						TryCollapsibleSection() || TryFootnoteDefinition()))
				{
					Inline();
				}
				Position += Position == Before ? 1 : 0; // The character that no rule accepts is dropped.
			}
			return Tokens;
		}

	private:
		// Reading.
		bool IsAtEnd() const { return Position >= Length; }
		bool IsAtLineStart() const { return Position == 0 || Text[Position - 1] == TEXT('\n'); }
		TCHAR Peek(int32 Ahead = 0) const
		{
			const int32 Index = Position + Ahead;
			const TCHAR Char = Index >= 0 && Index < Length ? Text[Index] : TEXT('\0');
			const bool bControl = Char < 32 && Char != TEXT('\n') && Char != TEXT('\r') && Char != TEXT('\t');
			return bControl && Index >= 0 && Index < Length ? TEXT(' ') : Char;
		}
		bool IsNext(const TCHAR* Literal) const { return Text.Mid(Position, FString(Literal).Len()).Equals(Literal); }
		bool Take(const TCHAR* Literal)
		{
			const bool bTaken = IsNext(Literal);
			Position += bTaken ? FString(Literal).Len() : 0;
			return bTaken;
		}
		/** Passes characters that the test accepts, and says how many. */
		template <typename TestType>
		int32 Pass(const TestType& Test, int32 Most = MAX_int32)
		{
			const int32 Start = Position;
			while (!IsAtEnd() && Position - Start < Most && Test(Peek()))
			{
				++Position;
			}
			return Position - Start;
		}
		int32 PassAll(TCHAR Char)
		{
			return Pass([Char](TCHAR Next) { return Next == Char; });
		}
		FString Since(int32 Start) const { return Text.Mid(Start, Position - Start); }
		FString TakeLine()
		{
			const int32 Start = Position;
			Pass([](TCHAR Char) { return Char != TEXT('\n'); });
			const FString Line = Since(Start);
			Position += IsAtEnd() ? 0 : 1;
			return Line;
		}
		/** The text before the literal, which is taken, too; unset when it is too far away. */
		TOptional<FString> TakeUntil(const TCHAR* Literal)
		{
			const int32 Start = Position;
			const int32 SearchLength = FMath::Min(Length - Position, LongestSearch);
			for (; Position - Start < SearchLength; ++Position)
			{
				const FString Before = IsNext(Literal) ? Since(Start) : FString();
				if (Take(Literal))
				{
					return Before;
				}
			}
			return {};
		}

		static bool IsBlank(TCHAR Char) { return Char == TEXT(' ') || Char == TEXT('\t'); }
		static bool IsBlankOrLineFeed(TCHAR Char) { return IsBlank(Char) || Char == TEXT('\n'); }
		static bool IsSpace(TCHAR Char) { return FChar::IsWhitespace(Char); }
		static bool IsWord(TCHAR Char) { return FChar::IsAlnum(Char) || Char == TEXT('_'); }
		static bool InName(TCHAR Char) { return Char != TEXT(']') && Char != TEXT('\n'); }
		static bool IsOneOf(const TCHAR* Set, TCHAR Char)
		{
			int32 Unused = 0;
			return Char != 0 && FString(Set).FindChar(Char, Unused);
		}

		bool Fail(int32 Start)
		{
			Position = Start;
			return false;
		}
		bool Succeed(int32 Start, ETokenType Type, const FString& Content, const FString& Metadata = FString(), int32 Level = 0)
		{
			FMarkdownToken Token(Type, Content, Metadata, Level);
			Token.StartPos = Start;
			Token.EndPos = Position;
			Tokens.Add(Token);
			return true;
		}

		// Blocks.
		bool TryCodeBlock()
		{
			const int32 Start = Position;
			if (!Take(TEXT("```")))
			{
				return false;
			}
			const int32 TagStart = Position;
			Pass([](TCHAR Char) { return Char != TEXT('\n'); }, LongestLine);
			const FString Tag = Since(TagStart).TrimStartAndEnd();
			Position += IsAtEnd() ? 0 : 1;
			const int32 BodyStart = Position;
			if (const TOptional<FString> Body = TakeUntil(TEXT("```")))
			{
				TakeLine();
				return Succeed(Start, ETokenType::CodeBlock, *Body, Tag);
			}
			Position = Length;
			return Succeed(Start, ETokenType::CodeBlock, Since(BodyStart), Tag);
		}

		bool TryHeader()
		{
			const int32 Start = Position;
			const int32 Level = PassAll(TEXT('#'));
			if (Level < 1 || Level > 6 || (!IsAtEnd() && !IsBlankOrLineFeed(Peek())))
			{
				return Fail(Start);
			}
			Pass(IsSpace);
			const FString Title = TakeLine().TrimStartAndEnd();
			return Succeed(Start, ETokenType::Header, Title, FString(), Level);
		}

		bool TryHorizontalRule()
		{
			const int32 Start = Position;
			if (!IsOneOf(TEXT("-*_"), Peek()) || PassAll(Peek()) < 3)
			{
				return Fail(Start);
			}
			Pass(IsBlank);
			return TakeLine().IsEmpty() ? Succeed(Start, ETokenType::HorizontalRule, FString()) : Fail(Start);
		}

		bool TryListItem()
		{
			const int32 Start = Position;
			const int32 Level = Pass(IsBlank) / 2;
			const bool bBullet = IsOneOf(TEXT("-*+"), Peek());
			if (bBullet ? (++Position, false) : !Pass(FChar::IsDigit) || !Take(TEXT(".")))
			{
				return Fail(Start);
			}
			if (!IsBlank(Peek()))
			{
				return Fail(Start);
			}
			Pass(IsSpace);
			const bool bTask = bBullet && Peek() == TEXT('[') && Peek(2) == TEXT(']') && IsBlank(Peek(3));
			const bool bChecked = IsOneOf(TEXT("xX"), Peek(1));
			if (bTask)
			{
				Position += 3;
				Pass(IsSpace);
			}
			const FString Content = TakeLine().TrimStartAndEnd();
			return bTask ? Succeed(Start, ETokenType::TaskListItem, Content, bChecked ? TEXT("checked") : TEXT("unchecked"), Level)
						 : Succeed(Start, ETokenType::ListItem, Content, FString(), Level);
		}

		bool TryBlockquote()
		{
			const int32 Start = Position;
			if (!Take(TEXT(">")))
			{
				return false;
			}
			Pass(IsBlank, 1);
			const FString Content = TakeLine();
			return Succeed(Start, ETokenType::Blockquote, Content);
		}

		bool TryTable()
		{
			const int32 Start = Position;
			TArray<FString> Rows;
			for (int32 LineStart = Position; Rows.Num() < MostTableRows; LineStart = Position)
			{
				Pass(IsBlank);
				if (Peek() != TEXT('|'))
				{
					Position = LineStart;
					break;
				}
				Rows.Add(TakeLine().TrimStartAndEnd());
			}
			TArray<FString> Cells;
			TArray<FString> Alignments;
			(Rows.Num() < 2 ? FString() : Rows[1]).ParseIntoArray(Cells, TEXT("|"), true);
			for (const FString& Cell : Cells)
			{
				const FString Trimmed = Cell.TrimStartAndEnd();
				if (!Trimmed.IsEmpty())
				{
					if (!Trimmed.Contains(TEXT("-")))
					{
						return Fail(Start);
					}
					const bool bLeft = Trimmed.StartsWith(TEXT(":"));
					Alignments.Add(!Trimmed.EndsWith(TEXT(":")) ? TEXT("left") : bLeft ? TEXT("center") : TEXT("right"));
				}
			}
			return Alignments.IsEmpty()
				? Fail(Start)
				: Succeed(Start, ETokenType::Table, FString::Join(Rows, TEXT("\n")), FString::Join(Alignments, TEXT(",")));
		}

		bool TryCollapsibleSection()
		{
			const int32 Start = Position;
			Pass(IsBlank);
			if (!Take(TEXT("<details>")))
			{
				return Fail(Start);
			}
			Pass(IsBlankOrLineFeed);
			if (!Take(TEXT("<summary>")))
			{
				return Fail(Start);
			}
			const TOptional<FString> Summary = TakeUntil(TEXT("</summary>"));
			if (!Summary || Summary->IsEmpty())
			{
				return Fail(Start);
			}
			Pass(IsBlankOrLineFeed);
			const TOptional<FString> Body = TakeUntil(TEXT("</details>"));
			if (!Body || Body->IsEmpty())
			{
				return Fail(Start);
			}
			TakeLine();
			return Succeed(Start, ETokenType::CollapsibleSection, Body->TrimStartAndEnd(), Summary->TrimStartAndEnd());
		}

		/** "[^name" and what follows it; the name is left empty where there is none. */
		bool TakeFootnote(FString& OutName, const TCHAR* Behind)
		{
			const int32 Start = Position;
			if (!Take(TEXT("[^")))
			{
				return false;
			}
			Pass(InName);
			OutName = Since(Start + 2);
			return !OutName.IsEmpty() && Take(Behind) ? true : Fail(Start);
		}

		bool TryFootnoteDefinition()
		{
			const int32 Start = Position;
			FString Name;
			if (!TakeFootnote(Name, TEXT("]:")))
			{
				return false;
			}
			Pass(IsBlank);
			const FString Content = TakeLine().TrimStartAndEnd();
			return Succeed(Start, ETokenType::FootnoteDefinition, Content, Name.TrimStartAndEnd());
		}

		// Within a line.
		bool TryDelimited(ETokenType Type, const TCHAR* Delimiter)
		{
			const int32 Start = Position;
			const int32 Width = FString(Delimiter).Len();
			const bool bAlone = Type == ETokenType::Italic;
			const TCHAR After = Peek(Width);
			if (!IsNext(Delimiter) || (bAlone && After == Delimiter[0]) || (Type == ETokenType::Code && IsNext(TEXT("```"))) ||
				(Start > 0 && IsWord(Peek(-1))) || Start + Width >= Length || IsBlankOrLineFeed(After))
			{
				return false;
			}
			Position += Width;
			const int32 Most = FMath::Min(Length - Position, LongestSearch);
			for (; Position - Start - Width < Most && Peek() != TEXT('\n'); ++Position)
			{
				const TCHAR Next = Peek(Width);
				if (IsNext(Delimiter) && !IsBlank(Peek(-1)) && !IsWord(Next) && !(bAlone && Next == Delimiter[0]))
				{
					const FString Content = Since(Start + Width);
					Position += Width;
					return Succeed(Start, Type, Content);
				}
			}
			return Fail(Start);
		}

		/** The text before the closer, which is taken, too; unset when the line ends before it or it is too far away. */
		TOptional<FString> TakeLinkPart(TCHAR Closer)
		{
			const int32 Start = Position;
			const int32 Most = FMath::Min(Length - Position, LongestSearch);
			const int32 Passed = Pass([Closer](TCHAR Char) { return Char != Closer && Char != TEXT('\n'); }, Most);
			if (Passed >= Most || Peek() != Closer)
			{
				return {};
			}
			const FString Part = Since(Start);
			++Position;
			return Part;
		}

		bool TryLink()
		{
			const int32 Start = Position;
			if (!Take(TEXT("[")))
			{
				return false;
			}
			const TOptional<FString> Label = TakeLinkPart(TEXT(']'));
			if (!Label || !Take(TEXT("(")))
			{
				return Fail(Start);
			}
			const TOptional<FString> Target = TakeLinkPart(TEXT(')'));
			return Target ? Succeed(Start, ETokenType::Link, *Label, *Target) : Fail(Start);
		}

		bool TryFootnoteReference()
		{
			const int32 Start = Position;
			FString Name;
			if (!TakeFootnote(Name, TEXT("]")))
			{
				return false;
			}
			Name = Name.TrimStartAndEnd();
			return Succeed(Start, ETokenType::FootnoteReference, TEXT("[") + Name + TEXT("]"), Name);
		}

		void Inline()
		{
			const int32 Start = Position;
			if (Take(TEXT("\n")))
			{
				Succeed(Start, ETokenType::Newline, FString());
				return;
			}
			if (TryDelimited(ETokenType::BoldItalic, TEXT("***")) || TryDelimited(ETokenType::Bold, TEXT("**")) ||
				TryDelimited(ETokenType::Bold, TEXT("__")) || TryDelimited(ETokenType::Italic, TEXT("*")) ||
				TryDelimited(ETokenType::Italic, TEXT("_")) || TryDelimited(ETokenType::Strikethrough, TEXT("~~")) ||
				TryDelimited(ETokenType::Code, TEXT("`")) || TryLink() || TryFootnoteReference())
			{
				return;
			}
			const auto Goes = [this](TCHAR Char)
			{
				const bool bOpens = IsOneOf(TEXT("_*`~"), Char) && (Position == 0 || !IsWord(Peek(-1)));
				return !bOpens && !IsOneOf(TEXT("[\n"), Char) && !(IsAtLineStart() && IsOneOf(TEXT("#>-+"), Char));
			};
			if (Pass(Goes, LongestLine) > 0)
			{
				Succeed(Start, ETokenType::Text, Since(Start));
			}
		}

		const FString& Text;
		int32 Length;
		int32 Position = 0;
		TArray<FMarkdownToken> Tokens;
	};

} // namespace

TArray<FMarkdownToken> ParseLiterally(const FString& Input)
{
	return FLiteralParse(Input).Run();
}
