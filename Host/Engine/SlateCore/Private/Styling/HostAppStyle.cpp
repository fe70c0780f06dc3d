#include "Host/HostAppStyle.h"

#include "Brushes/SlateColorBrush.h"
#include "Brushes/SlateRoundedBoxBrush.h"
#include "Styling/AppStyle.h"
#include "Styling/CoreStyle.h"
#include "Styling/SlateStyle.h"
#include "Styling/SlateStyleRegistry.h"

// The look of the program's own controls, under the names that the editor's style set has for them. Colours stand here
// as the hexadecimal digits that a designer reads; every other source asks for them by name.

namespace
{
	const FName& GetSetName()
	{
		static const FName Name(TEXT("EditorStyle"));
		return Name;
	}

	TSharedPtr<FSlateStyleSet>& GetSetSlot()
	{
		static TSharedPtr<FSlateStyleSet> Set;
		return Set;
	}

	FLinearColor Hex(const TCHAR* Digits)
	{
		return FLinearColor(FColor::FromHex(Digits));
	}

	FSlateRoundedBoxBrush Rounded(const TCHAR* Fill, float Radius)
	{
		return FSlateRoundedBoxBrush(Hex(Fill), Radius);
	}

	FSlateRoundedBoxBrush Outlined(const TCHAR* Fill, float Radius, const TCHAR* Line)
	{
		return FSlateRoundedBoxBrush(Hex(Fill), Radius, Hex(Line), 1.0f);
	}

	template <typename BrushType>
	// A surface hides what lies below it, which spares painting that.
	void SetSurface(FSlateStyleSet& Set, const TCHAR* Name, const BrushType& Brush)
	{
		BrushType* Owned = new BrushType(Brush);
		Owned->SetSurface(true);
		Set.Set(FName(Name), Owned);
	}

	FSlateFontInfo DefaultFont(const TCHAR* Typeface, float Size)
	{
		return FCoreStyle::GetDefaultFontStyle(FName(Typeface), Size);
	}

	// In order of their names. An icon has the size of the place that it is made for; others scale it.
	struct FIconRow
	{
		const TCHAR* Name;
		float Size;
	};
	constexpr FIconRow IconRows[] = {
		{ TEXT("ClassIcon.BlueprintCore"), 20.0f },
		{ TEXT("ClassIcon.C"), 20.0f },
		{ TEXT("Icons.ChevronDown"), 16.0f },
		{ TEXT("Icons.ChevronRight"), 16.0f },
		{ TEXT("Icons.CircleArrowRight"), 20.0f },
		{ TEXT("Icons.Copy"), 20.0f },
		{ TEXT("Icons.Cut"), 20.0f },
		{ TEXT("Icons.Delete"), 20.0f },
		{ TEXT("Icons.Download"), 20.0f },
		{ TEXT("Icons.Error"), 20.0f },
		{ TEXT("Icons.File"), 20.0f },
		{ TEXT("Icons.FilledCircle"), 8.0f },
		{ TEXT("Icons.FolderClosed"), 20.0f },
		{ TEXT("Icons.FolderOpen"), 20.0f },
		{ TEXT("Icons.GenericFile"), 20.0f },
		{ TEXT("Icons.Help"), 20.0f },
		{ TEXT("Icons.Info"), 20.0f },
		{ TEXT("Icons.OutputLog"), 20.0f },
		{ TEXT("Icons.Paste"), 20.0f },
		{ TEXT("Icons.Plus"), 20.0f },
		{ TEXT("Icons.Redo"), 20.0f },
		{ TEXT("Icons.Search"), 20.0f },
		{ TEXT("Icons.Settings"), 20.0f },
		{ TEXT("Icons.Success"), 20.0f },
		{ TEXT("Icons.Undo"), 20.0f },
		{ TEXT("Icons.Warning"), 20.0f },
		{ TEXT("Icons.X"), 20.0f },
		{ TEXT("Symbols.Check"), 16.0f },
		{ TEXT("Symbols.X"), 16.0f },
		{ TEXT("TreeArrow_Collapsed"), 16.0f },
		{ TEXT("TreeArrow_Expanded"), 16.0f },
	};

