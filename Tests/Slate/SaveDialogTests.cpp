#include "Host/HostClock.h"
#include "Host/HostDialogs.h"
#include "Host/HostFileDialogs.h"
#include "Host/HostFileNames.h"
#include "Slate/Private/Host/SaveTarget.h"
#include "Support/Base/TempFolder.h"
#include "Support/UiDriver.h"
#include "Widgets/Layout/SBox.h"

#include <deque>
#include <functional>
#include <sys/stat.h>

namespace
{
	const TCHAR* const Types = TEXT("Markdown Files (*.md)|*.md|Pages|*.htm;*.html|Any|*.*");
}

TEST(SaveTarget, ReadsFilters)
{
	const TArray<FSaveFilter> Filters = FSaveFilter::Parse(Types);
	ASSERT_EQ(Filters.Num(), 3);
	EXPECT_EQ(Utf8(Filters[0].Label), "Markdown Files (*.md)");
	EXPECT_TRUE(Filters[0].Matches(TEXT("A.MD")));
	EXPECT_FALSE(Filters[0].Matches(TEXT("a.mdx")));
	EXPECT_TRUE(Filters[1].Matches(TEXT("a.htm")) && Filters[1].Matches(TEXT("a.html")));
	EXPECT_TRUE(Filters[2].Matches(TEXT("noextension")));
	EXPECT_EQ(FSaveFilter::Parse(TEXT("")).Num(), 1);
	EXPECT_TRUE(FSaveFilter::Parse(TEXT("half"))[0].Matches(TEXT("x")));
}

TEST(SaveTarget, TellsWhatATypedNameMeans)
{
	const FTempFolder Folder;
	Folder.Write("old.md", "x");
	Folder.Write("sub/inner.md", "x");
	Folder.Write("locked.md", "x");
	chmod(Folder.AtBytes("locked.md").c_str(), 0444);
	mkfifo(Folder.AtBytes("pipe").c_str(), 0600);
	setenv("HOME", Folder.AtBytes("sub").c_str(), 1);
	const FString Here = Folder.At(TEXT("sub/.."));
	const std::string Base = Folder.AtBytes();
	struct FCase
	{
		FString Typed;
		FSaveTarget::EKind Kind;
		/** Of the path below the folder, or of the problem. */
		std::string Expected;
	};
	const FCase Cases[] = {
		{ TEXT("new.md"), FSaveTarget::EKind::NewFile, "new.md" },
		{ TEXT("no extension"), FSaveTarget::EKind::NewFile, "no extension" },
		{ TEXT("a\\b"), FSaveTarget::EKind::NewFile, "a\\b" },
		{ TEXT("old.md"), FSaveTarget::EKind::ExistingFile, "old.md" },
		{ TEXT("./sub//../sub/inner.md"), FSaveTarget::EKind::ExistingFile, "sub/inner.md" },
		{ TEXT("~/fresh.txt"), FSaveTarget::EKind::NewFile, "sub/fresh.txt" },
		{ TEXT("sub"), FSaveTarget::EKind::Folder, "sub" },
		{ TEXT("sub/"), FSaveTarget::EKind::Folder, "sub" },
		{ TEXT("   "), FSaveTarget::EKind::None, "Type a name for the file." },
		{ FString(1, TEXT("\0")) + TEXT("x"), FSaveTarget::EKind::None, "This name holds a character that no file name can have." },
		{ TEXT("missing/new.md"), FSaveTarget::EKind::None, "There is no folder \"" + Base + "missing\"." },
		{ TEXT("missing/"), FSaveTarget::EKind::None, "There is no folder \"" + Base + "missing\"." },
		{ TEXT("old.md/new.md"), FSaveTarget::EKind::None, "\"" + Base + "old.md\" is no folder." },
		{ TEXT("pipe"), FSaveTarget::EKind::None, "\"" + Base + "pipe\" is no file." },
		{ TEXT("locked.md"), FSaveTarget::EKind::None, "\"locked.md\" cannot be saved here: the file is marked read-only." },
		{ FString::ChrN(256, TEXT('n')), FSaveTarget::EKind::None,
			"\"" + std::string(256, 'n') + "\" cannot be saved here: the name is too long." },
	};
	for (const FCase& Case : Cases)
	{
		const FSaveTarget Target = FSaveTarget::Find(Here, Case.Typed);
		EXPECT_EQ(static_cast<int>(Target.Kind), static_cast<int>(Case.Kind)) << Utf8(Case.Typed);
		EXPECT_EQ(Case.Kind == FSaveTarget::EKind::None ? Utf8(Target.Problem) : Utf8(Target.Path),
			(Case.Kind == FSaveTarget::EKind::None ? "" : Base) + Case.Expected);
	}
	EXPECT_EQ(Utf8(FSaveTarget::Collapse(TEXT("/../a/./b/..//c/"))), "/a/c");
}

