#include "CodeIntel/CodeIndex.h"

#include <unordered_map>
#include <utility>

#include "Host/HostFileNames.h"

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
				if (ApplyChanges({}, Gone))
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
		const FOutcome Applied = ApplyChanges(Files, Gone);
		// The files keep their old stamps, so the next comparison with the disk finds them again.
		if (!Applied && !bStop && Applied.GetWords() != LastProblem)
		{
			Setup.Tell(Say("is not up to date. ") + Applied.GetWords());
		}
		LastProblem = Applied.GetWords();
	}

	FOutcome FCodeIndex::DropUntrusted(const FSymbolExtractor& Extractor, std::vector<std::pair<FIndexFile, FFileSymbols>>& InOutExtracted)
	{
		std::string First;
		size_t Dropped = 0;
		bool bIsProbed = false;
		bool bFindsSymbols = true;
		std::erase_if(InOutExtracted,
			[&](const std::pair<FIndexFile, FFileSymbols>& Answer)
			{
				const auto& [File, Symbols] = Answer;
				const bool bIsNothing = !Symbols.bFailed && Symbols.Symbols.empty() && File.Size > 0;
				if ((!Symbols.bIsGarbage && !bIsNothing) || !Writer->HasSymbols(File.Path))
				{
					return false;
				}
				// Somebody may have taken all code out of the file; one that has code for sure tells.
				if (bIsNothing && !std::exchange(bIsProbed, true))
				{
					bFindsSymbols = Extractor.FindsSymbols(GetProbePath());
				}
				const bool bIsUntrusted = Symbols.bIsGarbage || !bFindsSymbols;
				First = bIsUntrusted && Dropped == 0 ? File.Path : First;
				Dropped += bIsUntrusted ? 1 : 0;
				return bIsUntrusted;
			});
		if (Dropped == 0)
		{
			return FOutcome::Done();
		}
		const std::string Others = Dropped > 1 ? " and " + std::to_string(Dropped - 1) + " more" : std::string();
		return FOutcome(EOutcome::Refused,
			"\"" + HostFileNameToBytes(Setup.Extractor.Program) + "\" gives no answer that can be read for " + First + Others +
				"; what was known of it stays.");
	}

	FOutcome FCodeIndex::ApplyChanges(const std::vector<FIndexFile>& Files, const std::vector<std::string>& Gone)
	{
		if (Files.empty() && Gone.empty())
		{
			return FOutcome::Done();
		}
		// Nobody else shall wait for the extractor, so the files are changed when it is through.
		std::vector<std::pair<FIndexFile, FFileSymbols>> Extracted;
		FSymbolExtractor Extractor(Setup.Root, Setup.Extractor, bStop);
		FOutcome ExtractedAll;
		if (!Files.empty())
		{
			ExtractedAll = Extractor.Extract(Files,
				[&Extracted](const FIndexFile& File, FFileSymbols&& Symbols)
				{
					Extracted.emplace_back(File, std::move(Symbols));
					return true;
				});
			const FOutcome Trusted = DropUntrusted(Extractor, Extracted);
			ExtractedAll = ExtractedAll ? Trusted : ExtractedAll;
		}
		FOutcome Stored = Writer->BeginChanges();
		for (size_t Index = 0; Stored && Index < Extracted.size(); ++Index)
		{
			Stored = Writer->ReplaceFile(Extracted[Index].first, Extracted[Index].second);
		}
		for (size_t Index = 0; Stored && Index < Gone.size(); ++Index)
		{
			Stored = Writer->RemoveFile(Gone[Index]);
		}
		Stored = Stored ? Writer->FinishChanges() : Stored;
		if (!Stored)
		{
			Writer->Cancel();
			const std::scoped_lock Lock(StateMutex);
			bRepairWanted |= Stored.Is(EOutcome::Damaged);
			return Stored.Explain("It could not be changed");
		}
		RefreshStats();
		return ExtractedAll;
	}
}
