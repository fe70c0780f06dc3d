#include "Host/AgentMessages.h"

#include "Agent/AgentSession.h"

namespace Velmora
{
	namespace
	{
		TWeakPtr<FAgentSession>& GetLastSession()
		{
			static TWeakPtr<FAgentSession> Session;
			return Session;
		}
	}

	void NoteSession(const TSharedRef<FAgentSession>& Session)
	{
		GetLastSession() = Session;
	}

	TOptional<FLastMessage> FAgentMessages::GetLast()
	{
		const TSharedPtr<FAgentSession> Session = GetLastSession().Pin();
		return Session.IsValid() ? Session->GetLastMessage() : TOptional<FLastMessage>();
	}

	FString FAgentMessages::TakeBackLast()
	{
		const TSharedPtr<FAgentSession> Session = GetLastSession().Pin();
		return Session.IsValid() ? Session->TakeBackLastMessage() : FString(TEXT("There is no conversation."));
	}
}
