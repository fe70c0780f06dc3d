#include "CodeIndexFixture.h"
#include "Host/HostLog.h"

#include <mutex>

namespace
{
	using CodeIndex = FCodeIndexTest;

	/** What the whole of the log says since the test began. */
	class FLogLines
	{
	public:
		FLogLines()
			: Sink(FHostLog::AddSink(
				  [this](const FHostLogLine& Line)
				  {
					  const std::scoped_lock Lock(Mutex);
					  All += Utf8(Line.Text) + '\n';
				  }))
		{
		}
		~FLogLines() { FHostLog::RemoveSink(Sink); }

		bool Hold(const std::string& Part)
		{
			const std::scoped_lock Lock(Mutex);
			return All.find(Part) != std::string::npos;
		}

	private:
		std::mutex Mutex;
		std::string All;
		int32 Sink;
	};
}

TEST_F(CodeIndex, AnswersWithoutTheSources)
{
	const std::string Class = "F" + Project.MakeName();
	Project.Write("Source/Thing.h",
		"#pragma once\nnamespace Game\n{\n\tclass VELMORA_API " + Class +
			"\n\t{\n\tpublic:\n\t\tUPROPERTY(Config)\n\t\tint Health = 3;\n\t\tvoid Run();\n\t\tenum class EState { Idle };\n\t};\n}\n");
	Project.Write("Source/Thing.cpp", "#include \"Thing.h\"\n\nvoid Game::" + Class + "::Run()\n{\n}\n");
	Project.Write("Tools/Make.cs", "namespace Tools\n{\n\tclass " + Class + "Maker { void Run() { } }\n}\n");
	Project.Write("Tools/make.py", "class Maker:\n\tdef run(self):\n\t\tpass\n");
	Project.Write("Config/Game.ini", "[/Script/Game.Rules]\nMaxSnails=7\n");
	Project.Write("Game.uproject", "{ \"Modules\": [ { \"LoadingPhase\": \"Default\" } ], \"Numbers\": [ 1, 2 ] }\n");
	Project.Write("notes.txt", "class FNotIndexed { };\n");
	Project.Write("Saved/Old.cpp", "class FIgnored { };\n");
	Project.Write(".gitignore", "/Made/\n");
	Project.Write("Made/Made.cpp", "class FMade { };\n");
	OpenAndBuild();
	EXPECT_EQ(Problems, FLines());
	const Velmora::CodeIntel::FIndexStats Stats = Manager().GetIndexStats();
	EXPECT_TRUE(Stats.bIsReady);
	EXPECT_TRUE(Manager().IsIndexReady());
	EXPECT_EQ(Stats.TotalFiles, 6);
	EXPECT_EQ(Stats.FailedFiles, 0);
	EXPECT_GT(Stats.EstimatedSymbols, 10);
	EXPECT_GT(Stats.IndexSizeMB, 0.0);
	EXPECT_GT(Stats.LastBuildTimeSeconds, 0.0);
	EXPECT_EQ(Utf8(Stats.RootPath), Project.Root.native());
	EXPECT_EQ(
		std::filesystem::status(GetIndexPath()).permissions(), std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);

	std::filesystem::remove_all(Project.Root);
	EXPECT_EQ(Find(Class), FLines({ "Source/Thing.h:4 class " + Class + " [Game]" }));
	EXPECT_EQ(Find("RUN").front(), "Source/Thing.cpp:3 function Run [Game::" + Class + "]") << "definitions before declarations";
	EXPECT_EQ(Find("run").size(), 4u);
	EXPECT_EQ(Find("Maker.run"), FLines({ "Tools/make.py:2 member run [Maker]" }));
	EXPECT_EQ(Find(Class + "::Run"),
		FLines({ "Source/Thing.cpp:3 function Run [Game::" + Class + "]", "Source/Thing.h:9 prototype Run [Game::" + Class + "]" }));
	EXPECT_EQ(Find("Idle"), FLines({ "Source/Thing.h:10 enumerator Idle [Game::" + Class + "::EState]" }));
	EXPECT_EQ(Find("MaxSnails"), FLines({ "Config/Game.ini:2 key MaxSnails [/Script/Game.Rules]" }));
	EXPECT_EQ(Find("LoadingPhase").size(), 1u);
	EXPECT_EQ(Find("0"), FLines()) << "places in an array are no symbols";
	for (const char* const Absent : { "FNotIndexed", "FIgnored", "FMade", "UPROPERTY", "", "%", "' OR 1=1" })
	{
		EXPECT_EQ(Find(Absent), FLines()) << Absent;
	}
	const auto Prefix = FControl::FindSymbol(Class.substr(0, Class.size() - 1), 50);
	EXPECT_FALSE(Prefix.bIsExact);
	EXPECT_EQ(Prefix.Symbols.size(), 2u);
	const auto Outline = FControl::Outline("Source/Thing.h", 100);
	EXPECT_TRUE(Outline.bIsExact);
	EXPECT_EQ(Outline.Symbols.size(), 6u);
	EXPECT_EQ(Outline.Symbols.front().Name, "Game");
	EXPECT_FALSE(FControl::Outline("notes.txt", 100).bIsExact);
}

