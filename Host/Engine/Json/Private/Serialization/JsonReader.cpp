#include "Serialization/JsonReader.h"

#include "Containers/Array.h"
#include "Math/UnrealMathUtility.h"
#include "Serialization/JsonLongNumbers.h"

#include <cmath>

// A broken text must never end the process: what the library takes for granted it only evaluates.
#define RAPIDJSON_ASSERT(Expression) static_cast<void>(Expression)
#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

namespace
{
	using FUtf16 = rapidjson::UTF16<TCHAR>;

	/** The characters of a text; reads null units beyond its end. */
	class FTextStream
	{
	public:
		using Ch = TCHAR;
		FTextStream(const TCHAR* InText, int32 InLength)
			: Text(InText)
			, Length(std::size_t(InLength))
		{
		}
		Ch Peek() const { return Position < Length ? Text[Position] : TCHAR(0); }
		Ch Take() { return Position < Length ? Text[Position++] : TCHAR(0); }
		std::size_t Tell() const { return Position; }
		bool IsAtEnd() const { return Position >= Length; }
		// Writing in place is not used.
		Ch* PutBegin() { return nullptr; }
		void Put(Ch) {}
		std::size_t PutEnd(Ch*) { return 0; }

	private:
		const TCHAR* Text;
		std::size_t Length;
		std::size_t Position = 0;
	};

	/** Builds values from the events of the parser. Open arrays and objects wait on a stack of its own. */
	class FValueBuilder
	{
	public:
		explicit FValueBuilder(const TArray<FJsonLongNumber>& InLongNumbers)
			: LongNumbers(&InLongNumbers)
		{
		}
		bool Null() { return Add(MakeShared<FJsonValueNull>()); }
		bool Bool(bool bValue) { return Add(MakeShared<FJsonValueBoolean>(bValue)); }
		/** What has a minus in front; zero comes this way as "-0" alone, and keeps its sign. */
		bool Int(int Value) { return Double(Value == 0 ? -0.0 : Value); }
		bool Uint(unsigned Value) { return Double(Value); }
		bool Int64(int64_t Value) { return Double(double(Value)); }
		bool Uint64(uint64_t Value) { return Double(double(Value)); }
		bool Double(double Value)
		{
			if (NextLong < LongNumbers->Num() && (*LongNumbers)[NextLong].Ordinal == NumberCount)
			{
				Value = (*LongNumbers)[NextLong++].Value;
			}
			++NumberCount;
			bTooBig = std::isinf(Value);
			return !bTooBig && Add(MakeShared<FJsonValueNumber>(Value));
		}
		bool RawNumber(const TCHAR*, rapidjson::SizeType, bool) { return false; }
		bool String(const TCHAR* Text, rapidjson::SizeType Length, bool)
		{
			return Add(MakeShared<FJsonValueString>(FString(int32(Length), Text)));
		}
		bool Key(const TCHAR* Text, rapidjson::SizeType Length, bool)
		{
			Open.Last().Key = FString(int32(Length), Text);
			return true;
		}
		bool StartObject() { return Start(MakeShared<FJsonObject>()); }
		bool StartArray() { return Start(nullptr); }
		bool EndObject(rapidjson::SizeType)
		{
			const TSharedPtr<FJsonObject> Object = Open.Last().Object;
			Open.Pop();
			return Add(MakeShared<FJsonValueObject>(Object));
		}
		bool EndArray(rapidjson::SizeType)
		{
			TArray<TSharedPtr<FJsonValue>> Elements = MoveTemp(Open.Last().Elements);
			Open.Pop();
			return Add(MakeShared<FJsonValueArray>(MoveTemp(Elements)));
		}

		TSharedPtr<FJsonValue> Root;
		/** Whether the text was refused for a number that no double can hold. */
		bool bTooBig = false;

	private:
		struct FLevel
		{
			/** Null for an array. */
			TSharedPtr<FJsonObject> Object;
			TArray<TSharedPtr<FJsonValue>> Elements;
			FString Key;
		};

		bool Start(TSharedPtr<FJsonObject> Object)
		{
			if (Open.Num() >= FHostJsonReader::MaxDepth)
			{
				return false;
			}
			Open.Emplace();
			Open.Last().Object = MoveTemp(Object);
			return true;
		}

		bool Add(TSharedPtr<FJsonValue> Value)
		{
			if (Open.Num() == 0)
			{
				Root = MoveTemp(Value);
			}
			else if (FLevel& Level = Open.Last(); Level.Object)
			{
				Level.Object->Values.Add(Level.Key, MoveTemp(Value));
			}
			else
			{
				Level.Elements.Add(MoveTemp(Value));
			}
			return true;
		}

		TArray<FLevel> Open;
		const TArray<FJsonLongNumber>* LongNumbers;
		int32 NextLong = 0;
		int32 NumberCount = 0;
	};

