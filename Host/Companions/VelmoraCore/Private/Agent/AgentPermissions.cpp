#include "Host/AgentPermissions.h"

#include "Host/HostFileNames.h"
#include "Host/StoreLocation.h"
#include "Text/Utf8Text.h"
#include "Tools/PermissionRules.h"

namespace Velmora
{
	namespace
	{
		FPermissionRules OpenRules()
		{
			return FPermissionRules(HostFileNameToBytes(GetStoreLocation().GetRulesPath()));
		}

		FPermissionRule ToRule(const FAgentPermission& Permission)
		{
			return { Permission.bAllows, Utf8Text::FromString(Permission.Tool), HostFileNameToBytes(Permission.Prefix) };
		}
	}

	TArray<FAgentPermission> FAgentPermissions::List()
	{
		TArray<FAgentPermission> Permissions;
		for (const FPermissionRule& Rule : OpenRules().List())
		{
			// A prefix may be a file name, whose bytes need be no text.
			Permissions.Add({ Rule.bAllows, Utf8Text::ToString(Rule.Tool), HostFileNameFromBytes(Rule.Prefix) });
		}
		return Permissions;
	}

	FString FAgentPermissions::Add(const FAgentPermission& Permission)
	{
		return Utf8Text::ToString(OpenRules().Add(ToRule(Permission)));
	}

	FString FAgentPermissions::Remove(const FAgentPermission& Permission)
	{
		return Utf8Text::ToString(OpenRules().Remove(ToRule(Permission)));
	}
}
