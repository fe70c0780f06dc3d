#include "Support/Base/Printers.h"

#include <ostream>

std::string Utf8(FStringView Text)
{
	std::string Result;
	FTCHARToUTF8::Append(Result, Text);
	return Result;
}

std::string Utf8(const TCHAR* Text)
{
	return Utf8(FStringView(Text));
}

std::string Utf8(const FString& Text)
{
	return Utf8(FStringView(Text));
}

std::string Utf8(const FText& Text)
{
	return Utf8(FStringView(Text.ToString()));
}

std::string Utf8(const FName& Name)
{
	return Utf8(FStringView(Name.GetText()));
}

std::string Utf8(const TArray<FString>& Texts)
{
	std::string Result;
	for (const FString& Text : Texts)
	{
		Result += (Result.empty() ? "\"" : ", \"") + Utf8(Text) + "\"";
	}
	return Result;
}

void PrintTo(const FString& Value, std::ostream* Out)
{
	*Out << '"' << Utf8(Value) << '"';
}

void PrintTo(const FText& Value, std::ostream* Out)
{
	*Out << '"' << Utf8(Value) << '"';
	if (const TOptional<FString> Key = FTextInspector::GetKey(Value))
	{
		*Out << " (" << Utf8(FTextInspector::GetNamespace(Value).GetValue()) << ", " << Utf8(*Key) << ")";
	}
}

void PrintTo(const FName& Value, std::ostream* Out)
{
	*Out << Utf8(Value);
}

void PrintTo(const FLinearColor& Value, std::ostream* Out)
{
	*Out << Utf8(Value.ToString());
}

void PrintTo(const FColor& Value, std::ostream* Out)
{
	*Out << Utf8(Value.ToString());
}

void PrintTo(const FDateTime& Value, std::ostream* Out)
{
	*Out << Utf8(Value.ToString(TEXT("%Y-%m-%d %H:%M:%S.%s"))) << " (" << Value.GetTicks() << " ticks)";
}

void PrintTo(const FTimespan& Value, std::ostream* Out)
{
	*Out << Utf8(Value.ToString()) << " (" << Value.GetTicks() << " ticks)";
}

void PrintTo(const FIntPoint& Value, std::ostream* Out)
{
	*Out << "X=" << Value.X << " Y=" << Value.Y;
}

void PrintTo(const FGuid& Value, std::ostream* Out)
{
	*Out << Utf8(Value.ToString());
}

void UE::Math::PrintTo(const TVector2<double>& Value, std::ostream* Out)
{
	*Out << "X=" << Value.X << " Y=" << Value.Y;
}

void UE::Math::PrintTo(const TVector2<float>& Value, std::ostream* Out)
{
	*Out << "X=" << Value.X << " Y=" << Value.Y;
}

void TestPrinting::Put(std::ostream& Out, const char* Text)
{
	Out << Text;
}

void TestPrinting::PutPointer(std::ostream& Out, const void* Pointer)
{
	Out << Pointer;
}
