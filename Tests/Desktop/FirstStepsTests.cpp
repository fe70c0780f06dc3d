#include "Desktop/ProgramDriver.h"

#include <gtest/gtest.h>

TEST(FirstSteps, AreShownOnceAndAgainByTheMenu)
{
	const FRandomProject Project;
	const auto Run = [&Project](const std::string& Steps)
	{
		const std::string Script = Project.Write("steps.txt", Steps);
		return RunProgram({ "--headless", "--draft", "--project", Project.Folder.string(), "--script", Script }, "",
			Project.OutFolder.string(), { "XDG_DATA_HOME=" + Project.Path("data") });
	};
	const FRun First =
		Run("tick 20\nclick what is in this project?\ntype  now\ndump first.json\nclick #CloseFirstSteps\ntype !\ndump closed.json\n"
			"key CTRL+A\nkey DELETE\ntick 80\n");
	EXPECT_EQ(First.ExitCode, 0) << First.Error;
	EXPECT_TRUE(Contains(ReadFile(Project.Path("first.json")), "\"promptText\": \"what is in this project? now\""))
		<< "the box has the keyboard";
	EXPECT_TRUE(Contains(ReadFile(Project.Path("closed.json")), "\"promptText\": \"what is in this project? now!\""));

	// It goes with the first prompt that is sent.
	const FRun Sent =
		Run("tick 20\nclick Help\nclick First Steps\ntick 10\nclick find main\nkey CTRL+ENTER\nwait idle 30\nclick #CloseFirstSteps\n");
	EXPECT_TRUE(Contains(Sent.Error, "steps.txt:8: Nothing on screen is called \"#CloseFirstSteps\".")) << Sent.Error;

	// Not again, but on request.
	EXPECT_NE(Run("tick 20\nclick #CloseFirstSteps\n").ExitCode, 0);
	const FRun Again = Run("tick 20\nclick Help\nclick First Steps\ntick 10\nclick #CloseFirstSteps\n");
	EXPECT_EQ(Again.ExitCode, 0) << Again.Error;
}
