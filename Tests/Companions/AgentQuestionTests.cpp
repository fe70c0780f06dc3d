#include "AgentFixture.h"

#include "Host/AgentQuestions.h"
#include "Host/HostClock.h"
#include "Host/HostFileNames.h"
#include "Host/StoreLocation.h"
#include "Tools/PermissionRules.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <thread>

using Velmora::EAgentAnswer;
using Velmora::EConversationState;
using Velmora::EPermission;
using Velmora::FAgentQuestions;
using Velmora::FPermissionRules;

namespace
{
	constexpr double LongEnough = 1.0;

	class AgentQuestionTests : public FAgentTest
	{
	protected:
		void SetUp() override
		{
			FHostClock::UseSimulatedTime(FDateTime(2026, 1, 1));
			FAgentTest::SetUp();
			RulesPath = HostFileNameToBytes(Velmora::GetStoreLocation().GetRulesPath());
			std::filesystem::remove(RulesPath);
			FAgentQuestions::SetListener(
				[this](const Velmora::FAgentQuestion* Question)
				{
					OpenId = Question ? Question->Id : 0;
					OpenSubject = Question ? Utf8(Question->Tool) + ' ' + Utf8(Question->Subject) : std::string();
				});
		}

		void TearDown() override
		{
			FAgentTest::TearDown();
			FAgentQuestions::SetListener(nullptr);
			std::filesystem::remove(RulesPath);
			FHostClock::UseRealTime();
		}

		/** Sends a request and waits until its question is open, or the turn has ended without one. */
		bool AskUntilPaused(const std::string& Request)
		{
			Events.clear();
			EXPECT_TRUE(Agent->SendMessage(Text(Request), {}));
			EXPECT_TRUE(PumpUntil([this] { return HasTurnEnded() || Agent->GetState() == EConversationState::Paused; }));
			return Agent->GetState() == EConversationState::Paused;
		}

		void Finish()
		{
			EXPECT_TRUE(PumpUntil([this] { return HasTurnEnded(); }));
		}

		bool Exists(const std::string& Path) const { return std::filesystem::exists(Project.PathOf(Path)); }

		std::string RulesPath;
		uint32 OpenId = 0;
		std::string OpenSubject;
	};
}

TEST_F(AgentQuestionTests, FilesThatSteerToolsAskAndOrdinaryOnesDoNot)
{
	struct FCase
	{
		const char* Request;
		const char* Subject; // Empty: nothing is asked.
	};
	Project.Write("big.txt", std::string(5000, 'x') + "\nend\n");
	Project.Write("small.txt", std::string(4000, 'x') + "\n");
	Project.Write("halved.txt", std::string(5000, 'x') + "\n");
	Project.Write(".envrc", "export A=1\n");
	Project.Write(".github/workflows/ci.yml", "on: push\n");
	std::filesystem::create_directory_symlink(".github", Project.PathOf("innocent"));
	const FCase Cases[] = {
		{ "create .git/hooks/pre-commit with \"x\"", "create_file .git/hooks/pre-commit" },
		{ "create sub/.GIT/config with \"x\"", "create_file sub/.GIT/config" },
		{ "create .vscode/tasks.json with \"x\"", "create_file .vscode/tasks.json" },
		{ "create .gitlab-ci.yml with \"x\"", "create_file .gitlab-ci.yml" },
		{ "create tools/.bashrc with \"x\"", "create_file tools/.bashrc" },
		{ "append \"x\" to .envrc", "append_to_file .envrc" },
		{ "delete .github/workflows/ci.yml", "delete_file .github/workflows/ci.yml" },
		{ "replace \"push\" by \"tag\" in innocent/workflows/ci.yml", "edit_file .github/workflows/ci.yml" },
		{ "write \"x\" to big.txt", "write_file big.txt" },
		{ "write \"x\" to small.txt", "" },
		{ "delete halved.txt", "" },
		{ "create .github.md with \"x\"", "" },
		{ "create envrc with \"x\"", "" },
	};
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE(Case.Request);
		EXPECT_EQ(AskUntilPaused(Case.Request), Case.Subject[0] != '\0');
		EXPECT_EQ(OpenSubject, Case.Subject);
		Agent->CancelConversation();
		EXPECT_EQ(OpenId, 0u);
		PumpUntilQuiet();
	}
	EXPECT_FALSE(Exists(".git/hooks/pre-commit"));
	EXPECT_TRUE(Exists(".github/workflows/ci.yml"));
	EXPECT_TRUE(Exists(".github.md"));
}

