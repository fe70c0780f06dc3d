#include "Style/VelmoraUIStyles.h"

#include "Brushes/SlateImageBrush.h"
#include "Misc/Paths.h"
#include "Style/AnimationHelper.h"
#include "Style/WidgetAnimator.h"
#include "Support/Base/SavedText.h"
#include "Styling/SlateStyleRegistry.h"
#include "VelmoraWidgetTest.h"

#include <string>

namespace
{

	std::string DumpColor(const FLinearColor& Color)
	{
		const FColor Bytes = Color.ToFColorSRGB();
		char Text[16];
		std::snprintf(Text, sizeof(Text), "%02X%02X%02X%02X", Bytes.R, Bytes.G, Bytes.B, Bytes.A);
		return Text;
	}

	using FVelmoraStyleTest = FVelmoraWidgetTest;

} // namespace

/** All of the palette, the fonts, the pictures and the styles of text. */
TEST_F(FVelmoraStyleTest, EverythingIsAsSaved)
{
	std::string All;
#define VELMORA_TEST_ROW(Name, Hex) All += #Name " " + DumpColor(FVelmoraUIStyles::Name()) + "\n";
	VELMORA_UI_PALETTE(VELMORA_TEST_ROW)
#undef VELMORA_TEST_ROW
	const auto DumpFont = [](const FSlateFontInfo& Font)
	{
		return Utf8(Font.TypefaceFontName.ToString()) + " " + std::to_string(static_cast<int>(Font.Size)) +
			(Font.IsMonospace() ? " monospace" : "");
	};
#define VELMORA_TEST_FONT(Name) All += #Name " " + DumpFont(FVelmoraUIStyles::Name()) + "\n";
	VELMORA_TEST_FONT(GetMessageBodyFont)
	VELMORA_TEST_FONT(GetMessageSenderFont)
	VELMORA_TEST_FONT(GetTimestampFont)
	VELMORA_TEST_FONT(GetSmallFont)
	VELMORA_TEST_FONT(GetMonospaceFont)
	VELMORA_TEST_FONT(GetMonospaceBoldFont)
	VELMORA_TEST_FONT(GetToolMessageFont)
	VELMORA_TEST_FONT(GetLargeTitleFont)
	VELMORA_TEST_FONT(GetMediumTitleFont)
#undef VELMORA_TEST_FONT
	for (const char* Key : { "Logo_App_20", "Logo_App_16", "Logo_App_40", "Logo_App_128", "ChatAction_Send_50", "ChatAction_Pause_50",
			 "ChatAction_Cancel_50", "ChatAction_Play_50", "MessageAction_Undo_32", "MessageAction_Copy_32", "Toolbar_SidepanelOpen_32",
			 "Toolbar_SidepanelClose_32", "Toolbar_SidepanelCustomize_32", "Toolbar_SidepanelCustomizeClose_32", "Toolbar_ChatHistory_32",
			 "Toolbar_NewChat_32", "Toolbar_Export_32", "Toolbar_ClearChat_32", "ToolExecution_Progress_16",
			 "Velmora.Markdown.Code.Background", "Velmora.Markdown.CodeBlock.Background", "Velmora.Markdown.CodeBlock.Border",
			 "Velmora.Markdown.Blockquote.Border", "Velmora.Markdown.TableCell" })
	{
		const FSlateBrush& Brush = *FVelmoraUIStyles::GetBrush(FName(Key));
		const std::string Path = Utf8(Brush.GetResourceName().ToString());
		EXPECT_TRUE(Path == "None" || Path.empty() || FPaths::FileExists(Brush.GetResourceName().ToString())) << Path;
		const size_t Folder = Path.find("/Resources/");
		All += std::string(Key) + " " + std::to_string(static_cast<int>(Brush.GetImageSize().X)) + "x" +
			std::to_string(static_cast<int>(Brush.GetImageSize().Y)) + " " + DumpColor(Brush.TintColor.GetSpecifiedColor()) + " " +
			std::to_string(static_cast<int>(Brush.DrawAs)) + (Folder == std::string::npos ? "" : " " + Path.substr(Folder)) + "\n";
	}
	for (const char* Key : { "Text", "Bold", "Italic", "BoldItalic", "Strikethrough", "Code", "CodeBlock", "Link", "Link.Hover",
			 "ListMarker", "Header1", "Header2", "Header3", "Header4", "Header5", "Header6" })
	{
		const FTextBlockStyle& Style = FVelmoraUIStyles::GetTextStyle(FName((std::string("Velmora.Markdown.") + Key).c_str()));
		All += std::string(Key) + " " + DumpFont(Style.Font) + " " + DumpColor(Style.ColorAndOpacity.GetSpecifiedColor()) +
			(Style.StrikeBrush.DrawAs == ESlateBrushDrawType::NoDrawType ? "" : " struck") + "\n";
	}
	ExpectSavedText("Widgets/Looks/Styles.txt", All);
	EXPECT_EQ(DumpColor(FVelmoraUIStyles::GetSyntaxTokenColor(static_cast<Velmora::Markdown::ESyntaxTokenType>(200))), "D4D4D4FF");
}

