#include "AgentFixture.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>

namespace
{
	/** Lines of filler, so that a line number cannot be guessed. */
	std::string Filler(int Lines)
	{
		std::string Out;
		for (int Line = 0; Line < Lines; ++Line)
		{
			Out += "static int Idle;\n";
		}
		return Out;
	}

	class AgentAnswers : public FAgentTest
	{
	protected:
		void SetUp() override
		{
			FAgentTest::SetUp();
			Symbol = Project.MakeName();
			File = "Source/" + Project.MakeName() + "/" + Project.MakeName() + ".cpp";
			Lead = Project.MakeNumber(3, 60);
			Line = Lead + 2;
			Project.Write(File,
				Filler(Lead) + "/** Turns a key into a reply. */\nint " + Symbol +
					"(int Key)\n{\n\treturn Key + 41;\n}\n\nint After = 0;\n");
			Project.Write("Source/Other.cpp", "void Use()\n{\n\t" + Symbol + "(3);\n}\n");
			Project.Write("README.md", "# Garden tools\n\nCounts the snails in a garden.\n");
			Project.Write("Config/Default.ini", "[Keys]\nModifier=\"Ctrl\"\n");
		}

		std::string LinkTo(const std::string& Path, int AtLine) const
		{
			return "[" + Path + ":" + std::to_string(AtLine) + "](file:" + Project.PathOf(Path) + "#L" + std::to_string(AtLine) + ")";
		}

		std::string Symbol;
		std::string File;
		int Lead = 0;
		int Line = 0;
	};
}

TEST_F(AgentAnswers, EveryWayOfAskingFindsTheDefinition)
{
	const std::string Questions[] = {
		"find " + Symbol,
		"Find " + Symbol + ".",
		"Where is \"" + Symbol + "\" handled?",
		"where is «" + Symbol + "» defined?",
		"please search for `" + Symbol + "`, thanks!",
		"Could you grep " + Symbol + " for me?",
		"hey, can you tell me where the function " + Symbol + " is used in this project?",
		"What does " + Symbol + " do?",
		"what is " + Symbol + "?",
		"explain “" + Symbol + "”",
		"tell me about the function " + Symbol,
		"show me " + Symbol,
		Symbol,
		"find " + Symbol + " in " + File,
	};
	for (const std::string& Question : Questions)
	{
		SCOPED_TRACE(Question);
		const std::string Answer = Ask(Question);
		EXPECT_TRUE(Holds(Answer, "`" + Symbol + "` is defined in " + LinkTo(File, Line))) << Answer;
		EXPECT_TRUE(Holds(Answer, "```cpp\n/** Turns a key into a reply. */\nint " + Symbol + "(int Key)\n{\n\treturn Key + 41;\n}\n```\n"))
			<< Answer;
		EXPECT_FALSE(Holds(Answer, "After = 0")) << Answer;
	}
}

TEST_F(AgentAnswers, CountsAndListsTheOtherPlaces)
{
	const std::string Answer = Ask("find " + Symbol);
	EXPECT_TRUE(Holds(Answer, "2 matches in 2 files")) << Answer;
	EXPECT_TRUE(Holds(Answer, "- " + LinkTo("Source/Other.cpp", 3) + " `" + Symbol + "(3);`")) << Answer;
}

TEST_F(AgentAnswers, SaysPlainlyThatNothingWasFoundAndWhereItLooked)
{
	const std::string Absent = Project.MakeName(16);
	for (const std::string& Question : { "find " + Absent, "what does " + Absent + " do?", "which files mention " + Absent + "?" })
	{
		SCOPED_TRACE(Question);
		const std::string Answer = Ask(Question);
		EXPECT_TRUE(Holds(Answer, "Nothing was found for `" + Absent + "`")) << Answer;
		EXPECT_TRUE(Holds(Answer, "I searched 4 text files below `" + Project.Root.native() + "`")) << Answer;
	}
	EXPECT_TRUE(Holds(Ask("show " + Absent + ".cpp"), "There is no file `" + Absent + ".cpp` in the project"));
	EXPECT_TRUE(Holds(Ask("list " + Absent + "/"), "There is no folder `" + Absent + "/` in the project"));
}

