#include "CodeIntel/CodeIndex.h"

#include <chrono>

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
		FString Problem;
		bool bIsBuilt = false;
		{
			const std::scoped_lock Lock(WriterMutex);
			{
				// What was to be erased is replaced.
				const std::scoped_lock StateLock(StateMutex);
				bEraseWanted = false;
			}
			bIsBuilt = BuildAll(bForce, Problem);
			if (!bIsBuilt && Writer)
			{
				const bool bIsDamaged = Writer->GetError() == EIndexError::Damaged;
				Writer->Cancel();
				if (bIsDamaged && !bStop)
				{
					SetAside();
					bIsBuilt = BuildAll(true, Problem);
				}
			}
			if (bIsBuilt)
			{
				RefreshStats();
			}
			else if (Writer)
			{
				Writer->Cancel();
			}
		}
		if (!bIsBuilt && !bStop)
		{
			Setup.Tell(Problem + (bIsReady ? TEXT(" The earlier index stays in use.") : TEXT("")));
		}
		const std::scoped_lock Lock(StateMutex);
		bIsBuilding = false;
		Changed.notify_all();
	}

	bool FCodeIndex::BuildAll(bool bForce, FString& OutProblem)
	{
		const auto Start = std::chrono::steady_clock::now();
		FSymbolExtractor Extractor(Setup.Root, Setup.Extractor, bStop);
		if (!Extractor.Check(OutProblem))
		{
			return false;
		}
		OutProblem = FString::Printf(TEXT("The %s index could not be built: its folder cannot be made."), *Setup.Label);
		if (!EnsureWriter() || !Writer->BeginBuild())
		{
			if (Writer)
			{
				OutProblem = FString::Printf(TEXT("The %s index could not be built: %s."), *Setup.Label, *Writer->DescribeError());
			}
			return false;
		}
		FIndexFigures Figures;
		if (!bForce && Writer->ReadFigures(Figures) && Figures.bIsComplete)
		{
			// Another program has built it while this one waited.
			Writer->Cancel();
			return true;
		}
		if (!FillBuild(OutProblem))
		{
			return false;
		}
		const double Seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - Start).count();
		if (!Writer->FinishBuild(Seconds))
		{
			OutProblem = FString::Printf(TEXT("The %s index could not be built: %s."), *Setup.Label, *Writer->DescribeError());
			return false;
		}
		UE_LOG(LogCodeIndexBuild, Log, TEXT("The %s index was built in %.2f seconds"), *Setup.Label, Seconds);
		return true;
	}

	bool FCodeIndex::FillBuild(FString& OutProblem)
	{
		std::vector<FIndexFile> Files;
		if (ListIndexFiles(Setup.Root, bStop, Files) != EFileListing::Complete)
		{
			OutProblem = FString::Printf(TEXT("The %s index could not be built: the folder \"%s\" cannot be read."), *Setup.Label,
				*HostFileNameFromBytes(Setup.Root));
			return false;
		}
		FString Reason;
		bool bIsStored = true;
		FSymbolExtractor Extractor(Setup.Root, Setup.Extractor, bStop);
		const bool bIsExtracted = Extractor.Extract(
			Files,
			[&](const FIndexFile& File, FFileSymbols&& Symbols)
			{
				bIsStored = Writer->AddBuilt(File, Symbols);
				return bIsStored;
			},
			Reason);
		if (!bIsStored)
		{
			Reason = FString::Printf(TEXT("The %s index could not be built: %s."), *Setup.Label, *Writer->DescribeError());
		}
		OutProblem = Reason;
		return bIsExtracted && bIsStored;
	}

	void FCodeIndex::Compact()
	{
		const FOperation Operation(*this);
		if (!Operation.IsAllowed() || !bIsReady)
		{
			return;
		}
		const std::scoped_lock Lock(WriterMutex);
		if (!EnsureWriter() || !Writer->Compact())
		{
			if (!bStop)
			{
				Setup.Tell(FString::Printf(TEXT("The %s index could not be compacted: %s."), *Setup.Label,
					Writer ? *Writer->DescribeError() : TEXT("its folder cannot be made")));
			}
			return;
		}
		RefreshStats();
	}
}
