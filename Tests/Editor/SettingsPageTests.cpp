#include "Framework/Docking/TabManager.h"
#include "Host/HostConfig.h"
#include "Host/HostConfigStore.h"
#include "Host/HostFileDialogs.h"
#include "Host/HostServices.h"
#include "Host/HostSettings.h"
#include "Host/SDockArea.h"
#include "ISettingsModule.h"
#include "ISettingsSection.h"
#include "Modules/ModuleManager.h"
#include "Support/UiDriver.h"
#include "Widgets/Text/STextBlock.h"
#include "UObject/UObjectGlobals.h"
#include "Widgets/Input/SCheckBox.h"

#include <algorithm>

namespace
{
	constexpr const TCHAR* ModeNames[] = { TEXT("Slow"), TEXT("Fast"), TEXT("Turbo") };
}

/** One property of each kind. */
class UPageTestSettings : public UObject
{
	GENERATED_BODY()

public:
	FString ProjectDescription = TEXT("first");
	int32 Mode = 1;
	bool bUseHTTPProxy = false;
	int32 MaxCount = 5;
	int32 Offset = -3;
	double SpeedOfTurn = 0.5;
	float Factor = 0.1f;
	TArray<FString> Folders = { TEXT("a"), TEXT("b") };
	FString OutputFolder = TEXT("/");

	void VisitConfigProperties(FHostConfigVisitor& Visitor) override
	{
		Visitor.Group(TEXT("General"));
		Visitor.Property(TEXT("ProjectDescription"), ProjectDescription);
		Visitor.Choice(TEXT("Mode"), Mode, ModeNames);
		Visitor.Group(TEXT("Numbers"));
		Visitor.Property(TEXT("bUseHTTPProxy"), bUseHTTPProxy);
		Visitor.Explain(TEXT("How many snails there may be."));
		Visitor.Property(TEXT("MaxCount"), MaxCount, 1, 100);
		Visitor.Property(TEXT("Offset"), Offset);
		Visitor.Property(TEXT("SpeedOfTurn"), SpeedOfTurn, 0.0, 1.0);
		Visitor.Property(TEXT("Factor"), Factor);
		Visitor.Property(TEXT("Folders"), Folders);
		Visitor.Property(TEXT("OutputFolder"), OutputFolder);
	}
};

IMPLEMENT_HOST_CLASS(UPageTestSettings, UObject, "EditorTests")

class FSettingsPageTest : public FWidgetTest
{
protected:
	UPageTestSettings* Settings = nullptr;
	UPageTestSettings* Other = nullptr;

	void SetUp() override
	{
		FWidgetTest::SetUp();
		IHostConfigStore::SetCurrent(nullptr);
		const TSharedRef<SDockArea> Area = SNew(SDockArea);
		FGlobalTabmanager::Get()->SetDockArea(Area);
		Show(Area);
		FHostSettings::Install();
		Settings = NewObject<UPageTestSettings>();
		Other = NewObject<UPageTestSettings>();
		Module().RegisterSettings(
			"Project", "Plugins", "Test", FText::FromString(TEXT("Test Settings")), FText::FromString(TEXT("What is tested")), Settings);
		Module().RegisterSettings("Project", "Game", "Other", FText::FromString(TEXT("Other Settings")), FText::GetEmpty(), Other);
	}
	void TearDown() override
	{
		FGlobalTabmanager::Get()->CloseAllTabs();
		FModuleManager::Get().UnloadModule("Settings");
		FGlobalTabmanager::Get()->SetDockArea(nullptr);
		FWidgetTest::TearDown();
		IHostConfigStore::SetCurrent(nullptr);
	}

