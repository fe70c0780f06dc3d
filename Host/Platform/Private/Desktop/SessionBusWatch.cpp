#include "Desktop/SessionBusWatch.h"

#include <cstdlib>
#include <memory>
#include <string>
#include <unistd.h>

// Two services, both published by the free desktop projects: org.a11y.Status says whether an assistive technology runs, and
// org.freedesktop.portal.Settings hands out settings of the desktop by group and key. All calls are made and answered on this thread.

namespace
{
	constexpr const char* StatusService = "org.a11y.Bus";
	constexpr const char* StatusPath = "/org/a11y/bus";
	constexpr const char* StatusInterface = "org.a11y.Status";
	constexpr const char* PortalService = "org.freedesktop.portal.Desktop";
	constexpr const char* PortalPath = "/org/freedesktop/portal/desktop";
	constexpr const char* PortalInterface = "org.freedesktop.portal.Settings";
	/** Nobody waits for it, and while a desktop starts everything is late. */
	constexpr int AnswerMilliseconds = 60000;

	struct FSettingKey
	{
		const char* Group;
		const char* Key;
	};

	constexpr FSettingKey SettingKeys[] = {
		{ "org.freedesktop.appearance", "contrast" },
		{ "org.freedesktop.appearance", "reduced-motion" },
		{ "org.gnome.desktop.a11y.interface", "high-contrast" },
		{ "org.gnome.desktop.interface", "enable-animations" },
	};

	/** The value in any number of wrappers; the caller owns it. */
	GVariant* Unwrap(GVariant* Value)
	{
		GVariant* Inner = g_variant_ref(Value);
		while (g_variant_is_of_type(Inner, G_VARIANT_TYPE_VARIANT))
		{
			GVariant* const Next = g_variant_get_variant(Inner);
			g_variant_unref(Inner);
			Inner = Next;
		}
		return Inner;
	}

	/** True for a switch that is on, and for a choice that is not the first. */
	bool IsOn(GVariant* Value)
	{
		GVariant* const Inner = Unwrap(Value);
		bool bOn = false;
		if (g_variant_is_of_type(Inner, G_VARIANT_TYPE_BOOLEAN))
		{
			bOn = g_variant_get_boolean(Inner) != FALSE;
		}
		else if (g_variant_is_of_type(Inner, G_VARIANT_TYPE_UINT32))
		{
			bOn = g_variant_get_uint32(Inner) == 1;
		}
		g_variant_unref(Inner);
		return bOn;
	}
}

/** Goes along with a call. The watch outlives all calls: it runs what answers them. */
struct FSessionBusWatch::FQuestion
{
	FSessionBusWatch* Watch;
	std::string Name;
};

bool FSessionBusWatch::HasBus()
{
	// The library would start a bus where there is none; nobody would be on it.
	const char* const Address = getenv("DBUS_SESSION_BUS_ADDRESS");
	if (Address && *Address)
	{
		return true;
	}
	const char* const Folder = getenv("XDG_RUNTIME_DIR");
	return Folder && *Folder && access((std::string(Folder) + "/bus").c_str(), F_OK) == 0;
}

FSessionBusWatch::FSessionBusWatch(std::function<void(const FHostDesktopSettings&)> InOnChange)
	: OnChange(std::move(InOnChange))
	, Context(g_main_context_new())
	, Loop(g_main_loop_new(Context, FALSE))
	, Cancel(g_cancellable_new())
{
	Thread = std::thread([this] { Run(); });
}

FSessionBusWatch::~FSessionBusWatch()
{
	g_cancellable_cancel(Cancel);
	// As a source, so that it is met also when the loop is yet to begin.
	GSource* const Quit = g_idle_source_new();
	g_source_set_callback(
		Quit,
		[](gpointer Data) -> gboolean
		{
			g_main_loop_quit(static_cast<GMainLoop*>(Data));
			return G_SOURCE_REMOVE;
		},
		Loop, nullptr);
	g_source_attach(Quit, Context);
	g_source_unref(Quit);
	Thread.join();
	g_object_unref(Cancel);
	g_main_loop_unref(Loop);
	g_main_context_unref(Context);
}

void FSessionBusWatch::Run()
{
	g_main_context_push_thread_default(Context);
	// 1. A connection of our own: the shared one ends the process together with the bus.
	gchar* const Address = g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SESSION, Cancel, nullptr);
	if (Address)
	{
		constexpr int Flags = G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION;
		Bus = g_dbus_connection_new_for_address_sync(Address, static_cast<GDBusConnectionFlags>(Flags), nullptr, Cancel, nullptr);
		g_free(Address);
	}
	// 2. Until the end; without a bus that is waited for all the same.
	if (Bus)
	{
		Subscribe();
	}
	g_main_loop_run(Loop);
	if (Bus)
	{
		g_bus_unwatch_name(StatusWatch);
		g_dbus_connection_close_sync(Bus, nullptr, nullptr);
		// What was called and not answered is answered with its end, so that nothing is left behind.
		while (g_main_context_iteration(Context, FALSE))
		{
		}
		g_object_unref(Bus);
	}
	g_main_context_pop_thread_default(Context);
}