/** The dialog in its loop; steps run one a frame. */
class FSaveDialogTest : public FWidgetTest
{
protected:
	void SetUp() override
	{
		FWidgetTest::SetUp();
		FHostDialogs::Install();
		FHostDialogs::SetAnswering(true);
		Show(SNew(SBox));
		Dialog.Title = TEXT("Export");
		Dialog.Folder = Folder.At();
		Dialog.File = TEXT("talk.md");
		Dialog.FileTypes = Types;
	}
	void TearDown() override
	{
		App().SetFrameHook(nullptr);
		FHostDialogs::Uninstall();
		FWidgetTest::TearDown();
	}

	/** Opens the dialog, runs the steps inside it, two frames apart, and returns the file chosen; "-" when cancelled. */
	std::string Ask(std::deque<std::function<void()>> Steps)
	{
		int32 Frame = 0;
		App().SetFrameHook(
			[&]()
			{
				FHostClock::Advance(1.0 / 60.0);
				if (++Frame < 3 || Frame % 2 == 0)
				{
					return;
				}
				if (Steps.empty())
				{
					FHostFileDialogs::PressOpen(TEXT("Cancel"));
					return;
				}
				const std::function<void()> Step = Steps.front();
				Steps.pop_front();
				Step();
			});
		FString File;
		const bool bChosen = FHostFileDialogs::AskForSaveFile(Dialog, File);
		App().SetFrameHook(nullptr);
		EXPECT_EQ(bChosen, !File.IsEmpty());
		return bChosen ? Utf8(File) : "-";
	}
	static std::function<void()> Key(const FKey& Key, const FModifierKeysState& Modifiers = FModifierKeysState())
	{
		return [Key, Modifiers]()
		{
			App().GetMessageHandler().OnKeyDown(Key, Modifiers, false);
			App().GetMessageHandler().OnKeyUp(Key, FModifierKeysState());
		};
	}
	static std::function<void()> Type(const TCHAR* Text)
	{
		return [Text]() { App().GetMessageHandler().OnTextInput(FString(Text)); };
	}
	std::function<void()> Look()
	{
		return [this]() { Seen = VisibleTexts(); };
	}
	bool Saw(const std::string& Text) const { return std::find(Seen.begin(), Seen.end(), Text) != Seen.end(); }
	std::string Problem() const
	{
		return FHostFileDialogs::GetOpen().IsSet() ? Utf8(FHostFileDialogs::GetOpen().GetValue().Problem) : "closed";
	}

	FTempFolder Folder;
	FHostSaveDialog Dialog;
	FTextList Seen;
};

