#include "Widgets/SMarkdownTextBlock.h"

#include "HAL/IConsoleManager.h"
#include "HAL/PlatformApplicationMisc.h"
#include "Host/HostEditor.h"
#include "Host/HostPaths.h"
#include "Host/HostServices.h"
#include "Markdown/MarkdownParser.h"
#include "Misc/Paths.h"
#include "Support/Base/FolderMode.h"
#include "Support/Base/TempFolder.h"
#include "VelmoraWidgetTest.h"
#include "Widgets/Input/SCheckBox.h"
#include "Widgets/Input/SEditableText.h"
#include "Widgets/Layout/SSpacer.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

using Velmora::Markdown::ETokenType;
using Velmora::Markdown::FMarkdownToken;

namespace
{

	class FMarkdownWidgetTest : public FVelmoraWidgetTest
	{
	protected:
		TSharedRef<SMarkdownTextBlock> Make(const FString& Text) { return SNew(SMarkdownTextBlock).Text(Text); }

		/** The column's slots, one per line. */
		static std::string DumpColumn(const TSharedRef<SMarkdownTextBlock>& Block)
		{
			std::string Result;
			FChildren* Slots = FindInside(*Block, "SVerticalBox")->GetChildren();
			for (int32 Index = 0; Index < Slots->Num(); ++Index)
			{
				Result += DumpWidgets(*Slots->GetChildAt(Index)) + "\n";
			}
			return Result;
		}

		std::string Dump(const FString& Text) { return DumpColumn(Make(Text)); }

		void ClickLink(const std::string& Url)
		{
			Show(Make(FString(UTF8_TO_TCHAR(("[the link](" + Url + ")").c_str()))));
			Click(FindByText("the link"));
		}

		static std::string LaunchedTargets()
		{
			std::string Result;
			for (const FHostLaunchRequest& Request : FHostServices::GetLaunchRecord())
			{
				Result += (Request.Kind == FHostLaunchRequest::EKind::Url ? "url " : "file ") + Utf8(Request.Target) + "\n";
			}
			return Result;
		}
	};

} // namespace

TEST_F(FMarkdownWidgetTest, OneWidgetPerConstruct)
{
	const std::tuple<const char*, const TCHAR*, const char*> Cases[] = {
		{ "nothing for nothing", TEXT(""), "" },
		{ "blanks are shown as they are", TEXT("   "), "STextBlock '   '\n" },
		{ "a line end is an empty row", TEXT("a\nb"), "STextBlock 'a'\nSTextBlock ''\nSTextBlock 'b'\n" },
		{ "an empty line makes two", TEXT("a\n\nb"), "STextBlock 'a'\nSTextBlock ''\nSTextBlock ''\nSTextBlock 'b'\n" },
		{ "a styled word splits the line", TEXT("a **b** c"), "SWrapBox[STextBlock 'a ', STextBlock 'b', STextBlock ' c']\n" },
		{ "every inline style", TEXT("*i* ***bi*** ~~s~~"),
			"SWrapBox[STextBlock 'i', STextBlock ' ', STextBlock 'bi', STextBlock ' ', STextBlock 's']\n" },
		{ "inner markers stay text", TEXT("**a *b* c**"), "SWrapBox[STextBlock 'a *b* c']\n" },
		{ "code is a chip", TEXT("`code`"), "SWrapBox[SBorder[SEditableText 'code']]\n" },
		{ "a link", TEXT("[x](http://y)"), "SWrapBox[SHyperlink[STextBlock 'x']]\n" },
		{ "a heading", TEXT("# Title"), "SBorder[STextBlock 'Title']\n" },
		{ "a heading with a styled word", TEXT("## A **b**"), "SBorder[SWrapBox[STextBlock 'A ', STextBlock 'b']]\n" },
		{ "a list item", TEXT("- x"), "SHorizontalBox[SSpacer, STextBlock '•', STextBlock 'x']\n" },
		{ "a numbered item has a bullet, too", TEXT("7. x"), "SHorizontalBox[SSpacer, STextBlock '•', STextBlock 'x']\n" },
		{ "a task", TEXT("- [x] done"), "SHorizontalBox[SSpacer, SCheckBox, STextBlock 'done']\n" },
		{ "an item that parses as a block again loses it", TEXT("- # x"), "SHorizontalBox[SSpacer, STextBlock '•', STextBlock '']\n" },
		{ "a quote", TEXT("> q"), "SBorder[SHorizontalBox[SBox[SBorder], STextBlock 'q']]\n" },
		{ "a rule", TEXT("---"), "SBox[SBox[SImage]]\n" },
		{ "a footnote's mark", TEXT("a[^n]"), "SWrapBox[STextBlock 'a', SBox[STextBlock '[n]']]\n" },
		{ "a footnote", TEXT("[^n]: note"), "SBorder[SHorizontalBox[STextBlock '[n]:', STextBlock 'note']]\n" },
	};
	for (const auto& [Why, Text, Column] : Cases)
	{
		SCOPED_TRACE(Why);
		EXPECT_EQ(Dump(Text), Column);
	}
}

