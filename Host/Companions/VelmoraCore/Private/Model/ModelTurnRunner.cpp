#include "Model/ModelTurnRunner.h"

#include "Model/ModelConnection.h"
#include "Model/ModelTurn.h"

namespace Velmora
{
	FModelTurnRunner::FModelTurnRunner(const FAgentConnection& InConnection)
		: Connection(InConnection)
	{
	}

	void FModelTurnRunner::Run(const FTurnInput& Input, FTurnControl& Control, const FReportSink& Sink)
	{
		FModelTurn(MakeModelConnection(Connection), Input, Control, Sink).Run();
	}
}