TEST_F(CodeIndex, IsFoundAgainByTheNextSession)
{
	Project.Write("A.cpp", "class FKept { };\n");
	OpenAndBuild();
	const int32 Symbols = Manager().GetIndexStats().EstimatedSymbols;
	FControl::Shutdown();
	EXPECT_FALSE(Manager().IsInitialized());
	EXPECT_EQ(Find("FKept"), FLines());
	Options.Extractor.Program = TEXT("/nonexistent/extractor");
	FControl::Initialize(Options);
	EXPECT_TRUE(FControl::WaitUntilOpened(30.0));
	EXPECT_TRUE(Manager().IsIndexReady());
	EXPECT_EQ(Manager().GetIndexStats().EstimatedSymbols, Symbols);
	EXPECT_EQ(Find("FKept"), FLines({ "A.cpp:1 class FKept" }));

	// Of another folder it would tell lies.
	FTemporaryProject Other;
	Options.ProjectFolder = Text(Other.Root.native());
	Open();
	EXPECT_FALSE(Manager().IsIndexReady());
}

TEST_F(CodeIndex, BuildsByItselfOnlyWhenAskedAndOnlyOnce)
{
	Project.Write("A.cpp", "class FKept { };\n");
	Open();
	EXPECT_FALSE(Manager().IsIndexReady());
	Options.bBuildWhenMissing = true;
	Open();
	EXPECT_TRUE(Manager().IsIndexReady());
	// Next time only what has changed is read.
	Project.Write("B.cpp", "class FNew { };\n");
	std::filesystem::remove(Project.Root / "A.cpp");
	Open();
	EXPECT_EQ(Find("FNew"), FLines({ "B.cpp:1 class FNew" }));
	EXPECT_EQ(Find("FKept"), FLines());
}

TEST_F(CodeIndex, FollowsSavedFiles)
{
	Project.Write("Source/A.cpp", "class FBefore { };\n");
	Project.Write("Source/Sub/B.cpp", "class FGone { };\n");
	OpenAndBuild();
	EXPECT_TRUE(Manager().IsReindexerRunning());
	Velmora::FProjectFileCache::Get().RefreshCache();
	Settle();
	Project.Write("Source/A.cpp", "\nclass FAfterwards { };\n");
	Project.Write("Source/New.py", "class New: pass\n");
	std::filesystem::remove_all(Project.Root / "Source" / "Sub");
	EXPECT_TRUE(WaitUntil([] { return Find("FAfterwards").size() == 1 && Find("New").size() == 1 && Find("FGone").empty(); }));
	EXPECT_EQ(Find("FBefore"), FLines());
	EXPECT_TRUE(WaitUntil([] { return Manager().GetReindexerQueueSize() == 0 && Manager().GetIndexStats().TotalFiles == 2; }));
	EXPECT_EQ(Manager().GetIndexStats().EstimatedSymbols, 2);
}

