#include "HAL/FileManager.h"
#include "Host/HostAtomicFile.h"
#include "Host/HostFileNames.h"
#include "Host/HostFolders.h"
#include "Host/HostLog.h"
#include "Host/HostServices.h"
#include "Misc/FileHelper.h"
#include "Misc/Paths.h"
#include "Support/Base/Printers.h"
#include "Support/Base/SmallDisk.h"
#include "Support/Base/TempFolder.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <sys/wait.h>
#include <vector>
#include <unistd.h>

namespace
{
	using EEncoding = FFileHelper::EEncodingOptions;

	const TCHAR LoneSurrogate[] = { 'a', 0xD800, 'b', 0 };

	std::string Join(const TArray<FString>& Parts)
	{
		return Utf8(FString::Join(Parts, TEXT("|")));
	}

	/** Keeps the expected warnings off the test's output. */
	class SystemFiles : public ::testing::Test
	{
	protected:
		mode_t ModeOf(const char* Name) const
		{
			struct stat Info;
			return stat(Temp.AtBytes(Name).c_str(), &Info) == 0 ? Info.st_mode & 0777 : 0u;
		}
		void SetUp() override { FHostLog::SetStderrVerbosity(ELogVerbosity::NoLogging); }
		void TearDown() override
		{
			FHostServices::SetSaveFailureHook(nullptr);
			FHostLog::SetStderrVerbosity(ELogVerbosity::Warning);
		}
		FTempFolder Temp;
	};
}

TEST_F(SystemFiles, EncodingsWritten)
{
	const std::tuple<const char*, const TCHAR*, EEncoding, std::string> Cases[] = {
		{ "plain text stays narrow", TEXT("a\nb"), EEncoding::AutoDetect, "a\nb" },
		{ "anything else is wide with its mark", TEXT("\u00E9"), EEncoding::AutoDetect, std::string("\xFF\xFE\xE9\0", 4) },
		{ "a pair is two units", TEXT("\U0001F464"), EEncoding::ForceUnicode, std::string("\xFF\xFE\x3D\xD8\x64\xDC", 6) },
		{ "wide keeps a lone surrogate", LoneSurrogate, EEncoding::AutoDetect,
			std::string("\xFF\xFE"
						"a\0\x00\xD8"
						"b\0",
				8) },
		{ "UTF-8 replaces it", LoneSurrogate, EEncoding::ForceUTF8WithoutBOM,
			"a\xEF\xBF\xBD"
			"b" },
		{ "UTF-8 with its mark", TEXT("\u00E9"), EEncoding::ForceUTF8, "\xEF\xBB\xBF\xC3\xA9" },
		{ "narrow cannot hold everything", TEXT("\u00E9\u20AC"), EEncoding::ForceAnsi, "\xE9?" },
		{ "nothing at all", TEXT(""), EEncoding::AutoDetect, "" },
	};
	for (const auto& [Why, Text, Encoding, Bytes] : Cases)
	{
		SCOPED_TRACE(Why);
		EXPECT_TRUE(FFileHelper::SaveStringToFile(Text, *Temp.At(TEXT("f")), Encoding));
		EXPECT_EQ(Temp.Read("f"), Bytes);
	}
}

TEST_F(SystemFiles, EncodingsRead)
{
	const std::pair<std::string, std::string> Cases[] = {
		{ "plain", "plain" },
		{ "\xEF\xBB\xBF\xC3\xA9", "\xC3\xA9" },
		{ "\xC3\xA9", "\xC3\xA9" },
		{ std::string("\xFF\xFE\xE9\0\x3D\xD8\x64\xDC", 8), "\xC3\xA9\xF0\x9F\x91\xA4" },
		{ std::string("\xFE\xFF\0\xE9", 4), "\xC3\xA9" },
		{ "a\xFFz", "a\xEF\xBF\xBDz" },
		{ std::string("\xFF\xFE"
					  "a\0b",
			  5),
			"a\xEF\xBF\xBD" },
		{ std::string("a\0b", 3), std::string("a\0b", 3) },
		{ "", "" },
	};
	for (const auto& [Bytes, Expected] : Cases)
	{
		Temp.Write("f", Bytes);
		FString Text = TEXT("old");
		EXPECT_TRUE(FFileHelper::LoadFileToString(Text, *Temp.At(TEXT("f"))));
		EXPECT_EQ(Utf8(Text), Expected);
	}
	FString Text;
	EXPECT_FALSE(FFileHelper::LoadFileToString(Text, *Temp.At(TEXT("missing"))));
	EXPECT_FALSE(FFileHelper::LoadFileToString(Text, *Temp.At()));
	EXPECT_FALSE(FFileHelper::LoadFileToString(Text, TEXT("")));
	ASSERT_EQ(mkfifo(Temp.AtBytes("pipe").c_str(), 0600), 0);
	EXPECT_FALSE(FFileHelper::LoadFileToString(Text, *Temp.At(TEXT("pipe")))) << "nobody may ever write into it";
	EXPECT_FALSE(FFileHelper::LoadFileToString(Text, TEXT("/dev/zero"))) << "has no end";
	TArray<FString> Lines;
	Temp.Write("lines", "a\r\n\rb\nc\n");
	EXPECT_TRUE(FFileHelper::LoadFileToStringArray(Lines, *Temp.At(TEXT("lines"))));
	EXPECT_EQ(Join(Lines), "a||b|c");
	EXPECT_TRUE(FFileHelper::LoadFileToString(Text, TEXT("/proc/self/status"))) << "a file that tells no size";
	EXPECT_TRUE(Text.Contains(TEXT("VmRSS")));
}

