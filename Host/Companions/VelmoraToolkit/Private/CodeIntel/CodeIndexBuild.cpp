#include "CodeIntel/CodeIndex.h"

#include <chrono>
#include <unordered_map>

#include "Host/HostFileNames.h"

DEFINE_LOG_CATEGORY_STATIC(LogCodeIndexBuild, Log, All);

namespace Velmora::CodeIntel
{
	void FCodeIndex::Rebuild(bool bForce)
	{
		const FOperation Operation(*this);
		if (!Operation.IsAllowed() || (!bForce && bIsReady))
		{
			return;
		}
		{
			std::unique_lock Lock(StateMutex);
			if (bIsBuilding)
			{
				Changed.wait(Lock, [this] { return bStop || !bIsBuilding; });
				return;
			}
			bIsBuilding = true;
			Changed.notify_all();
		}
		FOutcome Built;
		{
			const std::scoped_lock Lock(WriterMutex);
			{
				// What was to be erased is replaced.
				const std::scoped_lock StateLock(StateMutex);
				bEraseWanted = false;
			}
			Built = BuildAll(bForce);
			if (Built.Is(EOutcome::Damaged) && !bStop)
			{
				SetAside();
				Built = BuildAll(true);
			}
			if (Built)
			{
				RefreshStats();
			}
		}
		if (!Built && !bStop)
		{
			Setup.Tell(Built.GetWords() + (bIsReady ? " The earlier index stays in use." : ""));
		}
		const std::scoped_lock Lock(StateMutex);
		bIsBuilding = false;
		Changed.notify_all();
	}

	FOutcome FCodeIndex::BuildAll(bool bForce)
	{
		const auto Start = std::chrono::steady_clock::now();
		FSymbolExtractor Extractor(Setup.Root, Setup.Extractor, bStop);
		if (FOutcome Checked = Extractor.Check(); !Checked)
		{
			return Checked;
		}
		FOutcome Step = EnsureWriter();
		Step = Step ? Writer->BeginBuild() : Step;
		if (!Step)
		{
			return Step.Explain(Say("could not be built"));
		}
		FIndexFigures Figures;
		if (!bForce && Writer->ReadFigures(Figures) && Figures.bIsComplete)
		{
			// Another program has built it while this one waited.
			Writer->Cancel();
			return FOutcome::Done();
		}
		Step = FillBuild();
		const double Seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - Start).count();
		if (Step)
		{
			Step = Writer->FinishBuild(Seconds).Explain(Say("could not be built"));
		}
		if (!Step)
		{
			Writer->Cancel();
			return Step;
		}
		UE_LOG(LogCodeIndexBuild, Log, TEXT("The %s index was built in %.2f seconds"), UTF8_TO_TCHAR(Setup.Label.c_str()), Seconds);
		return Step;
	}

	FOutcome FCodeIndex::FillBuild()
	{
		std::vector<FIndexFile> Files;
		if (ListIndexFiles(Setup.Root, bStop, Files) != EFileListing::Complete)
		{
			return FOutcome(EOutcome::Failed, Say("could not be built: the folder \"") + Setup.Root + "\" cannot be read.", Setup.Root);
		}
		std::unordered_map<std::string, FIndexedBefore> Before;
		FOutcome Step = Writer->ReadWithSymbols(Before);
		if (!Step)
		{
			return Step.Explain(Say("could not be built"));
		}
		FOutcome Stored;
		size_t Lost = 0;
		std::string FirstLost;
		int64 SymbolCount = 0;
		FSymbolExtractor Extractor(Setup.Root, Setup.Extractor, bStop);
		Step = Extractor.Extract(Files,
			[&](const FIndexFile& File, FFileSymbols&& Symbols)
			{
				// A file is as it was and had symbols: if there are none now, it is the program that has changed.
				const auto Known = Before.find(File.Path);
				const bool bIsAsItWas = Known != Before.end() && Known->second.Modified == File.Modified && Known->second.Size == File.Size;
				if (bIsAsItWas && (Symbols.bIsGarbage || (!Symbols.bFailed && Symbols.Symbols.empty())))
				{
					FirstLost = Lost++ == 0 ? File.Path : FirstLost;
				}
				SymbolCount += static_cast<int64>(Symbols.Symbols.size());
				Stored = Writer->AddBuilt(File, Symbols);
				return Stored.IsDone();
			});
		if (!Stored)
		{
			return Stored.Explain(Say("could not be built"));
		}
		if (!Step)
		{
			return Step;
		}
		if (Lost > 0)
		{
			const std::string Others = Lost > 1 ? " and " + std::to_string(Lost - 1) + " more" : std::string();
			return FOutcome(EOutcome::Refused,
				Say("was not replaced: \"") + HostFileNameToBytes(Setup.Extractor.Program) + "\" finds no symbols any more in " +
					FirstLost + Others + ", which had some and did not change.");
		}
		if (SymbolCount == 0 && !Before.empty() && !Files.empty() && !Extractor.FindsSymbols(GetProbePath()))
		{
			return FOutcome(EOutcome::Refused,
				Say("was not replaced: \"") + HostFileNameToBytes(Setup.Extractor.Program) + "\" finds no symbols any more in any file.");
		}
		return FOutcome::Done();
	}

	void FCodeIndex::Compact()
	{
		const FOperation Operation(*this);
		if (!Operation.IsAllowed() || !bIsReady)
		{
			return;
		}
		const std::scoped_lock Lock(WriterMutex);
		FOutcome Compacted = EnsureWriter();
		Compacted = Compacted ? Writer->Compact() : Compacted;
		if (!Compacted)
		{
			if (!bStop)
			{
				Setup.Tell(Compacted.Explain(Say("could not be compacted")).GetWords());
			}
			return;
		}
		RefreshStats();
	}
}
