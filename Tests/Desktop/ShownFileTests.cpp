#include "Desktop/ProgramDriver.h"
#include "Markdown/MarkdownParser.h"
#include "Support/Base/Printers.h"

#include <fstream>
#include <gtest/gtest.h>

// What the agent writes and the window reads: a file that is shown comes out of the window's own parser as it went in.

TEST(ShownFile, KeepsItsFences)
{
	const FRandomProject Project;
	const std::string Text =
		"# Notes\n\n```cpp\nint A = 1;\n```\n\nMore *text*.\n````md x\n```sh\nls\n```\n````\n``` two words\n**kept**\n```\nend\n";
	std::ofstream(Project.Folder / "fences.md") << Text;
	std::ofstream(Project.Folder / "line.md") << "a ``` b\n  ```\n";
	const auto Show = [&Project](const std::string& Name)
	{
		return RunProgram({ "--headless", "--no-history", "--project", Project.Folder.string(), "--prompt", "show " + Name }, "",
			Project.OutFolder.string());
	};
	const FRun Run = Show("fences.md");
	ASSERT_EQ(Run.ExitCode, 0) << Run.Error;
	std::string Shown;
	std::vector<std::string> Languages;
	for (const Velmora::Markdown::FMarkdownToken& Token : Velmora::Markdown::FMarkdownParser::Parse(UTF8_TO_TCHAR(Run.Output.c_str())))
	{
		if (Token.Type == Velmora::Markdown::ETokenType::CodeBlock)
		{
			Shown += Utf8(Token.Content);
			Languages.push_back(Utf8(Token.Metadata));
		}
		else if (Token.Type == Velmora::Markdown::ETokenType::Bold)
		{
			Shown += Utf8(Token.Content) + "\n";
		}
	}
	EXPECT_EQ(Shown, Text) << Run.Output;
	EXPECT_EQ(Languages, (std::vector<std::string>{ "markdown", "cpp", "markdown", "", "", "markdown" }));
	EXPECT_FALSE(Contains(Run.Output, "apostrophes"));
	// Where no fence stands alone it is said that the text is not as it was.
	const FRun Other = Show("line.md");
	EXPECT_TRUE(Contains(Other.Output, "a ''' b\n  '''\n```\nThree backticks within a line are shown as three apostrophes."))
		<< Other.Output;
}
