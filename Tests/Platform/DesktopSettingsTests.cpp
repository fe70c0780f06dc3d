#include "Host/DesktopSettings.h"

#include "Host/HostTasks.h"

#include <chrono>
#include <cstdlib>
#include <gio/gio.h>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <thread>
#include <vector>

// What the desktop tells over a bus of the test's own, with services that the test itself is.

namespace
{
	constexpr const char* Interfaces = R"(<node>
		<interface name='org.a11y.Status'>
			<property name='IsEnabled' type='b' access='read'/>
			<property name='ScreenReaderEnabled' type='b' access='read'/>
		</interface>
		<interface name='org.freedesktop.portal.Settings'>
			<method name='Read'><arg type='s' direction='in'/><arg type='s' direction='in'/><arg type='v' direction='out'/></method>
			<signal name='SettingChanged'><arg type='s'/><arg type='s'/><arg type='v'/></signal>
		</interface>
	</node>)";

	class DesktopSettings : public testing::Test
	{
	protected:
		void SetUp() override
		{
			if (system("command -v dbus-daemon >/dev/null") != 0)
			{
				GTEST_SKIP() << "dbus-daemon is not installed";
			}
			Daemon = g_test_dbus_new(G_TEST_DBUS_NONE);
			g_test_dbus_up(Daemon);
			// Calls to the services are answered while the test waits.
			Bus = g_dbus_connection_new_for_address_sync(g_test_dbus_get_bus_address(Daemon),
				static_cast<GDBusConnectionFlags>(
					G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
				nullptr, nullptr, nullptr);
			ASSERT_NE(Bus, nullptr);
			Description = g_dbus_node_info_new_for_xml(Interfaces, nullptr);
			ASSERT_NE(Description, nullptr);
			Register("/org/a11y/bus", "org.a11y.Status");
			Register("/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings");
		}

		void TearDown() override
		{
			FHostDesktopWatch::End();
			if (Daemon)
			{
				g_dbus_node_info_unref(Description);
				g_dbus_connection_close_sync(Bus, nullptr, nullptr);
				g_object_unref(Bus);
				g_test_dbus_stop(Daemon);
				g_object_unref(Daemon);
			}
		}

		void Register(const char* Path, const char* Interface)
		{
			static const GDBusInterfaceVTable Table{ &OnCall, &OnGet, nullptr, {} };
			EXPECT_NE(g_dbus_connection_register_object(
						  Bus, Path, g_dbus_node_info_lookup_interface(Description, Interface), &Table, this, nullptr, nullptr),
				0u);
		}

		/** Appears on the bus, as a service does that is started. */
		void Appear(const char* Name)
		{
			GVariant* const Answer =
				g_dbus_connection_call_sync(Bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
					g_variant_new("(su)", Name, 0u), nullptr, G_DBUS_CALL_FLAGS_NONE, 5000, nullptr, nullptr);
			ASSERT_NE(Answer, nullptr);
			g_variant_unref(Answer);
		}

		void Leave(const char* Name)
		{
			GVariant* const Answer = g_dbus_connection_call_sync(Bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
				"org.freedesktop.DBus", "ReleaseName", g_variant_new("(s)", Name), nullptr, G_DBUS_CALL_FLAGS_NONE, 5000, nullptr, nullptr);
			ASSERT_NE(Answer, nullptr);
			g_variant_unref(Answer);
		}

		void TellStatus(const char* Property, bool bOn)
		{
			Status[Property] = bOn;
			GVariantBuilder Changed;
			g_variant_builder_init(&Changed, G_VARIANT_TYPE("a{sv}"));
			g_variant_builder_add(&Changed, "{sv}", Property, g_variant_new_boolean(bOn));
			g_dbus_connection_emit_signal(Bus, nullptr, "/org/a11y/bus", "org.freedesktop.DBus.Properties", "PropertiesChanged",
				g_variant_new("(sa{sv}as)", "org.a11y.Status", &Changed, nullptr), nullptr);
		}

		void TellSetting(const char* Group, const char* Key, GVariant* Value)
		{
			g_dbus_connection_emit_signal(Bus, nullptr, "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings",
				"SettingChanged", g_variant_new("(ssv)", Group, Key, Value), nullptr);
		}

		void Begin()
		{
			FHostDesktopWatch::Begin([this](const FHostDesktopSettings& Settings) { Told.push_back(Settings); });
		}

		/** Serves the bus until so much was told; false when it does not come. */
		bool WaitForTold(size_t Count)
		{
			const auto End = std::chrono::steady_clock::now() + std::chrono::seconds(20);
			while (Told.size() < Count && std::chrono::steady_clock::now() < End)
			{
				while (g_main_context_iteration(nullptr, FALSE))
				{
				}
				FHostTasks::RunGameThreadTasks();
				std::this_thread::sleep_for(std::chrono::milliseconds(2));
			}
			return Told.size() == Count;
		}

		static void OnCall(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant* Parameters,
			GDBusMethodInvocation* Invocation, gpointer Test)
		{
			const gchar* Group = nullptr;
			const gchar* Key = nullptr;
			g_variant_get(Parameters, "(&s&s)", &Group, &Key);
			const std::string& Wanted = static_cast<DesktopSettings*>(Test)->ContrastGroup;
			if (Wanted == Group && std::string(Key) == "contrast")
			{
				// The portal wraps the value twice.
				g_dbus_method_invocation_return_value(Invocation, g_variant_new("(v)", g_variant_new_variant(g_variant_new_uint32(1))));
				return;
			}
			g_dbus_method_invocation_return_dbus_error(Invocation, "org.freedesktop.portal.Error.NotFound", "not set");
		}

		static GVariant* OnGet(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar* Property, GError**, gpointer Test)
		{
			return g_variant_new_boolean(static_cast<DesktopSettings*>(Test)->Status[Property]);
		}

		GTestDBus* Daemon = nullptr;
		GDBusConnection* Bus = nullptr;
		GDBusNodeInfo* Description = nullptr;
		std::map<std::string, bool> Status;
		/** In which the portal has a high contrast; empty for none. */
		std::string ContrastGroup;
		std::vector<FHostDesktopSettings> Told;
	};
}