TEST_F(AgentAnswers, AWordInQuotesIsSearchedToTheLetter)
{
	const std::string Answer = Ask("where is \"Ctrl\" handled?");
	EXPECT_TRUE(Holds(Answer, LinkTo("Config/Default.ini", 2))) << Answer;
	const std::string Phrase = Ask("find 'the snails in'");
	EXPECT_TRUE(Holds(Phrase, LinkTo("README.md", 3))) << Phrase;
}

TEST_F(AgentAnswers, ListsTheFilesThatMentionSomething)
{
	const std::string Answer = Ask("Which files mention " + Symbol + "?");
	EXPECT_TRUE(Holds(Answer, "`" + Symbol + "`: 2 matches in 2 files\n")) << Answer;
	EXPECT_TRUE(Holds(Answer, "- [" + File + "](file://" + Project.PathOf(File) + ") 1 line")) << Answer;
}

TEST_F(AgentAnswers, ShowsFilesAndLines)
{
	const std::pair<std::string, std::string> Cases[] = {
		{ "show README.md", "```markdown\n# Garden tools\n\nCounts the snails in a garden.\n```" },
		{ "Open the file readme.md, please", "```markdown\n# Garden tools\n\nCounts the snails in a garden.\n```" },
		{ "cat `README.md`", "```markdown\n# Garden tools\n\nCounts the snails in a garden.\n```" },
		{ "show lines 2-3 of Default.ini", "```ini\nModifier=\"Ctrl\"\n```" },
		{ "show line 1 of Config/Default.ini", "```ini\n[Keys]\n```" },
		{ "show the first 1 lines of Default.ini", "```ini\n[Keys]\n```" },
		{ "show last 1 lines of Default.ini", "```ini\nModifier=\"Ctrl\"\n```" },
		{ "show Default.ini:1", "```ini\n[Keys]\n```" },
		{ "read lines 3 to 5 of Source/Other.cpp", "```cpp\n\t" + Symbol + "(3);\n}\n```" },
	};
	for (const auto& [Question, Body] : Cases)
	{
		SCOPED_TRACE(Question);
		const std::string Answer = Ask(Question);
		EXPECT_TRUE(Holds(Answer, Body)) << Answer;
	}
	EXPECT_TRUE(Holds(Ask("show lines 90-99 of Default.ini"), "has only 2 lines"));
}

TEST_F(AgentAnswers, ListsFolders)
{
	const std::string Answer = Ask("list Source");
	EXPECT_TRUE(Holds(Answer,
		"`Source/` has 2 entries.\n- `" + File.substr(7, 12) + "/` 1 file\n- [Source/Other.cpp](file://" +
			Project.PathOf("Source/Other.cpp") + ")"))
		<< Answer;
	EXPECT_EQ(Ask("What is in Source?"), Answer);
	EXPECT_EQ(Ask("what's in the folder Source"), Answer);
	const std::string Whole = Ask("list this project");
	EXPECT_TRUE(Holds(Whole, "has 3 entries.\n- `Config/` 1 file\n- `Source/` 2 files\n- [README.md]")) << Whole;
	EXPECT_TRUE(Holds(Ask("list *.INI"), "[Config/Default.ini]"));
}

TEST_F(AgentAnswers, SumsUpTheProject)
{
	const std::string Answer = Ask("Summarise the project");
	EXPECT_TRUE(Holds(Answer, "## Garden tools\nCounts the snails in a garden.\n4 files in 3 folders, ")) << Answer;
	EXPECT_TRUE(Holds(Answer, "| .cpp | 2 | " + std::to_string(Lead + 7 + 4) + " |")) << Answer;
	for (const char* Question : { "what is this project?", "what is in this project?", "What's inside?" })
	{
		EXPECT_EQ(Ask(Question), Answer) << Question;
	}
}

