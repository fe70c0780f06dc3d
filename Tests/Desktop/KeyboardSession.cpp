#include "Desktop/KeyboardSession.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace
{
	std::string GetDumpName(size_t Part)
	{
		return "part" + std::to_string(Part);
	}

	bool BeginsWith(const std::string& Text, const std::string& Beginning)
	{
		return Text.compare(0, Beginning.size(), Beginning) == 0;
	}
}

std::string Repeat(const std::string& Step, int Times)
{
	std::string Steps;
	for (int Index = 0; Index < Times; ++Index)
	{
		Steps += Step + "\ntick 5\n";
	}
	return Steps;
}

std::string PickEntry(const std::string& Menu, int Downs)
{
	return Repeat("key ALT+" + Menu, 1) + Repeat("key DOWN", Downs) + Repeat("key ENTER", 1);
}

std::vector<std::string> ReadTree(const FRandomProject& Project, int Part)
{
	// Lines of JSON, each a text in quotes.
	const std::string Dump = ReadFile(Project.Path(GetDumpName(static_cast<size_t>(Part))));
	std::vector<std::string> Lines;
	size_t Place = Dump.find("\"accessible\"");
	Place = Place == std::string::npos ? Place : Dump.find('[', Place);
	while (Place < Dump.size() && (Place = Dump.find_first_of("\"]", Place)) != std::string::npos && Dump[Place] == '"')
	{
		std::string Line;
		for (++Place; Place < Dump.size() && Dump[Place] != '"'; ++Place)
		{
			if (Dump[Place] != '\\')
			{
				Line += Dump[Place];
				continue;
			}
			const char Kind = Dump[++Place];
			Line += Kind == 't' ? "" : Kind == 'n' ? "\n" : std::string(1, Kind);
		}
		++Place;
		Lines.push_back(Line);
	}
	return Lines;
}

void RunKeyboardSession(const FRandomProject& Project, const std::vector<FKeyboardPart>& Parts, const std::vector<std::string>& Options,
	const std::vector<std::string>& Environment)
{
	std::string Script;
	for (size_t Part = 0; Part < Parts.size(); ++Part)
	{
		ASSERT_EQ(Parts[Part].Steps.find("click"), std::string::npos) << Parts[Part].What;
		Script += Parts[Part].Steps + "tick 5\ndump " + GetDumpName(Part) + "\n";
	}
	std::vector<std::string> Words = { "--size", "1280x900", "--project", Project.Folder.string(), "--set",
		"velmora.conversationhistoryrefresh.forcesync=1", "--script", Project.Write("keys.txt", Script) };
	Words.insert(Words.end(), Options.begin(), Options.end());
	std::vector<std::string> Entries = { "XDG_DATA_HOME=" + Project.Path("data"), "XDG_CONFIG_HOME=" + Project.Path("config") };
	Entries.insert(Entries.end(), Environment.begin(), Environment.end());
	const FRun Run = RunProgram(Words, "", Project.OutFolder.string(), Entries);
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_EQ(Run.Error.find("no step answers"), std::string::npos) << Run.Error;
	for (size_t Part = 0; Part < Parts.size(); ++Part)
	{
		SCOPED_TRACE(Parts[Part].What);
		const std::vector<std::string> Tree = ReadTree(Project, static_cast<int>(Part));
		std::string Shown;
		for (const std::string& Line : Tree)
		{
			Shown += Line + "\n";
		}
		EXPECT_TRUE(std::any_of(Tree.begin(), Tree.end(), [&](const std::string& Line) { return BeginsWith(Line, Parts[Part].Line); }))
			<< "no line begins with " << Parts[Part].Line << "\n"
			<< Shown;
		// A window whose keyboard is nowhere says so of itself alone.
		const auto HasKeyboard = [](const std::string& Line)
		{ return !BeginsWith(Line, "window ") && Line.find("(focused") != std::string::npos; };
		EXPECT_TRUE(std::any_of(Tree.begin(), Tree.end(), HasKeyboard)) << "nobody has the keyboard\n" << Shown;
	}
}