	void SetIcons(FSlateStyleSet& Set)
	{
		for (const FIconRow& Row : IconRows)
		{
			Set.Set(FName(Row.Name), new FSlateImageBrush(Set.RootToContentDir(Row.Name, TEXT(".png")), FVector2D(Row.Size, Row.Size)));
		}
	}

	FSlateImageBrush Icon(const FSlateStyleSet& Set, const TCHAR* Name, float Size)
	{
		return FSlateImageBrush(Set.RootToContentDir(Name, TEXT(".png")), FVector2D(Size, Size));
	}

	void SetBrushes(FSlateStyleSet& Set)
	{
		Set.Set(FName(TEXT("NoBorder")), new FSlateNoResource());
		Set.Set(FName(TEXT("WhiteBrush")), new FSlateColorBrush(FLinearColor::White));
		SetSurface(Set, TEXT("ToolPanel.GroupBorder"), Rounded(TEXT("15171C"), 4.0f));
		SetSurface(Set, TEXT("ToolPanel.DarkGroupBorder"), FSlateColorBrush(Hex(TEXT("0E0F13"))));
		SetSurface(Set, TEXT("Menu.Background"), Outlined(TEXT("1C1F27"), 6.0f, TEXT("343946")));
		SetSurface(Set, TEXT("ExpandableArea.Border"), Outlined(TEXT("0E0F13"), 4.0f, TEXT("23262F")));
		SetSurface(Set, TEXT("ToolTip.Background"), Outlined(TEXT("262A34"), 4.0f, TEXT("3D4354")));
		SetSurface(Set, TEXT("Window.Background"), FSlateColorBrush(Hex(TEXT("08090C"))));
		SetSurface(Set, TEXT("Window.Bar"), FSlateColorBrush(Hex(TEXT("0B0C10"))));
		SetSurface(Set, TEXT("Window.Body"), Outlined(TEXT("15171C"), 6.0f, TEXT("343946")));
	}

	void SetFonts(FSlateStyleSet& Set)
	{
		const FSlateColor Normal = Hex(TEXT("CBCBCB"));
		const FSlateColor Strong = Hex(TEXT("E6E6E6"));
		struct FTextRow
		{
			const TCHAR* Name;
			const TCHAR* Typeface;
			float Size;
			bool bStrong;
		};
		constexpr FTextRow Rows[] = {
			{ TEXT("NormalFont"), TEXT("Regular"), 10.0f, false },
			{ TEXT("NormalText"), TEXT("Regular"), 10.0f, false },
			{ TEXT("NormalFontBold"), TEXT("Bold"), 10.0f, true },
			{ TEXT("NormalText.Important"), TEXT("Bold"), 10.0f, true },
			{ TEXT("SmallFont"), TEXT("Regular"), 9.0f, false },
			{ TEXT("SmallText"), TEXT("Regular"), 9.0f, false },
			{ TEXT("HeadingLarge"), TEXT("Bold"), 16.0f, true },
			{ TEXT("HeadingMedium"), TEXT("Bold"), 14.0f, true },
			{ TEXT("HeadingSmall"), TEXT("Bold"), 11.0f, true },
		};
		for (const FTextRow& Row : Rows)
		{
			const FSlateFontInfo Font = DefaultFont(Row.Typeface, Row.Size);
			Set.Set(FName(Row.Name), Font);
			Set.Set(FName(Row.Name), FTextBlockStyle().SetFont(Font).SetColorAndOpacity(Row.bStrong ? Strong : Normal));
		}
		FSlateFontInfo MenuHeading = DefaultFont(TEXT("Bold"), 8.0f);
		MenuHeading.LetterSpacing = 60;
		Set.Set(FName(TEXT("Menu.Heading")), FTextBlockStyle().SetFont(MenuHeading).SetColorAndOpacity(Hex(TEXT("808896"))));
	}

	FButtonStyle MakeTransparentButton(const TCHAR* Hovered, const TCHAR* Pressed)
	{
		FButtonStyle Style;
		Style.SetHovered(Rounded(Hovered, 4.0f)).SetPressed(Rounded(Pressed, 4.0f));
		Style.DisabledContentOpacity = 0.6f;
		return Style;
	}

