#include "ChatWindowTest.h"

#include "History/FileHistoryTracker.h"
#include "Host/HostEditor.h"
#include "Host/HostPaths.h"
#include "Misc/Paths.h"
#include "Support/Base/FolderMode.h"
#include "Support/Base/TempFolder.h"
#include "Widgets/Layout/SExpandableArea.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SChangedFilesList.h"

class FChatWindowContextTest : public FChatWindowTest
{
protected:
	void SetUp() override
	{
		FChatWindowTest::SetUp();
		ProjectDirBefore = FPaths::ProjectDir();
		FHostPaths::SetProjectDir(Project.At());
		FHostEditor::StartUp();
		Connect();
	}

	void TearDown() override
	{
		FFileHistoryTracker::Get().RemoveGroup(TEXT("c1"), TEXT("g"));
		FHostEditor::ShutDown();
		FHostPaths::SetProjectDir(ProjectDirBefore);
		FChatWindowTest::TearDown();
	}

	void Attach(std::initializer_list<const TCHAR*> Files)
	{
		for (const TCHAR* File : Files)
		{
			ViewModel->AddContextFile(File);
		}
		PumpFrame();
	}

	FChildren* GetChipWidgets() const
	{
		const TSharedPtr<SWidget> Area = FWidgetFinder::FindByTag(FName("ContextChips"));
		return (Area.IsValid() ? FindInside(*Area, "SHorizontalBox") : SNullWidget::NullWidget.ToSharedPtr())->GetChildren();
	}

	/** Names of the chips, clipped or not. */
	FTextList GetChips() const
	{
		FTextList Names;
		FChildren* Chips = GetChipWidgets();
		for (int32 Index = 0; Index < Chips->Num(); ++Index)
		{
			const std::string Dumped = DumpWidgets(*Chips->GetChildAt(Index));
			EXPECT_TRUE(Dumped.ends_with("', SButton[STextBlock '×']]]")) << Dumped;
			const size_t Begin = Dumped.find('\'') + 1;
			Names.push_back(Dumped.substr(Begin, Dumped.find('\'', Begin) - Begin));
		}
		return Names;
	}

	/** Walks by Tab until a chip's button has the keyboard; its index. */
	int32 TabToChip()
	{
		for (int Step = 0; Step < 40; ++Step)
		{
			PressKey("Tab");
			FChildren* Chips = GetChipWidgets();
			for (int32 Index = 0; Index < Chips->Num(); ++Index)
			{
				if (Chips->GetChildAt(Index)->HasFocusedDescendants())
				{
					return Index;
				}
			}
		}
		return INDEX_NONE;
	}

	FTempFolder Project;
	FString ProjectDirBefore;
};

TEST_F(FChatWindowContextTest, ChipsAreNamedByWhatIsAttached)
{
	Project.Write("Source/Game/A.cpp", "");
	Project.Write("Source/v1.2/A.cpp", "");
	EXPECT_FALSE(IsShown(FWidgetTest::FindByTag("InputTextBox")) && FWidgetFinder::FindByTag("ContextChips").IsValid())
		<< "no files, no row";
	const std::pair<const TCHAR*, const char*> Cases[] = {
		{ TEXT("Source/Game/A.cpp"), "A.cpp" },
		{ TEXT("Source/Missing.h"), "Missing.h" },
		{ TEXT("Content/Maps/Start.umap"), "Start" },
		{ TEXT("Content/DT_Dash.UASSET"), "DT_Dash" },
		{ TEXT("Source/Game"), "Source/Game" },
		{ TEXT("Source/v1.2"), "v1.2" },
		{ TEXT("Docs/LICENSE"), "LICENSE" },
	};
	FTextList Names;
	for (const auto& [File, Name] : Cases)
	{
		Attach({ File });
		Names.push_back(Name);
		EXPECT_EQ(GetChips(), Names);
	}
	EXPECT_EQ(Utf8(FindByText("A.cpp")->GetToolTipText()), "Source/Game/A.cpp");
}

TEST_F(FChatWindowContextTest, AChipGoesByItsCross)
{
	Attach({ TEXT("A.h"), TEXT("B.h"), TEXT("C.h") });
	Prompt("see A.h");
	Click(FWidgetFinder::FindByText(TEXT("×"))[1]);
	EXPECT_EQ(GetChips(), (FTextList{ "A.h", "C.h" }));
	EXPECT_TRUE(InputBox()->HasKeyboardFocus()) << "who clicked goes on typing";
	TypeText("!");
	EXPECT_EQ(GetPrompt(), "see A.h!") << "the text stays";
	ViewModel->RemoveContextFile(TEXT("a.H"));
	ViewModel->RemoveContextFile(TEXT("Never.h"));
	PumpFrame();
	EXPECT_EQ(GetChips(), (FTextList{ "C.h" }));
	PressKey("CTRL+Enter");
	EXPECT_EQ(GetChips(), FTextList()) << "what was sent is no longer attached";
}

