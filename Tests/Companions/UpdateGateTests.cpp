#include "Containers/Ticker.h"
#include "Host/HostClock.h"
#include "Host/HostTasks.h"
#include "Host/UpdateGateControl.h"
#include "Support/Base/Printers.h"
#include "Support/Base/TempFolder.h"
#include "UpdateGate.h"
#include "VelmoraAutoDownloadFrameworkModule.h"

#include <string>
#include <sys/stat.h>
#include <vector>

using Velmora::EUpdateGateState;
using Velmora::FUpdateGate;
using Velmora::FUpdateGateControl;

namespace
{
	class UpdateGateTests : public ::testing::Test
	{
	protected:
		void SetUp() override
		{
			FHostClock::UseSimulatedTime(FDateTime(2026, 1, 31));
			FUpdateGateControl::SetProblemHandler([this](const FString& Sentence) { Told.push_back(Utf8(Sentence)); });
			FUpdateGateControl::SetState(EUpdateGateState::Ready, FString(), FString());
		}
		void TearDown() override
		{
			FUpdateGateControl::StopFollowing();
			FUpdateGateControl::SetProblemHandler(nullptr);
			FUpdateGateControl::SetState(EUpdateGateState::Ready, FString(), FString());
			FHostTasks::WaitForBackground(60.0);
			FHostClock::UseRealTime();
		}
		void Follow() { FUpdateGateControl::Follow(Folder.At(TEXT("Release.json")), Folder.At(TEXT("Updates"))); }
		/** As the program's frames do; background work takes no time. */
		static void Pass(double Seconds)
		{
			FHostTasks::WaitForBackground(60.0);
			FHostClock::Advance(Seconds);
			FTSTicker::GetCoreTicker().Tick(static_cast<float>(Seconds));
		}
		/** "state|message|version". */
		static std::string Gate()
		{
			static const char* const Words[] = { "Checking", "Ready", "UpdateAvailable", "Downloading", "RestartRequired" };
			const FUpdateGate& Gate = FUpdateGate::Get();
			return std::string(Words[static_cast<int>(Gate.GetState())]) + "|" + Utf8(Gate.GetMessage()) + "|" + Utf8(Gate.GetVersion());
		}
		FTempFolder Folder;
		std::vector<std::string> Told;
	};
}

TEST_F(UpdateGateTests, TellsChangesAndNothingElse)
{
	FUpdateGate& Gate = FUpdateGate::Get();
	FVelmoraAutoDownloadFrameworkModule::TriggerManualDownload();
	EXPECT_EQ(Gate.GetState(), EUpdateGateState::Ready);

	std::vector<int> States;
	const FDelegateHandle Handle =
		Gate.OnStateChanged().AddLambda([&States](EUpdateGateState State) { States.push_back(static_cast<int>(State)); });
	FUpdateGateControl::SetState(EUpdateGateState::UpdateAvailable, TEXT(""), TEXT("1.2"));
	FUpdateGateControl::SetState(EUpdateGateState::UpdateAvailable, TEXT(""), TEXT("1.2"));
	EXPECT_EQ(Utf8(Gate.GetVersion()), "1.2");
	FVelmoraAutoDownloadFrameworkModule::TriggerManualDownload();
	EXPECT_EQ(Gate.GetState(), EUpdateGateState::UpdateAvailable);
	EXPECT_NE(Utf8(Gate.GetMessage()).find("cannot be downloaded"), std::string::npos);
	FUpdateGateControl::SetState(EUpdateGateState::Downloading, TEXT("40%"), TEXT("1.2"));
	Gate.OnStateChanged().Remove(Handle);
	FUpdateGateControl::SetState(EUpdateGateState::Ready, TEXT(""), TEXT(""));
	EXPECT_EQ(States, std::vector<int>({ 2, 2, 3 }));
}

TEST_F(UpdateGateTests, FollowsAReleaseFile)
{
	struct FCase
	{
		/** "-" takes the file away. */
		const char* Text;
		const char* Expected;
		const char* Complaint;
	};
	const FCase Cases[] = {
		{ R"({ "state": "UpdateAvailable", "version": "2.1" })", "UpdateAvailable||2.1", "" },
		{ R"({ "state": "Broken" })", "UpdateAvailable||2.1",
			"names no known state. The states are: Checking, Ready, UpdateAvailable, Downloading, RestartRequired." },
		{ "[1", "UpdateAvailable||2.1", "cannot be read as a JSON object." },
		{ R"({ "state": "Checking" })", "Checking||", "" },
		{ R"({ "state": "Downloading", "version": "2.1", "progress": 40.9 })", "Downloading|Downloading update... 40%|2.1", "" },
		{ R"({ "state": "Downloading", "message": "Fetching", "progress": 1e300 })", "Downloading|Fetching 100%|", "" },
		{ R"({ "state": "Downloading", "progress": "much" })", "Downloading||", "" },
		{ R"({ "state": "RestartRequired", "version": "2.1", "message": "Done" })", "RestartRequired|Done|2.1", "" },
		{ "-", "Ready||", "" },
		{ R"({ "state": "Ready", "version": 3 })", "Ready||3", "" },
	};
	Follow();
	EXPECT_EQ(Gate(), "Ready||");
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE(Case.Text);
		Told.clear();
		if (Case.Text[0] == '-')
		{
			std::filesystem::remove(Folder.AtBytes("Release.json"));
		}
		else
		{
			Folder.Write("Release.json", Case.Text);
		}
		Pass(1.1);
		EXPECT_TRUE(Told.empty()) << "it may still be written";
		for (int Count = 0; Count < 4; ++Count)
		{
			Pass(1.1);
		}
		EXPECT_EQ(Gate(), Case.Expected);
		EXPECT_EQ(Told.size(), Case.Complaint[0] ? 1u : 0u) << "told once";
		EXPECT_TRUE(!Case.Complaint[0] || Told.at(0).find(Case.Complaint) != std::string::npos) << Told.at(0);
	}
}

