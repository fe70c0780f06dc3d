#include "Open/OpenRules.h"
#include "Support/Base/Printers.h"

namespace
{
	std::string Verdict(const FOpenDecision& Decision)
	{
		EXPECT_EQ(Decision.Reason.IsEmpty(), Decision.Verdict == EOpenVerdict::Open) << "only the harmless needs no words";
		switch (Decision.Verdict)
		{
		case EOpenVerdict::Open:
			return "open";
		case EOpenVerdict::Ask:
			return "ask";
		case EOpenVerdict::Refuse:
			return "refuse";
		}
		return "";
	}
}

TEST(OpenRules, Addresses)
{
	const std::pair<const TCHAR*, const char*> Cases[] = {
		{ TEXT("https://example.org/a?b=c#d"), "open" },
		{ TEXT("HTTP://EXAMPLE.ORG"), "open" },
		{ TEXT("mailto:someone@example.org?subject=x"), "open" },
		{ TEXT("mailto:someone@example.org?Attachment=/etc/passwd"), "ask" },
		{ TEXT("ftp://example.org"), "ask" },
		{ TEXT("file:///etc/passwd"), "ask" },
		{ TEXT("javascript:alert(1)"), "ask" },
		{ TEXT("smb://server/share"), "ask" },
		{ TEXT("tel:1"), "ask" },
		{ TEXT("x-handler.a+b:run"), "ask" },
		{ TEXT("httpss://example.org"), "ask" },
		{ TEXT(" https://example.org"), "ask" },
		{ TEXT("www.example.org"), "ask" },
		{ TEXT("/usr/bin/xterm"), "ask" },
		{ TEXT(":"), "ask" },
		{ TEXT("-version"), "refuse" },
		{ TEXT("--help=https://example.org"), "refuse" },
		{ TEXT(""), "refuse" },
		{ TEXT("https://example.org/\nrm"), "refuse" },
		{ TEXT("https://example.org/\x7F"), "refuse" },
	};
	for (const auto& [Target, Expected] : Cases)
	{
		EXPECT_EQ(Verdict(OpenRules::JudgeUrl(Target)), Expected) << Utf8(Target);
	}
	EXPECT_EQ(Verdict(OpenRules::JudgeUrl(TEXT("https://") + FString::ChrN(40000, TEXT('x')))), "refuse");
}

TEST(OpenRules, Files)
{
	struct FCase
	{
		const TCHAR* Path;
		const TCHAR* RealPath;
		bool bExists;
		bool bDirectory;
		bool bExecutable;
		const char* Verdict;
	};
	const FCase Cases[] = {
		{ TEXT("/p/notes.md"), TEXT("/p/notes.md"), true, false, false, "open" },
		{ TEXT("/p/Makefile"), TEXT("/p/Makefile"), true, false, false, "ask" },
		{ TEXT("/p/notes.md"), TEXT("/p/blob"), true, false, false, "ask" },
		{ TEXT("/p/page.html"), TEXT("/p/page.html"), true, false, false, "ask" },
		{ TEXT("/p/page.HTM"), TEXT("/p/page.HTM"), true, false, false, "ask" },
		{ TEXT("/p/page.xhtml"), TEXT("/p/page.xhtml"), true, false, false, "ask" },
		{ TEXT("/p/logo.svg"), TEXT("/p/logo.svg"), true, false, false, "ask" },
		{ TEXT("/p/page.mht"), TEXT("/p/page.mht"), true, false, false, "ask" },
		{ TEXT("/p/notes.txt"), TEXT("/p/page.html"), true, false, false, "ask" },
		{ TEXT("/p/logo.png"), TEXT("/p/logo.png"), true, false, false, "open" },
		{ TEXT("/p/.gitignore"), TEXT("/p/.gitignore"), true, false, false, "open" },
		{ TEXT("/p/folder"), TEXT("/p/folder"), true, true, false, "open" },
		{ TEXT("/p/tool"), TEXT("/p/tool"), true, false, true, "ask" },
		{ TEXT("/p/x.desktop"), TEXT("/p/x.desktop"), true, false, false, "ask" },
		{ TEXT("/p/x.SH"), TEXT("/p/x.SH"), true, false, false, "ask" },
		{ TEXT("/p/x.AppImage"), TEXT("/p/x.AppImage"), true, false, false, "ask" },
		{ TEXT("/p/x.exe"), TEXT("/p/x.exe"), true, false, false, "ask" },
		{ TEXT("/p/x.bat"), TEXT("/p/x.bat"), true, false, false, "ask" },
		{ TEXT("/p/notes.md"), TEXT("/p/really.desktop"), true, false, false, "ask" },
		{ TEXT("/p/gone.md"), TEXT(""), false, false, false, "refuse" },
		{ TEXT("-rf"), TEXT("/p/-rf"), true, false, false, "refuse" },
		{ TEXT("/p/a\nb"), TEXT("/p/a\nb"), true, false, false, "refuse" },
		{ TEXT(""), TEXT("/p"), true, true, false, "refuse" },
	};
	for (const FCase& Case : Cases)
	{
		const FOpenFileFacts Facts{ Case.bExists, Case.bDirectory, Case.bExecutable, Case.RealPath };
		EXPECT_EQ(Verdict(OpenRules::JudgeFile(Case.Path, Facts)), Case.Verdict) << Utf8(Case.Path);
	}
	const FOpenFileFacts Disguised{ true, false, false, TEXT("/p/notes.md"), /*bBinaryProgram*/ true };
	EXPECT_EQ(Verdict(OpenRules::JudgeFile(TEXT("/p/notes.md"), Disguised)), "ask");
}

TEST(OpenRules, WhatHidesIsSpelledOut)
{
	EXPECT_EQ(Utf8(OpenRules::MakeReadable(TEXT("a\u202Etxt.exe\u200B \u00E4"))), "a\\u202Etxt.exe\\u200B \u00E4");
}

TEST(OpenRules, SourceLinks)
{
	const std::tuple<const TCHAR*, const char*, int32> Rows[] = {
		{ TEXT("file:/p/a b.cpp#L67"), "/p/a b.cpp", 67 },
		{ TEXT("file:/p/a#L2.cpp#L9"), "/p/a#L2.cpp", 9 },
		{ TEXT("file:///p/a.cpp#L67"), "", 0 },
		{ TEXT("file:/p/a.cpp"), "", 0 },
		{ TEXT("file:/p/a.cpp#L"), "", 0 },
		{ TEXT("file:/p/a.cpp#L6x"), "", 0 },
		{ TEXT("file:/p/a.cpp#L99999999999"), "", 0 },
		{ TEXT("file:a.cpp#L6"), "", 0 },
		{ TEXT("http:/p/a.cpp#L6"), "", 0 },
		{ TEXT("file:#L6"), "", 0 },
	};
	for (const auto& [Target, Input, Expected] : Rows)
	{
		FString Path;
		int32 Line = 0;
		EXPECT_EQ(OpenRules::ReadSourceLink(Target, Path, Line), Expected > 0) << Utf8(FString(Target));
		EXPECT_EQ(Utf8(Path), Input);
		EXPECT_EQ(Line, Expected);
	}
}
