#include "Tools/ProjectFiles.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "Text/Utf8Text.h"
#include "Changes/ProjectAccess.h"
#include "Host/ProjectWalk.h"

namespace Velmora
{
	namespace
	{
		/** How well a path answers to a name; lower is better. */
		enum class ENameMatch
		{
			Name, // Last part, letter case aside.
			PathEnd, // Ends with it at a slash.
			BaseName, // Last part without its extension.
			PartOfName, // Somewhere in the last part.
			None
		};

		ENameMatch MatchName(std::string_view LowerPath, std::string_view LowerName)
		{
			const size_t Slash = LowerPath.rfind('/');
			const std::string_view Last = Slash == std::string_view::npos ? LowerPath : LowerPath.substr(Slash + 1);
			if (Last == LowerName)
			{
				return ENameMatch::Name;
			}
			if (LowerName.find('/') != std::string_view::npos)
			{
				const bool bEndsWith = Utf8Text::EndsWith(LowerPath, LowerName);
				const size_t Before = LowerPath.size() - std::min(LowerPath.size(), LowerName.size());
				return bEndsWith && (Before == 0 || LowerPath[Before - 1] == '/') ? ENameMatch::PathEnd : ENameMatch::None;
			}
			if (Last.substr(0, Last.rfind('.')) == LowerName)
			{
				return ENameMatch::BaseName;
			}
			return Last.find(LowerName) != std::string_view::npos ? ENameMatch::PartOfName : ENameMatch::None;
		}

		bool IsInside(std::string_view Path, std::string_view Folder)
		{
			return Path == Folder || (Utf8Text::StartsWith(Path, Folder) && (Folder == "/" || Path[Folder.size()] == '/'));
		}

		FProjectText MakeProblem(std::string Problem, EReadResult Kind = EReadResult::Unreadable)
		{
			FProjectText Result;
			Result.Result = Kind;
			Result.Problem = std::move(Problem);
			return Result;
		}
	}

	FProjectFiles::FProjectFiles(std::string InRoot)
		: Root(std::move(InRoot))
	{
		// The project may have been opened through a link: paths are shown as the user spells the folder and checked as the disk does.
		std::error_code Error;
		RealRoot = std::filesystem::canonical(Root, Error).native();
		Access = std::make_shared<FProjectAccess>(RealRoot);
	}

	bool FProjectFiles::IsAvailable() const
	{
		std::error_code Error;
		return !RealRoot.empty() && std::filesystem::is_directory(RealRoot, Error);
	}

	bool FProjectFiles::IsOutside(std::string_view Path) const
	{
		// Told by the names alone, so that it can be said of what does not exist.
		const std::filesystem::path Full = std::filesystem::path(Root) / std::filesystem::path(std::string(Path));
		const std::string Normal = Full.lexically_normal().native();
		return !IsInside(Normal, Root) && !IsInside(Normal, RealRoot);
	}

	std::string FProjectFiles::Spell(std::string_view Path) const
	{
		// People from other systems write backslashes. A file may have one in its name here, so an entry of that very name comes first.
		std::string Spelt(Path);
		std::error_code Error;
		if (Spelt.find('\\') != std::string::npos &&
			!std::filesystem::exists(std::filesystem::symlink_status(std::filesystem::path(Root) / Spelt, Error)))
		{
			std::replace(Spelt.begin(), Spelt.end(), '\\', '/');
		}
		return Spelt;
	}

	std::string FProjectFiles::DescribeFound(size_t Count)
	{
		return Count == 0 ? "No file of that name" : Utf8Text::Count(Count, "file or folder", "files or folders") + " of that name";
	}

	bool FProjectFiles::Resolve(std::string_view Path, FProjectPath& OutPath) const
	{
		if (RealRoot.empty() || Path.empty() || Path.find('\0') != std::string_view::npos)
		{
			return false;
		}
		std::error_code Error;
		// Links are followed before it is compared: a link out of the project leads outside, whatever it is called.
		const std::string Real = std::filesystem::canonical(std::filesystem::path(Root) / Spell(Path), Error).native();
		if (Error || !IsInside(Real, RealRoot))
		{
			return false;
		}
		const std::filesystem::file_status Status = std::filesystem::status(Real, Error);
		// Devices, sockets and pipes: reading one may never end.
		if (Error || (!std::filesystem::is_regular_file(Status) && !std::filesystem::is_directory(Status)))
		{
			return false;
		}
		OutPath.bIsFolder = std::filesystem::is_directory(Status);
		OutPath.Relative = Real == RealRoot ? std::string() : Real.substr(RealRoot == "/" ? 1 : RealRoot.size() + 1);
		OutPath.Absolute = OutPath.Relative.empty() ? Root : (Root == "/" ? Root : Root + '/') + OutPath.Relative;
		return true;
	}