	static ISettingsModule& Module() { return FModuleManager::GetModuleChecked<ISettingsModule>("Settings"); }
	void Open(const char* Category = "Plugins", const char* Section = "Test")
	{
		Module().ShowViewer("Project", Category, Section);
		PumpFrame();
		PumpFrame();
	}
	static bool IsOnScreen(const std::string& Text)
	{
		const FTextList Texts = VisibleTexts();
		return std::find(Texts.begin(), Texts.end(), Text) != Texts.end();
	}
	static std::string GetText(const char* Tag) { return Utf8(FindByTag(Tag)->GetDisplayedText().ToString()); }
	/** What a program that starts now would read. */
	std::string ReadSaved(const TCHAR* Key) const
	{
		FString Value(TEXT("<not saved>"));
		IHostConfigStore::GetCurrent()->Get(Settings->GetDefaultConfigFilename(), Settings->GetClass()->GetPathName(), Key, Value);
		return Utf8(Value);
	}
	void Enter(const char* Tag, const std::string& Text)
	{
		Click(FindByTag(Tag));
		PressKey("CTRL+A");
		PressKey("Delete");
		TypeText(Text);
	}
};

TEST_F(FSettingsPageTest, ShowsEveryPropertyOfASection)
{
	Open();
	for (const char* Text :
		{ "Project Settings", "Test Settings", "What is tested", "Plugins", "Game", "Other Settings", "General", "Numbers",
			"Project Description", "Mode", "Fast", "Use HTTP Proxy", "Max Count", "Offset", "Speed of Turn", "Factor", "Folders" })
	{
		EXPECT_TRUE(IsOnScreen(Text)) << Text;
	}
	const std::pair<const char*, const char*> Values[] = { { "ProjectDescription", "first" }, { "MaxCount", "5" }, { "Offset", "-3" },
		{ "SpeedOfTurn", "0.5" }, { "Factor", "0.1" }, { "Folders", "a\nb" } };
	for (const auto& [Tag, Value] : Values)
	{
		EXPECT_EQ(GetText(Tag), Value) << Tag;
	}
	EXPECT_EQ(ReadSaved(TEXT("MaxCount")), "<not saved>") << "showing saves nothing";
}

TEST_F(FSettingsPageTest, PartsStandBelowEachOtherInANarrowWindow)
{
	Open();
	const std::tuple<int32, bool, bool> Widths[] = { { 1280, false, false }, { 720, false, false }, { 560, true, false },
		{ 360, true, true } };
	for (const auto& [Width, bFoldsPage, bFoldsRows] : Widths)
	{
		SCOPED_TRACE(Width);
		// So high that all of it is in view.
		Resize(Width, 1600);
		PumpSeconds(1.0);
		const FSlateRect Search = GetRect(*FindByTag("SettingsSearch"));
		const FSlateRect Title = GetRect(*FindByText("What is tested"));
		EXPECT_EQ(Title.Left < Search.Right, bFoldsPage);
		// What explains a setting stands between its name and its field.
		const FSlateRect Name = GetRect(*FindByText("Max Count"));
		const FSlateRect Words = GetRect(*FindByText("How many snails there may be."));
		const FSlateRect Field = GetRect(*FindByTag("MaxCount"));
		EXPECT_EQ(Field.Top >= Words.Bottom && Field.Left < Name.Right, bFoldsRows);
		EXPECT_EQ(Field.Left > Words.Right && Field.Left > Name.Right, !bFoldsRows);
		for (const char* const Tag : { "SettingsSearch", "ProjectDescription", "Mode", "bUseHTTPProxy", "MaxCount", "Choose.OutputFolder" })
		{
			EXPECT_LE(GetRect(*FindByTag(Tag)).Right, static_cast<float>(Width)) << Tag;
			EXPECT_GE(GetRect(*FindByTag(Tag)).Left, 0.0f) << Tag;
		}
	}
}

