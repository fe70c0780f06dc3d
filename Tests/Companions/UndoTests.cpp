#include "ChangeFixture.h"

#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <random>
#include <sys/file.h>
#include <sys/wait.h>
#include <sys/xattr.h>

using Velmora::FChangeJournal;
using Velmora::FUndoResult;

namespace
{
	class Undo : public FChangeTest
	{
	};

	/** Random edits of a project, from one seed. */
	class FEditScript
	{
	public:
		FEditScript(uint32_t Seed, const std::filesystem::path& InRoot)
			: Random(Seed)
			, Root(InRoot)
		{
		}

		int Pick(int Count) { return std::uniform_int_distribution<int>(0, Count - 1)(Random); }

		std::string MakePath()
		{
			constexpr const char* Names[] = { "a.txt", "b", "c.cpp", "odd\xFF\xE9.txt", "d/e.txt", "d/f/g.txt", "d/f", "h/i/j/k.md", "h/i",
				"b/l.txt", "two words.ini", ".hidden" };
			return Names[Pick(std::size(Names))];
		}

		std::string MakeBytes()
		{
			std::string Bytes;
			switch (Pick(6))
			{
			case 0: // Binary.
				for (int Count = Pick(2000); Count > 0; --Count)
				{
					Bytes += static_cast<char>(Pick(256));
				}
				return Bytes;
			case 1:
				return Bytes;
			case 2:
				Bytes = "\xEF\xBB\xBF";
				break;
			case 3:
				Bytes = "\xFF\xFE";
				break;
			default:
				break;
			}
			const char* LineEnd = Pick(2) ? "\r\n" : "\n";
			for (int Line = Pick(12); Line >= 0; --Line)
			{
				Bytes += "line " + std::to_string(Pick(1000)) + (Line > 0 || Pick(2) ? LineEnd : "");
			}
			return Bytes;
		}

		/** What was there before the first request. */
		void Populate()
		{
			for (int Count = Pick(8); Count > 0; --Count)
			{
				const std::filesystem::path Path = Root / MakePath();
				std::error_code Error;
				std::filesystem::create_directories(Path.parent_path(), Error);
				if (Pick(8) == 0)
				{
					std::filesystem::create_symlink(Pick(2) ? "a.txt" : "nowhere", Path, Error);
					continue;
				}
				if (!std::filesystem::is_symlink(Path, Error))
				{
					std::ofstream(Path, std::ios::binary) << MakeBytes();
					constexpr mode_t Modes[] = { 0644, 0755, 0600, 0444, 0664 };
					const mode_t Mode = Modes[Pick(std::size(Modes))];
					if (std::filesystem::is_regular_file(Path, Error))
					{
						chmod(Path.c_str(), Mode);
					}
				}
			}
		}

		/** One tool; whether it can do it is part of the game. */
		bool Run(Velmora::FChangeTools& Tools)
		{
			const std::string Path = MakePath();
			switch (Pick(6))
			{
			case 0:
				return Tools.CreateFile(Path, MakeBytes()).bSuccess;
			case 1:
				return Tools.WriteFile(Path, MakeBytes()).bSuccess;
			case 2:
				return Tools.EditFile(Path, "line " + std::to_string(Pick(10)), Pick(2) ? "other" : "one\ntwo").bSuccess;
			case 3:
				return Tools.AppendToFile(Path, "more").bSuccess;
			default:
				return Tools.DeleteFile(Path).bSuccess;
			}
		}

	private:
		std::mt19937 Random;
		const std::filesystem::path Root;
	};
}

