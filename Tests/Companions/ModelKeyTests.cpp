#include "Changes/PrivateFile.h"
#include "Model/KeyRing.h"
#include "Model/ModelKeys.h"
#include "TemporaryProject.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <linux/close_range.h>
#include <string>
#include <unistd.h>

using namespace Velmora;

namespace
{
	bool CanRun(const char* Program)
	{
		return std::system((std::string("command -v ") + Program + " >/dev/null 2>&1").c_str()) == 0;
	}

	FAgentConnection MakeConnection(const TCHAR* Url)
	{
		FAgentConnection Connection;
		Connection.Name = TEXT("far");
		Connection.Url = Url;
		return Connection;
	}

	/** A line that a check failed, and what it was about. */
	int Check(bool bIsRight, const char* What)
	{
		if (!bIsRight)
		{
			std::fprintf(stderr, "wrong: %s\n", What);
		}
		return bIsRight ? 0 : 1;
	}

	void Stop(pid_t Process, FILE* Output)
	{
		if (Process > 0)
		{
			kill(Process, SIGTERM);
		}
		if (Output)
		{
			pclose(Output);
		}
	}

	/** Ends the process, whose destructors do not run. */
	[[noreturn]] void End(const std::string& Folder, int Wrong)
	{
		std::error_code Error;
		std::filesystem::remove_all(Folder, Error);
		std::_Exit(Wrong == 0 ? 0 : 1);
	}

	/**
	 * A session with a bus and a keyring of its own, both gone with it. In a process of its own, since the library keeps threads
	 * and its connection. Ends the process with the count of what was wrong.
	 */
	[[noreturn]] void RunWithKeyRing(const std::string& Folder)
	{
		// 1. The session. What it is told stays in the folder. Its services must not keep the pipe at whose end the test waits, or it would
		// wait for ever once this process has died; they end by themselves then.
		close_range(3, ~0u, CLOSE_RANGE_CLOEXEC);
		for (const auto& [Name, Sub] :
			{ std::pair{ "XDG_RUNTIME_DIR", "run" }, { "XDG_DATA_HOME", "data" }, { "XDG_CONFIG_HOME", "config" }, { "HOME", "home" } })
		{
			std::filesystem::create_directories(Folder + '/' + Sub);
			std::filesystem::permissions(Folder + '/' + Sub, std::filesystem::perms::owner_all);
			setenv(Name, (Folder + '/' + Sub).c_str(), 1);
		}
		char Line[512] = {};
		FILE* const Bus = popen("echo $$; exec timeout 120 dbus-daemon --session --nofork --nopidfile --print-address=1 2>/dev/null", "r");
		const pid_t BusProcess = Bus && std::fgets(Line, sizeof(Line), Bus) ? std::atoi(Line) : 0;
		std::string Address = Bus && std::fgets(Line, sizeof(Line), Bus) ? Line : "";
		Address.erase(Address.find_last_not_of('\n') + 1);
		setenv("DBUS_SESSION_BUS_ADDRESS", Address.c_str(), 1);
		int Wrong = Check(!Address.empty(), "the bus does not start");
		std::ofstream(Folder + "/password") << "a password";
		const std::string Start = "echo $$; exec timeout 120 gnome-keyring-daemon --foreground --unlock --components=secrets <'" + Folder +
			"/password' 2>/dev/null";
		FILE* const Ring = popen(Start.c_str(), "r");
		const pid_t RingProcess = Ring && std::fgets(Line, sizeof(Line), Ring) ? std::atoi(Line) : 0;
		// Asked for too early, the bus would start another one, which is locked.
		const char* const Ask =
			"for i in $(seq 100); do dbus-send --session --print-reply --dest=org.freedesktop.DBus / "
			"org.freedesktop.DBus.NameHasOwner string:org.freedesktop.secrets | grep -q true && exit 0; sleep 0.1; done; exit 1";
		Wrong += Check(std::system(Ask) == 0, "the keyring does not start");

		// 2. A key goes there, belongs to its address, and is nowhere else.
		std::string Problem;
		const FAgentConnection Far = MakeConnection(TEXT("https://models.invalid/v1"));
		(void)PrivateFile::Write("keys", "https://models.invalid old-key\n");
		Wrong += Check(ModelKeys::Find(Far) == "old-key", "what was kept in the file is still found");
		Problem = ModelKeys::Store(Far, "secret-4711");
		Wrong += Check(Problem.empty(), ("it takes a key: " + Problem).c_str());
		Wrong += Check(ModelKeys::Find(Far) == "secret-4711", "it gives it back");
		Wrong += Check(ModelKeys::Describe(Far) == "the keyring", "it is told where it is");
		Wrong += Check(ModelKeys::Find(MakeConnection(TEXT("https://models.invalid:444/v1"))).empty(), "another port has no key");
		std::string Text;
		PrivateFile::Read("keys", Text, Problem);
		Wrong += Check(Text.find("key") == std::string::npos && Text.find("4711") == std::string::npos, "the file has none any more");
		Wrong += Check(ModelKeys::Store(Far, "").empty() && ModelKeys::Find(Far).empty(), "it is forgotten");

		// 3. A keyring that is gone is told, and nothing is put elsewhere instead.
		Stop(RingProcess, Ring);
		Stop(BusProcess, Bus);
		Problem = ModelKeys::Store(Far, "secret-4712");
		Wrong += Check(Problem.rfind("The keyring ", 0) == 0, ("it says that it is gone: " + Problem).c_str());
		Wrong += Check(ModelKeys::Find(Far).empty(), "and nothing was kept");
		End(Folder, Wrong);
	}
}

TEST(ModelKeysTest, GoToTheKeyringOfTheSession)
{
	if (!CanRun("dbus-daemon") || !CanRun("dbus-send") || !CanRun("gnome-keyring-daemon") ||
		std::system("ldconfig -p | grep -q libsecret-1.so.0") != 0)
	{
		GTEST_SKIP() << "dbus, gnome-keyring or libsecret-1-0 is not installed";
	}
	GTEST_FLAG_SET(death_test_style, "threadsafe");
	const FTemporaryProject Folder;
	EXPECT_EXIT(RunWithKeyRing(Folder.Root.native()), testing::ExitedWithCode(0), "");
}

TEST(ModelKeysTest, WithoutAKeyringTheyAreInAFileAndThatIsTold)
{
	const FTemporaryProject Folder;
	GTEST_FLAG_SET(death_test_style, "threadsafe");
	EXPECT_EXIT(
		{
			unsetenv("DBUS_SESSION_BUS_ADDRESS");
			setenv("XDG_RUNTIME_DIR", Folder.Root.c_str(), 1);
			setenv("XDG_CONFIG_HOME", Folder.Root.c_str(), 1);
			const FAgentConnection Far = MakeConnection(TEXT("https://models.invalid/v1"));
			int Wrong = Check(ModelKeys::Store(Far, "secret-4711").empty(), "it is kept");
			Wrong += Check(ModelKeys::Find(Far) == "secret-4711", "it is found");
			Wrong += Check(ModelKeys::Describe(Far) == "the file " + PrivateFile::GetFolder() + "/keys (this session has no keyring)",
				ModelKeys::Describe(Far).c_str());
			std::string Problem;
			Wrong += Check(KeyRing::Find("https://models.invalid", Problem).empty() && Problem.empty(), "nobody is asked");
			Wrong += Check(!KeyRing::Store("https://models.invalid", "x").empty(), "nor takes it");
			End(Folder.Root.native(), Wrong);
		},
		testing::ExitedWithCode(0), "");
}
