#include "Commands/CodeIntelNotifications.h"
#include "Framework/Docking/TabManager.h"
#include "Host/HostNotifications.h"
#include "VelmoraWidgetTest.h"
#include "Widgets/Docking/SDockTab.h"

class FCodeIntelNotificationTest : public FVelmoraWidgetTest
{
protected:
	void SetUp() override
	{
		FVelmoraWidgetTest::SetUp();
		Show(SNullWidget::NullWidget);
	}

	void TearDown() override
	{
		FCodeIntelNotifications::DismissAll();
		FHostNotifications::Clear();
		FVelmoraWidgetTest::TearDown();
	}

	static std::string LastKey() { return DumpKey(FHostNotifications::GetVisible().Last().Text); }
};

TEST_F(FCodeIntelNotificationTest, EachHasItsWords)
{
	const struct
	{
		TFunction<void()> ShowToast;
		const char* Toast;
		double Seconds; // After which it is gone; zero for one that stays.
	} Cases[] = {
		{ [] { FCodeIntelNotifications::ShowBuildStarted(); }, "[1] Building code intelligence index...", 0.0 },
		{ [] { FCodeIntelNotifications::ShowBuildComplete(12345, 2.25); }, "[2] Code index ready! (12,345 symbols, 2.2s)", 5.6 },
		{ [] { FCodeIntelNotifications::ShowBuildComplete(0, 0.0); }, "[2] Code index ready! (0 symbols, 0.0s)", 5.6 },
		{ [] { FCodeIntelNotifications::ShowBuildFailed(TEXT("no disk")); }, "[3] Index build failed: no disk", 0.0 },
		{ [] { FCodeIntelNotifications::ShowBuildFailed(FString()); }, "[3] Index build failed: Unknown error", 0.0 },
		{ [] { FCodeIntelNotifications::ShowCompactionStarted(); }, "[1] Compacting index...", 0.0 },
		{ [] { FCodeIntelNotifications::ShowCompactionComplete(1.26); }, "[2] Index compacted (1.3 MB saved)", 4.6 },
		{ [] { FCodeIntelNotifications::ShowReconcileStarted(); }, "[1] Reconciling file changes...", 0.0 },
		{ [] { FCodeIntelNotifications::ShowReconcileComplete(3, 1500); }, "[2] Reconciliation complete: 3 deleted, 1,500 new files", 4.6 },
		{ [] { FCodeIntelNotifications::ShowReindexActive(50); }, "[1] Reindexing 50 changed files...", 3.6 },
		{ [] { FCodeIntelNotifications::ShowIndexStale(); }, "[0] Code index may be out of date. Consider rebuilding.", 0.0 },
	};
	for (const auto& Case : Cases)
	{
		Case.ShowToast();
		PumpFrame();
		EXPECT_EQ(Toasts(), FTextList{ Case.Toast });
		if (Case.Seconds > 0.0)
		{
			PumpSeconds(Case.Seconds - 0.7);
			EXPECT_EQ(Toasts().size(), 1u) << Case.Toast;
			PumpSeconds(0.8);
			EXPECT_EQ(Toasts(), FTextList()) << Case.Toast;
		}
		else
		{
			PumpSeconds(20.0);
			EXPECT_EQ(Toasts(), FTextList{ Case.Toast });
		}
		FCodeIntelNotifications::DismissAll();
		FHostNotifications::Clear();
		PumpFrame();
	}
}

TEST_F(FCodeIntelNotificationTest, TheEndTurnsTheToastOfTheBeginning)
{
	FCodeIntelNotifications::ShowBuildStarted();
	FCodeIntelNotifications::ShowBuildComplete(1, 1.0);
	PumpFrame();
	EXPECT_EQ(Toasts(), (FTextList{ "[2] Building code intelligence index...", "[2] Code index ready! (1 symbols, 1.0s)" }));
	PumpSeconds(1.0);
	EXPECT_EQ(Toasts(), (FTextList{ "[2] Code index ready! (1 symbols, 1.0s)" }));
	PumpSeconds(6.0);

	FCodeIntelNotifications::ShowBuildStarted();
	FCodeIntelNotifications::ShowBuildFailed(TEXT("x"));
	PumpFrame();
	EXPECT_EQ(Toasts(), (FTextList{ "[3] Building code intelligence index...", "[3] Index build failed: x" }));
	FHostNotifications::Clear();

	FCodeIntelNotifications::ShowCompactionStarted();
	FCodeIntelNotifications::ShowReconcileStarted();
	FCodeIntelNotifications::ShowCompactionComplete(0.0);
	FCodeIntelNotifications::ShowReconcileComplete(0, 0);
	PumpSeconds(1.0);
	EXPECT_EQ(Toasts(), (FTextList{ "[2] Index compacted (0.0 MB saved)", "[2] Reconciliation complete: 0 deleted, 0 new files" }));
}

TEST_F(FCodeIntelNotificationTest, OneToastForOneThing)
{
	FCodeIntelNotifications::ShowIndexStale();
	FCodeIntelNotifications::ShowIndexStale();
	FCodeIntelNotifications::ShowReindexActive(5);
	FCodeIntelNotifications::ShowReindexActive(7);
	PumpFrame();
	EXPECT_EQ(Toasts(), (FTextList{ "[0] Code index may be out of date. Consider rebuilding.", "[1] Reindexing 7 changed files..." }));
	FCodeIntelNotifications::ShowBuildStarted();
	FCodeIntelNotifications::ShowBuildStarted();
	PumpSeconds(4.0); // The toast of the reindexing has three seconds of its own before it fades.
	EXPECT_EQ(Toasts(), (FTextList{ "[1] Building code intelligence index..." }));
	EXPECT_EQ(LastKey(), "CodeIntel,BuildStarted: Building code intelligence index...");
}

TEST_F(FCodeIntelNotificationTest, ButtonsLeadToTheTabs)
{
	FTextList Opened;
	for (const char* Name : { "OutputLog", "VelmoraTab" })
	{
		FGlobalTabmanager::Get()->RegisterNomadTabSpawner(FName(Name),
			FOnSpawnTab::CreateLambda(
				[&Opened, Name](const FSpawnTabArgs&)
				{
					Opened.push_back(Name);
					return SNew(SDockTab);
				}));
	}
	FCodeIntelNotifications::ShowBuildFailed(TEXT("x"));
	PumpFrame();
	Click(FindByText("View Log"));
	FCodeIntelNotifications::ShowIndexStale();
	PumpFrame();
	Click(FindByText("Rebuild Now"));
	EXPECT_EQ(Opened, (FTextList{ "OutputLog", "VelmoraTab" }));
	FGlobalTabmanager::Get()->CloseAllTabs();
	for (const char* Name : { "OutputLog", "VelmoraTab" })
	{
		FGlobalTabmanager::Get()->UnregisterNomadTabSpawner(FName(Name));
	}
}
