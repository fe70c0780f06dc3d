#pragma once

#include "CoreMinimal.h"
#include "Framework/Application/IMenu.h"
#include "Host/HostWindow.h"
#include "Rendering/DrawElements.h"
#include "Types/SlateEnums.h"
#include "Widgets/SWidget.h"
#include "Widgets/SWindow.h"

class FInputRouter;
class FFrameRunner;
class FLayerStack;

/** What the frames did, for tests, dumps and benchmarks. */
struct FHostFrameStats
{
	uint64 FrameCount = 0;
	/** Turns of the loop, with a frame and without. */
	uint64 TurnCount = 0;
	/** Seconds of work of the last frame and of the slowest turn, waiting excluded. */
	double LastFrameSeconds = 0.0;
	double WorstFrameSeconds = 0.0;
	/** Pixels painted again by the last frame. */
	double LastPaintedPixels = 0.0;
	uint64 PaintedFrames = 0;
};

/** What a press on the owner of an open popup does. */
enum class EHostOwnerPress : uint8
{
	/** It closes the popup and nothing else, or the owner would open it again. */
	OnlyCloses,
	/** It closes the popup and goes on to the owner. */
	ClosesAndReaches,
	/** It goes to the owner, and the popup stays: the user works in the owner while it is open. */
	Reaches,
};

/**
 * The one application: owns the window's content, popups, tooltip, toasts and modal windows as layers of one window,
 * routes input to widgets and runs frames. Game thread only.
 */
class SLATE_API FSlateApplication
{
public:
	/** Makes the application around a window. The window's pixels are painted by the frames run here. */
	static void Create(const TSharedRef<IHostWindow>& Window);
	static void Shutdown();
	static bool IsInitialized();
	static FSlateApplication& Get();
	~FSlateApplication();

	/** The widget that fills the window. */
	void SetRootContent(const TSharedRef<SWidget>& Content);
	IHostWindow& GetWindow();

	// Frames. The loop turns on while Slate sleeps: a turn runs game-thread tasks and the core ticker, and has a frame when there
	// was input, an active timer is due, a task has changed a widget, or a popup or a window is open.
	/** The longest wait of a turn, for those who watch nothing but the application. */
	static constexpr double AnyWait = 3600.0;
	/**
	 * Waits until there is something to do, then runs one turn.
	 * @param MaxWaitSeconds  The turn comes no later than this.
	 * @return Whether the turn had a frame.
	 */
	bool RunTurn(double MaxWaitSeconds = AnyWait);
	/** One turn without waiting, with a frame in any case. */
	void Tick();
	/** Layout and painting of everything visible into a list, without presenting; for drivers. Valid until the next frame. */
	const FSlateWindowElementList& GetLastElements() const;
	const FHostFrameStats& GetFrameStats() const;
	/** Runs Step before each turn, also inside modal loops. One at a time; null removes it. */
	void SetFrameHook(TFunction<void()> Step);
	/** Asks for full frame rate for half a second. */
	void NoteActivity();
	/** The next turn has a frame. */
	void RequestFrame();
	/**
	 * For tests of widgets that must wake Slate by themselves: input brings one frame and no more, and open popups and tasks that
	 * change widgets bring none.
	 */
	void SetStrictSleep(bool bStrict);
	bool IsExitRequested() const;
	void RequestExit();

	// Focus.
	bool SetKeyboardFocus(const TSharedPtr<SWidget>& Widget, EFocusCause Cause = EFocusCause::SetDirectly);
	void ClearKeyboardFocus(EFocusCause Cause = EFocusCause::SetDirectly);
	TSharedPtr<SWidget> GetKeyboardFocusedWidget() const;
	bool HasFocusedDescendants(const TSharedRef<const SWidget>& Widget) const;
	FModifierKeysState GetModifierKeys() const;

	/**
	 * Does what a widget calls its action (SWidget::DoAccessAction) for somebody who has no pointer and no need to see it.
	 * @return False when it is disabled, below a modal window, or has no action.
	 */
	bool DoAccessAction(const TSharedRef<SWidget>& Widget);

	// Mouse.
	TSharedPtr<SWidget> GetMouseCaptor() const;
	void ReleaseMouseCapture();

	// Popups.
	/**
	 * Opens a popup beside a rectangle (device pixels), moved so that it stays in the window.
	 * @param Owner  The popup closes when this widget is no longer on screen, or on a press outside both.
	 * @param Anchor  The owner's own rectangle makes the popup follow the owner's size, too.
	 * @param bFocus False leaves the keyboard where it is. A popup whose owner has the keyboard closes when it goes elsewhere.
	 * @param MinWidth  Units; a combo list is at least as wide as its box.
	 */
	TSharedRef<IMenu> PushMenu(const TSharedRef<SWidget>& Owner, const TSharedRef<SWidget>& Content, const FSlateRect& Anchor,
		EMenuPlacement Placement, bool bFocus, EHostOwnerPress OwnerPress = EHostOwnerPress::OnlyCloses, float MinWidth = 0.0f);
	void DismissAllMenus();
	bool AnyMenusVisible() const;
	/** Closes the tooltip until the pointer rests anew. */
	void CloseToolTip();

	// Windows.
	/** Shows a window over the rest and returns when it is closed; frames run meanwhile. */
	void AddModalWindow(const TSharedRef<SWindow>& Window, const TSharedPtr<const SWidget>& Parent);
	TSharedRef<SWindow> AddWindow(const TSharedRef<SWindow>& Window);
	TSharedPtr<SWindow> GetActiveModalWindow() const;

	/** A layer above windows and popups that is never focused: the toast stack. */
	void SetToastLayer(const TSharedPtr<SWidget>& Widget);

	/** The path from the window's root to the widget under a point, root first. Empty outside. */
	TArray<TSharedRef<SWidget>> GetPathUnderPoint(const FVector2D& Position) const;
	/** All layers from the lowest to the topmost, for drivers that search the tree. */
	TArray<TSharedRef<SWidget>> GetLayerRoots() const;
	/** Where drivers put synthetic input: the same door as the platform's. */
	IHostMessageHandler& GetMessageHandler();

private:
	explicit FSlateApplication(const TSharedRef<IHostWindow>& InWindow);

	TSharedRef<IHostWindow> Window;
	TUniquePtr<FLayerStack> Layers;
	TUniquePtr<FInputRouter> Input;
	TUniquePtr<FFrameRunner> Frames;
};