TEST_F(Undo, RandomEditScriptsLeaveNoTrace)
{
	// In memory where there is such a folder: it is some 20,000 small files.
	const bool bHasMemory = access("/dev/shm", W_OK) == 0;
	const std::filesystem::path Base = bHasMemory ? std::filesystem::path("/dev/shm") / Project.Root.filename() : Project.Root / "scripts";
	UndoFolder = Base.native() + "-undo";
	OpenJournal();
	const uint32_t FirstSeed = std::random_device{}();
	std::printf("seeds from %u\n", FirstSeed);
	int Changes = 0;
	for (uint32_t Script = 0; Script < 1000 && !HasFailure(); ++Script)
	{
		SCOPED_TRACE("seed " + std::to_string(FirstSeed + Script));
		const std::filesystem::path Root = Base / std::to_string(Script);
		std::filesystem::create_directories(Root);
		FEditScript Edits(FirstSeed + Script, Root);
		Edits.Populate();
		const std::vector<std::string> Before = ListTree(Root);

		// Several requests of two conversations on different files, undone from a random one and then whole.
		const int Requests = 1 + Edits.Pick(4);
		std::vector<std::vector<std::string>> States;
		for (int Request = 0; Request < Requests; ++Request)
		{
			States.push_back(ListTree(Root));
			const std::string Id = std::to_string(Script) + '-' + std::to_string(Request);
			Journal->OpenTransaction(Id, "S" + std::to_string(Script), Request * 2);
			Velmora::FChangeTools Tools(
				Root.native(), *Journal, Id, Edits.Pick(2) ? Velmora::EAccessMethod::Automatic : Velmora::EAccessMethod::Walk);
			Tools.SetDurable(false);
			for (int Count = Edits.Pick(12); Count >= 0; --Count)
			{
				Changes += Edits.Run(Tools);
			}
		}
		const int From = Edits.Pick(Requests);
		for (const int Request : { From, 0 })
		{
			int MessageIndex = -1;
			const FUndoResult Result = FChangeTest::Undo(
				std::to_string(Script) + '-' + std::to_string(Request),
				[&MessageIndex](int Index)
				{
					MessageIndex = Index;
					return std::string();
				},
				"S" + std::to_string(Script));
			if (Request == 0 && From == 0 && !Result.bSuccess)
			{
				break; // Already undone.
			}
			EXPECT_TRUE(Result.bSuccess) << Result.Problem;
			EXPECT_TRUE(Result.Notices.empty());
			EXPECT_EQ(MessageIndex, Request * 2);
			EXPECT_EQ(ListTree(Root), States[static_cast<size_t>(Request)]);
		}
		EXPECT_EQ(ListTree(Root), Before);
	}
	EXPECT_GT(Changes, 3000) << "most tools found something to do";
	EXPECT_EQ(Journal->GetKeptBytes(), 0u) << "what is undone is let go";
	std::error_code Error;
	std::filesystem::remove_all(Base, Error);
}

TEST_F(Undo, WhatSomebodyElseChangedIsSetAside)
{
	Project.Write("a.md", "before\n");
	SetMode("a.md", 0755);
	Project.Write("removed.md", "before\n");
	Project.Write("mode.md", "before\n");
	Project.Write("same.md", "before\n");
	Project.Write("a.conflict-1.md", "mine\n");
	Velmora::FChangeTools Tools = MakeTools();
	for (const char* Path : { "a.md", "removed.md", "mode.md", "same.md" })
	{
		ASSERT_TRUE(Tools.WriteFile(Path, "agent\n").bSuccess);
	}
	ASSERT_TRUE(Tools.CreateFile("made/.config", "agent\n").bSuccess);
	Project.Write("a.md", "by hand\n");
	Project.Write("made/.config", "by hand\n");
	Project.Write("same.md", "before\n");
	SetMode("mode.md", 0600);
	std::filesystem::remove(Project.Root / "removed.md");

	const FUndoResult Result = UndoRequest();
	ASSERT_TRUE(Result.bSuccess) << Result.Problem;
	EXPECT_EQ(ReadFile("a.md"), "before\n");
	EXPECT_EQ(static_cast<int>(std::filesystem::status(Project.Root / "a.md").permissions()), 0755);
	EXPECT_EQ(ReadFile("a.conflict-1.md"), "mine\n");
	EXPECT_EQ(ReadFile("a.conflict-2.md"), "by hand\n");
	EXPECT_EQ(ReadFile("made/.config.conflict-1"), "by hand\n");
	EXPECT_FALSE(std::filesystem::exists(Project.Root / "made/.config"));
	EXPECT_EQ(ReadFile("removed.md"), "before\n");
	EXPECT_EQ(ReadFile("same.md"), "before\n");
	EXPECT_EQ(static_cast<int>(std::filesystem::status(Project.Root / "mode.md").permissions()), 0644);
	ASSERT_EQ(Result.Notices.size(), 3u);
	std::string All;
	for (const std::string& Notice : Result.Notices)
	{
		All += Notice + '\n';
	}
	EXPECT_NE(All.find("`a.md` had been changed by hand since. It is back as it was before the request; what you had made of it is in "
					   "`a.conflict-2.md`."),
		std::string::npos)
		<< All;
	EXPECT_NE(All.find("`made/.config` had been changed by hand since. It is gone again, as before the request; what you had made of it is "
					   "in `made/.config.conflict-1`."),
		std::string::npos)
		<< All;
	EXPECT_NE(All.find("`removed.md` had been removed since; it is back as it was."), std::string::npos) << All;
}

