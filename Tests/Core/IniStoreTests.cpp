#include "Core/Private/Host/HostIniFile.h"
#include "Host/HostDelayedWork.h"
#include "Host/HostIniStore.h"
#include "Host/HostLog.h"
#include "Host/HostServices.h"
#include "Misc/ConfigCacheIni.h"
#include "Support/Base/Printers.h"
#include "Support/Base/TempFolder.h"

#include <algorithm>
#include <atomic>
#include <sys/stat.h>
#include <thread>
#include <vector>

namespace
{
	const std::string Everything = "; a comment\r\n"
								   "loose=1\n"
								   "[A]\n"
								   "  Key = old value  \n"
								   "+Paths=x\n"
								   "+Paths=y\n"
								   "no sense here\n"
								   "\n"
								   "[B]\n"
								   "key=b\n"
								   "bytes=\xFF\xFE\x01\n"
								   "[a]\n"
								   "KEY=twice\n"
								   "last=without end";

	class IniStore : public ::testing::Test
	{
	protected:
		void SetUp() override
		{
			FHostLog::SetStderrVerbosity(ELogVerbosity::NoLogging);
			FHostServices::SetSaveFailureHook([this](const FString& Path, const FString& Reason) { Told.push_back(Utf8(Reason)); });
		}
		void TearDown() override
		{
			FHostServices::SetSaveFailureHook(nullptr);
			FHostLog::SetStderrVerbosity(ELogVerbosity::Warning);
		}
		static std::string Get(const IHostConfigStore& Store, const TCHAR* Section, const TCHAR* Key)
		{
			FString Value;
			return Store.Get(TEXT("Settings"), Section, Key, Value) ? Utf8(Value) : "<missing>";
		}
		FTempFolder Folder;
		std::vector<std::string> Told;
	};
}

TEST_F(IniStore, ChangesOneLineAndKeepsTheRest)
{
	struct FCase
	{
		const TCHAR* Section;
		const TCHAR* Key;
		const TCHAR* Value;
		const char* Old;
		const char* New;
	};
	const FCase Cases[] = {
		{ TEXT("A"), TEXT("Key"), TEXT("new"), "KEY=twice", "KEY=new" },
		{ TEXT("b"), TEXT("KEY"), TEXT("c:\\dir"), "key=b\n", "key=c:\\dir\n" },
		{ TEXT("B"), TEXT("fresh"), TEXT(" blanks "), "\x01\n", "\x01\nfresh=\" blanks \"\n" },
		{ TEXT("A"), TEXT("fresh"), TEXT("x"), "last=without end", "last=without end\nfresh=x\n" },
		{ TEXT("C"), TEXT("a=b"), TEXT("1\n2"), "last=without end", "last=without end\n\n[C]\na\\u003Db=\"1\\n2\"\n" },
		{ TEXT("A"), TEXT("Key"), TEXT("twice"), "", "" },
	};
	for (const FCase& Case : Cases)
	{
		FHostIniFile File(Everything);
		ASSERT_EQ(File.GetBytes(), Everything);
		File.Set(Case.Section, Case.Key, Case.Value);
		std::string Expected = Everything;
		Expected.replace(Expected.find(Case.Old), std::string(Case.Old).size(), Case.New);
		EXPECT_EQ(File.GetBytes(), Expected);
		FString Value;
		EXPECT_TRUE(FHostIniFile(File.GetBytes()).Get(Case.Section, Case.Key, Value));
		EXPECT_EQ(Utf8(Value), Utf8(Case.Value));
	}
	FHostIniFile File(Everything);
	File.Remove(TEXT("A"), TEXT("key"));
	FString Value;
	EXPECT_FALSE(File.Get(TEXT("A"), TEXT("Key"), Value)) << "both are gone";
	EXPECT_TRUE(File.Get(TEXT("B"), TEXT("Key"), Value));
}

TEST_F(IniStore, WhatIsSetReadsBackFromAnyFile)
{
	for (const char* const Bytes : { "", "\r", "[A]\r", "[A]\nk=1\r", "[A\r]\r", "[A]\r\nk=1\r\n[B\r", "k=1" })
	{
		for (const FString& Section : { FString(), FString(TEXT("A")), FString(TEXT("B")) })
		{
			for (const TCHAR* const Key : { TEXT("k"), TEXT("\uFEFF\r") })
			{
				FHostIniFile File{ std::string_view(Bytes) };
				EXPECT_EQ(File.GetBytes(), Bytes);
				File.Set(Section, Key, TEXT("new"));
				FString Value;
				EXPECT_TRUE(FHostIniFile(File.GetBytes()).Get(Section, Key, Value)) << Bytes << " becomes " << File.GetBytes();
				EXPECT_EQ(Utf8(Value), "new");
			}
		}
	}
}

