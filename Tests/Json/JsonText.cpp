#include "Dom/JsonObject.h"
#include "Host/HostLog.h"
#include "Policies/CondensedJsonPrintPolicy.h"
#include "Serialization/JsonReader.h"
#include "Serialization/JsonSerializer.h"
#include "Serialization/JsonWriter.h"
#include "Support/Base/Printers.h"

#include <clocale>
#include <limits>
#include <utility>
#include <string>

namespace
{
	TSharedPtr<FJsonValue> Parse(const FString& Text, FString* OutError = nullptr)
	{
		TSharedPtr<FJsonValue> Value;
		const TSharedRef<TJsonReader<>> Reader = TJsonReaderFactory<>::Create(Text);
		const bool bRead = FJsonSerializer::Deserialize(Reader, Value);
		EXPECT_EQ(bRead, Value.IsValid());
		EXPECT_EQ(bRead, Reader->GetErrorMessage().IsEmpty());
		if (OutError)
		{
			*OutError = Reader->GetErrorMessage();
		}
		return Value;
	}

	std::string Pretty(const TSharedPtr<FJsonValue>& Value)
	{
		FString Out;
		EXPECT_TRUE(FJsonSerializer::Serialize(Value, FString(), TJsonWriterFactory<>::Create(&Out)));
		return Utf8(Out);
	}

	std::string Condensed(const TSharedPtr<FJsonValue>& Value)
	{
		FString Out;
		EXPECT_TRUE(
			FJsonSerializer::Serialize(Value, FString(), TJsonWriterFactory<TCHAR, TCondensedJsonPrintPolicy<TCHAR>>::Create(&Out)));
		return Utf8(Out);
	}

	FString Repeat(const TCHAR* Text, int32 Count)
	{
		FString Result;
		for (int32 Index = 0; Index < Count; ++Index)
		{
			Result += Text;
		}
		return Result;
	}
}

TEST(JsonText, LayoutOfArrays)
{
	const std::pair<const TCHAR*, const char*> Cases[] = {
		{ TEXT("{}"), "{\r\n}" },
		{ TEXT("[]"), "[]" },
		{ TEXT("[true,null,0]"), "[ true, null, 0 ]" },
		{ TEXT("[[1],[]]"), "[\r\n\t[ 1 ],\r\n\t[]\r\n]" },
		{ TEXT("[1,\"a\",2,{}]"), "[ 1,\r\n\t\"a\",\r\n\t2,\r\n\t{\r\n\t}\r\n]" },
		{ TEXT("[\"a\",1]"), "[\r\n\t\"a\",\r\n\t1 ]" },
		{ TEXT("{\"o\":{}}"), "{\r\n\t\"o\":\r\n\t{\r\n\t}\r\n}" },
		{ TEXT("\"x\""), "\"x\"" },
	};
	for (const auto& [Text, Expected] : Cases)
	{
		EXPECT_EQ(Pretty(Parse(Text)), Expected) << Utf8(Text);
		EXPECT_EQ(Condensed(Parse(Text)), Utf8(Text));
	}
}

