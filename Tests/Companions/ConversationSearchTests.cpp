#include "AgentFixture.h"

#include "Host/ConversationSearch.h"
#include "Host/HostFileNames.h"
#include "Host/StoreLocation.h"
#include "Search/SearchIndex.h"
#include "Search/SearchText.h"
#include "Store/ConversationStore.h"
#include "Support/Base/TempFolder.h"

#include <fstream>

using Velmora::EConversationRole;
using Velmora::FConversationHit;
using Velmora::FConversationMessage;
using Velmora::FConversationMetadata;
using Velmora::FConversationStore;
using Velmora::FSearchIndex;

namespace
{
	/** A store and its index in a folder of their own, written and read as by two programs. */
	class ConversationSearch : public testing::Test
	{
	protected:
		static FConversationMessage MakeMessage(const char* Text, EConversationRole Role = EConversationRole::User)
		{
			FConversationMessage Message;
			Message.Content = UTF8_TO_TCHAR(Text);
			Message.Role = Role;
			return Message;
		}

		void Say(const TCHAR* Id, std::initializer_list<FConversationMessage> Messages)
		{
			FConversationMetadata& Conversation = Conversations[Utf8(FString(Id))];
			Conversation.Id = Id;
			const int32 First = Conversation.Messages.Num();
			for (const FConversationMessage& Message : Messages)
			{
				Conversation.Messages.Add(Message);
			}
			ASSERT_TRUE(Store->Append(Conversation, First));
		}

		void KeepFirst(const TCHAR* Id, int32 Count)
		{
			ASSERT_TRUE(Store->TruncateMessages(Id, Count));
			Conversations[Utf8(FString(Id))].Messages.SetNum(Count);
		}

		/** "id/position excerpt" of each hit, with the places in brackets. */
		std::vector<std::string> Find(const char* Query, int32 MaxHits = 50)
		{
			if (const TOutcome<bool> CaughtUp = Index.CatchUp(); !CaughtUp)
			{
				return { CaughtUp.GetWords() };
			}
			const TOutcome<TArray<FConversationHit>> Hits = Index.Find(Velmora::SearchText::ReadQuery(UTF8_TO_TCHAR(Query)), MaxHits);
			if (!Hits)
			{
				return { Hits.GetWords() };
			}
			std::vector<std::string> Found;
			for (const FConversationHit& Hit : *Hits)
			{
				FString Shown = Hit.Excerpt;
				for (int32 Place = Hit.Places.Num() - 1; Place >= 0; --Place)
				{
					Shown.InsertAt(Hit.Places[Place].Begin + Hit.Places[Place].Length, TEXT("]"));
					Shown.InsertAt(Hit.Places[Place].Begin, TEXT("["));
				}
				Found.push_back(Utf8(Hit.ConversationId) + "/" + std::to_string(Hit.Position) + " " + Utf8(Shown));
			}
			return Found;
		}

		using FFound = std::vector<std::string>;

		FTempFolder Folder;
		const std::string StorePath = Folder.AtBytes("Game.db");
		const std::string IndexPath = Folder.AtBytes("Game.search.db");
		TSharedRef<FConversationStore> Store = MakeShared<FConversationStore>(StorePath);
		std::map<std::string, FConversationMetadata> Conversations;
		std::atomic<bool> bStops{ false };
		FSearchIndex Index{ StorePath, IndexPath, bStops };
	};
}