TEST_F(DesktopSettings, AScreenReaderIsNoticedWheneverItComesAndGoes)
{
	Begin();
	Status["IsEnabled"] = true;
	Appear("org.a11y.Bus");
	ASSERT_TRUE(WaitForTold(1));
	EXPECT_TRUE(Told[0].bAssistiveTechnology);
	TellStatus("IsEnabled", false);
	ASSERT_TRUE(WaitForTold(2));
	EXPECT_FALSE(Told[1].bAssistiveTechnology);
	TellStatus("ScreenReaderEnabled", true);
	ASSERT_TRUE(WaitForTold(3));
	EXPECT_TRUE(Told[2].bAssistiveTechnology);
	Leave("org.a11y.Bus");
	ASSERT_TRUE(WaitForTold(4));
	EXPECT_FALSE(Told[3].bAssistiveTechnology);
}

TEST_F(DesktopSettings, ContrastAndMotionAreReadAndFollowed)
{
	ContrastGroup = "org.freedesktop.appearance";
	Appear("org.freedesktop.portal.Desktop");
	Begin();
	ASSERT_TRUE(WaitForTold(1));
	EXPECT_TRUE(Told[0].bHighContrast);
	EXPECT_FALSE(Told[0].bReducedMotion);
	TellSetting("org.gnome.desktop.interface", "enable-animations", g_variant_new_boolean(FALSE));
	ASSERT_TRUE(WaitForTold(2));
	EXPECT_TRUE(Told[1].bReducedMotion);
	// Of another group, and then the one that counts.
	TellSetting("org.example", "enable-animations", g_variant_new_boolean(TRUE));
	TellSetting("org.freedesktop.appearance", "contrast", g_variant_new_uint32(0));
	ASSERT_TRUE(WaitForTold(3));
	EXPECT_FALSE(Told[2].bHighContrast);
	EXPECT_TRUE(Told[2].bReducedMotion);
	EXPECT_FALSE(Told[2].bAssistiveTechnology);
}

TEST_F(DesktopSettings, AfterTheEndNothingIsTold)
{
	Status["IsEnabled"] = true;
	Appear("org.a11y.Bus");
	Begin();
	FHostDesktopWatch::End();
	FHostTasks::RunGameThreadTasks();
	EXPECT_TRUE(Told.empty());
}
