#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "CodeIntel/IndexFiles.h"
#include "Host/CodeIndexControl.h"

namespace Velmora::CodeIntel
{
	/** The symbols of one file, in the order of the extractor's output. */
	struct FFileSymbols
	{
		std::vector<FIndexSymbol> Symbols;
		bool bFailed = false;
	};

	/** Gets symbols out of files by running the extractor on batches of them. One thread. */
	class FSymbolExtractor
	{
	public:
		/** @param bInStop  Ends an extraction early. */
		FSymbolExtractor(std::string InRoot, const FExtractorOptions& InOptions, const std::atomic<bool>& bInStop);

		/** Whether there is a program that can do it. @param OutProblem  A sentence that says what to install. */
		bool Check(FString& OutProblem) const;

		/** Called once for each file; false ends the extraction. */
		using FTake = std::function<bool(const FIndexFile&, FFileSymbols&&)>;

		/**
		 * A batch that crashes or hangs the program is halved until the file that is to blame stands alone.
		 *
		 * @return False when it was ended early, or when the program fails on whatever it is given; OutProblem is then a sentence.
		 */
		bool Extract(const std::vector<FIndexFile>& Files, const FTake& Take, FString& OutProblem);

		/** All languages that the program knows, for one file. Absolute path. */
		bool ExtractAny(const std::string& AbsolutePath, std::vector<FIndexSymbol>& Out, std::string& OutReason) const;

	private:
		using FBatch = std::vector<const FIndexFile*>;

		std::vector<FBatch> MakeBatches(const std::vector<FIndexFile>& Files, const FTake& Take, bool& bGoesOn) const;
		double GetSeconds(size_t FileCount) const;

		const std::string Root;
		const FExtractorOptions Options;
		const std::atomic<bool>& bStop;
	};
}