TEST_F(ConversationSearch, FindsByTheBeginningsOfWords)
{
	const FString Long =
		FString(TEXT("front ")) + FString::ChrN(400, TEXT('x')) + TEXT(" the needle lies here ") + FString::ChrN(400, TEXT('y'));
	Say(TEXT("words"),
		{ MakeMessage("Where is TryParseTable called?"),
			MakeMessage("In `HTTPServer.cpp`, twice:\n\n\ton_table_end", EConversationRole::Assistant),
			MakeMessage("{\"hidden\":\"traffic\"}", EConversationRole::Tool),
			MakeMessage("Größe und ÄRGER, 東京都 и Привет \xF0\x9F\x98\x80!"), MakeMessage(TCHAR_TO_UTF8(*Long)) });
	const std::pair<const char*, FFound> Rows[] = {
		{ "tab", { "words/1 In `HTTPServer.cpp`, twice: on_[tab]le_end", "words/0 Where is TryParse[Tab]le called?" } },
		{ "parsetable", { "words/0 Where is Try[ParseTable] called?" } },
		{ "arsetable", {} },
		{ "TRYPARSE cal", { "words/0 Where is [TryParse]Table [cal]led?" } },
		{ "table called twice", {} },
		{ "server", { "words/1 In `HTTP[Server].cpp`, twice: on_table_end" } },
		{ "ttp", {} },
		{ "hidden", {} },
		{ "größe", { "words/3 [Größe] und ÄRGER, 東京都 и Привет \xF0\x9F\x98\x80!" } },
		{ "ärg", { "words/3 Größe und [ÄRG]ER, 東京都 и Привет \xF0\x9F\x98\x80!" } },
		{ "京", { "words/3 Größe und ÄRGER, 東[京]都 и Привет \xF0\x9F\x98\x80!" } },
		{ "привет", { "words/3 Größe und ÄRGER, 東京都 и [Привет] \xF0\x9F\x98\x80!" } },
		{ "", {} },
		{ " \"*() OR -", {} },
		{ "where AND table", {} },
		{ "\xF0\x9F\x98\x80", {} },
	};
	for (const auto& [Query, Found] : Rows)
	{
		EXPECT_EQ(Find(Query), Found) << Query;
	}
	const FFound Cut = Find("needle");
	ASSERT_EQ(Cut.size(), 1u);
	EXPECT_EQ(Cut[0].substr(0, 46), "words/4 \xE2\x80\xA6the [needle] lies here yyyyyyyyyyyy") << Cut[0];
	EXPECT_TRUE(Cut[0].ends_with("\xE2\x80\xA6"));
}

TEST_F(ConversationSearch, FollowsWhatTheStoreBecomes)
{
	Say(TEXT("old"), { MakeMessage("a snail"), MakeMessage("the first snail", EConversationRole::Assistant) });
	Say(TEXT("new"), { MakeMessage("another snail") });
	EXPECT_EQ(Find("snail"), (FFound{ "new/0 another [snail]", "old/1 the first [snail]", "old/0 a [snail]" }));
	EXPECT_EQ(Find("snail", 2).size(), 2u);
	const TOutcome<bool> Again = Index.CatchUp();
	ASSERT_TRUE(Again);
	EXPECT_FALSE(*Again) << "Nothing was stored since.";

	// What is said later is newer, in whichever conversation; what was undone is gone, also when another text takes its place.
	KeepFirst(TEXT("old"), 1);
	EXPECT_EQ(Find("snail"), (FFound{ "new/0 another [snail]", "old/0 a [snail]" }));
	Say(TEXT("old"), { MakeMessage("a later snail") });
	EXPECT_EQ(Find("snail"), (FFound{ "old/1 a later [snail]", "new/0 another [snail]", "old/0 a [snail]" }));
	EXPECT_EQ(Find("first"), FFound());

	ASSERT_TRUE(Store->Delete(TEXT("old")));
	EXPECT_EQ(Find("snail"), (FFound{ "new/0 another [snail]" }));
	ASSERT_TRUE(Store->Clear());
	EXPECT_EQ(Find("snail"), FFound());
}

