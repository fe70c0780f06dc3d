#include "Fuzz/FuzzText.h"
#include "Markdown/MarkdownParser.h"
#include "Markdown/TokenDump.h"

using namespace Velmora::Markdown;

// Tokens go forward through the text, and what stands open in a line before changes none of them.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
	const FString Text = MakeFuzzText(FFuzzInput(Data, Size).TakeRest());
	const TArray<FMarkdownToken> Tokens = FMarkdownParser::Parse(Text);
	FUZZ_CHECK(CompareBehindOpeners(Text).empty());
	int32 LastEnd = 0;
	for (const FMarkdownToken& Token : Tokens)
	{
		FUZZ_CHECK(LastEnd <= Token.StartPos && Token.StartPos < Token.EndPos && Token.EndPos <= Text.Len());
		LastEnd = Token.EndPos;
	}
	return 0;
}
