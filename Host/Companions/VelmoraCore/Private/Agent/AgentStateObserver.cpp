#include "Agent/AgentStateObserver.h"

namespace Velmora
{
	FAgentStateObserver::FAgentStateObserver(TSharedPtr<FAgent> InAgent)
		: Agent(MoveTemp(InAgent))
	{
	}

	void FAgentStateObserver::Tick(float) {}

	bool FAgentStateObserver::CanAcceptMessage() const
	{
		return Agent.IsValid() && Agent->HasActiveConversation() && !IsBusy() && Agent->GetState() != EConversationState::Paused;
	}

	bool FAgentStateObserver::IsBusy() const
	{
		if (!Agent.IsValid())
		{
			return false;
		}
		switch (Agent->GetState())
		{
		case EConversationState::Initializing:
		case EConversationState::Thinking:
		case EConversationState::ExecutingTools:
			return true;
		case EConversationState::NotStarted:
		case EConversationState::Ready:
		case EConversationState::AwaitingInput:
		case EConversationState::Paused:
		case EConversationState::Completed:
		case EConversationState::Cancelled:
		case EConversationState::Error:
			return false;
		}
		return false;
	}
}
