#include "Markdown/LiteralCodeSyntax.h"

#include "Misc/Char.h"

#include <cstring>
#include <vector>

using Velmora::Markdown::ESyntaxTokenType;
using Velmora::Markdown::FSyntaxToken;

namespace
{
	const char* const CppWordList =
		"alignas alignof and and_eq asm atomic_cancel atomic_commit atomic_noexcept auto bitand bitor bool break case catch char char8_t "
		"char16_t char32_t class compl "
		"concept const consteval constexpr constinit const_cast continue co_await co_return co_yield decltype default delete do double "
		"dynamic_cast else enum explicit "
		"export extern false float for friend goto if inline int long mutable namespace new noexcept not not_eq nullptr operator or or_eq "
		"private protected public "
		"reflexpr register reinterpret_cast requires return short signed sizeof static static_assert static_cast struct switch "
		"synchronized template this thread_local "
		"throw true try typedef typeid typename union unsigned using virtual void volatile wchar_t while xor xor_eq";
	const char* const PythonWordList = "False None True and as assert async await break class continue def del elif else except finally "
									   "for from global if import in is lambda nonlocal not or pass "
									   "raise return try while with yield";
	const char* const TypeWordList = "int8 int16 int32 int64 uint8 uint16 uint32 uint64 int float double bool void char size_t wchar_t";

	TArray<FString> SplitWords(const char* List)
	{
		TArray<FString> Words;
		FString(List).ParseIntoArray(Words, TEXT(" "), true);
		return Words;
	}

	const TArray<FString> CppWords = SplitWords(CppWordList);
	const TArray<FString> PythonWords = SplitWords(PythonWordList);
	const TArray<FString> TypeWords = SplitWords(TypeWordList);

	bool IsOneOf(const FString& Word, const TArray<FString>& Words)
	{
		return Words.ContainsByPredicate([&Word](const FString& Each) { return Each.Equals(Word, ESearchCase::IgnoreCase); });
	}

	bool IsTypeName(const FString& Word)
	{
		if (Word.Len() >= 2 && FString(TEXT("FUATIE")).Contains(Word.Left(1), ESearchCase::CaseSensitive) && FChar::IsUpper(Word[0]) &&
			FChar::IsUpper(Word[1]))
		{
			return true;
		}
		return IsOneOf(Word, TypeWords);
	}

	struct FLiteral
	{
		const FString& Code;
		TArray<FSyntaxToken> Tokens;
		int32 I = 0;

		int32 Len() const { return Code.Len(); }
		TCHAR At(int32 Index) const { return Index < Len() ? Code[Index] : TCHAR(0); }
		bool Is(int32 Index, char Char) const { return Index < Len() && Code[Index] == static_cast<TCHAR>(Char); }

		void Emit(ESyntaxTokenType Type, int32 Start, int32 End)
		{
			Velmora::Markdown::AddSyntaxToken(Tokens, Type, Code.Mid(Start, End - Start), Start, End);
			I = End;
		}

		bool Whitespace()
		{
			int32 End = I;
			while (End < Len() && FChar::IsWhitespace(Code[End]))
			{
				++End;
			}
			return End > I && (Emit(ESyntaxTokenType::Default, I, End), true);
		}

		void Line(ESyntaxTokenType Type)
		{
			int32 End = I;
			while (End < Len() && Code[End] != TEXT('\n'))
			{
				++End;
			}
			Emit(Type, I, End);
		}

		void Quoted()
		{
			const TCHAR Quote = Code[I];
			int32 Stop = I + 1;
			while (Stop < Len() && Code[Stop] != Quote)
			{
				Stop += Is(Stop, '\\') && Stop + 1 < Len() ? 2 : 1;
			}
			Emit(ESyntaxTokenType::String, I, Stop + 1);
		}

		void Number(const char* More)
		{
			int32 End = I + 1;
			while (End < Len() &&
				(FChar::IsDigit(Code[End]) || (Code[End] < 128 && strchr(More, static_cast<char>(Code[End])) && Code[End] != 0)))
			{
				++End;
			}
			Emit(ESyntaxTokenType::Number, I, End);
		}