TEST_F(AgentAnswers, CountsFilesAndLines)
{
	const std::string Total = std::to_string(Lead + 7 + 4 + 3 + 2) + " lines of text";
	for (const char* Question : { "how many files are there?", "How many lines?", "how many lines are in the project" })
	{
		SCOPED_TRACE(Question);
		const std::string Answer = Ask(Question);
		EXPECT_TRUE(Holds(Answer, "4 files in 3 folders, " + Total)) << Answer;
	}
	EXPECT_TRUE(Holds(Ask("how many lines does README.md have?"), "has 3 lines"));
}

TEST_F(AgentAnswers, OtherTalkGetsAnHonestAnswerWithExamples)
{
	EXPECT_TRUE(Holds(Ask("help"), "`find "));
	EXPECT_TRUE(Holds(Ask("sing me a song about rain"), "I did not understand"));
	EXPECT_TRUE(Holds(Ask("refactor everything"), "I did not understand which change to make"));
	EXPECT_TRUE(Holds(Ask("find"), "What should I look for?"));
	EXPECT_TRUE(Holds(Ask("hello"), "Hello!"));
}

TEST_F(AgentAnswers, AFreeQuestionGetsTheTruthAndPlacesForItsMainWords)
{
	Project.Write("Source/Pads.cpp", "// A pad that throws players up.\nvoid LaunchFromPad();\nint JumpPadCount = 3;\n");
	for (const char* Question :
		{ "how do I make a jump pad in C++?", "Why does the jump pad not work?", "can you tell me how to make a jump pad please",
			"should we use a jump pad here", "what would be the best way to make a jump pad" })
	{
		SCOPED_TRACE(Question);
		const std::string Answer = Ask(Question);
		EXPECT_EQ(Answer.find("I only carry out commands"), 0u) << Answer;
		EXPECT_TRUE(Holds(Answer, "a model can be connected")) << Answer;
		const size_t Both = Answer.find("JumpPadCount");
		EXPECT_NE(Both, std::string::npos) << Answer;
		EXPECT_LT(Both, Answer.find("LaunchFromPad")) << "More of the words come first. " << Answer;
		for (const std::string& Start : EventsOf("start"))
		{
			EXPECT_EQ(Start.find("{\"term\":\"how"), std::string::npos) << Start;
			EXPECT_EQ(Start.find(' ', Start.find("\"term\"")), Start.find("} ") + 1) << "One word at a time: " << Start;
		}
	}
	// What a command answers is none.
	EXPECT_TRUE(Holds(Ask("what does " + Symbol + " do?"), "is defined in"));
	EXPECT_TRUE(Holds(Ask("how does " + Symbol + " work"), "is defined in"));
}

TEST_F(AgentAnswers, WhatIsIgnoredIsReadOnlyWhenItIsNamed)
{
	Project.Write(".gitignore", "secret.txt\n/private/\n*.log\n!kept.log\n");
	Project.Write("secret.txt", "needle one\n");
	Project.Write("private/deep/notes.md", "needle two\n");
	Project.Write("sub/.gitignore", "inner.md\n");
	Project.Write("sub/inner.md", "needle three\n");
	Project.Write("run.log", "needle four\n");
	Project.Write("kept.log", "needle five\n");
	Project.Write("Saved/x.md", "needle six\n");
	const std::tuple<const char*, const char*, const char*> Cases[] = {
		{ "find needle", "1 match in 1 file", "secret.txt" },
		{ "find needle", "kept.log", "private/" },
		{ "which files mention needle", "kept.log", "inner.md" },
		{ "list", "kept.log", "secret.txt" },
		{ "list sub", ".gitignore", "inner.md" },
		{ "list *.md", "README.md", "notes.md" },
		{ "show secret", "secret", "needle one" },
		{ "show secret.txt", "needle one", "no file" },
		{ "find needle in private", "needle two", "needle one" },
		{ "list private/deep", "notes.md", "empty" },
		{ "show Saved/x.md", "needle six", "no file" },
	};
	for (const auto& [Request, Held, NotHeld] : Cases)
	{
		SCOPED_TRACE(Request);
		const std::string Answer = Ask(Request);
		EXPECT_TRUE(Holds(Answer, Held)) << Answer;
		EXPECT_FALSE(Holds(Answer, NotHeld)) << Answer;
	}
	EXPECT_TRUE(Holds(Ask("find needle", { "secret.txt" }), "needle one"));
}