TEST_F(IniStore, ReadsWhatTheEditorWritesInWideText)
{
	FHostIniFile File(std::string_view("\xFF\xFE[\0A\0]\0\r\0\n\0k\0=\0\xE4\0", 18));
	FString Value;
	ASSERT_TRUE(File.Get(TEXT("A"), TEXT("K"), Value));
	EXPECT_EQ(Utf8(Value), "ä");
	File.Set(TEXT("A"), TEXT("K"), TEXT("b"));
	EXPECT_EQ(File.GetBytes(), "[A]\r\nk=b");
}

TEST_F(IniStore, WritesForTheUserAloneAndComesBack)
{
	const FString Where = Folder.At(TEXT("Saved/Config"));
	{
		FHostIniStore Store(Where);
		Store.Set(TEXT("Settings"), TEXT("S"), TEXT("Text"), TEXT("two\nlines"));
		Store.Set(TEXT("Settings"), TEXT("S"), TEXT("Gone"), TEXT("x"));
		Store.Remove(TEXT("Settings"), TEXT("S"), TEXT("Gone"));
		EXPECT_EQ(Get(Store, TEXT("s"), TEXT("TEXT")), "two\nlines") << "at once";
	}
	EXPECT_EQ(Folder.Read("Saved/Config/Settings.ini"), "[S]\nText=\"two\\nlines\"\n");
	struct stat Info;
	ASSERT_EQ(stat(Folder.AtBytes("Saved/Config/Settings.ini").c_str(), &Info), 0);
	EXPECT_EQ(Info.st_mode & 0777, 0600u);
	EXPECT_EQ(Get(FHostIniStore(Where), TEXT("S"), TEXT("Text")), "two\nlines");
	EXPECT_EQ(Folder.CountEntries(), 1);
}

TEST_F(IniStore, TwoProgramsOnOneFileMergeByKey)
{
	Folder.Write("Settings.ini", "[S]\na=1\nb=1\nc=1\n");
	FHostIniStore First(Folder.At());
	FHostIniStore Second(Folder.At());
	EXPECT_EQ(Get(First, TEXT("S"), TEXT("a")) + Get(Second, TEXT("S"), TEXT("a")), "11");
	First.Set(TEXT("Settings"), TEXT("S"), TEXT("a"), TEXT("2"));
	First.Finish();
	Second.Set(TEXT("Settings"), TEXT("S"), TEXT("b"), TEXT("3"));
	Second.Finish();
	EXPECT_EQ(Folder.Read("Settings.ini"), "[S]\na=2\nb=3\nc=1\n");
	EXPECT_EQ(Get(Second, TEXT("S"), TEXT("a")), "2");
}

TEST_F(IniStore, NobodyEmptiesWhatHeHasNotRead)
{
	Folder.Write("Settings.ini", "[S]\na=old\nb=old\n");
	FHostIniStore First(Folder.At());
	FHostIniStore Second(Folder.At());
	for (const TCHAR* Key : { TEXT("a"), TEXT("b"), TEXT("late") })
	{
		Get(First, TEXT("S"), Key);
	}
	for (const TCHAR* Key : { TEXT("a"), TEXT("late"), TEXT("later") })
	{
		Second.Set(TEXT("Settings"), TEXT("S"), Key, TEXT("theirs"));
	}
	Second.Finish();
	First.Set(TEXT("Settings"), TEXT("S"), TEXT("a"), TEXT(""));
	First.Remove(TEXT("Settings"), TEXT("S"), TEXT("later"));
	First.Set(TEXT("Settings"), TEXT("S"), TEXT("late"), TEXT("x"));
	First.Set(TEXT("Settings"), TEXT("S"), TEXT("late"), TEXT(""));
	First.Set(TEXT("Settings"), TEXT("S"), TEXT("b"), TEXT(""));
	First.Finish();
	EXPECT_EQ(Folder.Read("Settings.ini"), "[S]\na=theirs\nb=\nlate=theirs\nlater=theirs\n") << "its own it may empty";
	EXPECT_EQ(Get(First, TEXT("S"), TEXT("a")), "theirs");
	First.Set(TEXT("Settings"), TEXT("S"), TEXT("a"), TEXT(""));
	First.Finish();
	EXPECT_EQ(Folder.Read("Settings.ini"), "[S]\na=\nb=\nlate=theirs\nlater=theirs\n") << "now it has read it";
}

