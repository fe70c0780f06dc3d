#include "CodeIntel/SymbolExtractor.h"

#include <algorithm>
#include <unordered_map>

#include <fcntl.h>
#include <unistd.h>

#include "CodeIntel/ChildProcess.h"
#include "CodeIntel/TagReader.h"
#include "Host/FileDescriptor.h"
#include "Host/HostFileNames.h"
#include "Host/HostUtf8.h"

DEFINE_LOG_CATEGORY_STATIC(LogSymbolExtractor, Log, All);

// Symbols by a program that knows the languages. Files go to it in batches, since starting it costs more than most files;
// a batch that fails is cut in half until the file that it failed on is alone. That file is left out, all others are in.
// Names reach the program as lines of text and come back in JSON. One that does not survive that goes alone, as an argument.

namespace Velmora::CodeIntel
{
	namespace
	{
		constexpr size_t MaxOutputOfRun = 256 * 1024 * 1024;
		constexpr double CheckSeconds = 10.0;

		/** So many files that fail, without one that does not, are the program's fault. */
		constexpr int HopelessFailures = 40;

		/** Declarations are wanted as well, and what macros hide is not mistaken for them. */
		// clang-format off
		constexpr const char* CommonArguments[] = {
			"--options=NONE", "--output-format=json", "-f", "-", "--sort=no", "--quiet=yes", "--tag-relative=no", "--fields=NFnKs",
			"--kinds-C=+p", "--kinds-C++=+p", "-I",
			"UCLASS+,USTRUCT+,UENUM+,UPROPERTY+,UFUNCTION+,UMETA+,GENERATED_BODY+,GENERATED_UCLASS_BODY+",
			"--map-C++=+.ipp", "--map-C++=+.CPP", "--map-C++=+.INL", "--map-C#=+.CS", "--map-Python=+.PY", "--map-Iniconf=+.INI",
			"--map-JSON=+.JSON",
			"--map-JSON=+.uplugin", "--map-JSON=+.uproject",
		};
		// clang-format on
		constexpr const char* IndexedLanguages = "--languages=C,C++,C#,Python,Iniconf,JSON";

		std::vector<std::string> MakeArguments(const FExtractorOptions& Options)
		{
			std::vector<std::string> Arguments = { HostFileNameToBytes(Options.Program) };
			Arguments.insert(Arguments.end(), std::begin(CommonArguments), std::end(CommonArguments));
			return Arguments;
		}

		/** A name that comes back in JSON as it went in as a line of text; others are given to the program by themselves. */
		bool IsPlainName(const std::string& Path)
		{
			char32_t Character = 0;
			for (size_t Index = 0, Length = 0; Index < Path.size(); Index += Length)
			{
				Length = HostDecodeUtf8(std::string_view(Path).substr(Index), Character);
				if (Length == 0)
				{
					return false;
				}
			}
			return !Path.empty() && Path.back() != ' ' &&
				std::none_of(Path.begin(), Path.end(),
					[](char Byte) { return static_cast<unsigned char>(Byte) < 0x20 || Byte == 0x7F || Byte == '\\'; });
		}

		/** Places in an array are no names. */
		bool IsSymbol(const FTag& Tag)
		{
			return Tag.ScopeKind != "array" || Tag.Name.find_first_not_of("0123456789") != std::string::npos;
		}

		FIndexSymbol MakeSymbol(FTag&& Tag)
		{
			return { std::move(Tag.Name), std::move(Tag.Kind), std::move(Tag.Scope), std::string(), Tag.Line };
		}
	}

	FSymbolExtractor::FSymbolExtractor(std::string InRoot, const FExtractorOptions& InOptions, const std::atomic<bool>& bInStop)
		: Root(std::move(InRoot))
		, Options(InOptions)
		, bStop(bInStop)
	{
	}

	FOutcome FSymbolExtractor::Check() const
	{
		FChildRun Run;
		Run.Arguments = MakeArguments(Options);
		Run.Arguments.insert(Run.Arguments.end(), { IndexedLanguages, "-L", "-" });
		Run.Seconds = CheckSeconds;
		Run.MaxOutputBytes = MaxOutputOfRun;
		std::string Reason;
		const EChildEnd End = RunChild(
			Run, bStop, [](std::string_view) {}, Reason);
		if (End == EChildEnd::Finished)
		{
			return FOutcome::Done();
		}
		if (End == EChildEnd::Stopped)
		{
			return FOutcome(EOutcome::Stopped, "it was stopped");
		}
		return FOutcome(EOutcome::Failed,
			"The code index needs a program that finds symbols. \"" + Run.Arguments.front() +
				(End == EChildEnd::NotStarted ? "\" could not be started: " : "\" cannot be used: ") + Reason +
				". Install the package universal-ctags.");
	}