TEST_F(ConversationSearch, AnIndexThatCannotBeUsedIsMadeAnew)
{
	EXPECT_EQ(Find("snail"), FFound()) << "There is no store.";
	EXPECT_FALSE(std::ifstream(IndexPath).is_open());
	Say(TEXT("one"), { MakeMessage("a snail") });
	ASSERT_EQ(Find("snail").size(), 1u);
	for (const std::string& Content : { std::string("no database"), std::string(8192, '\0'), std::string() })
	{
		std::ofstream(IndexPath, std::ios::binary | std::ios::trunc) << Content;
		std::filesystem::remove(IndexPath + "-wal");
		FSearchIndex Other(StorePath, IndexPath, bStops);
		ASSERT_TRUE(Other.CatchUp()) << Content.size();
		const TOutcome<TArray<FConversationHit>> Hits = Other.Find(Velmora::SearchText::ReadQuery(TEXT("snail")), 50);
		ASSERT_TRUE(Hits) << Hits.GetWords();
		EXPECT_EQ(Hits->Num(), 1);
	}
	// A store that is none is told, and never written to.
	std::ofstream(StorePath, std::ios::binary | std::ios::trunc) << "no database";
	std::filesystem::remove(StorePath + "-wal");
	FSearchIndex Other(StorePath, IndexPath, bStops);
	EXPECT_FALSE(Other.CatchUp());
}

TEST_F(ConversationSearch, AnIndexThatTurnsOutToBeDamagedIsMadeAnew)
{
	Say(TEXT("one"), { MakeMessage("snail") });
	const std::vector<FString> Words = Velmora::SearchText::ReadQuery(TEXT("snail"));
	for (const bool bOnlyWords : { true, false })
	{
		SCOPED_TRACE(bOnlyWords);
		ASSERT_TRUE(FSearchIndex(StorePath, IndexPath, bStops).CatchUp());
		std::ifstream File(IndexPath, std::ios::binary);
		std::string Bytes(std::istreambuf_iterator<char>(File), {});
		// The page of words has its size before its first word; the first page of the file says what it is.
		const size_t Start = bOnlyWords ? Bytes.find("0snail") : 4096 + 3;
		ASSERT_LT(Start, Bytes.size());
		const size_t Length = bOnlyWords ? 2 : Bytes.size() - 4096;
		Bytes.replace(Start - 3, Length, Length, '\x7f');
		std::ofstream(IndexPath, std::ios::binary) << Bytes;
		FSearchIndex Other(StorePath, IndexPath, bStops);
		if (bOnlyWords)
		{
			EXPECT_EQ(Other.Find(Words, 50).GetCode(), EOutcome::Damaged);
		}
		const TOutcome<bool> CaughtUp = Other.CatchUp();
		ASSERT_TRUE(CaughtUp) << CaughtUp.GetWords();
		EXPECT_TRUE(*CaughtUp);
		const TOutcome<TArray<FConversationHit>> Hits = Other.Find(Words, 50);
		ASSERT_TRUE(Hits) << Hits.GetWords();
		EXPECT_EQ(Hits->Num(), 1);
	}
}

TEST_F(ConversationSearch, EndsSoonAndGoesOnLater)
{
	Say(TEXT("one"), { MakeMessage("a snail") });
	bStops = true;
	EXPECT_EQ(Index.CatchUp().GetCode(), EOutcome::Stopped);
	bStops = false;
	EXPECT_EQ(Find("snail").size(), 1u);
}

namespace
{
	/** The search of an agent's project, with the worker. */
	class ConversationSearchWorker : public FAgentTest
	{
	};
}

TEST_F(ConversationSearchWorker, TheLastQuestionIsAnswered)
{
	Ask("find Snail");
	Velmora::FConversationSearch Search;
	std::vector<std::string> Results;
	const auto Note = [&Results](const Velmora::FConversationSearchResult& Result) {
		Results.push_back(
			Utf8(Result.Query) + (Result.bIsComplete ? ":" : "...") + std::to_string(Result.Hits.Num()) + Utf8(Result.Problem));
	};
	Search.Search(TEXT("s"), Note);
	Search.Search(TEXT("sn"), Note);
	Search.Search(TEXT("find"), Note);
	ASSERT_TRUE(PumpUntil([&Results] { return !Results.empty() && Results.back() == "find:1"; })) << testing::PrintToString(Results);
	for (const std::string& Result : Results)
	{
		EXPECT_EQ(Result.substr(0, 4), "find") << "Questions that were asked before are not answered any more.";
	}
	Results.clear();
	Search.Search(TEXT("  "), Note);
	ASSERT_TRUE(PumpUntil([&Results] { return !Results.empty(); }));
	EXPECT_EQ(Results, std::vector<std::string>({ "  :0" }));
}