TEST_F(IniStore, WritesAtTheSameTimeLoseNothing)
{
	std::vector<std::thread> Programs;
	for (int Program = 0; Program < 4; ++Program)
	{
		Programs.emplace_back(
			[this, Program]()
			{
				FHostIniStore Store(Folder.At());
				for (int Round = 0; Round < 25; ++Round)
				{
					Store.Set(TEXT("Settings"), TEXT("S"), FString::FromInt(Program * 100 + Round), TEXT("x"));
					Store.Finish();
				}
			});
	}
	for (std::thread& Program : Programs)
	{
		Program.join();
	}
	const std::string Bytes = Folder.Read("Settings.ini");
	EXPECT_EQ(std::count(Bytes.begin(), Bytes.end(), 'x'), 100);
}

TEST_F(IniStore, AFailedWriteIsToldOnceAndTriedAgain)
{
	Folder.Write("Settings.ini/in the way", "");
	FHostIniStore Store(Folder.At());
	for (const TCHAR* Value : { TEXT("1"), TEXT("2"), TEXT("3") })
	{
		Store.Set(TEXT("Settings"), TEXT("S"), Value, Value);
		Store.Finish();
	}
	EXPECT_EQ(Told, std::vector<std::string>{ "the path is a folder" });
	EXPECT_FALSE(Store.Flush(TEXT("Settings")));
	std::filesystem::remove_all(Folder.AtBytes("Settings.ini"));
	Store.Set(TEXT("Settings"), TEXT("S"), TEXT("1"), TEXT("new"));
	Store.Finish();
	EXPECT_EQ(Folder.Read("Settings.ini"), "[S]\n2=2\n3=3\n1=new\n") << "nothing that was set is lost";
	EXPECT_TRUE(Store.Flush(TEXT("Settings")));
	EXPECT_EQ(Told.size(), 1u);
}

TEST_F(IniStore, WhatIsNoReadableFileIsNeitherWaitedForNorWritten)
{
	mkfifo(Folder.AtBytes("Settings.ini").c_str(), 0600);
	{
		FHostIniStore Store(Folder.At());
		EXPECT_EQ(Get(Store, TEXT("S"), TEXT("k")), "<missing>");
		Store.Set(TEXT("Settings"), TEXT("S"), TEXT("k"), TEXT("v"));
		EXPECT_EQ(Get(Store, TEXT("S"), TEXT("k")), "v");
	}
	EXPECT_EQ(Told, std::vector<std::string>{ "the path is no file" });
	struct stat Info;
	stat(Folder.AtBytes("Settings.ini").c_str(), &Info);
	EXPECT_TRUE(S_ISFIFO(Info.st_mode));
}

TEST_F(IniStore, SettingWhatIsSetWritesNothing)
{
	Folder.Write("Settings.ini", "[S]\nk=v");
	{
		FHostIniStore Store(Folder.At());
		Store.Set(TEXT("Settings"), TEXT("S"), TEXT("k"), TEXT("v"));
		Store.Remove(TEXT("Settings"), TEXT("S"), TEXT("other"));
		std::filesystem::remove(Folder.AtBytes("Settings.ini"));
	}
	EXPECT_EQ(Folder.Read("Settings.ini"), "<missing>");
}

TEST(DelayedWork, ManyRequestsAreFewRunsAndTheLastIsDone)
{
	std::atomic<int> Runs = 0;
	std::atomic<int> Seen = 0;
	std::atomic<int> Value = 0;
	FHostDelayedWork Work(
		[&]()
		{
			++Runs;
			Seen = Value.load();
		},
		3600.0);
	for (int Index = 1; Index <= 1000; ++Index)
	{
		Value = Index;
		Work.Request();
	}
	Work.Finish();
	EXPECT_EQ(Seen, 1000);
	EXPECT_EQ(Runs, 1);
	Work.Finish();
	EXPECT_EQ(Runs, 1) << "nothing was asked for";
	Value = 7;
	Work.Request();
	Work.Finish();
	EXPECT_EQ(Seen, 7);
}
