#pragma once

#include "Host/HostWindow.h"

/**
 * Stands where input enters the application, that of the platform and that of drivers alike: to write it down, or to put other input
 * in its place. Game thread.
 */
class SLATE_API FHostInputTap
{
public:
	/** Gets every event from now on, instead of the application. Null for nobody. Must outlive its time here. */
	static void Set(IHostMessageHandler* Tap);
	/** The application itself, for who holds the tap. Needs the application. */
	static IHostMessageHandler& GetApplication();

private:
	friend class FSlateApplication;
	/** The way in, for the application. */
	static IHostMessageHandler& Enter(IHostMessageHandler& Application);
};