	std::vector<FProjectPath> FProjectFiles::Find(std::string_view Name, size_t MaxResults) const
	{
		FProjectPath Exact;
		if (Resolve(Name, Exact))
		{
			return { Exact };
		}
		// A name may hold a backslash, too.
		const std::string LowerGiven = Utf8Text::ToLower(Name);
		std::string LowerName = LowerGiven;
		std::replace(LowerName.begin(), LowerName.end(), '\\', '/');
		while (Utf8Text::StartsWith(LowerName, "./"))
		{
			LowerName.erase(0, 2);
		}
		while (!LowerName.empty() && LowerName.back() == '/')
		{
			LowerName.pop_back();
		}
		if (LowerName.empty() || LowerName == "." || LowerName == ".." || LowerName.front() == '/')
		{
			return {};
		}

		std::vector<std::pair<ENameMatch, FProjectPath>> Found;
		WalkProject(Root, std::string(),
			[&Found, &LowerName, &LowerGiven](const FProjectWalkEntry& Entry)
			{
				const std::string LowerPath = Utf8Text::ToLower(Entry.RelativePath);
				const ENameMatch Match = std::min(MatchName(LowerPath, LowerName), MatchName(LowerPath, LowerGiven));
				if (Match != ENameMatch::None)
				{
					Found.push_back({ Match, { std::string(Entry.AbsolutePath), std::string(Entry.RelativePath), Entry.bIsDirectory } });
				}
				return EProjectWalkStep::Continue;
			});
		std::stable_sort(Found.begin(), Found.end(), [](const auto& A, const auto& B) { return A.first < B.first; });

		// A better kind of match is what was meant; weaker ones would only be noise beside it.
		std::vector<FProjectPath> Result;
		for (const auto& [Match, Path] : Found)
		{
			if (Match != Found.front().first || Result.size() >= MaxResults)
			{
				break;
			}
			Result.push_back(Path);
		}
		return Result;
	}

	FProjectText FProjectFiles::Read(const std::string& AbsolutePath) const
	{
		std::error_code Error;
		const std::string Real = std::filesystem::canonical(AbsolutePath, Error).native();
		if (Error)
		{
			return MakeProblem("it cannot be found");
		}
		if (!IsInside(Real, RealRoot))
		{
			return MakeProblem("it lies outside the project");
		}
		std::string Bytes;
		FEntryInfo Info;
		const std::string Relative = Real.substr(std::min(Real.size(), RealRoot == "/" ? 1 : RealRoot.size() + 1));
		const std::string Problem = Access->Read(Relative, MaxFileBytes, Bytes, Info);
		if (!Problem.empty())
		{
			return MakeProblem(
				Problem, Info.Kind == EEntryKind::File && Info.Size > MaxFileBytes ? EReadResult::TooLarge : EReadResult::Unreadable);
		}

		FProjectText Result;
		// Editors of some systems write UTF-16; with its mark it is text, though it is full of zero bytes.
		const bool bIsLittleEndian = Utf8Text::StartsWith(Bytes, "\xFF\xFE");
		if (bIsLittleEndian || Utf8Text::StartsWith(Bytes, "\xFE\xFF"))
		{
			Result.Text = Utf8Text::Sanitise(Utf8Text::FromUtf16Bytes(std::string_view(Bytes).substr(2), !bIsLittleEndian));
			return Result;
		}
		if (Bytes.find('\0') != std::string::npos)
		{
			return MakeProblem("it is a binary file", EReadResult::Binary);
		}
		Result.Text =
			Utf8Text::Sanitise(Utf8Text::StartsWith(Bytes, "\xEF\xBB\xBF") ? std::string_view(Bytes).substr(3) : std::string_view(Bytes));
		return Result;
	}
}
