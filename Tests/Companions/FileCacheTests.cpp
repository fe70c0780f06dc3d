#include "FileCache/FolderReader.h"
#include "FileCache/ProjectFileMonitor.h"
#include "Host/HostFileNames.h"
#include "Host/HostLog.h"
#include "TemporaryProject.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fcntl.h>
#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <vector>

using namespace Velmora;
using namespace std::chrono_literals;

namespace
{
	/** Changes must be seen within two seconds; a loaded machine is given more before the test says so. */
	constexpr auto SeenGuard = 20s;

	bool WaitFor(const std::function<bool()>& Test)
	{
		const auto End = std::chrono::steady_clock::now() + SeenGuard;
		while (!Test())
		{
			if (std::chrono::steady_clock::now() > End)
			{
				return false;
			}
			std::this_thread::sleep_for(2ms);
		}
		return true;
	}

	/** A scan and watch of its own on a project of its own. */
	class FileCacheTests : public testing::Test
	{
	protected:
		void TearDown() override
		{
			Monitor->Shutdown(10.0);
			FProjectFileListeners::Remove(Listener);
		}

		void Start(const FProjectTreeLimits& Limits = FProjectTreeLimits())
		{
			Monitor->Shutdown(10.0);
			Monitor = MakeShared<FProjectFileMonitor>(Limits);
			Refresh();
		}

		void Refresh()
		{
			Monitor->Request();
			ASSERT_TRUE(WaitFor([this] { return !Monitor->IsRunning(); }));
			ASSERT_TRUE(Monitor->HasCompleted());
		}

		/** Folders with a '/' at the end. */
		std::vector<std::string> List() const
		{
			TArray<FProjectFileCacheEntry> Entries;
			Monitor->GetList()->CopyTo(Entries);
			std::vector<std::string> Lines;
			for (const FProjectFileCacheEntry& Entry : Entries)
			{
				Lines.push_back(HostFileNameToBytes(Entry.Path) + (Entry.bIsDirectory ? "/" : ""));
			}
			return Lines;
		}

		/** What the disk holds, told by a plain walk; for projects without ignored names. */
		std::set<std::string> Disk() const
		{
			std::set<std::string> Lines;
			for (const auto& Entry : std::filesystem::recursive_directory_iterator(Project.Root))
			{
				if (!Entry.is_symlink())
				{
					Lines.insert(std::filesystem::relative(Entry.path(), Project.Root).native() + (Entry.is_directory() ? "/" : ""));
				}
			}
			return Lines;
		}

		void ExpectListed(const std::vector<std::string>& Expected)
		{
			WaitFor([&] { return List() == Expected; });
			EXPECT_EQ(List(), Expected);
		}

		void ExpectAsDisk()
		{
			const auto Listed = [this]
			{
				const std::vector<std::string> Lines = List();
				return std::multiset<std::string>(Lines.begin(), Lines.end());
			};
			const auto Wanted = [this]
			{
				const std::set<std::string> Lines = Disk();
				return std::multiset<std::string>(Lines.begin(), Lines.end());
			};
			WaitFor([&] { return Listed() == Wanted(); });
			EXPECT_EQ(Listed(), Wanted());
		}

		/** From now on all reports are put together. */
		void Listen()
		{
			Listener = FProjectFileListeners::Add(
				[this](const FProjectFileChanges& Changes)
				{
					const std::scoped_lock Lock(ReportMutex);
					for (const FString& Path : Changes.Written)
					{
						Written.insert(HostFileNameToBytes(Path));
					}
					for (const FString& Path : Changes.Removed)
					{
						Removed.insert(HostFileNameToBytes(Path));
					}
					bMayBeMore = bMayBeMore || Changes.bMayBeMore;
				});
		}

		void ExpectReport(const std::set<std::string>& WantedWritten, const std::set<std::string>& WantedRemoved)
		{
			const auto IsThere = [&]
			{
				const std::scoped_lock Lock(ReportMutex);
				for (const std::string& Path : LastWritten)
				{
					// Making a file and closing it may be told one after the other.
					Written.erase(WantedWritten.count(Path) != 0 ? std::string() : Path);
				}
				return Written == WantedWritten && Removed == WantedRemoved;
			};
			WaitFor(IsThere);
			const std::scoped_lock Lock(ReportMutex);
			LastWritten = WantedWritten;
			EXPECT_EQ(Written, WantedWritten);
			EXPECT_EQ(Removed, WantedRemoved);
			EXPECT_FALSE(bMayBeMore);
			Written.clear();
			Removed.clear();
		}

