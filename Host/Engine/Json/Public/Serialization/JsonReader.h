#pragma once

#include "Containers/UnrealString.h"
#include "Dom/JsonObject.h"
#include "Dom/JsonValue.h"
#include "Templates/SharedPointer.h"

#include <type_traits>

/**
 * Reads one JSON text, strictly: no comments, no trailing commas, nothing behind the value but blanks, nesting of at
 * most MaxDepth. Objects with equal names keep the last value.
 */
class JSON_API FHostJsonReader
{
public:
	static constexpr int32 MaxDepth = 512;

	explicit FHostJsonReader(FString InText)
		: Text(MoveTemp(InText))
	{
	}
	/** Reads the whole text. A second call fails. @return Null on failure. */
	TSharedPtr<FJsonValue> ReadAll();
	/** What is wrong and where (line and column from 1); empty before and after a success. */
	const FString& GetErrorMessage() const { return Error; }
	void SetErrorMessage(const FString& Message) { Error = Message; }

private:
	FString Text;
	FString Error;
	bool bUsed = false;
};

template <class CharType = TCHAR>
class TJsonReader : public FHostJsonReader
{
	static_assert(std::is_same_v<CharType, TCHAR>, "Other character types are converted to FString first.");

public:
	using FHostJsonReader::FHostJsonReader;
};

template <class CharType = TCHAR>
class TJsonReaderFactory
{
public:
	static TSharedRef<TJsonReader<CharType>> Create(const FString& Text) { return MakeShared<TJsonReader<CharType>>(Text); }
	static TSharedRef<TJsonReader<CharType>> Create(FString&& Text) { return MakeShared<TJsonReader<CharType>>(MoveTemp(Text)); }
};
