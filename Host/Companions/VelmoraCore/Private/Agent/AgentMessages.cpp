#include "Host/AgentMessages.h"

#include "Agent/AgentSession.h"
#include "Host/AgentSeam.h"

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
		const auto GetUsual = []
		{
			const TSharedPtr<FAgentSession> Session = GetLastSession().Pin();
			return Session.IsValid() ? Session->GetLastMessage() : TOptional<FLastMessage>();
		};
		const std::shared_ptr<IAgentSeam> Seam = FAgentSeam::Get();
		return Seam ? Seam->GetLastMessage(GetUsual) : GetUsual();
	}

	FString FAgentMessages::TakeBackLast()
	{
		const auto TakeBackUsual = []
		{
			const TSharedPtr<FAgentSession> Session = GetLastSession().Pin();
			return Session.IsValid() ? Session->TakeBackLastMessage() : FString(TEXT("There is no conversation."));
		};
		const std::shared_ptr<IAgentSeam> Seam = FAgentSeam::Get();
		return Seam ? Seam->TakeBackLastMessage(TakeBackUsual) : TakeBackUsual();
	}
}
