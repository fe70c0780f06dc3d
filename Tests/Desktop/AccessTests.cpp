#include "Desktop/ProgramDriver.h"

#include "DesktopOptions.h"
#include "ForwardingWindow.h"
#include "Host/Platform.h"
#include "Styling/AppStyle.h"
#include "Support/UiDriver.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SScrollBox.h"
#include "WindowContrast.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>

// What the program shows to those who do not see the window, as a dump tells it, and how it changes colours for weak eyes.

namespace
{
	class Access : public testing::Test
	{
	protected:
		/** The tree after a script, as one text: a line for each thing, behind tabs. */
		std::string Look(const std::string& Script, const std::vector<std::string>& More = {})
		{
			std::vector<std::string> Arguments = { "--headless", "--project", Project.Folder.string(), "--size", "1280x900", "--now",
				"2026-01-31T12:00:00", "--set", "velmora.conversationhistoryrefresh.forcesync=1", "--script",
				Project.Write("run.txt", Script + "tick 60\ndump out\n") };
			Arguments.insert(Arguments.end(), More.begin(), More.end());
			const FRun Result = RunProgram(Arguments, "", Project.OutFolder.string());
			EXPECT_EQ(Result.ExitCode, 0) << Result.Error;
			Dump = ReadFile(Project.Path("out"));
			const size_t Begin = Dump.find("\"accessible\": [");
			const size_t End = Dump.find("\n\t]", Begin);
			std::string Tree;
			// Strings of JSON, one a line.
			const std::regex Line("\\n\\t\\t\"(.*)\",?\\r?(?=\\n)");
			const std::string Part = Begin == std::string::npos ? "" : Dump.substr(Begin, End - Begin + 1);
			for (std::sregex_iterator Match(Part.begin(), Part.end(), Line), Last; Match != Last; ++Match)
			{
				std::string Text = (*Match)[1];
				Text = std::regex_replace(Text, std::regex("\\\\t"), "\t");
				Text = std::regex_replace(Text, std::regex("\\\\\""), "\"");
				Tree += Text + "\n";
			}
			return Tree;
		}

		static bool HasLine(const std::string& Tree, const std::string& Line)
		{
			return std::regex_search(Tree, std::regex("(^|\n)\t*" + std::regex_replace(Line, std::regex("[()]"), "\\$&") + "\n"));
		}

		/** Things that somebody meets without hearing what they are. */
		static std::string FindNameless(const std::string& Tree)
		{
			std::string Found;
			const std::regex Nameless("(?:^|\n)\t*([a-z ]+ \"\"[^\n]*)");
			for (std::sregex_iterator Match(Tree.begin(), Tree.end(), Nameless), Last; Match != Last; ++Match)
			{
				Found += (*Match)[1].str() + "\n";
			}
			return Found;
		}

		const FRandomProject Project;
		std::string Dump;
	};
}

TEST_F(Access, EveryTaggedControlThatIsShownHasRoleNameAndState)
{
	const std::string Tree = Look("type hello\n");
	const char* const Lines[] = {
		"window \".* - Velmora UI\" (focused)",
		"menu bar \"Menus\"",
		"menu item \"File\" (has popup)",
		"tab \".*\" (selected)",
		"button \"Close tab\"",
		"text box \"Prompt\" (focused, multi-line) = \"hello\"",
		"combo box \"Mode\" (has popup) = \".+\"",
		"combo box \"Conversation\" (has popup) = \".+\"",
		"status \".+\"",
	};
	for (const char* Line : Lines)
	{
		EXPECT_TRUE(HasLine(Tree, Line)) << Line << "\nin\n" << Tree;
	}
	EXPECT_EQ(FindNameless(Tree), "");

	// Buttons of the chat by their tags: each that is shown and stands in the dump is a button or a link of the tree.
	std::set<std::string> Shown;
	const std::regex Control("\"tag\": \"([A-Za-z]*Button)\",\\s*\"visible\": true");
	for (std::sregex_iterator Match(Dump.begin(), Dump.end(), Control), Last; Match != Last; ++Match)
	{
		Shown.insert((*Match)[1]);
	}
	EXPECT_FALSE(Shown.empty());
	const std::regex Button("\n\t*button \"");
	const auto Count = std::distance(std::sregex_iterator(Tree.begin(), Tree.end(), Button), std::sregex_iterator());
	EXPECT_GE(Count, static_cast<ptrdiff_t>(Shown.size()));
}

