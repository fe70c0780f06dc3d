#include "Dom/JsonObject.h"

#include <cmath>

const TSharedPtr<FJsonValue>* FJsonObject::FindValue(FStringView Name) const
{
	const TSharedPtr<FJsonValue>* Found = Values.Find(FString(Name));
	return Found && Found->IsValid() ? Found : nullptr;
}

bool FJsonObject::TryGetStringField(FStringView Name, FString& OutString) const
{
	const TSharedPtr<FJsonValue>* Found = FindValue(Name);
	return Found && (*Found)->TryGetString(OutString);
}

template <typename T>
bool FJsonObject::TryGetNumberAs(FStringView Name, T& OutNumber) const
{
	const TSharedPtr<FJsonValue>* Found = FindValue(Name);
	return Found && (*Found)->TryGetNumber(OutNumber);
}

bool FJsonObject::TryGetNumberField(FStringView Name, double& OutNumber) const
{
	return TryGetNumberAs(Name, OutNumber);
}
bool FJsonObject::TryGetNumberField(FStringView Name, float& OutNumber) const
{
	return TryGetNumberAs(Name, OutNumber);
}
bool FJsonObject::TryGetNumberField(FStringView Name, int32& OutNumber) const
{
	return TryGetNumberAs(Name, OutNumber);
}
bool FJsonObject::TryGetNumberField(FStringView Name, int64& OutNumber) const
{
	return TryGetNumberAs(Name, OutNumber);
}
bool FJsonObject::TryGetNumberField(FStringView Name, uint32& OutNumber) const
{
	return TryGetNumberAs(Name, OutNumber);
}
bool FJsonObject::TryGetNumberField(FStringView Name, uint64& OutNumber) const
{
	return TryGetNumberAs(Name, OutNumber);
}

bool FJsonObject::TryGetBoolField(FStringView Name, bool& OutBool) const
{
	const TSharedPtr<FJsonValue>* Found = FindValue(Name);
	return Found && (*Found)->TryGetBool(OutBool);
}

bool FJsonObject::TryGetArrayField(FStringView Name, const TArray<TSharedPtr<FJsonValue>>*& OutArray) const
{
	const TSharedPtr<FJsonValue>* Found = FindValue(Name);
	return Found && (*Found)->TryGetArray(OutArray);
}

void FJsonObject::SetStringField(const FString& Name, const FString& Value)
{
	Values.Add(Name, MakeShared<FJsonValueString>(Value));
}

void FJsonObject::SetNumberField(const FString& Name, double Value)
{
	Values.Add(Name, MakeShared<FJsonValueNumber>(Value));
}

void FJsonObject::SetBoolField(const FString& Name, bool Value)
{
	Values.Add(Name, MakeShared<FJsonValueBoolean>(Value));
}

void FJsonObject::SetArrayField(const FString& Name, const TArray<TSharedPtr<FJsonValue>>& Value)
{
	Values.Add(Name, MakeShared<FJsonValueArray>(Value));
}
