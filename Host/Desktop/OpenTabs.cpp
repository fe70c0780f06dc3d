#include "OpenTabs.h"

#include "Framework/Application/SlateApplication.h"
#include "Framework/Docking/TabManager.h"
#include "Host/HostAtomicFile.h"
#include "Host/HostFolders.h"
#include "Host/SDockArea.h"
#include "Logging/LogMacros.h"
#include "Misc/FileHelper.h"
#include "SSourceViewer.h"

#include <string>

DEFINE_LOG_CATEGORY_STATIC(LogOpenTabs, Log, All);

namespace
{
	const TCHAR* const FrontMark = TEXT("*");

	/** There are no more kinds of tabs; a longer file is none of ours. */
	constexpr int32 MaxTabs = 64;
}

FOpenTabs::FOpenTabs(const FString& InPath)
	: Path(InPath)
{
}

FOpenTabs::~FOpenTabs()
{
	// What came after the last frame, and all that happened to a window out of sight.
	Look();
}

FString FOpenTabs::Describe()
{
	FString Text;
	const TSharedPtr<SDockArea> Area = FGlobalTabmanager::Get()->GetDockArea();
	for (const TSharedRef<SDockTab>& Tab : Area ? Area->GetTabs() : TArray<TSharedRef<SDockTab>>())
	{
		// Its file is not kept.
		if (Tab->GetLayoutIdentifier() == FTabId(SSourceViewer::GetTabName()))
		{
			continue;
		}
		Text += (Tab->IsForeground() ? FString(FrontMark) : FString()) + Tab->GetLayoutIdentifier().ToString() + TEXT("\n");
	}
	return Text;
}

void FOpenTabs::Restore()
{
	TArray<FString> Names;
	if (HostGetPathKind(Path) == EHostPathKind::File && FFileHelper::LoadFileToStringArray(Names, *Path) && Names.Num() <= MaxTabs)
	{
		FString Front;
		for (const FString& Line : Names)
		{
			const bool bIsFront = Line.StartsWith(FrontMark);
			const FString Name = bIsFront ? Line.Mid(1) : Line;
			Front = bIsFront ? Name : Front;
			if (!Name.IsEmpty())
			{
				FGlobalTabmanager::Get()->TryInvokeTab(FTabId(FName(*Name)), true);
			}
		}
		if (!Front.IsEmpty())
		{
			FGlobalTabmanager::Get()->TryInvokeTab(FTabId(FName(*Front)));
		}
	}
	Kept = Describe();
}

void FOpenTabs::NoteTurn()
{
	// Each tab that comes, goes or moves to the front brings a frame. At rest nothing is asked.
	const uint64 Frames = FSlateApplication::Get().GetFrameStats().FrameCount;
	if (Frames != SeenFrames)
	{
		SeenFrames = Frames;
		Look();
	}
}

void FOpenTabs::Look()
{
	const FString Now = Describe();
	if (Now.Equals(Kept, ESearchCase::CaseSensitive))
	{
		return;
	}
	Kept = Now;
	const std::string Bytes = TCHAR_TO_UTF8(*Now);
	FString Reason;
	if (!HostSaveFile(Path, Bytes.data(), static_cast<int64>(Bytes.size()), HostWritePrivate, Reason))
	{
		// Nothing that anybody has typed; the next change tries again.
		UE_LOG(LogOpenTabs, Warning, TEXT("Which tabs are open could not be kept in %s: %s"), *Path, *Reason);
	}
}