TEST_F(Undo, WhatWasMadeByHandBetweenTwoChangesIsSetAside)
{
	Project.Write("a.md", "before\n");
	Project.Write("back.md", "before\n");
	Project.Write("mode.md", "before\n");
	Project.Write("removed.md", "before\n");
	const auto ChangeAll = [this](const std::string& Transaction, const std::string& Text)
	{
		Velmora::FChangeTools Tools = MakeTools(Transaction);
		for (const char* Path : { "a.md", "back.md", "mode.md", "removed.md", "made/new.md" })
		{
			ASSERT_TRUE(Tools.WriteFile(Path, Text).bSuccess) << Path;
		}
	};
	ChangeAll("T1", "agent 1\n");
	Project.Write("a.md", "by hand 1\n");
	Project.Write("back.md", "before\n");
	SetMode("mode.md", 0600);
	std::filesystem::remove(Project.Root / "removed.md");
	Project.Write("made/new.md", "by hand 1\n");
	Journal->OpenTransaction("T2", "C", 2);
	ChangeAll("T2", "agent 2\n");
	Project.Write("a.md", "by hand 2\n");
	ASSERT_TRUE(MakeTools("T2").WriteFile("a.md", "agent 3\n").bSuccess);
	Project.Write("a.md", "by hand 3\n");

	const FUndoResult Result = UndoRequest("T1");
	ASSERT_TRUE(Result.bSuccess) << Result.Problem;
	for (const char* Path : { "a.md", "back.md", "mode.md", "removed.md" })
	{
		EXPECT_EQ(ReadFile(Path), "before\n") << Path;
	}
	EXPECT_EQ(ReadFile("a.conflict-1.md"), "by hand 1\n");
	EXPECT_EQ(ReadFile("a.conflict-2.md"), "by hand 2\n");
	EXPECT_EQ(ReadFile("a.conflict-3.md"), "by hand 3\n");
	EXPECT_EQ(ReadFile("made/new.conflict-1.md"), "by hand 1\n");
	EXPECT_EQ(ListProject().size(), 9u) << "and no other copy";
	const std::string Between = " had been changed by hand between two changes. ";
	EXPECT_EQ(Result.Notices,
		(std::vector<std::string>{
			"`a.md`" + Between + "It is back as it was before the request; what you had made of it then is in `a.conflict-1.md`.",
			"`a.md`" + Between + "It is back as it was before the request; what you had made of it then is in `a.conflict-2.md`.",
			"`a.md` had been changed by hand since. It is back as it was before the request; what you had made of it is in "
			"`a.conflict-3.md`.",
			"`made/new.md`" + Between +
				"It is gone again, as before the request; what you had made of it then is in `made/new.conflict-1.md`." }));
}

