#include "Turn/ModelTurnRunner.h"

#include "Turn/ModelTurn.h"

namespace Velmora
{
	FModelTurnRunner::FModelTurnRunner(FModelConnection InConnection)
		: Connection(std::move(InConnection))
	{
	}

	void FModelTurnRunner::Run(const FTurnInput& Input, FTurnControl& Control, const FReportSink& Sink)
	{
		FModelTurn(Connection, Input, Control, Sink).Run();
	}
}
