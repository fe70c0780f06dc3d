#pragma once

#include "Containers/Array.h"
#include "Containers/Map.h"
#include "Containers/StringView.h"
#include "Dom/JsonValue.h"

/**
 * Named values. Names ignore letter case, are written in the order in which they were first set, and a name that is set
 * again takes the new value. TryGet operations leave their output as it was when the field is missing or cannot be
 * converted (FJsonValue says how); Get operations log an error then and give a default.
 */
class JSON_API FJsonObject
{
public:
	TMap<FString, TSharedPtr<FJsonValue>> Values;

	bool TryGetStringField(FStringView Name, FString& OutString) const;
	bool TryGetNumberField(FStringView Name, double& OutNumber) const;
	bool TryGetNumberField(FStringView Name, float& OutNumber) const;
	bool TryGetNumberField(FStringView Name, int32& OutNumber) const;
	bool TryGetNumberField(FStringView Name, int64& OutNumber) const;
	bool TryGetNumberField(FStringView Name, uint32& OutNumber) const;
	bool TryGetNumberField(FStringView Name, uint64& OutNumber) const;
	bool TryGetBoolField(FStringView Name, bool& OutBool) const;
	bool TryGetArrayField(FStringView Name, const TArray<TSharedPtr<FJsonValue>>*& OutArray) const;

	void SetStringField(const FString& Name, const FString& Value);
	void SetNumberField(const FString& Name, double Value);
	void SetBoolField(const FString& Name, bool Value);
	void SetArrayField(const FString& Name, const TArray<TSharedPtr<FJsonValue>>& Value);

private:
	const TSharedPtr<FJsonValue>* FindValue(FStringView Name) const;
	template <typename T>
	bool TryGetNumberAs(FStringView Name, T& OutNumber) const;
};
