#pragma once

#include "Host/HostWindow.h"
#include "RecordFile.h"
#include "Templates/SharedPointer.h"

#include <memory>

/**
 * The window and the way in of a session that is recorded: notes turns, sizes, what is painted and what comes in, and changes nothing.
 * Events that come while another one is handled are what that one has led to, and will again; they are not noted. Game thread.
 */
class FRecordedWindow : public IHostWindow, public IHostMessageHandler
{
public:
	FRecordedWindow(const TSharedRef<IHostWindow>& InWindow, const std::shared_ptr<FRecordWriter>& InWriter);

	/** A turn begins, with the platform's events taken, or a frame that is run directly. */
	void NoteTurn();
	/** What the turn before has had, which is known by now. */
	void NoteFrame();
	/** A script, or another driver, is about to do what it does: not what an event has led to, even within one. */
	void BeginDriver();
	void EndDriver();

	// IHostWindow
	virtual FIntPoint GetPixelSize() const override { return Window->GetPixelSize(); }
	virtual float GetScale() const override { return Window->GetScale(); }
	virtual bool IsVisible() const override { return Window->IsVisible(); }
	virtual bool IsHeadless() const override { return Window->IsHeadless(); }
	virtual void SetTitle(const FString& Title) override { Window->SetTitle(Title); }
	virtual void SetCursor(EMouseCursor::Type Cursor) override { Window->SetCursor(Cursor); }
	virtual void SetTextInput(bool bActive, const FSlateRect& Caret) override { Window->SetTextInput(bActive, Caret); }
	virtual void PaintAndPresent(const FSlateWindowElementList& Elements, const FSlateRect& Damage) override;
	virtual void PumpEvents(IHostMessageHandler& Handler, double MaxWaitSeconds) override;
	virtual void Wake() override { Window->Wake(); }
	virtual bool SaveScreenshot(const FString& Path) const override { return Window->SaveScreenshot(Path); }
	virtual void Resize(const FIntPoint& PixelSize) override { Window->Resize(PixelSize); }
	virtual FColor GetPixel(int32 X, int32 Y) const override { return Window->GetPixel(X, Y); }

	// IHostMessageHandler
	virtual void OnKeyDown(const FKey& Key, const FModifierKeysState& Modifiers, bool bRepeat) override;
	virtual void OnKeyUp(const FKey& Key, const FModifierKeysState& Modifiers) override;
	virtual void OnTextInput(FStringView Text) override;
	virtual void OnPreedit(FStringView Text, int32 Cursor) override;
	virtual void OnMouseMove(const FVector2D& Position, const FModifierKeysState& Modifiers) override;
	virtual void OnMouseDown(const FKey& Button, const FVector2D& Position, const FModifierKeysState& Modifiers) override;
	virtual void OnMouseUp(const FKey& Button, const FVector2D& Position, const FModifierKeysState& Modifiers) override;
	virtual void OnMouseWheel(const FVector2D& Delta, const FVector2D& Position, const FModifierKeysState& Modifiers) override;
	virtual void OnMouseLeave() override;
	virtual void OnWindowResized() override;
	virtual void OnWindowActivated(bool bActive) override;
	virtual void OnWindowExposed() override;
	virtual void OnCloseRequested() override;

private:
	/** The beginning of an event's line. */
	FRecordWords Event(ERecordKind Kind) const;
	/** Writes an event unless it is what another one has led to, then hands it on. */
	void Enter(FRecordWords&& Words, TFunctionRef<void(IHostMessageHandler&)> HandOn);
	/** What differs from the last look. */
	void NoteSize();

	const TSharedRef<IHostWindow> Window;
	const std::shared_ptr<FRecordWriter> Writer;
	/** Events that are being handled, one within another. */
	int32 Depth = 0;
	TArray<int32> DepthsOutside;
	bool bPumps = false;
	double NotedTime = 0.0;
	uint64 NotedFrames = 0;
	FIntPoint NotedSize = FIntPoint(0, 0);
	float NotedScale = 0.0f;
	bool bNotedVisible = true;
};

/** Modifier keys as a number, and back. */
int32 PackModifiers(const FModifierKeysState& Modifiers);
FModifierKeysState UnpackModifiers(int64 Bits);
