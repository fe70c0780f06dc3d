#pragma once

#include "CoreMinimal.h"

namespace Velmora
{
	/** What the user has allowed or refused for good in the project that is open. */
	struct FAgentPermission
	{
		bool bAllows = false;

		/** The tool's name, or what else was asked for: "connect". */
		FString Tool;

		/** What it acts on begins with this; empty for everything. */
		FString Prefix;

		bool operator==(const FAgentPermission& Other) const
		{
			return bAllows == Other.bAllows && Tool.Equals(Other.Tool) && Prefix.Equals(Other.Prefix);
		}
	};

	/** The rules of the project that is open, kept in the user's own folder. Game thread. */
	class VELMORACORE_API FAgentPermissions
	{
	public:
		/** In the order in which they were made, read from disk. */
		static TArray<FAgentPermission> List();

		/** Empty, or a sentence that says why nothing was written. One that is gone already is no problem. */
		[[nodiscard]] static FString Add(const FAgentPermission& Permission);
		[[nodiscard]] static FString Remove(const FAgentPermission& Permission);
	};
}