TEST_F(FSaveDialogTest, EnterSavesUnderTheNameOfferedOrTyped)
{
	EXPECT_EQ(Ask({ Key(EKeys::Enter) }), Folder.AtBytes("talk.md"));
	// What is offered is selected, so typing replaces it; the kind that is shown supplies the ending when none is typed.
	EXPECT_EQ(Ask({ Type(TEXT("notes")), Key(EKeys::Enter) }), Folder.AtBytes("notes.md"));
	EXPECT_EQ(Ask({ Type(TEXT("v1.")), Key(EKeys::Enter) }), Folder.AtBytes("v1..md"));
	EXPECT_EQ(Ask({ Type(TEXT("notes.text")), Key(EKeys::Enter) }), Folder.AtBytes("notes.text"));
	EXPECT_EQ(Ask({ Type(TEXT(".hidden")), Key(EKeys::Enter) }), Folder.AtBytes(".hidden.md"));
	const auto ToFilter = [this]() { App().SetKeyboardFocus(FindByTag("SaveFilterBox")); };
	// Of several endings the kind's first one.
	EXPECT_EQ(Ask({ Type(TEXT("page")), ToFilter, Key(EKeys::Down), [this]() { App().SetKeyboardFocus(FindByTag("SaveButton")); },
				  Key(EKeys::Enter) }),
		Folder.AtBytes("page.htm"));
	EXPECT_EQ(Ask({ Type(TEXT("notes")), Key(EKeys::Escape) }), "-");
}

TEST_F(FSaveDialogTest, ListsFoldersAndWhatFitsTheFilter)
{
	Folder.Write("b.md", "");
	Folder.Write("A.md", "");
	Folder.Write("page.html", "");
	Folder.Write("zoo/x", "");
	Ask({ Look() });
	const FTextList Rows(std::find(Seen.begin(), Seen.end(), ".."), std::find(Seen.begin(), Seen.end(), "Name"));
	EXPECT_EQ(Rows, (FTextList{ "..", "zoo", "A.md", "b.md" }));
	const auto NextFilter = [this]() { App().SetKeyboardFocus(FindByTag("SaveFilterBox")); };
	Ask({ NextFilter, Key(EKeys::Down), Look() });
	EXPECT_TRUE(Saw("page.html") && Saw("zoo") && !Saw("b.md"));
}

TEST_F(FSaveDialogTest, WalksThroughFoldersByKeys)
{
	Folder.Write("deep/er/old.md", "x");
	const auto ToList = [this]() { App().SetKeyboardFocus(FindByTag("SaveList")); };
	// Down to "deep", in, down to "er", in, out by Backspace: "er" is marked again, in, up and save.
	EXPECT_EQ(Ask({ ToList, Key(EKeys::Down), Key(EKeys::Down), Key(EKeys::Enter), Key(EKeys::Down), Key(EKeys::Enter),
				  Key(EKeys::BackSpace), Key(EKeys::Enter), Key(EKeys::Up, FModifierKeysState(false, false, false, false, true, false)),
				  [this]() { App().SetKeyboardFocus(FindByTag("SaveButton")); }, Key(EKeys::Enter) }),
		Folder.AtBytes("deep/talk.md"));
	// A folder typed as a name is gone to; the name stays as it was offered. The folder box takes a path, too.
	EXPECT_EQ(Ask({ Type(TEXT("deep/er")), Key(EKeys::Enter), Key(EKeys::Enter) }), Folder.AtBytes("deep/er/talk.md"));
	EXPECT_EQ(Ask({ [this]() { App().SetKeyboardFocus(FindByTag("SaveFolderBox")); }, Type(TEXT("/deep")), Key(EKeys::Enter), ToList,
				  Key(EKeys::BackSpace), Look() }),
		"-");
	EXPECT_TRUE(Saw("deep"));
}

TEST_F(FSaveDialogTest, TabGoesThroughEverythingInOrder)
{
	std::vector<std::string> Tags;
	const auto Note = [&Tags]()
	{
		const TSharedPtr<SWidget> Focused = App().GetKeyboardFocusedWidget();
		Tags.push_back(Focused ? Utf8(Focused->GetTag().ToString()) : "none");
	};
	std::deque<std::function<void()>> Steps{ Note };
	for (int32 Count = 0; Count < 8; ++Count)
	{
		Steps.push_back(Key(EKeys::Tab));
		Steps.push_back(Note);
	}
	Ask(Steps);
	const std::vector<std::string> Expected{ "SaveNameBox", "SaveFilterBox", "SaveButton", "SaveCancelButton" };
	ASSERT_EQ(Tags.size(), 9u);
	EXPECT_EQ(std::vector<std::string>(Tags.begin(), Tags.begin() + 4), Expected);
	// Around the end, past the close mark if it takes the keyboard, back to the folder, the new folder and the list.
	const auto FolderAt = std::find(Tags.begin(), Tags.end(), "SaveFolderBox");
	ASSERT_TRUE(Tags.end() - FolderAt >= 3) << ::testing::PrintToString(Tags);
	EXPECT_EQ(
		std::vector<std::string>(FolderAt, FolderAt + 3), (std::vector<std::string>{ "SaveFolderBox", "SaveNewFolderButton", "SaveList" }));
}

