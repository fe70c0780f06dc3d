#pragma once

#include "Host/HostWindow.h"
#include "Support/Base/Printers.h"

#include <cstdio>
#include <string>

/** Writes down what a window tells, one word for each event. */
class FInputRecorder : public IHostMessageHandler
{
public:
	virtual void OnKeyDown(const FKey& Key, const FModifierKeysState& Modifiers, bool bRepeat) override
	{
		Add((bRepeat ? "repeat:" : "down:") + Mods(Modifiers) + Utf8(Key.GetFName()));
	}
	virtual void OnKeyUp(const FKey& Key, const FModifierKeysState& Modifiers) override { Add("up:" + Utf8(Key.GetFName())); }
	virtual void OnTextInput(FStringView Text) override { Add("text:" + Utf8(Text)); }
	virtual void OnPreedit(FStringView Text, int32 Cursor) override { Add("preedit:" + Utf8(Text) + "@" + std::to_string(Cursor)); }
	virtual void OnMouseMove(const FVector2D& Position, const FModifierKeysState& Modifiers) override { Add("move:" + At(Position)); }
	virtual void OnMouseDown(const FKey& Button, const FVector2D& Position, const FModifierKeysState& Modifiers) override
	{
		Add("press:" + Mods(Modifiers) + Utf8(Button.GetFName()) + "@" + At(Position));
	}
	virtual void OnMouseUp(const FKey& Button, const FVector2D& Position, const FModifierKeysState& Modifiers) override
	{
		Add("release:" + Utf8(Button.GetFName()));
	}
	virtual void OnMouseWheel(const FVector2D& Delta, const FVector2D& Position, const FModifierKeysState& Modifiers) override
	{
		Add("wheel:" + At(Delta));
	}
	virtual void OnMouseLeave() override { Add("leave"); }
	virtual void OnWindowResized() override { Add("resized"); }
	virtual void OnWindowActivated(bool bActive) override { Add(bActive ? "active" : "inactive"); }
	virtual void OnWindowExposed() override { Add("exposed"); }
	virtual void OnCloseRequested() override { Add("close"); }

	std::string Take() { return std::exchange(Log, std::string()); }
	bool Has(const std::string& Word) const { return (" " + Log + " ").find(" " + Word + " ") != std::string::npos; }

private:
	void Add(const std::string& Word) { Log += (Log.empty() ? "" : " ") + Word; }
	static std::string Mods(const FModifierKeysState& Modifiers)
	{
		return std::string(Modifiers.IsControlDown() ? "Ctrl+" : "") + (Modifiers.IsShiftDown() ? "Shift+" : "") +
			(Modifiers.IsAltDown() ? "Alt+" : "");
	}
	static std::string At(const FVector2D& Position)
	{
		char Text[64];
		std::snprintf(Text, sizeof(Text), "%g,%g", Position.X, Position.Y);
		return Text;
	}
	std::string Log;
};
