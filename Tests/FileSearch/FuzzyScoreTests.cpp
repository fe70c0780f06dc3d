#include "FileSearch/FileIndexService.h"

#include "Support/Base/Printers.h"

#include <string>

using Velmora::UI::FFileIndexService;

namespace
{
	int32 Score(const std::string& Path, const std::string& Query)
	{
		return FFileIndexService::CalculateFuzzyScore(FString(Path.c_str()), FString(Query.c_str()));
	}
}

TEST(FuzzyScore, ByTable)
{
	const std::tuple<const char*, const char*, int32> Cases[] = {
		{ "Source/Game/Player.cpp", "play", 200 },
		{ "Source/Game/Player.cpp", "PLAY", 200 },
		{ "Source/Game/Player.cpp", "ayer", 175 },
		{ "Source/Game/Player.cpp", "source", 150 },
		{ "Source/Game/Player.cpp", "game", 125 },
		{ "Source/Game/Player.cpp", "ourc", 100 },
		{ "Source/Game/Player.cpp", "game/pl", 125 },
		{ "Source/Game/Player.cpp", "/player", 100 },
		{ "Source/Game/Player.cpp", "spc", 38 },
		{ "Source/Game/Player.cpp", "sgp", 70 },
		{ "Source/Game/Player.cpp", "xyz", 0 },
		{ "Source/Game/Player.cpp", "", 0 },
		{ "", "play", 0 },
		{ "", "", 0 },
		{ "Player.cpp", "play", 150 },
		{ "Player.cpp", "player.cppx", 0 },
		{ "/Player.cpp", "player", 200 },
		{ "player/src/player.cpp", "player", 150 },
		{ "a/b", "a/b", 150 },
		{ "a/b", "b", 200 },
		{ "a/b/", "b", 125 },
		{ "a--------------------b", "ab", 0 },
		{ "a-------------------b", "ab", 1 },
		{ "xaab", "ab", 100 },
		{ "a/xab", "ab", 175 },
		{ "aab/abb", "abb", 200 },
		{ "\xC3\x89t\xC3\xA9/\xD0\x96.h", "\xC3\xA9T\xC3\x89", 150 },
		{ "\xC3\x89t\xC3\xA9/\xD0\x96.h", "\xD0\xB6", 200 },
		{ "x/\xE2\x84\xAA"
		  "elvin",
			"kel", 200 },
	};
	for (const auto& [Path, Query, Expected] : Cases)
	{
		EXPECT_EQ(Score(Path, Query), Expected) << '"' << Path << "\" for \"" << Query << '"';
	}
}

TEST(FuzzyScore, EveryCharacterMatchesWhatTheEngineLowersAlike)
{
	const FString Letters = TEXT("k\u00e9i");
	for (uint32 Unit = 1; Unit <= 0xFFFF; ++Unit)
	{
		const TCHAR Chars[] = { TEXT('/'), static_cast<TCHAR>(Unit), TEXT('!') };
		const FString Path(3, Chars);
		for (int32 Index = 0; Index < Letters.Len(); ++Index)
		{
			const FString Letter = Letters.Mid(Index, 1);
			const bool bMatches = FChar::ToLower(static_cast<TCHAR>(Unit)) == Letters[Index];
			ASSERT_EQ(FFileIndexService::CalculateFuzzyScore(Path, Letter), bMatches ? 200 : 0) << Unit;
		}
	}
}
