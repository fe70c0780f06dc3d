#include "Model/KeyRing.h"

#include <cstdint>
#include <cstdlib>

#include <dlfcn.h>
#include <unistd.h>

namespace Velmora::KeyRing
{
	namespace
	{
		// What the library's interface says of itself, as far as it is used here. Its version stands in its name.
		constexpr const char* LibraryName = "libsecret-1.so.0";
		constexpr int StringAttribute = 0;
		constexpr int SessionBus = 2;

		struct FLibraryError
		{
			uint32_t Domain;
			int Code;
			char* Message;
		};

		struct FSchema
		{
			const char* Name;
			int Flags;
			struct
			{
				const char* Name;
				int Type;
			} Attributes[32];
			int Reserved;
			void* MoreReserved[7];
		};

		const FSchema Schema = { "net.velmora.ServerKey", 0, { { "server", StringAttribute } }, 0, {} };

		struct FLibrary
		{
			int (*Store)(const FSchema*, const char*, const char*, const char*, void*, FLibraryError**, ...) = nullptr;
			char* (*Lookup)(const FSchema*, void*, FLibraryError**, ...) = nullptr;
			int (*Clear)(const FSchema*, void*, FLibraryError**, ...) = nullptr;
			void (*Free)(char*) = nullptr;
			void (*FreeError)(FLibraryError*) = nullptr;
			void* (*GetBus)(int, void*, FLibraryError**) = nullptr;
			void (*SetExitOnClose)(void*, int) = nullptr;
			bool bIsWhole = false;
		};

		template <typename FFunction>
		bool Load(void* Handle, const char* Name, FFunction& OutFunction)
		{
			OutFunction = reinterpret_cast<FFunction>(dlsym(Handle, Name));
			return OutFunction != nullptr;
		}

		/** Loaded once, and for good: it has threads of its own. */
		const FLibrary& GetLibrary()
		{
			static const FLibrary Library = []
			{
				FLibrary Loaded;
				void* const Handle = dlopen(LibraryName, RTLD_NOW | RTLD_LOCAL);
				Loaded.bIsWhole = Handle && Load(Handle, "secret_password_store_sync", Loaded.Store) &&
					Load(Handle, "secret_password_lookup_sync", Loaded.Lookup) &&
					Load(Handle, "secret_password_clear_sync", Loaded.Clear) && Load(Handle, "secret_password_free", Loaded.Free) &&
					Load(Handle, "g_error_free", Loaded.FreeError) && Load(Handle, "g_bus_get_sync", Loaded.GetBus) &&
					Load(Handle, "g_dbus_connection_set_exit_on_close", Loaded.SetExitOnClose);
				return Loaded;
			}();
			return Library;
		}

		/** Without an address the library would start a bus of its own. */
		bool HasBus()
		{
			const char* const Address = getenv("DBUS_SESSION_BUS_ADDRESS");
			const char* const Folder = getenv("XDG_RUNTIME_DIR");
			return (Address && *Address) || (Folder && access((std::string(Folder) + "/bus").c_str(), R_OK | W_OK) == 0);
		}

		/** Takes what an error says, and lets go of it. */
		std::string TakeError(FLibraryError* Error, const char* What)
		{
			const std::string Text = Error && Error->Message ? Error->Message : "it does not say why";
			if (Error)
			{
				GetLibrary().FreeError(Error);
			}
			return std::string("The keyring ") + What + ": " + Text + (Text.ends_with('.') ? "" : ".");
		}

		/** The end of the session's bus is not to be the end of the program. Gives a sentence, or nothing. */
		std::string Connect()
		{
			FLibraryError* Error = nullptr;
			void* const Bus = GetLibrary().GetBus(SessionBus, nullptr, &Error);
			if (!Bus)
			{
				return TakeError(Error, "cannot be reached");
			}
			GetLibrary().SetExitOnClose(Bus, 0);
			return std::string();
		}
	}

	std::string WhyNone()
	{
		return !HasBus() ? "this session has no keyring" : !GetLibrary().bIsWhole ? "the package libsecret-1-0 is not installed" : "";
	}

	std::string Find(const std::string& Origin, std::string& OutProblem)
	{
		OutProblem.clear();
		if (!WhyNone().empty() || !(OutProblem = Connect()).empty())
		{
			return std::string();
		}
		FLibraryError* Error = nullptr;
		char* const Found = GetLibrary().Lookup(&Schema, nullptr, &Error, "server", Origin.c_str(), nullptr);
		OutProblem = Error ? TakeError(Error, "did not answer") : std::string();
		std::string Key = Found ? Found : "";
		if (Found)
		{
			GetLibrary().Free(Found);
		}
		return Key;
	}

	std::string Store(const std::string& Origin, const std::string& Key)
	{
		if (const std::string Why = WhyNone(); !Why.empty())
		{
			return "The key was not kept in the keyring: " + Why + '.';
		}
		if (const std::string Problem = Connect(); !Problem.empty())
		{
			return Problem;
		}
		FLibraryError* Error = nullptr;
		if (Key.empty())
		{
			GetLibrary().Clear(&Schema, nullptr, &Error, "server", Origin.c_str(), nullptr);
			return Error ? TakeError(Error, "did not forget the key") : std::string();
		}
		const std::string Label = "Velmora UI: key of " + Origin;
		const int bIsKept =
			GetLibrary().Store(&Schema, nullptr, Label.c_str(), Key.c_str(), nullptr, &Error, "server", Origin.c_str(), nullptr);
		return bIsKept ? std::string() : TakeError(Error, "did not take the key");
	}
}