	// What cannot be used now has an alpha below full, FE where it is to be seen as it is: whoever changes colours on their way to the
	// window, for more contrast, knows it by that and keeps it apart from what can. Check boxes have none: those of a list of tasks are
	// read, not used.
	FButtonStyle MakeFilledButton(
		const TCHAR* Fill, const TCHAR* Line, const TCHAR* HoverFill, const TCHAR* HoverLine, const TCHAR* PressFill, const TCHAR* Text)
	{
		FButtonStyle Style;
		Style.SetNormal(Outlined(Fill, 4.0f, Line)).SetHovered(Outlined(HoverFill, 4.0f, HoverLine));
		Style.SetPressed(Outlined(PressFill, 4.0f, Line)).SetDisabled(Outlined(TEXT("181B22"), 4.0f, TEXT("262A34FE")));
		Style.NormalForeground = Style.HoveredForeground = Style.PressedForeground = Hex(Text);
		Style.DisabledForeground = Hex(TEXT("6B7280FE"));
		Style.MinSize = FVector2D(80.0, 28.0);
		return Style;
	}

	void SetButtons(FSlateStyleSet& Set)
	{
		Set.Set(FName(TEXT("SimpleButton")), MakeTransparentButton(TEXT("FFFFFF14"), TEXT("FFFFFF0A")));
		FButtonStyle Bare;
		Bare.DisabledContentOpacity = 0.6f;
		Set.Set(FName(TEXT("NoBorder")), Bare);
		Set.Set(FName(TEXT("Button")),
			MakeFilledButton(TEXT("20242D"), TEXT("343946"), TEXT("2A2F3A"), TEXT("434959"), TEXT("191C23"), TEXT("E6E6E6")));
		Set.Set(FName(TEXT("PrimaryButton")),
			MakeFilledButton(TEXT("24527F"), TEXT("3B76AE"), TEXT("2D6498"), TEXT("4F8CC6"), TEXT("1D4469"), TEXT("FFFFFF")));

		FComboButtonStyle Combo;
		Combo.ButtonStyle =
			MakeFilledButton(TEXT("20242D"), TEXT("343946"), TEXT("2A2F3A"), TEXT("434959"), TEXT("20242D"), TEXT("CBCBCB"));
		Combo.ButtonStyle.MinSize = FVector2D(0, 0);
		Combo.ButtonStyle.DisabledForeground = Hex(TEXT("CBCBCB"));
		Combo.ButtonStyle.DisabledContentOpacity = 0.6f;
		Combo.OpenBrush = Outlined(TEXT("20242D"), 4.0f, TEXT("7CB9FF"));
		Combo.DownArrowImage = Icon(Set, TEXT("Icons.ChevronDown"), 16.0f);
		Combo.ArrowColor = Hex(TEXT("999999"));
		Combo.MenuBorderBrush = Outlined(TEXT("1C1F27"), 6.0f, TEXT("343946"));
		Set.Set(FName(TEXT("ComboButton")), Combo);

		FTableRowStyle Row;
		Row.HoveredBrush = Rounded(TEXT("FFFFFF14"), 4.0f);
		Row.ActiveBrush = Row.InactiveBrush = Row.ActiveHoveredBrush = Row.PressedBrush = Rounded(TEXT("7CB9FF3D"), 4.0f);
		Row.TextColor = Hex(TEXT("CBCBCB"));
		Row.SelectedTextColor = Hex(TEXT("FFFFFF"));
		Row.DisabledTextColor = Hex(TEXT("6B7280FE"));
		Set.Set(FName(TEXT("TableView.Row")), Row);
		FTableRowStyle MenuRow = Row;
		MenuRow.HoveredBrush = Rounded(TEXT("7CB9FF3D"), 4.0f);
		Set.Set(FName(TEXT("Menu.Row")), MenuRow);
	}

