#include "AccessSupport.h"

#include "AccessNames.h"
#include "ConversationPrinter.h"
#include "Framework/Application/SlateApplication.h"
#include "Host/DesktopSettings.h"
#include "Host/HostAnnouncements.h"
#include "Host/HostModules.h"
#include "Host/HostMotion.h"
#include "Host/HostNotifications.h"
#include "Logging/LogMacros.h"
#include "Modules/ModuleManager.h"
#include "OpenChat.h"
#include "ViewModels/ChatViewModel.h"
#include "WindowContrast.h"

DEFINE_LOG_CATEGORY_STATIC(LogAccess, Log, All);

namespace
{
	const FName BridgeModule(TEXT("Accessibility"));

	bool IsOn(EAccessChoice Choice, bool bOfDesktop)
	{
		return Choice == EAccessChoice::Desktop ? bOfDesktop : Choice == EAccessChoice::On;
	}
}

void FAccessSupport::Start(const FDesktopOptions& Options, bool bHasUser, TFunction<void()> OnLook)
{
	FAccessNames::Install();
	const EAccessChoice Accessibility = Options.Accessibility;
	const EAccessChoice Contrast = Options.HighContrast;
	const EAccessChoice Motion = Options.ReducedMotion;
	const auto Apply = [Accessibility, Contrast, Motion, OnLook = MoveTemp(OnLook)](const FHostDesktopSettings& Settings)
	{
		if (OnLook)
		{
			FWindowContrast::SetHigh(IsOn(Contrast, Settings.bHighContrast));
			FHostMotion::SetReduced(IsOn(Motion, Settings.bReducedMotion));
			OnLook();
		}
		// Once shown it stays so: who has asked once asks again, and who holds something of ours keeps it.
		if (IsOn(Accessibility, Settings.bAssistiveTechnology))
		{
			ShowWindow();
		}
	};
	Apply(FHostDesktopSettings());
	const bool bAsksDesktop =
		Accessibility == EAccessChoice::Desktop || Contrast == EAccessChoice::Desktop || Motion == EAccessChoice::Desktop;
	if (bHasUser && bAsksDesktop)
	{
		FHostDesktopWatch::Begin(Apply);
	}
}

void FAccessSupport::End()
{
	FHostDesktopWatch::End();
	if (FModuleManager::Get().IsModuleLoaded(BridgeModule))
	{
		FModuleManager::Get().UnloadModule(BridgeModule, true);
	}
	FHostMotion::SetReduced(false);
	FWindowContrast::SetHigh(false);
	FAccessNames::Uninstall();
}

void FAccessSupport::ShowWindow()
{
	if (FModuleManager::Get().IsModuleLoaded(BridgeModule))
	{
		return;
	}
	if (!FModuleManager::Get().LoadModule(BridgeModule))
	{
		UE_LOG(LogAccess, Warning,
			TEXT("A screen reader asks for the window, which cannot be shown to it: %s. The packages libatk-bridge2.0-0 and at-spi2-core ")
				TEXT("are needed."),
			*FHostModules::GetLastError());
	}
}

void FAccessSupport::NoteTurn()
{
	if (!FHostAnnouncements::IsHeard() || FSlateApplication::Get().GetFrameStats().FrameCount == SeenFrames)
	{
		return;
	}
	SeenFrames = FSlateApplication::Get().GetFrameStats().FrameCount;
	if (const TSharedPtr<FChatViewModel> ViewModel = FOpenChat::GetViewModel())
	{
		SayMessages(*ViewModel);
		const FString Status = ViewModel->GetStatusText();
		if (!Status.Equals(SaidStatus))
		{
			SaidStatus = Status;
			FHostAnnouncements::Say(Status);
		}
	}
	else
	{
		Forget();
	}
	SayToasts();
}

void FAccessSupport::Forget()
{
	SeenViewModel = nullptr;
	LastSeen = nullptr;
	SeenCount = 0;
	ToolGroup = nullptr;
	SaidTools = 0;
}

// Messages come at the end. When those before are others than they were, another conversation stands there: what it holds is old.
void FAccessSupport::SayMessages(const FChatViewModel& ViewModel)
{
	const TArray<TSharedPtr<FChatMessage>>& Messages = ViewModel.GetMessages();
	const bool bGoesOn =
		SeenViewModel == &ViewModel && SeenCount <= Messages.Num() && (SeenCount == 0 || Messages[SeenCount - 1].Get() == LastSeen);
	if (!bGoesOn)
	{
		const bool bFirst = SeenViewModel == nullptr;
		Forget();
		SeenViewModel = &ViewModel;
		SeenCount = Messages.Num();
		LastSeen = SeenCount > 0 ? Messages.Last().Get() : nullptr;
		if (!bFirst && SeenCount > 0)
		{
			FHostAnnouncements::Say(FString::Printf(TEXT("Another conversation, %d messages."), SeenCount));
		}
		return;
	}
	for (int32 Index = SeenCount; Index < Messages.Num(); ++Index)
	{
		const FChatMessage& Message = *Messages[Index];
		const bool bGroup = Message.Type == EChatMessageType::ToolSummary;
		if (!bGroup && !Message.bIsComplete)
		{
			// Read when all of it is there.
			break;
		}
		if (bGroup)
		{
			ToolGroup = &Message;
			SaidTools = 0;
		}
		else if (!Message.IsUserMessage())
		{
			FHostAnnouncements::Say(Message.GetSenderName() + TEXT(": ") + Message.Content);
		}
		SeenCount = Index + 1;
		LastSeen = &Message;
	}
	for (int32 Index = Messages.Num() - 1; Index >= 0 && ToolGroup; --Index)
	{
		if (Messages[Index].Get() == ToolGroup)
		{
			SayTools(*Messages[Index]);
			return;
		}
	}
	ToolGroup = nullptr;
}

// In the order in which they started, each once it has ended.
void FAccessSupport::SayTools(const FChatMessage& Group)
{
	while (SaidTools < Group.ToolExecutions.Num() && !Group.ToolExecutions[SaidTools]->IsToolRunning())
	{
		const FChatMessage& Tool = *Group.ToolExecutions[SaidTools++];
		FHostAnnouncements::Say(FConversationPrinter::GetToolLabel(Tool) +
			(Tool.ToolStatus == EToolStatus::Failed ? TEXT(", failed: ") + Tool.ToolResult : FString(TEXT(", done"))));
	}
}

void FAccessSupport::SayToasts()
{
	TArray<FString> Now;
	for (const FHostToast& Toast : FHostNotifications::GetVisible())
	{
		Now.Add(Toast.Text.ToString());
		if (!SeenToasts.Contains(Now.Last()))
		{
			FHostAnnouncements::Say(Now.Last());
		}
	}
	SeenToasts = MoveTemp(Now);
}