TEST_F(Undo, AFileIsTheSameUnderEveryNameThatLinksGiveIt)
{
	Project.Write("real/deep/a.md", "before\n");
	std::filesystem::create_directory_symlink("real/deep", Project.Root / "short");
	std::filesystem::create_directory_symlink("../real", Project.Root / "real/around");
	std::filesystem::create_directory_symlink("nowhere", Project.Root / "broken");
	const std::vector<std::string> Before = ListProject();
	const char* const Names[] = { "real/deep/a.md", "short/a.md", "real/around/around/deep/a.md", "short/a.md", "real/deep/a.md" };
	for (size_t Index = 0; Index < std::size(Names); ++Index)
	{
		const std::string Transaction = 'N' + std::to_string(Index);
		Journal->OpenTransaction(Transaction, "C", static_cast<int>(Index));
		ASSERT_TRUE(MakeTools(Transaction).WriteFile(Names[Index], "agent " + std::to_string(Index) + '\n').bSuccess) << Names[Index];
		const Velmora::FPerformedChange Performed = Journal->TakePerformed().back();
		EXPECT_EQ(Performed.Path, "real/deep/a.md");
	}
	ASSERT_TRUE(MakeTools("N4").WriteFile("short/sub/new.md", "new\n").bSuccess);
	ASSERT_TRUE(MakeTools("N4").DeleteFile("real/deep/sub/new.md").bSuccess);
	EXPECT_FALSE(MakeTools("N4").WriteFile("broken/new.md", "x").bSuccess);

	for (const size_t Index : { 3, 0 })
	{
		const FUndoResult Result = UndoRequest('N' + std::to_string(Index));
		ASSERT_TRUE(Result.bSuccess) << Result.Problem;
		EXPECT_TRUE(Result.Notices.empty()) << Result.Notices[0];
		EXPECT_EQ(ReadFile("real/deep/a.md"), Index == 0 ? "before\n" : "agent " + std::to_string(Index - 1) + '\n');
	}
	EXPECT_EQ(ListProject(), Before);
}

