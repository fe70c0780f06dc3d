#include "Desktop/ProgramDriver.h"
#include "DraftKeeper.h"
#include "Host/HostLog.h"
#include "Host/HostNotifications.h"
#include "Host/HostServices.h"
#include "ProblemToasts.h"
#include "Support/Base/TempFolder.h"
#include "Support/UiDriver.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"
#include "Widgets/Layout/SBox.h"

#include <chrono>
#include <cstdlib>
#include <sys/stat.h>

/** Keeps the text of a box that stands in for the prompt's. */
class Draft : public FWidgetTest
{
protected:
	void SetUp() override
	{
		FWidgetTest::SetUp();
		OpenBox();
	}
	void TearDown() override
	{
		Box.Reset();
		FWidgetTest::TearDown();
	}
	void OpenBox()
	{
		// clang-format off
		Show(
			SAssignNew(Box, SMultiLineEditableTextBox)
			.Tag(FName(TEXT("InputTextBox")))
			.OnTextChanged_Lambda([this](const FText& Text) { Changes.push_back(Utf8(Text)); }));
		// clang-format on
	}
	void Set(const FString& Text)
	{
		Box->SetText(FText::FromString(Text));
		PumpSeconds(0.3);
	}
	std::string Shown() const { return Utf8(Box->GetText()); }
	FString Path() const { return Folder.At(TEXT("Velmora/p.draft")); }
	bool IsKept() const { return Folder.Read("Velmora/p.draft") != "<missing>"; }

	FTempFolder Folder;
	TSharedPtr<SMultiLineEditableTextBox> Box;
	std::vector<std::string> Changes;
};

TEST_F(Draft, ComesBackAtTheNextStart)
{
	const TCHAR Odd[] = { TEXT('a'), TEXT('\n'), 0xD800, TEXT('b'), 0xD83D, 0xDE00, 0xFEFF, 0 };
	for (const FString& Text : { FString(TEXT("two\nlines")), FString(Odd), FString(TEXT("\uFEFFmark")), FString(TEXT(" ")) })
	{
		{
			FDraftKeeper Keeper(Path());
			Set(Text);
			// As if the program had been killed here: nothing below is written by the keeper's end.
			Keeper.Finish();
			ASSERT_TRUE(IsKept());
			struct stat Info;
			ASSERT_EQ(stat(Folder.AtBytes("Velmora/p.draft").c_str(), &Info), 0);
			EXPECT_EQ(Info.st_mode & 0777, 0600u);
			std::filesystem::copy_file(
				Folder.AtBytes("Velmora/p.draft"), Folder.AtBytes("kept"), std::filesystem::copy_options::overwrite_existing);
		}
		std::filesystem::rename(Folder.AtBytes("kept"), Folder.AtBytes("Velmora/p.draft"));
		OpenBox();
		Changes.clear();
		FDraftKeeper Keeper(Path());
		EXPECT_TRUE(Box->GetText().ToString().Equals(Text)) << Shown();
		EXPECT_EQ(Changes, std::vector<std::string>{ Shown() }) << "the window has to hear of it";
		Set(TEXT(""));
		Keeper.Finish();
		EXPECT_FALSE(IsKept()) << "what was sent is no draft";
	}
}

TEST_F(Draft, SurvivesTheClosingOfItsTab)
{
	FDraftKeeper Keeper(Path());
	Set(TEXT("unsent"));
	Box.Reset();
	Show(SNew(SBox));
	PumpSeconds(1.0);
	Keeper.Finish();
	EXPECT_TRUE(IsKept());
	OpenBox();
	PumpSeconds(0.3);
	EXPECT_EQ(Shown(), "unsent");
}

TEST_F(Draft, LeavesAloneWhatStandsInTheBoxAndWhatIsNoDraft)
{
	Set(TEXT("mine"));
	Folder.Write("Velmora/p.draft", "stored");
	{
		FDraftKeeper Keeper(Path());
		EXPECT_EQ(Shown(), "mine");
	}
	for (const bool bPipe : { false, true })
	{
		std::filesystem::remove_all(Folder.AtBytes("Velmora/p.draft"));
		bPipe ? static_cast<void>(mkfifo(Folder.AtBytes("Velmora/p.draft").c_str(), 0600))
			  : static_cast<void>(std::filesystem::create_directory(Folder.AtBytes("Velmora/p.draft")));
		OpenBox();
		FHostLog::SetStderrVerbosity(ELogVerbosity::NoLogging);
		FDraftKeeper Keeper(Path());
		FHostLog::SetStderrVerbosity(ELogVerbosity::Warning);
		EXPECT_EQ(Shown(), "");
	}
}