TEST_F(SystemFiles, AFailedSaveLeavesTheOldFileWhole)
{
	std::string Failures;
	FHostServices::SetSaveFailureHook([&Failures](const FString& Path, const FString& Reason)
		{ Failures += Utf8(FPaths::GetCleanFilename(Path)) + ": " + Utf8(Reason) + "\n"; });
	Temp.Write("f", "old");
	const FString Big = FString::ChrN(100000, TEXT('x'));
	{
		const FSmallDisk Disk(50000);
		EXPECT_FALSE(FFileHelper::SaveStringToFile(Big, *Temp.At(TEXT("f"))));
		EXPECT_FALSE(FFileHelper::SaveStringToFile(Big, *Temp.At(TEXT("g"))));
		EXPECT_FALSE(
			FFileHelper::SaveStringToFile(Big, *Temp.At(TEXT("f")), EEncoding::AutoDetect, &IFileManager::Get(), FILEWRITE_Append));
	}
	EXPECT_FALSE(FFileHelper::SaveStringToFile(TEXT("x"), TEXT("/dev/full")));
	EXPECT_FALSE(FFileHelper::SaveStringToFile(TEXT("x"), *Temp.At()));
	EXPECT_EQ(Temp.Read("f"), "old");
	EXPECT_EQ(Temp.Read("g"), "<missing>");
	EXPECT_EQ(Temp.CountEntries(), 1) << "nothing is left beside it";
	EXPECT_NE(Failures.find("full: no space left on the disk\n"), std::string::npos) << Failures;
	EXPECT_NE(Failures.find("f: the file would become too large\n"), std::string::npos) << Failures;
}

TEST_F(SystemFiles, WhatASaveKeeps)
{
	// A long name leaves no room for a longer one beside it.
	const FString LongName = FString::ChrN(255, TEXT('n'));
	EXPECT_TRUE(FFileHelper::SaveStringToFile(TEXT("x"), *Temp.At(*LongName)));
	EXPECT_TRUE(FFileHelper::SaveStringToFile(TEXT("x"), *Temp.At(TEXT("new/folders/f")))) << "parents are made";

	Temp.Write("target", "old");
	chmod(Temp.AtBytes("target").c_str(), 0640);
	ASSERT_EQ(symlink("target", Temp.AtBytes("link").c_str()), 0);
	EXPECT_TRUE(FFileHelper::SaveStringToFile(TEXT("new"), *Temp.At(TEXT("link"))));
	struct stat Info;
	ASSERT_EQ(lstat(Temp.AtBytes("link").c_str(), &Info), 0);
	EXPECT_TRUE(S_ISLNK(Info.st_mode)) << "the link stays a link";
	EXPECT_EQ(Temp.Read("target"), "new");
	ASSERT_EQ(stat(Temp.AtBytes("target").c_str(), &Info), 0);
	EXPECT_EQ(Info.st_mode & 0777, 0640u);

	chmod(Temp.AtBytes("target").c_str(), 0440);
	IFileManager* const Files = &IFileManager::Get();
	EXPECT_FALSE(FFileHelper::SaveStringToFile(TEXT("no"), *Temp.At(TEXT("target"))));
	EXPECT_TRUE(
		FFileHelper::SaveStringToFile(TEXT("forced"), *Temp.At(TEXT("target")), EEncoding::AutoDetect, Files, FILEWRITE_EvenIfReadOnly));
	chmod(Temp.AtBytes("target").c_str(), 0640);
	EXPECT_FALSE(
		FFileHelper::SaveStringToFile(TEXT("no"), *Temp.At(TEXT("target")), EEncoding::AutoDetect, Files, FILEWRITE_NoReplaceExisting));
	EXPECT_TRUE(
		FFileHelper::SaveStringToFile(TEXT("first"), *Temp.At(TEXT("fresh")), EEncoding::AutoDetect, Files, FILEWRITE_NoReplaceExisting));
	EXPECT_TRUE(FFileHelper::SaveStringToFile(TEXT("+\u00E9"), *Temp.At(TEXT("target")), EEncoding::ForceUTF8, Files, FILEWRITE_Append));
	EXPECT_EQ(Temp.Read("target"), "forced+\xC3\xA9") << "no second mark in the middle";

	// Left by a process of the same number that was killed while it saved.
	for (int32 Index = 0; Index < 400; ++Index)
	{
		Temp.Write(("crowded/.save-" + std::to_string(getpid()) + "-" + std::to_string(Index) + ".tmp").c_str(), "");
	}
	EXPECT_TRUE(FFileHelper::SaveStringToFile(TEXT("x"), *Temp.At(TEXT("crowded/f"))));

	ASSERT_EQ(symlink("loop", Temp.AtBytes("loop").c_str()), 0);
	EXPECT_FALSE(FFileHelper::SaveStringToFile(TEXT("x"), *Temp.At(TEXT("loop"))));
}

