#include "Agent/AgentBuilder.h"

#include "UObject/UObjectGlobals.h"

#include "Agent/BuiltInAgent.h"
#include "Host/AgentConnections.h"
#include "Host/AgentSeam.h"
#include "Settings/VelmoraSettings.h"

TSharedPtr<Velmora::FAgent> FAgentBuilder::CreateDefault()
{
	using Velmora::EConversationMode;

	// Before anything can start another program: none of them shall find a key in its environment.
	Velmora::FAgentConnections::HideKeys();
	const uint8 StoredMode = GetDefault<UVelmoraSettings>()->DefaultConversationMode;
	const EConversationMode Mode = StoredMode <= static_cast<uint8>(EConversationMode::General) ? static_cast<EConversationMode>(StoredMode)
																								: EConversationMode::General;

	const auto MakeUsual = [Mode]() -> TSharedPtr<Velmora::FAgent>
	{
		const TSharedRef<Velmora::FBuiltInAgent> Agent = MakeShared<Velmora::FBuiltInAgent>();
		if (Agent->StartConversation(Mode).IsEmpty())
		{
			return nullptr;
		}
		return Agent;
	};
	const std::shared_ptr<Velmora::IAgentSeam> Seam = Velmora::FAgentSeam::Get();
	return Seam ? Seam->MakeAgent(MakeUsual) : MakeUsual();
}
