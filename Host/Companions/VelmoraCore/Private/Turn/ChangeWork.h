#pragma once

#include "Tools/ToolBox.h"
#include "Turn/TurnPermissions.h"
#include "Turn/TurnDesk.h"

namespace Velmora
{
	/** Changes files by the tool box, and asks where that asks. */
	class FChangeWork : private FTurnWork
	{
	public:
		using FTurnWork::FTurnWork;

		// False when the turn is over.
		bool RunChange();

	private:
		/** What file a request to change one means; false with a question to the user. */
		bool FindChangeTarget(
			const std::string& Name, bool bMustExist, bool bFollowsLinks, std::string& OutPath, std::string& OutQuestion) const;

		/** The tool of the request on one file; adds what became of it to the answer. */
		bool RunChangeTool(const std::string& Path, std::string& OutAnswer);

		/** The request as a call of the tool box. */
		struct FToolCall
		{
			std::string_view Tool;
			FToolArguments Arguments;

			/** What a question shows of it: Markdown. */
			std::string Details;
		};
		FToolCall MakeCall(const std::string& Path) const;
		std::string DescribeChange(const std::string& Path, const FChangeOutcome& Outcome) const;

		/** Asks the user. */
		bool AskForTool(std::string_view Tool, const FToolQuestion& Question, FPermissionAnswer& OutAnswer);
	};
}
