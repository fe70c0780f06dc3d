#pragma once

#include "Host/AgentConnections.h"
#include "Turn/TurnRunner.h"

namespace Velmora
{
	/** Lets a language model answer: it is asked, its tools are run, it is asked again, until it calls no more. */
	class FModelTurnRunner : public ITurnRunner
	{
	public:
		explicit FModelTurnRunner(const FAgentConnection& InConnection);

		virtual bool NeedsTranscript() const override { return true; }
		virtual void Run(const FTurnInput& Input, FTurnControl& Control, const FReportSink& Sink) override;

	private:
		const FAgentConnection Connection;
	};
}
