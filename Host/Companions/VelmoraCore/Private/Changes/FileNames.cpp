#include <filesystem>

#include <sys/stat.h>

#include "Changes/ProjectAccess.h"

// Files with several names.

namespace Velmora
{
	namespace
	{
		/** A project of more entries than this is not searched for the other names of a file. */
		constexpr size_t MaxSearchedEntries = 500'000;
	}

	bool FProjectAccess::ListOtherNames(const std::string& Path, const FEntryInfo& Info, std::vector<std::string>& OutNames) const
	{
		OutNames.clear();
		std::error_code Error;
		std::filesystem::recursive_directory_iterator It(RealRoot, std::filesystem::directory_options::skip_permission_denied, Error);
		size_t Searched = 0;
		for (const std::filesystem::recursive_directory_iterator End; !Error && It != End && OutNames.size() + 1 < Info.NameCount;
			 It.increment(Error))
		{
			struct stat Status;
			if (++Searched > MaxSearchedEntries)
			{
				return false;
			}
			if (lstat(It->path().c_str(), &Status) == 0 && Status.st_ino == Info.Number && Status.st_dev == Info.Device)
			{
				const std::string Name = It->path().native().substr(RealRoot.size() + (RealRoot.back() == '/' ? 0 : 1));
				if (Name != Path)
				{
					OutNames.push_back(Name);
				}
			}
		}
		return OutNames.size() + 1 == Info.NameCount;
	}
}
