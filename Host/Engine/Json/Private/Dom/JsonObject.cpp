#include "Dom/JsonObject.h"

#include <cmath>

const TSharedPtr<FJsonValue>* FJsonObject::FindValue(FStringView Name) const
{
	const TSharedPtr<FJsonValue>* Found = Values.Find(FString(Name));
	return Found && Found->IsValid() ? Found : nullptr;
}

TSharedPtr<FJsonValue> FJsonObject::TryGetField(FStringView Name) const
{
	const TSharedPtr<FJsonValue>* Found = FindValue(Name);
	return Found ? *Found : nullptr;
}

bool FJsonObject::HasField(FStringView Name) const
{
	return FindValue(Name) != nullptr;
}

bool FJsonObject::HasFieldOfType(FStringView Name, EJson Type) const
{
	const TSharedPtr<FJsonValue>* Found = FindValue(Name);
	return Found && (*Found)->Type == Type;
}

TSharedPtr<FJsonValue> FJsonObject::GetFieldOfType(FStringView Name, EJson Type) const
{
	const TSharedPtr<FJsonValue>* Found = FindValue(Name);
	if (Found && (Type == EJson::None || (*Found)->Type == Type))
	{
		return *Found;
	}
	if (Found)
	{
		UE_LOG(LogJson, Error, TEXT("Field %s is of the wrong type."), *FString(Name));
	}
	else
	{
		UE_LOG(LogJson, Error, TEXT("Field %s was not found."), *FString(Name));
	}
	return MakeShared<FJsonValueNull>();
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

bool FJsonObject::TryGetObjectField(FStringView Name, const TSharedPtr<FJsonObject>*& OutObject) const
{
	const TSharedPtr<FJsonValue>* Found = FindValue(Name);
	return Found && (*Found)->TryGetObject(OutObject);
}

bool FJsonObject::TryGetStringArrayField(FStringView Name, TArray<FString>& OutArray) const
{
	const TArray<TSharedPtr<FJsonValue>>* Elements = nullptr;
	if (!TryGetArrayField(Name, Elements))
	{
		return false;
	}
	TArray<FString> Strings;
	for (const TSharedPtr<FJsonValue>& Element : *Elements)
	{
		FString String;
		if (!Element || !Element->TryGetString(String))
		{
			return false;
		}
		Strings.Add(MoveTemp(String));
	}
	OutArray = MoveTemp(Strings);
	return true;
}

FString FJsonObject::GetStringField(FStringView Name) const
{
	return GetField<EJson::None>(Name)->AsString();
}

double FJsonObject::GetNumberField(FStringView Name) const
{
	return GetField<EJson::None>(Name)->AsNumber();
}

int32 FJsonObject::GetIntegerField(FStringView Name) const
{
	const double Number = std::trunc(GetNumberField(Name));
	return Number >= -2147483648.0 && Number <= 2147483647.0 ? int32(Number) : 0;
}

bool FJsonObject::GetBoolField(FStringView Name) const
{
	return GetField<EJson::None>(Name)->AsBool();
}

const TArray<TSharedPtr<FJsonValue>>& FJsonObject::GetArrayField(FStringView Name) const
{
	return GetField<EJson::Array>(Name)->AsArray();
}

const TSharedPtr<FJsonObject>& FJsonObject::GetObjectField(FStringView Name) const
{
	return GetField<EJson::Object>(Name)->AsObject();
}

void FJsonObject::SetField(const FString& Name, const TSharedPtr<FJsonValue>& Value)
{
	Values.Add(Name, Value ? Value : TSharedPtr<FJsonValue>(MakeShared<FJsonValueNull>()));
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

void FJsonObject::SetObjectField(const FString& Name, const TSharedPtr<FJsonObject>& Value)
{
	if (Value)
	{
		Values.Add(Name, MakeShared<FJsonValueObject>(Value));
	}
	else
	{
		Values.Add(Name, MakeShared<FJsonValueNull>());
	}
}

void FJsonObject::RemoveField(FStringView Name)
{
	Values.Remove(FString(Name));
}