	double FSymbolExtractor::GetSeconds(size_t FileCount) const
	{
		return Options.BatchSeconds + Options.FileSeconds * static_cast<double>(FileCount);
	}

	std::vector<FSymbolExtractor::FBatch> FSymbolExtractor::MakeBatches(
		const std::vector<FIndexFile>& Files, const FTake& Take, bool& bGoesOn) const
	{
		std::vector<FBatch> Batches;
		FBatch Plain;
		for (const FIndexFile& File : Files)
		{
			const bool bIsTooLarge = File.Size > MaxIndexedBytes;
			if (bIsTooLarge || access((Root + '/' + File.Path).c_str(), R_OK) != 0)
			{
				UE_LOG(LogSymbolExtractor, Warning, TEXT("%s is not in the code index: it %s"), *HostFileNameFromBytes(File.Path),
					bIsTooLarge ? TEXT("is larger than 8 MB") : TEXT("cannot be read"));
				bGoesOn = Take(File, { {}, true });
				if (!bGoesOn)
				{
					break;
				}
				continue;
			}
			if (!IsPlainName(File.Path) || !IsPlainName(Root))
			{
				Batches.push_back({ &File });
				continue;
			}
			Plain.push_back(&File);
			if (static_cast<int32>(Plain.size()) >= Options.BatchFiles)
			{
				Batches.push_back(std::exchange(Plain, FBatch()));
			}
		}
		if (!Plain.empty())
		{
			Batches.push_back(std::move(Plain));
		}
		// Taken from the end.
		std::reverse(Batches.begin(), Batches.end());
		return Batches;
	}

	// 1. The command. 2. Answers come file by file, so the place of the last one is kept. 3. What cannot be read is a failure,
	// whatever the program says.
	FSymbolExtractor::FResults FSymbolExtractor::RunBatch(const FBatch& Batch) const
	{
		FResults Results;
		Results.Files.resize(Batch.size());
		FChildRun Run;
		Run.Arguments = MakeArguments(Options);
		Run.Arguments.push_back(IndexedLanguages);
		Run.Seconds = GetSeconds(Batch.size());
		Run.MaxOutputBytes = MaxOutputOfRun;
		const bool bIsAlone = Batch.size() == 1;
		std::unordered_map<std::string, size_t> Places;
		if (bIsAlone)
		{
			// Absolute, so no name is taken for an option.
			Run.Arguments.push_back(Root + '/' + Batch.front()->Path);
		}
		else
		{
			Run.Arguments.insert(Run.Arguments.end(), { "-L", "-" });
			for (size_t Index = 0; Index < Batch.size(); ++Index)
			{
				std::string Path = Root + '/' + Batch[Index]->Path;
				Run.Input += Path + '\n';
				Places.emplace(std::move(Path), Index);
			}
		}
		size_t Last = 0;
		std::string LastPath;
		FTagReader Reader(
			[&](FTag&& Tag)
			{
				if (!bIsAlone && Tag.Path != LastPath)
				{
					const auto Found = Places.find(Tag.Path);
					if (Found == Places.end())
					{
						return;
					}
					Last = Found->second;
					LastPath = Tag.Path;
				}
				if (IsSymbol(Tag))
				{
					Results.Files[Last].Symbols.push_back(MakeSymbol(std::move(Tag)));
				}
			});
		Results.End = RunChild(
			Run, bStop, [&Reader](std::string_view Piece) { Reader.Add(Piece); }, Results.Reason);
		if (Results.End == EChildEnd::Finished && Reader.HasGarbage())
		{
			Results.End = EChildEnd::Failed;
			Results.Reason = "what it answers cannot be read";
			Results.Files.front().bIsGarbage = true;
		}
		return Results;
	}

