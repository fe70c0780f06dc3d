#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Host/CodeIndexControl.h"
#include "Tools/ProjectFiles.h"

namespace Velmora
{
	/** What the code index says about a name. */
	struct FSymbolAnswer
	{
		/** An index of this very project could be asked. */
		bool bIsReady = false;

		/** Of the project. Exact, or names that only begin so. */
		CodeIntel::FIndexLookup Project;

		/** Asked only when the project has no such symbol. */
		CodeIntel::FIndexLookup Engine;
	};

	/** @param Where  Symbols elsewhere are left out; the project folder for everywhere, which includes the engine. */
	FSymbolAnswer LookUpSymbol(const FProjectFiles& Files, std::string_view Name, const FProjectPath& Where);

	/** "function `FThing::Run`", without the marks around the name. */
	std::string GetWholeSymbolName(const CodeIntel::FIndexSymbol& Symbol);

	/** The symbols of one file in the order of their lines; of Markdown the headings. */
	struct FFileOutline
	{
		std::vector<CodeIntel::FIndexSymbol> Symbols;

		/** Why there is none: a clause. */
		std::string Problem;
		bool bIsMarkdown = false;

		/** There are more. */
		bool bIsCut = false;

		/** "3 symbols", "2 headings". */
		std::string CountSymbols() const;
	};

	/** Asks the index, or reads the file where that does not hold it. Takes the extractor's time at most; not for the game thread. */
	FFileOutline OutlineProjectFile(const FProjectFiles& Files, const FProjectPath& File);

	/** One line for each symbol: where, how deep, what. */
	std::string MakeOutlineText(const std::vector<CodeIntel::FIndexSymbol>& Symbols);
}
