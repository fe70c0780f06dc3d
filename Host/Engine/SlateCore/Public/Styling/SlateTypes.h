#pragma once

#include "CoreMinimal.h"
#include "Brushes/SlateNoResource.h"
#include "Fonts/SlateFontInfo.h"
#include "Styling/SlateBrush.h"
#include "Styling/SlateColor.h"
#include "Styling/SlateWidgetStyle.h"

#define SLATE_STYLE_TYPE(StyleType) \
	static FName TypeName(); \
	virtual FName GetTypeName() const override \
	{ \
		return TypeName(); \
	} \
	static const StyleType& GetDefault();

/** Look of a text. */
struct SLATECORE_API FTextBlockStyle : public FSlateWidgetStyle
{
	SLATE_STYLE_TYPE(FTextBlockStyle)

	FSlateFontInfo Font;
	FSlateColor ColorAndOpacity = FSlateColor::UseForeground();
	FVector2D ShadowOffset = FVector2D(0, 0);
	FSlateBrush StrikeBrush = FSlateNoResource();
	FSlateBrush UnderlineBrush = FSlateNoResource();
	FTextBlockStyle& SetFont(const FSlateFontInfo& InFont)
	{
		Font = InFont;
		return *this;
	}
	FTextBlockStyle& SetColorAndOpacity(const FSlateColor& InColor)
	{
		ColorAndOpacity = InColor;
		return *this;
	}
	FTextBlockStyle& SetStrikeBrush(const FSlateBrush& InBrush)
	{
		StrikeBrush = InBrush;
		return *this;
	}
};

/** Look of a button in its states. MinSize and Padding are the frame's own, besides the content padding of the widget. */
struct SLATECORE_API FButtonStyle : public FSlateWidgetStyle
{
	SLATE_STYLE_TYPE(FButtonStyle)

	FSlateBrush Normal = FSlateNoResource();
	FSlateBrush Hovered = FSlateNoResource();
	FSlateBrush Pressed = FSlateNoResource();
	FSlateBrush Disabled = FSlateNoResource();
	/** Colour of text and foreground things inside. */
	FSlateColor NormalForeground = FSlateColor::UseForeground();
	FSlateColor HoveredForeground = FSlateColor::UseForeground();
	FSlateColor PressedForeground = FSlateColor::UseForeground();
	FSlateColor DisabledForeground = FSlateColor::UseForeground();
	/** Opacity of the content while disabled. */
	float DisabledContentOpacity = 1.0f;
	FVector2D MinSize = FVector2D(0, 0);
	/** Corner radius of the focus ring. */
	float Radius = 4.0f;
	FButtonStyle& SetNormal(const FSlateBrush& InBrush)
	{
		Normal = InBrush;
		return *this;
	}
	FButtonStyle& SetHovered(const FSlateBrush& InBrush)
	{
		Hovered = InBrush;
		return *this;
	}
	FButtonStyle& SetPressed(const FSlateBrush& InBrush)
	{
		Pressed = InBrush;
		return *this;
	}
	FButtonStyle& SetDisabled(const FSlateBrush& InBrush)
	{
		Disabled = InBrush;
		return *this;
	}
};

/** Look of a combo button or combo box. */
struct SLATECORE_API FComboButtonStyle : public FSlateWidgetStyle
{
	SLATE_STYLE_TYPE(FComboButtonStyle)

	FButtonStyle ButtonStyle;
	/** The box while its list is open. */
	FSlateBrush OpenBrush = FSlateNoResource();
	FSlateBrush DownArrowImage = FSlateNoResource();
	FSlateBrush MenuBorderBrush = FSlateNoResource();
	FMargin MenuBorderPadding = FMargin(4.0f);
	FMargin ContentPadding = FMargin(8.0f, 3.0f, 4.0f, 3.0f);
	FSlateColor ArrowColor;
};

/** Look of a row in a list. */
struct SLATECORE_API FTableRowStyle : public FSlateWidgetStyle
{
	SLATE_STYLE_TYPE(FTableRowStyle)