TEST(JsonText, NumbersAndEscapes)
{
	struct FCase
	{
		double Number;
		const char* Text;
	};
	const char* const OldLocale = std::setlocale(LC_NUMERIC, "de_DE.UTF-8"); // Where it exists, commas must not creep in.
	for (const FCase& Case : { FCase{ 2.0, "2" }, FCase{ 0.1, "0.10000000000000001" }, FCase{ -0.0, "-0" }, FCase{ 1e21, "1e+21" },
			 FCase{ 9007199254740993.0, "9007199254740992" }, FCase{ 5e-324, "4.9406564584124654e-324" },
			 FCase{ 123456789012345680.0, "1.2345678901234568e+17" }, FCase{ std::numeric_limits<double>::infinity(), "null" },
			 FCase{ std::numeric_limits<double>::quiet_NaN(), "null" } })
	{
		EXPECT_EQ(Condensed(MakeShared<FJsonValueNumber>(Case.Number)), Case.Text);
	}
	EXPECT_EQ(Condensed(Parse(TEXT("[1.5,1e2,-0.25E-1]"))), "[1.5,100,-0.025000000000000001]");
	EXPECT_EQ(Condensed(Parse(TEXT("[0e90,-0.00E+400,0e-999999999,0.0e23,\"0e5\\\"0e5\",10e1,0.0001e90]"))),
		"[0,-0,0,0,\"0e5\\\"0e5\",100,1e+86]");
	const FString LongZero = FString(TEXT("0.")) + FString::ChrN(90, TEXT('0'));
	const FString Long = FString::ChrN(60, TEXT('9'));
	EXPECT_EQ(Condensed(Parse(TEXT("[") + LongZero + TEXT(",-") + LongZero + TEXT(",") + LongZero + TEXT("1e91,") + Long + TEXT("e240]"))),
		"[0,-0,1,1.0000000000000001e+300]");
	FString TooBig;
	EXPECT_FALSE(Parse(TEXT("[") + Long + TEXT("e308]"), &TooBig));
	EXPECT_EQ(Utf8(TooBig), "Number too big to be stored in double. Line: 1 Column: 2");
	EXPECT_EQ(Condensed(Parse(TEXT("[0,-0,-0.0,-1e-999,-1,{\"a\":-0}]"))), "[0,-0,-0,-0,-1,{\"a\":-0}]");
	std::setlocale(LC_NUMERIC, OldLocale ? OldLocale : "C");
	const FString Controls(FStringView(TEXT("\0\x01\b\f\n\r\t\x1F\x7F/\u2028"), 11));
	EXPECT_EQ(Condensed(MakeShared<FJsonValueString>(Controls)), "\"\\u0000\\u0001\\b\\f\\n\\r\\t\\u001f\x7F/\xE2\x80\xA8\"");
	EXPECT_EQ(Utf8(Parse(FString(Condensed(MakeShared<FJsonValueString>(Controls)).c_str()))->AsString()), Utf8(Controls));
}

TEST(JsonText, RefusesWhatIsNotJson)
{
	const TCHAR* const Bad[] = { TEXT(""), TEXT("  "), TEXT("{"), TEXT("[1,]"), TEXT("{\"a\":1,}"), TEXT("{\"a\" 1}"), TEXT("{a:1}"),
		TEXT("{'a':1}"), TEXT("[1 2]"), TEXT("01"), TEXT("+1"), TEXT(".5"), TEXT("1."), TEXT("- 1"), TEXT("1e"), TEXT("nul"), TEXT("True"),
		TEXT("NaN"), TEXT("\"abc"), TEXT("\"a\nb\""), TEXT("\"\\x\""), TEXT("\"\\u12g4\""), TEXT("\"\\ud800"), TEXT("// c\n1"), TEXT("1 2"),
		TEXT("{}x"), TEXT("]"), TEXT("\uFEFF{}x"), TEXT("[1]]"), TEXT("1e999") };
	for (const TCHAR* Text : Bad)
	{
		FString Error;
		EXPECT_FALSE(Parse(Text, &Error).IsValid()) << Utf8(Text);
	}
	EXPECT_FALSE(Parse(FString(FStringView(TEXT("{}\0{}"), 5))).IsValid()) << "a null unit is not the end";
	EXPECT_FALSE(Parse(FString(FStringView(TEXT("\"a\0b\""), 5))).IsValid());
	FString Error;
	Parse(TEXT("{\n  \"a\": tru\n}"), &Error);
	EXPECT_NE(Utf8(Error).find("Line: 2 Column: "), std::string::npos) << Utf8(Error);
}

