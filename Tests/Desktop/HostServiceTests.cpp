#include "Desktop/ProgramDriver.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sys/stat.h>

// What the program does for the module, seen from outside.
namespace
{
	FRun RunSteps(const FRandomProject& Project, const std::string& Steps)
	{
		Project.Write("run.txt", Steps);
		return RunProgram({ "--headless", "--project", Project.Folder.string(), "--now", "2026-01-31T12:00:00", "--script", "run.txt" }, "",
			Project.OutFolder.string(), { "XDG_DATA_HOME=" + Project.Path("data") });
	}

	/** The text of a control in a dump. */
	std::string GetControlText(const std::string& Dump, const std::string& Tag)
	{
		const size_t Start = Dump.find("\"tag\": \"" + Tag + "\"");
		const size_t Text = Start == std::string::npos ? Start : Dump.find("\"text\": \"", Start);
		return Text == std::string::npos ? "<missing>" : Dump.substr(Text + 9, Dump.find('"', Text + 9) - Text - 9);
	}
}

TEST(HostService, AnExportGoesWhereTheDialogOffersOrToAnotherPlace)
{
	const FRandomProject Project;
	const mode_t Mask = umask(0027);
	const FRun Run = RunSteps(Project,
		"type list Source\nkey CTRL+ENTER\nwait idle 60\nclick #ExportButton\ndump asked.json\ntype mine.html\nkey ENTER\nwait idle "
		"5\nclick #ExportButton\nanswer file here.json\ntick 30\ndump told.json\nwait idle 5\nclick #ExportButton\ntype mine.html\nkey "
		"ENTER\nanswer No\nanswer "
		"Cancel\n");
	umask(Mask);
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_TRUE(Contains(ReadFile(Project.Path("asked.json")), "\"title\": \"Export Conversation\""));
	const std::string Saved = (Project.Folder / "Saved/Velmora/mine.html").string();
	EXPECT_FALSE(ReadFile(Saved).empty()) << "a folder that did not exist";
	struct stat Info;
	ASSERT_EQ(stat(Saved.c_str(), &Info), 0);
	EXPECT_EQ(Info.st_mode & 0777, 0640u) << "exports follow the umask";
	EXPECT_FALSE(ReadFile(Project.Path("here.json")).empty());
	EXPECT_TRUE(Contains(ReadFile(Project.Path("told.json")), "The file is saved."));
}

TEST(HostService, AnUpdateGoesFromTheOfferToTheRestart)
{
	const FRandomProject Project;
	std::filesystem::create_directories(Project.Path("data/Velmora"));
	Project.Write("data/Velmora/v.zip", std::string(100000, 'p'));
	Project.Write(
		"data/Velmora/Release.json", R"({ "state": "UpdateAvailable", "version": "2.1", "package": "v.zip", "downloadSeconds": 2 })");
	const FRun Run = RunSteps(Project,
		"dump 1.json\nclick #UpdateButton\nanswer No\ndump 2.json\nclick #UpdateButton\nanswer Yes\ntick 60\ndump 3.json\ntick 120\ndump "
		"4.json\nupdate Downloading 7\ntick 1\ndump 5.json\n");
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	const char* const Expected[] = { "Update Available (2.1)", "Update Available (2.1)", "Downloading update... 50%", "Restart Required",
		"Downloading update... 7%" };
	for (int Index = 0; Index < 5; ++Index)
	{
		EXPECT_EQ(GetControlText(ReadFile(Project.Path(std::to_string(Index + 1) + ".json")), "UpdateButton"), Expected[Index]);
	}
	EXPECT_EQ(ReadFile(Project.Path("data/Velmora/Updates/v.zip")).size(), 100000u);
	RunSteps(Project, "dump after.json\n");
	EXPECT_TRUE(Contains(ReadFile(Project.Path("after.json")), "\"statusText\": \"Ready\""));
}

TEST(HostService, SettingsOfTheProjectCountAndAForeignFileStaysAsItIs)
{
	const FRandomProject Project;
	const std::filesystem::path Ini = Project.Folder / "Saved/Config/LinuxEditor/EditorPerProjectUserSettings.ini";
	std::filesystem::create_directories(Ini.parent_path());
	const std::string Text = "; mine\n[/Script/VelmoraCore.VelmoraSettings]\nDefaultConversationMode=1\nUnknown=\xFF\n";
	std::ofstream(Ini, std::ios::binary) << Text;
	RunSteps(Project, "dump a.json\n");
	std::ofstream(Ini, std::ios::binary) << Text.substr(0, Text.find("Default"));
	RunSteps(Project, "dump b.json\n");
	EXPECT_NE(
		GetControlText(ReadFile(Project.Path("a.json")), "ModeComboBox"), GetControlText(ReadFile(Project.Path("b.json")), "ModeComboBox"));
	EXPECT_EQ(ReadFile(Ini), Text.substr(0, Text.find("Default"))) << "nothing was set, so nothing was written";
}