TEST_F(AgentAnswers, AttachedFilesAreLookedAtFirst)
{
	const std::string Answer = Ask("find " + Symbol, { Project.PathOf("Source/Other.cpp") });
	EXPECT_TRUE(Holds(Answer, "In the attached files: 1 match in 1 file")) << Answer;
	const std::vector<std::string> Steps = EventsOf("progress");
	EXPECT_EQ(Steps, std::vector<std::string>{ "Executing step 2: Searching the project for " + Symbol }) << "the first needs no words";

	const std::string Described = Ask("what do you make of this?", { "Source/Other.cpp" });
	EXPECT_TRUE(Holds(Described, "has 4 lines.")) << Described;
	EXPECT_TRUE(Holds(Described, "void Use()")) << Described;
}

TEST_F(AgentAnswers, EachOfSeveralAttachedFilesIsRead)
{
	const std::string First = Project.MakeName(12);
	const std::string Second = Project.MakeName(12);
	Project.Write("first one.md", First + "\n");
	Project.Write("docs/second.md", Second + "\n");
	Project.Write("third.md", "third\n");
	for (const char* Question : { "show first one.md and second.md", "explain first one.md second.md", "outline first one.md and second.md",
			 "what do you make of these?", "compare first one.md with second.md" })
	{
		const std::string Answer = Ask(Question, { "first one.md", "docs/second.md" });
		EXPECT_TRUE(Holds(Answer, First) && Holds(Answer, Second)) << Question << '\n' << Answer;
	}
	const std::string Answer = Ask("show third.md", { "first one.md", "docs/second.md" });
	EXPECT_TRUE(Holds(Answer, "third")) << Answer;
	EXPECT_FALSE(Holds(Answer, First)) << Answer;
}

TEST_F(AgentAnswers, NothingOutsideTheProjectIsRead)
{
	const std::string Secret = Project.MakeName(20);
	const std::filesystem::path Outside = Project.Root.parent_path() / (Secret + ".txt");
	std::ofstream(Outside) << "hidden " << Secret << "\n";
	std::filesystem::create_symlink(Outside, Project.Root / "link.txt");
	std::filesystem::create_directory_symlink(Project.Root.parent_path(), Project.Root / "up");

	for (const std::string& Question : { "show " + Outside.native(), "show ../" + Secret + ".txt", std::string("show link.txt"),
			 "show up/" + Secret + ".txt", std::string("find hidden"), std::string("list .."), std::string("list up") })
	{
		SCOPED_TRACE(Question);
		const std::string Answer = Ask(Question, { Outside.native() });
		EXPECT_FALSE(Holds(Answer, "hidden " + Secret)) << Answer;
		EXPECT_TRUE(Holds(Answer, "lies outside the project")) << Answer;
	}
	std::filesystem::remove(Outside);
}

TEST_F(AgentAnswers, IgnoredFoldersAreNotSearched)
{
	const std::string Hidden = Project.MakeName(15);
	for (const char* Folder : { ".git", "Build", "Saved", "Intermediate", "Binaries", "node_modules", ".cache", "Source/build" })
	{
		Project.Write(std::string(Folder) + "/x.cpp", "int " + Hidden + ";\n");
	}
	EXPECT_TRUE(Holds(Ask("find " + Hidden), "Nothing was found"));
}