TEST_F(CodeIndex, ReconcilingCountsWhatIsGoneAndWhatIsNew)
{
	Project.Write("Gone1.cpp", "class FGone1 { };\n");
	Project.Write("Gone2.cpp", "class FGone2 { };\n");
	Project.Write("Same.cpp", "class FSame { };\n");
	Project.Write("Changed.cpp", "class FOld { };\n");
	OpenAndBuild();
	std::filesystem::remove(Project.Root / "Gone1.cpp");
	std::filesystem::remove(Project.Root / "Gone2.cpp");
	Project.Write("New.cpp", "class FNew { };\n");
	Project.Write("Changed.cpp", "class FChanged { };\n");
	std::vector<std::pair<int32, int32>> Answers;
	const auto Done = [&Answers](int32 Deleted, int32 New)
	{
		EXPECT_TRUE(IsInGameThread());
		Answers.emplace_back(Deleted, New);
	};
	Manager().ReconcileFileChangesAsync(Done);
	Settle();
	EXPECT_EQ(Answers, (std::vector<std::pair<int32, int32>>{ { 2, 2 } }));
	EXPECT_EQ(Find("FNew").size() + Find("FChanged").size() + Find("FSame").size(), 3u);
	EXPECT_EQ(Find("FGone1").size() + Find("FGone2").size() + Find("FOld").size(), 0u);
	Manager().ReconcileFileChangesAsync(Done);
	Settle();
	EXPECT_EQ(Answers.back(), (std::pair<int32, int32>{ 0, 0 }));
	Manager().ReconcileFileChangesAsync(Done);
	FControl::Shutdown();
	Settle();
	EXPECT_EQ(Answers.size(), 3u) << "answered exactly once, also at the end";
}

TEST_F(CodeIndex, OddFileNames)
{
	const FLines Names = { "a b.cpp", "line\nfeed.cpp", "not\xFFutf8.cpp", "-option.cpp", "#hash.cpp", "back\\slash.cpp", "tab\t.cpp",
		"quote\".cpp", "umlaut-\xC3\xBC.cpp", "big.CPP" };
	for (size_t Index = 0; Index < Names.size(); ++Index)
	{
		Project.Write("Source/" + Names[Index], "class FOdd" + std::to_string(Index) + " { };\n");
	}
	OpenAndBuild();
	for (size_t Index = 0; Index < Names.size(); ++Index)
	{
		const std::string Class = "FOdd" + std::to_string(Index);
		EXPECT_EQ(Find(Class), FLines({ "Source/" + Names[Index] + ":1 class " + Class }));
	}
	EXPECT_EQ(Manager().GetIndexStats().FailedFiles, 0);
}

TEST_F(CodeIndex, AMissingExtractorIsToldWithThePackageAndKeepsTheLastIndex)
{
	Project.Write("A.cpp", "class FKept { };\n");
	OpenAndBuild();
	for (const char* const Program : { "/nonexistent/extractor", "false" })
	{
		SCOPED_TRACE(Program);
		Problems.clear();
		Options.Extractor.Program = Text(Program);
		FLogLines Log;
		OpenAndBuild();
		ASSERT_EQ(Problems.size(), 1u);
		EXPECT_NE(Problems.front().find("Install the package universal-ctags."), std::string::npos) << Problems.front();
		EXPECT_NE(Problems.front().find(Program), std::string::npos) << Problems.front();
		EXPECT_TRUE(Log.Hold("universal-ctags"));
		EXPECT_TRUE(Manager().IsIndexReady());
		EXPECT_EQ(Find("FKept"), FLines({ "A.cpp:1 class FKept" }));
	}
	Options.Extractor.Program = TEXT("/nonexistent/extractor");
	Open();
	Problems.clear();
	Project.Write("B.cpp", "class FLater { };\n");
	for (int Round = 0; Round < 3; ++Round)
	{
		Manager().ReconcileFileChangesAsync(nullptr);
		Settle();
		Settle();
	}
	ASSERT_EQ(Problems.size(), 1u) << "a fault that lasts is told once";
	EXPECT_NE(Problems.front().find("The project index is not up to date."), std::string::npos) << Problems.front();

	std::filesystem::remove(GetIndexPath());
	OpenAndBuild();
	EXPECT_FALSE(Manager().IsIndexReady());
	EXPECT_FALSE(Manager().IsBuilding());
}

