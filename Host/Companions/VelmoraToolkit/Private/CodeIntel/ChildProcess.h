#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace Velmora::CodeIntel
{
	enum class EChildEnd
	{
		Finished, // Exit code 0.
		Failed, // Another exit code, or a signal.
		NotStarted,
		TimedOut,
		TooMuch, // It wrote more than was allowed.
		Stopped
	};

	struct FChildRun
	{
		/** The program, looked for on PATH unless it holds a '/', and its arguments. */
		std::vector<std::string> Arguments;

		/** What it reads on its standard input. */
		std::string Input;
		double Seconds = 0.0;
		size_t MaxOutputBytes = 0;
	};

	/**
	 * Runs a program without a shell, in a process group of its own that is killed at the end, whatever is left of it. Its error
	 * stream goes nowhere.
	 *
	 * @param bStop       Ends the run within a twentieth of a second.
	 * @param TakeOutput  Given its standard output piece by piece.
	 * @param OutReason   On any end but Finished, a clause such as "it was ended by signal 11".
	 */
	EChildEnd RunChild(const FChildRun& Run, const std::atomic<bool>& bStop, const std::function<void(std::string_view)>& TakeOutput,
		std::string& OutReason);
}