TEST_F(FMarkdownWidgetTest, TablesLeaveOutTheSeparatorAndMoveCellsLeft)
{
	EXPECT_EQ(Dump(TEXT("| A | B |\n|:--|--:|\n| [x](http://y) |  |\n|| `c` |")),
		"SBox[SVerticalBox["
		"SHorizontalBox[SBorder[STextBlock 'A'], SBorder[STextBlock 'B']], "
		"SHorizontalBox[SBorder[SWrapBox[SHyperlink[STextBlock 'x']]], SBorder[STextBlock '']], "
		"SHorizontalBox[SBorder[SWrapBox[SBorder[SEditableText 'c']]]]"
		"]]\n");
}

TEST_F(FMarkdownWidgetTest, CodeBlocksShowEveryLineWithItsIndentation)
{
	Show(Make(TEXT("```sh\nif x:\r\n\tdo()\n\n  y\n```")));
	// Empty lines have no text to see, but their row.
	EXPECT_EQ(VisibleTexts(), (FTextList{ "sh", "if x:", "\tdo()", "  y" }));
	const double Line = GetRect(*FindByText("\tdo()")).Top - GetRect(*FindByText("if x:")).Top;
	EXPECT_GT(Line, 10.0);
	EXPECT_EQ(GetRect(*FindByText("  y")).Top - GetRect(*FindByText("\tdo()")).Top, 2 * Line);
}