		FTemporaryProject Project;
		TSharedRef<FProjectFileMonitor> Monitor = MakeShared<FProjectFileMonitor>();
		int32 Listener = 0;
		std::mutex ReportMutex;
		std::set<std::string> Written;
		std::set<std::string> Removed;
		std::set<std::string> LastWritten;
		bool bMayBeMore = false;
	};
}

TEST_F(FileCacheTests, LinksLoopsAndOddNames)
{
	Project.Write("a/file", "x");
	Project.Write("a/two\nlines", "x");
	Project.Write("b/\xC3\xA9\xFF\xED\xA0\x80", "x");
	std::filesystem::create_directory_symlink(Project.Root, Project.Root / "a" / "loop");
	std::filesystem::create_directory_symlink("a", Project.Root / "inside");
	std::filesystem::create_directory_symlink("/usr", Project.Root / "outside");
	std::filesystem::create_symlink("a/file", Project.Root / "again");
	std::filesystem::create_symlink("/etc/passwd", Project.Root / "passwords");
	ASSERT_EQ(mkfifo(Project.PathOf("pipe").c_str(), 0600), 0);
	Start();
	ExpectListed({ "a/", "a/file", "a/two\nlines", "b/", "b/\xC3\xA9\xFF\xED\xA0\x80" });

	TArray<FProjectFileCacheEntry> Entries;
	Monitor->GetList()->CopyTo(Entries);
	const FString Odd = Entries[4].Path;
	ASSERT_EQ(Odd.Len(), 7);
	EXPECT_EQ(static_cast<int>(Odd[3]), 0xDCFF);
	EXPECT_TRUE(std::filesystem::exists(Project.Root / HostFileNameToBytes(Odd)));
}

TEST_F(FileCacheTests, ChangesAreSeen)
{
	Project.Write("keep/a", "x");
	Project.Write("old/deep/b", "x");
	Start();
	Listen();

	Project.Write("new/folder/made/a moment/ago", "x");
	ExpectListed({ "keep/", "keep/a", "new/", "new/folder/", "new/folder/made/", "new/folder/made/a moment/",
		"new/folder/made/a moment/ago", "old/", "old/deep/", "old/deep/b" });
	ExpectReport({ "new/folder/made/a moment/ago" }, {});

	std::filesystem::rename(Project.Root / "old", Project.Root / "keep" / "moved");
	std::filesystem::remove_all(Project.Root / "new");
	ExpectListed({ "keep/", "keep/a", "keep/moved/", "keep/moved/deep/", "keep/moved/deep/b" });
	ExpectReport({ "keep/moved/deep/b" }, { "new/folder/made/a moment/ago", "old/deep/b" });

	// The moved folder is watched in its new place.
	Project.Write("keep/moved/deep/c", "x");
	std::filesystem::rename(Project.Root / "keep/a", Project.Root / "keep/moved/a");
	ExpectListed({ "keep/", "keep/moved/", "keep/moved/a", "keep/moved/deep/", "keep/moved/deep/b", "keep/moved/deep/c" });
	ExpectReport({ "keep/moved/a", "keep/moved/deep/c" }, { "keep/a" });

	// Contents alone leave the list as it is.
	const auto Before = Monitor->GetList();
	Project.Write("keep/moved/deep/c", "xy");
	ExpectReport({ "keep/moved/deep/c" }, {});
	EXPECT_EQ(Monitor->GetList(), Before);
}

TEST_F(FileCacheTests, ACheckoutOfFiveThousandFilesIsSeen)
{
	Start();
	for (int Index = 0; Index < 5000; ++Index)
	{
		Project.Write(
			"Source/Area" + std::to_string(Index % 50) + "/Part" + std::to_string(Index % 7) + "/File" + std::to_string(Index) + ".cpp",
			"x");
	}
	ExpectAsDisk();
	for (int Area = 0; Area < 50; Area += 2)
	{
		std::filesystem::rename(Project.Root / "Source" / ("Area" + std::to_string(Area)), Project.Root / ("Moved" + std::to_string(Area)));
		std::filesystem::remove_all(Project.Root / "Source" / ("Area" + std::to_string(Area + 1)) / "Part3");
	}
	ExpectAsDisk();
}

