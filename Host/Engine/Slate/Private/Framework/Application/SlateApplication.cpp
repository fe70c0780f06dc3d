#include "Framework/Application/SlateApplication.h"

#include "Containers/Ticker.h"
#include "FrameRunner.h"
#include "Host/HostFocus.h"
#include "Host/HostInputTap.h"
#include "Host/HostTasks.h"
#include "InputRouter.h"
#include "LayerStack.h"
#include "SFloatingFrames.h"

// The face of the frame, layer and input machinery that widgets and the program see. It owns the three in the order in
// which they need each other, and holds what has to touch several of them at once: popups take the focus, modal windows
// run a loop.

namespace
{
	TUniquePtr<FSlateApplication>& GetApplicationSlot()
	{
		static TUniquePtr<FSlateApplication> Application;
		return Application;
	}
}

void FSlateApplication::Create(const TSharedRef<IHostWindow>& Window)
{
	checkf(!GetApplicationSlot(), TEXT("There is one application"));
	GetApplicationSlot() = TUniquePtr<FSlateApplication>(new FSlateApplication(Window));
	FHostTasks::SetWakeHook([Window]() { Window->Wake(); });
	FTSTicker::GetCoreTicker().SetFollowsClock(true);
}

// 1. Nobody calls in any more. 2. Everything that is shown goes while the application can still be asked. 3. The
// application.
void FSlateApplication::Shutdown()
{
	FHostTasks::SetWakeHook(nullptr);
	FTSTicker::GetCoreTicker().SetFollowsClock(false);
	if (GetApplicationSlot())
	{
		// Widgets may ask for the application while they die.
		GetApplicationSlot()->DismissAllMenus();
		GetApplicationSlot()->SetRootContent(SNullWidget::GetNullWidget());
		GetApplicationSlot()->SetToastLayer(nullptr);
	}
	GetApplicationSlot().Reset();
	FHostFocus::Get() = FHostFocus();
}

bool FSlateApplication::IsInitialized()
{
	return GetApplicationSlot().IsValid();
}

FSlateApplication& FSlateApplication::Get()
{
	checkf(GetApplicationSlot().IsValid(), TEXT("The application was asked for before it was made"));
	return *GetApplicationSlot();
}

FSlateApplication::FSlateApplication(const TSharedRef<IHostWindow>& InWindow)
	: Window(InWindow)
	, Layers(MakeUnique<FLayerStack>())
	, Input(MakeUnique<FInputRouter>(*Layers, *InWindow))
	, Frames(MakeUnique<FFrameRunner>(*Layers, *Input, *InWindow))
{
}

FSlateApplication::~FSlateApplication() = default;

void FSlateApplication::SetRootContent(const TSharedRef<SWidget>& Content)
{
	Layers->SetContent(Content);
	NoteActivity();
}

IHostWindow& FSlateApplication::GetWindow()
{
	return *Window;
}

// One turn of the program's loop: wait, hand over input, do what is due.
bool FSlateApplication::RunTurn(double MaxWaitSeconds)
{
	if (Frames->FrameHook)
	{
		// A copy: the step may remove itself.
		const TFunction<void()> Step = Frames->FrameHook;
		Step();
	}
	Window->PumpEvents(FHostInputTap::Enter(*Input), FMath::Min(Frames->GetWait(), MaxWaitSeconds));
	return Frames->RunTurn(false);
}

// A frame at once, whether anything asked for it or not; for tests and pictures.
void FSlateApplication::Tick()
{
	Frames->RunTurn(true);
}

const FSlateWindowElementList& FSlateApplication::GetLastElements() const
{
	return Frames->GetElements();
}

const FHostFrameStats& FSlateApplication::GetFrameStats() const
{
	return Frames->GetStats();
}

void FSlateApplication::SetFrameHook(TFunction<void()> Step)
{
	Frames->FrameHook = MoveTemp(Step);
}

void FSlateApplication::NoteActivity()
{
	Frames->NoteActivity();
}

void FSlateApplication::RequestFrame()
{
	Frames->RequestFrame();
}

void FSlateApplication::SetStrictSleep(bool bStrict)
{
	Frames->SetStrictSleep(bStrict);
}

bool FSlateApplication::IsExitRequested() const
{
	return Input->bExitRequested;
}

void FSlateApplication::RequestExit()
{
	Input->bExitRequested = true;
}

bool FSlateApplication::SetKeyboardFocus(const TSharedPtr<SWidget>& Widget, EFocusCause Cause)
{
	return Input->SetFocus(Widget, Cause);
}

void FSlateApplication::ClearKeyboardFocus(EFocusCause Cause)
{
	Input->SetFocus(nullptr, Cause);
}

TSharedPtr<SWidget> FSlateApplication::GetKeyboardFocusedWidget() const
{
	return FHostFocus::Get().Focused.Pin();
}

bool FSlateApplication::HasFocusedDescendants(const TSharedRef<const SWidget>& Widget) const
{
	return Widget->HasFocusedDescendants();
}

FModifierKeysState FSlateApplication::GetModifierKeys() const
{
	return Input->GetModifiers();
}

TSharedPtr<SWidget> FSlateApplication::GetMouseCaptor() const
{
	return FHostFocus::Get().MouseCaptor.Pin();
}

void FSlateApplication::ReleaseMouseCapture()
{
	Input->ReleaseCapture();
}

