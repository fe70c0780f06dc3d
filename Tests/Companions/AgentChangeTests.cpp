// A turn is cancelled between the change of a file and the end of its tool. Nobody outside can see that moment, so this file
// reaches past access control to wait until the journal has written the change down.

#include "AgentFixture.h"

#include "Agent/BuiltInAgent.h"
#include "Changes/ChangeJournal.h"
#include "Changes/ChangeLog.h"
#include "Changes/ChangeTools.h"
#include "History/AssetHistoryTracker.h"
#include "History/FileHistoryTracker.h"
#include "Host/HostFileNames.h"
#include "Host/HostProgress.h"
#include "Host/StoreLocation.h"
#include "Misc/Paths.h"

#include <fstream>
#include <iterator>

using Velmora::EConversationMode;

namespace
{
	/** The agent asked to change files, and to take it back. */
	class AgentChanges : public FAgentTest
	{
	protected:
		std::string ReadFile(const std::string& Path) const
		{
			std::ifstream File(Project.Root / Path, std::ios::binary);
			return std::string(std::istreambuf_iterator<char>(File), {});
		}

		/** What a tracker holds of the current conversation: "1 notes.md", in order. */
		template <typename FOperation>
		static std::vector<std::string> List(const TMap<FString, TMap<FString, TArray<FOperation>>>& All, const FString& ConversationId)
		{
			std::vector<std::string> Lines;
			if (const TMap<FString, TArray<FOperation>>* Groups = All.Find(ConversationId))
			{
				for (const auto& Group : *Groups)
				{
					for (const FOperation& Operation : Group.Value)
					{
						Lines.push_back(std::to_string(Operation.Action) + ' ' + Utf8(Operation.Path));
					}
				}
			}
			return Lines;
		}
		std::vector<std::string> Files() const { return List(FFileHistoryTracker::Get().GetAllFileOperations(), GetId()); }
		std::vector<std::string> Assets() const { return List(FAssetHistoryTracker::Get().GetAllAssetOperations(), GetId()); }
		FString GetId() const { return Agent->GetCurrentConversationMetadata()->Id; }
		int32 CountMessages() const { return Agent->GetCurrentConversationMetadata()->GetMessageCount(); }
	};
}

TEST_F(AgentChanges, ARequestRunsTheToolAndTellsIt)
{
	Project.Write("Source/A.cpp", "// before\r\nint Snail = 1;\r\n// after\r\n");
	const std::string Answer = Ask("replace \"Snail\" by \"Slug\" in A.cpp");
	EXPECT_EQ(ReadFile("Source/A.cpp"), "// before\r\nint Slug = 1;\r\n// after\r\n");
	EXPECT_EQ(EventsOf("start"),
		(std::vector<std::string>{ "edit_file {\"path\":\"Source/A.cpp\",\"old\":\"Snail\",\"new\":\"Slug\"} "
								   "{\"operation_type\":\"modify\",\"data_type\":\"File\"}" }));
	EXPECT_EQ(EventsOf("end"), (std::vector<std::string>{ "edit_file ok: Changed Source/A.cpp, 3 lines" }));
	EXPECT_TRUE(Holds(Answer,
		"Changed [Source/A.cpp:2](file:" + Project.PathOf("Source/A.cpp") +
			"#L2) as follows.\n```diff\n- int Snail = 1;\n+ int Slug = 1;\n```"))
		<< Answer;

	Ask("create notes/new.md with:\n```\nfirst\n\nsecond\n```");
	EXPECT_EQ(ReadFile("notes/new.md"), "first\n\nsecond\n");
	EXPECT_EQ(EventsOf("start"),
		(std::vector<std::string>{ "create_file {\"path\":\"notes/new.md\"} {\"operation_type\":\"create\",\"data_type\":\"File\"}" }));
	Ask("delete notes/new.md");
	EXPECT_EQ(EventsOf("start"),
		(std::vector<std::string>{ "delete_file {\"path\":\"notes/new.md\"} {\"operation_type\":\"delete\",\"data_type\":\"File\"}" }));
	EXPECT_FALSE(std::filesystem::exists(Project.Root / "notes/new.md"));

	Ask("delete ../outside.md");
	EXPECT_EQ(EventsOf("end"),
		(std::vector<std::string>{ "delete_file failed: Not changed: its path holds \"..\", which may lead out of the project" }));
	EXPECT_TRUE(Holds(LastAnswer, "was not changed")) << LastAnswer;
}