TEST_F(FileCacheTests, RandomChangesEndInWhatTheDiskHolds)
{
	for (const size_t MaxWatches : { SIZE_MAX, size_t(5), size_t(0) })
	{
		SCOPED_TRACE(MaxWatches);
		FProjectTreeLimits Limits;
		Limits.MaxWatches = MaxWatches;
		Start(Limits);
		std::vector<std::string> Folders = { "" };
		std::error_code Error;
		for (int Step = 0; Step < 600; ++Step)
		{
			const std::string Folder = Folders[static_cast<size_t>(Project.MakeNumber(0, static_cast<int>(Folders.size()) - 1))];
			const std::string Name = Folder + std::string(1, static_cast<char>('a' + Project.MakeNumber(0, 5)));
			switch (Project.MakeNumber(0, 5))
			{
			case 0:
			case 1:
				if (std::filesystem::create_directories(Project.Root / Name, Error))
				{
					Folders.push_back(Name + '/');
				}
				break;
			case 2:
				std::filesystem::remove_all(Project.Root / Name, Error);
				break;
			case 3:
				std::filesystem::rename(Project.Root / Name, Project.Root / (Folders.back() + "m"), Error);
				break;
			default:
				std::ofstream(Project.Root / (Name + 'f')) << Step;
			}
			if (Step % 100 == 0)
			{
				std::this_thread::sleep_for(60ms);
			}
		}
		ExpectAsDisk();
	}
}

TEST_F(FileCacheTests, LostEventsLeadToAFullScan)
{
	size_t MaxEvents = 0;
	std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> MaxEvents;
	ASSERT_GT(MaxEvents, 0u);
	const std::atomic<bool> bStop = false;
	Project.Write("gone/x", "x");
	FProjectTree Tree(FProjectTreeLimits(), bStop);
	Tree.SetRoot(Project.Root.native());
	ASSERT_TRUE(Tree.Update());
	Tree.TakeChanges();
	// Two different events take turns, so that none is folded into the one before.
	for (size_t Event = 0; Event < MaxEvents; Event += 2)
	{
		Project.Write("flood", "x");
		std::filesystem::remove(Project.Root / "flood");
	}
	std::filesystem::remove_all(Project.Root / "gone");
	Project.Write("late/x", "x");
	Tree.TakeEvents();
	ASSERT_TRUE(Tree.Update());
	EXPECT_TRUE(Tree.TakeChanges().bMayBeMore);
	EXPECT_EQ(Tree.MakeList()->Num(), 2);
	// The new watches work.
	Project.Write("late/y", "x");
	EXPECT_TRUE(Tree.TakeEvents());
	ASSERT_TRUE(Tree.Update());
	EXPECT_EQ(Tree.MakeList()->Num(), 3);
}

TEST_F(FileCacheTests, IgnoreFilesTakeEffectWhenTheyChange)
{
	for (const size_t MaxWatches : { SIZE_MAX, size_t(0) })
	{
		SCOPED_TRACE(MaxWatches);
		FProjectTreeLimits Limits;
		Limits.MaxWatches = MaxWatches;
		Project.Write(".gitignore", "*.log\n/out/\n!keep.log\n");
		Project.Write("a.log", "x");
		Project.Write("sub/keep.log", "x");
		Project.Write("sub/b.log", "x");
		Project.Write("sub/out/c", "x");
		Project.Write("out/keep.log", "x");
		Start(Limits);
		ExpectListed({ ".gitignore", "sub/", "sub/keep.log", "sub/out/", "sub/out/c" });
		Project.Write("sub/.gitignore", "!b.log\nc\n");
		ExpectListed({ ".gitignore", "sub/", "sub/.gitignore", "sub/b.log", "sub/keep.log", "sub/out/" });
		Project.Write(".gitignore", "*.txt\n/out/\n!keep.log\n");
		ExpectListed({ ".gitignore", "a.log", "sub/", "sub/.gitignore", "sub/b.log", "sub/keep.log", "sub/out/" });
		std::filesystem::remove(Project.Root / ".gitignore");
		std::filesystem::rename(Project.Root / "sub/.gitignore", Project.Root / "sub/other");
		ExpectListed({ "a.log", "out/", "out/keep.log", "sub/", "sub/b.log", "sub/keep.log", "sub/other", "sub/out/", "sub/out/c" });
		std::filesystem::remove(Project.Root / "sub/other");
	}
}