TEST_F(FSettingsPageTest, ThePageThatIsOpenIsInViewInTheListOfPages)
{
	for (int32 Number = 0; Number < 20; ++Number)
	{
		const FString Name = FString::Printf(TEXT("Page%d"), Number);
		Module().RegisterSettings("Project", "Many", FName(*Name), FText::FromString(Name), FText::GetEmpty(), Other);
	}
	Resize(360, 400);
	Open("Many", "Page19");
	PumpSeconds(0.5);
	// Its row, not its headline.
	FSlateRect Row(0.0f, 1e9f, 0.0f, 1e9f);
	for (const TSharedRef<SWidget>& Text : FindByType("STextBlock"))
	{
		const bool bIsName = Utf8(Text->GetDisplayedText().ToString()) == "Page19";
		Row = bIsName && GetRect(*Text).Top < Row.Top ? GetRect(*Text) : Row;
	}
	const FSlateRect List = GetRect(*FindByType("SScrollBox")[0]);
	EXPECT_GE(Row.Top, List.Top);
	EXPECT_LE(Row.Bottom, List.Bottom);
}

TEST_F(FSettingsPageTest, ShowsAPageOfItsOwnWhileItsOwnerKeepsIt)
{
	TSharedPtr<SWidget> Own = SNew(STextBlock).Text(FText::FromString(TEXT("Own page")));
	Module().RegisterSettings(
		"Project", "Plugins", "Own", FText::FromString(TEXT("Own")), FText::FromString(TEXT("What it is")), Own.ToSharedRef());
	Open("Plugins", "Own");
	EXPECT_TRUE(IsOnScreen("Own page"));
	EXPECT_TRUE(IsOnScreen("What it is"));
	EXPECT_FALSE(IsOnScreen("Max Count"));
	Open();
	EXPECT_FALSE(IsOnScreen("Own page"));
	EXPECT_TRUE(IsOnScreen("Max Count"));
	Own.Reset();
	Open("Plugins", "Own");
	EXPECT_FALSE(IsOnScreen("Max Count")) << "a page that is gone shows nothing";
}

TEST_F(FSettingsPageTest, EveryChangeIsSaved)
{
	Open();
	Enter("ProjectDescription", "two\nlines");
	EXPECT_EQ(ReadSaved(TEXT("ProjectDescription")), "two\nlines");
	Enter("ProjectDescription", "");
	EXPECT_EQ(ReadSaved(TEXT("ProjectDescription")), "");
	Enter("Folders", "x\ny\nz");
	EXPECT_EQ(ReadSaved(TEXT("Folders.Num")), "3");
	EXPECT_EQ(ReadSaved(TEXT("Folders.2")), "z");
	Enter("Folders", "");
	EXPECT_EQ(ReadSaved(TEXT("Folders.Num")), "0");
	Click(FindByTag("bUseHTTPProxy"));
	EXPECT_EQ(ReadSaved(TEXT("bUseHTTPProxy")), "True");
	EXPECT_TRUE(Settings->bUseHTTPProxy);
	EXPECT_FALSE(Other->bUseHTTPProxy);
	Click(FindByTag("Mode"));
	Click(FindByText("Turbo"));
	EXPECT_EQ(ReadSaved(TEXT("Mode")), "2");
	EXPECT_TRUE(IsOnScreen("Turbo"));
	Enter("SpeedOfTurn", "0.25");
	EXPECT_EQ(ReadSaved(TEXT("SpeedOfTurn")), "0.25");
}

TEST_F(FSettingsPageTest, WhatIsNoValueIsAnsweredInWords)
{
	const std::tuple<const char*, const char*, const char*> Cases[] = {
		{ "MaxCount", "x12", "\"x12\" is not a whole number. The value stays 5." },
		{ "MaxCount", "1.5", "\"1.5\" is not a whole number. The value stays 5." },
		{ "MaxCount", "", "An empty text is not a whole number. The value stays 5." },
		{ "MaxCount", "0", "0 is not between 1 and 100. The value stays 5." },
		{ "MaxCount", "101", "101 is not between 1 and 100. The value stays 5." },
		{ "Offset", "-", "\"-\" is not a whole number. The value stays -3." },
		{ "Offset", "99999999999", "\"99999999999\" is not a whole number. The value stays -3." },
		{ "SpeedOfTurn", "-0.5", "-0.5 is not between 0 and 1. The value stays 0.5." },
		{ "SpeedOfTurn", "\xE2\x85\xA4", "\"\xE2\x85\xA4\" is not a number. The value stays 0.5." },
		{ "Factor", "nan", "\"nan\" is not a number. The value stays 0.1." },
	};
	Open();
	for (const auto& [Tag, Entered, Complaint] : Cases)
	{
		SCOPED_TRACE(std::string(Tag) + " " + Entered);
		Enter(Tag, Entered);
		EXPECT_EQ(GetText(Tag), Entered) << "what was typed stays";
		EXPECT_TRUE(IsOnScreen(Complaint));
	}
	EXPECT_EQ(Settings->MaxCount, 5);
	EXPECT_EQ(ReadSaved(TEXT("MaxCount")), "<not saved>");
	Enter("MaxCount", " 100 ");
	EXPECT_EQ(ReadSaved(TEXT("MaxCount")), "100");
	EXPECT_FALSE(IsOnScreen("101 is not between 1 and 100. The value stays 5."));
}

