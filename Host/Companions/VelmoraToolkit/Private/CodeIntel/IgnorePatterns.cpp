#include "CodeIntel/IgnorePatterns.h"

#include <memory>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "FileCache/IgnoreRules.h"
#include "Host/FileDescriptor.h"
#include "Host/HostFileNames.h"
#include "Host/ProjectFolder.h"
#include "Host/ProjectWalk.h"
#include "Misc/Paths.h"

namespace Velmora::CodeIntel
{
	namespace
	{
		/** Calls Test with every folder on the way to the path, outermost first, and at last with the path itself, until one is true. */
		template <typename TestType>
		bool AnyOnTheWay(std::string_view Path, TestType Test)
		{
			for (size_t Slash = Path.find('/'); Slash != std::string_view::npos; Slash = Path.find('/', Slash + 1))
			{
				if (Test(Path.substr(0, Slash), true))
				{
					return true;
				}
			}
			return Test(Path, false);
		}

		std::string_view NameOf(std::string_view Path)
		{
			return Path.substr(Path.rfind('/') + 1);
		}

		std::string JoinLines(const TArray<FString>& Patterns)
		{
			std::string Lines;
			for (const FString& Pattern : Patterns)
			{
				Lines += HostFileNameToBytes(Pattern) + '\n';
			}
			return Lines;
		}

		/** The ignore files in a project that lie on the way to a path, read as the way goes down. */
		class FIgnoreFilesOnTheWay
		{
		public:
			explicit FIgnoreFilesOnTheWay(const std::string& InRoot)
				: Root(InRoot)
			{
				Enter("");
			}

			bool Ignores(std::string_view Path, bool bIsFolder)
			{
				if (IsIgnored(Scope.get(), Path, bIsFolder))
				{
					return true;
				}
				if (bIsFolder)
				{
					Enter(std::string(Path) + '/');
				}
				return false;
			}

		private:
			void Enter(const std::string& FolderPath)
			{
				const FFileDescriptor Folder = FFileDescriptor::Open(Root + '/' + FolderPath, O_RDONLY | O_DIRECTORY);
				std::string Text;
				if (Folder.IsOpen() && ReadIgnoreFile(Folder.Get(), Text))
				{
					Scope = std::make_shared<const FIgnoreScope>(FIgnoreScope{ Scope, FIgnoreFile(std::move(Text)), FolderPath.size() });
				}
			}

			const std::string Root;
			std::shared_ptr<const FIgnoreScope> Scope;
		};
	}

	bool ShouldIgnorePath(const FString& Path, const TArray<FString>& Patterns)
	{
		FString Normal = Path;
		FPaths::NormalizeFilename(Normal);

		// Where the project itself lies is no reason to ignore what is in it.
		const FString Project = GetProjectFolder();
		const bool bIsInside =
			!Project.IsEmpty() && (FPaths::IsRelative(Normal) || Normal.StartsWith(Project + TEXT("/"), ESearchCase::CaseSensitive));
		if (bIsInside && !FPaths::IsRelative(Normal))
		{
			Normal = Normal.RightChop(Project.Len() + 1);
		}
		std::string Bytes = HostFileNameToBytes(Normal);
		Bytes.erase(0, Bytes.find_first_not_of('/'));
		bool bIsFolder = false;
		while (!Bytes.empty() && Bytes.back() == '/')
		{
			bIsFolder = true;
			Bytes.pop_back();
		}
		if (Bytes.empty())
		{
			return false;
		}
		if (AnyOnTheWay(Bytes, [](std::string_view Part, bool) { return IsIgnoredFolderName(NameOf(Part)); }))
		{
			return true;
		}
		const std::string Root = HostFileNameToBytes(Project);
		struct stat Status = {};
		bIsFolder = bIsFolder || (bIsInside && lstat((Root + '/' + Bytes).c_str(), &Status) == 0 && S_ISDIR(Status.st_mode));
		if (!Patterns.IsEmpty())
		{
			const FIgnoreFile Own(JoinLines(Patterns));
			if (AnyOnTheWay(Bytes,
					[&Own, bIsFolder](std::string_view Part, bool bIsAbove)
					{ return Own.Judge(Part, bIsAbove || bIsFolder) == EIgnoreVerdict::Ignore; }))
			{
				return true;
			}
		}
		if (!bIsInside)
		{
			return false;
		}
		FIgnoreFilesOnTheWay Files(Root);
		return AnyOnTheWay(
			Bytes, [&Files, bIsFolder](std::string_view Part, bool bIsAbove) { return Files.Ignores(Part, bIsAbove || bIsFolder); });
	}
}