TEST_F(AgentAnswers, DefinitionsComeBeforeMentions)
{
	struct FCase
	{
		const char* Why;
		const char* Line; // "@" stands for the name.
	};
	const FCase Definitions[] = {
		{ "class with an export marker", "class ENGINE_API @ : public FBase" },
		{ "scoped enumeration", "enum class @ : uint8" },
		{ "member function", "void FThing::@(int A, const FString& B)" },
		{ "constructor", "FThing::@(int A)" },
		{ "macro", "#define @(x) (x)" },
		{ "alias", "using @ = int;" },
		{ "script function", "def @(self):" },
		{ "pointer result", "const FNode *@(int A)" },
		{ "script constant", "const @ = 3" },
	};
	int Index = 0;
	for (const FCase& Case : Definitions)
	{
		SCOPED_TRACE(Case.Why);
		const std::string Name = Project.MakeName(14);
		std::string Line = Case.Line;
		Line.replace(Line.find('@'), 1, Name);
		const std::string Folder = "Case" + std::to_string(Index++);
		// Files are met in the order of their names: the mentions come first.
		Project.Write(Folder + "/A.cpp",
			"\treturn " + Name + "(1);\n\tclass " + Name + ";\n\tThing->" + Name + "(2);\n// class " + Name + "\n\tconst int V = " + Name +
				"(4);\n");
		Project.Write(Folder + "/Z.cpp", "\n\n" + Line + "\n{\n}\n");
		const std::string Answer = Ask("find " + Name);
		EXPECT_TRUE(Holds(Answer, "`" + Name + "` is defined in " + LinkTo(Folder + "/Z.cpp", 3))) << Answer;
	}
}

TEST_F(AgentAnswers, AmongMentionsCodeComesFirst)
{
	const std::string Name = Project.MakeName(14);
	Project.Write("A.md", Name + " is explained here\n");
	Project.Write("ATests/A.cpp", "\tCheck(" + Name + ");\n");
	Project.Write(
		"B.cpp", "// " + Name + "\n\tFoo(const T" + Name + "& x);\n\tvoid F(const " + Name + "<int>& x)\n\tif (Key == \"" + Name + "\")\n");
	const std::string Answer = Ask("where is " + Name + " handled?");
	EXPECT_TRUE(Holds(Answer, "`" + Name + "` is found in " + LinkTo("B.cpp", 4))) << Answer;
	const size_t Places[] = { Answer.find(LinkTo("B.cpp", 4)), Answer.find(LinkTo("B.cpp", 3)), Answer.find(LinkTo("B.cpp", 1)),
		Answer.find(LinkTo("ATests/A.cpp", 1)), Answer.find(LinkTo("A.md", 1)), Answer.find(LinkTo("B.cpp", 2)) };
	EXPECT_TRUE(std::is_sorted(std::begin(Places), std::end(Places))) << Answer;
}

TEST_F(AgentAnswers, StrangeFilesAreLeftOutInWords)
{
	const std::string Name = Project.MakeName(14);
	Project.Write("Odd/binary.dat", std::string("\0\1\2", 3) + Name);
	Project.Write("Odd/large.txt", Name + std::string(5 * 1024 * 1024, 'x'));
	Project.Write("Odd/line.txt", std::string(3 * 1024 * 1024, 'y') + ' ' + Name + ' ' + std::string(512 * 1024, 'z'));
	Project.Write("Odd/latin.txt", "caf\xE9 " + Name + "\n");
	Project.Write("Odd/na\xFFme.txt", Name + "\n");
	Project.Write("Odd/(round) [square].txt", Name + " `tick` | bar\n");
	Project.Write("Odd/fence.md", "```\n" + Name + "\n```\n");
	Project.Write("Odd/empty.txt", "");
	Project.Write("Odd/utf16.txt", std::string("\xFF\xFE", 2) + std::string("h\0i\0\n\0", 6));
	std::filesystem::create_directory_symlink(Project.Root / "Odd", Project.Root / "Odd" / "loop");
	std::filesystem::create_symlink("nowhere", Project.Root / "Odd" / "dangling");
	ASSERT_EQ(mkfifo(Project.PathOf("Odd/pipe").c_str(), 0600), 0);

	const std::string Answer = Ask("find " + Name);
	EXPECT_TRUE(Holds(Answer, "5 matches in 5 files")) << Answer;
	EXPECT_TRUE(Holds(Answer, "1 file was left out as larger than 4 MB.")) << Answer;
	EXPECT_TRUE(Holds(Answer, "`Odd/(round) (square).txt") || Holds(Answer, "`Odd/(round) [square].txt:1` ")) << Answer;
	EXPECT_LT(Answer.size(), 8000u);
	EXPECT_TRUE(Holds(Ask("find " + Project.MakeName(15)), "1 binary file was left out.\n1 file was left out as larger than 4 MB."));
	EXPECT_TRUE(Holds(Ask("show binary.dat"), "cannot be shown: it is a binary file"));
	EXPECT_TRUE(Holds(Ask("show large.txt"), "cannot be shown: it is larger than 4 MB"));
	EXPECT_TRUE(Holds(Ask("show empty.txt"), "is empty"));
	EXPECT_TRUE(Holds(Ask("show Odd/pipe"), "There is no file"));
	EXPECT_TRUE(Holds(Ask("show latin.txt"), "caf\xEF\xBF\xBD"));
	EXPECT_TRUE(Holds(Ask("show utf16.txt"), "```\nhi\n```"));
	EXPECT_LT(Ask("show line.txt").size(), 2000u);

	// A fence in a file must not end the fence around it.
	const std::string Fenced = Ask("show fence.md");
	EXPECT_TRUE(Holds(Fenced, "**```**\n```\n" + Name + "\n```\n**```**")) << Fenced;
}

