#include "Model/ModelKeys.h"

#include <cstdlib>
#include <map>
#include <mutex>

#include "Changes/PrivateFile.h"
#include "Http/WebAddress.h"
#include "Model/KeyRing.h"
#include "Text/Utf8Text.h"

namespace Velmora::ModelKeys
{
	namespace
	{
		constexpr const char* KeysFile = "keys";

		/** Keys that stood in the environment, by their variable. */
		struct FTakenKeys
		{
			std::mutex Mutex;
			std::map<std::string, std::string> Keys;
		};

		FTakenKeys& GetTaken()
		{
			static FTakenKeys Taken;
			return Taken;
		}

		std::string FindInEnvironment(const std::string& Variable)
		{
			FTakenKeys& Taken = GetTaken();
			const std::scoped_lock Lock(Taken.Mutex);
			const auto Found = Taken.Keys.find(Variable);
			return Found != Taken.Keys.end() ? Found->second : std::string();
		}

		std::string GetOrigin(const FAgentConnection& Connection)
		{
			FWebAddress Address;
			std::string Ignored;
			return FWebAddress::Parse(Utf8Text::FromString(Connection.Url), Address, Ignored) ? Address.GetOrigin() : std::string();
		}

		/** "ORIGIN KEY": both empty for a line that is none. */
		std::pair<std::string, std::string> ReadLine(std::string_view Line)
		{
			const std::string_view Whole = Utf8Text::Trim(Line);
			const size_t Blank = Whole.find_first_of(" \t");
			FWebAddress Address;
			std::string Ignored;
			if (Blank == std::string_view::npos || !FWebAddress::Parse(Whole.substr(0, Blank), Address, Ignored))
			{
				return {};
			}
			return { Address.GetOrigin(), std::string(Utf8Text::Trim(Whole.substr(Blank))) };
		}

		std::string FindInFile(const std::string& Origin)
		{
			std::string Text;
			std::string Problem;
			if (Origin.empty() || !PrivateFile::Read(KeysFile, Text, Problem))
			{
				return std::string();
			}
			for (const std::string_view Line : Utf8Text::SplitLines(Text))
			{
				if (auto [LineOrigin, Key] = ReadLine(Line); LineOrigin == Origin)
				{
					return Key;
				}
			}
			return std::string();
		}

		std::string StoreInFile(const std::string& Origin, const std::string& Key)
		{
			const FFolderLock Turn = PrivateFile::TakeTurn();
			std::string Text;
			std::string Problem;
			if (!PrivateFile::Read(KeysFile, Text, Problem) && !Problem.empty())
			{
				return Problem;
			}
			// Lines of other servers stay as they are, also those that cannot be read.
			std::string NewText;
			for (const std::string_view Line : Utf8Text::SplitLines(Text))
			{
				if (ReadLine(Line).first != Origin)
				{
					NewText += std::string(Line) + '\n';
				}
			}
			NewText += Key.empty() ? std::string() : Origin + ' ' + Key + '\n';
			return NewText == Text ? std::string() : PrivateFile::Write(KeysFile, NewText);
		}
	}

	void TakeFromEnvironment(const std::string& Variable)
	{
		FTakenKeys& Taken = GetTaken();
		const std::scoped_lock Lock(Taken.Mutex);
		if (const char* const Value = Variable.empty() ? nullptr : getenv(Variable.c_str()))
		{
			Taken.Keys[Variable] = Value;
			unsetenv(Variable.c_str());
		}
	}

	std::string Find(const FAgentConnection& Connection)
	{
		const std::string Variable = Utf8Text::FromString(Connection.KeyVariable);
		TakeFromEnvironment(Variable);
		std::string Key = FindInEnvironment(Variable);
		// One that does not answer is told by whoever asks where the key is; the server tells that there is none.
		std::string Ignored;
		const std::string Origin = GetOrigin(Connection);
		Key = Key.empty() && !Origin.empty() ? KeyRing::Find(Origin, Ignored) : Key;
		return Key.empty() ? FindInFile(Origin) : Key;
	}

	std::string Describe(const FAgentConnection& Connection)
	{
		const std::string Variable = Utf8Text::FromString(Connection.KeyVariable);
		TakeFromEnvironment(Variable);
		if (!FindInEnvironment(Variable).empty())
		{
			return "the environment variable " + Variable;
		}
		const std::string Origin = GetOrigin(Connection);
		std::string Problem;
		if (!Origin.empty() && !KeyRing::Find(Origin, Problem).empty())
		{
			return "the keyring";
		}
		if (FindInFile(Origin).empty())
		{
			return std::string();
		}
		const std::string Why = Problem.empty() ? KeyRing::WhyNone() : Problem;
		return "the file " + PrivateFile::GetFolder() + '/' + KeysFile + (Why.empty() ? "" : " (" + Why + ')');
	}

	std::string Store(const FAgentConnection& Connection, const std::string& Key)
	{
		const std::string Origin = GetOrigin(Connection);
		if (Origin.empty())
		{
			return Utf8Text::FromString(FAgentConnections::Check(Connection));
		}
		if (Key.find_first_of(" \t\r\n") != std::string::npos)
		{
			return "A key has no blanks in it.";
		}
		if (!KeyRing::WhyNone().empty())
		{
			return StoreInFile(Origin, Key);
		}
		// One key in one place. A keyring that refuses is told; nothing is put elsewhere behind the user's back.
		const std::string Problem = KeyRing::Store(Origin, Key);
		return Problem.empty() ? StoreInFile(Origin, std::string()) : Problem;
	}
}