TEST_F(AgentQuestionTests, ContinueAllowsOnceATextRefusesAndCancelStops)
{
	ASSERT_TRUE(AskUntilPaused("create .envrc with \"export A=1\""));
	EXPECT_TRUE(Holds(LastAnswer, ".envrc")) << LastAnswer;
	EXPECT_TRUE(Holds(LastAnswer, "export A=1")) << LastAnswer;
	EXPECT_TRUE(Holds(LastAnswer, "\n\nI ask since ") && Holds(LastAnswer, "\nContinue with an empty prompt")) << LastAnswer;
	EXPECT_TRUE(Agent->CanUndo());
	EXPECT_EQ(Agent->GetCurrentConversationMetadata()->GetMessageCount(), 1) << "A question is no message of the conversation.";
	FHostClock::Advance(LongEnough);
	Agent->ResumeConversation(FString());
	Finish();
	EXPECT_TRUE(Exists(".envrc"));
	EXPECT_TRUE(Agent->UndoToTransaction(Agent->GetCurrentTransactionId()));
	EXPECT_FALSE(Exists(".envrc"));

	ASSERT_TRUE(AskUntilPaused("create .envrc with \"x\"")) << "Allowed once is not allowed for good.";
	Agent->ResumeConversation(TEXT("create notes.md with \"y\""));
	Finish();
	EXPECT_FALSE(Exists(".envrc"));
	EXPECT_TRUE(Exists("notes.md"));
	EXPECT_EQ(EventsOf("end").front(), "create_file failed: Not changed: you refused it");

	ASSERT_TRUE(AskUntilPaused("first create .envrc with \"x\", then create other.md with \"y\""));
	Agent->CancelConversation();
	PumpUntilQuiet();
	EXPECT_EQ(Agent->GetState(), EConversationState::Cancelled);
	EXPECT_FALSE(Exists(".envrc"));
	EXPECT_FALSE(Exists("other.md"));
}

TEST_F(AgentQuestionTests, NobodyGrantsByAccident)
{
	// 1. A click that comes before the row can have been read, and each one that follows too soon upon another.
	ASSERT_TRUE(AskUntilPaused("create .envrc with \"x\""));
	for (const double Seconds : { 0.0, 0.6, 0.3 })
	{
		FHostClock::Advance(Seconds);
		Agent->ResumeConversation(TEXT(" \n"));
		PumpForAWhile();
		EXPECT_EQ(Agent->GetState(), EConversationState::Paused);
	}
	EXPECT_FALSE(Exists(".envrc"));

	// 2. A pause that meets the question: the next Continue shows it again.
	FHostClock::Advance(LongEnough);
	Agent->PauseConversation();
	const size_t AnswersBefore = static_cast<size_t>(std::count(Events.begin(), Events.end(), "answer"));
	Agent->ResumeConversation(FString());
	PumpForAWhile();
	EXPECT_EQ(Agent->GetState(), EConversationState::Paused);
	EXPECT_EQ(static_cast<size_t>(std::count(Events.begin(), Events.end(), "answer")), AnswersBefore + 1);
	FHostClock::Advance(LongEnough);
	Agent->ResumeConversation(FString());
	Finish();
	EXPECT_TRUE(Exists(".envrc"));

	// 3. The second half of a double click on a pause before the question came.
	Events.clear();
	Agent->SendMessage(TEXT("delete .envrc"), {});
	Agent->PauseConversation();
	FHostClock::Advance(LongEnough);
	Agent->ResumeConversation(FString());
	EXPECT_TRUE(PumpUntil([this] { return Agent->GetState() == EConversationState::Paused; }));
	Agent->ResumeConversation(FString());
	PumpForAWhile();
	EXPECT_EQ(Agent->GetState(), EConversationState::Paused);
	EXPECT_TRUE(Exists(".envrc"));
}

TEST_F(AgentQuestionTests, LeavingAQuestionRefusesIt)
{
	ASSERT_FALSE(AskUntilPaused("create kept.md with \"x\""));
	const FString First = Agent->GetCurrentConversationMetadata()->Id;
	const FString KeptTransaction = Agent->GetCurrentTransactionId();
	const std::pair<const char*, std::function<void()>> Leavings[] = {
		{ "clear", [this] { Agent->ClearAllHistories(); } },
		{ "new", [this] { Agent->StartConversation(Velmora::EConversationMode::Code); } },
		{ "load", [this, First] { Agent->LoadConversation(First); } },
		{ "end", [this] { Agent->EndConversation(); } },
	};
	for (const auto& [Name, Leave] : Leavings)
	{
		SCOPED_TRACE(Name);
		ASSERT_TRUE(AskUntilPaused("create .envrc with \"x\""));
		Leave();
		EXPECT_EQ(OpenId, 0u);
		PumpUntilQuiet();
		EXPECT_FALSE(Exists(".envrc"));
		EXPECT_NE(Agent->GetState(), EConversationState::Paused);
		if (!Agent->HasActiveConversation())
		{
			Agent->StartConversation(Velmora::EConversationMode::Code);
		}
	}
}