TEST_F(FileCacheTests, AnUnreadableFolderIsSkippedAndComesWhenItMay)
{
	Project.Write("a/x", "x");
	Project.Write("closed/y", "x");
	Project.Write("z/x", "x");
	const bool bIsRoot = geteuid() == 0;
	std::filesystem::permissions(Project.Root / "closed", std::filesystem::perms::none);
	// Root reads everything, so it works as somebody else here.
	ASSERT_TRUE(!bIsRoot || seteuid(65534) == 0);
	Start();
	ExpectListed({ "a/", "a/x", "closed/", "z/", "z/x" });
	ASSERT_TRUE(!bIsRoot || seteuid(0) == 0);
	std::filesystem::permissions(Project.Root / "closed", std::filesystem::perms::owner_all);
	ExpectListed({ "a/", "a/x", "closed/", "closed/y", "z/", "z/x" });
}

TEST_F(FileCacheTests, AProjectThatVanishesEmptiesTheListAndMayComeBack)
{
	Project.Write("a/x", "x");
	Start();
	const std::string Elsewhere = Project.Root.native() + "-away";
	std::filesystem::rename(Project.Root, Elsewhere);
	ExpectListed({});
	EXPECT_EQ(Monitor->GetCount(), 0);
	Refresh();
	ExpectListed({});
	std::filesystem::rename(Elsewhere, Project.Root);
	ExpectListed({ "a/", "a/x" });
	std::filesystem::remove_all(Project.Root);
	ExpectListed({});
	Project.Write("b", "x");
	ExpectListed({ "b" });
}

TEST_F(FileCacheTests, AnotherProjectTakesEffectWithTheNextScan)
{
	Project.Write("first", "x");
	Start();
	ExpectListed({ "first" });
	{
		FTemporaryProject Other;
		Other.Write("second/x", "x");
		Refresh();
		ExpectListed({ "second/", "second/x" });
		Other.Write("third", "x");
		ExpectListed({ "third", "second/", "second/x" });
		SetProjectFolder(Text(Project.Root.native() + "-missing"));
		Refresh();
		ExpectListed({});
	}
	SetProjectFolder(Text(Project.Root.native()));
	Refresh();
	ExpectListed({ "first" });
}

TEST_F(FileCacheTests, ARefreshWithoutChangesKeepsTheListAsItIs)
{
	Project.Write("a/x", "x");
	Start();
	const auto Before = Monitor->GetList();
	Refresh();
	EXPECT_EQ(Monitor->GetList(), Before);
	EXPECT_FALSE(Monitor->IsRunning());
	EXPECT_TRUE(FHostTasks::WaitForBackground(10.0));
}

TEST_F(FileCacheTests, TheListIsBounded)
{
	for (int Index = 0; Index < 100; ++Index)
	{
		Project.Write("Area" + std::to_string(Index % 10) + "/File" + std::to_string(Index), "x");
	}
	FProjectTreeLimits Limits;
	Limits.MaxEntries = 40;
	Start(Limits);
	EXPECT_LE(Monitor->GetCount(), 40);
	EXPECT_GE(Monitor->GetCount(), 30);
	// Room that comes free is used by the next scan.
	for (int Index = 0; Index < 10; Index += 2)
	{
		std::filesystem::remove_all(Project.Root / ("Area" + std::to_string(Index)));
		std::filesystem::remove_all(Project.Root / ("Area" + std::to_string(Index + 1)));
		Project.Write("Area" + std::to_string(Index) + "/x", "x");
	}
	Refresh();
	ExpectAsDisk();
}

TEST_F(FileCacheTests, EndsInTheMiddleOfAScanAndStartsAgain)
{
	for (int Index = 0; Index < 3000; ++Index)
	{
		Project.Write("Area" + std::to_string(Index / 10) + "/File" + std::to_string(Index), "x");
	}
	for (int Round = 0; Round < 5; ++Round)
	{
		Monitor = MakeShared<FProjectFileMonitor>();
		Monitor->Request();
		std::this_thread::sleep_for(std::chrono::microseconds(300 * Round));
		Monitor->Shutdown(10.0);
		EXPECT_FALSE(Monitor->IsRunning());
		EXPECT_TRUE(FHostTasks::WaitForBackground(10.0));
		Monitor->Shutdown(10.0);
	}
	Refresh();
	EXPECT_EQ(Monitor->GetCount(), 3300);
}

