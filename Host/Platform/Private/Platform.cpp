#include "Host/Platform.h"

#include "Async/Async.h"
#include "Async/TaskGraphInterfaces.h"
#include "Headless/HeadlessWindow.h"
#include "Host/HostServices.h"
#include "Logging/LogMacros.h"
#include "Open/Launcher.h"
#include "PlatformState.h"
#include "Sdl/SdlClipboard.h"
#include "Sdl/SdlWindow.h"
#include "Text/FontCheck.h"
#include "Text/PangoTextShaper.h"

#include <algorithm>
#include <mutex>

// The door to the platform: windows, text, clipboard and what is opened outside. Handlers are kept under a lock, since
// problems are noticed on any thread, and are called without it, since what they do is not known here.
DEFINE_LOG_CATEGORY_STATIC(LogPlatform, Log, All);

namespace
{
	constexpr int32 MaxWindowSide = 16384;
	constexpr int32 MaxRecordedTargets = 1000;

	struct FPlatformHandlers
	{
		std::mutex Mutex;
		TFunction<void(const FString&)> Problem;
		TFunction<void()> DisplayLost;
		TFunction<void(const FString&, int32)> SourceViewer;
		bool bToldToEnd = false;
		TArray<FString> Targets;
	};

	FPlatformHandlers& GetHandlers()
	{
		static FPlatformHandlers Handlers;
		return Handlers;
	}

	// A size and a scale come from options, files and screens; each can be nonsense.
	FIntPoint ClampSize(const FIntPoint& Size)
	{
		return FIntPoint(std::clamp(Size.X, 1, MaxWindowSide), std::clamp(Size.Y, 1, MaxWindowSide));
	}

	float ClampScale(float Scale)
	{
		return Scale > 0.0f ? std::clamp(Scale, 0.25f, 8.0f) : 1.0f;
	}
}

void FHostPlatform::InstallTextShaper()
{
	ITextShaper::Set(MakeShared<FPangoTextShaper>());
}

TArray<FString> FHostPlatform::FindMissingFonts()
{
	return FFontCheck::FindMissing();
}

FString FHostPlatform::FindMissingScripts()
{
	return FFontCheck::FindMissingScripts();
}

TSharedPtr<IHostWindow> FHostPlatform::CreateDesktopWindow(const FHostWindowOptions& Options, FString& OutError)
{
	FHostWindowOptions Clamped = Options;
	Clamped.PixelSize = ClampSize(Options.PixelSize);
	Clamped.Scale = ClampScale(Options.Scale);
	TSharedPtr<FSdlWindow> Window = FSdlWindow::Create(Clamped, OutError);
	if (Window)
	{
		FSdlClipboard::Install();
	}
	return Window;
}

// Without a screen there is no clipboard of others: the program's own is used.
TSharedRef<IHostWindow> FHostPlatform::CreateHeadlessWindow(const FIntPoint& PixelSize, float Scale)
{
	FHostServices::SetClipboardHooks(nullptr, nullptr);
	return MakeShared<FHeadlessWindow>(ClampSize(PixelSize), ClampScale(Scale));
}

void FHostPlatform::SetPrimarySelection(const FString& Text)
{
	FSdlClipboard::Select(Text);
}

void FHostPlatform::InstallLauncher(bool bStartNothing)
{
	FLauncher::Install(bStartNothing);
}

TArray<FString> FHostPlatform::GetRecordedTargets()
{
	FPlatformHandlers& Handlers = GetHandlers();
	const std::lock_guard<std::mutex> Lock(Handlers.Mutex);
	return Handlers.Targets;
}

void FHostPlatform::ClearRecordedTargets()
{
	FPlatformHandlers& Handlers = GetHandlers();
	const std::lock_guard<std::mutex> Lock(Handlers.Mutex);
	Handlers.Targets.Empty();
}

void FHostPlatform::SetProblemHandler(TFunction<void(const FString&)> Handler)
{
	FPlatformHandlers& Handlers = GetHandlers();
	const std::lock_guard<std::mutex> Lock(Handlers.Mutex);
	Handlers.Problem = MoveTemp(Handler);
}

void FHostPlatform::SetDisplayLostHandler(TFunction<void()> Handler)
{
	FPlatformHandlers& Handlers = GetHandlers();
	const std::lock_guard<std::mutex> Lock(Handlers.Mutex);
	Handlers.DisplayLost = MoveTemp(Handler);
}

void FHostPlatform::SetSourceViewer(TFunction<void(const FString& Path, int32 Line)> Viewer)
{
	FPlatformHandlers& Handlers = GetHandlers();
	const std::lock_guard<std::mutex> Lock(Handlers.Mutex);
	Handlers.SourceViewer = MoveTemp(Viewer);
}

bool PlatformState::HasSourceViewer()
{
	FPlatformHandlers& Handlers = GetHandlers();
	const std::lock_guard<std::mutex> Lock(Handlers.Mutex);
	return static_cast<bool>(Handlers.SourceViewer);
}

void PlatformState::ShowSource(const FString& Path, int32 Line)
{
	TFunction<void(const FString&, int32)> Viewer;
	{
		FPlatformHandlers& Handlers = GetHandlers();
		const std::lock_guard<std::mutex> Lock(Handlers.Mutex);
		Viewer = Handlers.SourceViewer;
	}
	if (Viewer)
	{
		Viewer(Path, Line);
	}
}

// A problem is reported on the game thread, where handlers may show it, and before there is one it goes into the log.
void PlatformState::ReportProblem(const FString& Sentence)
{
	if (!IsInGameThread())
	{
		AsyncTask(ENamedThreads::GameThread, [Sentence] { ReportProblem(Sentence); });
		return;
	}
	TFunction<void(const FString&)> Problem;
	{
		FPlatformHandlers& Handlers = GetHandlers();
		const std::lock_guard<std::mutex> Lock(Handlers.Mutex);
		Problem = Handlers.Problem;
	}
	if (Problem)
	{
		Problem(Sentence);
	}
	else
	{
		UE_LOG(LogPlatform, Warning, TEXT("%s"), *Sentence);
	}
}

void PlatformState::CallDisplayLost()
{
	TFunction<void()> DisplayLost;
	{
		FPlatformHandlers& Handlers = GetHandlers();
		const std::lock_guard<std::mutex> Lock(Handlers.Mutex);
		// Taken out: saving may touch the display and fail again.
		std::swap(DisplayLost, Handlers.DisplayLost);
	}
	if (DisplayLost)
	{
		DisplayLost();
	}
}

void PlatformState::NoteToldToEnd()
{
	FPlatformHandlers& Handlers = GetHandlers();
	const std::lock_guard<std::mutex> Lock(Handlers.Mutex);
	Handlers.bToldToEnd = true;
}

bool FHostPlatform::IsToldToEnd()
{
	FPlatformHandlers& Handlers = GetHandlers();
	const std::lock_guard<std::mutex> Lock(Handlers.Mutex);
	return Handlers.bToldToEnd;
}

// What would have been opened, for those who started with nothing to be opened. The newest are kept.
void PlatformState::RecordTarget(const FString& Target)
{
	FPlatformHandlers& Handlers = GetHandlers();
	const std::lock_guard<std::mutex> Lock(Handlers.Mutex);
	if (Handlers.Targets.Num() >= MaxRecordedTargets)
	{
		Handlers.Targets.RemoveAt(0);
	}
	Handlers.Targets.Add(Target);
}