TEST(JsonText, OddTextsSurvive)
{
	const FString Lone(FStringView(TEXT("x\xD800y\xDC00"), 4));
	EXPECT_EQ(Lone.Len(), 4);
	const TSharedPtr<FJsonValue> Value = Parse(TEXT("\"") + Lone + TEXT("\""));
	ASSERT_TRUE(Value.IsValid());
	EXPECT_TRUE(Value->AsString().Equals(Lone)) << "lone surrogates come through unharmed";
	EXPECT_EQ(Parse(TEXT("\"\\u0000\\ud83d\\udc64\""))->AsString().Len(), 3);
	const TSharedPtr<FJsonValue> Escaped = Parse(TEXT("{\"k\\\\ud800\": \"x\\ud800y\\uDC00\\ud800\\ud83d\\udc64\\\\\"}"));
	ASSERT_TRUE(Escaped.IsValid()) << "half a pair may stand alone in an escape";
	EXPECT_TRUE(Escaped->AsObject()
					->Values.FindRef(TEXT("k\\ud800"))
					->AsString()
					.Equals(Lone + FString(FStringView(TEXT("\xD800\xD83D\xDC64\\"), 4))));
	const FString Long = FString::ChrN(10000000, TEXT('x'));
	EXPECT_TRUE(Parse(TEXT("[\"") + Long + TEXT("\"]"))->AsArray()[0]->AsString().Equals(Long));
}

TEST(JsonText, NestingIsBounded)
{
	EXPECT_TRUE(Parse(Repeat(TEXT("["), 512) + Repeat(TEXT("]"), 512)).IsValid());
	FString Error;
	EXPECT_FALSE(Parse(Repeat(TEXT("["), 513) + Repeat(TEXT("]"), 513), &Error).IsValid());
	EXPECT_NE(Utf8(Error).find("Nested deeper than 512 levels"), std::string::npos) << Utf8(Error);
	EXPECT_FALSE(Parse(Repeat(TEXT("["), 5000000)).IsValid());
	EXPECT_FALSE(Parse(Repeat(TEXT("{\"a\":"), 1000000)).IsValid());

	const TSharedRef<FJsonObject> Circle = MakeShared<FJsonObject>();
	Circle->Values.Add(TEXT("self"), MakeShared<FJsonValueObject>(Circle));
	FString Out;
	FHostLog::SetStderrVerbosity(ELogVerbosity::NoLogging);
	EXPECT_FALSE(FJsonSerializer::Serialize(Circle, TJsonWriterFactory<>::Create(&Out)));
	FHostLog::SetStderrVerbosity(ELogVerbosity::Warning);
	Circle->Values.Reset();
}

TEST(JsonText, WriterKeepsTheStructureWhole)
{
	FString Out;
	const TSharedRef<TJsonWriter<TCHAR, TCondensedJsonPrintPolicy<TCHAR>>> Writer =
		TJsonWriterFactory<TCHAR, TCondensedJsonPrintPolicy<TCHAR>>::Create(&Out);
	Writer->WriteObjectStart();
	Writer->WriteValue(TEXT("s"), TEXT("x"));
	Writer->WriteValue(TEXT("i"), int64(-9007199254740993));
	Writer->WriteValue(TEXT("u"), uint64(18446744073709551615ull));
	Writer->WriteValue(TEXT("b"), true);
	Writer->WriteArrayStart(TEXT("a"));
	Writer->WriteValue(1);
	Writer->WriteNull();
	Writer->WriteArrayEnd();
	EXPECT_FALSE(Writer->Close()) << "the object is open";
	Writer->WriteObjectEnd();
	EXPECT_TRUE(Writer->Close());
	EXPECT_EQ(Utf8(Out), "{\"s\":\"x\",\"i\":-9007199254740993,\"u\":18446744073709551615,\"b\":true,\"a\":[1,null]}");
	Writer->WriteValue(1);
	EXPECT_FALSE(Writer->Close()) << "nothing goes behind the whole";

	FString Wrong;
	const TSharedRef<TJsonWriter<>> Mistaken = TJsonWriterFactory<>::Create(&Wrong);
	Mistaken->WriteObjectStart();
	Mistaken->WriteValue(1);
	Mistaken->WriteArrayEnd();
	Mistaken->WriteObjectEnd();
	EXPECT_FALSE(Mistaken->Close());
}
