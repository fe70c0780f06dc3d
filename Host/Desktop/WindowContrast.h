#pragma once

#include "Host/HostWindow.h"
#include "Rendering/DrawElements.h"
#include "Templates/SharedPointer.h"

/**
 * Everything on black, with text and lines as bright as it takes to be read with weak eyes. Colours are changed on the way to the
 * window, so that whoever chose them, plug-ins too, needs to know nothing of it. Game thread.
 */
class FWindowContrast
{
public:
	/** The window as all others are to see it; only its colours differ, and only while it is switched on. */
	static TSharedRef<IHostWindow> Wrap(const TSharedRef<IHostWindow>& Window);

	static bool IsHigh();
	/** Paints the window anew when it changes. */
	static void SetHigh(bool bHigh);

	/**
	 * Text, marks and outlines: at least 7 to 1 against black. What cannot be used now, which styles tell by the alpha, is 3 to 1. The hue
	 * stays. Pure.
	 */
	static FColor Brighten(const FColor& Color);
	/** Surfaces that text stands on: text is at least 4.5 to 1 against them, the darkest become black. Light ones stay. Pure. */
	static FColor Darken(const FColor& Color);
	/** As the standard for contrast has it, 0 to 1. Pure. */
	static double GetLuminance(const FColor& Color);
};
