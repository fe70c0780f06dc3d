#include "HAL/IConsoleManager.h"
#include "Host/HostConsole.h"
#include "Host/HostLog.h"
#include "Support/Base/Printers.h"

#include <memory>

namespace
{
	TAutoConsoleVariable<bool> TestFlag(TEXT("system.Test.Flag"), false, TEXT("A flag."), ECVF_Default);
	TAutoConsoleVariable<int32> TestCount(TEXT("system.Test.Count"), 3, TEXT("A count."));
	TAutoConsoleVariable<float> TestRate(TEXT("system.Test.Rate"), 0.1f, TEXT("A rate."));
	TAutoConsoleVariable<FString> TestName(TEXT("system.Test.Name"), FString(TEXT("x")), TEXT("A name."));

	std::string RunLine(const TCHAR* Line)
	{
		TArray<FString> Lines;
		FHostConsole::Execute(Line, Lines);
		return Utf8(FString::Join(Lines, TEXT("\n")));
	}
}

TEST(SystemConsole, ValuesFromText)
{
	IConsoleVariable* Flag = IConsoleManager::Get().FindConsoleVariable(TEXT("SYSTEM.test.FLAG"));
	ASSERT_NE(Flag, nullptr) << "names ignore letter case";
	struct FCase
	{
		const TCHAR* Text;
		bool bFlag;
		int32 Count;
	};
	for (const FCase& Case :
		{ FCase{ TEXT("1"), true, 1 }, FCase{ TEXT("0"), false, 0 }, FCase{ TEXT("True"), true, 1 }, FCase{ TEXT("off"), false, 0 },
			FCase{ TEXT("-7"), true, -7 }, FCase{ TEXT("0.5"), true, 0 }, FCase{ TEXT("junk"), false, 0 } })
	{
		Flag->Set(Case.Text);
		TestCount->Set(Case.Text);
		EXPECT_EQ(TestFlag.GetValueOnGameThread(), Case.bFlag) << Utf8(Case.Text);
		EXPECT_EQ(TestCount.GetValueOnAnyThread(), Case.Count) << Utf8(Case.Text);
	}
	TestRate->Set(TEXT("0.25"));
	EXPECT_EQ(TestRate.GetValueOnGameThread(), 0.25f);
	TestRate->Set(1.0e30f);
	EXPECT_EQ(TestRate->GetInt(), 2147483647);
	TestName->Set(5);
	EXPECT_EQ(Utf8(TestName.GetValueOnGameThread()), "5");
	EXPECT_EQ(TestName->GetFloat(), 5.0f);
}

TEST(SystemConsole, RegistrationsAreCounted)
{
	FHostLog::SetStderrVerbosity(ELogVerbosity::NoLogging);
	const TCHAR* const Name = TEXT("system.Test.Twice");
	IConsoleManager& Manager = IConsoleManager::Get();
	auto First = std::make_unique<TAutoConsoleVariable<int32>>(Name, 1, TEXT(""));
	{
		TAutoConsoleVariable<int32> Second(TEXT("System.test.twice"), 9, TEXT(""));
		EXPECT_EQ(Second.GetValueOnGameThread(), 1) << "the first registration's value stays";
		EXPECT_EQ(Manager.RegisterConsoleVariable(Name, 1.0f, TEXT("")), nullptr) << "another kind";
		Second->Set(4);
	}
	EXPECT_EQ(First->GetValueOnGameThread(), 4);
	First.reset();
	EXPECT_EQ(Manager.FindConsoleVariable(Name), nullptr);
	TAutoConsoleVariable<int32> Again(Name, 1, TEXT(""));
	EXPECT_EQ(Again.GetValueOnGameThread(), 4) << "a module that comes back finds its value";
	FHostLog::SetStderrVerbosity(ELogVerbosity::Warning);
}

