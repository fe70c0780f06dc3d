#include "Style/VelmoraUIStyles.h"

#include "Brushes/SlateImageBrush.h"
#include "Interfaces/IPluginManager.h"
#include "Math/Color.h"
#include "Misc/AssertionMacros.h"
#include "Misc/Paths.h"
#include "Styling/AppStyle.h"
#include "Styling/CoreStyle.h"
#include "Styling/SlateBrush.h"
#include "Styling/SlateStyleRegistry.h"
#include "Styling/SlateTypes.h"

namespace
{

	struct FIconRow
	{
		const TCHAR* Key;
		/** Below the folder of resources, without extension. */
		const TCHAR* File;
		/** Drawn size in both directions. The toolbar's files are named after 32 and drawn at 24. */
		float Size;
	};

	constexpr FIconRow IconRows[] = {
		{ TEXT("Logo_App_20"), TEXT("Icons/App/Icon40"), 20.0f },
		{ TEXT("Logo_App_16"), TEXT("Icons/App/Icon16"), 16.0f },
		{ TEXT("Logo_App_40"), TEXT("Icons/App/Icon40"), 40.0f },
		{ TEXT("Logo_App_128"), TEXT("Icons/App/Icon128"), 128.0f },
		{ TEXT("ChatAction_Send_50"), TEXT("Icons/ChatActions/Send50"), 50.0f },
		{ TEXT("ChatAction_Pause_50"), TEXT("Icons/ChatActions/Pause50"), 50.0f },
		{ TEXT("ChatAction_Cancel_50"), TEXT("Icons/ChatActions/Cancel50"), 50.0f },
		{ TEXT("ChatAction_Play_50"), TEXT("Icons/ChatActions/Play50"), 50.0f },
		{ TEXT("MessageAction_Undo_32"), TEXT("Icons/MessageActions/Undo32"), 32.0f },
		{ TEXT("MessageAction_Copy_32"), TEXT("Icons/MessageActions/Copy32"), 32.0f },
		{ TEXT("Toolbar_SidepanelOpen_32"), TEXT("Icons/Toolbar/Sidepanel32"), 24.0f },
		{ TEXT("Toolbar_SidepanelClose_32"), TEXT("Icons/Toolbar/Sidepanelclose32"), 24.0f },
		{ TEXT("Toolbar_SidepanelCustomize_32"), TEXT("Icons/Toolbar/SidepanelCustomize32"), 24.0f },
		{ TEXT("Toolbar_SidepanelCustomizeClose_32"), TEXT("Icons/Toolbar/SidepanelCustomizeClose32"), 24.0f },
		{ TEXT("Toolbar_ChatHistory_32"), TEXT("Icons/Toolbar/ChatHistory32"), 24.0f },
		{ TEXT("Toolbar_NewChat_32"), TEXT("Icons/Toolbar/NewChat32"), 24.0f },
		{ TEXT("Toolbar_Export_32"), TEXT("Icons/Toolbar/Export32"), 24.0f },
		{ TEXT("Toolbar_ClearChat_32"), TEXT("Icons/Toolbar/ClearChat32"), 24.0f },
		{ TEXT("ToolExecution_Progress_16"), TEXT("Icons/ToolExecutions/ProgressCycle32"), 16.0f },
	};

	struct FFlatBrushRow
	{
		const TCHAR* Key;
		FLinearColor (*Tint)();
	};

	FLinearColor GetNoTint()
	{
		return FLinearColor::Transparent;
	}

	constexpr FFlatBrushRow FlatBrushRows[] = {
		{ TEXT("Velmora.Markdown.Code.Background"), &FVelmoraUIStyles::GetMarkdownInlineCodeBackgroundColor },
		{ TEXT("Velmora.Markdown.CodeBlock.Background"), &FVelmoraUIStyles::GetMarkdownCodeBlockBackgroundColor },
		{ TEXT("Velmora.Markdown.CodeBlock.Border"), &FVelmoraUIStyles::GetMarkdownCodeBlockBorderColor },
		{ TEXT("Velmora.Markdown.Blockquote.Border"), &FVelmoraUIStyles::GetToolDataTypeGrayColor },
		{ TEXT("Velmora.Markdown.TableCell"), &GetNoTint },
	};

	FSlateBrush MakeFlatBrush(const FLinearColor& Tint)
	{
		FSlateBrush Brush;
		Brush.DrawAs = ESlateBrushDrawType::Image;
		Brush.TintColor = FSlateColor(Tint);
		return Brush;
	}

	FSlateFontInfo WithTypeface(FSlateFontInfo Font, const TCHAR* Typeface)
	{
		Font.TypefaceFontName = FName(Typeface);
		return Font;
	}

	void AddIcons(FSlateStyleSet& Style)
	{
		for (const FIconRow& Row : IconRows)
		{
			Style.Set(FName(Row.Key), new FSlateImageBrush(Style.RootToContentDir(Row.File, TEXT(".png")), FVector2D(Row.Size, Row.Size)));
		}
	}

