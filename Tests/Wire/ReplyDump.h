#pragma once

#include <string>

#include "Model/ModelTypes.h"

namespace WireTests
{
	/** As they stand in the enumeration. */
	inline constexpr const char* FaultNames[] = { "None", "Cancelled", "BadAddress", "Unreachable", "NotTrusted", "Refused", "NotFound",
		"Redirected", "RateLimited", "Overloaded", "ContextFull", "NoTools", "NoUsage", "BadRequest", "NoModelServer", "BadAnswer",
		"Silent", "CutShort", "TooLarge" };

	/** "Stop 'text' think 'thought' read_file#id{"path":"a"} 3+4 tokens !Fault 'detail'" */
	inline std::string Dump(const Velmora::FModelReply& Reply)
	{
		const char* const Finishes[] = { "Missing", "Stop", "Calls", "Length", "Filtered" };
		std::string Text = std::string(Finishes[static_cast<int>(Reply.Finish)]) + " '" + Reply.Text + "'";
		if (!Reply.Thinking.empty())
		{
			Text += " think '" + Reply.Thinking + "'";
		}
		for (const Velmora::FModelCall& Call : Reply.Calls)
		{
			Text += ' ' + Call.Name + '#' + Call.Id + (Call.bIsTooLarge ? "(too large)" : Call.Arguments);
		}
		if (Reply.DroppedCalls > 0)
		{
			Text += " dropped " + std::to_string(Reply.DroppedCalls);
		}
		if (Reply.Usage.PromptTokens >= 0)
		{
			Text += ' ' + std::to_string(Reply.Usage.PromptTokens) + '+' + std::to_string(Reply.Usage.CompletionTokens) + " tokens";
		}
		if (Reply.Problem)
		{
			Text += std::string(" !") + FaultNames[static_cast<int>(Reply.Problem.Fault)];
			Text += Reply.Problem.Detail.empty() ? "" : " '" + Reply.Problem.Detail + "'";
		}
		return Text;
	}
}
