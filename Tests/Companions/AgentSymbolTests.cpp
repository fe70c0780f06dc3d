#include "AgentFixture.h"
#include "Request/AgentRequest.h"
#include "CodeIntel/CodeIntelIndexManager.h"
#include "Host/CodeIndexControl.h"

namespace
{
	using Velmora::ERequestKind;
	using Velmora::CodeIntel::FCodeIndexControl;
	using Velmora::CodeIntel::FCodeIntelIndexManager;

	class AgentSymbols : public FAgentTest
	{
	protected:
		void SetUp() override
		{
			FAgentTest::SetUp();
			Class = "F" + Project.MakeName();
			Project.Write(
				"Source/Thing.h", "#pragma once\n\n/** Holds what is held. */\nclass " + Class + "\n{\npublic:\n\tvoid Run();\n};\n");
			Project.Write("Source/Thing.cpp", "#include \"Thing.h\"\n\nvoid " + Class + "::Run()\n{\n\tint Local = 41;\n}\n");
			Project.Write("Source/Use.cpp", "// " + Class + " is not defined here\n");
			Project.Write("README.md", "# Garden\n\ntext\n## Snails\n```\n# no heading\n```\n### Counting *them*\n");
			Project.Write("notes.lua", "function count()\nend\n");
		}

		void TearDown() override
		{
			FCodeIndexControl::Shutdown();
			FAgentTest::TearDown();
			std::error_code Error;
			std::filesystem::remove(Project.Root.native() + ".index.db", Error);
		}

		void BuildIndex()
		{
			Velmora::CodeIntel::FCodeIndexOptions Options;
			Options.ProjectFolder = Text(Project.Root.native());
			Options.ProjectIndexPath = Text(Project.Root.native() + ".index.db");
			FCodeIndexControl::Initialize(Options);
			FCodeIntelIndexManager::Get().RebuildIndex(true);
			ASSERT_TRUE(FCodeIntelIndexManager::Get().IsIndexReady());
		}

		std::string LinkTo(const std::string& Path, int Line) const
		{
			return "[" + Path + ":" + std::to_string(Line) + "](file:" + Project.PathOf(Path) + "#L" + std::to_string(Line) + ")";
		}

		std::string Class;
	};
}

TEST(SymbolRequests, AreToldFromOthers)
{
	const std::tuple<const char*, ERequestKind, const char*> Cases[] = {
		{ "where is FChatViewModel defined?", ERequestKind::FindSymbol, "FChatViewModel" },
		{ "Where is the class `FThing` declared in the project, please?", ERequestKind::FindSymbol, "FThing" },
		{ "find symbol FThing::Run", ERequestKind::FindSymbol, "FThing::Run" },
		{ "show me the definition of FThing", ERequestKind::FindSymbol, "FThing" },
		{ "definition of Run()", ERequestKind::FindSymbol, "Run" },
		{ "which file defines FThing?", ERequestKind::FindSymbol, "FThing" },
		{ "outline README.md", ERequestKind::Outline, "README.md" },
		{ "can you give me an outline of Source/X.cpp?", ERequestKind::Outline, "Source/X.cpp" },
		{ "outline this file", ERequestKind::Outline, "" },
		{ "where is the session timeout defined?", ERequestKind::FindText, "session timeout" },
		{ "where is FThing used?", ERequestKind::FindText, "FThing" },
		{ "find FThing", ERequestKind::FindText, "FThing" },
	};
	for (const auto& [Text, Kind, Target] : Cases)
	{
		SCOPED_TRACE(Text);
		const Velmora::FAgentRequest Request = Velmora::ParseAgentRequest(Text);
		EXPECT_EQ(static_cast<int>(Request.Kind), static_cast<int>(Kind));
		EXPECT_EQ(Request.Target, Target);
	}
}

