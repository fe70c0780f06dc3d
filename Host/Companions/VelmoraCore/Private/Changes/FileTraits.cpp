#include "Changes/FileTraits.h"

#include <algorithm>

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace Velmora
{
	namespace
	{
		constexpr const char* AccessList = "system.posix_acl_access";

		/** Of the system's own making: labels, capabilities, checksums. They are about a content, and not ours to give. */
		bool IsKept(const std::string& Name)
		{
			return Name.rfind("user.", 0) == 0 || Name == AccessList;
		}

		std::vector<std::string> ListNames(int File)
		{
			std::vector<std::string> Names;
			const ssize_t Size = flistxattr(File, nullptr, 0);
			std::string List(Size > 0 ? static_cast<size_t>(Size) : 0, '\0');
			const ssize_t Length = List.empty() ? 0 : flistxattr(File, List.data(), List.size());
			for (size_t Start = 0; Length > 0 && Start < static_cast<size_t>(Length);)
			{
				const std::string Name(List.c_str() + Start);
				Start += Name.size() + 1;
				if (IsKept(Name))
				{
					Names.push_back(Name);
				}
			}
			std::sort(Names.begin(), Names.end());
			return Names;
		}
	}

	FFileTraits FileTraits::Read(int File)
	{
		FFileTraits Traits;
		struct stat Status = {};
		fstat(File, &Status);
		Traits.Owner = Status.st_uid;
		Traits.Group = Status.st_gid;
		for (const std::string& Name : ListNames(File))
		{
			const ssize_t Size = fgetxattr(File, Name.c_str(), nullptr, 0);
			std::string Value(Size > 0 ? static_cast<size_t>(Size) : 0, '\0');
			if (Size >= 0 && fgetxattr(File, Name.c_str(), Value.data(), Value.size()) == Size)
			{
				Traits.Attributes.emplace_back(Name, Value);
			}
		}
		return Traits;
	}

	std::string FileTraits::Apply(int File, const FFileTraits& Traits)
	{
		std::string Lost;
		const auto Lose = [&Lost](const std::string& What) { Lost += (Lost.empty() ? "" : ", ") + What; };
		struct stat Status = {};
		fstat(File, &Status);
		// Nobody but the superuser can give a file away; a group of one's own can be given.
		if ((Status.st_uid != Traits.Owner || Status.st_gid != Traits.Group) && fchown(File, Traits.Owner, Traits.Group) != 0)
		{
			const bool bHasGroup = Status.st_gid == Traits.Group || fchown(File, static_cast<uid_t>(-1), Traits.Group) == 0;
			if (Status.st_uid != Traits.Owner)
			{
				Lose("its owner");
			}
			if (!bHasGroup)
			{
				Lose("its group");
			}
		}
		for (const std::string& Name : ListNames(File))
		{
			// A folder gives its access list to what is made in it.
			if (std::none_of(Traits.Attributes.begin(), Traits.Attributes.end(),
					[&Name](const std::pair<std::string, std::string>& Attribute) { return Attribute.first == Name; }))
			{
				fremovexattr(File, Name.c_str());
			}
		}
		for (const auto& [Name, Value] : Traits.Attributes)
		{
			if (fsetxattr(File, Name.c_str(), Value.data(), Value.size(), 0) != 0)
			{
				Lose(Name == AccessList ? "its access list" : "its attribute " + Name);
			}
		}
		return Lost;
	}
}
