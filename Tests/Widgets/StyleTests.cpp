#include "Style/VelmoraUIStyles.h"

#include "Brushes/SlateImageBrush.h"
#include "Misc/Paths.h"
#include "Style/AnimationHelper.h"
#include "Style/WidgetAnimator.h"
#include "Styling/AppStyle.h"
#include "Styling/SlateStyleRegistry.h"
#include "VelmoraWidgetTest.h"

#include <algorithm>
#include <string>
#include <utility>

namespace
{

	std::string DumpColor(const FLinearColor& Color)
	{
		const FColor Bytes = Color.ToFColorSRGB();
		char Text[16];
		std::snprintf(Text, sizeof(Text), "%02X%02X%02X%02X", Bytes.R, Bytes.G, Bytes.B, Bytes.A);
		return Text;
	}

	class FVelmoraStyleTest : public FVelmoraWidgetTest
	{
	};

} // namespace

/** Name and colour of each getter, without its "Get". */
static const char* const Palette =
	"AccentColor 95E7FFFF; ActionIconDisabledColor 4F586566; ActionIconHighlightColor 7CB9FFFF; "
	"ActionIconNormalColor 6B7280FF; BackgroundColor 121217FF; BlockquoteBackgroundColor 18131F1A; "
	"BlockquoteBorderColor 3C2F5480; CancelColor FF6464FF; CodeBlockBackgroundColor 1C1F26FF; "
	"CodeBlockBorderColor 2E3342FF; CodeTextColor E5E8EDFF; DisabledColor 292E3880; ErrorColor E79595FF; "
	"HorizontalRuleColor 2E334080; InactiveBrushColor 1212171A; InlineCodeBackgroundColor 262933FF; "
	"InlineCodeBorderColor 383D52FF; InputBackgroundColor 171A21FF; LightBackgroundColor 1C212BFF; "
	"LineNumbersColor 7A8499B3; LinkTextColor A87DFFFF; MarkdownCodeBlockBackgroundColor 1E1E1EFF; "
	"MarkdownCodeBlockBorderColor 2B2A2AFF; MarkdownCodeBlockLanguageColor 95CBFFFF; "
	"MarkdownInlineCodeBackgroundColor 1E1E1EFF; MarkdownInlineCodeForegroundColor 95CBFFFF; "
	"MarkdownLinkColor 95CBFFFF; PauseColor B38000FF; PlanPanelBackgroundColor 272B38FF; "
	"PrimaryActionPauseResumeColor FFA826FF; PrimaryActionSendColor 10B981FF; PrimaryTextColor E8E8EDFF; "
	"SecondarySubduedTextColor A8ABB5FF; SecondaryTextColor CBCBCBFF; StatusBusyColor 95CBFFFF; "
	"StatusErrorColor E79595FF; StatusIdleColor CBCBCBFF; StatusReadyColor 95E795FF; SuccessColor 95E795FF; "
	"SystemMessageBackgroundColor 0F1317FF; SystemMessageBorderColor 1A1F28FF; SystemMessageColor C0C0C0FF; "
	"TertiaryTextColor BCBCBCFF; TextColorPrimary E6E6E6FF; TextColorSecondary CBCBCBFF; "
	"TextColorTertiary BCBCBCFF; TextHighEmphasisColor E6E6E6FF; TextMutedColor 808080FF; "
	"TextSubduedColor 999999FF; ToolDataTypeCyanColor 06B6D4FF; ToolDataTypeGrayColor 6B7280FF; "
	"ToolDataTypeGrayLightColor 9CA3AFFF; ToolDataTypeIndigoLightColor 818CF8FF; ToolDataTypeOrangeColor F97316FF; "
	"ToolDataTypeOrangeLightColor FB923CFF; ToolDataTypePinkColor EC4899FF; ToolDataTypePurpleColor A855F7FF; "
	"ToolDataTypePurpleLightColor A78BFAFF; ToolDataTypeTealColor 14B8A6FF; ToolMessageBackgroundColor 2B2A2AFF; "
	"ToolMessageBorderColor 3A3939FF; ToolMessageColor D3D3D3FF; ToolMessageTextColor D3D3D3FF; "
	"ToolOpDeleteColor EF4444FF; ToolOpExecuteColor 6366F1FF; ToolOpValidateColor 8B5CF6FF; "
	"ToolStatusFailedColor D97777FF; ToolStatusSuccessColor 10B981FF; TransparentTextColor A8ABB580; "
	"UserMessageBackgroundColor 1C242EFF; UserMessageBorderColor 2A3340FF; UserMessageColor 60A5FAFF; "
	"VelmoraMessageBackgroundColor 1A1C24FF; VelmoraMessageBorderColor 252835FF; VelmoraMessageColor F59E0BFF; "
	"WarningColor F3DA7CFF; ";

