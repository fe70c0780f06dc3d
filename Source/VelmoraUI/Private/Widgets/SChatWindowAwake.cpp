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
	if (OldViewModel.IsValid())
	{
		OldViewModel->MessageWaitsHook = nullptr;
	}
	if (GateFrameHandle.IsValid())
	{
		Velmora::FUpdateGate::Get().OnStateChanged().Remove(GateFrameHandle);
		GateFrameHandle.Reset();
	}
	if (!ViewModel.IsValid())
	{
		StayAwake.Start();
		return;
	}
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
	const bool bMessagesWait = ViewModel.IsValid() && ViewModel->HasPendingUpdates();
	return bMessagesWait || bPendingScrollToBottom || ColorTransitionProgress < 1.0f;
}

bool SChatWindow::IsLookDue() const
{
	using Velmora::EUpdateGateState;
	const EUpdateGateState Gate = Velmora::FUpdateGate::Get().GetState();
	if (Gate != EUpdateGateState::Ready && Gate != EUpdateGateState::UpdateAvailable)
	{
		return true;
	}
	if (IsBusy())
	{
		return true;
	}
	const Velmora::UI::FFileIndexService& Index = Velmora::UI::FFileIndexService::Get();
	return FileSearchAnchor.IsValid() && FileSearchAnchor->IsOpen() && (Index.IsIndexing() || !Index.IsReady());
}
