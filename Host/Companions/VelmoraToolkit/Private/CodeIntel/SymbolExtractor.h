#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "CodeIntel/ChildProcess.h"
#include "CodeIntel/IndexFiles.h"
#include "Host/CodeIndexControl.h"
#include "Host/Outcome.h"

namespace Velmora::CodeIntel
{
	/** The symbols of one file, in the order of the extractor's output. */
	struct FFileSymbols
	{
		std::vector<FIndexSymbol> Symbols;
		bool bFailed = false;

		/** It failed since the answer cannot be read. */
		bool bIsGarbage = false;
	};

	/** Gets symbols out of files by running the extractor on batches of them. One thread. */
	class FSymbolExtractor
	{
	public:
		/** @param bInStop  Ends an extraction early. */
		FSymbolExtractor(std::string InRoot, const FExtractorOptions& InOptions, const std::atomic<bool>& bInStop);

		/** Whether there is a program that can do it. The words are a sentence that says what to install. */
		FOutcome Check() const;

		/** Called once for each file; false ends the extraction. */
		using FTake = std::function<bool(const FIndexFile&, FFileSymbols&&)>;

		/**
		 * A batch that crashes or hangs the program is halved until the file that is to blame stands alone.
		 *
		 * @return Stopped when it was ended early, Failed with a sentence when the program fails on whatever it is given.
		 */
		FOutcome Extract(const std::vector<FIndexFile>& Files, const FTake& Take);

		/** All languages that the program knows, for one file. Absolute path. The words are a clause. */
		FOutcome ExtractAny(const std::string& AbsolutePath, std::vector<FIndexSymbol>& Out) const;

		/** Whether the program finds anything at all: asked on a little source of ours, written for the moment under that name. */
		bool FindsSymbols(const std::string& ProbePath) const;

	private:
		using FBatch = std::vector<const FIndexFile*>;

		struct FResults
		{
			std::vector<FFileSymbols> Files;

			/** Why the batch has none; empty when it has. */
			std::string Reason;
			EChildEnd End = EChildEnd::Finished;
		};
		FResults RunBatch(const FBatch& Batch) const;
		std::vector<FBatch> MakeBatches(const std::vector<FIndexFile>& Files, const FTake& Take, bool& bGoesOn) const;
		double GetSeconds(size_t FileCount) const;

		const std::string Root;
		const FExtractorOptions Options;
		const std::atomic<bool>& bStop;
	};
}
