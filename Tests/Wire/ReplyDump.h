#pragma once

#include <string>

#include "Model/ModelTypes.h"

namespace WireTests
{
	inline const char* NameFault(Velmora::EModelFault Fault)
	{
		using enum Velmora::EModelFault;
		switch (Fault)
		{
		case None:
			return "None";
		case Cancelled:
			return "Cancelled";
		case BadAddress:
			return "BadAddress";
		case Unreachable:
			return "Unreachable";
		case NotTrusted:
			return "NotTrusted";
		case Refused:
			return "Refused";
		case NotFound:
			return "NotFound";
		case Redirected:
			return "Redirected";
		case RateLimited:
			return "RateLimited";
		case Overloaded:
			return "Overloaded";
		case ContextFull:
			return "ContextFull";
		case NoTools:
			return "NoTools";
		case NoUsage:
			return "NoUsage";
		case BadRequest:
			return "BadRequest";
		case NoModelServer:
			return "NoModelServer";
		case BadAnswer:
			return "BadAnswer";
		case Silent:
			return "Silent";
		case CutShort:
			return "CutShort";
		case TooLarge:
			return "TooLarge";
		}
		return "?";
	}

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
			Text += std::string(" !") + NameFault(Reply.Problem.Fault);
			Text += Reply.Problem.Detail.empty() ? "" : " '" + Reply.Problem.Detail + "'";
		}
		return Text;
	}
}