TEST_F(AgentChanges, OnlyAFileOfThatNameIsMeant)
{
	Project.Write("Docs/notes.md", "a");
	Project.Write("Source/notes.md", "a");
	Project.Write("Source/unique.md", "a");
	EXPECT_TRUE(Holds(Ask("delete notes.md"), "Several files are called `notes.md`. Which one do you mean?"));
	Ask("delete note");
	Ask("delete uniq.md");
	EXPECT_TRUE(std::filesystem::exists(Project.Root / "Source/unique.md"));
	Ask("delete UNIQUE.MD");
	EXPECT_FALSE(std::filesystem::exists(Project.Root / "Source/unique.md"));
	Ask("replace \"a\" by \"b\" in notes.md", { Project.PathOf("Source/notes.md") });
	EXPECT_EQ(ReadFile("Source/notes.md"), "b");
	Ask("append \"c\" to it", { "Docs/notes.md" });
	EXPECT_EQ(ReadFile("Docs/notes.md"), "a\nc\n");
	EXPECT_TRUE(Holds(Ask("delete it"), "Which file do you mean?"));
	EXPECT_TRUE(Holds(Ask("delete it", { "Docs/notes.md", "Source/notes.md" }), "Several files are attached."));

	// The prompt names what the user picked; of several of that name the attached one is read.
	EXPECT_TRUE(Holds(Ask("show notes.md", { "Source/notes.md" }), "[Source/notes.md]"));
}

TEST_F(AgentChanges, AdvisorsChangeNothing)
{
	Project.Write("a.md", "a");
	Agent->StartConversation(EConversationMode::Advisor);
	for (const char* Request : { "delete a.md", "write \"x\" to a.md", "create b.md with \"x\"" })
	{
		EXPECT_TRUE(Holds(Ask(Request), "In Advisor mode I change nothing on disk.")) << LastAnswer;
		EXPECT_TRUE(EventsOf("start").empty());
	}
	EXPECT_EQ(ReadFile("a.md"), "a");
	EXPECT_FALSE(std::filesystem::exists(Project.Root / "b.md"));
}

TEST_F(AgentChanges, OddNamesAndMissingFilesOfAttachments)
{
	const std::string Odd = "caf\xE9 \xFF.txt";
	const std::string Inside = Project.MakeName();
	Project.Write(Odd, Inside + "\n");
	Project.Write("cafe.txt", "wrong");
	const FString Path = HostFileNameFromBytes(Project.PathOf(Odd));
	const auto Send = [this](const FString& Prompt, const FString& File)
	{
		Events.clear();
		TArray<FString> Attached;
		Attached.Add(File);
		ASSERT_TRUE(Agent->SendMessage(Prompt, Attached));
		ASSERT_TRUE(PumpUntil([this] { return HasTurnEnded(); }));
	};
	Send(TEXT("what do you make of this?"), Path);
	EXPECT_TRUE(Holds(LastAnswer, Inside)) << LastAnswer;
	Send(FString(TEXT("show \"")) + HostFileNameFromBytes(Odd) + TEXT("\""), Path);
	EXPECT_TRUE(Holds(LastAnswer, Inside)) << LastAnswer;
	Send(TEXT("append \"x\" to it"), Path);
	EXPECT_EQ(ReadFile(Odd), Inside + "\nx\n");
	ASSERT_EQ(Files().size(), 1u);
	const FString Told = FFileHistoryTracker::Get().GetAllFileOperations().Find(GetId())->begin()->Value[0].Path;
	EXPECT_EQ(HostFileNameToBytes(FPaths::ConvertRelativePathToFull(Told)), Project.PathOf(Odd));

	Send(TEXT("explain this"), Text(Project.PathOf("gone.md")));
	EXPECT_EQ(EventsOf("start")[0], "read_file {\"path\":\"gone.md\"} {\"operation_type\":\"read\",\"data_type\":\"File\"}");
	EXPECT_EQ(EventsOf("end")[0], "read_file failed: Not read: it cannot be found");
	EXPECT_TRUE(Holds(LastAnswer, "Attached `" + Project.PathOf("gone.md").substr(0, 20))) << LastAnswer;
}

