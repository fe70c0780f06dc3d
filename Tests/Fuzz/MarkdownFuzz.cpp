#include "Fuzz/FuzzText.h"
#include "Markdown/LiteralMarkdownParser.h"
#include "Markdown/MarkdownParser.h"
#include "Markdown/TokenDump.h"

using namespace Velmora::Markdown;

// The parser says what the rules say, written down literally, and its tokens go forward through the text.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
	const FString Text = MakeFuzzText(FFuzzInput(Data, Size).TakeRest());
	const TArray<FMarkdownToken> Tokens = FMarkdownParser::Parse(Text);
	FUZZ_CHECK(CompareTokens(Tokens, ParseLiterally(Text)).empty());
	int32 LastEnd = 0;
	for (const FMarkdownToken& Token : Tokens)
	{
		FUZZ_CHECK(LastEnd <= Token.StartPos && Token.StartPos < Token.EndPos && Token.EndPos <= Text.Len());
		LastEnd = Token.EndPos;
	}
	return 0;
}
