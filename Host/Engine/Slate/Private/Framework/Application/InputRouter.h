#pragma once

#include "EventPath.h"
#include "Host/HostWindow.h"
#include "ToolTipDelay.h"

class FLayerStack;

/** Turns what the platform tells into calls on widgets: hover, press, wheel, keys, text, focus moves, tooltips. */
class FInputRouter : public IHostMessageHandler
{
public:
	FInputRouter(FLayerStack& InLayers, IHostWindow& InWindow);

	// IHostMessageHandler
	virtual void OnKeyDown(const FKey& Key, const FModifierKeysState& Modifiers, bool bRepeat) override;
	virtual void OnKeyUp(const FKey& Key, const FModifierKeysState& Modifiers) override;
	virtual void OnTextInput(FStringView Text) override;
	virtual void OnPreedit(FStringView Text, int32 Cursor) override;
	virtual void OnMouseMove(const FVector2D& Position, const FModifierKeysState& InModifiers) override;
	virtual void OnMouseDown(const FKey& Button, const FVector2D& Position, const FModifierKeysState& InModifiers) override;
	virtual void OnMouseUp(const FKey& Button, const FVector2D& Position, const FModifierKeysState& InModifiers) override;
	virtual void OnMouseWheel(const FVector2D& Delta, const FVector2D& Position, const FModifierKeysState& InModifiers) override;
	virtual void OnMouseLeave() override;
	virtual void OnWindowResized() override;
	virtual void OnWindowActivated(bool bActive) override;
	virtual void OnWindowExposed() override;
	virtual void OnCloseRequested() override;

	/** After layout: what lies under a resting pointer may have changed; tooltip, pointer shape, text input follow. */
	void Update(double Now);
	bool SetFocus(const TSharedPtr<SWidget>& Widget, EFocusCause Cause);
	/** Gives the keyboard to the first control below; false when none there takes it. */
	bool FocusFirstBelow(const TSharedRef<SWidget>& Root);
	/** What an assistive technology asks for; false when the widget is disabled or out of reach. */
	bool DoAccessAction(const TSharedRef<SWidget>& Widget);
	void ReleaseCapture();
	void CloseToolTip();
	FEventPath GetPathUnder(const FVector2D& Position) const;
	const FModifierKeysState& GetModifiers() const { return Modifiers; }
	/** True once after something happened; the loop runs at full rate for a while then. */
	bool TakeActivity();
	bool HasActivity() const { return bActivity; }
	bool TakeExposed();

	bool bExitRequested = false;

private:
	/** To what holds the mouse, else to what lies under the pointer. */
	FEventPath GetPointerPath() const;
	EMouseCursor::Type QueryCursor() const;
	/** Notes a press. @return Whether it makes a double click with the one before. */
	bool TakeDoublePress(const FKey& Button, const FVector2D& Position);
	FEventPath GetFocusPath() const;
	/** The focused widget, unless it has left the window or lies below a modal one. */
	TSharedPtr<SWidget> GetReachableFocus() const;
	bool IsReachable(const TSharedRef<SWidget>& Widget) const;
	/** True when something came under the pointer or left it. */
	bool UpdateHover(const FPointerEvent& Event);
	void ApplyReply(const FReply& Reply, const FEventPath& Path);
	void MoveFocusByTab(bool bBackward);
	/** After layout: goes on from where the Tab key went when that cannot be seen even now. */
	void LeaveHiddenStop();
	FPointerEvent MakePointerEvent(const FKey& Button, const FVector2D& Wheel = FVector2D(0, 0)) const;
	/** True when the press has done its work with that. */
	bool DismissPopupsOutside(const FVector2D& Position);
	template <typename EventType>
	FReply Bubble(const FEventPath& Path, FReply (SWidget::*Handler)(const FGeometry&, const EventType&), const EventType& Event);

	FLayerStack& Layers;
	IHostWindow& Window;
	FToolTipDelay ToolTips;
	TArray<TWeakPtr<SWidget>> Hovered;
	/** Where the Tab key went since the last layout. */
	TWeakPtr<SWidget> TabLanding;
	int32 TabStepsLeft = 0;
	bool bTabBackward = false;
	FModifierKeysState Modifiers;
	FVector2D Pointer = FVector2D(-1, -1);
	FVector2D LastPointer = FVector2D(-1, -1);
	FVector2D LastPressPosition = FVector2D(-1, -1);
	double LastPressTime = -1.0;
	FKey LastPressButton;
	bool bLeftDown = false;
	bool bPointerInside = false;
	bool bActivity = true;
	bool bExposed = true;
	bool bTextInputOpen = false;
	FSlateRect LastCaretArea;
	EMouseCursor::Type LastCursor = EMouseCursor::Default;
};
