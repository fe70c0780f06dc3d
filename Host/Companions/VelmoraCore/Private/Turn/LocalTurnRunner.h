#pragma once

#include "Turn/TurnRunner.h"

namespace Velmora
{
	/** The agent that needs no model: it takes commands and carries them out. */
	class FLocalTurnRunner : public ITurnRunner
	{
	public:
		virtual void Run(const FTurnInput& Input, FTurnControl& Control, const FReportSink& Sink) override;
	};
}
