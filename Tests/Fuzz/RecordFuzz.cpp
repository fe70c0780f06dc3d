#include "Fuzz/FuzzInput.h"
#include "RecordLine.h"

#include <algorithm>

// A line of a recording is none, or its fields can be asked for in every way and its texts come back when they are written again.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
	std::string_view Rest(reinterpret_cast<const char*>(Data), Size);
	while (!Rest.empty())
	{
		const std::string_view Text = Rest.substr(0, Rest.find('\n'));
		Rest.remove_prefix(std::min(Text.size() + 1, Rest.size()));
		FRecordLine Line;
		if (!FRecordLine::Parse(Text, Line))
		{
			continue;
		}
		for (int32 Index = 0; Index <= Line.Num(); ++Index)
		{
			(void)Line.Number(Index);
			(void)Line.Real(Index);
			(void)Line.Flag(Index);
			const FString Value = Line.Text(Index);
			std::string Again = FRecordWords(ERecordKind::Toast).Text(Value).GetLine();
			Again.pop_back();
			FRecordLine Read;
			FUZZ_CHECK(FRecordLine::Parse(Again, Read));
			FUZZ_CHECK(Read.Text(0).Equals(Value, ESearchCase::CaseSensitive));
		}
	}
	return 0;
}