// The anchor is kept relative to its owner, so that a popup follows a box that scrolls or grows while it is open.
TSharedRef<IMenu> FSlateApplication::PushMenu(const TSharedRef<SWidget>& Owner, const TSharedRef<SWidget>& Content,
	const FSlateRect& Anchor, EMenuPlacement Placement, bool bFocus, EHostOwnerPress OwnerPress, float MinWidth)
{
	// clang-format off
	const TSharedRef<SWidget> Frame = SNew(SPopupFrame)
		.MinWidth(MinWidth)
		[
			Content
		];
	// clang-format on
	const TSharedRef<FPopup> Popup = MakeShared<FPopup>(Owner, Content, Frame);
	const FVector2D Corner = Owner->GetCachedGeometry().GetAbsolutePosition();
	Popup->RelativeAnchor = FSlateRect(Anchor.Left - static_cast<float>(Corner.X), Anchor.Top - static_cast<float>(Corner.Y),
		Anchor.Right - static_cast<float>(Corner.X), Anchor.Bottom - static_cast<float>(Corner.Y));
	Popup->Placement = Placement;
	Popup->bFollowsOwnerSize = Anchor == Owner->GetCachedGeometry().GetLayoutBoundingRect();
	Popup->bTookFocus = bFocus;
	Popup->bOwnerHasKeyboard = !bFocus && (Owner->HasKeyboardFocus() || Owner->HasFocusedDescendants());
	Popup->OwnerPress = OwnerPress;
	Input->CloseToolTip();
	Layers->AddPopup(Popup);
	if (bFocus)
	{
		Popup->FocusBefore = FHostFocus::Get().Focused;
		Input->SetFocus(Content, EFocusCause::SetDirectly);
		const TWeakPtr<FPopup> WeakPopup = Popup;
		// The keyboard goes back where it was, unless the pick has moved it already.
		Popup->GetOnMenuDismissed().AddLambda(
			[WeakPopup](TSharedRef<IMenu>)
			{
				const TSharedPtr<FPopup> Closed = WeakPopup.Pin();
				if (!Closed || !FSlateApplication::IsInitialized())
				{
					return;
				}
				const TSharedPtr<SWidget> Focused = FHostFocus::Get().Focused.Pin();
				if (!Focused || Closed->Frame->HasFocusedDescendants())
				{
					FSlateApplication::Get().SetKeyboardFocus(Closed->FocusBefore.Pin(), EFocusCause::SetDirectly);
				}
			});
	}
	NoteActivity();
	return Popup;
}

void FSlateApplication::DismissAllMenus()
{
	const TArray<TSharedRef<FPopup>> Open = Layers->GetPopups();
	for (int32 Index = Open.Num() - 1; Index >= 0; --Index)
	{
		Open[Index]->Dismiss();
	}
}

bool FSlateApplication::AnyMenusVisible() const
{
	return Layers->GetPopups().ContainsByPredicate([](const TSharedRef<FPopup>& Popup) { return Popup->IsOpen(); });
}

void FSlateApplication::CloseToolTip()
{
	Input->CloseToolTip();
}

// Returns when the window has closed. The loop inside is the program's own one, so tasks, timers and other windows go
// on; what runs in it may even open another modal window.
void FSlateApplication::AddModalWindow(const TSharedRef<SWindow>& InWindow, const TSharedPtr<const SWidget>& Parent)
{
	DismissAllMenus();
	Input->CloseToolTip();
	Input->ReleaseCapture();
	const TWeakPtr<SWidget> FocusBefore = FHostFocus::Get().Focused;
	Layers->AddWindow(InWindow, true);
	Frames->RequestFrame();
	if (!Input->SetFocus(InWindow->GetContent(), EFocusCause::SetDirectly) && !Input->FocusFirstBelow(InWindow->GetContent()))
	{
		// Nothing in it takes the keyboard, and what it covers must not look as if it had it.
		Input->SetFocus(nullptr, EFocusCause::Cleared);
	}
	while (Layers->ContainsWindow(InWindow) && !IsExitRequested())
	{
		RunTurn();
	}
	if (Layers->ContainsWindow(InWindow))
	{
		InWindow->RequestDestroyWindow();
		for (const TSharedRef<SWindow>& Closed : Layers->RemoveClosedWindows())
		{
			Closed->NotifyClosed();
		}
	}
	Input->SetFocus(FocusBefore.Pin(), EFocusCause::SetDirectly);
}

TSharedRef<SWindow> FSlateApplication::AddWindow(const TSharedRef<SWindow>& InWindow)
{
	Layers->AddWindow(InWindow, false);
	NoteActivity();
	return InWindow;
}

TSharedPtr<SWindow> FSlateApplication::GetActiveModalWindow() const
{
	return Layers->GetTopWindow(true);
}

void FSlateApplication::SetToastLayer(const TSharedPtr<SWidget>& Widget)
{
	Layers->SetToasts(Widget);
	NoteActivity();
}

TArray<TSharedRef<SWidget>> FSlateApplication::GetPathUnderPoint(const FVector2D& Position) const
{
	TArray<TSharedRef<SWidget>> Result;
	for (const FArrangedWidget& Entry : Input->GetPathUnder(Position).Widgets)
	{
		Result.Add(Entry.Widget);
	}
	return Result;
}

TArray<TSharedRef<SWidget>> FSlateApplication::GetLayerRoots() const
{
	TArray<TSharedRef<SWidget>> Result;
	for (const FLayer& Layer : Layers->GetLayers())
	{
		Result.Add(Layer.Root);
	}
	return Result;
}

bool FSlateApplication::DoAccessAction(const TSharedRef<SWidget>& Widget)
{
	NoteActivity();
	return Input->DoAccessAction(Widget);
}

IHostMessageHandler& FSlateApplication::GetMessageHandler()
{
	return FHostInputTap::Enter(*Input);
}
