#include "CodeIntelModuleTest.h"

/** Work on the code index that is under way when the module ends. */
class FModuleShutdownTest : public FCodeIntelModuleTest
{
protected:
	void Reload() { ASSERT_NE(FModuleManager::Get().LoadModule("VelmoraUI"), nullptr); }

	/** Ends the module, lets the work come to its end, and says what is shown then. */
	FTextList EndAndWait()
	{
		FModuleManager::Get().UnloadModule("VelmoraUI");
		FHostNotifications::Clear();
		Go();
		Settle();
		return TakeToasts();
	}
};

TEST_F(FModuleShutdownTest, NothingIsReportedAfterIt)
{
	Start();
	Manager().RebuildIndex(true);
	Settle();
	ASSERT_TRUE(Manager().IsIndexReady() && Manager().IsReindexerRunning());
	FHostNotifications::Clear();
	void (*const Handlers[])() = { FActions::HandleCompactIndex, FActions::HandleReconcileIndex, FActions::HandleRebuildIndex };
	for (int32 Index = 0; Index < 3; ++Index)
	{
		SCOPED_TRACE(Index);
		Handlers[Index]();
		EXPECT_EQ(EndAndWait(), FTextList());
		Reload();
		FHostNotifications::Clear();
		// In its next life it reports again.
		Handlers[Index]();
		Settle();
		EXPECT_FALSE(TakeToasts().empty());
	}
}

TEST_F(FModuleShutdownTest, ItWaitsForWhatIsAboutToEnd)
{
	HoldBuilds();
	Start();
	FActions::HandleRebuildIndex();
	ASSERT_TRUE(WaitUntil([] { return Manager().IsBuilding(); }));
	EXPECT_EQ(TakeToasts(), FTextList{ "[1] Building code intelligence index..." });
	std::thread Later(
		[this]
		{
			std::this_thread::sleep_for(std::chrono::milliseconds(100));
			Go();
		});
	FModuleManager::Get().UnloadModule("VelmoraUI");
	EXPECT_FALSE(Manager().IsBuilding()) << "a thread is on its way back into a module that has ended";
	Later.join();
	Settle();
	EXPECT_EQ(TakeToasts(), FTextList());
	Reload();
}
