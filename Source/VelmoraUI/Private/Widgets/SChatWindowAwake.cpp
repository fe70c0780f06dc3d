#include "Widgets/SChatWindow.h"

#include "FileSearch/FileIndexService.h"
#include "UpdateGate.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/Input/SMenuAnchor.h"

void SChatWindow::SetUpStayingAwake()
{
	constexpr float LookSeconds = 0.1f;
	StayAwake.SetUp(*this, [this] { return IsFrameDue(); });
	LookNowAndThen.SetUp(
		*this, [this] { return IsLookDue(); }, LookSeconds);
}

void SChatWindow::HearOfChanges(const TSharedPtr<FChatViewModel>& OldViewModel)
{
	// The old ones may live on with other owners and must not wake this window.
	if (OldViewModel.IsValid())
	{
		OldViewModel->MessageWaitsHook = nullptr;
	}
	if (GateFrameHandle.IsValid())
	{
		Velmora::FUpdateGate::Get().OnStateChanged().Remove(GateFrameHandle);
		GateFrameHandle.Reset();
	}
	// One frame, to show that there is no conversation.
	if (!ViewModel.IsValid())
	{
		StayAwake.Start();
		return;
	}
	// The window may end before the view model, hence the weak pointer: a plain function knows nothing of that.
	ViewModel->MessageWaitsHook = [WeakWindow = TWeakPtr<SChatWindow>(SharedThis(this))]
	{
		if (const TSharedPtr<SChatWindow> Window = WeakWindow.Pin())
		{
			Window->StayAwake.Start();
		}
	};
	GateFrameHandle = Velmora::FUpdateGate::Get().OnStateChanged().AddSP(this, &SChatWindow::BringFrameForGate);
}

void SChatWindow::BringFrameForGate(Velmora::EUpdateGateState NewState)
{
	// With it comes a Tick, which sees what else is due.
	StayAwake.Start();
}

bool SChatWindow::IsFrameDue() const
{
	// These end by themselves, and with them the frames.
	const bool bMessagesWait = ViewModel.IsValid() && ViewModel->HasPendingUpdates();
	return bMessagesWait || bPendingScrollToBottom || ColorTransitionProgress < 1.0f;
}

bool SChatWindow::IsLookDue() const
{
	using Velmora::EUpdateGateState;
	// The gate moves while it checks or loads, without a report for each step.
	const EUpdateGateState Gate = Velmora::FUpdateGate::Get().GetState();
	if (Gate != EUpdateGateState::Ready && Gate != EUpdateGateState::UpdateAvailable)
	{
		return true;
	}
	// A busy agent is polled by its observer, so that a state that it does not report is still seen.
	if (IsBusy())
	{
		return true;
	}
	// The list shows when the scan ends, and the cache does not say so.
	const Velmora::UI::FFileIndexService& Index = Velmora::UI::FFileIndexService::Get();
	return FileSearchAnchor.IsValid() && FileSearchAnchor->IsOpen() && (Index.IsIndexing() || !Index.IsReady());
}