	// A program that fails on everything is reported as such and does not go through a hundred thousand files one by one.
	FOutcome FSymbolExtractor::Extract(const std::vector<FIndexFile>& Files, const FTake& Take)
	{
		const FOutcome Stopped(EOutcome::Stopped, "it was stopped");
		const std::string Program = "The program \"" + HostFileNameToBytes(Options.Program) + "\" ";
		bool bGoesOn = true;
		std::vector<FBatch> Batches = MakeBatches(Files, Take, bGoesOn);
		int Failures = 0;
		bool bHasWorked = false;
		while (bGoesOn && !Batches.empty() && !bStop)
		{
			const FBatch Batch = std::move(Batches.back());
			Batches.pop_back();
			FResults Results = RunBatch(Batch);
			if (Results.End == EChildEnd::Stopped)
			{
				return Stopped;
			}
			if (Results.End == EChildEnd::NotStarted)
			{
				return FOutcome(
					EOutcome::Failed, Program + "could not be started: " + Results.Reason + ". Install the package universal-ctags.");
			}
			if (Results.End != EChildEnd::Finished && Batch.size() > 1)
			{
				const auto Middle = Batch.begin() + static_cast<ptrdiff_t>(Batch.size() / 2);
				Batches.emplace_back(Middle, Batch.end());
				Batches.emplace_back(Batch.begin(), Middle);
				continue;
			}
			if (Results.End != EChildEnd::Finished)
			{
				UE_LOG(LogSymbolExtractor, Warning, TEXT("%s is not in the code index: \"%s\" failed on it, %s"),
					*HostFileNameFromBytes(Batch.front()->Path), *Options.Program, UTF8_TO_TCHAR(Results.Reason.c_str()));
				Results.Files.front().Symbols.clear();
				Results.Files.front().bFailed = true;
				if (++Failures >= HopelessFailures && !bHasWorked)
				{
					return FOutcome(
						EOutcome::Failed, Program + "fails on every file: " + Results.Reason + ". Install the package universal-ctags.");
				}
			}
			bHasWorked |= Results.End == EChildEnd::Finished;
			for (size_t Index = 0; bGoesOn && Index < Batch.size(); ++Index)
			{
				bGoesOn = Take(*Batch[Index], std::move(Results.Files[Index]));
			}
		}
		return bGoesOn && !bStop ? FOutcome::Done() : Stopped;
	}

	FOutcome FSymbolExtractor::ExtractAny(const std::string& AbsolutePath, std::vector<FIndexSymbol>& Out) const
	{
		FChildRun Run;
		Run.Arguments = MakeArguments(Options);
		Run.Arguments.push_back(AbsolutePath);
		Run.Seconds = GetSeconds(1);
		Run.MaxOutputBytes = MaxOutputOfRun;
		FTagReader Reader(
			[&Out](FTag&& Tag)
			{
				if (IsSymbol(Tag))
				{
					Out.push_back(MakeSymbol(std::move(Tag)));
				}
			});
		std::string Reason;
		const EChildEnd End = RunChild(
			Run, bStop, [&Reader](std::string_view Piece) { Reader.Add(Piece); }, Reason);
		std::stable_sort(Out.begin(), Out.end(), [](const FIndexSymbol& A, const FIndexSymbol& B) { return A.Line < B.Line; });
		if (End == EChildEnd::Finished && Reader.HasGarbage())
		{
			return FOutcome(EOutcome::Failed, "what it answers cannot be read", AbsolutePath);
		}
		return End == EChildEnd::Finished
			? FOutcome::Done()
			: FOutcome(End == EChildEnd::Stopped ? EOutcome::Stopped : EOutcome::Failed, Reason, AbsolutePath);
	}

	// A program of the same name may exist that does something else: it gets a file with one class in it.
	bool FSymbolExtractor::FindsSymbols(const std::string& ProbePath) const
	{
		std::vector<FIndexSymbol> Symbols;
		{
			FFileDescriptor Probe = FFileDescriptor::Open(ProbePath, O_WRONLY | O_CREAT | O_TRUNC, 0600);
			if (!Probe.IsOpen() || !Probe.Write("class FProbe\n{\n};\n") || !Probe.Close())
			{
				return true; // The program is not to blame.
			}
		}
		const FOutcome Extracted = ExtractAny(ProbePath, Symbols);
		unlink(ProbePath.c_str());
		return Extracted.Is(EOutcome::Stopped) ||
			std::any_of(Symbols.begin(), Symbols.end(), [](const FIndexSymbol& Symbol) { return Symbol.Name == "FProbe"; });
	}
}