	void SetInputs(FSlateStyleSet& Set)
	{
		FScrollBarStyle Bar;
		Bar.NormalThumb = Hex(TEXT("434959"));
		Bar.HoveredThumb = Hex(TEXT("5B6373"));
		Bar.DraggedThumb = Hex(TEXT("808896"));
		Set.Set(FName(TEXT("ScrollBar")), Bar);

		FHyperlinkStyle Link;
		Link.TextStyle.SetFont(DefaultFont(TEXT("Regular"), 11.0f)).SetColorAndOpacity(Hex(TEXT("95CBFF")));
		Link.NormalColor = Hex(TEXT("95CBFF"));
		Link.HoveredColor = Hex(TEXT("9CD4FF"));
		Link.PressedColor = Hex(TEXT("7CB9FF"));
		Set.Set(FName(TEXT("Hyperlink")), Link);

		FEditableTextStyle Text;
		Text.Font = DefaultFont(TEXT("Regular"), 10.0f);
		Text.ColorAndOpacity = Hex(TEXT("E6E6E6"));
		Text.HintColor = Hex(TEXT("808080"));
		Text.DisabledColor = Hex(TEXT("6B7280FE"));
		Text.CaretColor = Hex(TEXT("E6E6E6"));
		Text.SelectionColor = Hex(TEXT("2A4D75"));
		Text.InactiveSelectionColor = Hex(TEXT("2A2F3A"));
		Set.Set(FName(TEXT("NormalEditableText")), Text);

		FEditableTextBoxStyle Box;
		Box.TextStyle = Text;
		Box.ScrollBarStyle = Bar;
		Box.BackgroundImageNormal = Outlined(TEXT("0A0B0F"), 4.0f, TEXT("565D70"));
		Box.BackgroundImageHovered = Outlined(TEXT("0A0B0F"), 4.0f, TEXT("808896"));
		Box.BackgroundImageFocused = Outlined(TEXT("0A0B0F"), 4.0f, TEXT("7CB9FF"));
		Box.BackgroundImageReadOnly = Box.BackgroundImageNormal;
		Box.BackgroundImageDisabled = Outlined(TEXT("121319"), 4.0f, TEXT("23262FFE"));
		for (FSlateBrush* Brush : { &Box.BackgroundImageNormal, &Box.BackgroundImageHovered, &Box.BackgroundImageFocused,
				 &Box.BackgroundImageReadOnly, &Box.BackgroundImageDisabled })
		{
			Brush->SetSurface(true);
		}
		Set.Set(FName(TEXT("NormalEditableTextBox")), Box);
	}

	/** Check boxes, progress bars and the arrows of expandable areas. */
	void SetMarks(FSlateStyleSet& Set)
	{
		FCheckBoxStyle Check;
		Check.MarkImage = Icon(Set, TEXT("Symbols.Check"), 12.0f);
		Check.UncheckedImage = Outlined(TEXT("0A0B0F"), 3.0f, TEXT("6B7280"));
		Check.UncheckedHoveredImage = Outlined(TEXT("0A0B0F"), 3.0f, TEXT("CBCBCB"));
		Check.UncheckedDisabledImage = Outlined(TEXT("00000000"), 3.0f, TEXT("5B6373"));
		Check.CheckedImage = Rounded(TEXT("7CB9FF"), 3.0f);
		Check.CheckedHoveredImage = Outlined(TEXT("7CB9FF"), 3.0f, TEXT("CBCBCB"));
		Check.CheckedDisabledImage = Outlined(TEXT("3A5A7C"), 3.0f, TEXT("5B6373"));
		Check.MarkColor = Hex(TEXT("0A0B0F"));
		Check.DisabledMarkColor = Hex(TEXT("E6E6E6"));
		Set.Set(FName(TEXT("Checkbox")), Check);

		FProgressBarStyle Progress;
		Progress.BackgroundImage = Outlined(TEXT("0A0B0F"), 3.0f, TEXT("23262F"));
		Progress.FillImage = Rounded(TEXT("FFFFFF"), 3.0f);
		Set.Set(FName(TEXT("ProgressBar")), Progress);

		FExpandableAreaStyle Area;
		Area.CollapsedImage = Icon(Set, TEXT("TreeArrow_Collapsed"), 16.0f);
		Area.ExpandedImage = Icon(Set, TEXT("TreeArrow_Expanded"), 16.0f);
		Area.ArrowColor = Hex(TEXT("999999"));
		Set.Set(FName(TEXT("ExpandableArea")), Area);
	}