TEST_F(CodeIndex, FilesThatCrashOrHangTheExtractorAreLeftOutAndNamed)
{
	for (int Index = 0; Index < 20; ++Index)
	{
		Project.Write("Source/File" + std::to_string(Index) + ".cpp", "class FGood" + std::to_string(Index) + " { };\n");
	}
	Project.Write("Source/Crash.cpp", "class FCrash { };\n");
	Project.Write("Source/Hang.cpp", "class FHang { };\n");
	Project.Write("Source/Flood.cpp", "class FFlood { };\n");
	Project.Write("Source/Huge.cpp", std::string(9 * 1024 * 1024, ' ') + "class FHuge { };\n");
	UseScript("list=$(mktemp)\n"
			  "trap 'rm -f \"$list\"' EXIT\n"
			  "case \" $* \" in *' -L '*) cat > \"$list\" ;; *) for last in \"$@\"; do :; done; echo \"$last\" > \"$list\" ;; esac\n"
			  "if grep -q Crash.cpp \"$list\"; then rm -f \"$list\"; kill -SEGV $$; fi\n"
			  "if grep -q Hang.cpp \"$list\"; then rm -f \"$list\"; sleep 600 & wait; fi\n"
			  "if grep -q Flood.cpp \"$list\"; then rm -f \"$list\"; exit 3; fi\n"
			  "ctags --options=NONE --output-format=json -f - --sort=no --quiet=yes --tag-relative=no --fields=NFnKs -L \"$list\"\n");
	Options.Extractor.BatchSeconds = 0.4;
	Options.Extractor.FileSeconds = 0.02;
	FLogLines Log;
	OpenAndBuild();
	EXPECT_TRUE(Manager().IsIndexReady());
	EXPECT_EQ(Manager().GetIndexStats().TotalFiles, 20);
	EXPECT_EQ(Manager().GetIndexStats().FailedFiles, 4);
	for (int Index = 0; Index < 20; ++Index)
	{
		EXPECT_EQ(Find("FGood" + std::to_string(Index)).size(), 1u) << Index;
	}
	for (const char* const Bad : { "Crash", "Hang", "Flood", "Huge" })
	{
		EXPECT_EQ(Find(std::string("F") + Bad), FLines()) << Bad;
		EXPECT_TRUE(Log.Hold(std::string("Source/") + Bad + ".cpp is not in the code index")) << Bad;
	}
}

TEST_F(CodeIndex, AnExtractorThatFailsOnEverythingEndsTheBuild)
{
	for (int Index = 0; Index < 100; ++Index)
	{
		Project.Write("File" + std::to_string(Index) + ".cpp", "class F { };\n");
	}
	UseScript("case \" $* \" in *' -L '*) [ -z \"$(cat)\" ] && exit 0 ;; esac\nexit 9\n");
	OpenAndBuild();
	EXPECT_FALSE(Manager().IsIndexReady());
	ASSERT_EQ(Problems.size(), 1u);
	EXPECT_NE(Problems.front().find("fails on every file"), std::string::npos) << Problems.front();
}