TEST_F(FChatWindowContextTest, ARowWiderThanTheWindowIsClippedAndReachedByKey)
{
	for (int Index = 0; Index < 30; ++Index)
	{
		Attach({ *FString::Printf(TEXT("Source/QuiteALongName%02d.cpp"), Index) });
	}
	const FSlateRect Row = GetRect(*FindByTag("ContextChips"));
	EXPECT_LE(Row.Right, 1280.0f);
	for (const TSharedRef<SWidget>& Widget : App().GetPathUnderPoint(FVector2D(Row.Right + 1.0, (Row.Top + Row.Bottom) * 0.5)))
	{
		EXPECT_NE(Utf8(Widget->GetType().ToString()), "SButton") << "nothing of a chip reaches beyond the row";
	}
	Click(InputBox());
	ASSERT_EQ(TabToChip(), 0);
	for (int Index = 1; Index < 30; ++Index)
	{
		ASSERT_EQ(TabToChip(), Index);
	}
	PumpFrame();
	const FSlateRect Last = GetRect(*GetChipWidgets()->GetChildAt(29));
	EXPECT_TRUE(Last.Width() > 0.0f && Last.Left >= Row.Left && Last.Right <= Row.Right) << "it is in view while it has the keyboard";
	PressKey("SpaceBar");
	EXPECT_EQ(GetChips().size(), 29u);
	EXPECT_EQ(GetChips().back(), "QuiteALongName28.cpp");
	PressKey("Enter");
	EXPECT_EQ(GetChips().back(), "QuiteALongName27.cpp") << "the keyboard is on the last chip again";
	for (int Left = 28; Left > 0; --Left)
	{
		PressKey("Enter");
	}
	EXPECT_EQ(GetChips(), FTextList());
	EXPECT_TRUE(InputBox()->HasKeyboardFocus()) << "behind the last chip comes the prompt";
}

TEST_F(FChatWindowContextTest, AnotherViewModelTakesOver)
{
	Attach({ TEXT("A.h") });
	const TSharedPtr<FChatViewModel> Before = ViewModel;
	const TSharedPtr<FTestAgent> OtherAgent = MakeShared<FTestAgent>();
	OtherAgent->HoldConversation(TEXT("c2"));
	const TSharedPtr<FChatViewModel> Other = MakeShared<FChatViewModel>();
	ASSERT_TRUE(Other->Initialize(OtherAgent));
	Window->SetViewModel(Other);
	Before->AddContextFile(TEXT("B.h"));
	EXPECT_EQ(GetChips(), FTextList()) << "the old one is no longer listened to";
	Other->AddContextFile(TEXT("C.h"));
	EXPECT_EQ(GetChips(), (FTextList{ "C.h" }));
	const TSharedRef<SWidget> Chip = GetChipWidgets()->GetChildAt(0);
	Before->AddContextFile(TEXT("D.h"));
	EXPECT_EQ(GetChipWidgets()->GetChildAt(0), Chip) << "what stands there, perhaps under the mouse, is not built anew";
	EXPECT_EQ(TextOf("ConversationId"), "[c2]");
}

TEST_F(FChatWindowContextTest, ChangedFilesFollowTheMessages)
{
	FFileHistoryTracker::Get().AddOperation(TEXT("c1"), TEXT("g"), { TEXT("Source/A.cpp"), 1, FDateTime::Now() });
	EXPECT_EQ(TextOf("ChangedFilesHeader"), "Changed Files");
	Agent->FireMessage(TEXT("done"));
	PumpSeconds(0.5);
	EXPECT_EQ(TextOf("ChangedFilesHeader"), "Changed Files (1)");
}