TEST_F(FSettingsPageTest, EveryFieldGoesBackToItsDefault)
{
	Open();
	Resize(1280, 1400);
	PumpFrame();
	struct FCase
	{
		const char* Tag;
		const char* Entered;
		const char* Default;
		/** A text of one's own. */
		bool bIsAsked;
	};
	const FCase Cases[] = {
		{ "MaxCount", "7", "5", false },
		{ "Offset", "no number", "-3", false },
		{ "SpeedOfTurn", "0.25", "0.5", false },
		{ "ProjectDescription", "second", "first", true },
		{ "Folders", "x", "a\nb", true },
		{ "OutputFolder", "/tmp", "/", false },
	};
	int32 Questions = 0;
	EAppReturnType::Type Answer = EAppReturnType::No;
	FHostServices::SetMessageDialogHook(
		[&Questions, &Answer](const FHostMessageDialog&)
		{
			++Questions;
			return Answer;
		});
	for (const auto& [Tag, Entered, Default, bIsAsked] : Cases)
	{
		SCOPED_TRACE(Tag);
		const std::string Button = std::string("Default.") + Tag;
		EXPECT_FALSE(FWidgetFinder::FindByTag(FName(Button.c_str()))) << "nothing to go back to";
		Enter(Tag, Entered);
		Questions = 0;
		Answer = EAppReturnType::No;
		Click(FindByTag(Button.c_str()));
		PumpFrame();
		EXPECT_EQ(Questions, bIsAsked ? 1 : 0);
		if (bIsAsked)
		{
			EXPECT_EQ(GetText(Tag), Entered) << "the answer was no";
			Answer = EAppReturnType::Yes;
			Click(FindByTag(Button.c_str()));
			PumpFrame();
		}
		EXPECT_EQ(GetText(Tag), Default);
		EXPECT_FALSE(FWidgetFinder::FindByTag(FName(Button.c_str())));
	}
	FHostServices::SetMessageDialogHook(nullptr);
	EXPECT_EQ(ReadSaved(TEXT("MaxCount")), "5");
	Click(FindByTag("bUseHTTPProxy"));
	Click(FindByTag("Default.bUseHTTPProxy"));
	EXPECT_FALSE(Settings->bUseHTTPProxy);
	Settings->Mode = 2;
	PumpFrame();
	Click(FindByTag("Default.Mode"));
	EXPECT_EQ(Settings->Mode, 1);
	EXPECT_TRUE(IsOnScreen("Fast"));
}

TEST_F(FSettingsPageTest, FieldsAreExplainedAndFoldersPickedInADialog)
{
	Open();
	EXPECT_TRUE(IsOnScreen("How many snails there may be."));
	Enter("SettingsSearch", "snail");
	EXPECT_TRUE(IsOnScreen("Max Count"));
	EXPECT_FALSE(IsOnScreen("Offset"));
	Enter("SettingsSearch", "output");
	EXPECT_FALSE(FWidgetFinder::FindByTag("Choose.ProjectDescription"));
	Resize(1600, 600);
	PumpFrame();
	PumpFrame();
	EXPECT_NEAR(GetRect(*FindByTag("Choose.OutputFolder")).Left, GetRect(*FindByTag("OutputFolder")).Right + 8.0f, 1.0f);
	FHostFileDialogs::QueueAnswer(TEXT(""));
	Click(FindByTag("Choose.OutputFolder"));
	EXPECT_EQ(GetText("OutputFolder"), "/") << "cancelled";
	FHostFileDialogs::QueueAnswer(TEXT("/usr"));
	Click(FindByTag("Choose.OutputFolder"));
	PumpFrame();
	EXPECT_EQ(GetText("OutputFolder"), "/usr");
	EXPECT_EQ(ReadSaved(TEXT("OutputFolder")), "/usr");
}

