#include "Markdown/CodeSyntax.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#ifdef WITH_KSYNTAXHIGHLIGHTING
#include <KSyntaxHighlighting/AbstractHighlighter>
#include <KSyntaxHighlighting/Definition>
#include <KSyntaxHighlighting/Format>
#include <KSyntaxHighlighting/Repository>
#include <KSyntaxHighlighting/State>
#include <QString>
#include <QStringList>
#endif
#ifdef WITH_SOURCE_HIGHLIGHT
#include <srchilite/sourcehighlight.h>
#endif

// Time to split code into coloured tokens, beside peers where they are installed, over a MiB of this repository's own C++,
// of Python and of JSON, and over text that is hostile to tokenisers. To count instructions, run
// "CodeSyntaxBenchmark --once LANGUAGE SIZE REPEATS" under a counting tool with n and with n + 1 repeats; the difference
// is one run. LANGUAGE is "cpp", "py", "json", or "kde-cpp" for the peer on the same code.

namespace
{

	constexpr int64 Mebibyte = 1 << 20;

	/** The files of a folder one after the other, from the start again until it is enough. */
	std::string ReadSources(const std::filesystem::path& Folder, const std::string& Extension, int64 Length)
	{
		std::vector<std::filesystem::path> Paths;
		for (const std::filesystem::directory_entry& Entry : std::filesystem::recursive_directory_iterator(Folder))
		{
			if (Entry.path().extension() == Extension)
			{
				Paths.push_back(Entry.path());
			}
		}
		std::sort(Paths.begin(), Paths.end());
		std::string Text;
		for (size_t Index = 0; !Paths.empty() && static_cast<int64>(Text.size()) < Length; Index = (Index + 1) % Paths.size())
		{
			std::ifstream File(Paths[Index]);
			std::stringstream Content;
			Content << File.rdbuf();
			Text += Content.str() + "\n";
		}
		Text.resize(static_cast<size_t>(Length));
		return Text;
	}

	std::string MakeCode(const std::string& Language, int64 Length)
	{
		const std::filesystem::path Root = VELMORA_SOURCE_DIR;
		if (Language == "cpp")
		{
			return ReadSources(Root / "Source", ".cpp", Length);
		}
		if (Language == "py")
		{
			return ReadSources(Root / "Host/Engine/Core/Scripts", ".py", Length);
		}
		std::string Text;
		for (int64 Index = 0; static_cast<int64>(Text.size()) < Length; ++Index)
		{
			Text += "\t{ \"id\": " + std::to_string(Index) + ", \"name\": \"Slot " + std::to_string(Index * 7919) +
				"\", \"weight\": -1.25e-3, \"stackable\": true, \"owner\": null },\n";
		}
		Text.resize(static_cast<size_t>(Length));
		return Text;
	}

	FString ToText(const std::string& Ascii)
	{
		FString Text;
		Text.Reserve(static_cast<int32>(Ascii.size()));
		for (const char Char : Ascii)
		{
			Text.AppendChar(static_cast<TCHAR>(static_cast<unsigned char>(Char) < 128 ? Char : '?'));
		}
		return Text;
	}

	void Tokenize(benchmark::State& State, const FString& Code, const FString& Language)
	{
		for (auto _ : State)
		{
			benchmark::DoNotOptimize(Velmora::Markdown::TokenizeCode(Code, Language));
		}
		State.SetBytesProcessed(State.iterations() * static_cast<int64_t>(Code.Len()));
		State.SetComplexityN(Code.Len());
	}

	void BM_Own(benchmark::State& State, const std::string& Language)
	{
		Tokenize(State, ToText(MakeCode(Language, State.range(0))), FString(Language.c_str()));
	}

	void BM_Hostile(benchmark::State& State, const std::string& Piece)
	{
		std::string Text;
		while (static_cast<int64>(Text.size()) < State.range(0))
		{
			Text += Piece;
		}
		Tokenize(State, ToText(Text), TEXT("cpp"));
	}

#ifdef WITH_KSYNTAXHIGHLIGHTING
	/** Goes through the lines as an editor does and does nothing with what it is told. */
	class FPeerHighlighter : public KSyntaxHighlighting::AbstractHighlighter
	{
	public:
		int Run(const QStringList& Lines)
		{
			Count = 0;
			KSyntaxHighlighting::State LineState;
			for (const QString& Line : Lines)
			{
				LineState = highlightLine(Line, LineState);
			}
			return Count;
		}

	protected:
		void applyFormat(int, int, const KSyntaxHighlighting::Format&) override { ++Count; }

