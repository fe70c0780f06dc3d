#include "ChangeFixture.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using Velmora::EAccessMethod;
using Velmora::EEntryKind;
using Velmora::FChangeOutcome;
using Velmora::FEntryInfo;
using Velmora::FProjectAccess;

namespace
{
	/** Both ways in which a path is kept below the folder. */
	class ProjectAccess : public FChangeTest, public ::testing::WithParamInterface<EAccessMethod>
	{
	protected:
		void SetUp() override
		{
			FChangeTest::SetUp();
			Outside = Project.Root.native() + "-outside";
			std::filesystem::create_directories(Outside);
			std::ofstream(Outside + "/secret.txt") << "secret";
		}

		void TearDown() override
		{
			std::filesystem::remove_all(Outside);
			FChangeTest::TearDown();
		}

		std::string Outside;
	};
}

INSTANTIATE_TEST_SUITE_P(Methods, ProjectAccess, ::testing::Values(EAccessMethod::Automatic, EAccessMethod::Walk),
	[](const auto& Info) { return Info.param == EAccessMethod::Walk ? "Walk" : "Beneath"; });

TEST_P(ProjectAccess, RefusesWhatIsNoFileOfTheProject)
{
	Project.Write("inner/a.txt", "a");
	std::filesystem::create_symlink(Outside + "/secret.txt", Project.Root / "absolute.txt");
	std::filesystem::create_symlink(
		"../" + std::filesystem::path(Outside).filename().native() + "/secret.txt", Project.Root / "relative.txt");
	std::filesystem::create_directory_symlink(Outside, Project.Root / "away");
	std::filesystem::create_directory_symlink("../..", Project.Root / "inner/up");
	std::filesystem::create_symlink("loop", Project.Root / "loop");
	ASSERT_EQ(mkfifo(Project.PathOf("pipe").c_str(), 0600), 0);
	const int Socket = socket(AF_UNIX, SOCK_STREAM, 0);
	sockaddr_un Address = {};
	Address.sun_family = AF_UNIX;
	const std::string SocketPath = Project.PathOf("socket");
	ASSERT_LT(SocketPath.size(), sizeof(Address.sun_path));
	SocketPath.copy(Address.sun_path, SocketPath.size());
	ASSERT_EQ(bind(Socket, reinterpret_cast<sockaddr*>(&Address), sizeof(Address)), 0);
	const bool bHasDevice = mknod(Project.PathOf("null").c_str(), S_IFCHR | 0666, 0x103) == 0; // Only the superuser may.
	const std::vector<std::string> Before = ListProject();
	const std::vector<std::string> OutsideBefore = ListTree(Outside);

	const std::string Paths[] = { "", ".", "/", "..", "../x.txt", "inner/../../x.txt", "inner/..", Outside + "/secret.txt",
		Outside + "/new.txt", "/etc/passwd", Project.Root.native() + "x/new.txt", Project.Root.native(), std::string("a\0b", 3),
		"absolute.txt", "relative.txt", "away/secret.txt", "away/new.txt", "away/new/new.txt", "inner/up/x.txt",
		"inner/up/" + std::filesystem::path(Outside).filename().native() + "/secret.txt", "loop", "loop/x.txt", "pipe", "pipe/x", "socket",
		"null", "inner", "inner/", "inner/a.txt/b.txt", std::string(300, 'n'), "inner/" + std::string(5000, 'n') };
	for (const std::string& Path : Paths)
	{
		SCOPED_TRACE(Path.substr(0, 80));
		if (Path == "null" && !bHasDevice)
		{
			continue;
		}
		Velmora::FChangeTools Tools = MakeTools("T1", GetParam());
		std::vector<FChangeOutcome> Outcomes = { Tools.WriteFile(Path, "x"), Tools.EditFile(Path, "s", "x"), Tools.AppendToFile(Path, "x"),
			Tools.CreateFile(Path, "x") };
		// A link is deleted itself, so that is no way out.
		if (Path != "absolute.txt" && Path != "relative.txt" && Path != "loop")
		{
			Outcomes.push_back(Tools.DeleteFile(Path));
		}
		for (const FChangeOutcome& Outcome : Outcomes)
		{
			EXPECT_FALSE(Outcome.bSuccess);
			EXPECT_FALSE(Outcome.Problem.empty());
			EXPECT_EQ(Outcome.Problem.find("the system says"), std::string::npos) << Outcome.Problem;
		}
		std::string Bytes;
		FEntryInfo Info;
		EXPECT_FALSE(Tools.GetAccess().Read(Path, 1000, Bytes, Info).empty());
		EXPECT_EQ(Bytes, "");
	}
	EXPECT_EQ(ListProject(), Before);
	EXPECT_EQ(ListTree(Outside), OutsideBefore);
	close(Socket);
}

TEST_P(ProjectAccess, TakesPathsOfTheProjectInEverySpelling)
{
	for (const std::string& Path : { std::string("a/b.txt"), std::string("./a//./b.txt"), Project.Root.native() + "/a/b.txt" })
	{
		std::string Relative;
		EXPECT_EQ(MakeTools("T1", GetParam()).GetAccess().Normalise(Path, Relative), "") << Path;
		EXPECT_EQ(Relative, "a/b.txt");
	}
	for (const char* Name : { "latin\xE9\xFF.txt", "with blank.txt", "line\nfeed.txt", "back\\slash.txt", ".hidden",
			 "\xF0\x9F\x90\x8C/\xF0\x9F\x90\x8C.md", "...", "-rf" })
	{
		SCOPED_TRACE(Name);
		Velmora::FChangeTools Tools = MakeTools("T1", GetParam());
		EXPECT_EQ(Tools.CreateFile(Name, "one").Problem, "");
		EXPECT_EQ(ReadFile(Name), "one");
		EXPECT_EQ(Tools.EditFile(Name, "one", "two").Problem, "");
		EXPECT_EQ(ReadFile(Name), "two");
		EXPECT_EQ(Tools.DeleteFile(Name).Problem, "");
		EXPECT_FALSE(std::filesystem::exists(Project.Root / Name));
	}
}