TEST_F(FSettingsPageTest, ShowsPresentValuesWhenItComesToTheFront)
{
	FGlobalTabmanager::Get()->RegisterNomadTabSpawner(
		"Elsewhere", FOnSpawnTab::CreateLambda([](const FSpawnTabArgs&) { return TSharedRef<SDockTab>(SNew(SDockTab)); }));
	Open();
	FGlobalTabmanager::Get()->TryInvokeTab(FTabId("Elsewhere"));
	PumpFrame();
	Settings->ProjectDescription = TEXT("changed");
	Settings->Mode = 0;
	Settings->MaxCount = 7;
	Settings->bUseHTTPProxy = true;
	Click(FindByText("Project Settings"));
	PumpFrame();
	EXPECT_EQ(GetText("ProjectDescription"), "changed");
	EXPECT_EQ(GetText("MaxCount"), "7");
	EXPECT_TRUE(IsOnScreen("Slow"));
	EXPECT_TRUE(StaticCastSharedRef<SCheckBox>(FindByTag("bUseHTTPProxy"))->IsChecked());
	EXPECT_EQ(ReadSaved(TEXT("MaxCount")), "<not saved>") << "showing saves nothing";
	FGlobalTabmanager::Get()->UnregisterNomadTabSpawner("Elsewhere");
}

TEST_F(FSettingsPageTest, SectionsComeAndGoWhileThePageIsOpen)
{
	Open("Game", "Other");
	Enter("MaxCount", "9");
	EXPECT_EQ(Other->MaxCount, 9);
	EXPECT_EQ(Settings->MaxCount, 5);
	Click(FindByText("Test Settings"));
	EXPECT_EQ(GetText("MaxCount"), "5");
	Module().UnregisterSettings("Project", "Plugins", "Test");
	PumpFrame();
	EXPECT_FALSE(IsOnScreen("What is tested"));
	EXPECT_EQ(GetText("MaxCount"), "9") << "the one that is left";
	Module().UnregisterSettings("Project", "Game", "Other");
	PumpFrame();
	EXPECT_TRUE(IsOnScreen("There are no settings."));
	EXPECT_FALSE(Module().RegisterSettings("Project", "Game", "None", FText(), FText(), nullptr).IsValid());
	const TSharedPtr<ISettingsSection> Again =
		Module().RegisterSettings("Project", "Plugins", "Test", FText::FromString(TEXT("Again")), FText(), Settings);
	Open("No", "Such");
	EXPECT_TRUE(IsOnScreen("Again"));
	Settings->MaxCount = 33;
	EXPECT_TRUE(Again->Save());
	EXPECT_EQ(ReadSaved(TEXT("MaxCount")), "33");
	Settings->MarkAsGarbage();
	EXPECT_FALSE(Again->Save());
}

TEST_F(FSettingsPageTest, SearchLeavesWhatHasTheWord)
{
	Open();
	Enter("SettingsSearch", "turn");
	EXPECT_TRUE(IsOnScreen("Speed of Turn"));
	EXPECT_TRUE(IsOnScreen("Numbers"));
	EXPECT_FALSE(IsOnScreen("Max Count"));
	EXPECT_FALSE(IsOnScreen("General"));
	Enter("SettingsSearch", "no such thing");
	EXPECT_TRUE(IsOnScreen("No setting has this name."));
	Enter("SettingsSearch", "");
	EXPECT_TRUE(IsOnScreen("Max Count"));
}
