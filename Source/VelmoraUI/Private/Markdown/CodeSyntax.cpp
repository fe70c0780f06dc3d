#include "Markdown/CodeSyntax.h"

#include "Markdown/CodeSyntaxWords.h"
#include "Misc/Char.h"

namespace Velmora::Markdown
{

	namespace
	{

		/** Takes tokens in the order of the code, which spares AddSyntaxToken's look at all the tokens before. */
		class FTokenSink
		{
		public:
			explicit FTokenSink(const FString& InCode)
				: Code(InCode)
			{
				// Roughly one token for each five characters of ordinary code.
				Tokens.Reserve(Code.Len() / 5 + 8);
			}

			void Add(ESyntaxTokenType Type, int32 Start, int32 End)
			{
				const int32 Length = FMath::Min(End, Code.Len()) - Start;
				if (Length > 0)
				{
					Append(Type, FString::ConstructFromPtrSize(*Code + Start, Length), Start, End);
				}
			}

			void Add(ESyntaxTokenType Type, const TCHAR* Text, int32 Start, int32 End) { Append(Type, FString(Text), Start, End); }

			TArray<FSyntaxToken> Take() { return MoveTemp(Tokens); }

		private:
			void Append(ESyntaxTokenType Type, FString&& Text, int32 Start, int32 End)
			{
				// Only what begins before the end of an earlier token can overlap one. That is rare, and then the slow rule decides.
				if (Start < FurthestEnd)
				{
					AddSyntaxToken(Tokens, Type, Text, Start, End);
					return;
				}
				FSyntaxToken& Token = Tokens.AddDefaulted_GetRef();
				Token.Type = Type;
				Token.Text = MoveTemp(Text);
				Token.Start = Start;
				Token.End = End;
				FurthestEnd = End;
			}

			const FString& Code;
			TArray<FSyntaxToken> Tokens;
			int32 FurthestEnd = 0;
		};

		/** Walks over one code. Each Skip returns the index after what it skips and is given the index of its first character. */
		class FCodeScan
		{
		public:
			explicit FCodeScan(const FString& Code)
				: Text(*Code)
				, Length(Code.Len())
			{
			}

			int32 Len() const { return Length; }
			TCHAR operator[](int32 Index) const { return Text[Index]; }
			const TCHAR* At(int32 Index) const { return Text + Index; }
			bool Has(int32 Index, TCHAR Char) const { return Index < Length && Text[Index] == Char; }
			bool HasDigit(int32 Index) const { return Index < Length && FChar::IsDigit(Text[Index]); }

			template <typename TestType>
			int32 SkipWhile(int32 Index, TestType Test) const
			{
				while (Index < Length && Test(Text[Index]))
				{
					++Index;
				}
				return Index;
			}

			int32 SkipSpace(int32 Index) const
			{
				return SkipWhile(Index, [](TCHAR Char) { return FChar::IsWhitespace(Char); });
			}
			int32 SkipLine(int32 Index) const
			{
				return SkipWhile(Index, [](TCHAR Char) { return Char != TEXT('\n'); });
			}
			int32 SkipWord(int32 Index) const
			{
				return SkipWhile(Index, [](TCHAR Char) { return FChar::IsAlnum(Char) || Char == TEXT('_'); });
			}

			/** A backslash takes the next character along. One that is never closed ends one beyond the text. */
			int32 SkipString(int32 Index) const
			{
				const TCHAR Quote = Text[Index];
				int32 Position = Index + 1;
				while (Position < Length && Text[Position] != Quote)
				{
					Position += Text[Position] == TEXT('\\') && Position + 1 < Length ? 2 : 1;
				}
				return Position + 1;
			}

			/** Stops at the last character when it is never closed, and so ends beyond the text. */
			int32 SkipBlockComment(int32 Index) const
			{
				int32 Position = Index + 2;
				while (Position < Length - 1 && !(Text[Position] == TEXT('*') && Text[Position + 1] == TEXT('/')))
				{
					++Position;
				}
				return Position + 2;
			}

			bool HasTripleQuote(int32 Index) const
			{
				return Index + 2 < Length && Text[Index + 1] == Text[Index] && Text[Index + 2] == Text[Index];
			}

			/** One that is never closed runs to the end of the text. */
			int32 SkipTripleQuoted(int32 Index) const
			{
				const TCHAR Quote = Text[Index];
				for (int32 Position = Index + 3; Position + 2 < Length; ++Position)
				{
					if (Text[Position] == Quote && HasTripleQuote(Position))
					{
						return Position + 3;
					}
				}
				return Length;
			}