TEST_F(Draft, AFaultIsToldOnceAndWhatWasTypedIsKeptWhenItIsGone)
{
	FHostNotifications::Clear();
	FHostLog::SetStderrVerbosity(ELogVerbosity::NoLogging);
	int32 Told = 0;
	FHostServices::SetSaveFailureHook([&Told](const FString&, const FString&) { ++Told; });
	Folder.Write("Velmora/p.draft/in the way", "");
	FDraftKeeper Keeper(Path());
	for (const TCHAR* Text : { TEXT("a"), TEXT("ab"), TEXT("abc") })
	{
		Set(Text);
		Keeper.Finish();
	}
	EXPECT_EQ(Told, 1);
	std::filesystem::remove_all(Folder.AtBytes("Velmora"));
	Set(TEXT("abcd"));
	Keeper.Finish();
	EXPECT_TRUE(IsKept());
	EXPECT_EQ(Told, 1);
	FHostServices::SetSaveFailureHook(nullptr);
	FHostLog::SetStderrVerbosity(ELogVerbosity::Warning);
}

TEST_F(Draft, OfAnotherProgramOnTheProjectIsLeftAlone)
{
	{
		const FDraftFile First(Path());
		Folder.Write("Velmora/p.draft", "of the first");
		FDraftKeeper Second(Path());
		EXPECT_EQ(Shown(), "");
		Set(TEXT("of the second"));
		Second.Finish();
		EXPECT_EQ(Folder.Read("Velmora/p.draft"), "of the first");
		std::filesystem::copy_file(Folder.AtBytes("Velmora/p.2.draft"), Folder.AtBytes("kept"));
	}
	// Both have come to an end; what the second one left comes back when nothing else does.
	std::filesystem::rename(Folder.AtBytes("kept"), Folder.AtBytes("Velmora/p.2.draft"));
	std::filesystem::remove(Folder.AtBytes("Velmora/p.draft"));
	OpenBox();
	FDraftKeeper Next(Path());
	EXPECT_EQ(Shown(), "of the second");
	EXPECT_EQ(Folder.Read("Velmora/p.2.draft"), "<missing>");
}

TEST_F(Draft, KeepsALongText)
{
	FDraftKeeper Keeper(Path());
	Set(FString::ChrN(10 * 1024 * 1024, TEXT('x')));
	PumpSeconds(1.0);
	Keeper.Finish();
	EXPECT_EQ(std::filesystem::file_size(Folder.AtBytes("Velmora/p.draft")), 2u * 10 * 1024 * 1024 + 2);
}

TEST(DraftRun, ComesBackAfterTheProgramWasKilled)
{
	const FRandomProject Project;
	const std::string Data = Project.Path("data");
	const std::string Start = std::string("XDG_DATA_HOME=") + Data + " " + VELMORA_PROGRAM + " --headless --draft --project " +
		Project.Folder.string() + " --script ";
	Project.Write("type.txt", "type unsent " + Project.Symbol + "\ntick 1000000\n");
	// Killed once the draft is there, which must be soon.
	const std::string Kill = "cd " + Project.OutFolder.string() + " && { " + Start +
		"type.txt & P=$!; N=0; until ls data/Velmora/*.draft >/dev/null 2>&1 || [ $N -gt 600 ] || ! kill -0 $P; do sleep 0.1; N=$((N+1)); "
		"done; kill -9 $P; wait $P; }";
	EXPECT_EQ(WEXITSTATUS(std::system(Kill.c_str())), 128 + 9) << Kill;
	Project.Write("look.txt", "tick 5\ndump back.json\nclick #SendButton\nwait idle 60\n");
	const FRun Back = RunProgram({ "--headless", "--draft", "--project", Project.Folder.string(), "--script", "look.txt" }, "",
		Project.OutFolder.string(), { "XDG_DATA_HOME=" + Data });
	EXPECT_EQ(Back.ExitCode, 0) << Back.Error;
	EXPECT_TRUE(Contains(ReadFile(Project.Path("back.json")), "\"promptText\": \"unsent " + Project.Symbol + "\""));
	Project.Write("gone.txt", "type left over\ndump gone.json\n");
	const FRun Gone = RunProgram({ "--headless", "--draft", "--project", Project.Folder.string(), "--script", "gone.txt" }, "",
		Project.OutFolder.string(), { "XDG_DATA_HOME=" + Data });
	EXPECT_EQ(Gone.ExitCode, 0) << Gone.Error;
	EXPECT_TRUE(Contains(ReadFile(Project.Path("gone.json")), "\"promptText\": \"left over\"")) << "what was sent does not come back";
	// A run without a user neither puts a draft back nor takes it away.
	Project.Write("other.txt", "tick 5\ndump other.json\n");
	RunProgram({ "--headless", "--project", Project.Folder.string(), "--script", "other.txt" }, "", Project.OutFolder.string(),
		{ "XDG_DATA_HOME=" + Data });
	EXPECT_TRUE(Contains(ReadFile(Project.Path("other.json")), "\"promptText\": \"\""));
	RunProgram({ "--headless", "--draft", "--project", Project.Folder.string(), "--script", "other.txt" }, "", Project.OutFolder.string(),
		{ "XDG_DATA_HOME=" + Data });
	EXPECT_TRUE(Contains(ReadFile(Project.Path("other.json")), "\"promptText\": \"left over\""));
}
