#include "CodeIntel/CodeIndex.h"

#include <unordered_map>

namespace Velmora::CodeIntel
{
	void FCodeIndex::CompareWithDisk(const std::vector<FReconciled>& Callbacks)
	{
		int32 Deleted = 0;
		int32 New = 0;
		{
			const std::scoped_lock Lock(WriterMutex);
			std::vector<FIndexFile> Files;
			std::unordered_map<std::string, FIndexFile> Known;
			if (bIsReady && EnsureWriter() && ListIndexFiles(Setup.Root, bStop, Files) == EFileListing::Complete &&
				Writer->ReadFiles(Known))
			{
				std::vector<std::string> Differing;
				for (const FIndexFile& File : Files)
				{
					const auto Found = Known.find(File.Path);
					const bool bIsSame = Found != Known.end() && Found->second.Modified == File.Modified && Found->second.Size == File.Size;
					if (!bIsSame)
					{
						Differing.push_back(File.Path);
					}
					if (Found != Known.end())
					{
						Known.erase(Found);
					}
				}
				std::vector<std::string> Gone;
				for (const auto& [Path, File] : Known)
				{
					Gone.push_back(Path);
				}
				FString Problem;
				if (ApplyChanges({}, Gone, Problem))
				{
					Deleted = static_cast<int32>(Gone.size());
				}
				New = static_cast<int32>(Differing.size());
				const std::scoped_lock StateLock(StateMutex);
				for (std::string& Path : Differing)
				{
					Queue(std::move(Path));
				}
			}
		}
		for (const FReconciled& Done : Callbacks)
		{
			Answer(Done, Deleted, New);
		}
	}

	void FCodeIndex::WorkOnQueue(const std::vector<std::string>& Paths)
	{
		const std::scoped_lock Lock(WriterMutex);
		if (!bIsReady || bStop || !EnsureWriter())
		{
			return;
		}
		std::vector<FIndexFile> Files;
		std::vector<std::string> Gone;
		for (const std::string& Path : Paths)
		{
			FIndexFile File;
			FIndexFile Known;
			File.Path = Path;
			if (!IsIndexedFile(Path) || !ReadFileStamp(Setup.Root, File))
			{
				Gone.push_back(Path);
			}
			else if (!Writer->ReadFile(Path, Known) || Known.Modified != File.Modified || Known.Size != File.Size)
			{
				Files.push_back(std::move(File));
			}
		}
		FString Problem;
		const bool bIsApplied = ApplyChanges(Files, Gone, Problem);
		// The files keep their old stamps, so the next comparison with the disk finds them again.
		if (!bIsApplied && !bStop && !Problem.Equals(LastProblem))
		{
			Setup.Tell(FString::Printf(TEXT("The %s index is not up to date. %s"), *Setup.Label, *Problem));
		}
		LastProblem = bIsApplied ? FString() : Problem;
	}

	bool FCodeIndex::ApplyChanges(const std::vector<FIndexFile>& Files, const std::vector<std::string>& Gone, FString& OutProblem)
	{
		if (Files.empty() && Gone.empty())
		{
			return true;
		}
		// Nobody else shall wait for the extractor, so the files are changed when it is through.
		std::vector<std::pair<FIndexFile, FFileSymbols>> Extracted;
		FSymbolExtractor Extractor(Setup.Root, Setup.Extractor, bStop);
		const bool bIsExtracted = Files.empty() ||
			Extractor.Extract(
				Files,
				[&Extracted](const FIndexFile& File, FFileSymbols&& Symbols)
				{
					Extracted.emplace_back(File, std::move(Symbols));
					return true;
				},
				OutProblem);
		bool bIsStored = Writer->BeginChanges();
		for (size_t Index = 0; bIsStored && Index < Extracted.size(); ++Index)
		{
			bIsStored = Writer->ReplaceFile(Extracted[Index].first, Extracted[Index].second);
		}
		for (size_t Index = 0; bIsStored && Index < Gone.size(); ++Index)
		{
			bIsStored = Writer->RemoveFile(Gone[Index]);
		}
		bIsStored = bIsStored && Writer->FinishChanges();
		if (!bIsStored)
		{
			OutProblem = FString::Printf(TEXT("It could not be changed: %s."), *Writer->DescribeError());
			const bool bIsDamaged = Writer->GetError() == EIndexError::Damaged;
			Writer->Cancel();
			const std::scoped_lock Lock(StateMutex);
			bRepairWanted |= bIsDamaged;
			return false;
		}
		RefreshStats();
		return bIsExtracted;
	}
}
