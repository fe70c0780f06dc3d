#pragma once

#include "Turn/TurnRunner.h"

namespace Velmora
{
	/** An answer with the reason why nobody was asked, where nobody was. */
	struct FPermissionAnswer
	{
		FDecision Decision;

		/** A clause on refusal: "you refused it", "a rule of this project refuses it". */
		std::string Why;
	};

	/**
	 * Puts a question to the user and waits for the answer, unless a rule answers it or nobody is there. Worker. Stopped when
	 * the turn is over meanwhile; the caller then returns at once.
	 */
	FPermissionAnswer AskUser(
		const FTurnInput& Input, FTurnControl& Control, const ITurnRunner::FReportSink& Sink, const FTurnQuestion& Question);
}