TEST(VelmoraPalette, EveryGetterHasItsColour)
{
#define VELMORA_TEST_ROW(Name, Hex) { #Name, &FVelmoraUIStyles::Name },
	const std::pair<std::string, FLinearColor (*)()> Getters[] = { VELMORA_UI_PALETTE(VELMORA_TEST_ROW) };
#undef VELMORA_TEST_ROW
	const std::string All = std::string("; ") + Palette;
	for (const auto& [Name, Getter] : Getters)
	{
		const size_t Found = All.find("; " + Name.substr(3) + " ");
		ASSERT_NE(Found, std::string::npos) << Name;
		EXPECT_EQ(DumpColor(Getter()), All.substr(Found + Name.size(), 8)) << Name;
	}
	EXPECT_EQ(std::size(Getters), static_cast<size_t>(std::count(All.begin(), All.end(), ';') - 1));
}

TEST_F(FVelmoraStyleTest, FontsFlatBrushesAndSyntaxColours)
{
	const auto DumpFont = [](const FSlateFontInfo& Font)
	{ return Utf8(Font.TypefaceFontName.ToString()) + " " + std::to_string(static_cast<int>(Font.Size)); };
	EXPECT_EQ(DumpFont(FVelmoraUIStyles::GetMessageBodyFont()), "Regular 11");
	EXPECT_EQ(DumpFont(FVelmoraUIStyles::GetMessageSenderFont()), "Bold 12");
	EXPECT_EQ(DumpFont(FVelmoraUIStyles::GetTimestampFont()), "Regular 9");
	EXPECT_EQ(DumpFont(FVelmoraUIStyles::GetSmallFont()), "Regular 9");
	EXPECT_EQ(DumpFont(FVelmoraUIStyles::GetMonospaceFont()), "Mono 10");
	EXPECT_EQ(DumpFont(FVelmoraUIStyles::GetMonospaceBoldFont()), "Bold 10");
	EXPECT_EQ(DumpFont(FVelmoraUIStyles::GetToolMessageFont()), "Mono 9");
	EXPECT_EQ(DumpFont(FVelmoraUIStyles::GetLargeTitleFont()), DumpFont(FAppStyle::GetFontStyle("HeadingLarge")));
	EXPECT_EQ(DumpFont(FVelmoraUIStyles::GetMediumTitleFont()), DumpFont(FAppStyle::GetFontStyle("HeadingMedium")));
	for (const auto& [Key, Tint] : { std::pair("Code.Background", "1E1E1EFF"), std::pair("CodeBlock.Background", "1E1E1EFF"),
			 std::pair("CodeBlock.Border", "2B2A2AFF"), std::pair("Blockquote.Border", "6B7280FF") })
	{
		const FSlateBrush* Brush = FVelmoraUIStyles::GetBrush(FName((std::string("Velmora.Markdown.") + Key).c_str()));
		EXPECT_EQ(DumpColor(Brush->TintColor.GetSpecifiedColor()), Tint) << Key;
		EXPECT_EQ(Brush->DrawAs, ESlateBrushDrawType::Image) << Key;
	}
	EXPECT_EQ(FVelmoraUIStyles::GetBrush("Velmora.Markdown.TableCell")->TintColor.GetSpecifiedColor().A, 0.0f);
	EXPECT_EQ(DumpColor(FVelmoraUIStyles::GetSyntaxTokenColor(static_cast<Velmora::Markdown::ESyntaxTokenType>(200))), "D4D4D4FF");
	EXPECT_EQ(DumpColor(FVelmoraUIStyles::GetSecondaryActionNeutralColor(1.0f)), "E1E5EAFF");
}