	FSlateBrush ActiveBrush = FSlateNoResource();
	FSlateBrush ActiveHoveredBrush = FSlateNoResource();
	FSlateBrush InactiveBrush = FSlateNoResource();
	FSlateBrush HoveredBrush = FSlateNoResource();
	FSlateBrush PressedBrush = FSlateNoResource();
	FSlateColor TextColor = FSlateColor::UseForeground();
	FSlateColor SelectedTextColor = FSlateColor::UseForeground();
	FSlateColor DisabledTextColor = FSlateColor::UseForeground();
};

/** Look of a scroll bar: colours of the thumb and its widths in units. */
struct SLATECORE_API FScrollBarStyle : public FSlateWidgetStyle
{
	SLATE_STYLE_TYPE(FScrollBarStyle)

	FSlateColor NormalThumb;
	FSlateColor HoveredThumb;
	FSlateColor DraggedThumb;
	float Room = 12.0f;
	float ThumbWidth = 4.0f;
	float ActiveThumbWidth = 8.0f;
	float MinThumbLength = 24.0f;
};

/** Look of a hyperlink. */
struct SLATECORE_API FHyperlinkStyle : public FSlateWidgetStyle
{
	SLATE_STYLE_TYPE(FHyperlinkStyle)

	FTextBlockStyle TextStyle;
	FSlateColor NormalColor;
	FSlateColor HoveredColor;
	FSlateColor PressedColor;
	float UnderlineOpacity = 0.45f;
};

/** Look of editable text without a box. */
struct SLATECORE_API FEditableTextStyle : public FSlateWidgetStyle
{
	SLATE_STYLE_TYPE(FEditableTextStyle)

	FSlateFontInfo Font;
	FSlateColor ColorAndOpacity;
	FSlateColor HintColor;
	FSlateColor DisabledColor;
	FSlateColor CaretColor;
	FSlateColor SelectionColor;
	FSlateColor InactiveSelectionColor;
};

/** Look of a text box. */
struct SLATECORE_API FEditableTextBoxStyle : public FSlateWidgetStyle
{
	SLATE_STYLE_TYPE(FEditableTextBoxStyle)

	FEditableTextStyle TextStyle;
	FSlateBrush BackgroundImageNormal = FSlateNoResource();
	FSlateBrush BackgroundImageHovered = FSlateNoResource();
	FSlateBrush BackgroundImageFocused = FSlateNoResource();
	FSlateBrush BackgroundImageReadOnly = FSlateNoResource();
	FSlateBrush BackgroundImageDisabled = FSlateNoResource();
	FMargin Padding = FMargin(8.0f, 6.0f);
	FScrollBarStyle ScrollBarStyle;
};

/** Look of a check box. */
struct SLATECORE_API FCheckBoxStyle : public FSlateWidgetStyle
{
	SLATE_STYLE_TYPE(FCheckBoxStyle)

	FVector2D BoxSize = FVector2D(16, 16);
	FVector2D MarkSize = FVector2D(12, 12);
	FSlateBrush MarkImage = FSlateNoResource();
	FSlateBrush UncheckedImage = FSlateNoResource();
	FSlateBrush UncheckedHoveredImage = FSlateNoResource();
	FSlateBrush UncheckedDisabledImage = FSlateNoResource();
	FSlateBrush CheckedImage = FSlateNoResource();
	FSlateBrush CheckedHoveredImage = FSlateNoResource();
	FSlateBrush CheckedDisabledImage = FSlateNoResource();
	FSlateColor MarkColor;
	FSlateColor DisabledMarkColor;
};

/** Look of a progress bar. */
struct SLATECORE_API FProgressBarStyle : public FSlateWidgetStyle
{
	SLATE_STYLE_TYPE(FProgressBarStyle)

	FSlateBrush BackgroundImage = FSlateNoResource();
	FSlateBrush FillImage = FSlateNoResource();
	float Height = 6.0f;
};

/** Look of an expandable area. */
struct SLATECORE_API FExpandableAreaStyle : public FSlateWidgetStyle
{
	SLATE_STYLE_TYPE(FExpandableAreaStyle)

	FSlateBrush CollapsedImage = FSlateNoResource();
	FSlateBrush ExpandedImage = FSlateNoResource();
	FSlateColor ArrowColor;
};