TEST_F(Access, EveryPageDialogAndMenuHasNames)
{
	const std::tuple<const char*, std::string, const char*> Cases[] = {
		{ "a menu", "key F10\n", "menu item \"New Conversation.*" },
		{ "find", "key CTRL+F\n", "text box \"Find in the conversation\" .*" },
		{ "conversations", "key CTRL+SHIFT+H\n", "text box \"Search all conversations\".*" },
		{ "a list to choose from", "click #ModeComboBox\n", "list item \"Advisor.*" },
		{ "a narrow page, its names above", "resize 360 800\nkey ALT+W\ntick 5\nkey ENTER\ntick 20\nkey TAB\ntick 5\nkey ENTER\ntick 60\n",
			"text box \"Project Description\".*" },
	};
	for (const auto& [What, Script, Line] : Cases)
	{
		SCOPED_TRACE(What);
		const std::string Tree = Look(Script);
		EXPECT_TRUE(HasLine(Tree, Line)) << Tree;
		EXPECT_EQ(FindNameless(Tree), "");
	}
}

TEST_F(Access, AConversationReadsAsMessagesWithWholeSentences)
{
	// So high that the longest answer leaves room for the prompt.
	const std::string Tree = Look("type find " + Project.Symbol + "\nkey CTRL+ENTER\nwait idle 60\n", { "--size", "1280x2400" });
	EXPECT_TRUE(HasLine(Tree, "list \"Messages\"")) << Tree;
	EXPECT_TRUE(HasLine(Tree, "list item \"You\"")) << Tree;
	EXPECT_TRUE(HasLine(Tree, "list item \"Velmora AI\"")) << Tree;
	// Words that wrap are one text, and the link in it can be followed.
	EXPECT_TRUE(std::regex_search(Tree, std::regex("\tparagraph \"[^\n]* [^\n]* [^\n]*\""))) << Tree;
	EXPECT_TRUE(std::regex_search(Tree, std::regex("\tlink \"[^\n]+\""))) << Tree;
	// So is the code in it, which can be copied.
	EXPECT_TRUE(std::regex_search(Tree, std::regex("\tparagraph \"" + Project.Symbol + " is [^\n]+\""))) << Tree;
	EXPECT_TRUE(HasLine(Tree, "text box \"Code\" (read only) = \"" + Project.Symbol + "\"")) << Tree;
	EXPECT_EQ(FindNameless(Tree), "");
}

TEST(AccessOptions, SwitchesTakeThreeWords)
{
	FDesktopOptions Options;
	EXPECT_TRUE(Options.Parse({ TEXT("--accessibility=on"), TEXT("--reduced-motion"), TEXT("off") }).IsEmpty());
	EXPECT_EQ(Options.Accessibility, EAccessChoice::On);
	EXPECT_EQ(Options.ReducedMotion, EAccessChoice::Off);
	EXPECT_EQ(Options.HighContrast, EAccessChoice::Desktop);
	for (const TCHAR* Wrong : { TEXT("--high-contrast=yes"), TEXT("--high-contrast="), TEXT("--accessibility=On") })
	{
		EXPECT_FALSE(FDesktopOptions().Parse({ Wrong }).IsEmpty()) << Utf8(FText::FromString(Wrong));
	}
}

TEST(WindowContrast, TextIsBrightAndSurfacesAreDarkEnough)
{
	const double Black = 0.05;
	for (int32 Step = 0; Step < 4096; ++Step)
	{
		const FColor Color(
			static_cast<uint8>((Step & 15) * 17), static_cast<uint8>(((Step >> 4) & 15) * 17), static_cast<uint8>((Step >> 8) * 17), 200);
		const FColor Text = FWindowContrast::Brighten(Color);
		const double TextLuminance = FWindowContrast::GetLuminance(Text);
		EXPECT_GE((TextLuminance + 0.05) / Black, 7.0) << Step;
		EXPECT_GE(TextLuminance, FWindowContrast::GetLuminance(Color)) << Step;
		EXPECT_EQ(Text.A, 255);
		const FColor Surface = FWindowContrast::Darken(Color);
		const double SurfaceLuminance = FWindowContrast::GetLuminance(Surface);
		const bool bLight = FWindowContrast::GetLuminance(Color) >= 0.5;
		EXPECT_TRUE(bLight ? Surface == Color : (1.0 + 0.05) / (SurfaceLuminance + 0.05) >= 4.5) << Step;
		EXPECT_EQ(Surface.A, 200);
		// What cannot be used now can be read, and is not taken for what can.
		for (const uint8 Alpha : { uint8(153), uint8(254) })
		{
			const FColor Disabled = FWindowContrast::Brighten(FColor(Color.R, Color.G, Color.B, Alpha));
			const double Contrast = (FWindowContrast::GetLuminance(Disabled) + 0.05) / Black;
			EXPECT_TRUE(Contrast >= 3.0 && Contrast <= 3.5) << Step << ": " << Contrast;
			EXPECT_EQ(Disabled.A, 255);
		}
	}
	// The mark of a check box, dark on light.
	const FColor Mark = FWindowContrast::Brighten(FColor(0x0A, 0x0B, 0x0F, 255));
	const FColor Fill = FWindowContrast::Darken(FColor(0x7C, 0xB9, 0xFF, 255));
	EXPECT_GE((FWindowContrast::GetLuminance(Mark) + 0.05) / (FWindowContrast::GetLuminance(Fill) + 0.05), 4.5);
	EXPECT_EQ(FWindowContrast::Brighten(FColor(10, 10, 10, 0)), FColor(10, 10, 10, 0)) << "what is invisible stays so";
	EXPECT_EQ(FWindowContrast::Darken(FColor(20, 20, 24, 255)), FColor(0, 0, 0, 255));
	EXPECT_NEAR(FWindowContrast::GetLuminance(FColor(255, 255, 255, 255)), 1.0, 1e-12);
}