TEST_F(CodeIndex, AnExtractorThatAnswersWithNothingOrGarbageIsToldAndTheOldIndexStays)
{
	const FLines Kept = { "A.cpp:1 class FKept" };
	for (const char* const Body :
		{ "cat > /dev/null < /dev/null\n", "echo 'no tag of ours'\n", "echo '{}'\n", "printf '{\"_type\": \"tag\", \"na'\n",
			"printf '{\"_type\": \"tag\", \"name\": \"FOther\", \"path\": \"A.cpp\", \"line\": 1, \"kind\": \"class\"}\\nnonsense\\n'\n" })
	{
		SCOPED_TRACE(Body);
		Options.Extractor.Program = TEXT("ctags");
		std::filesystem::remove(GetIndexPath());
		Project.Write("A.cpp", "class FKept { };\n");
		Project.Write("Note.cpp", "// Nothing in it.\n");
		OpenAndBuild();
		ASSERT_EQ(Find("FKept"), Kept);
		UseScript(Body);
		Problems.clear();
		OpenAndBuild();
		ASSERT_EQ(Problems.size(), 1u);
		EXPECT_NE(Problems.front().find("A.cpp"), std::string::npos) << Problems.front();
		EXPECT_NE(Problems.front().find("The earlier index stays in use."), std::string::npos) << Problems.front();
		EXPECT_EQ(Find("FKept"), Kept);

		// The same for a file that was changed meanwhile.
		Problems.clear();
		Project.Write("A.cpp", "class FKept { int New; };\n");
		Manager().ReconcileFileChangesAsync(nullptr);
		Settle();
		Settle();
		ASSERT_EQ(Problems.size(), 1u);
		EXPECT_NE(Problems.front().find("A.cpp"), std::string::npos) << Problems.front();
		EXPECT_EQ(Find("FKept"), Kept);
	}
	// Taken out by somebody, with an extractor that works: that is no fault.
	Options.Extractor.Program = TEXT("ctags");
	Open();
	Problems.clear();
	Project.Write("A.cpp", "// All gone.\n");
	Manager().ReconcileFileChangesAsync(nullptr);
	Settle();
	Settle();
	EXPECT_EQ(Problems, FLines());
	EXPECT_EQ(Find("FKept"), FLines());
}

TEST_F(CodeIndex, ADamagedFileIsSetAsideAndBuiltAnew)
{
	for (int Index = 0; Index < 50; ++Index)
	{
		Project.Write(
			"File" + std::to_string(Index) + ".cpp", "class FName" + std::to_string(Index) + " { int First; int Second; int Third; };\n");
	}
	OpenAndBuild();
	FControl::Shutdown();
	std::string Bytes = ReadBytes(GetIndexPath());
	ASSERT_GT(Bytes.size(), 12000u);
	std::string Torn = Bytes;
	Torn.replace(5000, 6000, std::string(6000, '\x5A'));
	const std::pair<const char*, std::string> Cases[] = {
		{ "no database at all", "this is a shopping list\n" + std::string(2000, '-') },
		{ "pages overwritten", Torn },
		{ "cut short", Bytes.substr(0, Bytes.size() / 2) },
	};
	for (const auto& [Why, Content] : Cases)
	{
		SCOPED_TRACE(Why);
		Problems.clear();
		std::ofstream(GetIndexPath(), std::ios::binary) << Content;
		Open();
		EXPECT_TRUE(Manager().IsIndexReady());
		EXPECT_EQ(Find("FName7"), FLines({ "File7.cpp:1 class FName7" }));
		ASSERT_EQ(Problems.size(), 1u);
		EXPECT_NE(Problems.front().find("damaged"), std::string::npos) << Problems.front();
		EXPECT_EQ(ReadBytes(GetIndexPath() + ".damaged"), Content) << "nothing is thrown away";
		FControl::Shutdown();
	}
}