TEST_F(FileCacheTests, WorksOnceTheProgramMayOpenFilesAgain)
{
	Project.Write("a", "x");
	rlimit Usual = {};
	ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &Usual), 0);
	const rlimit None = { 0, Usual.rlim_max };
	ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &None), 0);
	Monitor = MakeShared<FProjectFileMonitor>();
	ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &Usual), 0);
	Refresh();
	EXPECT_EQ(List(), std::vector<std::string>{ "a" });
	Refresh();
	const auto Start = std::chrono::steady_clock::now();
	Monitor->Shutdown(10.0);
	EXPECT_LT(std::chrono::steady_clock::now() - Start, 5s) << "the thread hears that it is to end";
}

TEST_F(FileCacheTests, OnlyAFileSystemThatDoesNotAnswerIsCalledSilent)
{
	struct FCase
	{
		const char* Intent;
		double SilentSeconds;
		/** What a call takes, and how many there are. */
		std::chrono::milliseconds CallTime;
		int CallCount;
		std::string Warning;
	};
	const FCase Cases[] = {
		{ "many slow calls", 1.0, 20ms, 60, "" },
		{ "one that does not come back", 0.1, 24h, 1, "The file system does not answer, so the scan of the project is left behind" },
		{ "slow calls without an end", 0.1, 5ms, 1000000, "The file system is too slow, so the scan of the project is left behind" },
	};
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE(Case.Intent);
		std::string Warnings;
		const int32 Sink = FHostLog::AddSink(
			[&](const FHostLogLine& Line) { Warnings += Line.Category == TEXT("LogProjectFileCache") ? Utf8(Line.Text) : ""; });
		std::promise<void> Promise;
		const std::shared_future<void> Release = Promise.get_future().share();
		std::atomic<bool> bIsInCall = false;
		// In place of the file system: what the thread calls.
		Start();
		Listener = FProjectFileListeners::Add(
			[&, Release](const FProjectFileChanges&)
			{
				bIsInCall = true;
				for (int Call = 0; Call < Case.CallCount; ++Call)
				{
					if (Release.wait_for(Case.CallTime) == std::future_status::ready)
					{
						return;
					}
				}
			});
		Project.Write(Case.Intent, "x");
		ASSERT_TRUE(WaitFor([&] { return bIsInCall.load(); }));
		Monitor->Shutdown(Case.SilentSeconds);
		FHostLog::RemoveSink(Sink);
		EXPECT_EQ(Warnings, Case.Warning);
		Promise.set_value();
		FProjectFileListeners::Remove(std::exchange(Listener, 0));
		// What was left behind is not taken up again; the rest is, and may be over by now.
		Project.Write("after", "x");
		Monitor->Request();
		const auto HasSeen = [this]
		{
			const std::vector<std::string> Lines = List();
			return std::count(Lines.begin(), Lines.end(), "after") == 1;
		};
		EXPECT_EQ(Case.Warning.empty() ? WaitFor(HasSeen) : Monitor->IsRunning(), Case.Warning.empty());
		EXPECT_EQ(HasSeen(), Case.Warning.empty());
		std::filesystem::remove(Project.Root / "after");
	}
}

TEST_F(FileCacheTests, FoldersAreOpenedWithoutFollowingLinks)
{
	Project.Write("real/inner/x", "x");
	std::filesystem::create_directory_symlink("real", Project.Root / "link");
	const int Root = open(Project.Root.c_str(), O_RDONLY | O_DIRECTORY);
	ASSERT_GE(Root, 0);
	for (const auto Open : { &OpenFolderBeneath, &OpenFolderStepByStep })
	{
		for (const auto& [Path, bOpens] : std::map<std::string, bool>{ { ".", true }, { "real", true }, { "real/inner", true },
				 { "link", false }, { "link/inner", false }, { "real/inner/x", false }, { "gone", false } })
		{
			SCOPED_TRACE(Path);
			EXPECT_EQ(Open(Root, Path).IsOpen(), bOpens);
		}
	}
	close(Root);
}

TEST_F(FileCacheTests, AListenerMayRemoveItselfAndIsNotCalledAfterwards)
{
	Start();
	std::atomic<int> Calls = 0;
	std::atomic<int32> Handle = 0;
	Handle = FProjectFileListeners::Add(
		[&](const FProjectFileChanges&)
		{
			++Calls;
			FProjectFileListeners::Remove(Handle);
		});
	Project.Write("a", "x");
	ExpectListed({ "a" });
	EXPECT_TRUE(WaitFor([&] { return Calls == 1; }));
	Listen();
	Project.Write("b", "x");
	ExpectReport({ "b" }, {});
	EXPECT_EQ(Calls, 1);
}
