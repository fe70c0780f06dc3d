#include "Markdown/CodeLines.h"

#include "Support/Base/Printers.h"

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

using namespace Velmora::Markdown;

namespace
{
	TArray<TArray<FCodePiece>> SplitCode(const std::string& Code, const char* Language)
	{
		const FString Text(UTF8_TO_TCHAR(Code.c_str()));
		return SplitIntoCodeLines(Text, TokenizeCode(Text, FString(Language)));
	}

	/** "Keyword[int] Default[ a]" for each line. */
	std::vector<std::string> ShowLines(const TArray<TArray<FCodePiece>>& Lines)
	{
		constexpr const char* Names[] = { "Default", "Keyword", "String", "Comment", "Number", "Operator", "Preprocessor", "Type",
			"Function" };
		std::vector<std::string> Shown;
		for (const TArray<FCodePiece>& Line : Lines)
		{
			std::string& Out = Shown.emplace_back();
			for (const FCodePiece& Piece : Line)
			{
				Out += (Out.empty() ? "" : " ") + std::string(Names[static_cast<int>(Piece.Type)]) + "[" + Utf8(Piece.Text) + "]";
			}
		}
		return Shown;
	}
}

TEST(CodeLines, TokensAreCutAtLineEndsAndKeepTheirColour)
{
	struct FCase
	{
		const char* Language;
		const char* Code;
		std::vector<std::string> Lines;
	};
	const FCase Cases[] = {
		{ "cpp", "f(\n\t\tg);", { "Function[f] Operator[(]", "Default[\t\tg] Operator[);]" } },
		{ "cpp", "a /* b\n  c\nd */ e", { "Default[a ] Comment[/* b]", "Comment[  c]", "Comment[d */ ] Default[e]" } },
		{ "cpp", "x = 1'000;\n  y = 2;", { "Default[x ] Operator[= ] Number[1] String['000;]", "String[  y = 2;]" } },
		{ "cpp", "\"open", { "String[\"open]" } },
		{ "cpp", "// c\r\nint i;\r", { "Comment[// c]", "Keyword[int ] Default[i] Operator[;]", "Default[]" } },
		{ "cpp", "\n\n  \n", { "Default[]", "Default[]", "Default[  ]", "Default[]" } },
		{ "python", "'''a\n  b'''\n", { "String['''a]", "String[  b''']", "Default[]" } },
		{ "json", "{\n  \"a\": TRUE\n}", { "Operator[{]", "String[  \"a\"] Operator[: ] Keyword[TRUE]", "Operator[}]" } },
		{ "sh", "if x\n\tdo", { "Default[if x]", "Default[\tdo]" } },
		{ "sh", "", { "Default[]" } },
	};
	for (const FCase& Case : Cases)
	{
		EXPECT_EQ(ShowLines(SplitCode(Case.Code, Case.Language)), Case.Lines) << Case.Code;
	}
}

TEST(CodeLines, NoCharacterIsLost)
{
	constexpr const char* Words[] = { "int", " ", "\t", "\n", "\r\n", "\r", "'", "\"", "/*", "*/", "//", "#", "\\", "1'0", "'''", "x", "(",
		"true", "TRUE" };
	constexpr const char* Languages[] = { "cpp", "py", "json", "" };
	std::mt19937 Random(7);
	for (int Round = 0; Round < 3000; ++Round)
	{
		std::string Code;
		for (unsigned Count = Random() % 20; Count > 0; --Count)
		{
			Code += Words[Random() % std::size(Words)];
		}
		const char* const Language = Languages[Random() % std::size(Languages)];
		TArray<FString> Expected;
		FString(UTF8_TO_TCHAR(Code.c_str())).ParseIntoArrayLines(Expected, /*bCullEmpty*/ false);
		if (Expected.IsEmpty())
		{
			Expected.AddDefaulted();
		}
		const TArray<TArray<FCodePiece>> Lines = SplitCode(Code, Language);
		ASSERT_EQ(Lines.Num(), Expected.Num()) << Code;
		for (int32 Index = 0; Index < Lines.Num(); ++Index)
		{
			FString Line;
			for (const FCodePiece& Piece : Lines[Index])
			{
				Line += Piece.Text;
			}
			ASSERT_EQ(Utf8(Line), Utf8(Expected[Index])) << Code;
		}
	}
}
