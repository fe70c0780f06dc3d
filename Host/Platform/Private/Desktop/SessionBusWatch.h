#pragma once

#include "Host/DesktopSettings.h"

#include <functional>
#include <gio/gio.h>
#include <string>
#include <thread>

/**
 * The thread that listens to the session's bus. Two services tell what we want to know: the one of accessibility, which is only asked
 * while it runs (it is started by whoever needs it), and the desktop's portal for settings.
 */
class FSessionBusWatch
{
public:
	/** @param OnChange  Called on the watch's own thread. */
	explicit FSessionBusWatch(std::function<void(const FHostDesktopSettings&)> OnChange);
	~FSessionBusWatch();
	FSessionBusWatch(const FSessionBusWatch&) = delete;
	FSessionBusWatch& operator=(const FSessionBusWatch&) = delete;

	/** Whether there is a bus, without starting one. */
	static bool HasBus();

private:
	void Run();
	void Subscribe();
	void AskStatus(const char* Property);
	void AskSetting(const char* Group, const char* Key);
	struct FQuestion;
	/** A value as a service has told it, under its name. */
	void Take(const std::string& Name, GVariant* Value);

	static void OnStatusAppeared(GDBusConnection* Bus, const gchar* Name, const gchar* Owner, gpointer Watch);
	static void OnStatusVanished(GDBusConnection* Bus, const gchar* Name, gpointer Watch);
	static void OnStatusChanged(GDBusConnection* Bus, const gchar* Sender, const gchar* Path, const gchar* Interface, const gchar* Signal,
		GVariant* Parameters, gpointer Watch);
	static void OnSettingChanged(GDBusConnection* Bus, const gchar* Sender, const gchar* Path, const gchar* Interface, const gchar* Signal,
		GVariant* Parameters, gpointer Watch);
	static void OnAnswer(GObject* Bus, GAsyncResult* Result, gpointer Question);

	const std::function<void(const FHostDesktopSettings&)> OnChange;
	GMainContext* const Context;
	GMainLoop* const Loop;
	GCancellable* const Cancel;
	GDBusConnection* Bus = nullptr;
	guint StatusWatch = 0;
	// What has been told, each by itself: several keys say the same.
	bool bStatusEnabled = false;
	bool bScreenReader = false;
	bool bContrastPreferred = false;
	bool bContrastTheme = false;
	bool bMotionPreferred = false;
	bool bAnimationsOff = false;
	FHostDesktopSettings Told;
	std::thread Thread;
};