TEST_F(UpdateGateTests, AReleaseFileThatIsNoneIsNotWaitedFor)
{
	mkfifo(Folder.AtBytes("Release.json").c_str(), 0600);
	Follow();
	EXPECT_EQ(Gate(), "Ready||");
	EXPECT_EQ(Told.size(), 1u);
}

TEST_F(UpdateGateTests, AnOfferIsDownloadedAndInstalledByTheRestart)
{
	Folder.Write("velmora-2.1.zip", std::string(1000, 'p'));
	Folder.Write("Release.json", R"({ "state": "UpdateAvailable", "version": "2.1", "package": "velmora-2.1.zip", "downloadSeconds": 2 })");
	Follow();
	FVelmoraAutoDownloadFrameworkModule::TriggerManualDownload();
	EXPECT_EQ(Gate(), "Downloading|Downloading update... 0%|2.1");
	Pass(0.5);
	EXPECT_EQ(Gate(), "Downloading|Downloading update... 25%|2.1");
	FVelmoraAutoDownloadFrameworkModule::TriggerManualDownload();
	Pass(1.0);
	EXPECT_EQ(Gate(), "Downloading|Downloading update... 75%|2.1");
	Pass(0.5);
	EXPECT_EQ(Gate(), "RestartRequired||2.1");
	EXPECT_EQ(Folder.Read("Updates/velmora-2.1.zip"), std::string(1000, 'p'));
	// The file still offers what waits for the restart.
	Folder.Write("Release.json", R"({ "state": "UpdateAvailable",  "version": "2.1", "package": "velmora-2.1.zip" })");
	Pass(1.1);
	EXPECT_EQ(Gate(), "RestartRequired||2.1");
	Follow();
	EXPECT_EQ(Gate(), "Ready||") << "another run";
	Folder.Write("Release.json", R"({ "state": "UpdateAvailable", "version": "2.2", "package": "velmora-2.2.zip" })");
	Pass(1.1);
	EXPECT_EQ(Gate(), "UpdateAvailable||2.2");
	EXPECT_TRUE(Told.empty());
}

TEST_F(UpdateGateTests, AFailedDownloadSaysWhyAndTheOfferStays)
{
	Folder.Write("Release.json", R"({ "state": "UpdateAvailable", "version": "2.1", "package": "gone.zip", "downloadSeconds": 60 })");
	Follow();
	FVelmoraAutoDownloadFrameworkModule::TriggerManualDownload();
	Pass(0.1);
	const std::string Sentence = "The update could not be downloaded: " + Folder.AtBytes("gone.zip") + ": no such file or folder.";
	EXPECT_EQ(Gate(), "UpdateAvailable|" + Sentence + "|2.1");
	EXPECT_EQ(Told, std::vector<std::string>{ Sentence });
	// The fault is gone.
	Folder.Write("gone.zip", "p");
	FVelmoraAutoDownloadFrameworkModule::TriggerManualDownload();
	Pass(61.0);
	EXPECT_EQ(Gate(), "RestartRequired||2.1");

	Folder.Write("Release.json", R"({ "state": "UpdateAvailable", "version": "3" })");
	Pass(1.1);
	FVelmoraAutoDownloadFrameworkModule::TriggerManualDownload();
	EXPECT_NE(Gate().find("names no package"), std::string::npos);
	EXPECT_EQ(Told.size(), 2u);
}

TEST_F(UpdateGateTests, AScriptSetsEveryState)
{
	FUpdateGateControl::SetState(EUpdateGateState::UpdateAvailable, TEXT("m"), TEXT("9"));
	EXPECT_TRUE(FUpdateGateControl::SetStateByWord(TEXT("Downloading"), 40));
	EXPECT_EQ(Gate(), "Downloading|Downloading update... 40%|9");
	EXPECT_TRUE(FUpdateGateControl::SetStateByWord(TEXT("Checking"), TOptional<int32>()));
	EXPECT_EQ(Gate(), "Checking||9");
	EXPECT_FALSE(FUpdateGateControl::SetStateByWord(TEXT("Nothing"), TOptional<int32>()));
}
