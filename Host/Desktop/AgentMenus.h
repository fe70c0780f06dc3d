#pragma once

#include "CoreMinimal.h"
#include "Templates/SharedPointer.h"

class FMenuBuilder;
class FUICommandList;

/** What the frame's menus offer about the agent: who answers, its open question, its last message. Game thread. */
class FAgentMenus
{
public:
	/** Makes the commands of the agent do what they say. */
	static void MapCommands(FUICommandList& Commands);

	/** In the menu Edit. */
	static void BuildEditSection(FMenuBuilder& Builder);

	/** In the menu Tools. */
	static void BuildToolsSection(FMenuBuilder& Builder);
};
