#include "Support/Base/SavedFolder.h"

#include "Host/HostPaths.h"
#include "Support/Base/TempFolder.h"

#include <gtest/gtest.h>

#include <memory>

namespace
{
	class FSavedFolderEnvironment : public ::testing::Environment
	{
	public:
		void SetUp() override
		{
			Folder = std::make_unique<FTempFolder>();
			FHostPaths::SetEngineSavedDir(Folder->At());
		}
		void TearDown() override { Folder.reset(); }

	private:
		std::unique_ptr<FTempFolder> Folder;
	};
}

bool UseTemporarySavedFolder()
{
	// The framework owns it.
	return ::testing::AddGlobalTestEnvironment(new FSavedFolderEnvironment) != nullptr;
}
