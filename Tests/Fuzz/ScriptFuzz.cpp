#include "Fuzz/FuzzText.h"
#include "ScriptFile.h"

// A script is read or told wrong in one sentence about one of its lines.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
	TArray<FString> Lines;
	MakeFuzzText(FFuzzInput(Data, Size).TakeRest()).ParseIntoArray(Lines, TEXT("\n"), false);
	TArray<FScriptStep> Steps;
	int32 ErrorLine = 0;
	const FString Complaint = FScriptFile::Parse(Lines, Steps, ErrorLine);
	FUZZ_CHECK(Complaint.IsEmpty() || (ErrorLine >= 1 && ErrorLine <= Lines.Num()));
	int32 LastLine = 0;
	for (const FScriptStep& Step : Steps)
	{
		FUZZ_CHECK(LastLine < Step.Line && Step.Line <= Lines.Num());
		LastLine = Step.Line;
	}
	return 0;
}