TEST_F(CodeIndex, ShuttingDownEndsABuildAtOnceAndKeepsTheLastIndex)
{
	Project.Write("A.cpp", "class FKept { };\n");
	OpenAndBuild();
	Project.Write("A.cpp", "class FReplacement { };\n");
	const std::filesystem::path Mark = Folder / "pid";
	UseScript("case \" $* \" in *' -L '*) [ -z \"$(cat)\" ] && exit 0 ;; esac\nsleep 600 &\necho $! > '" + Mark.native() + "'\nwait\n");
	Options.Extractor.BatchSeconds = 600.0;
	Open();
	std::thread Builder([] { Manager().RebuildIndex(true); });
	EXPECT_TRUE(WaitUntil([&] { return !ReadBytes(Mark).empty(); }));
	EXPECT_TRUE(Manager().IsBuilding());
	EXPECT_EQ(Find("FKept").size(), 1u) << "the last index answers during a build";
	const auto Start = std::chrono::steady_clock::now();
	FControl::Shutdown();
	EXPECT_LT(std::chrono::steady_clock::now() - Start, std::chrono::seconds(5));
	Builder.join();
	const pid_t Grandchild = std::stoi(ReadBytes(Mark));
	EXPECT_TRUE(WaitUntil(
		[Grandchild]
		{
			// Ended, or ended and not yet collected by whoever inherited it.
			std::ifstream Status("/proc/" + std::to_string(Grandchild) + "/stat");
			const std::string Words(std::istreambuf_iterator<char>(Status), {});
			return Words.empty() || Words.find(") Z ") != std::string::npos;
		}))
		<< "the program's whole group is gone";
	Settle();
	EXPECT_EQ(Problems, FLines()) << "ending is no failure";
	Options.Extractor = Velmora::CodeIntel::FExtractorOptions();
	Open();
	EXPECT_EQ(Find("FKept"), FLines({ "A.cpp:1 class FKept" }));
}

TEST_F(CodeIndex, WhatAKilledBuildLeavesBehindIsTheLastIndex)
{
	std::string Many;
	for (int Index = 0; Index < 30000; ++Index)
	{
		Many += "int FirstVariableOfTheMadeFile" + std::to_string(Index) + ";\n";
	}
	Project.Write("A.cpp", "class FKept { };\n");
	OpenAndBuild();
	Project.Write("A.cpp", "class FReplacement { };\n");
	for (int Index = 0; Index < 10; ++Index)
	{
		Project.Write("Many" + std::to_string(Index) + ".cpp", Many);
	}
	// The last file never ends, and by then what was built is more than is kept in memory. Its odd name makes it an argument.
	Project.Write("Z\tHang.cpp", "int Last;\n");
	UseScript("case \"$*\" in *Hang.cpp) sleep 600 ;; esac\nexec ctags \"$@\"\n");
	Options.Extractor.BatchSeconds = 600.0;
	Options.Extractor.BatchFiles = 1;
	Open();
	std::thread Builder([] { Manager().RebuildIndex(true); });
	const std::string Log = GetIndexPath() + "-wal";
	EXPECT_TRUE(WaitUntil([&Log] { return std::filesystem::exists(Log) && std::filesystem::file_size(Log) > 1024u * 1024; }));
	// The files as they are when the process is gone all at once.
	const std::filesystem::path Left = Folder / "left";
	std::filesystem::create_directories(Left);
	std::filesystem::copy_file(GetIndexPath(), Left / "project.index.db");
	std::filesystem::copy_file(Log, Left / "project.index.db-wal");
	FControl::Shutdown();
	Builder.join();
	Options.ProjectIndexPath = Text((Left / "project.index.db").native());
	Options.Extractor = Velmora::CodeIntel::FExtractorOptions();
	Open();
	EXPECT_TRUE(Manager().IsIndexReady());
	EXPECT_EQ(Find("FKept"), FLines({ "A.cpp:1 class FKept" }));
	EXPECT_EQ(Find("FReplacement"), FLines());
	EXPECT_EQ(Problems, FLines());
}

