#pragma once

#include "CoreMinimal.h"

class SWidget;

/** Where focus and mouse capture are. The application writes it, widgets ask; there is one user. Game thread only. */
struct SLATECORE_API FHostFocus
{
	TWeakPtr<SWidget> Focused;
	TWeakPtr<SWidget> MouseCaptor;
	/** The keyboard moved the focus last, so every focused control shows its ring. */
	bool bShowRing = false;
	/** The program's window has the keyboard. */
	bool bWindowActive = true;

	static FHostFocus& Get();
};
