#include "Markdown/CodeSyntax.h"

#include "Support/Base/Printers.h"

#include <random>
#include <string>

using namespace Velmora::Markdown;

namespace
{
	const char* NameOf(ESyntaxTokenType Type)
	{
		constexpr const char* Names[] = { "Default", "Keyword", "String", "Comment", "Number", "Operator", "Preprocessor", "Type",
			"Function" };
		return Names[static_cast<int>(Type)];
	}

	/** Without blanks, which tell nothing: "Type[FVector] Operator[;]". An end beyond the code is shown as "+1". */
	std::string Show(const TArray<FSyntaxToken>& Tokens, int32 Length)
	{
		std::string Out;
		for (const FSyntaxToken& Token : Tokens)
		{
			if (!Token.Text.TrimStartAndEnd().IsEmpty())
			{
				Out += (Out.empty() ? "" : " ") + std::string(NameOf(Token.Type)) + '[' + Utf8(Token.Text) + ']' +
					(Token.End > Length ? "+" + std::to_string(Token.End - Length) : "");
			}
		}
		return Out;
	}

	std::string ShowAll(const TArray<FSyntaxToken>& Tokens)
	{
		std::string Out;
		for (const FSyntaxToken& Token : Tokens)
		{
			Out += std::string(NameOf(Token.Type)) + '[' + Utf8(Token.Text) + ']' + std::to_string(Token.Start) + '-' +
				std::to_string(Token.End) + ' ';
		}
		return Out;
	}
}

TEST(CodeSyntax, SplitsByLanguage)
{
	const std::tuple<const char*, const char*, const char*> Cases[] = {
		{ "CPP", "FVector Pos;", "Type[FVector] Default[Pos] Operator[;]" },
		{ "cpp", "Class foo(", "Keyword[Class] Function[foo] Operator[(]" },
		{ "c++", "size_t UINT Fx uint32 int", "Type[size_t] Type[UINT] Default[Fx] Type[uint32] Keyword[int]" },
		{ "h", "a //b\nc", "Default[a] Comment[//b] Default[c]" },
		{ "hpp", "a /*b\n*/ c", "Default[a] Comment[/*b\n*/] Default[c]" },
		{ "cpp", "//", "Comment[//]" },
		{ "cpp", "x/", "Default[x] Operator[/]" },
		{ "cpp", "/*", "Comment[/*]+2" },
		{ "cpp", "/*/", "Comment[/*/]+1" },
		{ "cpp", "/*ab", "Comment[/*ab]+1" },
		{ "cpp", "x #if 1", "Default[x] Preprocessor[#if 1]" },
		{ "cpp", "\"a\\\"b\" 'c'", "String[\"a\\\"b\"] String['c']" },
		{ "cpp", "\"open", "String[\"open]+1" },
		{ "cpp", "\"open\\", "String[\"open\\]+1" },
		{ "cpp", "0x1F 1e5 .5f 1.0L 3u a.b",
			"Number[0] Default[x1F] Number[1] Default[e5] Number[.5f] Number[1.0L] Number[3u] Default[a] Operator[.] Default[b]" },
		{ "cpp", "größe(", "Function[größe] Operator[(]" },
		{ "cpp", "alignas XOR_EQ wchar_t Return brea\xe2\x84\xaa",
			"Keyword[alignas] Keyword[XOR_EQ] Keyword[wchar_t] Keyword[Return] Keyword[brea\xe2\x84\xaa]" },
		{ "cpp", "INT32 double UBox Ux _t", "Type[INT32] Keyword[double] Type[UBox] Default[Ux] Default[_t]" },
		{ "py", "False async YIELD lambda int", "Keyword[False] Keyword[async] Keyword[YIELD] Keyword[lambda] Default[int]" },
		{ "python", "def f(x): # c", "Keyword[def] Function[f] Operator[(] Default[x] Operator[)] Operator[:] Comment[# c]" },
		{ "py", "true FVector 1+2 1-x //", "Keyword[true] Default[FVector] Number[1+2] Number[1-] Default[x] Operator[/] Operator[/]" },
		{ "py", "'''a'b''' \"\"\"open\n", "String['''a'b'''] String[\"\"\"open\n]" },
		{ "py", "'''", "String[''']" },
		{ "py", "'' x", "String[''] Default[x]" },
		{ "json", "{\"a\": TRUE, \"b\": -1.5e+3, nullable}",
			"Operator[{] String[\"a\"] Operator[:] Keyword[true] Operator[,] String[\"b\"] Operator[:] Number[-1.5e+3] Operator[,] "
			"Keyword[null] Operator[a] Operator[b] Operator[l] Operator[e] Operator[}]" },
		{ "json", "fals", "Operator[f] Operator[a] Operator[l] Operator[s]" },
		{ "json", "-a false", "Operator[-] Operator[a] Keyword[false]" },
		{ "c", "int x;", "Default[int x;]" },
		{ "", "int x;", "Default[int x;]" },
	};
	for (const auto& [Language, Input, Tokens] : Cases)
	{
		const FString Code(UTF8_TO_TCHAR(Input));
		EXPECT_EQ(Show(TokenizeCode(Code, FString(Language)), Code.Len()), Tokens) << Language << ": " << Input;
	}
}