TEST_F(FChatWindowContextTest, AClickOpensWhatThePathNames)
{
	for (const char* File : { "Source/A.cpp", "Docs/notes.md", "LICENSE", "Content/Maps/Start.umap", "Content/X.uasset" })
	{
		Project.Write(File, "");
	}
	std::string Folder = Project.AtBytes("");
	Folder.pop_back();
	const std::pair<FString, std::string> Cases[] = {
		{ TEXT("/Game/Maps/Start"), "asset /Game/Maps/Start.Start" },
		{ TEXT("/Game/Maps/Missing"), "" },
		{ TEXT("/Game/../../etc/passwd"), "" },
		{ TEXT("/etc/passwd"), "" },
		{ TEXT("Source/A.cpp"), "source " + Folder + "/Source/A.cpp" },
		{ TEXT("Source\\A.cpp"), "source " + Folder + "/Source/A.cpp" },
		{ TEXT("Source/./B/../A.cpp"), "source " + Folder + "/Source/A.cpp" },
		{ TEXT("Docs/notes.md"), "source " + Folder + "/Docs/notes.md" },
		{ TEXT("LICENSE"), "source " + Folder + "/LICENSE" },
		{ TEXT("Source/Gone.h"), "" },
		{ TEXT("Content/X.uasset"), "" },
		{ TEXT(""), "" },
	};
	FindOne<SExpandableArea>("SExpandableArea")->SetExpanded(true);
	for (const auto& [Path, Expected] : Cases)
	{
		FHostEditor::ClearRecords();
		FFileHistoryTracker::Get().RemoveGroup(TEXT("c1"), TEXT("g"));
		FFileHistoryTracker::Get().AddOperation(TEXT("c1"), TEXT("g"), { Path, 1, FDateTime::Now() });
		ViewModel->OnMessagesChanged().Broadcast();
		PumpFrame();
		Click(FindByToolTip("Created: " + Utf8(Path)));
		std::string Opened;
		for (const FString& Asset : FHostEditor::GetOpenedAssets())
		{
			Opened += "asset " + Utf8(Asset);
		}
		for (const FHostOpenedSource& Source : FHostEditor::GetOpenedSources())
		{
			Opened += "source " + Utf8(Source.Path);
		}
		EXPECT_EQ(Opened, Expected) << Utf8(Path);
	}
}

/** Folders as the editor has them and as a command line has them: what is opened is the same. */
class FChatWindowFolderTest : public FChatWindowContextTest, public testing::WithParamInterface<bool>
{
protected:
	void ShowChangedFile(const TCHAR* Path)
	{
		FFileHistoryTracker::Get().AddOperation(TEXT("c1"), TEXT("g"), { Path, 1, FDateTime::Now() });
		Agent->FireMessage(TEXT("done"));
		PumpSeconds(0.5);
		FindOne<SExpandableArea>("SExpandableArea")->SetExpanded(true);
		PumpFrame();
	}
};

TEST_P(FChatWindowFolderTest, AChangedSourceOpensByItsFullPath)
{
	const FFolderMode Mode(GetParam(), Project.At(TEXT("Engine/Binaries/Win64")));
	Project.Write("Source/A.cpp", "");
	ShowChangedFile(TEXT("Source/A.cpp"));
	Click(FindByText("A.cpp"));
	ASSERT_EQ(FHostEditor::GetOpenedSources().Num(), 1);
	EXPECT_EQ(Utf8(FHostEditor::GetOpenedSources()[0].Path), Project.AtBytes("Source/A.cpp"));
}

TEST_P(FChatWindowFolderTest, AChangedAssetIsFoundByItsPathInTheContentFolder)
{
	// A drive's letter, since a path that begins with a slash is an object's.
	Project.Write("C:/Game/Content/Maps/Start.umap", "");
	const std::filesystem::path Before = std::filesystem::current_path();
	std::filesystem::current_path(Project.AtBytes());
	const FFolderMode Mode(GetParam(), TEXT("C:/Engine/Binaries/Win64"));
	FHostPaths::SetProjectDir(TEXT("C:/Game"));
	ShowChangedFile(TEXT("c:/Game/Content/Maps/Start.umap"));
	Click(FindByText("Start.umap"));
	EXPECT_EQ(FHostEditor::GetOpenedAssets().Num(), 1);
	if (FHostEditor::GetOpenedAssets().Num() == 1)
	{
		EXPECT_EQ(Utf8(FHostEditor::GetOpenedAssets()[0]), "/Game/Maps/Start.Start");
	}
	std::filesystem::current_path(Before);
}

TEST_P(FChatWindowFolderTest, AFolderAmongTheChipsStandsWhole)
{
	const FFolderMode Mode(GetParam(), Project.At(TEXT("Engine/Binaries/Win64")));
	Project.Write("Source/Game/A.cpp", "");
	Attach({ TEXT("Source/Game"), TEXT("Source/Game/A.cpp"), TEXT("Source/None") });
	EXPECT_EQ(GetChips(), (FTextList{ "Source/Game", "A.cpp", "None" }));
}

INSTANTIATE_TEST_SUITE_P(Folders, FChatWindowFolderTest, testing::Bool());
