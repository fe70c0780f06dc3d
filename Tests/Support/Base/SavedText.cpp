#include "Support/Base/SavedText.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

void ExpectSavedText(const std::string& File, const std::string& Text)
{
	const std::filesystem::path Path = std::filesystem::path(VELMORA_TESTS_DIR) / File;
	if (std::getenv("VELMORA_WRITE_TEXTS"))
	{
		std::filesystem::create_directories(Path.parent_path());
		std::ofstream(Path, std::ios::binary) << Text;
	}
	std::ostringstream Saved;
	Saved << std::ifstream(Path, std::ios::binary).rdbuf();
	EXPECT_EQ(Text, Saved.str()) << File;
}
