#pragma once

#include "CoreMinimal.h"
#include "Host/ProjectFolder.h"
#include "Support/Base/Printers.h"

#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <string_view>
#include <unistd.h>

/** A project folder of its own for each test, gone with it. The names that matter are made up at run time, so that no answer can be
 * prepared for them. */
class FTemporaryProject
{
public:
	FTemporaryProject()
		: Random(std::random_device{}())
	{
		Root = std::filesystem::canonical(std::filesystem::temp_directory_path()) /
			("velmora-" + std::to_string(getpid()) + '-' + MakeName(8));
		std::filesystem::create_directories(Root);
		Velmora::SetProjectFolder(UTF8_TO_TCHAR(Root.c_str()));
	}

	~FTemporaryProject()
	{
		Velmora::SetProjectFolder(FString());
		std::error_code Error;
		std::filesystem::remove_all(Root, Error);
	}

	FTemporaryProject(const FTemporaryProject&) = delete;
	FTemporaryProject& operator=(const FTemporaryProject&) = delete;

	/** Letters only, the first one large. */
	std::string MakeName(size_t Length = 12)
	{
		std::uniform_int_distribution<int> Letter('a', 'z');
		std::string Name;
		while (Name.size() < Length)
		{
			Name.push_back(static_cast<char>(Letter(Random)));
		}
		Name[0] = static_cast<char>(Name[0] - 'a' + 'A');
		return Name;
	}

	int MakeNumber(int Low, int High) { return std::uniform_int_distribution<int>(Low, High)(Random); }

	/** Makes the folders on the way too. */
	void Write(const std::string& RelativePath, std::string_view Text) const
	{
		const std::filesystem::path Path = Root / RelativePath;
		std::filesystem::create_directories(Path.parent_path());
		std::ofstream(Path, std::ios::binary).write(Text.data(), static_cast<std::streamsize>(Text.size()));
	}

	std::string PathOf(const std::string& RelativePath) const { return (Root / RelativePath).native(); }

	std::filesystem::path Root;

private:
	std::mt19937 Random;
};

inline FString Text(const std::string& Utf8Text)
{
	return FString(UTF8_TO_TCHAR(Utf8Text.c_str()));
}
