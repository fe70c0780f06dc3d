#include "CodeIntel/IgnorePatterns.h"

#include <string>

#include "Host/ProjectFolder.h"
#include "Host/ProjectWalk.h"
#include "Misc/Paths.h"

namespace Velmora::CodeIntel
{
	namespace
	{
		bool IsIgnoredPathPart(const FString& Part)
		{
			std::string Name;
			Name.reserve(Part.Len());
			for (int32 Index = 0; Index < Part.Len(); ++Index)
			{
				// The built-in names are ASCII, so any other character may stand for "differs".
				Name.push_back(Part[Index] < 0x80 ? static_cast<char>(Part[Index]) : '\x7f');
			}
			return IsIgnoredFolderName(Name);
		}

		bool MatchesIgnorePattern(const FString& Text, const FString& Pattern)
		{
			return Text.MatchesWildcard(Pattern, ESearchCase::IgnoreCase);
		}
	}

	bool ShouldIgnorePath(const FString& Path, const TArray<FString>& Patterns)
	{
		FString Normal = Path;
		FPaths::NormalizeFilename(Normal);

		// Where the project itself lies is no reason to ignore what is in it.
		const FString Folder = GetProjectFolder() + TEXT("/");
		if (Folder.Len() > 1 && Normal.StartsWith(Folder, ESearchCase::CaseSensitive))
		{
			Normal = Normal.RightChop(Folder.Len());
		}

		TArray<FString> Parts;
		Normal.ParseIntoArray(Parts, TEXT("/"), true);
		for (const FString& Part : Parts)
		{
			if (IsIgnoredPathPart(Part))
			{
				return true;
			}
		}
		for (const FString& RawPattern : Patterns)
		{
			FString Pattern = RawPattern;
			FPaths::NormalizeFilename(Pattern);
			if (Pattern.IsEmpty())
			{
				continue;
			}
			int32 SlashIndex = INDEX_NONE;
			if (Pattern.FindChar(TEXT('/'), SlashIndex))
			{
				if (MatchesIgnorePattern(Normal, Pattern))
				{
					return true;
				}
				continue;
			}
			for (const FString& Part : Parts)
			{
				if (MatchesIgnorePattern(Part, Pattern))
				{
					return true;
				}
			}
		}
		return false;
	}
}
