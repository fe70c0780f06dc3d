#include "Markdown/CodeLines.h"

#include "Support/Base/Printers.h"

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
	const std::tuple<const char*, const char*, std::vector<std::string>> Cases[] = {
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
	for (const auto& [Language, Code, Lines] : Cases)
	{
		EXPECT_EQ(ShowLines(SplitCode(Code, Language)), Lines) << Code;
	}
}