TEST_F(FMarkdownWidgetTest, CodeIsColouredTokenByToken)
{
	struct FPiece
	{
		const char* Text;
		const char* Hex;
	};
	const std::tuple<const TCHAR*, const TCHAR*, std::vector<std::vector<FPiece>>> Cases[] = {
		{ TEXT("cpp"), TEXT("#if X\nFName N; // c"),
			{ { { "#if X", "C586C0FF" } },
				{ { "FName", "C586C0FF" }, { " ", "D4D4D4FF" }, { "N", "D4D4D4FF" }, { ";", "D4D4D4FF" }, { " ", "D4D4D4FF" },
					{ "// c", "6A9955" } } } },
		// Blanks that cross the end of a line are shown in none: a coloured line begins with its first word.
		{ TEXT("cpp"), TEXT("f(\n\t\"s\", 1)"),
			{ { { "f", "DCDCAAFF" }, { "(", "D4D4D4FF" } },
				{ { "\"s\"", "CE9178FF" }, { ",", "D4D4D4FF" }, { " ", "D4D4D4FF" }, { "1", "B5CEA8FF" }, { ")", "D4D4D4FF" } } } },
		// Lines inside of a comment belong to no token; one that has others shows those alone.
		{ TEXT("cpp"), TEXT("int a; /* b\n  c\nd */ e"),
			{ { { "int", "95CBFFFF" }, { " ", "D4D4D4FF" }, { "a", "D4D4D4FF" }, { ";", "D4D4D4FF" }, { " ", "D4D4D4FF" } },
				{ { "  c", "E6E6E6FF" } }, { { " ", "D4D4D4FF" }, { "e", "D4D4D4FF" } } } },
		{ TEXT("sh"), TEXT("echo a"), { { { "echo a", "D4D4D4FF" } } } },
		{ TEXT("sh"), TEXT("echo a\n\techo b"), { { { "echo a", "E6E6E6FF" } }, { { "\techo b", "E6E6E6FF" } } } },
		{ TEXT("json"), TEXT("TRUE"), { { { "true", "95CBFFFF" } } } },
		{ TEXT("cpp"), TEXT("\"open"), { { { "\"open", "E6E6E6FF" } } } },
	};
	for (const auto& [Language, Code, Lines] : Cases)
	{
		SCOPED_TRACE(Utf8(Code));
		Show(Make(TEXT("```") + FString(Language) + TEXT("\n") + FString(Code) + TEXT("```")));
		FTextList Expected;
		for (const std::vector<FPiece>& Line : Lines)
		{
			for (const FPiece& Piece : Line)
			{
				// Blanks alone are not painted.
				const bool bBlank = std::string(Piece.Text) == " ";
				Expected.push_back(std::string(Piece.Text) + (bBlank ? "" : " " + Hex(FVelmoraUIStyles::FromHexSRGB(*FString(Piece.Hex)))));
			}
		}
		FTextList Shown;
		for (const TSharedRef<SWidget>& Piece : FindByType("STextBlock"))
		{
			const std::string Text = Utf8(Piece->GetDisplayedText().ToString());
			const FTextList Painted = PaintedIn(*Piece, ESlateDrawType::Glyphs);
			Shown.push_back(Text + (Painted.empty() || Text == " " ? "" : " " + Painted[0]));
		}
		if (!Shown.empty())
		{
			Shown.erase(Shown.begin()); // The name of the language.
		}
		EXPECT_EQ(Shown, Expected);
	}
}

TEST_F(FMarkdownWidgetTest, CodeIsShownAsWrittenWhereThatIsAskedFor)
{
	const FString Text = TEXT("```cpp\nif (a)\n\t\tn = 1'000;\n  b();\n```");
	IConsoleVariable* const KeepLayout = IConsoleManager::Get().FindConsoleVariable(TEXT("velmora.Code.KeepLayout"));
	ASSERT_NE(KeepLayout, nullptr);
	EXPECT_EQ(KeepLayout->GetInt(), 0);
	const auto GetShown = [this, &Text](FString& OutCopied)
	{
		Show(Make(Text));
		Click(FindByToolTip("Copy code to clipboard"));
		FPlatformApplicationMisc::ClipboardPaste(OutCopied);
		std::string Joined;
		for (const std::string& Piece : VisibleTexts())
		{
			Joined += "[" + Piece + "]";
		}
		return Joined;
	};
	FString CopiedByDefault;
	EXPECT_EQ(GetShown(CopiedByDefault), "[cpp][if][ ][(][a][)][n][ ][=][ ][1][  b();]");
	KeepLayout->Set(1);
	FString Copied;
	EXPECT_EQ(GetShown(Copied), "[cpp][if ][(][a][)][\t\tn ][= ][1]['000;][  b();]");
	KeepLayout->Set(0);
	EXPECT_EQ(Utf8(Copied), Utf8(CopiedByDefault));
	EXPECT_EQ(Utf8(Copied), "if (a)\n\t\tn = 1'000;\n  b();\n");
}

