#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"
#include "Serialization/JsonTypes.h"
#include "Templates/SharedPointer.h"

class FJsonObject;

/**
 * A value of any kind. TryGet operations leave their output as it was when they fail; As operations log an error then
 * and give a default. Not to be changed while another thread reads.
 */
class JSON_API FJsonValue
{
public:
	virtual ~FJsonValue() = default;

	/** What the value was made as; conversions do not change it. */
	const EJson Type;

	FString AsString() const;
	double AsNumber() const;
	bool AsBool() const;
	const TArray<TSharedPtr<FJsonValue>>& AsArray() const;
	/** Null when the value is no object. */
	const TSharedPtr<FJsonObject>& AsObject() const;

	/** Numbers and booleans give their text. */
	virtual bool TryGetString(FString& OutString) const { return false; }
	/** Strings that are a number as a whole give it; booleans 0 or 1. */
	virtual bool TryGetNumber(double& OutNumber) const { return false; }
	bool TryGetNumber(float& OutNumber) const;
	/** Rounded half away from zero; fails when the number does not fit. */
	bool TryGetNumber(int8& OutNumber) const;
	bool TryGetNumber(int16& OutNumber) const;
	bool TryGetNumber(int32& OutNumber) const;
	bool TryGetNumber(int64& OutNumber) const;
	bool TryGetNumber(uint8& OutNumber) const;
	bool TryGetNumber(uint16& OutNumber) const;
	bool TryGetNumber(uint32& OutNumber) const;
	bool TryGetNumber(uint64& OutNumber) const;
	/** Numbers are true unless 0; strings go through FString::ToBool. */
	virtual bool TryGetBool(bool& OutBool) const { return false; }
	virtual bool TryGetArray(const TArray<TSharedPtr<FJsonValue>>*& OutArray) const { return false; }
	virtual bool TryGetObject(const TSharedPtr<FJsonObject>*& OutObject) const { return false; }

	bool IsNull() const { return Type == EJson::Null || Type == EJson::None; }
	/** Whether two values are of the same kind and content. Texts compare with letter case, objects ignore order. */
	static bool CompareEqual(const FJsonValue& A, const FJsonValue& B);

protected:
	explicit FJsonValue(EJson InType)
		: Type(InType)
	{
	}
	/** For integers that a double would not hold exactly. */
	virtual bool TryGetExactInteger(int64& OutNumber) const { return false; }

private:
	template <typename T>
	bool TryGetInteger(T& OutNumber) const;
	void LogConversion(const TCHAR* Wanted) const;
};

class JSON_API FJsonValueString : public FJsonValue
{
public:
	explicit FJsonValueString(const FString& InString)
		: FJsonValue(EJson::String)
		, Value(InString)
	{
	}
	explicit FJsonValueString(FString&& InString)
		: FJsonValue(EJson::String)
		, Value(MoveTemp(InString))
	{
	}
	bool TryGetString(FString& OutString) const override;
	bool TryGetNumber(double& OutNumber) const override;
	bool TryGetBool(bool& OutBool) const override;
	using FJsonValue::TryGetNumber;

protected:
	bool TryGetExactInteger(int64& OutNumber) const override;
	FString Value;
};

class JSON_API FJsonValueNumber : public FJsonValue
{
public:
	explicit FJsonValueNumber(double InNumber)
		: FJsonValue(EJson::Number)
		, Value(InNumber)
	{
	}
	bool TryGetString(FString& OutString) const override;
	bool TryGetNumber(double& OutNumber) const override;
	bool TryGetBool(bool& OutBool) const override;
	using FJsonValue::TryGetNumber;

protected:
	double Value;
};

class JSON_API FJsonValueBoolean : public FJsonValue
{
public:
	explicit FJsonValueBoolean(bool InBool)
		: FJsonValue(EJson::Boolean)
		, Value(InBool)
	{
	}
	bool TryGetString(FString& OutString) const override;
	bool TryGetNumber(double& OutNumber) const override;
	bool TryGetBool(bool& OutBool) const override;
	using FJsonValue::TryGetNumber;

protected:
	bool Value;
};

class JSON_API FJsonValueArray : public FJsonValue
{
public:
	explicit FJsonValueArray(const TArray<TSharedPtr<FJsonValue>>& InArray)
		: FJsonValue(EJson::Array)
		, Value(InArray)
	{
	}
	explicit FJsonValueArray(TArray<TSharedPtr<FJsonValue>>&& InArray)
		: FJsonValue(EJson::Array)
		, Value(MoveTemp(InArray))
	{
	}
	bool TryGetArray(const TArray<TSharedPtr<FJsonValue>>*& OutArray) const override;

protected:
	TArray<TSharedPtr<FJsonValue>> Value;
};

class JSON_API FJsonValueObject : public FJsonValue
{
public:
	explicit FJsonValueObject(TSharedPtr<FJsonObject> InObject)
		: FJsonValue(EJson::Object)
		, Value(MoveTemp(InObject))
	{
	}
	bool TryGetObject(const TSharedPtr<FJsonObject>*& OutObject) const override;

protected:
	TSharedPtr<FJsonObject> Value;
};

class JSON_API FJsonValueNull : public FJsonValue
{
public:
	FJsonValueNull()
		: FJsonValue(EJson::Null)
	{
	}
};
