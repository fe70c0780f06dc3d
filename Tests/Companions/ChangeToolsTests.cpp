#include "ChangeFixture.h"

#include "Changes/ContentHash.h"
#include "Text/TextPassage.h"

#include <csignal>
#include <sys/resource.h>

using Velmora::EChangeAction;
using Velmora::FChangeOutcome;

namespace
{
	using ChangeTools = FChangeTest;

	std::string Utf16(const std::string& Ascii, bool bIsBigEndian)
	{
		std::string Out = bIsBigEndian ? "\xFE\xFF" : "\xFF\xFE";
		for (const char Byte : Ascii)
		{
			Out += bIsBigEndian ? '\0' : Byte;
			Out += bIsBigEndian ? Byte : '\0';
		}
		return Out;
	}
}

TEST(ContentHashes, AreThoseOfTheStandard)
{
	EXPECT_EQ(Velmora::HashContent(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
	EXPECT_EQ(Velmora::HashContent("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
	EXPECT_EQ(Velmora::HashContent("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
		"248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
	EXPECT_EQ(Velmora::HashContent(std::string(1000000, 'a')), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST_F(ChangeTools, EditsKeepEverythingElse)
{
	struct FCase
	{
		const char* Why;
		std::string Before;
		std::string Old;
		std::string New;
		std::string After;
	};
	const std::string Mark = "\xEF\xBB\xBF";
	const FCase Cases[] = {
		{ "plain", "one two three", "two", "2", "one 2 three" },
		{ "whole", "two", "two", "", "" },
		{ "carriage returns", "a\r\nb\r\nc\r\n", "b", "x\ny", "a\r\nx\r\ny\r\nc\r\n" },
		{ "passage over carriage returns", "a\r\nb\r\nc", "a\nb\n", "z\n", "z\r\nc" },
		{ "mixed line ends", "a\r\nb\nc\r\nd", "b\nc", "x\ny", "a\r\nx\ny\r\nd" },
		{ "line feed part of mixed line ends", "a\nb\r\nc\nd\n", "c\nd", "x\ny", "a\nb\r\nx\ny\n" },
		{ "byte order mark", Mark + "one\n", "one", "two", Mark + "two\n" },
		{ "bytes of another encoding", "caf\xE9 one \xFF\n", "one", "two", "caf\xE9 two \xFF\n" },
		{ "utf-16", Utf16("one\r\ntwo", false), "e\nt", "E\nT", Utf16("onE\r\nTwo", false) },
		{ "utf-16 big endian", Utf16("one two", true), "two", "2", Utf16("one 2", true) },
		{ "utf-16 at odd bytes", Utf16("\x01", false) + std::string("\x01\x02\x00\x02", 4), "\xC4\x80", "x", "" },
		{ "no line end at the end", "a\nb", "b", "c", "a\nc" },
		{ "emoji", "a \xF0\x9F\x90\x8C b", "\xF0\x9F\x90\x8C", "\xF0\x9F\xA6\x94", "a \xF0\x9F\xA6\x94 b" },
	};
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE(Case.Why);
		Project.Write("a.txt", Case.Before);
		SetMode("a.txt", 0754);
		const FChangeOutcome Outcome = MakeTools().EditFile("a.txt", Case.Old, Case.New);
		const bool bIsRefused = Case.After.empty() && !Case.New.empty();
		EXPECT_EQ(Outcome.bSuccess, !bIsRefused) << Outcome.Problem;
		EXPECT_EQ(ReadFile("a.txt"), bIsRefused ? Case.Before : Case.After);
		EXPECT_EQ(static_cast<int>(std::filesystem::status(Project.Root / "a.txt").permissions()), 0754);
		EXPECT_EQ(ListProject().size(), 1u) << "nothing is left beside it";
	}
}

TEST_F(ChangeTools, APassageMustStandThereOnce)
{
	Project.Write("a.txt", "one two one aXaXa\r\none\r\n");
	EXPECT_EQ(MakeTools().EditFile("a.txt", "four", "x").Sentence, "Not changed: the text to replace does not stand in it (0 occurrences)");
	EXPECT_EQ(MakeTools().EditFile("a.txt", "one", "x").Sentence,
		"Not changed: the text to replace stands in it 3 times; it must be one passage only");
	EXPECT_EQ(MakeTools().EditFile("a.txt", "aXa", "x").Sentence,
		"Not changed: the text to replace stands in it 2 times; it must be one passage only");
	EXPECT_EQ(MakeTools().EditFile("a.txt", "", "x").Sentence, "Not changed: no text to replace was given");
	EXPECT_EQ(MakeTools().EditFile("b.txt", "a", "x").Sentence, "Not changed: it cannot be found");
	EXPECT_EQ(ReadFile("a.txt"), "one two one aXaXa\r\none\r\n");
}

TEST_F(ChangeTools, WritingAndAppendingKeepTheShapeOfAText)
{
	Project.Write("dos.txt", "\xEF\xBB\xBFone\r\ntwo");
	EXPECT_EQ(MakeTools().AppendToFile("dos.txt", "three\nfour").Sentence, "Changed dos.txt, 4 lines");
	EXPECT_EQ(ReadFile("dos.txt"), "\xEF\xBB\xBFone\r\ntwo\r\nthree\r\nfour\r\n");
	EXPECT_TRUE(MakeTools().WriteFile("dos.txt", "x\ny\n").bSuccess);
	EXPECT_EQ(ReadFile("dos.txt"), "\xEF\xBB\xBFx\r\ny\r\n");

	Project.Write("wide.txt", Utf16("a\n", false));
	EXPECT_TRUE(MakeTools().AppendToFile("wide.txt", "b").bSuccess);
	EXPECT_EQ(ReadFile("wide.txt"), Utf16("a\nb\n", false));

	EXPECT_EQ(MakeTools().AppendToFile("new.txt", "b").Sentence, "Created new.txt, 1 line");
	EXPECT_EQ(ReadFile("new.txt"), "b\n");
}

TEST_F(ChangeTools, MakesFilesAndFoldersUnderTheUsersMask)
{
	const mode_t Old = umask(027);
	const FChangeOutcome Outcome = MakeTools().CreateFile("one/two/a.txt", "x\n");
	umask(Old);
	EXPECT_EQ(Outcome.Sentence, "Created one/two/a.txt, 1 line");
	EXPECT_EQ(static_cast<int>(std::filesystem::status(Project.Root / "one/two/a.txt").permissions()), 0640);
	EXPECT_EQ(static_cast<int>(std::filesystem::status(Project.Root / "one/two").permissions()), 0750);
	EXPECT_EQ(MakeTools().CreateFile("one/two/a.txt", "y").Sentence, "Not changed: it is there already");
	EXPECT_EQ(MakeTools().CreateFile("one", "y").Sentence, "Not changed: a folder of that name is there already");
	EXPECT_EQ(ReadFile("one/two/a.txt"), "x\n");
}

TEST_F(ChangeTools, RefusesInWordsAndLeavesAllAsItWas)
{
	Project.Write("binary.dat", std::string("a\0b", 3));
	Project.Write("large.txt", std::string(5 * 1024 * 1024, 'x') + "needle");
	Project.Write("readonly.txt", "needle");
	SetMode("readonly.txt", 0444);
	std::filesystem::create_symlink("readonly.txt", Project.Root / "link.txt");
	const std::vector<std::string> Before = ListProject();

	EXPECT_EQ(MakeTools().EditFile("binary.dat", "a", "x").Problem, "it is a binary file");
	EXPECT_EQ(MakeTools().AppendToFile("binary.dat", "x").Problem, "it is a binary file");
	EXPECT_EQ(MakeTools().EditFile("large.txt", "needle", "x").Problem, "it is larger than 4 MB");
	EXPECT_EQ(MakeTools().CreateFile("new.txt", std::string(5 * 1024 * 1024, 'x')).Problem, "the new content is larger than 4 MB");
	EXPECT_EQ(MakeTools().WriteFile("readonly.txt", "x").Problem, "it is read-only");
	EXPECT_EQ(MakeTools().DeleteFile("readonly.txt").Problem, "it is read-only");
	EXPECT_EQ(MakeTools().WriteFile("link.txt", "x").Problem, "it is a link to `readonly.txt`; name that file itself");
	EXPECT_EQ(MakeTools("unknown").CreateFile("new.txt", "x").Problem, "the request it belongs to is over");
	Velmora::FChangeTools Cancelled = MakeTools();
	Cancelled.SetCancelCheck([] { return true; });
	EXPECT_EQ(Cancelled.CreateFile("sub/new.txt", "x").Problem, "the request was stopped");
	EXPECT_EQ(ListProject(), Before);
	EXPECT_TRUE(Journal->TakePerformed().empty());
}

TEST_F(ChangeTools, AWriteThatFailsHalfwayLeavesTheOldFile)
{
	Project.Write("a.txt", "old\n");
	const std::vector<std::string> Before = ListProject();
	MakeTools().CreateFile("first.txt", ""); // The journal's own folder is there from now on.
	MakeTools().DeleteFile("first.txt");

	// No file may grow beyond this, as on a disk that is full.
	rlimit Old = {};
	getrlimit(RLIMIT_FSIZE, &Old);
	const rlimit Small = { 100000, Old.rlim_max };
	signal(SIGXFSZ, SIG_IGN);
	setrlimit(RLIMIT_FSIZE, &Small);
	const FChangeOutcome Written = MakeTools().WriteFile("a.txt", std::string(300000, 'x'));
	const FChangeOutcome Created = MakeTools().CreateFile("made/for/it.txt", std::string(300000, 'x'));
	setrlimit(RLIMIT_FSIZE, &Old);
	signal(SIGXFSZ, SIG_DFL);

	EXPECT_FALSE(Written.bSuccess);
	EXPECT_FALSE(Created.bSuccess);
	EXPECT_EQ(ListProject(), Before);
	EXPECT_TRUE(MakeTools().WriteFile("a.txt", "new\n").bSuccess) << "works again";
}

TEST_F(ChangeTools, WhatIsMadeOfAFileWhileItIsChangedStays)
{
	MakeTools().CreateFile("kept.txt", "");
	for (const char* Path : { "written.txt", "deleted.txt" })
	{
		Project.Write(Path, "old\n");
	}
	Velmora::FChangeTools Tools = MakeTools();
	// It is looked at, and comes to be another before the change is made.
	Tools.SetGuard(
		[this](const std::string& Path, const Velmora::FEntryInfo&, const std::string&, const Velmora::FNewContent&)
		{
			Project.Write(Path, "made by hand\n");
			return std::string();
		});

	EXPECT_EQ(Tools.WriteFile("written.txt", "new\n").Problem, "it was changed by somebody else at that moment");
	EXPECT_EQ(Tools.DeleteFile("deleted.txt").Problem, "it was changed by somebody else at that moment");
	for (const char* Path : { "written.txt", "deleted.txt" })
	{
		EXPECT_EQ(ReadFile(Path), "made by hand\n");
	}
	EXPECT_EQ(ListProject().size(), 3u) << "nothing is left beside";
	EXPECT_EQ(Journal->TakePerformed().size(), 1u);
}

TEST_F(ChangeTools, TellWhatTheyHaveDone)
{
	MakeTools().CreateFile("a.txt", "x");
	MakeTools().WriteFile("a.txt", "y");
	MakeTools().DeleteFile("a.txt");
	const std::vector<Velmora::FPerformedChange> Performed = Journal->TakePerformed();
	ASSERT_EQ(Performed.size(), 3u);
	for (size_t Index = 0; Index < 3; ++Index)
	{
		EXPECT_EQ(Performed[Index].Path, "a.txt");
		EXPECT_EQ(static_cast<size_t>(Performed[Index].Action), Index + 1);
		EXPECT_EQ(Performed[Index].ConversationId, "C");
	}
	EXPECT_TRUE(Journal->TakePerformed().empty());
}
