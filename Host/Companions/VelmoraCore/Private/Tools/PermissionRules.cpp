#include "Tools/PermissionRules.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <fcntl.h>

#include "Host/FileDescriptor.h"
#include "Host/FolderLock.h"
#include "Host/HostAtomicFile.h"
#include "Host/HostFileNames.h"
#include "Host/StoreLocation.h"
#include "Text/Utf8Text.h"

namespace Velmora
{
	namespace
	{
		/** A file of rules is written by people's clicks; a larger one is none of ours. */
		constexpr uint64_t MaxRulesBytes = 4 * 1024 * 1024;

		/** Another program's turn takes milliseconds; beyond, it goes on without. */
		constexpr int32 TurnMilliseconds = 1000;

		constexpr std::string_view AllowWord = "allow";
		constexpr std::string_view DenyWord = "deny";

		/** Tabs part the fields and line feeds the rules, so neither may stand in one. */
		std::string Escape(std::string_view Text)
		{
			std::string Out;
			for (const char Byte : Text)
			{
				Out += Byte == '\\' ? "\\\\" : Byte == '\t' ? "\\t" : Byte == '\n' ? "\\n" : std::string(1, Byte);
			}
			return Out;
		}

		std::string Unescape(std::string_view Text)
		{
			std::string Out;
			for (size_t Index = 0; Index < Text.size(); ++Index)
			{
				const bool bIsEscaped = Text[Index] == '\\' && Index + 1 < Text.size();
				const char Byte = bIsEscaped ? Text[++Index] : Text[Index];
				Out += bIsEscaped && Byte == 't' ? '\t' : bIsEscaped && Byte == 'n' ? '\n' : Byte;
			}
			return Out;
		}

		/** "allow<TAB>tool<TAB>prefix". */
		bool ReadRule(std::string_view Line, FPermissionRule& Out)
		{
			const size_t First = Line.find('\t');
			const size_t Second = First == std::string_view::npos ? First : Line.find('\t', First + 1);
			if (Second == std::string_view::npos)
			{
				return false;
			}
			Out.bAllows = Line.substr(0, First) == AllowWord;
			Out.Tool = Unescape(Line.substr(First + 1, Second - First - 1));
			Out.Prefix = Unescape(Line.substr(Second + 1));
			return !Out.Tool.empty() && (Out.bAllows || Line.substr(0, First) == DenyWord);
		}

		/**
		 * Whether the beginning that was allowed speaks for the whole: what follows the beginning of a command may be further
		 * words of it, and neither the rest of its last word nor another command; a server is its whole address. A rule without
		 * any beginning is meant for all.
		 */
		bool SpeaksForAll(std::string_view Tool, std::string_view Subject, std::string_view Prefix)
		{
			constexpr std::string_view Blanks = " \t\n";
			const std::string_view Rest = Subject.substr(Prefix.size());
			if (Prefix.empty() || Rest.empty())
			{
				return true;
			}
			if (Tool == "run_command")
			{
				return (Blanks.find(Rest.front()) != Blanks.npos || Blanks.find(Prefix.back()) != Blanks.npos) &&
					Rest.find_first_of(";|&`$<>(){}\n\\!#") == Rest.npos;
			}
			return Tool != "connect";
		}
	}

	FPermissionRules::FPermissionRules(std::string InPath, std::vector<std::string> InAllowedCalls)
		: Path(std::move(InPath))
		, AllowedCalls(std::move(InAllowedCalls))
	{
	}