TEST_F(AgentChanges, AttachedFilesAreKnownByTheNamesThatAPickPutsIntoTheText)
{
	Project.Write("docs/my notes.md", "one\n");
	Project.Write("docs/it's \"so\" [x] `y`.md", "one\n");
	Project.Write("docs/plain.md", "one\n");
	Ask("append \"two\" to my notes.md", { Project.PathOf("docs/my notes.md") });
	EXPECT_EQ(ReadFile("docs/my notes.md"), "one\ntwo\n") << LastAnswer;
	Ask("append \"two\" to it's \"so\" [x] `y`.md", { Project.PathOf("docs/it's \"so\" [x] `y`.md") });
	EXPECT_EQ(ReadFile("docs/it's \"so\" [x] `y`.md"), "one\ntwo\n") << LastAnswer;
	Ask("plain.md append \"two\" to it", { Project.PathOf("docs/plain.md") });
	EXPECT_EQ(ReadFile("docs/plain.md"), "one\ntwo\n") << LastAnswer;
	Ask("first append \"three\" to my notes.md, then delete plain.md",
		{ Project.PathOf("docs/my notes.md"), Project.PathOf("docs/plain.md") });
	EXPECT_EQ(ReadFile("docs/my notes.md"), "one\ntwo\nthree\n") << LastAnswer;
	EXPECT_FALSE(std::filesystem::exists(Project.Root / "docs/plain.md"));
}

TEST_F(AgentChanges, TrackersKnowAChangeWhenItsToolEnds)
{
	Project.Write("Content/Heroes/BP_Hero.uasset", "binary");
	std::vector<std::string> Seen;
	AfterEvent = [this, &Seen]
	{
		if (Events.back().rfind("end ", 0) == 0)
		{
			Seen = Files();
		}
	};
	Ask("create notes.md with \"x\"");
	ASSERT_EQ(Seen.size(), 1u);
	EXPECT_EQ(Seen[0].substr(0, 2), "1 ");
	EXPECT_NE(Seen[0][2], '/') << "an absolute path would be taken for an asset";
	EXPECT_EQ(Utf8(FPaths::ConvertRelativePathToFull(Text(Seen[0].substr(2)))), Project.PathOf("notes.md"));
	AfterEvent = nullptr;

	Ask("append \"y\" to notes.md");
	Ask("delete Content/Heroes/BP_Hero.uasset");
	const FString Last = Agent->GetCurrentTransactionId();
	ASSERT_EQ(Files().size(), 2u);
	EXPECT_EQ(Files()[1].substr(0, 2), "2 ");
	EXPECT_EQ(Assets(), (std::vector<std::string>{ "3 /Game/Heroes/BP_Hero" }));
	EXPECT_TRUE(Agent->UndoToTransaction(Last));
	EXPECT_TRUE(Assets().empty());
	EXPECT_EQ(Files().size(), 2u);
	EXPECT_EQ(ReadFile("Content/Heroes/BP_Hero.uasset"), "binary");
}

TEST_F(AgentChanges, UndoRestoresFilesAndMessages)
{
	Project.Write("a.md", "one\n");
	EXPECT_EQ(Utf8(Agent->GetCurrentTransactionId()), "");
	Ask("hello");
	ASSERT_TRUE(Agent->SendMessage(TEXT("replace \"one\" by \"two\" in a.md"), {}));
	const FString Second = Agent->GetCurrentTransactionId();
	EXPECT_EQ(Second.Len(), 32);
	EXPECT_EQ(Utf8(Second).find_first_not_of("0123456789ABCDEF"), std::string::npos);
	EXPECT_FALSE(Agent->CanUndo());
	EXPECT_FALSE(Agent->UndoToTransaction(Second));
	ASSERT_TRUE(PumpUntil([this] { return HasTurnEnded(); }));
	EXPECT_TRUE(Agent->CanUndo());
	Ask("create b/c.md with \"x\"");
	EXPECT_NE(Utf8(Agent->GetCurrentTransactionId()), Utf8(Second));
	Project.Write("a.md", "by hand\n");
	EXPECT_EQ(CountMessages(), 6);

	Events.clear();
	ASSERT_TRUE(Agent->UndoToTransaction(Second));
	EXPECT_TRUE(Events.empty()) << "the front end cuts its rows first";
	EXPECT_EQ(ReadFile("a.md"), "one\n");
	EXPECT_EQ(ReadFile("a.conflict-1.md"), "by hand\n");
	EXPECT_FALSE(std::filesystem::exists(Project.Root / "b"));
	EXPECT_EQ(CountMessages(), 2);
	EXPECT_TRUE(Files().empty());
	EXPECT_EQ(Utf8(Agent->GetCurrentTransactionId()), "");
	PumpUntilQuiet();
	ASSERT_EQ(EventsOf("progress").size(), 1u);
	EXPECT_TRUE(Holds(EventsOf("progress")[0], "`a.md` had been changed by hand since.")) << EventsOf("progress")[0];

	Events.clear();
	EXPECT_FALSE(Agent->UndoToTransaction(Second));
	EXPECT_EQ(
		EventsOf("error"), (std::vector<std::string>{ "What was done after that message is not known any more, so nothing was undone." }));

	// The store holds the shortened conversation.
	const FString Id = GetId();
	Agent->StartConversation(EConversationMode::General);
	ASSERT_TRUE(Agent->LoadConversation(Id));
	EXPECT_EQ(CountMessages(), 2);
}

