#pragma once

#include <string_view>

#include "Tools/AgentPlan.h"

namespace Velmora
{
	/**
	 * Reads a request of several steps: "first … then … finally …", or "plan: …" with steps apart by line feeds, list marks,
	 * semicolons or "then". What stands in quotes or code fences is never taken apart. Pure.
	 *
	 * @return Without steps when the text is a plain request.
	 */
	FAgentPlan MakeAgentPlan(std::string_view Request);
}
