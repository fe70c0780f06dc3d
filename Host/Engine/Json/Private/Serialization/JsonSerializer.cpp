#include "Serialization/JsonSerializer.h"

namespace
{
	bool WriteObjectBody(const FJsonObject& Object, FHostJsonWriter& Writer, int32 Depth);
	bool WriteArrayBody(const TArray<TSharedPtr<FJsonValue>>& Array, FHostJsonWriter& Writer, int32 Depth);

	/** The depth is bounded, so recursion is too. */
	bool WriteOne(const TSharedPtr<FJsonValue>& Value, FHostJsonWriter& Writer, int32 Depth)
	{
		switch (Value ? Value->Type : EJson::Null)
		{
		case EJson::String:
			Writer.WriteValue(Value->AsString());
			return true;
		case EJson::Number:
			Writer.WriteValue(Value->AsNumber());
			return true;
		case EJson::Boolean:
			Writer.WriteValue(Value->AsBool());
			return true;
		case EJson::Array:
			return WriteArrayBody(Value->AsArray(), Writer, Depth);
		case EJson::Object:
			if (const TSharedPtr<FJsonObject>& Object = Value->AsObject())
			{
				return WriteObjectBody(*Object, Writer, Depth);
			}
			break;
		case EJson::None:
		case EJson::Null:
			break;
		}
		Writer.WriteNull();
		return true;
	}

	bool WriteObjectBody(const FJsonObject& Object, FHostJsonWriter& Writer, int32 Depth)
	{
		// What is written must be readable again, and the reader goes no deeper.
		if (Depth >= FHostJsonReader::MaxDepth)
		{
			return false;
		}
		Writer.WriteObjectStart();
		for (const auto& Pair : Object.Values)
		{
			Writer.WriteIdentifierPrefix(Pair.Key);
			if (!WriteOne(Pair.Value, Writer, Depth + 1))
			{
				return false;
			}
		}
		Writer.WriteObjectEnd();
		return true;
	}

	bool WriteArrayBody(const TArray<TSharedPtr<FJsonValue>>& Array, FHostJsonWriter& Writer, int32 Depth)
	{
		if (Depth >= FHostJsonReader::MaxDepth)
		{
			return false;
		}
		Writer.WriteArrayStart();
		for (const TSharedPtr<FJsonValue>& Element : Array)
		{
			if (!WriteOne(Element, Writer, Depth + 1))
			{
				return false;
			}
		}
		Writer.WriteArrayEnd();
		return true;
	}

	bool Finish(FHostJsonWriter& Writer, bool bWritten, bool bCloseWriter)
	{
		UE_CLOG(!bWritten, LogJson, Error, TEXT("The values nest deeper than %d levels."), FHostJsonReader::MaxDepth);
		return bWritten && (!bCloseWriter || Writer.Close());
	}

	void ReportOther(FHostJsonReader& Reader, const FJsonValue& Value, const TCHAR* Wanted)
	{
		Reader.SetErrorMessage(FString::Printf(TEXT("The outermost value is of type '%s', not '%s'."), LexToString(Value.Type), Wanted));
	}
}

bool FJsonSerializer::Deserialize(FHostJsonReader& Reader, TSharedPtr<FJsonValue>& OutValue)
{
	OutValue = Reader.ReadAll();
	return OutValue.IsValid();
}

// A whole text of another kind is an error with words, and leaves nothing of an earlier value.
bool FJsonSerializer::Deserialize(FHostJsonReader& Reader, TSharedPtr<FJsonObject>& OutObject)
{
	OutObject.Reset();
	const TSharedPtr<FJsonValue> Value = Reader.ReadAll();
	if (!Value)
	{
		return false;
	}
	const TSharedPtr<FJsonObject>* Object = nullptr;
	if (!Value->TryGetObject(Object))
	{
		ReportOther(Reader, *Value, TEXT("Object"));
		return false;
	}
	OutObject = *Object;
	return true;
}

bool FJsonSerializer::Deserialize(FHostJsonReader& Reader, TArray<TSharedPtr<FJsonValue>>& OutArray)
{
	OutArray.Reset();
	const TSharedPtr<FJsonValue> Value = Reader.ReadAll();
	if (!Value)
	{
		return false;
	}
	const TArray<TSharedPtr<FJsonValue>>* Array = nullptr;
	if (!Value->TryGetArray(Array))
	{
		ReportOther(Reader, *Value, TEXT("Array"));
		return false;
	}
	OutArray = *Array;
	return true;
}

bool FJsonSerializer::Serialize(const TSharedRef<FJsonObject>& Object, FHostJsonWriter& Writer, bool bCloseWriter)
{
	return Finish(Writer, WriteObjectBody(*Object, Writer, 0), bCloseWriter);
}

bool FJsonSerializer::Serialize(const TArray<TSharedPtr<FJsonValue>>& Array, FHostJsonWriter& Writer, bool bCloseWriter)
{
	return Finish(Writer, WriteArrayBody(Array, Writer, 0), bCloseWriter);
}

bool FJsonSerializer::Serialize(const TSharedPtr<FJsonValue>& Value, FStringView Name, FHostJsonWriter& Writer, bool bCloseWriter)
{
	if (!Name.IsEmpty())
	{
		Writer.WriteIdentifierPrefix(Name);
	}
	return Finish(Writer, WriteOne(Value, Writer, 0), bCloseWriter);
}