TEST_F(SystemFiles, WhatIsKeptForTheProgramIsPrivateAndExportsFollowTheUmask)
{
	const mode_t OldMask = umask(0027);
	IFileManager* const Files = &IFileManager::Get();
	EXPECT_TRUE(FFileHelper::SaveStringToFile(TEXT("x"), *Temp.At(TEXT("export"))));
	EXPECT_TRUE(FFileHelper::SaveStringToFile(TEXT("x"), *Temp.At(TEXT("ours")), EEncoding::AutoDetect, Files, HostWritePrivate));
	// One that is found wider becomes the user's alone.
	Temp.Write("shared", "old");
	chmod(Temp.AtBytes("shared").c_str(), 0664);
	EXPECT_TRUE(FFileHelper::SaveStringToFile(TEXT("x"), *Temp.At(TEXT("shared")), EEncoding::AutoDetect, Files, HostWritePrivate));
	umask(OldMask);
	EXPECT_EQ(ModeOf("export"), 0640u);
	EXPECT_EQ(ModeOf("ours"), 0600u);
	EXPECT_EQ(ModeOf("shared"), 0600u);

	const mode_t Strict = umask(0777);
	EXPECT_TRUE(FFileHelper::SaveStringToFile(TEXT("x"), *Temp.At(TEXT("strict")), EEncoding::AutoDetect, Files, HostWritePrivate));
	umask(Strict);
	EXPECT_EQ(ModeOf("strict"), 0600u);
}

TEST_F(SystemFiles, WhatKilledSavesHaveLeftGoesAndNothingElse)
{
	// The number of a process that was there and is not any more.
	const pid_t Gone = fork();
	if (Gone == 0)
	{
		_exit(0);
	}
	ASSERT_EQ(waitpid(Gone, nullptr, 0), Gone);
	const std::string Dead = ".save-" + std::to_string(Gone) + "-";
	const std::string Alive = ".save-" + std::to_string(getppid()) + "-3.tmp";
	for (const std::string& Name :
		{ Dead + "1.tmp", "a/b/" + Dead + "2.tmp", "a/b/c/" + Dead + "2.tmp", Alive, Dead + "1.tmp.txt", "x" + Dead + "1.tmp" })
	{
		Temp.Write(Name.c_str(), "x");
	}
	chmod(Temp.AtBytes("a").c_str(), 0755);
	chmod(Temp.AtBytes("a/b/c").c_str(), 0755);
	HostTidyFolder(Temp.At(TEXT("")), 2, false);
	EXPECT_EQ(ModeOf("a"), 0755u);
	HostTidyFolder(Temp.At(TEXT("a")), 0, true);
	EXPECT_EQ(ModeOf("a"), 0700u);
	EXPECT_EQ(ModeOf("a/b"), 0700u);
	EXPECT_EQ(ModeOf("a/b/c"), 0755u);
	std::vector<std::string> Left;
	for (const auto& Entry : std::filesystem::recursive_directory_iterator(Temp.AtBytes("")))
	{
		if (Entry.is_regular_file())
		{
			Left.push_back(Entry.path().lexically_relative(Temp.AtBytes("")).native());
		}
	}
	std::sort(Left.begin(), Left.end());
	std::vector<std::string> Expected = { Alive, Dead + "1.tmp.txt", "a/b/c/" + Dead + "2.tmp", "x" + Dead + "1.tmp" };
	std::sort(Expected.begin(), Expected.end());
	EXPECT_EQ(Left, Expected);
}

