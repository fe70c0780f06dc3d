#pragma once

#include "CoreMinimal.h"
#include "Host/HostWindow.h"
#include "Misc/DateTime.h"
#include "Misc/Optional.h"
#include "PluginDescriptor.h"
#include "Templates/Function.h"

/** What a session begins with. */
struct FHostSessionOptions
{
	/** The folder with the plug-in's resources, and with the frame's pictures below "Host/Engine". */
	FString HomeFolder;
	FPluginDescriptor Plugin;
	/** Null for a picture in memory of that size. */
	TSharedPtr<IHostWindow> Window;
	FIntPoint Size = FIntPoint(1280, 800);
	/** The local time at which simulated time begins and real time comes back in the end; unset leaves the clock alone. */
	TOptional<FDateTime> StartTime;
};

/**
 * What a process needs to show widgets, from the text shaper to the application. The program, the tests' driver and the benchmarks
 * begin and end alike by it. Whoever starts a further service says in the same breath how it ends; the destructor ends all of them,
 * the last one first, so that nothing outlives what it uses, and a start that failed half-way ends just what it began. One at a
 * time. Game thread: the one that makes it.
 */
class SESSION_API FHostSession
{
public:
	explicit FHostSession(const FHostSessionOptions& Options);
	~FHostSession();
	FHostSession(const FHostSession&) = delete;
	FHostSession& operator=(const FHostSession&) = delete;

	IHostWindow& GetWindow() const { return *Window; }
	/** @param End  Called by the destructor, before what was here already ends. */
	void AtEnd(TFunction<void()> End);

private:
	TSharedPtr<IHostWindow> Window;
	TArray<TFunction<void()>> Ends;
};
