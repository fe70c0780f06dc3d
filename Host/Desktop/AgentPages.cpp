#include "AgentPages.h"

#include "ISettingsModule.h"
#include "Modules/ModuleManager.h"
#include "SConnectionsPage.h"
#include "SPermissionsPage.h"

#define LOCTEXT_NAMESPACE "AgentPages"

namespace
{
	const FName AgentPagesContainer(TEXT("Project"));
	const FName AgentPagesCategory(TEXT("Agent"));

	ISettingsModule* FindSettings()
	{
		return FModuleManager::GetModulePtr<ISettingsModule>("Settings");
	}
}

FAgentPages::FAgentPages()
	: Connections(SNew(SConnectionsPage))
	, Permissions(SNew(SPermissionsPage))
{
	if (ISettingsModule* const Settings = FindSettings())
	{
		Settings->RegisterSettings(AgentPagesContainer, AgentPagesCategory, GetConnectionsName(), LOCTEXT("Connections", "Connections"),
			LOCTEXT(
				"ConnectionsText", "The models that can answer in place of the built-in agent. They are yours, whatever project is open."),
			Connections.ToSharedRef());
		Settings->RegisterSettings(AgentPagesContainer, AgentPagesCategory, GetPermissionsName(), LOCTEXT("Permissions", "Permissions"),
			LOCTEXT("PermissionsText", "What the agent may do in this project without asking, and what it may not do."),
			Permissions.ToSharedRef());
	}
}

FAgentPages::~FAgentPages()
{
	if (ISettingsModule* const Settings = FindSettings())
	{
		Settings->UnregisterSettings(AgentPagesContainer, AgentPagesCategory, GetConnectionsName());
		Settings->UnregisterSettings(AgentPagesContainer, AgentPagesCategory, GetPermissionsName());
	}
}

void FAgentPages::Show(FName Page)
{
	if (ISettingsModule* const Settings = FindSettings())
	{
		Settings->ShowViewer(AgentPagesContainer, AgentPagesCategory, Page);
	}
}

#undef LOCTEXT_NAMESPACE