TEST_F(FSaveDialogTest, AsksBeforeItReplaces)
{
	Folder.Write("talk.md", "old");
	std::string Question;
	const auto Answer = [&Question](const TCHAR* Button)
	{
		return [&Question, Button]()
		{
			const TArray<FHostOpenDialog> Open = FHostDialogs::GetOpenDialogs();
			Question = Open.IsEmpty() ? "none" : Utf8(Open.Last().Message);
			FHostDialogs::AnswerOpenDialog(Button);
		};
	};
	EXPECT_EQ(Ask({ Key(EKeys::Enter), Answer(TEXT("No")), Type(TEXT("other.md")), Key(EKeys::Enter) }), Folder.AtBytes("other.md"));
	EXPECT_EQ(Question, "The file \"talk.md\" exists already.\n\nDo you want to replace it?");
	EXPECT_EQ(Ask({ Key(EKeys::Enter), Answer(TEXT("Yes")) }), Folder.AtBytes("talk.md"));
	// Escape closes the question only.
	EXPECT_EQ(Ask({ Key(EKeys::Enter), Key(EKeys::Escape), Type(TEXT("b.md")), Key(EKeys::Enter) }), Folder.AtBytes("b.md"));
	EXPECT_EQ(Folder.Read("talk.md"), "old");
}

TEST_F(FSaveDialogTest, SavesIntoAFolderThatDoesNotExistYet)
{
	Dialog.Folder = Folder.At(TEXT("Saved/Velmora"));
	EXPECT_EQ(Ask({ Look(), Key(EKeys::Escape) }), "-");
	EXPECT_TRUE(Saw("This folder does not exist yet. It is made when you save."));
	EXPECT_EQ(Folder.CountEntries(), 0) << "looking makes nothing";
	EXPECT_EQ(Ask({ Key(EKeys::Enter) }), Folder.AtBytes("Saved/Velmora/talk.md"));
	EXPECT_TRUE(std::filesystem::is_directory(Folder.AtBytes("Saved/Velmora")));
}

TEST_F(FSaveDialogTest, TellsWhatCannotBeDoneAndStaysOpen)
{
	Folder.Write("talk.md/inside", "");
	std::vector<std::string> Told;
	const auto Note = [&]() { Told.push_back(Problem()); };
	Ask({ Type(TEXT("no/where.md")), Key(EKeys::Enter), Note, Type(TEXT("x")), Note });
	EXPECT_EQ(Told, (std::vector<std::string>{ "There is no folder \"" + Folder.AtBytes("no") + "\".", "" }))
		<< "a new name takes the complaint away";
}

TEST_F(FSaveDialogTest, MakesAFolder)
{
	std::string Complaint;
	const auto NewFolder = [this]() { Click(FindByTag("SaveNewFolderButton")); };
	EXPECT_EQ(
		Ask({ NewFolder, Type(TEXT("a/b")), Key(EKeys::Enter), [&]() { Complaint = Problem(); }, Key(EKeys::Escape), NewFolder,
			Type(TEXT("fresh")), Key(EKeys::Enter), [this]() { App().SetKeyboardFocus(FindByTag("SaveNameBox")); }, Key(EKeys::Enter) }),
		Folder.AtBytes("fresh/talk.md"));
	EXPECT_EQ(Complaint, "A folder cannot be called \"a/b\".");
}

