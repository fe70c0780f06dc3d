#include "Host/HostInputTap.h"

#include "Framework/Application/SlateApplication.h"

namespace
{
	IHostMessageHandler* CurrentTap = nullptr;
	IHostMessageHandler* CurrentApplication = nullptr;
}

void FHostInputTap::Set(IHostMessageHandler* Tap)
{
	CurrentTap = Tap;
}

IHostMessageHandler& FHostInputTap::GetApplication()
{
	// Asking for the way in makes it known, whatever was asked before.
	(void)FSlateApplication::Get().GetMessageHandler();
	return *CurrentApplication;
}

IHostMessageHandler& FHostInputTap::Enter(IHostMessageHandler& Application)
{
	CurrentApplication = &Application;
	return CurrentTap ? *CurrentTap : Application;
}
