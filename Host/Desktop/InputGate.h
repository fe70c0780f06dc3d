#pragma once

#include "Host/HostWindow.h"
#include "RecordLine.h"

/** Something that the platform tells the application, as a value. Which fields count depends on the kind. */
struct FHostInput
{
	/** From Down to Close. */
	ERecordKind Kind = ERecordKind::Close;
	FKey Key = FKey();
	FModifierKeysState Modifiers = FModifierKeysState();
	/** A key that repeats, or a window that has become active. */
	bool bFlag = false;
	FString Text = FString();
	int32 Cursor = 0;
	FVector2D Position = FVector2D(0.0, 0.0);
	/** Notches of a wheel. */
	FVector2D Delta = FVector2D(0.0, 0.0);

	/** Tells it. */
	void Give(IHostMessageHandler& To) const;
};

/** A way in with one place that everything passes. Game thread. */
class FInputGate : public IHostMessageHandler
{
public:
	virtual void OnKeyDown(const FKey& Key, const FModifierKeysState& Modifiers, bool bRepeat) final;
	virtual void OnKeyUp(const FKey& Key, const FModifierKeysState& Modifiers) final;
	virtual void OnTextInput(FStringView Text) final;
	virtual void OnPreedit(FStringView Text, int32 Cursor) final;
	virtual void OnMouseMove(const FVector2D& Position, const FModifierKeysState& Modifiers) final;
	virtual void OnMouseDown(const FKey& Button, const FVector2D& Position, const FModifierKeysState& Modifiers) final;
	virtual void OnMouseUp(const FKey& Button, const FVector2D& Position, const FModifierKeysState& Modifiers) final;
	virtual void OnMouseWheel(const FVector2D& Delta, const FVector2D& Position, const FModifierKeysState& Modifiers) final;
	virtual void OnMouseLeave() final;
	virtual void OnWindowResized() final;
	virtual void OnWindowActivated(bool bActive) final;
	virtual void OnWindowExposed() final;
	virtual void OnCloseRequested() final;

protected:
	/** Hands it on, or does not. */
	virtual void Enter(const FHostInput& Input) = 0;
};