TEST_F(Undo, AFileKeepsItsNamesAttributesAndAccess)
{
	Project.Write("a.md", "before\n");
	Project.Write("plain.md", "before\n");
	std::filesystem::create_directory(Project.Root / "sub");
	std::filesystem::create_hard_link(Project.Root / "a.md", Project.Root / "sub/b.md");
	SetMode("a.md", 0640);
	// user::rw-, user:12345:r--, group::r--, mask::r--, other::---
	const unsigned char Access[] = { 2, 0, 0, 0, 1, 0, 6, 0, 255, 255, 255, 255, 2, 0, 4, 0, 57, 48, 0, 0, 4, 0, 4, 0, 255, 255, 255, 255,
		16, 0, 4, 0, 255, 255, 255, 255, 32, 0, 0, 0, 255, 255, 255, 255 };
	const std::string Path = Project.PathOf("a.md");
	if (setxattr(Path.c_str(), "user.mark", "kept", 4, 0) != 0)
	{
		GTEST_SKIP() << "no extended attributes here";
	}
	const bool bHasAccessList = setxattr(Path.c_str(), "system.posix_acl_access", Access, sizeof(Access), 0) == 0;
	const bool bIsSuperuser = geteuid() == 0 && chown(Path.c_str(), 1234, 2345) == 0;
	const auto Check = [&](const std::string& Bytes)
	{
		for (const char* Name : { "a.md", "sub/b.md" })
		{
			SCOPED_TRACE(Name);
			EXPECT_EQ(ReadFile(Name), Bytes);
			struct stat Status = {};
			char Mark[16] = {};
			char List[sizeof(Access)] = {};
			ASSERT_EQ(lstat(Project.PathOf(Name).c_str(), &Status), 0);
			EXPECT_EQ(Status.st_nlink, 2u);
			EXPECT_EQ(Status.st_mode & 07777, 0640u);
			EXPECT_EQ(getxattr(Project.PathOf(Name).c_str(), "user.mark", Mark, sizeof(Mark)), 4);
			EXPECT_STREQ(Mark, "kept");
			if (bHasAccessList)
			{
				EXPECT_EQ(getxattr(Project.PathOf(Name).c_str(), "system.posix_acl_access", List, sizeof(List)), ssize_t(sizeof(List)));
				EXPECT_EQ(memcmp(List, Access, sizeof(Access)), 0);
			}
			if (bIsSuperuser)
			{
				EXPECT_EQ(Status.st_uid, 1234u);
				EXPECT_EQ(Status.st_gid, 2345u);
			}
		}
	};
	EXPECT_EQ(MakeTools().WriteFile("a.md", "agent\n").Sentence, "Changed a.md, 1 line");
	Check("agent\n");
	Journal->OpenTransaction("T2", "C", 2);
	ASSERT_TRUE(MakeTools("T2").WriteFile("sub/b.md", "again\n").bSuccess);
	Check("again\n");
	ASSERT_TRUE(MakeTools("T2").DeleteFile("sub/b.md").bSuccess);
	ASSERT_TRUE(MakeTools("T2").WriteFile("plain.md", "again\n").bSuccess);

	FUndoResult Result = FChangeTest::Undo("T1", [](int) { return std::string("The store is busy."); });
	EXPECT_EQ(Result.Problem, "Nothing was undone. The store is busy.");
	EXPECT_EQ(ReadFile("a.md"), "again\n");
	Result = UndoRequest("T2");
	ASSERT_TRUE(Result.bSuccess) << Result.Problem;
	EXPECT_TRUE(Result.Notices.empty()) << Result.Notices[0];
	Check("agent\n");
	Result = UndoRequest("T1");
	ASSERT_TRUE(Result.bSuccess) << Result.Problem;
	EXPECT_TRUE(Result.Notices.empty()) << Result.Notices[0];
	Check("before\n");
}

TEST_F(Undo, NamesOfAFileOutsideTheProjectAreLeftAlone)
{
	Project.Write("a.md", "before\n");
	const std::string Outside = Project.Root.native() + "-outside.md";
	std::filesystem::create_hard_link(Project.Root / "a.md", Outside);
	EXPECT_EQ(MakeTools().WriteFile("a.md", "agent\n").Sentence,
		"Changed a.md, 1 line; it is no longer one file with its names outside the project");
	std::ifstream File(Outside);
	EXPECT_EQ(std::string(std::istreambuf_iterator<char>(File), {}), "before\n");
	std::filesystem::remove(Outside);
	ASSERT_TRUE(UndoRequest().bSuccess);
	EXPECT_EQ(ReadFile("a.md"), "before\n");
}

TEST_F(Undo, AnotherFolderInThePlaceOfTheProjectIsLeftAlone)
{
	Project.Write("a.md", "before\n");
	ASSERT_TRUE(MakeTools().WriteFile("a.md", "agent\n").bSuccess);
	const std::filesystem::path Away = Project.Root.native() + "-away";
	std::filesystem::rename(Project.Root, Away);
	Project.Write("a.md", "agent\n");
	const std::vector<std::string> Before = ListProject();
	EXPECT_EQ(UndoRequest().Problem,
		"Nothing was undone. `a.md` cannot be restored: the folder " + Project.Root.native() + " is another one than when it was changed.");
	EXPECT_EQ(ListProject(), Before);

	std::filesystem::remove_all(Project.Root);
	std::filesystem::rename(Away, Project.Root);
	ASSERT_TRUE(UndoRequest().bSuccess) << "it is back";
	EXPECT_EQ(ReadFile("a.md"), "before\n");
}

