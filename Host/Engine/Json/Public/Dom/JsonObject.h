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

	/** Null when there is no such field. */
	TSharedPtr<FJsonValue> TryGetField(FStringView Name) const;
	bool HasField(FStringView Name) const;
	template <EJson Type>
	bool HasTypedField(FStringView Name) const
	{
		return HasFieldOfType(Name, Type);
	}
	/** A field of the given kind; logs an error and gives a null value when it is not there. EJson::None takes any kind. */
	template <EJson Type>
	TSharedPtr<FJsonValue> GetField(FStringView Name) const
	{
		return GetFieldOfType(Name, Type);
	}

	bool TryGetStringField(FStringView Name, FString& OutString) const;
	bool TryGetNumberField(FStringView Name, double& OutNumber) const;
	bool TryGetNumberField(FStringView Name, float& OutNumber) const;
	bool TryGetNumberField(FStringView Name, int32& OutNumber) const;
	bool TryGetNumberField(FStringView Name, int64& OutNumber) const;
	bool TryGetNumberField(FStringView Name, uint32& OutNumber) const;
	bool TryGetNumberField(FStringView Name, uint64& OutNumber) const;
	bool TryGetBoolField(FStringView Name, bool& OutBool) const;
	bool TryGetArrayField(FStringView Name, const TArray<TSharedPtr<FJsonValue>>*& OutArray) const;
	bool TryGetObjectField(FStringView Name, const TSharedPtr<FJsonObject>*& OutObject) const;
	/** False when one element cannot be converted to a string. */
	bool TryGetStringArrayField(FStringView Name, TArray<FString>& OutArray) const;

	FString GetStringField(FStringView Name) const;
	double GetNumberField(FStringView Name) const;
	/** Truncated towards zero, 0 when it does not fit. */
	int32 GetIntegerField(FStringView Name) const;
	bool GetBoolField(FStringView Name) const;
	const TArray<TSharedPtr<FJsonValue>>& GetArrayField(FStringView Name) const;
	const TSharedPtr<FJsonObject>& GetObjectField(FStringView Name) const;

	/** A null value is kept as JSON null. */
	void SetField(const FString& Name, const TSharedPtr<FJsonValue>& Value);
	void SetStringField(const FString& Name, const FString& Value);
	void SetNumberField(const FString& Name, double Value);
	void SetBoolField(const FString& Name, bool Value);
	void SetArrayField(const FString& Name, const TArray<TSharedPtr<FJsonValue>>& Value);
	/** A null object is kept as JSON null. */
	void SetObjectField(const FString& Name, const TSharedPtr<FJsonObject>& Value);
	void RemoveField(FStringView Name);

private:
	const TSharedPtr<FJsonValue>* FindValue(FStringView Name) const;
	bool HasFieldOfType(FStringView Name, EJson Type) const;
	TSharedPtr<FJsonValue> GetFieldOfType(FStringView Name, EJson Type) const;
	template <typename T>
	bool TryGetNumberAs(FStringView Name, T& OutNumber) const;
};
