#pragma once

#include "Turn/TurnDesk.h"

namespace Velmora
{
	/** Finds text, explains what is found, and tells what a question in free words may be about. */
	class FSearchWork : private FTurnWork
	{
	public:
		using FTurnWork::FTurnWork;

		// False when the turn is over.
		bool RunFindText();
		bool RunWhichFiles();
		bool RunExplain();

		/** Says that a model would be needed, and shows the best places for what the question is about. */
		bool RunFreeQuestion();

		/** Code around a hit: the comment above and the body of a definition, else the lines beside it. */
		bool AppendSnippet(const FSearchHit& Hit, std::string& Answer);

	private:
		/** Searches the attached files, then the place or the project. Both results, and what was looked for. */
		struct FCombinedSearch
		{
			std::string Term;
			FProjectPath Where;
			bool bHasScope = false;
			FSearchResult Attached;
			FSearchResult Project;

			bool HasFound() const { return Attached.MatchCount + Project.MatchCount > 0; }

			/** The place that is shown first, when something was found. */
			const FSearchHit& FindBest() const;
		};
		bool RunCombinedSearch(FCombinedSearch& OutSearch);
		bool AnswerNotFound(const FCombinedSearch& Search);
		bool AnswerExplanation(const FCombinedSearch& Search);
	};
}