	/** What the escape of four hex digits at Index stands for, if there is one and it names half of a surrogate pair; else 0. */
	TCHAR ReadSurrogateEscape(FStringView Text, int32 Index)
	{
		if (Text.Len() - Index < 6 || Text[Index] != TEXT('\\') || Text[Index + 1] != TEXT('u'))
		{
			return 0;
		}
		uint32 Unit = 0;
		for (int32 Digit = Index + 2; Digit < Index + 6; ++Digit)
		{
			if (!FChar::IsHexDigit(Text[Digit]))
			{
				return 0;
			}
			const TCHAR Letter = FChar::ToLower(Text[Digit]);
			Unit = Unit * 16 + static_cast<uint32>(FChar::IsDigit(Letter) ? Letter - '0' : Letter - 'a' + 10);
		}
		return Unit >= 0xD800 && Unit < 0xE000 ? TCHAR(Unit) : TCHAR(0);
	}

	/** Puts the units themselves in place of escapes that name half a pair alone, which the parser refuses. */
	FString WriteOutLoneSurrogates(const FString& Text)
	{
		FString Result;
		Result.Reserve(Text.Len());
		for (int32 Index = 0; Index < Text.Len();)
		{
			int32 Length = Text[Index] == TEXT('\\') ? FMath::Min(2, Text.Len() - Index) : 1;
			if (const TCHAR Unit = ReadSurrogateEscape(Text, Index))
			{
				const TCHAR Next = ReadSurrogateEscape(Text, Index + 6);
				if (Unit >= 0xDC00 || Next < 0xDC00)
				{
					Result.AppendChar(Unit);
					Index += 6;
					continue;
				}
				Length = 12;
			}
			Result.AppendChars(*Text + Index, Length);
			Index += Length;
		}
		return Result;
	}

	FString DescribePlace(const FString& Text, std::size_t Offset)
	{
		int32 Line = 1;
		int32 Column = 1;
		for (int32 Index = 0; Index < Text.Len() && std::size_t(Index) < Offset; ++Index)
		{
			const bool bLineEnd = Text[Index] == TEXT('\n');
			Line += bLineEnd ? 1 : 0;
			Column = bLineEnd ? 1 : Column + 1;
		}
		return FString::Printf(TEXT(" Line: %d Column: %d"), Line, Column);
	}
}

// 1. The library's parser, after what it computes wrongly was taken out. 2. Once more for lone halves of pairs, which
// it refuses. 3. Words and place of an error. 4. Nothing may follow the value.
TSharedPtr<FJsonValue> FHostJsonReader::ReadAll()
{
	if (bUsed)
	{
		Error = TEXT("The text has been read already.");
		return nullptr;
	}
	bUsed = true;
	Error.Reset();
	const TArray<FJsonLongNumber> LongNumbers = TakeJsonLongNumbers(Text);
	FTextStream Stream(*Text, Text.Len());
	FValueBuilder Builder(LongNumbers);
	rapidjson::GenericReader<FUtf16, FUtf16> Reader;
	// Iterative, so that nesting uses no stack of ours; stopping at the end of the value, so that a null unit behind it
	// is not taken for the end of the text.
	constexpr unsigned Flags = rapidjson::kParseIterativeFlag | rapidjson::kParseStopWhenDoneFlag;
	rapidjson::ParseResult Result = Reader.Parse<Flags>(Stream, Builder);
	if (Result.Code() == rapidjson::kParseErrorStringUnicodeSurrogateInvalid)
	{
		// Half a pair is good JSON: writers that cut a text between the halves escape it so.
		Text = WriteOutLoneSurrogates(Text);
		Stream = FTextStream(*Text, Text.Len());
		Builder = FValueBuilder(LongNumbers);
		Result = Reader.Parse<Flags>(Stream, Builder);
	}
	if (Result.IsError())
	{
		const rapidjson::ParseErrorCode Code = Builder.bTooBig ? rapidjson::kParseErrorNumberTooBig : Result.Code();
		Error = Code == rapidjson::kParseErrorTermination ? FString::Printf(TEXT("Nested deeper than %d levels."), MaxDepth)
														  : FString(rapidjson::GetParseError_En(Code));
		Error += DescribePlace(Text, Result.Offset());
		return nullptr;
	}
	const auto IsBlank = [](TCHAR Char) { return Char == TEXT(' ') || Char == TEXT('\t') || Char == TEXT('\n') || Char == TEXT('\r'); };
	while (!Stream.IsAtEnd() && IsBlank(Stream.Peek()))
	{
		Stream.Take();
	}
	if (!Stream.IsAtEnd())
	{
		Error = TEXT("There is something behind the value.") + DescribePlace(Text, Stream.Tell());
		return nullptr;
	}
	return Builder.Root;
}