TEST_F(SystemFiles, ALimitKeepsSavesInItsFolder)
{
	const auto Save = [this](const TCHAR* Name)
	{
		FString Reason;
		return HostSaveFile(Temp.At(Name), "x", 1, 0, Reason) ? std::string() : Utf8(Reason);
	};
	const std::string Refusal = "nothing is saved outside of the folder that this run was given";
	Temp.Write("source", "s");
	Temp.Write("only/kept", "");
	Temp.Write("only-beside/kept", "");
	HostLimitSaves(Temp.At(TEXT("./only//")));
	EXPECT_EQ(Save(TEXT("only/new/a")), "");
	EXPECT_EQ(Save(TEXT("only-beside/a")), Refusal);
	EXPECT_EQ(Save(TEXT("only/../a")), Refusal);
	EXPECT_EQ(Save(TEXT("a")), Refusal);
	FString Reason;
	EXPECT_FALSE(HostCopyFile(
		Temp.At(TEXT("source")), Temp.At(TEXT("a")), 0, [](int64, int64) { return true; }, Reason));
	EXPECT_EQ(Utf8(Reason), Refusal);
	EXPECT_FALSE(FFileHelper::SaveStringToFile(TEXT("x"), *Temp.At(TEXT("a"))));
	EXPECT_FALSE(HostMakeFolder(Temp.At(TEXT("folder")), Reason));
	EXPECT_EQ(Utf8(Reason), Refusal);
	EXPECT_TRUE(HostMakeFolder(Temp.At(TEXT("only/folder")), Reason)) << Utf8(Reason);
	HostLimitSaves(FString());
	EXPECT_EQ(Temp.Read("a"), "<missing>");
	EXPECT_EQ(Save(TEXT("a")), "");
}

TEST_F(SystemFiles, ACopyIsWholeOrNothing)
{
	const std::string Contents(3 * 1024 * 1024 + 7, 'c');
	Temp.Write("from/source", Contents);
	FString Reason;
	std::vector<int64> Told;
	const auto Note = [&Told](int64 Done, int64 Total)
	{
		Told.push_back(Total - Done);
		return true;
	};
	EXPECT_TRUE(HostCopyFile(Temp.At(TEXT("from/source")), Temp.At(TEXT("to/target")), HostWritePrivate, Note, Reason));
	EXPECT_TRUE(Temp.Read("to/target") == Contents);
	EXPECT_EQ(Told, (std::vector<int64>{ 2097159, 1048583, 7, 0 }));

	Temp.Write("to/target", "old");
	EXPECT_FALSE(HostCopyFile(
		Temp.At(TEXT("from/source")), Temp.At(TEXT("to/target")), 0, [](int64 Done, int64) { return Done < 2000000; }, Reason));
	EXPECT_EQ(Utf8(Reason), "it was stopped");
	{
		const FSmallDisk Disk(2000000);
		EXPECT_FALSE(HostCopyFile(Temp.At(TEXT("from/source")), Temp.At(TEXT("to/target")), 0, Note, Reason));
		EXPECT_EQ(Utf8(Reason), "the file would become too large");
	}
	EXPECT_FALSE(HostCopyFile(Temp.At(TEXT("from")), Temp.At(TEXT("to/target")), 0, Note, Reason));
	EXPECT_EQ(Utf8(Reason), Temp.AtBytes("from") + " is no file");
	EXPECT_FALSE(HostCopyFile(Temp.At(TEXT("from/gone")), Temp.At(TEXT("to/target")), 0, Note, Reason));
	EXPECT_EQ(Utf8(Reason), Temp.AtBytes("from/gone") + ": no such file or folder");
	EXPECT_EQ(Temp.Read("to/target"), "old");
	EXPECT_EQ(std::distance(std::filesystem::directory_iterator(Temp.AtBytes("to")), std::filesystem::directory_iterator()), 1);
}

