#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "CoreMinimal.h"
#include "Templates/Function.h"

namespace Velmora::CodeIntel
{
	/** The program that finds symbols, run as a process of its own. */
	struct FExtractorOptions
	{
		/** Looked for on PATH unless it holds a '/'. */
		FString Program = TEXT("ctags");

		/** Files given to one run, and the time that a run may take: so much, and so much more for each of its files. */
		int32 BatchFiles = 400;
		double BatchSeconds = 5.0;
		double FileSeconds = 0.05;
	};

	struct FCodeIndexOptions
	{
		FString ProjectFolder;

		/** The index of the project, a file of its own whose folder need not exist. The engine's likewise. */
		FString ProjectIndexPath;

		/** Asked when the engine's index is made. Unset or empty for the engine's folder "Source", if there is one. */
		TFunction<FString()> FindEngineFolder;
		FString EngineIndexPath;
		FExtractorOptions Extractor;

		/** Builds the project's index at once, in the background, when there is none. */
		bool bBuildWhenMissing = false;
	};

	/** A symbol in an index. */
	struct FIndexSymbol
	{
		std::string Name;

		/** In the extractor's words: "class", "function", "prototype", "key". */
		std::string Kind;

		/** What it stands in, in the language's own spelling: "FThing::EState". */
		std::string Scope;

		/** Below the index's root, bytes as on disk. */
		std::string Path;

		/** From 1. */
		int32 Line = 0;
	};

	/** What a lookup has found. */
	struct FIndexLookup
	{
		/** There was an index to ask. */
		bool bIsReady = false;

		/** Of the index, bytes as on disk. */
		std::string Root;
		std::vector<FIndexSymbol> Symbols;

		/** FindSymbol: the name itself was found, not only names that begin with it. Outline: the index holds the file. */
		bool bIsExact = false;
	};

	enum class EIndexKind : uint8
	{
		Project,
		Engine
	};

	/** The side of the code index that programs drive and the agent asks. Any thread. */
	class VELMORATOOLKIT_API FCodeIndexControl
	{
	public:
		/** Starts the manager; returns at once. An earlier start is shut down first. */
		static void Initialize(const FCodeIndexOptions& Options);

		/** Ends builds, lets go of the files and joins the threads; what a dead file system holds is left behind after two seconds. */
		static void Shutdown();

		/**
		 * Waits while the project's index of an earlier session is being opened, but for no build; not for the game thread.
		 * True when it can be asked then.
		 */
		static bool WaitUntilOpened(double TimeoutSeconds);

		/** Told, on the game thread, what the user should know: a missing program, a damaged index. One sentence or two. */
		static void SetProblemHandler(TFunction<void(const FString&)> Handler);

		/**
		 * Symbols of that name, definitions first. Letter case decides only between several. A scope may stand in front
		 * ("FThing::Run", "thing.run"); without one, names that only begin so are the second choice. Asks the index and nothing else.
		 */
		static FIndexLookup FindSymbol(std::string_view Name, int32 MaxCount, EIndexKind Kind = EIndexKind::Project);

		/** The symbols of one file, in the order of their lines. Path below the root. */
		static FIndexLookup Outline(std::string_view Path, int32 MaxCount, EIndexKind Kind = EIndexKind::Project);

		/**
		 * Runs the extractor on one file of any language it knows, for files that no index holds. Takes the time that the program
		 * takes, which is bounded; not for the game thread.
		 *
		 * @param OutReason  A clause on failure.
		 */
		static bool OutlineFile(const std::string& AbsolutePath, std::vector<FIndexSymbol>& Out, std::string& OutReason);
	};
}
