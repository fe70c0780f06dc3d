#pragma once

#include "CoreMinimal.h"
#include "Host/AgentConnections.h"

/** One field of a connection as the page shows it: a text that is read from it and put into it. */
struct FConnectionField
{
	/** Tag of its box. */
	const TCHAR* Tag;
	FText Label;
	/** In the empty box. */
	FText Hint;
	FText ToolTip;
	FString (*Get)(const Velmora::FAgentConnection& Connection);
	/** Empty when the text was taken; else a sentence, and the connection is as before. */
	FString (*Set)(Velmora::FAgentConnection& Connection, const FString& Text);
};

/** Fields that stand together. */
struct FConnectionFieldGroup
{
	FText Heading;
	TArray<FConnectionField> Fields;
};

/** All fields in their order on the page, apart from those with an editor of their own (name, model, key). */
const TArray<FConnectionFieldGroup>& GetConnectionFields();
