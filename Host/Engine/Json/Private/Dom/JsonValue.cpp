#include "Dom/JsonValue.h"

#include "Dom/JsonObject.h"
#include "Host/HostNumbers.h"
#include "Misc/CString.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <string>

// Values convert to each other where the editor converts them and nowhere else. A conversion that fails leaves its
// output alone, and those that cannot fail report it in the log and give an empty value.

DEFINE_LOG_CATEGORY(LogJson);

namespace
{
	/** Digits without exponent, as short as reads back the same; whatever the locale. */
	FString NumberToText(double Number)
	{
		if (!std::isfinite(Number))
		{
			return FString(std::isnan(Number) ? TEXT("nan") : Number > 0.0 ? TEXT("inf") : TEXT("-inf"));
		}
		return HostNumberToText(Number == 0.0 ? 0.0 : Number, std::chars_format::fixed);
	}

	/** The text as bytes for the number parsers, empty when it cannot be a number. A leading plus is dropped. */
	// Nothing but visible ASCII can be a number, and the parsers below take bytes.
	std::string ToNumberBytes(const FString& Text)
	{
		std::string Bytes;
		for (const TCHAR Char : Text)
		{
			if (Char < 0x21 || Char > 0x7E)
			{
				return std::string();
			}
			Bytes.push_back(char(Char));
		}
		// from_chars knows no plus.
		if (Bytes.size() > 1 && Bytes[0] == '+' && Bytes[1] != '-')
		{
			Bytes.erase(0, 1);
		}
		return Bytes;
	}

	template <typename T>
	bool ParseWhole(const std::string& Bytes, T& OutNumber)
	{
		const char* End = Bytes.data() + Bytes.size();
		T Number{};
		const std::from_chars_result Result = std::from_chars(Bytes.data(), End, Number);
		if (Bytes.empty() || Result.ec != std::errc() || Result.ptr != End)
		{
			return false;
		}
		OutNumber = Number;
		return true;
	}
}

const TCHAR* LexToString(EJson Type)
{
	switch (Type)
	{
	case EJson::None:
		return TEXT("None");
	case EJson::Null:
		return TEXT("Null");
	case EJson::String:
		return TEXT("String");
	case EJson::Number:
		return TEXT("Number");
	case EJson::Boolean:
		return TEXT("Boolean");
	case EJson::Array:
		return TEXT("Array");
	case EJson::Object:
		return TEXT("Object");
	}
	return TEXT("");
}

void FJsonValue::LogConversion(const TCHAR* Wanted) const
{
	UE_LOG(LogJson, Error, TEXT("Json Value of type '%s' used as a '%s'."), LexToString(Type), Wanted);
}

FString FJsonValue::AsString() const
{
	FString Result;
	if (!TryGetString(Result))
	{
		LogConversion(TEXT("String"));
	}
	return Result;
}

double FJsonValue::AsNumber() const
{
	double Result = 0.0;
	if (!TryGetNumber(Result))
	{
		LogConversion(TEXT("Number"));
	}
	return Result;
}

bool FJsonValue::AsBool() const
{
	bool bResult = false;
	if (!TryGetBool(bResult))
	{
		LogConversion(TEXT("Boolean"));
	}
	return bResult;
}

const TArray<TSharedPtr<FJsonValue>>& FJsonValue::AsArray() const
{
	static const TArray<TSharedPtr<FJsonValue>> Empty;
	const TArray<TSharedPtr<FJsonValue>>* Result = &Empty;
	if (!TryGetArray(Result))
	{
		LogConversion(TEXT("Array"));
	}
	return *Result;
}

const TSharedPtr<FJsonObject>& FJsonValue::AsObject() const
{
	static const TSharedPtr<FJsonObject> Empty;
	const TSharedPtr<FJsonObject>* Result = &Empty;
	if (!TryGetObject(Result))
	{
		LogConversion(TEXT("Object"));
	}
	return *Result;
}

bool FJsonValue::TryGetNumber(float& OutNumber) const
{
	double Number = 0.0;
	if (!TryGetNumber(Number))
	{
		return false;
	}
	OutNumber = float(Number);
	return true;
}

template <typename T>
// 1. Digits that were kept exactly: beyond 2 to the 53rd a double would give a neighbour. 2. Else the number, rounded, if it
// fits.
bool FJsonValue::TryGetInteger(T& OutNumber) const
{
	// Whole numbers beyond 2 to the 53 do not fit into a double, so they are kept beside it.
	int64 Exact = 0;
	if (TryGetExactInteger(Exact))
	{
		const bool bFits = std::is_unsigned_v<T>
			? Exact >= 0 && uint64(Exact) <= uint64(std::numeric_limits<T>::max())
			: Exact >= int64(std::numeric_limits<T>::min()) && Exact <= int64(std::numeric_limits<T>::max());
		if (bFits)
		{
			OutNumber = T(Exact);
		}
		return bFits;
	}
	double Number = 0.0;
	if (!TryGetNumber(Number))
	{
		return false;
	}
	const double Rounded = std::round(Number);
	// 2 to the number of value bits: exact as a double, unlike the largest value itself.
	const double Limit = std::ldexp(1.0, std::numeric_limits<T>::digits);
	if (!(Rounded < Limit) || !(Rounded >= (std::is_unsigned_v<T> ? 0.0 : -Limit)))
	{
		return false;
	}
	OutNumber = T(Rounded);
	return true;
}

