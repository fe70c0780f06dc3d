#include "Dom/JsonObject.h"
#include "Serialization/JsonReader.h"
#include "Serialization/JsonSerializer.h"
#include "Support/Base/Printers.h"

namespace
{
	TSharedPtr<FJsonObject> ParseObject(const TCHAR* Text)
	{
		TSharedPtr<FJsonObject> Object;
		EXPECT_TRUE(FJsonSerializer::Deserialize(TJsonReaderFactory<>::Create(Text), Object));
		return Object;
	}
}

TEST(JsonFields, NamesIgnoreCaseAndTheLastValueWins)
{
	const TSharedPtr<FJsonObject> Object = ParseObject(TEXT("{\"First\":1,\"b\":2,\"first\":3}"));
	double Number = 0.0;
	EXPECT_TRUE(Object->TryGetNumberField(TEXT("FIRST"), Number));
	EXPECT_EQ(Number, 3.0);
	std::string Order;
	for (const auto& Pair : Object->Values)
	{
		Order += Utf8(FString(*Pair.Key)) + " ";
	}
	EXPECT_EQ(Order, "First b ") << "order and spelling of the first appearance";
}

TEST(JsonFields, Conversions)
{
	const TSharedPtr<FJsonObject> Object =
		ParseObject(TEXT("{\"two\":2,\"half\":-2.5,\"yes\":true,\"text\":\"x\",\"digits\":\"42\",\"on\":\"on\",\"big\":"
						 "\"9007199254740993\",\"null\":null,\"list\":[],\"map\":{},\"huge\":1e300,\"tiny\":0.1}"));
	struct FCase
	{
		const TCHAR* Name;
		const char* Text; // Null: no conversion.
		const char* Number; // The same, as text.
		const char* Bool;
	};
	const FCase Cases[] = {
		{ TEXT("two"), "2", "2", "true" },
		{ TEXT("half"), "-2.5", "-2.5", "true" },
		{ TEXT("tiny"), "0.1", "0.1", "true" },
		{ TEXT("yes"), "true", "1", "true" },
		{ TEXT("text"), "x", nullptr, "false" },
		{ TEXT("digits"), "42", "42", "true" },
		{ TEXT("on"), "on", nullptr, "true" },
		{ TEXT("null"), nullptr, nullptr, nullptr },
		{ TEXT("list"), nullptr, nullptr, nullptr },
		{ TEXT("map"), nullptr, nullptr, nullptr },
		{ TEXT("missing"), nullptr, nullptr, nullptr },
	};
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE(Utf8(Case.Name));
		FString Text = TEXT("untouched");
		EXPECT_EQ(Object->TryGetStringField(Case.Name, Text), Case.Text != nullptr);
		EXPECT_EQ(Utf8(Text), Case.Text ? Case.Text : "untouched");
		double Number = 77.0;
		EXPECT_EQ(Object->TryGetNumberField(Case.Name, Number), Case.Number != nullptr);
		EXPECT_EQ(Number, Case.Number ? std::stod(Case.Number) : 77.0);
		bool bValue = false;
		EXPECT_EQ(Object->TryGetBoolField(Case.Name, bValue), Case.Bool != nullptr);
		EXPECT_EQ(bValue, Case.Bool && Case.Bool == std::string("true"));
	}
	int32 Small = 5;
	int64 Wide = 5;
	uint32 Positive = 5;
	EXPECT_TRUE(Object->TryGetNumberField(TEXT("half"), Small));
	EXPECT_EQ(Small, -3);
	EXPECT_FALSE(Object->TryGetNumberField(TEXT("huge"), Small));
	EXPECT_FALSE(Object->TryGetNumberField(TEXT("big"), Small));
	EXPECT_FALSE(Object->TryGetNumberField(TEXT("half"), Positive));
	EXPECT_EQ(Small, -3);
	EXPECT_TRUE(Object->TryGetNumberField(TEXT("big"), Wide));
	EXPECT_EQ(Wide, 9007199254740993ll) << "digits in a text are not squeezed through a double";
}
