#include "FileSearch/FileIndexService.h"

#include "FileSearch/LiteralFuzzyScore.h"
#include "Support/Base/Printers.h"

#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>

using Velmora::UI::FFileIndexService;

namespace
{
	int32 Score(const std::string& Path, const std::string& Query)
	{
		return FFileIndexService::CalculateFuzzyScore(FString(Path.c_str()), FString(Query.c_str()));
	}

	/** Letters with and without case, two that are lowered to ASCII (Kelvin sign, dotted I), halves of surrogate pairs. */
	const std::u16string OddAlphabet =
		u"aAbBkKiIzZ09/.-_ [@{`\x7f\u00e9\u00c9\u0436\u0416\u00df\u1e9e\u212a\u0130\u0131\u4e2d\xd83d\xdc80\xffff";
	const std::u16string PathAlphabet = u"abcABC/._";

	std::u16string MakeText(std::mt19937& Random, const std::u16string& Alphabet, int Longest)
	{
		std::u16string Text(Random() % (Longest + 1), u'a');
		for (char16_t& Unit : Text)
		{
			Unit = Alphabet[Random() % Alphabet.size()];
		}
		return Text;
	}

	/** A text of its own, a piece of the path, or some of its characters in order. */
	std::u16string MakeQuery(std::mt19937& Random, const std::u16string& Alphabet, const std::u16string& Path)
	{
		const unsigned Kind = Random() % 3;
		if (Kind == 0 || Path.empty())
		{
			return MakeText(Random, Alphabet, 5);
		}
		std::u16string Query;
		if (Kind == 1)
		{
			Query = Path.substr(Random() % Path.size(), 1 + Random() % 6);
		}
		else
		{
			for (size_t Index = Random() % Path.size(); Index < Path.size() && Query.size() < 8; Index += 1 + Random() % 4)
			{
				Query.push_back(Path[Index]);
			}
		}
		for (char16_t& Unit : Query)
		{
			Unit = Random() % 2 ? FChar::ToUpper(Unit) : FChar::ToLower(Unit);
		}
		return Query;
	}
}

TEST(FuzzyScore, ByTable)
{
	struct FCase
	{
		const char* Path;
		const char* Query;
		int32 Score;
	};
	const FCase Cases[] = {
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
	for (const FCase& Case : Cases)
	{
		EXPECT_EQ(Score(Case.Path, Case.Query), Case.Score) << '"' << Case.Path << "\" for \"" << Case.Query << '"';
	}
}

TEST(FuzzyScore, AgreesWithTheRulesWalkedOneByOne)
{
	std::mt19937 Random(20260131);
	std::map<int32, int32> Seen;
	for (int32 Round = 0; Round < 200000; ++Round)
	{
		const std::u16string& Alphabet = Round % 2 ? OddAlphabet : PathAlphabet;
		const std::u16string Path = MakeText(Random, Alphabet, Round % 50 < 2 ? 600 : 40);
		const std::u16string Query = MakeQuery(Random, Alphabet, Path);
		const FString PathText(static_cast<int32>(Path.size()), Path.data());
		const FString QueryText(static_cast<int32>(Query.size()), Query.data());
		const int32 Expected = ScoreLiterally(PathText, QueryText);
		++Seen[Expected];
		ASSERT_EQ(FFileIndexService::CalculateFuzzyScore(PathText, QueryText), Expected)
			<< "path " << testing::PrintToString(Path) << ", query " << testing::PrintToString(Query);
	}
	for (const int32 Contiguous : { 0, 100, 125, 150, 175, 200 })
	{
		EXPECT_GT(Seen[Contiguous], 1000) << Contiguous;
	}
	EXPECT_GT(Seen.size(), 50u) << "scattered matches have many scores";
}

TEST(FuzzyScore, EveryCharacterMatchesWhatTheEngineLowersAlike)
{
	const FString Letters = TEXT("k\u00e9i");
	for (uint32 Unit = 1; Unit <= 0xFFFF; ++Unit)
	{
		const TCHAR Chars[] = { TEXT('/'), static_cast<TCHAR>(Unit), TEXT('!') };
		const FString Path(3, Chars);
		const FString Own(1, Chars + 1);
		ASSERT_EQ(FFileIndexService::CalculateFuzzyScore(Path, Own), ScoreLiterally(Path, Own)) << Unit;
		for (int32 Index = 0; Index < Letters.Len(); ++Index)
		{
			const FString Letter = Letters.Mid(Index, 1);
			ASSERT_EQ(FFileIndexService::CalculateFuzzyScore(Path, Letter), ScoreLiterally(Path, Letter)) << Unit;
		}
	}
}