bool FJsonValue::TryGetNumber(int8& OutNumber) const
{
	return TryGetInteger(OutNumber);
}
bool FJsonValue::TryGetNumber(int16& OutNumber) const
{
	return TryGetInteger(OutNumber);
}
bool FJsonValue::TryGetNumber(int32& OutNumber) const
{
	return TryGetInteger(OutNumber);
}
bool FJsonValue::TryGetNumber(int64& OutNumber) const
{
	return TryGetInteger(OutNumber);
}
bool FJsonValue::TryGetNumber(uint8& OutNumber) const
{
	return TryGetInteger(OutNumber);
}
bool FJsonValue::TryGetNumber(uint16& OutNumber) const
{
	return TryGetInteger(OutNumber);
}
bool FJsonValue::TryGetNumber(uint32& OutNumber) const
{
	return TryGetInteger(OutNumber);
}
bool FJsonValue::TryGetNumber(uint64& OutNumber) const
{
	return TryGetInteger(OutNumber);
}

// Order counts in arrays and not in objects. Depth is what the reader allows, so recursion is safe.
bool FJsonValue::CompareEqual(const FJsonValue& A, const FJsonValue& B)
{
	if (A.Type != B.Type)
	{
		return false;
	}
	const auto SameValue = [](const TSharedPtr<FJsonValue>& Left, const TSharedPtr<FJsonValue>& Right)
	{ return Left && Right ? CompareEqual(*Left, *Right) : Left == Right; };
	switch (A.Type)
	{
	case EJson::None:
	case EJson::Null:
		return true;
	case EJson::String:
		return A.AsString().Equals(B.AsString());
	case EJson::Number:
		return A.AsNumber() == B.AsNumber();
	case EJson::Boolean:
		return A.AsBool() == B.AsBool();
	case EJson::Array:
	{
		const TArray<TSharedPtr<FJsonValue>>& Left = A.AsArray();
		const TArray<TSharedPtr<FJsonValue>>& Right = B.AsArray();
		bool bSame = Left.Num() == Right.Num();
		for (int32 Index = 0; bSame && Index < Left.Num(); ++Index)
		{
			bSame = SameValue(Left[Index], Right[Index]);
		}
		return bSame;
	}
	case EJson::Object:
	{
		const TSharedPtr<FJsonObject>& Left = A.AsObject();
		const TSharedPtr<FJsonObject>& Right = B.AsObject();
		if (!Left || !Right)
		{
			return Left == Right;
		}
		bool bSame = Left->Values.Num() == Right->Values.Num();
		for (const auto& Pair : Left->Values)
		{
			const TSharedPtr<FJsonValue>* Other = Right->Values.Find(Pair.Key);
			bSame = bSame && Other && SameValue(Pair.Value, *Other);
		}
		return bSame;
	}
	}
	return false;
}

bool FJsonValueString::TryGetString(FString& OutString) const
{
	OutString = Value;
	return true;
}

bool FJsonValueString::TryGetNumber(double& OutNumber) const
{
	double Number = 0.0;
	if (!ParseWhole(ToNumberBytes(Value), Number) || !std::isfinite(Number))
	{
		return false;
	}
	OutNumber = Number;
	return true;
}

bool FJsonValueString::TryGetExactInteger(int64& OutNumber) const
{
	return ParseWhole(ToNumberBytes(Value), OutNumber);
}

bool FJsonValueString::TryGetBool(bool& OutBool) const
{
	OutBool = Value.ToBool();
	return true;
}

bool FJsonValueNumber::TryGetString(FString& OutString) const
{
	OutString = NumberToText(Value);
	return true;
}

bool FJsonValueNumber::TryGetNumber(double& OutNumber) const
{
	OutNumber = Value;
	return true;
}

bool FJsonValueNumber::TryGetBool(bool& OutBool) const
{
	OutBool = Value != 0.0;
	return true;
}

bool FJsonValueBoolean::TryGetString(FString& OutString) const
{
	OutString = Value ? TEXT("true") : TEXT("false");
	return true;
}

bool FJsonValueBoolean::TryGetNumber(double& OutNumber) const
{
	OutNumber = Value ? 1.0 : 0.0;
	return true;
}

bool FJsonValueBoolean::TryGetBool(bool& OutBool) const
{
	OutBool = Value;
	return true;
}

bool FJsonValueArray::TryGetArray(const TArray<TSharedPtr<FJsonValue>>*& OutArray) const
{
	OutArray = &Value;
	return true;
}

bool FJsonValueObject::TryGetObject(const TSharedPtr<FJsonObject>*& OutObject) const
{
	OutObject = &Value;
	return true;
}
