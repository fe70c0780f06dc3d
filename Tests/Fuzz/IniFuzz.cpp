#include "Core/Private/Host/HostIniFile.h"
#include "Fuzz/FuzzText.h"

// "section|key|value|" and a file: the file comes back byte for byte, and what is set is there, in the written file too.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
	FFuzzInput Input(Data, Size);
	const auto TakeText = [&Input]()
	{
		FString Text;
		std::string Bytes;
		for (uint8 Byte = Input.TakeByte(); Byte != '|' && !Input.IsEmpty(); Byte = Input.TakeByte())
		{
			Bytes.push_back(static_cast<char>(Byte));
		}
		return MakeFuzzText(Bytes);
	};
	const FString Section = TakeText();
	const FString Key = TakeText();
	const FString Value = TakeText();
	const std::string_view Bytes = Input.TakeRest();
	const bool bWide = Bytes.substr(0, 2) == "\xFF\xFE" || Bytes.substr(0, 2) == "\xFE\xFF";
	FHostIniFile File(Bytes);
	FUZZ_CHECK(bWide || File.GetBytes() == Bytes);
	FString Old;
	const bool bHad = File.Get(Section, Key, Old);
	FUZZ_CHECK(!bHad || FHostIniFile(File.GetBytes()).Get(Section, Key, Old));

	File.Set(Section, Key, Value);
	FString Read;
	FUZZ_CHECK(File.Get(Section, Key, Read) && Read.Equals(Value));
	Read.Reset();
	FUZZ_CHECK(FHostIniFile(File.GetBytes()).Get(Section, Key, Read) && Read.Equals(Value));
	File.Remove(Section, Key);
	FUZZ_CHECK(!FHostIniFile(File.GetBytes()).Get(Section, Key, Read));
	return 0;
}
