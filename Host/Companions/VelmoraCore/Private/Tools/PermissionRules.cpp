#include "Tools/PermissionRules.h"

#include <algorithm>
#include <utility>

#include "Changes/ProjectAccess.h"
#include "Host/HostFileNames.h"
#include "Host/StoreLocation.h"
#include "Text/Utf8Text.h"

namespace Velmora
{
	namespace
	{
		/** A file of rules is written by people's clicks; a larger one is none of ours. */
		constexpr uint64_t MaxRulesBytes = 4 * 1024 * 1024;

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
		 * words of it, and no other command. A rule without any beginning is meant for all.
		 */
		bool SpeaksForAll(std::string_view Tool, std::string_view Subject, std::string_view Prefix)
		{
			return Tool != "run_command" || Prefix.empty() ||
				Subject.substr(Prefix.size()).find_first_of(";|&`$<>(){}\n\\!#") == std::string_view::npos;
		}

		std::pair<std::string, std::string> SplitPath(const std::string& Path)
		{
			const size_t Slash = Path.rfind('/');
			return { Path.substr(0, Slash == std::string::npos ? 0 : Slash), Path.substr(Slash == std::string::npos ? 0 : Slash + 1) };
		}
	}

	FPermissionRules::FPermissionRules(std::string InPath, std::vector<std::string> InAllowedCalls)
		: Path(std::move(InPath))
		, AllowedCalls(std::move(InAllowedCalls))
	{
	}

	EPermission FPermissionRules::Judge(std::string_view Tool, std::string_view Subject) const
	{
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
		for (const FPermissionRule& Rule : List())
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
		return Read();
	}

	std::string FPermissionRules::Add(const FPermissionRule& Rule)
	{
		const std::scoped_lock Lock(Mutex);
		std::vector<FPermissionRule> Rules = Read();
		if (std::find(Rules.begin(), Rules.end(), Rule) != Rules.end())
		{
			return std::string();
		}
		Rules.push_back(Rule);
		return Write(Rules);
	}

	std::string FPermissionRules::Remove(const FPermissionRule& Rule)
	{
		const std::scoped_lock Lock(Mutex);
		std::vector<FPermissionRule> Rules = Read();
		return std::erase(Rules, Rule) == 0 ? std::string() : Write(Rules);
	}

	std::vector<FPermissionRule> FPermissionRules::Read() const
	{
		std::vector<FPermissionRule> Rules;
		const auto [Folder, Name] = SplitPath(Path);
		const FProjectAccess Access(Folder);
		std::string Bytes;
		FEntryInfo Info;
		if (!Access.IsOpen() || !Access.Read(Name, MaxRulesBytes, Bytes, Info).empty())
		{
			return Rules;
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
		const auto [Folder, Name] = SplitPath(Path);
		if (const FOutcome Made = MakePrivateFolder(HostFileNameFromBytes(Folder)); !Made)
		{
			return "The rule was not stored. " + Made.GetWords();
		}
		const FProjectAccess Access(Folder);
		FProjectAccess::FWriteOptions Options;
		Options.TemporaryName = Name + ".new";
		Options.Mode = 0600;
		const std::string Problem = Access.IsOpen() ? Access.Write(Name, Bytes, Options) : Access.DescribeRefusal();
		return Problem.empty() ? std::string() : "The rule was not stored: " + Problem + '.';
	}
}
