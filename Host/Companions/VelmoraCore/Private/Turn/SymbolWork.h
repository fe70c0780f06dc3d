#pragma once

#include "Host/CodeIndexControl.h"
#include "Turn/TurnDesk.h"

namespace Velmora
{
	/** Asks the code index: where a symbol is defined, what a file defines. */
	class FSymbolWork : private FTurnWork
	{
	public:
		using FTurnWork::FTurnWork;

		// False when the turn is over.
		bool RunFindSymbol();
		bool RunOutline();

	private:
		/** No file of the request's name, or several. */
		bool AskWhichFile();

		/** The best of some symbols with its code, then the others. */
		bool AnswerSymbols(const std::string& Name, const std::vector<CodeIntel::FIndexSymbol>& Symbols);
	};
}
