#include "Support/Base/SavedFolder.h"

#include "Containers/UnrealString.h"
#include "Host/HostPaths.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <unistd.h>

namespace
{
	class FSavedFolderEnvironment : public ::testing::Environment
	{
	public:
		/** Who saves something makes the folder: a child that is started to die leaves none behind. */
		void SetUp() override
		{
			Folder = std::filesystem::temp_directory_path() / ("velmora-saved-" + std::to_string(getpid()));
			FHostPaths::SetEngineSavedDir(FString(Folder.c_str()));
		}
		void TearDown() override
		{
			std::error_code Ignored;
			std::filesystem::remove_all(Folder, Ignored);
		}

	private:
		std::filesystem::path Folder;
	};
}

bool UseTemporarySavedFolder()
{
	// The framework owns it.
	return ::testing::AddGlobalTestEnvironment(new FSavedFolderEnvironment) != nullptr;
}