TEST_F(FMarkdownWidgetTest, TheLanguageIsShownAsWrittenAndTextIsNot)
{
	const std::pair<const TCHAR*, FTextList> Cases[] = {
		{ TEXT("```\nplain\n```"), { "plain" } },
		{ TEXT("```TEXT\nplain\n```"), { "plain" } },
		{ TEXT("```Py\nx = 1\n```"), { "Py", "x", " ", "=", " ", "1" } },
	};
	for (const auto& [Text, Texts] : Cases)
	{
		Show(Make(Text));
		EXPECT_EQ(VisibleTexts(), Texts);
	}
}

TEST_F(FMarkdownWidgetTest, CodeNeverWrapsAndScrollsSideways)
{
	const FString Long = FString::ChrN(500, TEXT('m'));
	Show(Make(TEXT("```\n") + Long + TEXT("\n```")));
	const FSlateRect Line = GetRect(*FindByText(Utf8(Long)));
	EXPECT_GT(Line.Right - Line.Left, 3000.0f);
	EXPECT_LT(Line.Bottom - Line.Top, 30.0f);
}

TEST_F(FMarkdownWidgetTest, TasksAreDisplaysAndNotInputs)
{
	Show(Make(TEXT("- [x] done\n- [ ] open")));
	const std::vector<TSharedRef<SWidget>> Boxes = FindByType("SCheckBox");
	ASSERT_EQ(Boxes.size(), 2u);
	EXPECT_EQ(StaticCastSharedRef<SCheckBox>(Boxes[0])->IsChecked(), true);
	EXPECT_EQ(StaticCastSharedRef<SCheckBox>(Boxes[1])->IsChecked(), false);
	Click(Boxes[1]);
	EXPECT_EQ(StaticCastSharedRef<SCheckBox>(Boxes[1])->IsChecked(), false);
	EXPECT_FALSE(Boxes[1]->IsEnabled());
}

TEST_F(FMarkdownWidgetTest, SectionsOpenAndTheirLinesJoin)
{
	Show(Make(TEXT("<details><summary>More</summary>Inner\n**text**</details>")));
	EXPECT_EQ(VisibleTexts(), (FTextList{ "More" }));
	Click(FindByText("More"));
	PumpSeconds(0.5);
	EXPECT_EQ(VisibleTexts(), (FTextList{ "More", "Inner ", "text" }));
}

TEST_F(FMarkdownWidgetTest, HeadingsKeepTheirSizeOnlyAsPlainText)
{
	Show(Make(TEXT("# Plain\n# A **b**")));
	EXPECT_EQ(StaticCastSharedRef<STextBlock>(FindByText("Plain"))->GetFont().Size, 18.0f);
	EXPECT_EQ(StaticCastSharedRef<STextBlock>(FindByText("b"))->GetFont().Size, 11.0f);
}

TEST_F(FMarkdownWidgetTest, PlainTextWrapsAndMixedTextBreaksBetweenTokens)
{
	std::string Words;
	for (int Index = 0; Index < 40; ++Index)
	{
		Words += "wrapping ";
	}
	Show(Make(FString(UTF8_TO_TCHAR(Words.c_str()))));
	const FSlateRect Plain = GetRect(*FindOne<STextBlock>("STextBlock"));
	EXPECT_LE(Plain.Right, 1280.0f);
	EXPECT_GT(Plain.Bottom - Plain.Top, 30.0f);

	Show(Make(TEXT("**bold** ") + FString(UTF8_TO_TCHAR(Words.c_str()))));
	const FSlateRect Bold = GetRect(*FindByText("bold"));
	const FSlateRect Rest = GetRect(*FindByType("STextBlock").at(1));
	EXPECT_GE(Rest.Top, Bold.Bottom) << "the long run moves to the next line whole";
	EXPECT_LT(Rest.Bottom - Rest.Top, 30.0f);
}