TEST_P(ProjectAccess, WhatCouldNotBeClearedAwayIsInNobodysWay)
{
	const FProjectAccess Access(Project.Root.native(), GetParam());
	FProjectAccess::FWriteOptions Options;
	Options.TemporaryName = ".half.tmp";
	Options.Mode = 0644;
	Project.Write(".half.tmp", "half");
	EXPECT_EQ(Access.Write("a.txt", "a", Options), "");
	EXPECT_EQ(ReadFile("a.txt"), "a");
	Project.Write(".half.tmp", "half");
	EXPECT_EQ(Access.MakeLink("link", "a.txt", Options), "");
	EXPECT_EQ(std::filesystem::read_symlink(Project.Root / "link"), "a.txt");
	EXPECT_FALSE(std::filesystem::exists(Project.Root / ".half.tmp"));
}

TEST_P(ProjectAccess, LinksThatStayInsideAreFollowedWhereThatIsSafe)
{
	Project.Write("real/a.txt", "a");
	std::filesystem::create_directory_symlink("real", Project.Root / "linked");
	const FChangeOutcome Outcome = MakeTools("T1", GetParam()).EditFile("linked/a.txt", "a", "b");
	EXPECT_EQ(Outcome.Problem, GetParam() == EAccessMethod::Walk ? "a link stands in its path" : "");
	EXPECT_EQ(ReadFile("real/a.txt"), GetParam() == EAccessMethod::Walk ? "a" : "b");
}

TEST_P(ProjectAccess, AFolderSwappedForALinkLeadsNowhere)
{
	Project.Write("inner/a.txt", "inside");
	const std::vector<std::string> OutsideBefore = ListTree(Outside);
	std::ofstream(Outside + "/a.txt") << "outside";
	std::filesystem::create_directory_symlink(Outside, Project.Root / "link");
	const std::string Inner = Project.PathOf("inner");
	const std::string Link = Project.PathOf("link");

	std::atomic<bool> bIsOver = false;
	std::thread Swapper(
		[&]
		{
			while (!bIsOver)
			{
				// The two change names in one step, so that one of them is always there.
				renameat2(AT_FDCWD, Inner.c_str(), AT_FDCWD, Link.c_str(), RENAME_EXCHANGE);
			}
		});
	Velmora::FChangeTools Tools = MakeTools("T1", GetParam());
	int Done = 0;
	int Refused = 0;
	for (int Round = 0; Round < 1500 || (Done == 0 && Round < 100000) || (Refused == 0 && Round < 100000); ++Round)
	{
		std::string Bytes;
		FEntryInfo Info;
		Tools.GetAccess().Read("inner/a.txt", 1000, Bytes, Info);
		EXPECT_NE(Bytes, "outside");
		for (const FChangeOutcome& Outcome :
			{ Tools.WriteFile("inner/a.txt", "inside"), Tools.WriteFile("inner/new.txt", "x"), Tools.DeleteFile("inner/new.txt") })
		{
			Done += Outcome.bSuccess;
			Refused += !Outcome.bSuccess;
		}
	}
	bIsOver = true;
	Swapper.join();
	EXPECT_GT(Done, 0);
	EXPECT_GT(Refused, 0);
	std::ifstream OutsideFile(Outside + "/a.txt");
	EXPECT_EQ(std::string(std::istreambuf_iterator<char>(OutsideFile), {}), "outside");
	std::filesystem::remove(Outside + "/a.txt");
	EXPECT_EQ(ListTree(Outside), OutsideBefore);
}

namespace
{
	/** From now on openat2 fails in this process. */
	bool DenyOpenat2(int Error)
	{
		sock_filter Steps[] = {
			BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
			BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_openat2, 0, 1),
			BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<unsigned>(Error)),
			BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
		};
		const sock_fprog Program = { std::size(Steps), Steps };
		return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &Program) == 0;
	}
}

using ProjectAccessFallback = FChangeTest;

TEST_F(ProjectAccessFallback, WalksWhereTheSystemRefusesToResolve)
{
	Project.Write("inner/a.txt", "a");
	std::filesystem::create_directory_symlink("inner", Project.Root / "link");
	for (const int Error : { ENOSYS, EPERM })
	{
		SCOPED_TRACE(Error);
		const pid_t Child = fork();
		if (Child == 0)
		{
			if (!DenyOpenat2(Error))
			{
				_exit(77);
			}
			const bool bWorks = MakeTools().AppendToFile("inner/a.txt", "b").bSuccess;
			const bool bIsWalk = MakeTools().AppendToFile("link/a.txt", "b").Problem == "a link stands in its path";
			_exit(bWorks && bIsWalk ? 0 : 1);
		}
		int Status = 0;
		ASSERT_EQ(waitpid(Child, &Status, 0), Child);
		ASSERT_TRUE(WIFEXITED(Status));
		if (WEXITSTATUS(Status) == 77)
		{
			GTEST_SKIP() << "No filter can be installed here.";
		}
		EXPECT_EQ(WEXITSTATUS(Status), 0);
	}
}
