#pragma once

#include "CoreMinimal.h"
#include "Templates/SharedPointer.h"

class FUICommandList;
class FMenuBuilder;
class SFindStrip;

/** What the frame's menus and keys do to the open chat and to the window: each as the user could by hand. Game thread. */
class FChatCommands
{
public:
	static void MapCommands(FUICommandList& Commands, const TSharedRef<SFindStrip>& Find);

	// Sections of the menus File, Edit, Tools and Window.
	static void BuildFileSection(FMenuBuilder& Builder);
	static void BuildEditSection(FMenuBuilder& Builder);
	static void BuildTurnSection(FMenuBuilder& Builder);
	static void BuildViewSection(FMenuBuilder& Builder);
};
