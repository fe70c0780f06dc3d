#include "Styling/SlateTypes.h"

FSlateWidgetStyle::~FSlateWidgetStyle() = default;

namespace
{
	/** The stand-in of a style class: whatever it draws is drawn as a chequer. */
	template <typename StyleType>
	StyleType MakeUnknownStyle()
	{
		return StyleType();
	}

	const FName& GetUnknownFamily()
	{
		static const FName Name(TEXT("Unknown"));
		return Name;
	}

	template <>
	FTextBlockStyle MakeUnknownStyle()
	{
		FTextBlockStyle Style;
		Style.Font = FSlateFontInfo(GetUnknownFamily(), 10.0f, FName(TEXT("Regular")));
		return Style;
	}

	template <>
	FButtonStyle MakeUnknownStyle()
	{
		FButtonStyle Style;
		Style.Normal = Style.Hovered = Style.Pressed = Style.Disabled = FSlateBrush::GetUnknownBrush();
		return Style;
	}

	template <>
	FEditableTextBoxStyle MakeUnknownStyle()
	{
		FEditableTextBoxStyle Style;
		Style.BackgroundImageNormal = Style.BackgroundImageHovered = Style.BackgroundImageFocused = FSlateBrush::GetUnknownBrush();
		return Style;
	}
}

#define VELMORA_STYLE(StyleType) \
	FName StyleType::TypeName() \
	{ \
		static const FName Name(TEXT(#StyleType)); \
		return Name; \
	} \
	const StyleType& StyleType::GetDefault() \
	{ \
		static const StyleType Default = MakeUnknownStyle<StyleType>(); \
		return Default; \
	}

VELMORA_STYLE(FTextBlockStyle)
VELMORA_STYLE(FButtonStyle)
VELMORA_STYLE(FComboButtonStyle)
VELMORA_STYLE(FTableRowStyle)
VELMORA_STYLE(FScrollBarStyle)
VELMORA_STYLE(FHyperlinkStyle)
VELMORA_STYLE(FEditableTextStyle)
VELMORA_STYLE(FEditableTextBoxStyle)
VELMORA_STYLE(FCheckBoxStyle)
VELMORA_STYLE(FProgressBarStyle)
VELMORA_STYLE(FExpandableAreaStyle)

#undef VELMORA_STYLE
