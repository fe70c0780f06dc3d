#include "Markdown/MarkdownParser.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#ifdef WITH_MD4C
#include <md4c.h>
#endif
#ifdef WITH_CMARK_GFM
#include <cmark-gfm.h>
#endif

// Time of a parse over text of growing size, beside peers where they are installed. To count instructions instead of
// nanoseconds, run "MarkdownBenchmark --once SHAPE SIZE REPEATS" under a counting tool, once with n and once with n + 1
// repeats, and take the difference: it is one parse. SHAPE is "answer", "md4c" (the
// peer on the same answer) or a number of the list below. "Benchmarks/count-instructions" does so for all.

namespace
{

	/** A stretch of what agents write: headings, paragraphs, lists, code, a table. */
	const char* const AnswerText =
		"## How the inventory is saved\n"
		"\n"
		"The component keeps its slots in one array and writes them as a whole. Loading checks the version first, so an older\n"
		"save is read with the **old layout** and written back with the new one. See `UInventoryComponent::SaveTo` for the\n"
		"details, and the notes in [Saving games](https://docs.example.org/saving) for the file format.\n"
		"\n"
		"- Slots are written in order, empty ones included.\n"
		"- An item that no longer exists becomes *nothing*, not an error.\n"
		"  - The name of the missing item goes to the log.\n"
		"  - The slot can be used again at once.\n"
		"- [x] Quantities are clamped to the limit of the stack.\n"
		"- [ ] Durability is not saved yet.\n"
		"\n"
		"```cpp\n"
		"void UInventoryComponent::SaveTo(FArchive& Archive)\n"
		"{\n"
		"\tint32 Version = CurrentVersion;\n"
		"\tArchive << Version;\n"
		"\tfor (FInventorySlot& Slot : Slots)\n"
		"\t{\n"
		"\t\tArchive << Slot.Item << Slot.Quantity;\n"
		"\t}\n"
		"}\n"
		"```\n"
		"\n"
		"| Field | Type | Meaning |\n"
		"|-------|:----:|--------:|\n"
		"| Item | name | what lies in the slot |\n"
		"| Quantity | number | how many of it |\n"
		"\n"
		"> Do not change the order of the fields without raising the version.\n"
		"\n"
		"1. Open the save in the editor and compare the two lists side by side.\n"
		"2. Play for a minute, pick something up, and save again.\n"
		"3. Both lists have to match; if they do not, look at `LogInventory` for a line that begins with the slot's number.\n"
		"\n";

	struct FShape
	{
		const char* Name;
		const char* Head;
		const char* Piece;
		const char* Tail;
	};

	const FShape HostileShapes[] = {
		{ "BoldOpeners", "", "**a ", "" },
		{ "AllDelimitersOpen", "x ", "***a **b __c *d _e ~~f `g ", "" },
		{ "ClosersBeforeLetters", "x *a", "*a", "" },
		{ "Asterisks", "x ", "*", " a" },
		{ "Backticks", "x ", "`", "a" },
		{ "BracketsOpen", "", "[x", "" },
		{ "BracketsWithOneCloser", "a", "[", "]" },
		{ "LinkTargetsOpen", "a", "[x](", "" },
		{ "FootnotesOpen", "a", "[^", "" },
		{ "PipesWithoutSeparator", "", "| a | b |\n", "" },
		{ "SectionsOpen", "", "<details>\n<summary>\n", "" },
		{ "SectionsBeforeEmptyLines", "", "<details><summary>a\n<details>\n\n", "</summary>" },
		{ "IndentedLines", "", "          \n", "a" },
		{ "HeaderMarks", "", "#", "" },
	};
	constexpr int32 HostileShapeCount = static_cast<int32>(sizeof(HostileShapes) / sizeof(HostileShapes[0]));

	std::string Repeat(const FShape& Shape, int64 Length)
	{
		std::string Text(Shape.Head);
		const std::string Piece(Shape.Piece);
		while (static_cast<int64>(Text.size()) < Length)
		{
			Text += Piece;
		}
		return Text + Shape.Tail;
	}

	std::string MakeAnswer(int64 Length)
	{
		return Repeat(FShape{ "Answer", "", AnswerText, "" }, Length);
	}

	FString ToText(const std::string& Ascii)
	{
		FString Text;
		Text.Reserve(static_cast<int32>(Ascii.size()));
		for (const char Char : Ascii)
		{
			Text.AppendChar(static_cast<TCHAR>(Char));
		}
		return Text;
	}

	void ParseOwn(benchmark::State& State, const std::string& Ascii)
	{
		const FString Text = ToText(Ascii);
		for (auto _ : State)
		{
			benchmark::DoNotOptimize(Velmora::Markdown::FMarkdownParser::Parse(Text));
		}
		State.SetBytesProcessed(State.iterations() * static_cast<int64_t>(Ascii.size()));
		State.SetComplexityN(static_cast<int64_t>(Ascii.size()));
	}

