#include "Fuzz/FuzzText.h"
#include "Misc/Paths.h"
#include "Open/OpenRules.h"

namespace
{
	bool Begins(const FString& Text, const TCHAR* Scheme)
	{
		return Text.StartsWith(Scheme, ESearchCase::IgnoreCase);
	}
}

// Links and paths: only harmless addresses open without a question, every refusal has its sentence, and what a user is
// shown hides nothing.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
	FFuzzInput Input(Data, Size);
	const uint8 Bits = Input.TakeByte();
	const FString Target = MakeFuzzText(Input.TakeRest());
	const FOpenDecision Url = OpenRules::JudgeUrl(Target);
	FUZZ_CHECK(Url.Verdict == EOpenVerdict::Open ? Url.Reason.IsEmpty() : !Url.Reason.IsEmpty());
	const bool bHarmless = Begins(Target, TEXT("http:")) || Begins(Target, TEXT("https:")) || Begins(Target, TEXT("mailto:"));
	FUZZ_CHECK(Url.Verdict != EOpenVerdict::Open || bHarmless);

	FOpenFileFacts Facts;
	Facts.bExists = (Bits & 1) != 0;
	Facts.bDirectory = (Bits & 2) != 0;
	Facts.bExecutable = (Bits & 4) != 0;
	Facts.RealPath = (Bits & 8) != 0 ? FString(TEXT("/tmp/program.sh")) : Target;
	const FOpenDecision File = OpenRules::JudgeFile(Target, Facts);
	FUZZ_CHECK(File.Verdict != EOpenVerdict::Open ||
		(Facts.bExists && (Facts.bDirectory || (!Facts.bExecutable && !Facts.RealPath.EndsWith(TEXT(".sh"))))));

	for (const TCHAR Unit : OpenRules::MakeReadable(Target))
	{
		FUZZ_CHECK(Unit >= 0x20 && (Unit < 0x7F || Unit >= 0xA0) && !(Unit >= 0x202A && Unit <= 0x202E));
	}

	// A path brought into its short form stays as it is the second time.
	FString Path = Target;
	FPaths::NormalizeFilename(Path);
	FPaths::CollapseRelativeDirectories(Path);
	FString Again = Path;
	FPaths::CollapseRelativeDirectories(Again);
	FUZZ_CHECK(Again.Equals(Path));
	FUZZ_CHECK(FPaths::GetCleanFilename(Target).Len() <= Target.Len());
	return 0;
}