	EPermission FPermissionRules::Judge(std::string_view Tool, std::string_view Subject) const
	{
		std::unique_lock Lock(Mutex);
		const TOutcome<std::vector<FPermissionRule>> Rules = Read();
		Lock.unlock();
		if (!Rules)
		{
			// A refusal may stand among them.
			return EPermission::Ask;
		}
		const std::string Call = std::string(Tool) + ' ' + std::string(Subject);
		EPermission Permission =
			std::any_of(AllowedCalls.begin(), AllowedCalls.end(),
				[&](const std::string& Prefix)
				{
					const std::string_view OfSubject = std::string_view(Prefix).substr(std::min(Prefix.size(), Tool.size() + 1));
					return !Prefix.empty() && Utf8Text::StartsWith(Call, Prefix) && SpeaksForAll(Tool, Subject, OfSubject);
				})
			? EPermission::Allowed
			: EPermission::Ask;
		for (const FPermissionRule& Rule : *Rules)
		{
			if (Rule.Tool == Tool && Utf8Text::StartsWith(Subject, Rule.Prefix))
			{
				if (!Rule.bAllows)
				{
					return EPermission::Denied;
				}
				Permission = SpeaksForAll(Tool, Subject, Rule.Prefix) ? EPermission::Allowed : Permission;
			}
		}
		return Permission;
	}

	std::vector<FPermissionRule> FPermissionRules::List() const
	{
		const std::scoped_lock Lock(Mutex);
		TOutcome<std::vector<FPermissionRule>> Rules = Read();
		return Rules ? std::move(*Rules) : std::vector<FPermissionRule>();
	}

	std::string FPermissionRules::Add(const FPermissionRule& Rule)
	{
		return Change(
			[&Rule](std::vector<FPermissionRule>& Rules)
			{
				const bool bIsNew = std::find(Rules.begin(), Rules.end(), Rule) == Rules.end();
				if (bIsNew)
				{
					Rules.push_back(Rule);
				}
				return bIsNew;
			});
	}

	std::string FPermissionRules::Remove(const FPermissionRule& Rule)
	{
		return Change([&Rule](std::vector<FPermissionRule>& Rules) { return std::erase(Rules, Rule) > 0; });
	}

	std::string FPermissionRules::Change(const std::function<bool(std::vector<FPermissionRule>&)>& Edit)
	{
		const std::scoped_lock Lock(Mutex);
		const std::string Folder = Path.substr(0, Path.rfind('/'));
		if (const FOutcome Made = MakePrivateFolder(HostFileNameFromBytes(Folder)); !Made)
		{
			return "The rule was not stored. " + Made.GetWords();
		}
		const FFolderLock Turn(Folder, TurnMilliseconds);
		TOutcome<std::vector<FPermissionRule>> Rules = Read();
		if (!Rules)
		{
			return "The rule was not stored, since the others in " + Path + " cannot be read: " + Rules.GetWords() + '.';
		}
		return Edit(*Rules) ? Write(*Rules) : std::string();
	}

	TOutcome<std::vector<FPermissionRule>> FPermissionRules::Read() const
	{
		std::vector<FPermissionRule> Rules;
		const FFileDescriptor File = FFileDescriptor::Open(Path, O_RDONLY | O_NONBLOCK);
		if (!File.IsOpen() && (errno == ENOENT || errno == ENOTDIR))
		{
			return Rules;
		}
		std::string Bytes;
		if (!File.IsOpen() || !File.Read(Bytes, MaxRulesBytes + 1))
		{
			return FOutcome::FromSystem(errno, Path);
		}
		if (Bytes.size() > MaxRulesBytes)
		{
			return FOutcome(EOutcome::Refused, "it is larger than 4 MB", Path);
		}
		for (const std::string_view Line : Utf8Text::SplitLines(Bytes))
		{
			FPermissionRule Rule;
			if (ReadRule(Line, Rule))
			{
				Rules.push_back(std::move(Rule));
			}
		}
		return Rules;
	}

	std::string FPermissionRules::Write(const std::vector<FPermissionRule>& Rules) const
	{
		std::string Bytes;
		for (const FPermissionRule& Rule : Rules)
		{
			Bytes += std::string(Rule.bAllows ? AllowWord : DenyWord) + '\t' + Escape(Rule.Tool) + '\t' + Escape(Rule.Prefix) + '\n';
		}
		FString Reason;
		const bool bIsWritten =
			HostSaveFile(HostFileNameFromBytes(Path), Bytes.data(), static_cast<int64>(Bytes.size()), HostWritePrivate, Reason);
		return bIsWritten ? std::string() : "The rule was not stored: " + HostFileNameToBytes(Reason) + '.';
	}
}
