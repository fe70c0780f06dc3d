#pragma once

#include "CoreMinimal.h"
#include "Fonts/SlateFontInfo.h"
#include "Markdown/CodeSyntax.h"
#include "Style/VelmoraUIPalette.h"
#include "Styling/ISlateStyle.h"
#include "Styling/SlateStyle.h"
#include "Templates/SharedPointer.h"

/**
 * The look of the product: one style set with the icons and the Markdown text styles, and the palette and the fonts as
 * getters. Getters of colours need no style set and cost no allocation, so bound attributes may call them each frame.
 * Game thread.
 */
class VELMORAUI_API FVelmoraUIStyles
{
public:
	/** Builds and registers the style set, once until Shutdown. The module's start-up calls it. */
	static void Initialize();

	/** Unregisters and releases the style set. */
	static void Shutdown();

	/** Null before Initialize and after Shutdown. */
	static TSharedPtr<ISlateStyle> Get();

	/** Needs no style set. */
	static const FName& GetStyleSetName();

	/** Builds a style set anew; Initialize keeps and registers the one that counts. */
	static TSharedRef<FSlateStyleSet> Create();

	/** A brush of the style set by its key, such as "ChatAction_Send_50". The set must be initialised. */
	static const FSlateBrush* GetBrush(FName Key);

	/** A text style of the style set by its key, such as "Velmora.Markdown.Text". The set must be initialised. */
	static const FTextBlockStyle& GetTextStyle(FName Key);

	/**
	 * The linear colour of a text of six or eight hexadecimal digits, RRGGBB or RRGGBBAA, with or without a leading '#'.
	 * Any other number of digits gives transparent black.
	 */
	static FLinearColor FromHexSRGB(const TCHAR* Hex);

#define VELMORA_DECLARE_GETTER(Name, Hex) static FLinearColor Name();
	VELMORA_UI_PALETTE(VELMORA_DECLARE_GETTER)
#undef VELMORA_DECLARE_GETTER

	/** The colours of a secondary action at rest and hovered, at the given opacity. */
	static FLinearColor GetSecondaryActionNeutralColor(float Alpha);
	static FLinearColor GetSecondaryActionNeutralHoverColor(float Alpha);

	/** Of a piece of source code. A number that is no type has the colour of Default. */
	static FLinearColor GetSyntaxTokenColor(Velmora::Markdown::ESyntaxTokenType Type);

	/** Given in linear components, unlike the rows of the palette. */
	static FLinearColor GetUpdateAvailableColor();

	/** Slate units. */
	static float GetMarkdownCodeBlockCornerRadius()
	{
		return 4.0f;
	}
	static float GetMarkdownInlineCodeCornerRadius()
	{
		return 3.0f;
	}

	static FSlateFontInfo GetBodyFont();
	static FSlateFontInfo GetBoldFont();
	static FSlateFontInfo GetTitleFont();
	static FSlateFontInfo GetLargeTitleFont();
	static FSlateFontInfo GetMediumTitleFont();
	static FSlateFontInfo GetSmallTitleFont();
	static FSlateFontInfo GetMessageBodyFont();
	static FSlateFontInfo GetMessageSenderFont();
	static FSlateFontInfo GetTimestampFont();
	static FSlateFontInfo GetMessageTimestampFont();
	static FSlateFontInfo GetSmallFont();
	static FSlateFontInfo GetMonospaceFont();
	static FSlateFontInfo GetMonospaceBoldFont();
	static FSlateFontInfo GetToolMessageFont();

private:
	static TSharedPtr<FSlateStyleSet> StyleSet;
};
