#include "FileCache/ProjectFileKinds.h"

#include <algorithm>

namespace Velmora
{
	namespace
	{
		struct FFileEnding
		{
			std::string_view Ending; // Lower case.
			EProjectFileType Type;
		};

		constexpr EProjectFileType Code = EProjectFileType::Code;
		constexpr EProjectFileType Asset = EProjectFileType::Asset;
		constexpr EProjectFileType Config = EProjectFileType::Config;

		/** The first that fits decides: rule files of modules end like sources. */
		// clang-format off
		constexpr FFileEnding FileEndings[] = {
			{ ".build.cs", Config }, { ".target.cs", Config },
			{ ".h", Code }, { ".hpp", Code }, { ".hh", Code }, { ".inl", Code }, { ".c", Code }, { ".cc", Code }, { ".cpp", Code },
			{ ".cxx", Code }, { ".cs", Code },
			{ ".py", Code }, { ".js", Code }, { ".ts", Code }, { ".lua", Code }, { ".java", Code }, { ".rs", Code }, { ".go", Code },
			{ ".sh", Code }, { ".bat", Code },
			{ ".usf", Code }, { ".ush", Code }, { ".hlsl", Code }, { ".cmake", Code },
			{ ".uasset", Asset }, { ".umap", Asset }, { ".umat", Asset }, { ".uanim", Asset }, { ".ufont", Asset }, { ".umaterial", Asset },
			{ ".uparticlesystem", Asset }, { ".usoundcue", Asset },
			{ ".ini", Config }, { ".uproject", Config }, { ".uplugin", Config }, { ".json", Config }, { ".xml", Config },
			{ ".yaml", Config }, { ".yml", Config },
			{ ".toml", Config }, { ".cfg", Config }, { ".conf", Config },
		};
		// clang-format on

		bool EndsWithLower(std::string_view Name, std::string_view Ending)
		{
			return Name.size() >= Ending.size() &&
				std::equal(Ending.rbegin(), Ending.rend(), Name.rbegin(),
					[](char Wanted, char Byte)
					{ return Wanted == (Byte >= 'A' && Byte <= 'Z' ? static_cast<char>(Byte - 'A' + 'a') : Byte); });
		}
	}

	EProjectFileType ClassifyProjectFile(std::string_view Name)
	{
		for (const FFileEnding& Row : FileEndings)
		{
			if (EndsWithLower(Name, Row.Ending))
			{
				return Row.Type;
			}
		}
		return EProjectFileType::Other;
	}
}