	void BM_Answer(benchmark::State& State)
	{
		ParseOwn(State, MakeAnswer(State.range(0)));
	}

	void BM_Hostile(benchmark::State& State, const FShape& Shape)
	{
		ParseOwn(State, Repeat(Shape, State.range(0)));
	}

#ifdef WITH_MD4C
	int IgnoreBlock(MD_BLOCKTYPE, void*, void*)
	{
		return 0;
	}

	int IgnoreSpan(MD_SPANTYPE, void*, void*)
	{
		return 0;
	}

	int IgnoreText(MD_TEXTTYPE, const MD_CHAR*, MD_SIZE, void*)
	{
		return 0;
	}

	int ParseWithMd4c(const std::string& Text)
	{
		MD_PARSER Parser;
		std::memset(&Parser, 0, sizeof(Parser));
		Parser.flags = MD_DIALECT_GITHUB;
		Parser.enter_block = IgnoreBlock;
		Parser.leave_block = IgnoreBlock;
		Parser.enter_span = IgnoreSpan;
		Parser.leave_span = IgnoreSpan;
		Parser.text = IgnoreText;
		return md_parse(Text.data(), static_cast<MD_SIZE>(Text.size()), &Parser, nullptr);
	}

	void BM_AnswerMd4c(benchmark::State& State)
	{
		const std::string Text = MakeAnswer(State.range(0));
		for (auto _ : State)
		{
			benchmark::DoNotOptimize(ParseWithMd4c(Text));
		}
		State.SetBytesProcessed(State.iterations() * static_cast<int64_t>(Text.size()));
		State.SetComplexityN(static_cast<int64_t>(Text.size()));
	}
	BENCHMARK(BM_AnswerMd4c)->RangeMultiplier(4)->Range(1 << 12, 1 << 18)->Complexity();
#endif

#ifdef WITH_CMARK_GFM
	void BM_AnswerCmarkGfm(benchmark::State& State)
	{
		const std::string Text = MakeAnswer(State.range(0));
		for (auto _ : State)
		{
			cmark_node* Document = cmark_parse_document(Text.data(), Text.size(), CMARK_OPT_DEFAULT);
			benchmark::DoNotOptimize(Document);
			cmark_node_free(Document);
		}
		State.SetBytesProcessed(State.iterations() * static_cast<int64_t>(Text.size()));
		State.SetComplexityN(static_cast<int64_t>(Text.size()));
	}
	BENCHMARK(BM_AnswerCmarkGfm)->RangeMultiplier(4)->Range(1 << 12, 1 << 18)->Complexity();
#endif

	BENCHMARK(BM_Answer)->RangeMultiplier(4)->Range(1 << 12, 1 << 18)->Complexity();

	/** Parses one text a number of times and prints how many characters and tokens it had. */
	int RunOnce(const std::string& ShapeName, int64 Size, int32 Repeats)
	{
		std::string Ascii;
#ifdef WITH_MD4C
		if (ShapeName == "md4c")
		{
			Ascii = MakeAnswer(Size);
			for (int32 Repeat = 0; Repeat < Repeats; ++Repeat)
			{
				benchmark::DoNotOptimize(ParseWithMd4c(Ascii));
			}
			std::printf("%d characters\n", static_cast<int32>(Ascii.size()));
			return 0;
		}
#endif
		if (ShapeName == "answer")
		{
			Ascii = MakeAnswer(Size);
		}
		else
		{
			const int32 Index = std::atoi(ShapeName.c_str());
			if (Index < 0 || Index >= HostileShapeCount)
			{
				std::fprintf(stderr, "No shape %d; there are %d.\n", Index, HostileShapeCount);
				return 1;
			}
			Ascii = Repeat(HostileShapes[Index], Size);
		}
		const FString Text = ToText(Ascii);
		int32 TokenCount = 0;
		for (int32 Repeat = 0; Repeat < Repeats; ++Repeat)
		{
			TokenCount = Velmora::Markdown::FMarkdownParser::Parse(Text).Num();
		}
		std::printf("%d characters, %d tokens\n", Text.Len(), TokenCount);
		return 0;
	}

} // namespace

int main(int ArgumentCount, char** Arguments)
{
	if (ArgumentCount == 5 && std::string(Arguments[1]) == "--once")
	{
		return RunOnce(Arguments[2], std::atoll(Arguments[3]), std::atoi(Arguments[4]));
	}
	for (const FShape& Shape : HostileShapes)
	{
		benchmark::RegisterBenchmark((std::string("BM_Hostile/") + Shape.Name).c_str(), BM_Hostile, Shape)
			->RangeMultiplier(4)
			->Range(1 << 12, 1 << 18)
			->Complexity();
	}
	benchmark::Initialize(&ArgumentCount, Arguments);
	benchmark::RunSpecifiedBenchmarks();
	return 0;
}
