#include "Agent/TurnRunnerFactory.h"

#include "Model/ModelTurnRunner.h"
#include "Text/Utf8Text.h"
#include "Turn/LocalTurnRunner.h"

namespace Velmora
{
	namespace
	{
		/** Answers a prompt of blanks, which no agent need be bothered with. */
		class FBlankPromptRunner : public ITurnRunner
		{
		public:
			virtual void Run(const FTurnInput& Input, FTurnControl& Control, const FReportSink& Sink) override
			{
				FTurnReport Answer;
				Answer.Kind = ETurnReportKind::Answer;
				Answer.Text = TEXT("Your message holds nothing but blanks, so there is nothing to do.");
				Sink(MoveTemp(Answer));
				if (Control.WaitUntilRunning())
				{
					Sink(FTurnReport());
				}
			}
		};
	}

	std::unique_ptr<ITurnRunner> MakeTurnRunner(const FTurnInput& Input)
	{
		if (Utf8Text::Trim(Input.Prompt).empty())
		{
			return std::make_unique<FBlankPromptRunner>();
		}
		if (const TOptional<FAgentConnection> Connection = FAgentConnections::GetSelected(); Connection.IsSet())
		{
			return std::make_unique<FModelTurnRunner>(Connection.GetValue());
		}
		return std::make_unique<FLocalTurnRunner>();
	}
}
