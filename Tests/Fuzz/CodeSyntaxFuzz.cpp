#include "Fuzz/FuzzText.h"
#include "Markdown/CodeSyntax.h"

using namespace Velmora::Markdown;

// Every language: pieces go forward, and none says anything that does not stand in the code.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
	const FString Code = MakeFuzzText(FFuzzInput(Data, Size).TakeRest());
	for (const TCHAR* const Language : { TEXT("cpp"), TEXT("Python"), TEXT("json"), TEXT("none") })
	{
		int32 LastEnd = 0;
		for (const FSyntaxToken& Token : TokenizeCode(Code, Language))
		{
			FUZZ_CHECK(LastEnd <= Token.Start && Token.Start <= Token.End && Token.End <= Code.Len() + 2);
			// A word of JSON's is given in the letter case of the list that it stands in.
			FUZZ_CHECK(FStringView(Code).Mid(Token.Start, Token.Text.Len()).Equals(Token.Text, ESearchCase::IgnoreCase));
			LastEnd = Token.End;
		}
	}
	return 0;
}