TEST_F(AgentChanges, AnUndoOfManyFilesIsAWorkersAndItsProgressIsShown)
{
	constexpr int Count = 300;
	Ask("hello");
	const FString Id = GetId();
	Ask("create many/first.md with \"x\"");
	Velmora::FChangeJournal& Journal = *static_cast<Velmora::FBuiltInAgent*>(Agent.Get())->Session->Journal;
	const FString Transaction = Agent->GetCurrentTransactionId();
	Journal.SetDurable(false);
	Velmora::FChangeTools Tools(Project.Root.native(), Journal, Utf8(Transaction), Velmora::EAccessMethod::Automatic);
	Tools.SetDurable(false);
	for (int Number = 1; Number < Count; ++Number)
	{
		ASSERT_TRUE(Tools.WriteFile("many/" + std::to_string(Number) + ".txt", "x").bSuccess);
	}
	// Nothing can be undone before it is shown.
	std::unique_lock Held(Journal.WorkMutex);
	std::string Before;
	std::string After;
	float Last = -1.0f;
	FHostProgress::SetShowHook(
		[&](const FHostLongWork& Work)
		{
			Before = Utf8(Work.GetMessage());
			EXPECT_EQ(Work.GetFraction(), 0.0f);
			// Frames run, and nothing that they do may come in between.
			EXPECT_FALSE(Agent->CanUndo());
			EXPECT_FALSE(Agent->UndoToTransaction(Transaction));
			EXPECT_FALSE(Agent->SendMessage(TEXT("hello"), {}));
			EXPECT_FALSE(Agent->LoadConversation(Id));
			EXPECT_FALSE(Agent->DeleteConversationHistory(Id));
			EXPECT_EQ(Utf8(Agent->StartConversation(EConversationMode::General)), "");
			EXPECT_EQ(Utf8(GetId()), Utf8(Id));
			Held.unlock();
			while (!Work.WaitForEnd(0.0005))
			{
				EXPECT_GE(Work.GetFraction(), Last);
				Last = Work.GetFraction();
			}
			After = Utf8(Work.GetMessage());
			Last = Work.GetFraction();
		});
	EXPECT_TRUE(Agent->UndoToTransaction(Transaction));
	FHostProgress::SetShowHook(nullptr);
	EXPECT_EQ(Before, "Undoing the changes …");
	EXPECT_EQ(After, "Undoing the changes of 300 files …");
	EXPECT_EQ(Last, 1.0f);
	EXPECT_FALSE(std::filesystem::exists(Project.Root / "many"));
	EXPECT_EQ(CountMessages(), 2);
	EXPECT_TRUE(Agent->CanUndo());
	EXPECT_NE(Ask("hello"), "(refused)");
}

TEST_F(AgentChanges, AnUndoThatTheLastProcessDidNotFinishTakesItsMessagesToo)
{
	struct FCase
	{
		std::vector<std::string> Dropped;
		int32 Left;
		const char* Told;
	};
	const FCase Cases[] = {
		// The store may lack the answer.
		{ { "second", "answer", "more" }, 2, "the files and the conversation are as they were before the request." },
		{ { "second", "answer" }, 2, "the files and the conversation are as they were before the request." },
		{ { "second" }, 4,
			"the files are as they were before the request. Its conversation had gone on by then, so all of its messages stay." },
		{ { "other", "answer" }, 4,
			"the files are as they were before the request. Its conversation had gone on by then, so all of its messages stay." },
	};
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE(Case.Dropped.size());
		Ask("first");
		const std::string Answer = (Ask("second"), LastAnswer);
		const FString Id = GetId();
		Agent.Reset();
		PumpUntilQuiet();

		Velmora::FLoggedUndo Undo;
		Undo.ConversationId = Utf8(Id);
		Undo.MessageIndex = 2;
		for (const std::string& Dropped : Case.Dropped)
		{
			Undo.MessageMarks.push_back(Velmora::HashMessageText(Dropped == "answer" ? Answer : Dropped));
		}
		const std::filesystem::path Dead = HostFileNameToBytes(Velmora::GetStoreLocation().GetUndoFolder()) + "/dead";
		std::filesystem::create_directories(Dead / "contents");
		std::ofstream(Dead / "lock").flush();
		Velmora::FChangeLog Log;
		ASSERT_TRUE(Log.Create(Dead.native()));
		ASSERT_EQ(Log.AppendUndo(Undo), "");

		Agent = FAgentBuilder::CreateDefault();
		Listen();
		Events.clear();
		ASSERT_TRUE(Agent->LoadConversation(Id));
		PumpUntilQuiet();
		EXPECT_EQ(EventsOf("progress"),
			(std::vector<std::string>{
				std::string("An undo had been cut short when the program ended. It is finished now: ") + Case.Told }));
		EXPECT_EQ(CountMessages(), Case.Left);
		EXPECT_GE(EventsOf("loaded").size(), 1u);
		EXPECT_FALSE(std::filesystem::exists(Dead));
		Agent->StartConversation(EConversationMode::General);
		ASSERT_TRUE(Agent->LoadConversation(Id));
		EXPECT_EQ(CountMessages(), Case.Left);
		Agent->StartConversation(EConversationMode::General);
	}
}