	void AddMarkdownTextStyles(FSlateStyleSet& Style)
	{
		const FLinearColor TextColor = FVelmoraUIStyles::GetTextColorPrimary();
		const FLinearColor LinkColor = FVelmoraUIStyles::GetMarkdownLinkColor();
		const FSlateFontInfo BodyFont = FVelmoraUIStyles::GetMessageBodyFont();

		// All styles of Markdown are variants of the application's text, so that shadow and selection stay its own.
		FTextBlockStyle Text = FAppStyle::Get().GetWidgetStyle<FTextBlockStyle>("NormalText");
		Text.SetFont(BodyFont);
		Text.SetColorAndOpacity(FSlateColor(TextColor));
		const auto Add = [&Style, &Text](const FString& Key, const FSlateFontInfo& Font, const FLinearColor& Color)
		{
			FTextBlockStyle Row = Text;
			Row.SetFont(Font);
			Row.SetColorAndOpacity(FSlateColor(Color));
			Style.Set(FName(*Key), Row);
		};

		Add(TEXT("Velmora.Markdown.Text"), BodyFont, TextColor);
		Add(TEXT("Velmora.Markdown.Bold"), WithTypeface(BodyFont, TEXT("Bold")), TextColor);
		Add(TEXT("Velmora.Markdown.Italic"), WithTypeface(BodyFont, TEXT("Italic")), TextColor);
		Add(TEXT("Velmora.Markdown.BoldItalic"), WithTypeface(BodyFont, TEXT("BoldItalic")), TextColor);
		Add(TEXT("Velmora.Markdown.Code"), WithTypeface(FCoreStyle::GetDefaultFontStyle("Mono", 9), TEXT("Bold")),
			FVelmoraUIStyles::GetMarkdownInlineCodeForegroundColor());
		Add(TEXT("Velmora.Markdown.CodeBlock"), FVelmoraUIStyles::GetMonospaceFont(), TextColor);
		Add(TEXT("Velmora.Markdown.Link"), FCoreStyle::GetDefaultFontStyle("Regular", 10), LinkColor);
		Add(TEXT("Velmora.Markdown.Link.Hover"), FCoreStyle::GetDefaultFontStyle("Regular", 10), LinkColor * 1.1f);
		Add(TEXT("Velmora.Markdown.ListMarker"), FCoreStyle::GetDefaultFontStyle("Bold", 11), TextColor);
		for (int32 Level = 1; Level <= 6; ++Level)
		{
			Add(FString::Printf(TEXT("Velmora.Markdown.Header%d"), Level), FCoreStyle::GetDefaultFontStyle("Bold", 20 - 2 * Level),
				TextColor);
		}

		FTextBlockStyle Strikethrough = Text;
		Strikethrough.SetStrikeBrush(MakeFlatBrush(TextColor));
		Style.Set("Velmora.Markdown.Strikethrough", Strikethrough);
	}

} // namespace

TSharedPtr<FSlateStyleSet> FVelmoraUIStyles::StyleSet;

void FVelmoraUIStyles::Initialize()
{
	// Once, however often it is asked for: brushes are handed out as pointers that must stay.
	if (!StyleSet.IsValid())
	{
		StyleSet = Create();
		FSlateStyleRegistry::RegisterSlateStyle(*StyleSet);
	}
}

void FVelmoraUIStyles::Shutdown()
{
	if (StyleSet.IsValid())
	{
		FSlateStyleRegistry::UnRegisterSlateStyle(*StyleSet);
		StyleSet.Reset();
	}
}

TSharedPtr<ISlateStyle> FVelmoraUIStyles::Get()
{
	return StyleSet;
}

const FName& FVelmoraUIStyles::GetStyleSetName()
{
	static const FName Name("VelmoraUIStyle");
	return Name;
}

const FSlateBrush* FVelmoraUIStyles::GetBrush(FName Key)
{
	check(StyleSet.IsValid());
	return StyleSet->GetBrush(Key);
}

const FTextBlockStyle& FVelmoraUIStyles::GetTextStyle(FName Key)
{
	check(StyleSet.IsValid());
	return StyleSet->GetWidgetStyle<FTextBlockStyle>(Key);
}

TSharedRef<FSlateStyleSet> FVelmoraUIStyles::Create()
{
	TSharedRef<FSlateStyleSet> Style = MakeShared<FSlateStyleSet>(GetStyleSetName());
	// Without the plug-in, as in a test of a single widget, the pictures are missing and all else is there.
	const TSharedPtr<IPlugin> Plugin = IPluginManager::Get().FindPlugin(TEXT("Velmora"));
	if (Plugin.IsValid())
	{
		Style->SetContentRoot(Plugin->GetBaseDir() / TEXT("Resources"));
	}
	AddIcons(*Style);
	AddMarkdownTextStyles(*Style);
	for (const FFlatBrushRow& Row : FlatBrushRows)
	{
		Style->Set(FName(Row.Key), new FSlateBrush(MakeFlatBrush(Row.Tint())));
	}
	return Style;
}

