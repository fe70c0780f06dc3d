#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace Velmora
{
	/** What one command may take. */
	struct FCommandLimits
	{
		double MaxSeconds = 120.0;

		/** Of all its processes together: what they hold of memory, in bytes, and how many there are. */
		uint64_t MaxMemoryBytes = uint64_t(4) << 30;
		int MaxProcesses = 256;

		/** Of one file that it writes, and of each file system in memory. */
		uint64_t MaxFileBytes = uint64_t(512) << 20;

		/** What is kept of the output: half of it from the beginning, half from the end. */
		size_t MaxKeptOutput = 48 * 1024;

		/** A command that says more than this is stopped. */
		uint64_t MaxOutput = uint64_t(64) << 20;
	};

	/** A command and what it may see of the machine. Paths are bytes, absolute. */
	struct FSandboxedCommand
	{
		/** For /bin/sh. */
		std::string Line;

		/** Where the command believes to be; it starts there. */
		std::string ProjectFolder;

		/** What stands there in truth, and may be written to: a copy, or the folder itself. */
		std::string WritableFolder;

		/** Below the project folder, relative: shown as they are on disk, never written to. */
		std::vector<std::string> ReadOnly;

		/** Below the project folder, relative: files and folders that are shown empty. */
		std::vector<std::string> HiddenFiles;
		std::vector<std::string> HiddenFolders;
		FCommandLimits Limits;
	};

	struct FCommandEnd
	{
		enum class EWhy
		{
			Exited,
			Cancelled,
			NotStarted,
			TooLong,
			TooMuchMemory,
			TooManyProcesses,
			TooMuchOutput
		};
		EWhy Why = EWhy::NotStarted;

		/** Of the shell: 128 and more for the end by a signal. */
		int ExitCode = -1;

		/** Output and errors as they came; bytes. */
		std::string Output;
		uint64_t LeftOutBytes = 0;
		double Seconds = 0.0;
	};

	/**
	 * Runs commands behind walls: nothing of the machine can be written but one folder, the users' own folders, other processes,
	 * the network and the environment are out of sight, and time, memory, processes and output have a bound.
	 */
	class FCommandSandbox
	{
	public:
		/** Empty where commands can be run, else a sentence that says what is missing. Tried once per process. Any thread. */
		static const std::string& WhyUnavailable();

		/** Waits for the end. @param IsCancelled  Asked often; the command is killed when it says so. */
		static FCommandEnd Run(const FSandboxedCommand& Command, const std::function<bool()>& IsCancelled);
	};
}