TEST_F(AgentChanges, AChangeOfACancelledTurnIsToldAndUndone)
{
	Velmora::FBuiltInAgentOptions Options;
	Options.MinimumToolSeconds = 5.0;
	Velmora::SetBuiltInAgentOptions(Options);
	ASSERT_TRUE(Agent->SendMessage(TEXT("create a.md with \"x\""), {}));
	const FString Id = Agent->GetCurrentTransactionId();
	ASSERT_TRUE(PumpUntil([this] { return std::filesystem::exists(Project.Root / "a.md"); }));
	ASSERT_TRUE(PumpUntil([this] { return !EventsOf("start").empty(); }));
	Velmora::FChangeJournal& Journal = *static_cast<Velmora::FBuiltInAgent*>(Agent.Get())->Session->Journal;
	ASSERT_TRUE(PumpUntil(
		[&Journal]
		{
			const std::scoped_lock Lock(Journal.ListMutex);
			return !Journal.Performed.empty();
		}));
	Agent->CancelConversation();
	PumpUntilQuiet();
	EXPECT_EQ(EventsOf("end"), (std::vector<std::string>{ "create_file failed: Stopped by the user. Its change had been made by then." }));
	EXPECT_EQ(Files().size(), 1u);
	EXPECT_TRUE(Agent->UndoToTransaction(Id));
	EXPECT_FALSE(std::filesystem::exists(Project.Root / "a.md"));
	EXPECT_TRUE(Files().empty());
}

TEST_F(AgentChanges, NamesOfAnyCharacterAreReadAndChanged)
{
	for (const std::string Name : { "back\\slash.txt", "back`quote.txt", "st*r.txt", "why?", "what?.txt", "bell\x07.txt", "tab\tin.txt",
			 "line\nin.txt", "both\"`.txt", "folder\\deeper/file.txt", "[x](y).txt", "-.txt", "#.txt" })
	{
		SCOPED_TRACE(Name);
		const FString Id = Agent->StartConversation(EConversationMode::General);
		Project.Write(Name, "int Snail;\n");
		const std::string Seen = Ask("show it", { Name });
		EXPECT_TRUE(Holds(Seen, "int Snail;")) << Seen;
		const std::string First = Ask("append \"one\" to it", { Name });
		EXPECT_EQ(ReadFile(Name), "int Snail;\none\n") << First;
		// As the prompt box writes it, and in quotes without being attached.
		const std::string Second = Ask("append \"two\" to " + Name, { Name });
		EXPECT_EQ(ReadFile(Name), "int Snail;\none\ntwo\n") << Second;
		if (Name.find_first_of("\"\x07\n") == std::string::npos)
		{
			const std::string Third = Ask("append \"three\" to \"" + Name + "\"");
			EXPECT_EQ(ReadFile(Name), "int Snail;\none\ntwo\nthree\n") << Third;
		}
		const std::string Last = Ask("delete it", { Name });
		EXPECT_FALSE(std::filesystem::exists(Project.Root / Name)) << Last;
		if (Name.find_first_of("\x07\t\n") == std::string::npos)
		{
			EXPECT_TRUE(Holds(Last, Name)) << Last;
		}
	}
	// What sets folders apart elsewhere still does where nothing bears that name.
	Project.Write("Source/A.cpp", "int Snail;\n");
	Ask("append \"one\" to \"Source\\A.cpp\"");
	EXPECT_EQ(ReadFile("Source/A.cpp"), "int Snail;\none\n");
}
