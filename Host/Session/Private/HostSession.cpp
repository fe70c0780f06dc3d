#include "Host/HostSession.h"

#include "Framework/Application/SlateApplication.h"
#include "Host/HostAppStyle.h"
#include "Host/HostClock.h"
#include "Host/HostPlugins.h"
#include "Host/HostTasks.h"
#include "Host/Platform.h"

namespace
{
	/** What stays until the process ends: styles and fonts are held by statics of the module, which is never unloaded. */
	void SetUpProcessOnce(const FHostSessionOptions& Options)
	{
		static const bool bIsDone = [&Options]
		{
			FHostPlatform::InstallTextShaper();
			FHostPlugins::RegisterPlugin(TEXT("Velmora"), Options.HomeFolder, Options.Plugin);
			FHostAppStyle::Initialize(Options.HomeFolder / TEXT("Host/Engine/Resources/AppStyle"));
			return true;
		}();
		(void)bIsDone;
	}
}

FHostSession::FHostSession(const FHostSessionOptions& Options)
	: Window(Options.Window)
{
	FHostTasks::SetGameThread();
	SetUpProcessOnce(Options);
	if (Options.StartTime.IsSet())
	{
		FHostClock::UseSimulatedTime(Options.StartTime.GetValue());
		AtEnd([] { FHostClock::UseRealTime(); });
	}
	if (!Window)
	{
		Window = FHostPlatform::CreateHeadlessWindow(Options.Size, 1.0f);
	}
	FSlateApplication::Create(Window.ToSharedRef());
	AtEnd([] { FSlateApplication::Shutdown(); });
}

FHostSession::~FHostSession()
{
	while (!Ends.IsEmpty())
	{
		// Taken out first: an end may let go of somebody who adds another one.
		const TFunction<void()> End = MoveTemp(Ends.Last());
		Ends.Pop();
		End();
	}
}

void FHostSession::AtEnd(TFunction<void()> End)
{
	Ends.Add(MoveTemp(End));
}
