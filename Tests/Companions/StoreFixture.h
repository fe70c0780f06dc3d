#pragma once

#include "Host/HostFileNames.h"
#include "Host/HostTasks.h"
#include "Host/Sqlite.h"
#include "Store/ConversationStore.h"
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

	TSharedRef<FStore> OpenStore() const { return MakeShared<FStore>(PathBytes()); }
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
		const FOutcome Stored = Store.Append(Metadata, 0);
		ASSERT_TRUE(Stored) << Stored.GetWords();
	}

	/** Its messages in one line, "(missing)" or the problem. */
	static std::string Read(FStore& Store, const FString& Id)
	{
		const TOutcome<Velmora::FConversationMetadata> Loaded = Store.Load(Id);
		if (!Loaded)
		{
			return Loaded.Is(EOutcome::Missing) ? "(missing)" : Loaded.GetWords();
		}
		std::string Line;
		for (const Velmora::FConversationMessage& Stored : Loaded->Messages)
		{
			Line += (Line.empty() ? "" : "|") + Utf8(Stored.Content);
		}
		return Line;
	}

	static std::string ReadIds(FStore& Store)
	{
		const TOutcome<TArray<Velmora::FConversationMetadata>> Summaries = Store.GetSummaries();
		if (!Summaries)
		{
			return Summaries.GetWords();
		}
		std::string Line;
		for (const Velmora::FConversationMetadata& Summary : *Summaries)
		{
			Line += Utf8(Summary.Id) + ' ';
		}
		return Line;
	}

	static bool Holds(const std::string& Whole, const std::string& Part) { return Whole.find(Part) != std::string::npos; }

	const FTempFolder Folder;
};