TEST_F(Undo, ChangesNothingWhenItCannotRestoreAll)
{
	Project.Write("a.md", "before a\n");
	Project.Write("z.md", "before z\n");
	Velmora::FChangeTools Tools = MakeTools();
	ASSERT_TRUE(Tools.WriteFile("a.md", "agent\n").bSuccess);
	ASSERT_TRUE(Tools.CreateFile("d/new.md", "agent\n").bSuccess);
	ASSERT_TRUE(Tools.WriteFile("z.md", "agent\n").bSuccess);

	// The conversation's messages could not be cut.
	std::vector<std::string> Before = ListProject();
	FUndoResult Result = FChangeTest::Undo("T1", [](int) { return std::string("The store is busy."); });
	EXPECT_EQ(Result.Problem, "Nothing was undone. The store is busy.");
	EXPECT_EQ(ListProject(), Before);

	// A folder has taken the place of a file.
	std::filesystem::remove(Project.Root / "z.md");
	Project.Write("z.md/inside.txt", "mine");
	Before = ListProject();
	Result = UndoRequest();
	EXPECT_EQ(Result.Problem, "Nothing was undone. `z.md` cannot be restored: something that is no file has taken its place.");
	EXPECT_EQ(ListProject(), Before);

	// What cannot be taken back is no longer as it was, so nobody says that it is.
	std::filesystem::remove_all(Project.Root / "z.md");
	Project.Write("z.md", "agent\n");
	Result = FChangeTest::Undo("T1",
		[this](int)
		{
			std::filesystem::remove(Project.Root / "z.md");
			Project.Write("z.md/inside.txt", "mine");
			return std::string("The store is busy.");
		});
	EXPECT_EQ(
		Result.Problem, "The undo stopped half-way and could not be taken back; try it again. The store is busy. `z.md`: it is a folder.");
	EXPECT_EQ(ReadFile("a.md"), "agent\n");
	std::filesystem::remove_all(Project.Root / "z.md");
	Project.Write("z.md", "agent\n");

	// A former content is damaged.
	std::filesystem::remove_all(Project.Root / "z.md");
	for (const std::filesystem::directory_entry& Entry : std::filesystem::recursive_directory_iterator(UndoFolder))
	{
		if (Entry.path().parent_path().filename() == "contents" && Entry.file_size() == 9)
		{
			std::ofstream(Entry.path(), std::ios::binary | std::ios::in) << "X";
		}
	}
	Before = ListProject();
	Result = UndoRequest();
	EXPECT_NE(Result.Problem.find("its former content is lost (it is damaged)"), std::string::npos) << Result.Problem;
	EXPECT_EQ(ListProject(), Before);

	EXPECT_EQ(FChangeTest::Undo(
				  "T1", [](int) { return std::string(); }, "another conversation")
				  .Problem,
		"What was done after that message is not known any more, so nothing was undone.");
}

TEST_F(Undo, OnlyTheLaterRequestsOfTheConversationAreUndone)
{
	Project.Write("a.md", "0");
	ASSERT_TRUE(MakeTools("T1").WriteFile("a.md", "1").bSuccess);
	Journal->OpenTransaction("T2", "C", 2);
	Journal->OpenTransaction("Other", "D", 0);
	ASSERT_TRUE(MakeTools("T2").WriteFile("a.md", "2").bSuccess);
	ASSERT_TRUE(MakeTools("Other").WriteFile("b.md", "b").bSuccess);
	Journal->OpenTransaction("T3", "C", 4);
	ASSERT_TRUE(MakeTools("T3").WriteFile("a.md", "3").bSuccess);

	const FUndoResult Result = UndoRequest("T2");
	ASSERT_TRUE(Result.bSuccess);
	EXPECT_EQ(Result.TransactionIds, (std::vector<std::string>{ "T2", "T3" }));
	EXPECT_EQ(ReadFile("a.md"), "1");
	EXPECT_EQ(ReadFile("b.md"), "b");
	EXPECT_EQ(MakeTools("T3").WriteFile("a.md", "late").Problem, "the request it belongs to is over");
	ASSERT_TRUE(UndoRequest("T1").bSuccess);
	EXPECT_EQ(ReadFile("a.md"), "0");
}