			/** The next characters are these lower-case letters, in any letter case. */
			bool HasWord(int32 Index, const TCHAR* Word, int32 WordLength) const
			{
				if (Index + WordLength > Length)
				{
					return false;
				}
				for (int32 Offset = 0; Offset < WordLength; ++Offset)
				{
					if (FChar::ToLower(Text[Index + Offset]) != Word[Offset])
					{
						return false;
					}
				}
				return true;
			}

		private:
			const TCHAR* Text;
			const int32 Length;
		};

		bool IsCppNumberChar(TCHAR Char)
		{
			return FChar::IsDigit(Char) || Char == TEXT('.') || Char == TEXT('f') || Char == TEXT('u') || Char == TEXT('l') ||
				Char == TEXT('L');
		}

		bool IsScientificNumberChar(TCHAR Char)
		{
			return FChar::IsDigit(Char) || Char == TEXT('.') || Char == TEXT('e') || Char == TEXT('E') || Char == TEXT('+') ||
				Char == TEXT('-');
		}

		bool StartsWord(TCHAR Char)
		{
			return FChar::IsAlpha(Char) || Char == TEXT('_');
		}

		bool IsCppTypeWord(const TCHAR* Word, int32 Length)
		{
			// The engine's prefixes, before a capital.
			if (Length >= 2)
			{
				const TCHAR First = Word[0];
				const bool bHasPrefix = First == TEXT('F') || First == TEXT('U') || First == TEXT('A') || First == TEXT('T') ||
					First == TEXT('I') || First == TEXT('E');
				if (bHasPrefix && FChar::IsUpper(Word[1]))
				{
					return true;
				}
			}
			return GetCppTypeWords().Contains(Word, Length);
		}

		/** What the languages of words have different. */
		struct FWordRules
		{
			const FCodeWords& Keywords;
			bool (*IsNumberChar)(TCHAR);
			/** C++: comments by slashes, lines of the preprocessor, types. Otherwise Python: comments by '#', triple quotes. */
			bool bIsCpp;
		};

		ESyntaxTokenType ClassifyWord(const TCHAR* Word, int32 Length, bool bIsCalled, const FWordRules& Rules)
		{
			if (Rules.Keywords.Contains(Word, Length))
			{
				return ESyntaxTokenType::Keyword;
			}
			if (Rules.bIsCpp && IsCppTypeWord(Word, Length))
			{
				return ESyntaxTokenType::Type;
			}
			return bIsCalled ? ESyntaxTokenType::Function : ESyntaxTokenType::Default;
		}

		/** The token that a reader found at an index that it was given. */
		struct FFound
		{
			ESyntaxTokenType Type;
			int32 End;
			/** What is drawn in place of the code; null to draw the code. */
			const TCHAR* Text = nullptr;
		};

		/** Blanks are a token by the run: a line feed and the indentation after it stand together. All else is the reader's. */
		template <typename ReadType>
		TArray<FSyntaxToken> Tokenize(const FString& Code, const ReadType& Read)
		{
			const FCodeScan Scan(Code);
			FTokenSink Sink(Code);
			for (int32 Index = 0; Index < Scan.Len();)
			{
				const FFound Found =
					FChar::IsWhitespace(Scan[Index]) ? FFound{ ESyntaxTokenType::Default, Scan.SkipSpace(Index + 1) } : Read(Scan, Index);
				if (Found.Text)
				{
					Sink.Add(Found.Type, Found.Text, Index, Found.End);
				}
				else
				{
					Sink.Add(Found.Type, Index, Found.End);
				}
				Index = Found.End;
			}
			return Sink.Take();
		}

