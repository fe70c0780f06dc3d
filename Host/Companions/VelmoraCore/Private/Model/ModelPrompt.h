#pragma once

#include <string>
#include <string_view>

#include "Tools/ToolBox.h"
#include "Turn/TurnRunner.h"

/** What a model is told beside the conversation. */
namespace Velmora::ModelPrompt
{
	/** What it is here for, what it works on, and how: the message of the system. */
	std::string MakeInstructions(const FTurnInput& Input, bool bHasTools);

	/**
	 * What the user and the project say: behaviour texts and AGENTS.md at the root. Data, so it comes with a message of the
	 * user. Empty when there is nothing.
	 */
	std::string MakeBackground(const FTurnInput& Input, const FProjectFiles& Files);

	/** The attached files: their text, of large ones the outline and how to read on. */
	std::string MakeAttachments(const FTurnInput& Input, const FProjectFiles& Files, FToolBox& Tools);
}
