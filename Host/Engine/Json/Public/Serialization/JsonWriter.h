#pragma once

#include "Containers/Array.h"
#include "Containers/StringView.h"
#include "Containers/UnrealString.h"
#include "Policies/CondensedJsonPrintPolicy.h"
#include "Policies/PrettyJsonPrintPolicy.h"
#include "Serialization/JsonTypes.h"
#include "Templates/SharedPointer.h"

#include <cstddef>
#include <type_traits>

/**
 * Appends JSON to a text that outlives it. The caller's order of calls makes the structure: inside an object every
 * value has a name, inside an array none. A call that does not fit is left out and makes Close fail. Numbers are written
 * as "%.17g" whatever the locale; a number that JSON cannot hold becomes null.
 */
class JSON_API FHostJsonWriter
{
public:
	FHostJsonWriter(FString* InOut, int32 InInitialIndent, bool bInPretty);

	void WriteObjectStart();
	void WriteObjectStart(FStringView Name);
	void WriteObjectEnd();
	void WriteArrayStart();
	void WriteArrayStart(FStringView Name);
	void WriteArrayEnd();
	/** The name of the value that is written next. */
	void WriteIdentifierPrefix(FStringView Name);

	void WriteValue(bool Value) { WriteScalar(Value ? FStringView(TEXT("true")) : FStringView(TEXT("false"))); }
	void WriteValue(double Value);
	void WriteValue(float Value) { WriteValue(double(Value)); }
	void WriteValue(int32 Value) { WriteValue(int64(Value)); }
	void WriteValue(uint32 Value) { WriteValue(int64(Value)); }
	void WriteValue(int64 Value);
	void WriteValue(uint64 Value);
	void WriteValue(const FString& Value) { WriteString(Value); }
	void WriteValue(FStringView Value) { WriteString(Value); }
	void WriteValue(const TCHAR* Value) { WriteString(FStringView(Value)); }
	void WriteValue(std::nullptr_t) { WriteNull(); }
	template <typename T>
	void WriteValue(FStringView Name, const T& Value)
	{
		WriteIdentifierPrefix(Name);
		WriteValue(Value);
	}
	void WriteValue(FStringView Name, const TCHAR* Value)
	{
		WriteIdentifierPrefix(Name);
		WriteString(FStringView(Value));
	}
	template <typename T>
	void WriteValue(FStringView Name, const TArray<T>& Values)
	{
		WriteArrayStart(Name);
		for (const T& Value : Values)
		{
			WriteValue(Value);
		}
		WriteArrayEnd();
	}
	void WriteNull() { WriteScalar(FStringView(TEXT("null"))); }
	void WriteNull(FStringView Name)
	{
		WriteIdentifierPrefix(Name);
		WriteNull();
	}

	/** Depth of open objects and arrays. */
	int32 GetIndentLevel() const { return InitialIndent + Levels.Num(); }
	/** @return Whether the text is one whole value. May be called again. */
	bool Close();

private:
	enum class EToken : uint8
	{
		None,
		Open,
		Close,
		Identifier,
		Short,
		String,
	};
	enum class EKind : uint8
	{
		Short,
		String,
		Array,
		Object,
	};
	struct FLevel
	{
		bool bObject = false;
		bool bEmpty = true;
	};

	/** Comma, line end and blanks in front of a value. False when no value fits here. */
	bool BeginValue(EKind Kind);
	void WriteScalar(FStringView Text);
	void WriteString(FStringView Text);
	void AppendQuoted(FStringView Text);
	void AppendNewLine();
	void WriteEnd(bool bObject);

	FString& Out;
	TArray<FLevel> Levels;
	int32 InitialIndent;
	EToken Last = EToken::None;
	bool bPretty;
	bool bBroken = false;
	bool bWhole = false;
};

template <class CharType = TCHAR, class PrintPolicy = TPrettyJsonPrintPolicy<CharType>>
class TJsonWriter : public FHostJsonWriter
{
	static_assert(std::is_same_v<CharType, TCHAR>, "The text written is an FString.");

public:
	explicit TJsonWriter(FString* InOut, int32 InInitialIndent = 0)
		: FHostJsonWriter(InOut, InInitialIndent, PrintPolicy::bPretty)
	{
	}
	/** The engine's name for a writer into a text. */
	static TSharedRef<TJsonWriter> Create(FString* InOut, int32 InInitialIndent = 0)
	{
		return MakeShared<TJsonWriter>(InOut, InInitialIndent);
	}
};

template <class CharType = TCHAR, class PrintPolicy = TPrettyJsonPrintPolicy<CharType>>
class TJsonWriterFactory
{
public:
	/** @param Out  Text to append to; must outlive the writer. */
	static TSharedRef<TJsonWriter<CharType, PrintPolicy>> Create(FString* Out, int32 InitialIndent = 0)
	{
		return MakeShared<TJsonWriter<CharType, PrintPolicy>>(Out, InitialIndent);
	}
};