	private:
		int Count = 0;
	};

	const char* PeerDefinition(const std::string& Language)
	{
		return Language == "cpp" ? "C++" : Language == "py" ? "Python" : "JSON";
	}

	void BM_KSyntaxHighlighting(benchmark::State& State, const std::string& Language)
	{
		static KSyntaxHighlighting::Repository Repository;
		FPeerHighlighter Highlighter;
		Highlighter.setDefinition(Repository.definitionForName(QString::fromLatin1(PeerDefinition(Language))));
		const QStringList Lines = QString::fromStdString(MakeCode(Language, State.range(0))).split(QLatin1Char('\n'));
		for (auto _ : State)
		{
			benchmark::DoNotOptimize(Highlighter.Run(Lines));
		}
		State.SetBytesProcessed(State.iterations() * State.range(0));
	}
#endif

#ifdef WITH_SOURCE_HIGHLIGHT
	void BM_SourceHighlight(benchmark::State& State, const std::string& Language)
	{
		const std::string Code = MakeCode(Language, State.range(0));
		srchilite::SourceHighlight Highlighter("html.outlang");
		for (auto _ : State)
		{
			std::istringstream In(Code);
			std::ostringstream Out;
			Highlighter.highlight(In, Out, Language == "cpp" ? "cpp.lang" : Language == "py" ? "python.lang" : "json.lang");
			benchmark::DoNotOptimize(Out.tellp());
		}
		State.SetBytesProcessed(State.iterations() * State.range(0));
	}
#endif

	int RunOnce(const std::string& Language, int64 Size, int Repeats)
	{
		int64 Count = 0;
#ifdef WITH_KSYNTAXHIGHLIGHTING
		if (Language == "kde-cpp")
		{
			KSyntaxHighlighting::Repository Repository;
			FPeerHighlighter Highlighter;
			Highlighter.setDefinition(Repository.definitionForName(QStringLiteral("C++")));
			const QStringList Lines = QString::fromStdString(MakeCode("cpp", Size)).split(QLatin1Char('\n'));
			for (int Repeat = 0; Repeat < Repeats; ++Repeat)
			{
				Count = Highlighter.Run(Lines);
			}
			std::printf("%lld tokens\n", static_cast<long long>(Count));
			return 0;
		}
#endif
		const FString Code = ToText(MakeCode(Language, Size));
		for (int Repeat = 0; Repeat < Repeats; ++Repeat)
		{
			Count = Velmora::Markdown::TokenizeCode(Code, FString(Language.c_str())).Num();
		}
		std::printf("%lld tokens\n", static_cast<long long>(Count));
		return 0;
	}

} // namespace

int main(int ArgumentCount, char** Arguments)
{
	if (ArgumentCount == 5 && std::string(Arguments[1]) == "--once")
	{
		return RunOnce(Arguments[2], std::atoll(Arguments[3]), std::atoi(Arguments[4]));
	}
	for (const char* Language : { "cpp", "py", "json" })
	{
		benchmark::RegisterBenchmark((std::string("BM_Own/") + Language).c_str(), BM_Own, std::string(Language))
			->Arg(Mebibyte)
			->Unit(benchmark::kMillisecond);
#ifdef WITH_KSYNTAXHIGHLIGHTING
		benchmark::RegisterBenchmark(
			(std::string("BM_KSyntaxHighlighting/") + Language).c_str(), BM_KSyntaxHighlighting, std::string(Language))
			->Arg(Mebibyte)
			->Unit(benchmark::kMillisecond);
#endif
#ifdef WITH_SOURCE_HIGHLIGHT
		benchmark::RegisterBenchmark((std::string("BM_SourceHighlight/") + Language).c_str(), BM_SourceHighlight, std::string(Language))
			->Arg(Mebibyte)
			->Unit(benchmark::kMillisecond);
#endif
	}
	const char* const Pieces[] = { "+", "\"", "'", "/*", "#", "a ", "1", "\\", "\n" };
	for (const char* Piece : Pieces)
	{
		const std::string Name = std::string("BM_Hostile/") + (*Piece == '\n' ? "LF" : Piece);
		benchmark::RegisterBenchmark(Name.c_str(), BM_Hostile, std::string(Piece))
			->RangeMultiplier(4)
			->Range(Mebibyte / 16, Mebibyte)
			->Unit(benchmark::kMillisecond)
			->Complexity();
	}
	benchmark::Initialize(&ArgumentCount, Arguments);
	benchmark::RunSpecifiedBenchmarks();
	return 0;
}
