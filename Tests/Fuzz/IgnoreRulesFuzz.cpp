#include "FileCache/IgnoreRules.h"
#include "Fuzz/FuzzInput.h"

#include <algorithm>
#include <memory>

using namespace Velmora;

// A path on the first line, the ignore file behind it. A pattern that folders alone match says nothing about files.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
	const std::string_view All = FFuzzInput(Data, Size).TakeRest();
	const std::string_view Path = All.substr(0, All.find('\n'));
	const std::string Text(All.substr(std::min(Path.size() + 1, All.size())));
	const FIgnoreFile File(Text);
	FUZZ_CHECK(File.GetText() == Text);
	const EIgnoreVerdict AsFile = File.Judge(Path, false);
	const EIgnoreVerdict AsFolder = File.Judge(Path, true);
	FUZZ_CHECK(AsFile == EIgnoreVerdict::None || AsFolder != EIgnoreVerdict::None);

	// The same lines twice decide the same. A byte order mark is one at the beginning of a file alone. A file below that says nothing
	// leaves it to the one above.
	FUZZ_CHECK(FIgnoreFile(Text + "\n" + Text.substr(Text.starts_with("\xEF\xBB\xBF") ? 3 : 0)).Judge(Path, false) == AsFile);
	auto Above = std::make_shared<FIgnoreScope>(FIgnoreScope{ nullptr, FIgnoreFile(Text), 0 });
	const FIgnoreScope Below{ Above, FIgnoreFile(std::string("# nothing\n")), 0 };
	FUZZ_CHECK(IsIgnored(&Below, Path, false) == (AsFile == EIgnoreVerdict::Ignore));
	return 0;
}