TEST(SystemConsole, CommandLine)
{
	TArray<FString> Got;
	IConsoleCommand* Command = IConsoleManager::Get().RegisterConsoleCommand(TEXT("system.Test.Run"), TEXT("Runs."),
		FConsoleCommandWithArgsDelegate::CreateLambda([&Got](const TArray<FString>& Args) { Got = Args; }));
	EXPECT_EQ(RunLine(TEXT(" SYSTEM.test.count = 12 ")), "SYSTEM.test.count = \"12\"");
	EXPECT_EQ(RunLine(TEXT("system.Test.Count 13")), "system.Test.Count = \"13\"");
	EXPECT_EQ(TestCount.GetValueOnGameThread(), 13);
	EXPECT_EQ(RunLine(TEXT("system.Test.Name \"two words\"")), "system.Test.Name = \"two words\"");
	EXPECT_EQ(RunLine(TEXT("system.Test.Flag ?")), "system.Test.Flag: A flag.");
	EXPECT_EQ(RunLine(TEXT("nothing.there 1")), "There is no console variable or command \"nothing.there\".");
	EXPECT_EQ(RunLine(TEXT("")), "Nothing to run.");
	TestRate->Set(0.25f);
	EXPECT_EQ(RunLine(TEXT("list SYSTEM.test.ra")), "system.Test.Rate = \"0.25\"  A rate.");
	EXPECT_EQ(RunLine(TEXT("list nothing.there")), "No console variable begins with \"nothing.there\".");
	RunLine(TEXT("system.Test.Run a \"b c\" \"\""));
	EXPECT_EQ(Utf8(FString::Join(Got, TEXT("|"))), "a|b c|");
	EXPECT_EQ(Utf8(FString::Join(FHostConsole::Complete(TEXT("SYSTEM.TEST.R")), TEXT("|"))), "system.Test.Rate|system.Test.Run");
	IConsoleManager::Get().UnregisterConsoleObject(Command);
	EXPECT_EQ(IConsoleManager::Get().FindConsoleObject(TEXT("system.Test.Run")), nullptr);
}

TEST(SystemConsole, WrongKindsAreToldAndChangeNothing)
{
	TestFlag->Set(true);
	TestCount->Set(3);
	TestRate->Set(0.5f);
	const std::pair<const char*, const char*> Cases[] = {
		{ "system.Test.Count many", "system.Test.Count takes a whole number, not \"many\"." },
		{ "system.Test.Count 1.5", "system.Test.Count takes a whole number, not \"1.5\"." },
		{ "system.Test.Count 2147483648", "system.Test.Count takes a whole number, not \"2147483648\"." },
		{ "system.Test.Count 3x", "system.Test.Count takes a whole number, not \"3x\"." },
		{ "system.Test.Count=", "system.Test.Count takes a whole number, not \"\"." },
		{ "system.Test.Count \xC3\xA9", "system.Test.Count takes a whole number, not \"\xC3\xA9\"." },
		{ "system.Test.Rate 0,5", "system.Test.Rate takes a number, not \"0,5\"." },
		{ "system.Test.Rate inf", "system.Test.Rate takes a number, not \"inf\"." },
		{ "system.Test.Rate 1e300", "system.Test.Rate takes a number, not \"1e300\"." },
		{ "system.Test.Flag maybe", "system.Test.Flag takes true or false, not \"maybe\"." },
		{ "system.Test.Flag 2", "system.Test.Flag takes true or false, not \"2\"." },
	};
	for (const auto& [Line, Answer] : Cases)
	{
		EXPECT_EQ(RunLine(UTF8_TO_TCHAR(Line)), Answer);
	}
	EXPECT_TRUE(TestFlag.GetValueOnGameThread());
	EXPECT_EQ(TestCount.GetValueOnGameThread(), 3);
	EXPECT_EQ(TestRate.GetValueOnGameThread(), 0.5f);
	EXPECT_EQ(RunLine(TEXT("system.Test.Count +4")), "system.Test.Count = \"4\"");
	EXPECT_EQ(RunLine(TEXT("system.Test.Rate 1e-3")), "system.Test.Rate = \"0.001\"");
	EXPECT_EQ(RunLine(TEXT("system.Test.Flag Off")), "system.Test.Flag = \"false\"");
	EXPECT_EQ(
		Utf8(FHostConsole::SetVariable(TEXT("nothing.there"), TEXT("1"))), "There is no console variable or command \"nothing.there\".");
}
