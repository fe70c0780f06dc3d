#pragma once

#include "Dom/JsonObject.h"
#include "Dom/JsonValue.h"
#include "Serialization/JsonReader.h"
#include "Serialization/JsonWriter.h"

/**
 * Between JSON texts and values. Reading gives false, an empty output and the reader's message when the text is not
 * JSON or its outermost value is not what is asked for. Writing gives false when the values nest deeper than
 * FHostJsonReader::MaxDepth, for instance because one contains itself; the text is then not to be used.
 */
class JSON_API FJsonSerializer
{
public:
	static bool Deserialize(FHostJsonReader& Reader, TSharedPtr<FJsonObject>& OutObject);
	static bool Deserialize(FHostJsonReader& Reader, TSharedPtr<FJsonValue>& OutValue);
	static bool Deserialize(FHostJsonReader& Reader, TArray<TSharedPtr<FJsonValue>>& OutArray);
	template <class CharType, class OutType>
	static bool Deserialize(const TSharedRef<TJsonReader<CharType>>& Reader, OutType& Out)
	{
		return Deserialize(static_cast<FHostJsonReader&>(*Reader), Out);
	}

	static bool Serialize(const TSharedRef<FJsonObject>& Object, FHostJsonWriter& Writer, bool bCloseWriter);
	static bool Serialize(const TArray<TSharedPtr<FJsonValue>>& Array, FHostJsonWriter& Writer, bool bCloseWriter);
	static bool Serialize(const TSharedPtr<FJsonValue>& Value, FStringView Name, FHostJsonWriter& Writer, bool bCloseWriter);
	template <class CharType, class PrintPolicy>
	static bool Serialize(
		const TSharedRef<FJsonObject>& Object, const TSharedRef<TJsonWriter<CharType, PrintPolicy>>& Writer, bool bCloseWriter = true)
	{
		return Serialize(Object, static_cast<FHostJsonWriter&>(*Writer), bCloseWriter);
	}
	template <class CharType, class PrintPolicy>
	static bool Serialize(
		const TArray<TSharedPtr<FJsonValue>>& Array, const TSharedRef<TJsonWriter<CharType, PrintPolicy>>& Writer, bool bCloseWriter = true)
	{
		return Serialize(Array, static_cast<FHostJsonWriter&>(*Writer), bCloseWriter);
	}
	/** @param Name  Empty for a value without a name. */
	template <class CharType, class PrintPolicy>
	static bool Serialize(const TSharedPtr<FJsonValue>& Value, const FString& Name,
		const TSharedRef<TJsonWriter<CharType, PrintPolicy>>& Writer, bool bCloseWriter = true)
	{
		return Serialize(Value, FStringView(Name), static_cast<FHostJsonWriter&>(*Writer), bCloseWriter);
	}
};