TEST_F(AgentQuestionTests, UndoRunsWhileATurnIsPaused)
{
	ASSERT_TRUE(AskUntilPaused("first create kept.md with \"x\", then create .envrc with \"y\""));
	EXPECT_TRUE(Exists("kept.md"));
	EXPECT_TRUE(Agent->CanUndo());
	EXPECT_TRUE(Agent->UndoToTransaction(Agent->GetCurrentTransactionId()));
	PumpUntilQuiet();
	EXPECT_FALSE(Exists("kept.md"));
	EXPECT_FALSE(Exists(".envrc"));
	EXPECT_EQ(Agent->GetState(), EConversationState::Cancelled);
	EXPECT_EQ(Agent->GetCurrentConversationMetadata()->GetMessageCount(), 0);
}

TEST_F(AgentQuestionTests, TheProgramAnswersForTheUser)
{
	// 1. Refused: the turn goes on to its end.
	ASSERT_TRUE(AskUntilPaused("create .envrc with \"x\""));
	EXPECT_FALSE(FAgentQuestions::Answer(OpenId + 1, EAgentAnswer::AllowOnce));
	const uint32 Answered = OpenId;
	EXPECT_TRUE(FAgentQuestions::Answer(Answered, EAgentAnswer::Refuse));
	EXPECT_FALSE(FAgentQuestions::Answer(Answered, EAgentAnswer::AllowOnce)) << "An answer counts once.";
	Finish();
	EXPECT_FALSE(Exists(".envrc"));
	EXPECT_TRUE(Holds(LastAnswer, "was not changed: you refused it")) << LastAnswer;

	// 2. Always: no question the next time, for this file alone.
	ASSERT_TRUE(AskUntilPaused("create .envrc with \"x\""));
	EXPECT_TRUE(FAgentQuestions::Answer(OpenId, EAgentAnswer::AllowAlways));
	Finish();
	EXPECT_TRUE(Exists(".envrc"));
	std::filesystem::remove(Project.PathOf(".envrc"));
	EXPECT_FALSE(AskUntilPaused("create .envrc with \"x\""));
	EXPECT_TRUE(Exists(".envrc"));
	EXPECT_TRUE(AskUntilPaused("create .bashrc with \"x\""));
	Agent->CancelConversation();

	struct stat Status = {};
	ASSERT_EQ(stat(RulesPath.c_str(), &Status), 0);
	EXPECT_EQ(Status.st_mode & 0777, 0600u);
}

TEST_F(AgentQuestionTests, WithoutAnybodyToAskWhatIsNotAllowedIsRefused)
{
	Velmora::FBuiltInAgentOptions Options;
	Options.bCanAsk = false;
	Options.AllowedCalls = { TEXT("create_file .vscode/") };
	Velmora::SetBuiltInAgentOptions(Options);
	Agent.Reset();
	CreateAgent();
	EXPECT_FALSE(AskUntilPaused("create .envrc with \"x\""));
	EXPECT_TRUE(Holds(LastAnswer, "nobody is there to be asked")) << LastAnswer;
	EXPECT_FALSE(Exists(".envrc"));
	EXPECT_FALSE(AskUntilPaused("create .vscode/tasks.json with \"x\""));
	EXPECT_TRUE(Exists(".vscode/tasks.json"));
}

TEST_F(AgentQuestionTests, BlanksAreAnsweredInOneSentence)
{
	EXPECT_EQ(Ask(" \n\t"), "Your message holds nothing but blanks, so there is nothing to do.");
	EXPECT_TRUE(ToolIds.empty());
	EXPECT_EQ(Utf8(Agent->GetCurrentTransactionId()), "");
	EXPECT_EQ(Agent->GetCurrentConversationMetadata()->GetMessageCount(), 2);
	EXPECT_EQ(Agent->GetState(), EConversationState::AwaitingInput);
}

