#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Tools/ProjectFiles.h"

namespace Velmora
{
	/** What a line with a term in it is to that term; the first is what a reader wants most. */
	enum class EHitKind
	{
		Definition, // Of a type, function, macro or constant of that name.
		Declaration, // Announced or assigned here.
		Word, // Used as a word of its own.
		Part // Inside a longer word.
	};

	struct FSearchHit
	{
		FProjectPath File;

		/** From 1. */
		int Line = 0;
		EHitKind Kind = EHitKind::Part;

		/** The letters match in case too. */
		bool bIsExactCase = false;

		/** Lower is better: kind first, then what the line and its file are. */
		int Rank = 0;

		/** The line, trimmed and shortened. */
		std::string Text;
	};

	struct FSearchResult
	{
		/** The best hits, best first; fewer than MatchCount when there are many. */
		std::vector<FSearchHit> Hits;

		/** Files with a match and how many lines of each match, in the order of the walk. Bounded like Hits. */
		std::vector<std::pair<FProjectPath, size_t>> Files;

		/** Matching lines and files with one, all counted. */
		size_t MatchCount = 0;
		size_t FileCount = 0;
		size_t SearchedFiles = 0;

		size_t BinaryFiles = 0;
		size_t LargeFiles = 0;

		/** Files or folders that could not be read. */
		size_t UnreadableItems = 0;

		/** The project holds more than one search takes. */
		bool bTruncated = false;

		/** "3 matches in 2 files". */
		std::string CountMatches() const;

		/** The same, or how many files were looked into in vain. */
		std::string Describe() const;
	};

	/** How many hits and files a result keeps. */
	constexpr size_t MaxSearchHits = 20;
	constexpr size_t MaxSearchFiles = 200;

	/** What the line is to the term that starts at Start and ends before End. Pure. */
	EHitKind ClassifyHit(std::string_view Line, size_t Start, size_t End);

	/**
	 * Looks for a term, letter case aside, in one file or in all text files below a folder. Several words match a
	 * line in which they stand as written, or, when there is no such line at all, one that holds each of them.
	 *
	 * @param IsCancelled  Asked between files; true ends the search with what it has.
	 * @param IsLeftOut    Of a file below the project; true for what a search of a folder does not look into. Unset for none.
	 */
	FSearchResult SearchProject(const FProjectFiles& Files, const FProjectPath& Where, std::string_view Term,
		const std::function<bool()>& IsCancelled, const std::function<bool(std::string_view Path)>& IsLeftOut = nullptr);
}