		bool Word(const TArray<FString>& Keywords, bool bHasTypes)
		{
			if (!FChar::IsAlpha(Code[I]) && !Is(I, '_'))
			{
				return false;
			}
			int32 End = I;
			while (End < Len() && (FChar::IsAlnum(Code[End]) || Code[End] == TEXT('_')))
			{
				++End;
			}
			const FString Text = Code.Mid(I, End - I);
			ESyntaxTokenType Type = ESyntaxTokenType::Default;
			if (IsOneOf(Text, Keywords))
			{
				Type = ESyntaxTokenType::Keyword;
			}
			else if (bHasTypes && IsTypeName(Text))
			{
				Type = ESyntaxTokenType::Type;
			}
			else if (Is(End, '('))
			{
				Type = ESyntaxTokenType::Function;
			}
			Emit(Type, I, End);
			return true;
		}

		bool IsNumberStart() const { return FChar::IsDigit(Code[I]) || (Is(I, '.') && I + 1 < Len() && FChar::IsDigit(Code[I + 1])); }

		void CppStep()
		{
			if (Whitespace())
			{
				return;
			}
			if (Is(I, '/') && Is(I + 1, '/'))
			{
				return Line(ESyntaxTokenType::Comment);
			}
			if (Is(I, '/') && Is(I + 1, '*'))
			{
				int32 Stop = I + 2;
				while (Stop < Len() - 1 && !(Is(Stop, '*') && Is(Stop + 1, '/')))
				{
					++Stop;
				}
				return Emit(ESyntaxTokenType::Comment, I, Stop + 2);
			}
			if (Is(I, '#'))
			{
				return Line(ESyntaxTokenType::Preprocessor);
			}
			if (Is(I, '"') || Is(I, '\''))
			{
				return Quoted();
			}
			if (IsNumberStart())
			{
				return Number(".fulL");
			}
			if (!Word(CppWords, true))
			{
				Emit(ESyntaxTokenType::Operator, I, I + 1);
			}
		}

		void PythonStep()
		{
			if (Whitespace())
			{
				return;
			}
			if (Is(I, '#'))
			{
				return Line(ESyntaxTokenType::Comment);
			}
			if (Is(I, '"') || Is(I, '\''))
			{
				const char Quote = static_cast<char>(Code[I]);
				if (!Is(I + 1, Quote) || !Is(I + 2, Quote))
				{
					return Quoted();
				}
				int32 Stop = I + 3;
				while (Stop < Len() && !(Is(Stop, Quote) && Is(Stop + 1, Quote) && Is(Stop + 2, Quote)))
				{
					++Stop;
				}
				return Emit(ESyntaxTokenType::String, I, Stop < Len() ? Stop + 3 : Len());
			}
			if (IsNumberStart())
			{
				return Number(".eE+-");
			}
			if (!Word(PythonWords, false))
			{
				Emit(ESyntaxTokenType::Operator, I, I + 1);
			}
		}

		void JsonStep()
		{
			if (Whitespace())
			{
				return;
			}
			if (Is(I, '"'))
			{
				return Quoted();
			}
			if (FChar::IsDigit(Code[I]) || (Is(I, '-') && I + 1 < Len() && FChar::IsDigit(Code[I + 1])))
			{
				return Number(".eE+-");
			}
			for (const TCHAR* Literal : { TEXT("true"), TEXT("false"), TEXT("null") })
			{
				const int32 Length = FString(Literal).Len();
				if (I < Len() - (Length - 1) && Code.Mid(I, Length).Equals(Literal, ESearchCase::IgnoreCase))
				{
					Velmora::Markdown::AddSyntaxToken(Tokens, ESyntaxTokenType::Keyword, Literal, I, I + Length);
					I += Length;
					return;
				}
			}
			Emit(ESyntaxTokenType::Operator, I, I + 1);
		}
	};
}

TArray<FSyntaxToken> LiteralCodeSyntax::Tokenize(const FString& Code, const FString& Language)
{
	FLiteral Literal{ Code, {} };
	while (Literal.I < Code.Len())
	{
		if (Language == TEXT("cpp"))
		{
			Literal.CppStep();
		}
		else if (Language == TEXT("py"))
		{
			Literal.PythonStep();
		}
		else
		{
			Literal.JsonStep();
		}
	}
	return MoveTemp(Literal.Tokens);
}