TEST_F(AgentSymbols, DefinitionsComeFromTheIndex)
{
	BuildIndex();
	const std::string Answer = Ask("where is " + Class + " defined?");
	EXPECT_TRUE(Holds(Answer, "`" + Class + "` is defined in " + LinkTo("Source/Thing.h", 4) + " (class `" + Class + "`)")) << Answer;
	EXPECT_TRUE(Holds(Answer, "```cpp\n/** Holds what is held. */\nclass " + Class + "\n{")) << Answer;
	EXPECT_FALSE(Holds(Answer, "Use.cpp")) << "a mention is no definition\n" << Answer;
	EXPECT_EQ(
		EventsOf("start").front(), "find_symbol {\"name\":\"" + Class + "\"} {\"operation_type\":\"search\",\"data_type\":\"Symbol\"}");
	EXPECT_EQ(EventsOf("end").front(), "find_symbol ok: 1 symbol");

	const std::string Member = Ask("find symbol " + Class + "::Run");
	EXPECT_TRUE(Holds(Member, "is defined in " + LinkTo("Source/Thing.cpp", 3) + " (function `" + Class + "::Run`)")) << Member;
	EXPECT_TRUE(Holds(Member, "Local = 41")) << Member;
	EXPECT_TRUE(Holds(Member, "- " + LinkTo("Source/Thing.h", 7) + " prototype `" + Class + "::Run`")) << Member;

	const std::string Scoped = Ask("where is Run defined in Thing.h?");
	EXPECT_TRUE(Holds(Scoped, "is declared in " + LinkTo("Source/Thing.h", 7))) << Scoped;
}

TEST_F(AgentSymbols, WhatTheIndexDoesNotKnowIsSearchedInTheText)
{
	BuildIndex();
	const std::string Answer = Ask("find symbol snails");
	EXPECT_TRUE(Holds(Answer, LinkTo("README.md", 4))) << Answer;
	EXPECT_TRUE(Holds(Answer, "The code index has no symbol `snails`, so I searched the text instead.")) << Answer;
	const std::string Part = Ask("find symbol " + Class.substr(0, Class.size() - 2));
	EXPECT_TRUE(Holds(Part, "**Symbols whose names begin so**\n- " + LinkTo("Source/Thing.h", 4))) << Part;

	FCodeIndexControl::Shutdown();
	const std::string NotReady = Ask("where is " + Class + " defined?");
	EXPECT_TRUE(Holds(NotReady, LinkTo("Source/Thing.h", 4))) << NotReady;
	EXPECT_TRUE(Holds(NotReady, "The code index is not ready, so I searched the text instead.")) << NotReady;
}

TEST_F(AgentSymbols, OutlinesWithAndWithoutTheIndex)
{
	for (const bool bWithIndex : { true, false })
	{
		SCOPED_TRACE(bWithIndex);
		if (bWithIndex)
		{
			BuildIndex();
		}
		else
		{
			FCodeIndexControl::Shutdown();
		}
		const std::string Readme = Ask("outline README.md");
		EXPECT_TRUE(Holds(Readme, "3 headings with their lines:\n```\n1  # Garden\n4    ## Snails\n8      ### Counting *them*\n```"))
			<< Readme;
		EXPECT_EQ(EventsOf("start"),
			std::vector<std::string>({ "outline {\"path\":\"README.md\"} {\"operation_type\":\"list\",\"data_type\":\"Symbols\"}" }));
		const std::string Header = Ask("outline of Source/Thing.h");
		EXPECT_TRUE(Holds(Header, "4  class " + Class + "\n7    prototype Run\n")) << Header;
		const std::string Script = Ask("outline notes.lua");
		EXPECT_TRUE(Holds(Script, "1  function count\n")) << Script;
	}
	EXPECT_TRUE(Holds(Ask("outline " + Class + ".md"), "There is no file `" + Class + ".md` in the project"));
	EXPECT_TRUE(Holds(Ask("outline this", { Project.PathOf("README.md") }), "4    ## Snails"));
}
