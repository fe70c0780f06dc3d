#pragma once

#include "Containers/UnrealString.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

/** A fresh folder that goes with its contents at the end of the scope. */
class FTempFolder
{
public:
	FTempFolder()
	{
		std::string Pattern = (std::filesystem::temp_directory_path() / "velmora-test-XXXXXX").string();
		Bytes = mkdtemp(Pattern.data()) ? Pattern : std::string();
	}
	~FTempFolder()
	{
		std::error_code Error;
		std::filesystem::permissions(Bytes, std::filesystem::perms::owner_all, Error);
		std::filesystem::remove_all(Bytes, Error);
	}
	FTempFolder(const FTempFolder&) = delete;
	FTempFolder& operator=(const FTempFolder&) = delete;

	/** Full path of something in the folder. */
	FString At(const TCHAR* Name = TEXT("")) const { return FString(Bytes.c_str()) / Name; }
	std::string AtBytes(const std::string& Name = "") const { return Bytes + "/" + Name; }

	/** Contents of a file, "<missing>" when there is none. */
	std::string Read(const std::string& Name) const
	{
		std::ifstream Stream(AtBytes(Name), std::ios::binary);
		return Stream ? std::string(std::istreambuf_iterator<char>(Stream), {}) : std::string("<missing>");
	}
	void Write(const std::string& Name, const std::string& Contents) const
	{
		std::error_code Error;
		std::filesystem::create_directories(std::filesystem::path(AtBytes(Name)).parent_path(), Error);
		std::ofstream(AtBytes(Name), std::ios::binary) << Contents;
	}
	/** How many entries the folder itself has. */
	int CountEntries() const
	{
		std::error_code Error;
		int Count = 0;
		for (auto Position = std::filesystem::directory_iterator(Bytes, Error); Position != std::filesystem::directory_iterator();
			 Position.increment(Error))
		{
			++Count;
		}
		return Count;
	}

private:
	std::string Bytes;
};