TEST(CodeSyntax, EmptyCodeHasNoTokensButOneWithoutATokeniser)
{
	EXPECT_EQ(TokenizeCode(FString(), TEXT("cpp")).Num(), 0);
	EXPECT_EQ(TokenizeCode(FString(), TEXT("py")).Num(), 0);
	EXPECT_EQ(TokenizeCode(FString(), TEXT("json")).Num(), 0);
	const TArray<FSyntaxToken> Tokens = TokenizeCode(FString(), TEXT("shell"));
	ASSERT_EQ(Tokens.Num(), 1);
	EXPECT_EQ(Tokens[0].End, 0);
}

TEST(CodeSyntax, OverlappingTokensAreNotAdded)
{
	TArray<FSyntaxToken> Tokens;
	const auto Add = [&Tokens](int32 Start, int32 End, const TCHAR* Text = TEXT("x"))
	{ AddSyntaxToken(Tokens, ESyntaxTokenType::Default, Text, Start, End); };
	Add(10, 20);
	Add(0, 5); // Before the first: fits, whatever the order.
	Add(12, 15); // Inside the first, though not in the last.
	Add(19, 30); // Starts in it.
	Add(5, 11); // Ends in it.
	Add(5, 20); // Ends where it ends.
	Add(5, 10); // Fits between them.
	Add(20, 22); // Fits after.
	Add(30, 31, TEXT(""));
	EXPECT_EQ(ShowAll(Tokens), "Default[x]10-20 Default[x]0-5 Default[x]5-10 Default[x]20-22 ");
}

// Whatever the code: tokens stand one after another, nothing of it is left out, and each holds what stands there.
TEST(CodeSyntax, TokensCoverAnyCodeInItsOrder)
{
	const std::vector<std::string> Pieces = { "/", "*", "//", "/*", "*/", "\"", "'", "'''", "\"\"\"", "\\", "#", "\n", " ", "\t", "\r\n",
		"0", "1", ".", "e", "f", "+", "-", "_", "a", "FV", "int", "class", "true", "nul", "null", "(", ":", "ä", "中", "😀", "\xe2\x84\xaa",
		"\xc2\xa0" };
	std::mt19937 Random(20260131);
	for (int Round = 0; Round < 10000; ++Round)
	{
		FString Code;
		for (int Count = static_cast<int>(Random() % 14); Count > 0; --Count)
		{
			Code += UTF8_TO_TCHAR(Pieces[Random() % Pieces.size()].c_str());
		}
		if (Round % 50 == 0)
		{
			Code.AppendChar(static_cast<TCHAR>(0xD800 + Random() % 2048));
			Code.AppendChar(static_cast<TCHAR>(0));
		}
		for (const TCHAR* Language : { TEXT("cpp"), TEXT("py"), TEXT("json") })
		{
			SCOPED_TRACE(Utf8(Language) + ": " + Utf8(Code));
			int32 End = 0;
			for (const FSyntaxToken& Token : TokenizeCode(Code, Language))
			{
				ASSERT_EQ(Token.Start, End);
				ASSERT_GT(Token.End, Token.Start);
				ASSERT_TRUE(Token.Text.Equals(Code.Mid(Token.Start, Token.End - Token.Start), ESearchCase::IgnoreCase));
				End = Token.End;
			}
			ASSERT_GE(End, Code.Len());
		}
	}
}