	void SetColors(FSlateStyleSet& Set)
	{
		struct FColorRow
		{
			const TCHAR* Name;
			const TCHAR* Digits;
		};
		constexpr FColorRow Rows[] = {
			{ TEXT("Colors.Foreground"), TEXT("CBCBCB") },
			{ TEXT("Colors.ForegroundHover"), TEXT("FFFFFF") },
			{ TEXT("Colors.ForegroundStrong"), TEXT("E6E6E6") },
			{ TEXT("Colors.ForegroundSubdued"), TEXT("999999") },
			{ TEXT("Colors.Disabled"), TEXT("6B7280FE") },
			{ TEXT("Colors.Icon"), TEXT("808080") },
			{ TEXT("Colors.Accent"), TEXT("7CB9FF") },
			{ TEXT("Colors.Success"), TEXT("10B981") },
			{ TEXT("Colors.Error"), TEXT("D97777") },
			{ TEXT("Colors.Warning"), TEXT("F3DA7C") },
			{ TEXT("Colors.Throbber"), TEXT("95CBFF") },
			{ TEXT("Colors.Window"), TEXT("08090C") },
			{ TEXT("Colors.Bar"), TEXT("0B0C10") },
			{ TEXT("Colors.Group"), TEXT("15171C") },
			{ TEXT("Colors.Popup"), TEXT("1C1F27") },
			{ TEXT("Colors.PopupLine"), TEXT("343946") },
			{ TEXT("Colors.TabHover"), TEXT("FFFFFF0D") },
		};
		for (const FColorRow& Row : Rows)
		{
			Set.Set(FName(Row.Name), Hex(Row.Digits));
		}
	}
}

// Colours first: everything below asks for them by name.
void FHostAppStyle::Initialize(const FString& IconFolder)
{
	if (GetSetSlot())
	{
		return;
	}
	const TSharedRef<FSlateStyleSet> Set = MakeShared<FSlateStyleSet>(GetSetName());
	Set->SetContentRoot(IconFolder);
	SetColors(*Set);
	SetBrushes(*Set);
	SetIcons(*Set);
	SetFonts(*Set);
	SetButtons(*Set);
	SetInputs(*Set);
	SetMarks(*Set);
	GetSetSlot() = Set;
	FSlateStyleRegistry::RegisterSlateStyle(*Set);
}

const ISlateStyle& FAppStyle::Get()
{
	checkf(GetSetSlot().IsValid(), TEXT("The editor's look was asked for before it was made"));
	return *GetSetSlot();
}

const FName& FAppStyle::GetAppStyleSetName()
{
	return GetSetName();
}

const FSlateBrush* FAppStyle::GetNoBrush()
{
	static const FSlateNoResource None;
	return &None;
}

const ISlateStyle& FCoreStyle::Get()
{
	return FAppStyle::Get();
}

// Unknown typefaces are the regular one, as in the editor.
FSlateFontInfo FCoreStyle::GetDefaultFontStyle(FName InTypefaceFontName, float InSize, const FFontOutlineSettings& InOutlineSettings)
{
	static const FName Known[] = { FName(TEXT("Regular")), FName(TEXT("Bold")), FName(TEXT("Italic")), FName(TEXT("BoldItalic")) };
	static const FName Mono(TEXT("Mono"));
	FSlateFontInfo Font(FName(), InSize, Known[0]);
	if (InTypefaceFontName == Mono)
	{
		// The family stays mono when only the typeface is changed to bold later.
		Font.FamilyName = Mono;
		Font.TypefaceFontName = Mono;
	}
	else
	{
		for (const FName& Typeface : Known)
		{
			if (Typeface == InTypefaceFontName)
			{
				Font.TypefaceFontName = Typeface;
			}
		}
	}
	Font.OutlineSettings = InOutlineSettings;
	return Font;
}