TEST_F(FMarkdownWidgetTest, OtherLetterCaseIsNoChangeOfText)
{
	const TSharedRef<SMarkdownTextBlock> Block = Make(TEXT("one"));
	const TSharedRef<SWidget> Before = FindInside(*Block, "SVerticalBox")->GetChildren()->GetChildAt(0);
	Block->SetText(TEXT("ONE"));
	EXPECT_EQ(DumpColumn(Block), "STextBlock 'one'\n");
	EXPECT_EQ(Utf8(Block->GetText()), "one");
	Block->SetText(TEXT("two"));
	EXPECT_EQ(DumpColumn(Block), "STextBlock 'two'\n");
	EXPECT_EQ(Utf8(Block->GetText()), "two");
	Block->SetText(TEXT(""));
	EXPECT_EQ(DumpColumn(Block), "");
}

TEST_F(FMarkdownWidgetTest, LinksGoWhereTheirSchemeSays)
{
	const FTempFolder Folder;
	const std::string File = Folder.AtBytes("notes.txt");
	Folder.Write("notes.txt", "x");
	const std::pair<std::string, std::string> Cases[] = {
		{ "http://a.b/C", "url http://a.b/C\n" },
		{ "HTTPS://a.b", "url HTTPS://a.b\n" },
		{ "tel:1", "url tel:1\n" },
		{ "FILE://" + File, "file " + File + "\n" },
		{ "file://" + File + ".missing", "" },
		{ "asset:///Game/NotThere", "" },
		{ "blueprint:///Game/NotThere", "" },
	};
	for (const auto& [Url, Launched] : Cases)
	{
		FHostServices::ClearLaunchRecord();
		ClickLink(Url);
		EXPECT_EQ(LaunchedTargets(), Launched) << Url;
	}
}

TEST_F(FMarkdownWidgetTest, ARelativeFileLinkStartsAtTheProjectFolder)
{
	const FTempFolder Project;
	Project.Write("Docs/notes.txt", "x");
	const FString OldProject = FPaths::ProjectDir();
	FHostPaths::SetProjectDir(Project.At());
	for (const bool bRelative : { false, true })
	{
		const FFolderMode Mode(bRelative, Project.At(TEXT("Engine/Binaries/Win64")));
		FHostServices::ClearLaunchRecord();
		Show(Make(TEXT("see [the notes](file://Docs/notes.txt)")));
		Click(FindByToolTip("Open: file://Docs/notes.txt"));
		EXPECT_EQ(LaunchedTargets(), "file " + Project.AtBytes("Docs/notes.txt") + "\n") << bRelative;
	}
	FHostPaths::SetProjectDir(OldProject);
}

TEST_F(FMarkdownWidgetTest, AssetLinksOpenTheAssetInTheEditor)
{
	const FTempFolder Project;
	Project.Write("Content/Hero.uasset", "x");
	const FString OldProject = FPaths::ProjectDir();
	FHostPaths::SetProjectDir(Project.At());
	FHostEditor::StartUp();
	for (const char* Url : { "ASSET:///Game/Hero", "blueprint:///Game/Hero", "asset:///Game/Villain" })
	{
		ClickLink(Url);
	}
	std::string Opened;
	for (const FString& Path : FHostEditor::GetOpenedAssets())
	{
		Opened += Utf8(Path) + "\n";
	}
	EXPECT_EQ(Opened, "/Game/Hero.Hero\n/Game/Hero.Hero\n");
	FHostEditor::ShutDown();
	FHostPaths::SetProjectDir(OldProject);
	EXPECT_EQ(LaunchedTargets(), "");
}

TEST_F(FMarkdownWidgetTest, InlineCodeCanBeSelectedAndCopied)
{
	Show(Make(TEXT("run `make all` now")));
	const TSharedRef<SEditableText> Code = FindOne<SEditableText>("SEditableText");
	Click(Code);
	PressKey("CTRL+A");
	PressKey("CTRL+C");
	FString Copied;
	FPlatformApplicationMisc::ClipboardPaste(Copied);
	EXPECT_EQ(Utf8(Copied), "make all");
	TypeText("z");
	EXPECT_EQ(Utf8(Code->GetText().ToString()), "make all");
}