		FFound ReadWordOrSign(const FCodeScan& Scan, int32 Index, const FWordRules& Rules)
		{
			const TCHAR Char = Scan[Index];
			const int32 Next = Index + 1;
			// 1. Words: keyword, type, or a name that is called.
			if (StartsWord(Char))
			{
				const int32 End = Scan.SkipWord(Next);
				return { ClassifyWord(Scan.At(Index), End - Index, Scan.Has(End, TEXT('(')), Rules), End };
			}
			// 2. Comments, before the operators that they begin with.
			if (Rules.bIsCpp && Char == TEXT('/') && Scan.Has(Next, TEXT('/')))
			{
				return { ESyntaxTokenType::Comment, Scan.SkipLine(Next) };
			}
			if (Rules.bIsCpp && Char == TEXT('/') && Scan.Has(Next, TEXT('*')))
			{
				return { ESyntaxTokenType::Comment, Scan.SkipBlockComment(Index) };
			}
			// 3. The sign that is a comment in one language and the preprocessor in the other. A continued line is not followed.
			if (Char == TEXT('#'))
			{
				return { Rules.bIsCpp ? ESyntaxTokenType::Preprocessor : ESyntaxTokenType::Comment, Scan.SkipLine(Next) };
			}
			// 4. Texts. A separator of digits reads as the start of one: the rule looks at one character.
			if (Char == TEXT('"') || Char == TEXT('\''))
			{
				const bool bTriple = !Rules.bIsCpp && Scan.HasTripleQuote(Index);
				return { ESyntaxTokenType::String, bTriple ? Scan.SkipTripleQuoted(Index) : Scan.SkipString(Index) };
			}
			// 5. Numbers, with the letters that may follow in the language.
			if (FChar::IsDigit(Char) || (Char == TEXT('.') && Scan.HasDigit(Next)))
			{
				return { ESyntaxTokenType::Number, Scan.SkipWhile(Next, Rules.IsNumberChar) };
			}
			// 6. All else is an operator, one character each.
			return { ESyntaxTokenType::Operator, Next };
		}

		TArray<FSyntaxToken> TokenizeWords(const FString& Code, const FWordRules& Rules)
		{
			return Tokenize(Code, [&Rules](const FCodeScan& Scan, int32 Index) { return ReadWordOrSign(Scan, Index, Rules); });
		}

		FFound ReadJson(const FCodeScan& Scan, int32 Index)
		{
			struct FLiteral
			{
				const TCHAR* Text;
				int32 Length;
			};
			static constexpr FLiteral Literals[] = { { TEXT("true"), 4 }, { TEXT("false"), 5 }, { TEXT("null"), 4 } };
			const TCHAR Char = Scan[Index];
			const int32 Next = Index + 1;
			if (Char == TEXT('"'))
			{
				return { ESyntaxTokenType::String, Scan.SkipString(Index) };
			}
			if (FChar::IsDigit(Char) || (Char == TEXT('-') && Scan.HasDigit(Next)))
			{
				return { ESyntaxTokenType::Number, Scan.SkipWhile(Next, IsScientificNumberChar) };
			}
			for (const FLiteral& Literal : Literals)
			{
				if (Scan.HasWord(Index, Literal.Text, Literal.Length))
				{
					// Drawn in lower case, however it was written.
					return { ESyntaxTokenType::Keyword, Index + Literal.Length, Literal.Text };
				}
			}
			return { ESyntaxTokenType::Operator, Next };
		}

	} // namespace

	TArray<FSyntaxToken> TokenizeCode(const FString& Code, const FString& Language)
	{
		// The tag is what stands after the fence, so its case is free.
		const FString Tag = Language.ToLower();
		if (Tag == TEXT("cpp") || Tag == TEXT("c++") || Tag == TEXT("h") || Tag == TEXT("hpp"))
		{
			return TokenizeCpp(Code);
		}
		if (Tag == TEXT("python") || Tag == TEXT("py"))
		{
			return TokenizePython(Code);
		}
		if (Tag == TEXT("json"))
		{
			return TokenizeJson(Code);
		}
		// A language that is not known is one token in the colour of text.
		TArray<FSyntaxToken> Tokens;
		Tokens.Add({ ESyntaxTokenType::Default, Code, 0, Code.Len() });
		return Tokens;
	}

	void AddSyntaxToken(TArray<FSyntaxToken>& Tokens, ESyntaxTokenType Type, const FString& Text, int32 Start, int32 End)
	{
		if (Text.IsEmpty())
		{
			return;
		}
		// Whoever came first keeps the range; one that only encloses older ones is not noticed and stands beside them.
		for (const FSyntaxToken& Token : Tokens)
		{
			if ((Start >= Token.Start && Start < Token.End) || (End > Token.Start && End <= Token.End))
			{
				return;
			}
		}
		Tokens.Add({ Type, Text, Start, End });
	}

	bool IsCppTypeName(const FString& Word)
	{
		return IsCppTypeWord(*Word, Word.Len());
	}

	TArray<FSyntaxToken> TokenizeCpp(const FString& Code)
	{
		return TokenizeWords(Code, { GetCppKeywords(), IsCppNumberChar, true });
	}

	TArray<FSyntaxToken> TokenizePython(const FString& Code)
	{
		return TokenizeWords(Code, { GetPythonKeywords(), IsScientificNumberChar, false });
	}

	TArray<FSyntaxToken> TokenizeJson(const FString& Code)
	{
		return Tokenize(Code, ReadJson);
	}

} // namespace Velmora::Markdown