TEST(VelmoraPalette, SixDigitsAreOpaqueAndCaseDoesNotCount)
{
	EXPECT_TRUE(FVelmoraUIStyles::FromHexSRGB(TEXT("121217")) == FVelmoraUIStyles::FromHexSRGB(TEXT("121217FF")));
	EXPECT_TRUE(FVelmoraUIStyles::FromHexSRGB(TEXT("2b2a2aff")) == FVelmoraUIStyles::FromHexSRGB(TEXT("#2B2A2A")));
	EXPECT_EQ(DumpColor(FVelmoraUIStyles::FromHexSRGB(TEXT("12345"))), "00000000");
}

TEST_F(FVelmoraStyleTest, OneSetFromInitializeToShutdown)
{
	const TSharedPtr<ISlateStyle> First = FVelmoraUIStyles::Get();
	FVelmoraUIStyles::Initialize();
	EXPECT_EQ(FVelmoraUIStyles::Get().Get(), First.Get());
	EXPECT_EQ(FSlateStyleRegistry::FindSlateStyle(FName("VelmoraUIStyle")), First.Get());
	FVelmoraUIStyles::Shutdown();
	EXPECT_FALSE(FVelmoraUIStyles::Get().IsValid());
	EXPECT_EQ(FSlateStyleRegistry::FindSlateStyle(FVelmoraUIStyles::GetStyleSetName()), nullptr);
}

TEST(AnimationHelper, CurvesMeetTheirEndsAndClamp)
{
	struct FCase
	{
		float (*Curve)(float);
		float T;
		float Expected;
	};
	const FCase Cases[] = {
		{ &FAnimationHelper::EaseIn, 0.5f, 0.25f },
		{ &FAnimationHelper::EaseOut, 0.5f, 0.75f },
		{ &FAnimationHelper::EaseInOut, 0.25f, 0.0625f },
		{ &FAnimationHelper::EaseInOut, 0.5f, 0.5f },
		{ &FAnimationHelper::EaseInOut, 0.75f, 0.9375f },
		{ &FAnimationHelper::EaseInOut, 1.0f, 1.0f },
		{ &FAnimationHelper::EaseInOut, 2.0f, 1.0f },
		{ &FAnimationHelper::EaseInOut, -1.0f, 0.0f },
		{ &FAnimationHelper::EaseIn, 3.0f, 1.0f },
		{ &FAnimationHelper::EaseOut, -3.0f, 0.0f },
	};
	for (const FCase& Case : Cases)
	{
		EXPECT_FLOAT_EQ(Case.Curve(Case.T), Case.Expected) << Case.T;
	}
	EXPECT_FLOAT_EQ(FAnimationHelper::CalculateFadeOpacity(0.25f, false), 0.9375f);
}

TEST(WidgetAnimator, FadesFromItsOwnEnd)
{
	FWidgetAnimator Animator;
	EXPECT_EQ(Animator.GetOpacity(), 1.0f);
	EXPECT_FALSE(Animator.IsAnimating());

	Animator.FadeIn(1.0f);
	EXPECT_EQ(Animator.GetOpacity(), 1.0f) << "changes with the next tick only";
	Animator.Tick(0.25f);
	EXPECT_FLOAT_EQ(Animator.GetOpacity(), 0.0625f);
	Animator.FadeOut(1.0f);
	Animator.Tick(0.25f);
	EXPECT_FLOAT_EQ(Animator.GetOpacity(), 0.9375f) << "a fade out begins opaque, whatever was under way";
	Animator.Tick(5.0f);
	EXPECT_EQ(Animator.GetOpacity(), 0.0f);
	EXPECT_FALSE(Animator.IsAnimating());
	Animator.Reset();
	EXPECT_EQ(Animator.GetOpacity(), 1.0f);
}

TEST(WidgetAnimator, NoDurationIsAHundredthOfASecond)
{
	FWidgetAnimator Animator;
	Animator.FadeIn(0.0f);
	Animator.Tick(0.005f);
	EXPECT_TRUE(Animator.IsAnimating());
	Animator.Tick(0.0051f);
	EXPECT_FALSE(Animator.IsAnimating());
	EXPECT_EQ(Animator.GetOpacity(), 1.0f);
}
