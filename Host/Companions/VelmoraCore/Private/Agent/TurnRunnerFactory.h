#pragma once

#include <memory>

#include "Turn/TurnRunner.h"

namespace Velmora
{
	/** For one turn: whoever answers its prompt. Never null. Game thread. */
	std::unique_ptr<ITurnRunner> MakeTurnRunner(const FTurnInput& Input);
}