TEST_F(Undo, TheOldestContentsMakeRoom)
{
	Journal.reset();
	OpenJournal(1024 * 1024);
	Project.Write("a.bin", std::string(600000, 'a'));
	Project.Write("b.bin", std::string(600000, 'b'));
	Project.Write("c.bin", std::string(2000000, 'c'));
	ASSERT_TRUE(MakeTools("T1").WriteFile("a.bin", "1").bSuccess);
	Journal->OpenTransaction("T2", "C", 2);
	ASSERT_TRUE(MakeTools("T2").WriteFile("b.bin", "2").bSuccess);
	EXPECT_LE(Journal->GetKeptBytes(), 1024u * 1024u);
	EXPECT_EQ(UndoRequest("T1").Problem,
		"Former contents are kept up to 1 MB; those of that message had to make room for later ones, so nothing was undone.");
	EXPECT_EQ(MakeTools("T2").WriteFile("c.bin", "2").Problem, "its former content cannot be kept: the undo store holds 1 MB and is full");
	ASSERT_TRUE(UndoRequest("T2").bSuccess);
	EXPECT_EQ(ReadFile("b.bin").size(), 600000u);
	EXPECT_EQ(ReadFile("a.bin"), "1");
}

TEST_F(Undo, ContentsArePrivateAndGoWithTheJournal)
{
	Project.Write("a.md", "secret\n");
	ASSERT_TRUE(MakeTools().WriteFile("a.md", "x").bSuccess);
	int Files = 0;
	for (const std::filesystem::directory_entry& Entry : std::filesystem::recursive_directory_iterator(UndoFolder))
	{
		EXPECT_EQ(static_cast<int>(Entry.status().permissions()) & 077, 0) << Entry.path();
		Files += Entry.is_regular_file();
	}
	EXPECT_EQ(Files, 3) << "lock, list of changes, one content";
	EXPECT_TRUE(RecoverAll().empty());
	ASSERT_TRUE(UndoRequest().bSuccess) << "a living journal is left alone";
	Journal.reset();
	EXPECT_FALSE(std::filesystem::exists(UndoFolder));
}

TEST_F(Undo, WhatIsHalfDoneGoesWithTheProcessThatDied)
{
	Project.Write("sub/a.md", "before\n");
	const pid_t Child = fork();
	if (Child == 0)
	{
		// Dies between a half-written file and its renaming.
		MakeTools().WriteFile("sub/a.md", "x");
		std::string Name;
		for (const std::filesystem::directory_entry& Entry : std::filesystem::directory_iterator(UndoFolder))
		{
			Name = Entry.path().filename().native();
		}
		Project.Write("sub/.velmora-" + Name.substr(0, 12) + "-1.tmp", "half");
		std::ofstream(UndoFolder + '/' + Name + "/contents/new.tmp") << "half";
		_exit(0);
	}
	int Status = 0;
	ASSERT_EQ(waitpid(Child, &Status, 0), Child);
	// Another one died while it removed its own folder.
	std::filesystem::create_directories(UndoFolder + "/0123456789abcdef0123456789abcdef/contents");
	ASSERT_EQ(ListProject().size(), 3u);
	EXPECT_TRUE(RecoverAll().empty());
	EXPECT_EQ(ListProject().size(), 2u);
	EXPECT_EQ(ReadFile("sub/a.md"), "x");
	ASSERT_EQ(std::distance(std::filesystem::directory_iterator(UndoFolder), {}), 1) << "what can still be undone stays";
	const std::filesystem::path Kept = std::filesystem::directory_iterator(UndoFolder)->path() / "contents";
	EXPECT_EQ(std::distance(std::filesystem::directory_iterator(Kept), {}), 1) << "but not what was half kept";
	EXPECT_EQ(FChangeJournal::AdoptDeadJournals(UndoFolder, false).size(), 1u);
}