TEST(PermissionRules, WhatCannotBeReadAllowsNothingAndStays)
{
	const std::string Path = testing::TempDir() + "velmora-rules-test/project.rules";
	std::filesystem::remove_all(std::filesystem::path(Path).parent_path());
	FPermissionRules Rules(Path, { "edit_file" });
	EXPECT_EQ(Rules.Add({ false, "edit_file", "secret" }), "");
	EXPECT_EQ(Rules.Judge("edit_file", "a"), EPermission::Allowed);
	// Longer than any list of rules.
	std::ofstream(Path, std::ios::app) << std::string(5 * 1024 * 1024, '\n');
	const auto Size = std::filesystem::file_size(Path);
	for (const char* Subject : { "a", "secret" })
	{
		EXPECT_EQ(Rules.Judge("edit_file", Subject), EPermission::Ask);
	}
	EXPECT_EQ(Rules.Add({ true, "edit_file", "b" }),
		"The rule was not stored, since the others in " + Path + " cannot be read: it is larger than 4 MB.");
	EXPECT_EQ(std::filesystem::file_size(Path), Size);
	std::filesystem::remove_all(std::filesystem::path(Path).parent_path());
}

TEST(PermissionRules, OfSeveralProgramsAllAreKept)
{
	constexpr int ProgramCount = 4;
	constexpr int RuleCount = 8;
	const std::string Path = testing::TempDir() + "velmora-rules-test/project.rules";
	std::filesystem::remove_all(std::filesystem::path(Path).parent_path());
	std::vector<std::thread> Programs;
	for (int Program = 0; Program < ProgramCount; ++Program)
	{
		Programs.emplace_back(
			[&Path, Program]
			{
				FPermissionRules Rules(Path);
				for (int Rule = 0; Rule < RuleCount; ++Rule)
				{
					EXPECT_EQ(Rules.Add({ false, "edit_file", std::to_string(Program) + '/' + std::to_string(Rule) }), "");
				}
			});
	}
	for (std::thread& Program : Programs)
	{
		Program.join();
	}
	EXPECT_EQ(FPermissionRules(Path).List().size(), static_cast<size_t>(ProgramCount * RuleCount));
	std::filesystem::remove_all(std::filesystem::path(Path).parent_path());
}

TEST(PermissionRules, DenyBeatsAllowAndPrefixesAreLiteral)
{
	const std::string Path = testing::TempDir() + "velmora-rules-test/project.rules";
	std::filesystem::remove_all(std::filesystem::path(Path).parent_path());
	FPermissionRules Rules(Path, { "read_file Docs/", "" });
	EXPECT_EQ(Rules.Add({ true, "edit_file", ".vscode/" }), "");
	EXPECT_EQ(Rules.Add({ false, "edit_file", ".vscode/tasks" }), "");
	EXPECT_EQ(Rules.Add({ true, "run_command", "make\ttest\\\n" }), "");
	EXPECT_EQ(Rules.Add({ true, "odd\ttool", "a" }), "");
	EXPECT_EQ(Rules.Add({ true, "connect", "https://model.example" }), "");
	const std::tuple<const char*, const char*, EPermission> Cases[] = {
		{ "edit_file", ".vscode/settings.json", EPermission::Allowed },
		{ "edit_file", ".vscode/tasks.json", EPermission::Denied },
		{ "edit_file", ".VSCODE/settings.json", EPermission::Ask },
		{ "edit_file", "a/.vscode/settings.json", EPermission::Ask },
		{ "delete_file", ".vscode/settings.json", EPermission::Ask },
		{ "run_command", "make\ttest\\\nall", EPermission::Allowed },
		{ "run_command", "make", EPermission::Ask },
		{ "odd\ttool", "ab", EPermission::Allowed },
		{ "connect", "https://model.example", EPermission::Allowed },
		{ "connect", "https://model.example.org", EPermission::Ask }, // A yes for one server is none for another.
		{ "read_file", "Docs/a.md", EPermission::Allowed },
		{ "read_file", "Doc", EPermission::Ask },
	};
	// Another process sees the same.
	const FPermissionRules Other(Path);
	for (const auto& [Tool, Subject, Permission] : Cases)
	{
		SCOPED_TRACE(std::string(Tool) + ' ' + Subject);
		EXPECT_EQ(Rules.Judge(Tool, Subject), Permission);
		EXPECT_TRUE(std::string(Tool) == "read_file" || Other.Judge(Tool, Subject) == Permission);
	}
	EXPECT_EQ(Rules.Remove({ false, "edit_file", ".vscode/tasks" }), "");
	EXPECT_EQ(Rules.Judge("edit_file", ".vscode/tasks.json"), EPermission::Allowed);

	// Lines that make no sense allow nothing.
	std::ofstream(Path) << "allow\nallow\t\t\nperhaps\tedit_file\t\nallow\tcreate_file\t\n";
	EXPECT_EQ(Rules.Judge("edit_file", "x"), EPermission::Ask);
	EXPECT_EQ(Rules.Judge("create_file", "x"), EPermission::Allowed);
	std::filesystem::remove_all(std::filesystem::path(Path).parent_path());
}
