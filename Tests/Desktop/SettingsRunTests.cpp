#include "Desktop/ProgramDriver.h"

#include <gtest/gtest.h>

// What is set in one run of the program is there in the next one. A step that names a text fails when it is not on screen.

TEST(SettingsRun, SettingsAndTheSidePanelSurviveTheProgram)
{
	const FRandomProject Project;
	const std::string Words = "Keep " + Project.Symbol + " stable";
	const std::string Scripts[] = {
		"click Open Velmora settings\nmove Configure Velmora AI settings\nclick #Constraints\ntype " + Words +
			"\nclick #DefaultConversationMode\nclick Advisor\n",
		"click Toggle customize behavior sidebar\ntick 2\nmove " + Words + "\n",
		"tick 2\nmove Customize Behavior\nclick Open Velmora settings\ntick 2\nmove " + Words + "\nmove Advisor\n",
	};
	for (const std::string& Script : Scripts)
	{
		SCOPED_TRACE(Script);
		Project.Write("run.txt", Script);
		const FRun Run =
			RunProgram({ "--headless", "--project", Project.Folder.string(), "--now", "2026-01-31T12:00:00", "--script", "run.txt" }, "",
				Project.OutFolder.string());
		EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	}
}
