#include "HAL/IConsoleManager.h"
#include "Modules/ModuleManager.h"

namespace
{
	// Told through the console, the one place that the test and the library share.
	TAutoConsoleVariable<int32> Starts(TEXT("system.TestModule.Starts"), 0, TEXT("How often the module was started."));
	TAutoConsoleVariable<int32> Stops(TEXT("system.TestModule.Stops"), 0, TEXT("How often the module was shut down."));

	/** Counts. */
	class FCoreTestModule final : public IModuleInterface
	{
	public:
		void StartupModule() override { Starts->Set(Starts.GetValueOnGameThread() + 1); }
		void ShutdownModule() override { Stops->Set(Stops.GetValueOnGameThread() + 1); }
	};
}

IMPLEMENT_MODULE(FCoreTestModule, CoreTestModule)