TEST_F(FSaveDialogTest, NamesThatAreNoTextAndLongListsWork)
{
	const std::string Odd = "caf\xE9 \n.md";
	Folder.Write(Odd, "old");
	for (int32 Index = 0; Index < 3000; ++Index)
	{
		Folder.Write("f" + std::to_string(Index) + ".md", "");
	}
	const auto ToList = [this]() { App().SetKeyboardFocus(FindByTag("SaveList")); };
	int32 Rows = 0;
	std::string Chosen;
	FHostDialogs::QueueAnswer(TEXT("Yes"));
	const std::string File = Ask({ ToList, Key(EKeys::End),
		[&]()
		{
			Rows = CountByType("STableRow<FEntry>");
			Chosen = Utf8(FHostFileDialogs::GetOpen().GetValue().Name);
		},
		Key(EKeys::Home), Type(TEXT("c")), Key(EKeys::Enter), [this]() { Click(FindByTag("SaveButton")); } });
	EXPECT_LT(Rows, 40);
	EXPECT_EQ(Chosen, "f999.md");
	EXPECT_EQ(File, Utf8(HostFileNameFromBytes(Folder.AtBytes(Odd))));
}

TEST_F(FSaveDialogTest, AFolderIsChosenWhereOneIsAskedFor)
{
	Folder.Write("deep/er/old.md", "x");
	Dialog.bChoosesFolder = true;
	// One that is not there stands for the nearest one above.
	Dialog.Folder = Folder.At(TEXT("deep/missing"));
	EXPECT_EQ(Ask({ Look(), [this]() { Click(FindByTag("SaveButton")); } }), Folder.AtBytes("deep"));
	EXPECT_TRUE(Saw("er") && Saw("Choose") && !Saw("Name") && !Saw("Show"));
	// By the keyboard alone: the list has it first.
	Dialog.Folder = Folder.At(TEXT("deep/er"));
	EXPECT_EQ(Ask({ Look(), Key(EKeys::BackSpace), [this]() { App().SetKeyboardFocus(FindByTag("SaveButton")); }, Key(EKeys::Enter) }),
		Folder.AtBytes("deep"));
	EXPECT_FALSE(Saw("old.md")) << "files cannot be chosen";
	// What is typed counts, and a path that is no folder is told.
	std::string Told;
	const auto ToBox = [this]() { App().SetKeyboardFocus(FindByTag("SaveFolderBox")); };
	EXPECT_EQ(Ask({ ToBox, Type(TEXT("x")), []() { FHostFileDialogs::PressOpen(TEXT("Choose")); }, [&]() { Told = Problem(); },
				  Key(EKeys::Escape) }),
		"-");
	EXPECT_EQ(Told, "There is no folder \"" + Folder.AtBytes("deep/erx") + "\".");
	std::string Refused;
	EXPECT_EQ(Ask({ [&]() { Refused = Utf8(FHostFileDialogs::AnswerOpen(TEXT("old.md"))); },
				  []() { FHostFileDialogs::AnswerOpen(TEXT("..")); } }),
		Folder.AtBytes("deep"));
	EXPECT_EQ(Refused, "There is no folder \"" + Folder.AtBytes("deep/er/old.md") + "\".");
}

TEST_F(FSaveDialogTest, AProgramWithoutAScreenCancelsOrTakesTheQueuedAnswer)
{
	FHostDialogs::SetAnswering(false);
	FString File;
	testing::internal::CaptureStderr();
	EXPECT_FALSE(FHostFileDialogs::AskForSaveFile(Dialog, File));
	EXPECT_EQ(testing::internal::GetCapturedStderr(), "Nobody to ask, taking \"Cancel\": Export\n");
	FHostFileDialogs::QueueAnswer(TEXT("sub/a.html"));
	FHostFileDialogs::QueueAnswer(TEXT("/abs/b"));
	FHostFileDialogs::QueueAnswer(TEXT(""));
	EXPECT_TRUE(FHostFileDialogs::AskForSaveFile(Dialog, File));
	EXPECT_EQ(Utf8(File), Folder.AtBytes("sub/a.html"));
	EXPECT_TRUE(FHostFileDialogs::AskForSaveFile(Dialog, File));
	EXPECT_EQ(Utf8(File), "/abs/b");
	EXPECT_FALSE(FHostFileDialogs::AskForSaveFile(Dialog, File));
}
