// Operations without a caller in the module. They are private, so this file reaches past access control: nothing that a
// user sees depends on them, and they must do what they say on the day that something calls them.

#include "CoreMinimal.h"
#include "FileSearch/FileIndexService.h"
#include "Support/TestAgent.h"
#include "Tools/ToolStyleResolver.h"
#include "ViewModels/ChatViewModel.h"

#include <gtest/gtest.h>

using namespace Velmora::UI;

TEST(UnwiredFileIndex, AFinishedScanReplacesTheStoreUnlessItFailed)
{
	FFileIndexService& Service = FFileIndexService::Get();
	const auto MakeResult = [](const TCHAR* Path)
	{
		FFileIndexEntry Entry;
		Entry.FilePath = Path;
		return TOptional<TArray<FFileIndexEntry>>(TArray<FFileIndexEntry>{ Entry });
	};
	Service.bIsReady = false;
	Service.bIsIndexing = true;
	Service.OnIndexingComplete(MakeResult(TEXT("a")), 1.0, FString());
	EXPECT_TRUE(Service.bIsReady);
	EXPECT_FALSE(Service.bIsIndexing);
	ASSERT_EQ(Service.Entries.Num(), 1);

	Service.bIsReady = false;
	Service.bIsIndexing = true;
	Service.OnIndexingComplete(MakeResult(TEXT("b")), 1.0, TEXT("the disk is gone"));
	EXPECT_FALSE(Service.bIsIndexing);
	Service.bIsIndexing = true;
	Service.OnIndexingComplete(TOptional<TArray<FFileIndexEntry>>(), 1.0, FString());
	EXPECT_FALSE(Service.bIsIndexing);
	EXPECT_FALSE(Service.bIsReady);
	ASSERT_EQ(Service.Entries.Num(), 1);
	EXPECT_EQ(Utf8(Service.Entries[0].FilePath), "a");
	Service.Shutdown();
	EXPECT_EQ(Service.Entries.Num(), 0);
}

TEST(UnwiredToolText, AnUnknownSubOperationKeepsItsLetterCase)
{
	EXPECT_EQ(Utf8(Velmora::FToolStyleResolver::GetActionVerb(TEXT("read"), TEXT("dataFLOW"))), "Analyzing DataFLOW");
}

TEST(UnwiredViewModel, LookupsFindTheLatest)
{
	const TSharedPtr<FTestAgent> Agent = MakeShared<FTestAgent>();
	Agent->HoldConversation(TEXT("c1"));
	FChatViewModel ViewModel;
	ASSERT_TRUE(ViewModel.Initialize(Agent));
	EXPECT_FALSE(ViewModel.FindLastUserMessage().IsValid());
	ViewModel.SendMessage(TEXT("a"));
	ViewModel.SendMessage(TEXT("b"));
	EXPECT_EQ(Utf8(ViewModel.FindLastUserMessage()->Content), "b");
	EXPECT_FALSE(ViewModel.FindRunningToolMessage(TEXT("read_file")).IsValid());
	const TSharedPtr<FChatMessage> Nested = FChatMessage::CreateToolMessage(TEXT("Read_File"), FString(), EToolStatus::Running);
	ViewModel.GetMessages()[0]->ToolExecutions.Add(Nested);
	EXPECT_EQ(ViewModel.FindRunningToolMessage(TEXT("read_file")), Nested);
	const TSharedPtr<FChatMessage> Waiting = FChatMessage::CreateToolMessage(TEXT("read_file"), FString(), EToolStatus::Running);
	ViewModel.AddToBatch(Waiting);
	EXPECT_EQ(ViewModel.FindRunningToolMessage(TEXT("read_file")), Waiting);
}
