#include "MadeProject.h"

#include <fcntl.h>
#include <random>
#include <unistd.h>

namespace
{
	const char* const Tops[] = { "Source", "Content", "Plugins", "Config", "Docs", "Tools" };
	const char* const Words[] = { "Player", "Inventory", "Weapon", "Camera", "Menu", "Widget", "Render", "Physics", "Audio", "Level",
		"Quest", "Dialog", "Save", "Network", "Editor", "Asset", "Texture", "Shader", "Particle", "Anim", "Skeleton", "Input", "Settings",
		"Game", "Actor", "Component", "System", "Manager", "Factory", "Test", "Util", "Data", "Table", "Curve", "Path", "Spline" };
	const char* const Extensions[] = { ".cpp", ".cpp", ".cpp", ".h", ".h", ".h", ".uasset", ".uasset", ".umap", ".ini", ".txt", ".md",
		".png", ".json" };

	template <size_t Count>
	std::string Pick(std::mt19937& Random, const char* const (&List)[Count])
	{
		return List[Random() % Count];
	}

	constexpr int FilesInFolder = 40;
}

FMadeProject::FMadeProject(int FileCount)
	: Root(std::filesystem::temp_directory_path() / ("velmora-project-" + std::to_string(getpid()) + '-' + std::to_string(FileCount)))
{
	std::mt19937 Random(1);
	for (int First = 0; First < FileCount; First += FilesInFolder)
	{
		std::filesystem::path Folder = Root / Pick(Random, Tops);
		for (int Depth = 2 + static_cast<int>(Random() % 3); Depth > 0; --Depth)
		{
			Folder /= Pick(Random, Words);
		}
		Folder /= Pick(Random, Words) + std::to_string(First / FilesInFolder);
		std::filesystem::create_directories(Folder);
		const int Handle = open(Folder.c_str(), O_PATH | O_DIRECTORY);
		for (int File = First; File < FileCount && File < First + FilesInFolder; ++File)
		{
			std::string Name;
			for (int Word = 2 + static_cast<int>(Random() % 3); Word > 0; --Word)
			{
				Name += Pick(Random, Words);
			}
			// The number keeps two files of a folder apart.
			Name += std::to_string(File - First) + Pick(Random, Extensions);
			close(openat(Handle, Name.c_str(), O_CREAT | O_WRONLY, 0600));
		}
		close(Handle);
	}
}

FMadeProject::~FMadeProject()
{
	std::error_code Error;
	std::filesystem::remove_all(Root, Error);
}