TEST(VelmoraPalette, SixDigitsAreOpaqueAndCaseDoesNotCount)
{
	EXPECT_TRUE(FVelmoraUIStyles::FromHexSRGB(TEXT("121217")) == FVelmoraUIStyles::FromHexSRGB(TEXT("121217FF")));
	EXPECT_TRUE(FVelmoraUIStyles::FromHexSRGB(TEXT("2b2a2aff")) == FVelmoraUIStyles::FromHexSRGB(TEXT("#2B2A2A")));
	EXPECT_EQ(DumpColor(FVelmoraUIStyles::FromHexSRGB(TEXT("12345"))), "00000000");
}

TEST(VelmoraPalette, ColoursAreLinearAndAlphaIsNot)
{
	const FLinearColor Grey = FVelmoraUIStyles::FromHexSRGB(TEXT("80808080"));
	EXPECT_NEAR(Grey.R, 0.2158605f, 1e-5f);
	EXPECT_FLOAT_EQ(Grey.A, 128.0f / 255.0f);
	EXPECT_EQ(FVelmoraUIStyles::GetSecondaryActionNeutralColor(0.5f).A, 0.5f);
	EXPECT_EQ(DumpColor(FVelmoraUIStyles::GetSecondaryActionNeutralHoverColor(1.0f)), "F3F6F9FF");
	EXPECT_TRUE(FVelmoraUIStyles::GetUpdateAvailableColor() == FLinearColor(0.9f, 0.6f, 0.2f, 0.8f));
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

TEST_F(FVelmoraStyleTest, EveryIconIsThereInItsDrawnSize)
{
	struct FIcon
	{
		const char* Key;
		const char* File;
		double Size;
	};
	const FIcon Icons[] = {
		{ "Logo_App_20", "App/Icon40", 20 },
		{ "Logo_App_16", "App/Icon16", 16 },
		{ "Logo_App_40", "App/Icon40", 40 },
		{ "Logo_App_128", "App/Icon128", 128 },
		{ "ChatAction_Send_50", "ChatActions/Send50", 50 },
		{ "ChatAction_Pause_50", "ChatActions/Pause50", 50 },
		{ "ChatAction_Cancel_50", "ChatActions/Cancel50", 50 },
		{ "ChatAction_Play_50", "ChatActions/Play50", 50 },
		{ "MessageAction_Undo_32", "MessageActions/Undo32", 32 },
		{ "MessageAction_Copy_32", "MessageActions/Copy32", 32 },
		{ "Toolbar_SidepanelOpen_32", "Toolbar/Sidepanel32", 24 },
		{ "Toolbar_SidepanelClose_32", "Toolbar/Sidepanelclose32", 24 },
		{ "Toolbar_SidepanelCustomize_32", "Toolbar/SidepanelCustomize32", 24 },
		{ "Toolbar_SidepanelCustomizeClose_32", "Toolbar/SidepanelCustomizeClose32", 24 },
		{ "Toolbar_ChatHistory_32", "Toolbar/ChatHistory32", 24 },
		{ "Toolbar_NewChat_32", "Toolbar/NewChat32", 24 },
		{ "Toolbar_Export_32", "Toolbar/Export32", 24 },
		{ "Toolbar_ClearChat_32", "Toolbar/ClearChat32", 24 },
		{ "ToolExecution_Progress_16", "ToolExecutions/ProgressCycle32", 16 },
	};
	for (const FIcon& Icon : Icons)
	{
		SCOPED_TRACE(Icon.Key);
		const FSlateBrush* Brush = FVelmoraUIStyles::GetBrush(FName(Icon.Key));
		EXPECT_EQ(Brush->GetImageSize().X, Icon.Size);
		EXPECT_EQ(Brush->GetImageSize().Y, Icon.Size);
		const std::string Path = Utf8(Brush->GetResourceName().ToString());
		EXPECT_TRUE(Path.ends_with(std::string("/Resources/Icons/") + Icon.File + ".png")) << Path;
		EXPECT_TRUE(FPaths::FileExists(Brush->GetResourceName().ToString())) << Path;
	}
}

TEST_F(FVelmoraStyleTest, MarkdownTextStyles)
{
	struct FStyle
	{
		const char* Key;
		const char* Typeface;
		float Size;
		bool bMonospace;
		const char* Color;
	};
	const FStyle Styles[] = {
		{ "Velmora.Markdown.Text", "Regular", 11, false, "E6E6E6FF" },
		{ "Velmora.Markdown.Bold", "Bold", 11, false, "E6E6E6FF" },
		{ "Velmora.Markdown.Italic", "Italic", 11, false, "E6E6E6FF" },
		{ "Velmora.Markdown.BoldItalic", "BoldItalic", 11, false, "E6E6E6FF" },
		{ "Velmora.Markdown.Strikethrough", "Regular", 11, false, "E6E6E6FF" },
		{ "Velmora.Markdown.Code", "Bold", 9, true, "95CBFFFF" },
		{ "Velmora.Markdown.CodeBlock", "Mono", 10, true, "E6E6E6FF" },
		{ "Velmora.Markdown.Link", "Regular", 10, false, "95CBFFFF" },
		{ "Velmora.Markdown.ListMarker", "Bold", 11, false, "E6E6E6FF" },
		{ "Velmora.Markdown.Header1", "Bold", 18, false, "E6E6E6FF" },
		{ "Velmora.Markdown.Header2", "Bold", 16, false, "E6E6E6FF" },
		{ "Velmora.Markdown.Header3", "Bold", 14, false, "E6E6E6FF" },
		{ "Velmora.Markdown.Header6", "Bold", 8, false, "E6E6E6FF" },
	};
	for (const FStyle& Style : Styles)
	{
		SCOPED_TRACE(Style.Key);
		const FTextBlockStyle& Found = FVelmoraUIStyles::GetTextStyle(FName(Style.Key));
		EXPECT_EQ(Utf8(Found.Font.TypefaceFontName.ToString()), Style.Typeface);
		EXPECT_EQ(Found.Font.Size, Style.Size);
		EXPECT_EQ(Found.Font.IsMonospace(), Style.bMonospace);
		EXPECT_EQ(DumpColor(Found.ColorAndOpacity.GetSpecifiedColor()), Style.Color);
	}
	EXPECT_EQ(FVelmoraUIStyles::GetTextStyle("Velmora.Markdown.Text").StrikeBrush.DrawAs, ESlateBrushDrawType::NoDrawType);
	EXPECT_EQ(FVelmoraUIStyles::GetTextStyle("Velmora.Markdown.Strikethrough").StrikeBrush.DrawAs, ESlateBrushDrawType::Image);
	const FLinearColor Link = FVelmoraUIStyles::GetMarkdownLinkColor();
	EXPECT_TRUE(
		FVelmoraUIStyles::GetTextStyle("Velmora.Markdown.Link.Hover").ColorAndOpacity.GetSpecifiedColor().Equals(Link * 1.1f, 1e-6f));
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

TEST(AnimationHelper, ColoursBlendInAllFourChannels)
{
	const FLinearColor A(0.0f, 0.2f, 1.0f, 0.0f);
	const FLinearColor B(1.0f, 0.4f, 0.0f, 0.5f);
	EXPECT_TRUE(FAnimationHelper::LerpColor(A, B, 0.5f).Equals(FLinearColor(0.5f, 0.3f, 0.5f, 0.25f), 1e-6f));
	EXPECT_TRUE(FAnimationHelper::LerpColor(A, B, 7.0f) == B);
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
