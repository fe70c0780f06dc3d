#include "Changes/KeptContents.h"

#include "Changes/ContentHash.h"

namespace Velmora
{
	namespace
	{
		std::string GetPath(const std::string& Hash)
		{
			return std::string(FKeptContents::FolderName) + '/' + Hash;
		}
	}

	FKeptContents::FKeptContents(const std::string& JournalFolder)
		: Access(JournalFolder)
	{
	}

	std::string FKeptContents::Keep(const std::string& Bytes, const std::string& Hash)
	{
		const auto Known = Kept.find(Hash);
		if (Known != Kept.end())
		{
			++Known->second.Users;
			return std::string();
		}
		FProjectAccess::FWriteOptions Options;
		Options.TemporaryName = TemporaryName;
		Options.Mode = 0600;
		const std::string Problem = Access.Write(GetPath(Hash), Bytes, Options);
		if (!Problem.empty())
		{
			return "its former content cannot be kept: " + Problem;
		}
		Kept[Hash] = { Bytes.size(), 1 };
		TotalBytes += Bytes.size();
		return std::string();
	}

	bool FKeptContents::Adopt(const std::string& Hash)
	{
		const auto Known = Kept.find(Hash);
		if (Known != Kept.end())
		{
			++Known->second.Users;
			return true;
		}
		FEntryInfo Info;
		if (!Access.Look(GetPath(Hash), Info).empty() || Info.Kind != EEntryKind::File)
		{
			return false;
		}
		Kept[Hash] = { Info.Size, 1 };
		TotalBytes += Info.Size;
		return true;
	}

	void FKeptContents::Release(const std::string& Hash)
	{
		const auto Found = Kept.find(Hash);
		if (Found != Kept.end() && --Found->second.Users == 0)
		{
			Access.SetDurable(false); // It need not be gone for good.
			Access.Remove(GetPath(Hash));
			Access.SetDurable(bIsDurable);
			TotalBytes -= Found->second.Size;
			Kept.erase(Found);
		}
	}

	std::string FKeptContents::Read(const std::string& Hash, std::string& OutBytes) const
	{
		FEntryInfo Info;
		std::string Problem = Access.Read(GetPath(Hash), MaxFileBytes, OutBytes, Info);
		if (Problem.empty() && HashContent(OutBytes) != Hash)
		{
			Problem = "it is damaged";
		}
		return Problem;
	}

	void FKeptContents::SetDurable(bool bInDurable)
	{
		bIsDurable = bInDurable;
		Access.SetDurable(bInDurable);
	}
}