namespace
{
	/** What a window is given to paint. */
	struct FPaintedWindow : public FForwardingWindow
	{
		FPaintedWindow()
			: FForwardingWindow(FHostPlatform::CreateHeadlessWindow(FIntPoint(400, 300), 1.0f))
		{
		}
		virtual void PaintAndPresent(const FSlateWindowElementList& Elements, const FSlateRect& Damage) override
		{
			Painted = Elements.GetElements();
		}
		TArray<FSlateDrawElement> Painted;
	};

	class FContrastTest : public FWidgetTest
	{
	protected:
		/** Of the box at a point that lies on top, or below all others, once all is changed for contrast. */
		static double GetLuminanceAt(const FVector2D& Point, bool bTopmost)
		{
			const TSharedRef<FPaintedWindow> Painted = MakeShared<FPaintedWindow>();
			FWindowContrast::SetHigh(true);
			FWindowContrast::Wrap(Painted)->PaintAndPresent(App().GetLastElements(), FSlateRect());
			FWindowContrast::SetHigh(false);
			FColor Color(0, 0, 0, 255);
			for (const FSlateDrawElement& Element : Painted->Painted)
			{
				const bool bIsBox = Element.Type == ESlateDrawType::Box || Element.Type == ESlateDrawType::RoundedBox;
				if (bIsBox && Element.Rect.ContainsPoint(Point))
				{
					Color = Element.Color;
					if (!bTopmost)
					{
						break;
					}
				}
			}
			return FWindowContrast::GetLuminance(Color);
		}
	};
}

TEST_F(FContrastTest, TheThumbOfAScrollBarStandsOutFromEverySurface)
{
	const char* const Surfaces[] = { "ToolPanel.GroupBorder", "ToolPanel.DarkGroupBorder", "Menu.Background", "ExpandableArea.Border",
		"ToolTip.Background", "Window.Background", "Window.Body" };
	for (const char* const Surface : Surfaces)
	{
		// clang-format off
		Show(SNew(SBorder)
			.BorderImage(FAppStyle::GetBrush(Surface))
			.Padding(0.0f)
			[
				SNew(SScrollBox)
				+ SScrollBox::Slot()
				[
					SNew(SBox).HeightOverride(4000.0f)
				]
			]);
		// clang-format on
		PumpFrame();
		const FVector2D Thumb(App().GetWindow().GetPixelSize().X - 6.0, 12.0);
		const double Ground = GetLuminanceAt(Thumb, false);
		const auto GetContrast = [&] { return (GetLuminanceAt(Thumb, true) + 0.05) / (Ground + 0.05); };
		EXPECT_GE(GetContrast(), 3.0) << Surface;
		MoveMouse(Thumb);
		EXPECT_GE(GetContrast(), 3.0) << Surface << ", under the pointer";
		PressMouse(Thumb);
		EXPECT_GE(GetContrast(), 3.0) << Surface << ", dragged";
		ReleaseMouse(Thumb);
		MoveMouse(FVector2D(5, 5));
	}
}

TEST_F(Access, HighContrastChangesThePictureAndNothingElse)
{
	const auto Shoot = [this](const char* Name, const char* Choice)
	{
		const FRun Result = RunProgram(
			{ "--headless", "--project", Project.Folder.string(), "--now", "2026-01-31T12:00:00", std::string("--high-contrast=") + Choice,
				"--screenshot", Project.Path(std::string(Name) + ".png"), "--dump", Project.Path(Name) },
			"", Project.OutFolder.string());
		EXPECT_EQ(Result.ExitCode, 0) << Result.Error;
	};
	Shoot("plain", "off");
	Shoot("high", "on");
	EXPECT_NE(ReadFile(Project.Path("plain.png")), ReadFile(Project.Path("high.png")));
	const auto ReadDump = [this](const char* Name)
	{ return std::regex_replace(ReadFile(Project.Path(Name)), std::regex("\"frameCount\": [0-9]+"), ""); };
	EXPECT_EQ(ReadDump("plain"), ReadDump("high"));
}
