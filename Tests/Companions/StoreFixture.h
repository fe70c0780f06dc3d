#pragma once

#include "Host/HostTasks.h"
#include "Store/ConversationStore.h"
#include "Store/SqliteConnection.h"
#include "Store/StoreNotices.h"
#include "Support/Base/Printers.h"
#include "Support/Base/TempFolder.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

/** A store in a folder of its own. */
class FStoreTest : public ::testing::Test
{
protected:
	using FStore = Velmora::FConversationStore;

	void SetUp() override { Velmora::StoreNotices::Take(); }

	void TearDown() override
	{
		EXPECT_TRUE(FHostTasks::WaitForBackground(30.0));
		FHostTasks::RunGameThreadTasks();
	}

	TSharedRef<FStore> OpenStore() const { return MakeShared<FStore>(Folder.At(TEXT("Velmora/Game.db"))); }
	std::string PathBytes() const { return Folder.AtBytes("Velmora/Game.db"); }

	static Velmora::FConversationMessage Message(const FString& Text, Velmora::EConversationRole Role = Velmora::EConversationRole::User)
	{
		Velmora::FConversationMessage Result;
		Result.Content = Text;
		Result.Role = Role;
		return Result;
	}

	static Velmora::FConversationMetadata Conversation(const FString& Id, const std::vector<FString>& Texts)
	{
		Velmora::FConversationMetadata Result;
		Result.Id = Id;
		for (const FString& Text : Texts)
		{
			Result.Messages.Add(
				Message(Text, Result.Messages.Num() % 2 == 0 ? Velmora::EConversationRole::User : Velmora::EConversationRole::Assistant));
		}
		return Result;
	}

	static void Put(FStore& Store, Velmora::FConversationMetadata Metadata)
	{
		FString Problem;
		ASSERT_EQ(Store.Append(Metadata, 0, Problem), Velmora::EStoreResult::Done) << Utf8(Problem);
	}

	/** Its messages in one line, "(missing)" or the problem. */
	static std::string Read(FStore& Store, const FString& Id)
	{
		Velmora::FConversationMetadata Metadata;
		FString Problem;
		const Velmora::EStoreResult Result = Store.Load(Id, Metadata, Problem);
		if (Result != Velmora::EStoreResult::Done)
		{
			return Result == Velmora::EStoreResult::Missing ? "(missing)" : Utf8(Problem);
		}
		std::string Line;
		for (const Velmora::FConversationMessage& Stored : Metadata.Messages)
		{
			Line += (Line.empty() ? "" : "|") + Utf8(Stored.Content);
		}
		return Line;
	}

	static std::string ReadIds(FStore& Store)
	{
		TArray<Velmora::FConversationMetadata> Summaries;
		FString Problem;
		EXPECT_EQ(Store.GetSummaries(Summaries, Problem), Velmora::EStoreResult::Done) << Utf8(Problem);
		std::string Line;
		for (const Velmora::FConversationMetadata& Summary : Summaries)
		{
			Line += Utf8(Summary.Id) + ' ';
		}
		return Line;
	}

	static bool Holds(const std::string& Whole, const std::string& Part) { return Whole.find(Part) != std::string::npos; }

	const FTempFolder Folder;
};