TEST_F(SystemFiles, NamesThatAreNotUtf8Survive)
{
	const std::string Names[] = { "plain", "\xC3\xA9", "\xFF\xFE", "a\xC3", "\xED\xA0\x80", "\xC0\xAF", "\xF0\x9F\x91\xA4\x80",
		"\xF5\x80\x80\x80" };
	for (const std::string& Name : Names)
	{
		EXPECT_EQ(HostFileNameToBytes(HostFileNameFromBytes(Name)), Name);
		Temp.Write("names/" + Name, Name);
	}
	TArray<FString> Found;
	IFileManager::Get().FindFiles(Found, *Temp.At(TEXT("names/*")), true, false);
	EXPECT_EQ(Found.Num(), int32(std::size(Names)));
	for (const FString& Name : Found)
	{
		FString Text;
		TArray<uint8> Bytes;
		ASSERT_TRUE(FFileHelper::LoadFileToArray(Bytes, *(Temp.At(TEXT("names")) / Name)));
		EXPECT_EQ(std::string(Bytes.begin(), Bytes.end()), HostFileNameToBytes(Name));
	}
	EXPECT_EQ(HostFileNameToBytes(LoneSurrogate),
		"a\xEF\xBF\xBD"
		"b")
		<< "no file system handed this out";
}

TEST_F(SystemFiles, FoldersAndLists)
{
	IFileManager& Files = IFileManager::Get();
	Temp.Write("p/b.CPP", "");
	Temp.Write("p/a.cpp", "12345");
	Temp.Write("p/sub/deep/c.cpp", "");
	Temp.Write("p/sub/d.h", "");
	ASSERT_EQ(symlink("..", Temp.AtBytes("p/sub/up").c_str()), 0);
	TArray<FString> Found;
	Files.FindFiles(Found, *Temp.At(TEXT("p/*.cpp")), true, true);
	EXPECT_EQ(Join(Found), "a.cpp|b.CPP");
	Files.FindFiles(Found, *Temp.At(TEXT("p/*")), false, true);
	EXPECT_EQ(Join(Found), "sub");
	Files.FindFiles(Found, *Temp.At(TEXT("p")), TEXT("cpp"));
	EXPECT_EQ(Join(Found), "a.cpp|b.CPP");
	Files.FindFilesRecursive(Found, *Temp.At(TEXT("p")), TEXT("*.cpp"), true, false);
	EXPECT_EQ(Join(Found), Temp.AtBytes("p/a.cpp") + "|" + Temp.AtBytes("p/b.CPP") + "|" + Temp.AtBytes("p/sub/deep/c.cpp"));

	EXPECT_EQ(Files.FileSize(*Temp.At(TEXT("p/a.cpp"))), 5);
	EXPECT_EQ(Files.FileSize(*Temp.At(TEXT("p"))), -1);
	const double Age = (FDateTime::UtcNow() - Files.GetTimeStamp(*Temp.At(TEXT("p/a.cpp")))).GetTotalSeconds();
	EXPECT_LT(std::abs(Age), 60.0);

	EXPECT_FALSE(Files.MakeDirectory(*Temp.At(TEXT("m/n/o"))));
	EXPECT_TRUE(Files.MakeDirectory(*Temp.At(TEXT("m/n/o")), true));
	EXPECT_TRUE(Files.MakeDirectory(*Temp.At(TEXT("m/n/o/")), true)) << "it exists already";
	EXPECT_FALSE(Files.MakeDirectory(*Temp.At(TEXT("p/a.cpp/x")), true));
	EXPECT_TRUE(Files.Move(*Temp.At(TEXT("far/away")), *Temp.At(TEXT("p/a.cpp"))));
	EXPECT_EQ(Temp.Read("far/away"), "12345");
	EXPECT_FALSE(Files.Move(*Temp.At(TEXT("far/away")), *Temp.At(TEXT("p/b.CPP")), false));
	EXPECT_TRUE(Files.Delete(*Temp.At(TEXT("far/away"))));
	EXPECT_TRUE(Files.Delete(*Temp.At(TEXT("far/away"))));
	EXPECT_FALSE(Files.Delete(*Temp.At(TEXT("far/away")), true));
	EXPECT_FALSE(Files.Delete(*Temp.At(TEXT("p"))));

	Temp.Write("outside/keep", "x");
	ASSERT_EQ(symlink("../outside", Temp.AtBytes("p/out").c_str()), 0);
	EXPECT_FALSE(Files.DeleteDirectory(*Temp.At(TEXT("p")))) << "it is not empty";
	EXPECT_TRUE(Files.DeleteDirectory(*Temp.At(TEXT("p/")), true, true));
	EXPECT_FALSE(Files.DirectoryExists(*Temp.At(TEXT("p"))));
	EXPECT_EQ(Temp.Read("outside/keep"), "x") << "links are not followed";
}