void FSessionBusWatch::Subscribe()
{
	g_dbus_connection_signal_subscribe(Bus, StatusService, "org.freedesktop.DBus.Properties", "PropertiesChanged", StatusPath,
		StatusInterface, G_DBUS_SIGNAL_FLAGS_NONE, &OnStatusChanged, this, nullptr);
	StatusWatch = g_bus_watch_name_on_connection(
		Bus, StatusService, G_BUS_NAME_WATCHER_FLAGS_NONE, &OnStatusAppeared, &OnStatusVanished, this, nullptr);
	g_dbus_connection_signal_subscribe(Bus, PortalService, PortalInterface, "SettingChanged", PortalPath, nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
		&OnSettingChanged, this, nullptr);
	for (const FSettingKey& Key : SettingKeys)
	{
		AskSetting(Key.Group, Key.Key);
	}
}

void FSessionBusWatch::AskStatus(const char* Property)
{
	auto Question = std::make_unique<FQuestion>(FQuestion{ this, Property });
	g_dbus_connection_call(Bus, StatusService, StatusPath, "org.freedesktop.DBus.Properties", "Get",
		g_variant_new("(ss)", StatusInterface, Property), G_VARIANT_TYPE("(v)"), G_DBUS_CALL_FLAGS_NO_AUTO_START, AnswerMilliseconds,
		Cancel, &OnAnswer, Question.release());
}

void FSessionBusWatch::AskSetting(const char* Group, const char* Key)
{
	auto Question = std::make_unique<FQuestion>(FQuestion{ this, Key });
	g_dbus_connection_call(Bus, PortalService, PortalPath, PortalInterface, "Read", g_variant_new("(ss)", Group, Key),
		G_VARIANT_TYPE("(v)"), G_DBUS_CALL_FLAGS_NONE, AnswerMilliseconds, Cancel, &OnAnswer, Question.release());
}

// A service that is not there, or that does not know a key, leaves the setting as it is without it.
void FSessionBusWatch::OnAnswer(GObject* Source, GAsyncResult* Result, gpointer Data)
{
	const std::unique_ptr<FQuestion> Question(static_cast<FQuestion*>(Data));
	GVariant* const Answer = g_dbus_connection_call_finish(G_DBUS_CONNECTION(Source), Result, nullptr);
	if (Answer)
	{
		GVariant* const Value = g_variant_get_child_value(Answer, 0);
		Question->Watch->Take(Question->Name, Value);
		g_variant_unref(Value);
		g_variant_unref(Answer);
	}
}

void FSessionBusWatch::Take(const std::string& Name, GVariant* Value)
{
	const bool bOn = IsOn(Value);
	if (Name == "IsEnabled")
	{
		bStatusEnabled = bOn;
	}
	else if (Name == "ScreenReaderEnabled")
	{
		bScreenReader = bOn;
	}
	else if (Name == "contrast")
	{
		bContrastPreferred = bOn;
	}
	else if (Name == "high-contrast")
	{
		bContrastTheme = bOn;
	}
	else if (Name == "reduced-motion")
	{
		bMotionPreferred = bOn;
	}
	else if (Name == "enable-animations")
	{
		bAnimationsOff = !bOn;
	}
	FHostDesktopSettings Now;
	Now.bAssistiveTechnology = bStatusEnabled || bScreenReader;
	Now.bHighContrast = bContrastPreferred || bContrastTheme;
	Now.bReducedMotion = bMotionPreferred || bAnimationsOff;
	if (!(Now == Told))
	{
		Told = Now;
		OnChange(Now);
	}
}

void FSessionBusWatch::OnStatusAppeared(GDBusConnection*, const gchar*, const gchar*, gpointer Watch)
{
	static_cast<FSessionBusWatch*>(Watch)->AskStatus("IsEnabled");
	static_cast<FSessionBusWatch*>(Watch)->AskStatus("ScreenReaderEnabled");
}

void FSessionBusWatch::OnStatusVanished(GDBusConnection*, const gchar*, gpointer Data)
{
	FSessionBusWatch& Watch = *static_cast<FSessionBusWatch*>(Data);
	GVariant* const Off = g_variant_ref_sink(g_variant_new_boolean(FALSE));
	Watch.Take("IsEnabled", Off);
	Watch.Take("ScreenReaderEnabled", Off);
	g_variant_unref(Off);
}

void FSessionBusWatch::OnStatusChanged(
	GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant* Parameters, gpointer Data)
{
	if (!g_variant_is_of_type(Parameters, G_VARIANT_TYPE("(sa{sv}as)")))
	{
		return;
	}
	GVariant* const Changed = g_variant_get_child_value(Parameters, 1);
	for (const char* Name : { "IsEnabled", "ScreenReaderEnabled" })
	{
		if (GVariant* const Value = g_variant_lookup_value(Changed, Name, G_VARIANT_TYPE_BOOLEAN))
		{
			static_cast<FSessionBusWatch*>(Data)->Take(Name, Value);
			g_variant_unref(Value);
		}
	}
	g_variant_unref(Changed);
}

void FSessionBusWatch::OnSettingChanged(
	GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant* Parameters, gpointer Data)
{
	if (!g_variant_is_of_type(Parameters, G_VARIANT_TYPE("(ssv)")))
	{
		return;
	}
	const gchar* Group = nullptr;
	const gchar* Key = nullptr;
	GVariant* Value = nullptr;
	g_variant_get(Parameters, "(&s&sv)", &Group, &Key, &Value);
	for (const FSettingKey& Known : SettingKeys)
	{
		if (g_str_equal(Group, Known.Group) && g_str_equal(Key, Known.Key))
		{
			static_cast<FSessionBusWatch*>(Data)->Take(Key, Value);
		}
	}
	g_variant_unref(Value);
}