TEST_F(CodeIndex, TwoRootsDoNotMix)
{
	Project.Write("A.cpp", "class FMine { };\n");
	std::filesystem::create_directories(Folder / "engine" / "Runtime");
	std::ofstream(Folder / "engine" / "Runtime" / "E.h") << "class UTheirs { };\n";
	OpenAndBuild();
	EXPECT_FALSE(Manager().IsEngineIndexInitialized());
	Manager().RebuildEngineIndex(true);
	EXPECT_FALSE(Manager().IsEngineIndexReady()) << "not before it was initialised";
	Manager().InitializeEngineIndex();
	EXPECT_TRUE(Manager().IsEngineIndexInitialized());
	Manager().RebuildEngineIndex(true);
	Settle();
	EXPECT_TRUE(Manager().IsEngineIndexReady());
	EXPECT_TRUE(Manager().IsEngineReindexerRunning());
	EXPECT_EQ(Find("UTheirs", EIndexKind::Engine), FLines({ "Runtime/E.h:1 class UTheirs" }));
	EXPECT_EQ(Find("UTheirs"), FLines());
	EXPECT_EQ(Find("FMine", EIndexKind::Engine), FLines());
	int Answers = 0;
	std::ofstream(Folder / "engine" / "Runtime" / "F.h") << "class UMore { };\n";
	Manager().ReconcileEngineFileChangesAsync([&Answers](int32 Deleted, int32 New) { Answers += Deleted == 0 && New == 1 ? 1 : 100; });
	Settle();
	EXPECT_EQ(Answers, 1);
	EXPECT_EQ(Find("UMore", EIndexKind::Engine).size(), 1u);

	EXPECT_GT(Manager().GetEngineIndexStats().IndexSizeMB, 0.0);
	Manager().ClearEngineIndex();
	EXPECT_FALSE(Manager().IsEngineIndexReady());
	EXPECT_EQ(Manager().GetEngineIndexStats().TotalFiles, 0);
	EXPECT_EQ(Find("UTheirs", EIndexKind::Engine), FLines());
	Settle();
	EXPECT_FALSE(std::filesystem::exists(Folder / "engine.index.db"));
	EXPECT_EQ(Find("FMine").size(), 1u);
	Manager().RebuildEngineIndex(true);
	EXPECT_EQ(Find("UMore", EIndexKind::Engine).size(), 1u);
}

TEST_F(CodeIndex, CompactingShrinksTheFileAndLosesNothing)
{
	std::string Big;
	for (int Index = 0; Index < 5000; ++Index)
	{
		Big += "int Variable" + std::to_string(Index) + ";\n";
	}
	Project.Write("Big.cpp", Big);
	Project.Write("Kept.cpp", "class FKept { };\n");
	OpenAndBuild();
	std::filesystem::remove(Project.Root / "Big.cpp");
	Manager().ReconcileFileChangesAsync(nullptr);
	Settle();
	const double Before = Manager().GetIndexStats().IndexSizeMB;
	Manager().CompactIndex();
	EXPECT_LT(Manager().GetIndexStats().IndexSizeMB, Before / 2.0);
	EXPECT_EQ(Find("FKept").size(), 1u);
}

TEST_F(CodeIndex, BuildsLookupsAndQuestionsFromManyThreads)
{
	for (int Index = 0; Index < 30; ++Index)
	{
		Project.Write("File" + std::to_string(Index) + ".cpp", "class FName" + std::to_string(Index) + " { };\n");
	}
	OpenAndBuild();
	std::atomic<int> Missed = 0;
	std::vector<std::thread> Threads;
	for (int Index = 0; Index < 4; ++Index)
	{
		Threads.emplace_back(
			[Index, &Missed]
			{
				for (int Round = 0; Round < 6; ++Round)
				{
					if (Index == 0)
					{
						Manager().RebuildIndex(true);
					}
					else if (Index == 1)
					{
						Manager().CompactIndex();
					}
					Manager().ReconcileFileChangesAsync(nullptr);
					Missed += Find("FName5").size() == 1 ? 0 : 1;
					Missed += Manager().GetIndexStats().TotalFiles == 30 ? 0 : 1;
					Manager().IsBuilding();
					Manager().GetReindexerQueueSize();
				}
			});
	}
	for (std::thread& Thread : Threads)
	{
		Thread.join();
	}
	Settle();
	EXPECT_EQ(Missed, 0) << "the last good index answers all the time";
	EXPECT_EQ(Problems, FLines());
}
