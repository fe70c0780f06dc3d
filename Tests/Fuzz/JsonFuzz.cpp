#include "Fuzz/FuzzText.h"
#include "Policies/CondensedJsonPrintPolicy.h"
#include "Serialization/JsonReader.h"
#include "Serialization/JsonSerializer.h"
#include "Serialization/JsonWriter.h"

namespace
{
	bool Read(const FString& Text, TSharedPtr<FJsonValue>& OutValue)
	{
		return FJsonSerializer::Deserialize(TJsonReaderFactory<>::Create(Text), OutValue);
	}

	FString Write(const TSharedPtr<FJsonValue>& Value)
	{
		FString Text;
		FUZZ_CHECK(
			FJsonSerializer::Serialize(Value, FString(), TJsonWriterFactory<TCHAR, TCondensedJsonPrintPolicy<TCHAR>>::Create(&Text)));
		return Text;
	}
}

// What can be read can be written, and reads back as the same.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
	TSharedPtr<FJsonValue> Value;
	if (Read(MakeFuzzText(FFuzzInput(Data, Size).TakeRest()), Value))
	{
		const FString Written = Write(Value);
		TSharedPtr<FJsonValue> Again;
		FUZZ_CHECK(Read(Written, Again));
		FUZZ_CHECK(Write(Again).Equals(Written));
	}
	return 0;
}