TEST_F(AgentAnswers, UnreadableThingsAreSaid)
{
	if (geteuid() == 0)
	{
		GTEST_SKIP() << "No file is unreadable to the superuser.";
	}
	Project.Write("Closed/secret.txt", Symbol);
	std::filesystem::permissions(Project.Root / "Closed/secret.txt", std::filesystem::perms::none);
	EXPECT_TRUE(Holds(Ask("find " + Symbol), "1 file or folder could not be read."));
	EXPECT_TRUE(Holds(Ask("show secret.txt"), "there is no permission"));
	std::filesystem::permissions(Project.Root / "Closed", std::filesystem::perms::none);
	EXPECT_TRUE(Holds(Ask("how many lines?"), "1 folder could not be read.")) << LastAnswer;
	EXPECT_TRUE(Holds(Ask("list Closed"), "cannot be read")) << LastAnswer;
	std::filesystem::permissions(Project.Root / "Closed", std::filesystem::perms::owner_all);
}

TEST_F(AgentAnswers, OddPromptsAreAnswered)
{
	FString Lone = TEXT("find x");
	Lone.AppendChar(static_cast<TCHAR>(0xD800));
	ASSERT_TRUE(Agent->SendMessage(Lone, {}));
	EXPECT_TRUE(PumpUntil([this] { return HasTurnEnded(); }));
	EXPECT_TRUE(Holds(LastAnswer, "Nothing was found")) << LastAnswer;

	for (const std::string& Question :
		{ std::string("?"), std::string("\"\""), std::string("''"), std::string("find \"\""), std::string("find ?"),
			std::string("show lines 0-0 of"), std::string("list ../../.."), std::string("find " + std::string(3000, '*')),
			std::string(10 * 1024 * 1024, 'a'), std::string("show lines 99999999999999999999-1 of README.md"), std::string("« » “ ”"),
			std::string("in in in"), std::string("find a in b in c"), std::string("what is what is what is") })
	{
		SCOPED_TRACE(Question.substr(0, 60));
		EXPECT_FALSE(Ask(Question).empty());
		EXPECT_EQ(Agent->GetState(), Velmora::EConversationState::AwaitingInput);
	}
}

TEST_F(AgentAnswers, ToolsAreReportedInJson)
{
	Ask("find " + Symbol);
	const std::vector<std::string> Started = EventsOf("start");
	ASSERT_EQ(Started.size(), 2u);
	EXPECT_EQ(Started[0], "search_files {\"term\":\"" + Symbol + "\"} {\"operation_type\":\"search\",\"data_type\":\"File\"}");
	EXPECT_EQ(EventsOf("end")[0], "search_files ok: 2 matches in 2 files");

	// What a user types may hold anything; it is a JSON text all the same.
	Ask("find «a\"b\\c {d}»");
	EXPECT_EQ(EventsOf("start")[0], "search_files {\"term\":\"a\\\"b\\\\c {d}\"} {\"operation_type\":\"search\",\"data_type\":\"File\"}");
}