FLinearColor FVelmoraUIStyles::FromHexSRGB(const TCHAR* Hex)
{
	// The constructor takes red, green and blue through the sRGB table and alpha as it is.
	return FLinearColor(FColor::FromHex(FString(Hex)));
}

#define VELMORA_DEFINE_GETTER(Name, Hex) \
	FLinearColor FVelmoraUIStyles::Name() \
	{ \
		static const FLinearColor Color = FromHexSRGB(TEXT(Hex)); \
		return Color; \
	}
VELMORA_UI_PALETTE(VELMORA_DEFINE_GETTER)
#undef VELMORA_DEFINE_GETTER

FLinearColor FVelmoraUIStyles::GetSecondaryActionNeutralColor(float Alpha)
{
	static const FLinearColor Color = FromHexSRGB(TEXT("E1E5EAFF"));
	return Color.CopyWithNewOpacity(Alpha);
}

FLinearColor FVelmoraUIStyles::GetSecondaryActionNeutralHoverColor(float Alpha)
{
	static const FLinearColor Color = FromHexSRGB(TEXT("F3F6F9FF"));
	return Color.CopyWithNewOpacity(Alpha);
}

FLinearColor FVelmoraUIStyles::GetSyntaxTokenColor(Velmora::Markdown::ESyntaxTokenType Type)
{
	// In the order of the types.
	static const FLinearColor Colors[] = {
		FromHexSRGB(TEXT("D4D4D4FF")), // Default
		FromHexSRGB(TEXT("95CBFFFF")), // Keyword
		FromHexSRGB(TEXT("CE9178FF")), // String
		FromHexSRGB(TEXT("6A9955")), // Comment
		FromHexSRGB(TEXT("B5CEA8FF")), // Number
		FromHexSRGB(TEXT("D4D4D4FF")), // Operator
		FromHexSRGB(TEXT("C586C0FF")), // Preprocessor
		FromHexSRGB(TEXT("C586C0FF")), // Type
		FromHexSRGB(TEXT("DCDCAAFF")), // Function
	};
	// A type that is not known is drawn as text.
	const uint8 Index = static_cast<uint8>(Type);
	return Colors[Index < UE_ARRAY_COUNT(Colors) ? Index : 0];
}

FLinearColor FVelmoraUIStyles::GetUpdateAvailableColor()
{
	return FLinearColor(0.9f, 0.6f, 0.2f, 0.8f);
}

FSlateFontInfo FVelmoraUIStyles::GetBodyFont()
{
	return FAppStyle::GetFontStyle("NormalText");
}

FSlateFontInfo FVelmoraUIStyles::GetBoldFont()
{
	return FAppStyle::GetFontStyle("NormalText.Important");
}

FSlateFontInfo FVelmoraUIStyles::GetTitleFont()
{
	return FAppStyle::GetFontStyle("NormalText.Important");
}

FSlateFontInfo FVelmoraUIStyles::GetLargeTitleFont()
{
	return FAppStyle::GetFontStyle("HeadingLarge");
}

FSlateFontInfo FVelmoraUIStyles::GetMediumTitleFont()
{
	return FAppStyle::GetFontStyle("HeadingMedium");
}

FSlateFontInfo FVelmoraUIStyles::GetSmallTitleFont()
{
	return FAppStyle::GetFontStyle("HeadingSmall");
}

FSlateFontInfo FVelmoraUIStyles::GetMessageBodyFont()
{
	return FCoreStyle::GetDefaultFontStyle("Regular", 11);
}

FSlateFontInfo FVelmoraUIStyles::GetMessageSenderFont()
{
	return FCoreStyle::GetDefaultFontStyle("Bold", 12);
}

FSlateFontInfo FVelmoraUIStyles::GetTimestampFont()
{
	return FCoreStyle::GetDefaultFontStyle("Regular", 9);
}

FSlateFontInfo FVelmoraUIStyles::GetMessageTimestampFont()
{
	return GetTimestampFont();
}

FSlateFontInfo FVelmoraUIStyles::GetSmallFont()
{
	return FCoreStyle::GetDefaultFontStyle("Regular", 9);
}

FSlateFontInfo FVelmoraUIStyles::GetMonospaceFont()
{
	return FCoreStyle::GetDefaultFontStyle("Mono", 10);
}

FSlateFontInfo FVelmoraUIStyles::GetMonospaceBoldFont()
{
	return WithTypeface(GetMonospaceFont(), TEXT("Bold"));
}

FSlateFontInfo FVelmoraUIStyles::GetToolMessageFont()
{
	return FCoreStyle::GetDefaultFontStyle("Mono", 9);
}
