#include "AtkBridge.h"
#include "Logging/LogMacros.h"
#include "Modules/ModuleManager.h"

DEFINE_LOG_CATEGORY_STATIC(LogAccessibility, Log, All);

/** Loaded when an assistive technology asks for the first time; stays until the program ends. */
class FAccessibilityModule : public IModuleInterface
{
public:
	virtual void StartupModule() override
	{
		Bridge = MakeUnique<FAtkBridge>();
		if (!Bridge->IsConnected())
		{
			UE_LOG(LogAccessibility, Warning, TEXT("The accessibility service cannot be reached. Is at-spi2-core installed?"));
		}
	}
	virtual void ShutdownModule() override { Bridge.Reset(); }

private:
	TUniquePtr<FAtkBridge> Bridge;
};

IMPLEMENT_MODULE(FAccessibilityModule, Accessibility)
