#include "Widgets/SMarkdownTextBlock.h"

#include "Brushes/SlateRoundedBoxBrush.h"
#include "Math/UnrealMathUtility.h"
#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "Styling/CoreStyle.h"
#include "Styling/SlateTypes.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Input/SCheckBox.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SExpandableArea.h"
#include "Widgets/Layout/SSpacer.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

namespace
{

	/** Looked up once: an answer may have a block for every few characters. */
	struct FBlockNames
	{
		const FName NoBorder = "NoBorder";
		const FName Text = "Velmora.Markdown.Text";
		const FName ListMarker = "Velmora.Markdown.ListMarker";
		const FName QuoteBar = "Velmora.Markdown.Blockquote.Border";
		const FName TableCell = "Velmora.Markdown.TableCell";
		const FName Headers[6] = { "Velmora.Markdown.Header1", "Velmora.Markdown.Header2", "Velmora.Markdown.Header3",
			"Velmora.Markdown.Header4", "Velmora.Markdown.Header5", "Velmora.Markdown.Header6" };
	};

	const FBlockNames& GetBlockNames()
	{
		static const FBlockNames Names;
		return Names;
	}

} // namespace

// One widget for each block of the text. Inline marks are read where a block's text is shown and not before.
TSharedRef<SWidget> SMarkdownTextBlock::BuildBlockToken(const FMarkdownToken& Token)
{
	using Velmora::Markdown::ETokenType;
	switch (Token.Type)
	{
	case ETokenType::CodeBlock:
		return BuildCodeBlock(Token);
	case ETokenType::Header:
		return BuildHeader(Token);
	case ETokenType::ListItem:
		return BuildListItem(Token);
	case ETokenType::TaskListItem:
		return BuildTaskListItem(Token);
	case ETokenType::Table:
		return BuildTable(Token);
	case ETokenType::CollapsibleSection:
		return BuildCollapsibleSection(Token);
	case ETokenType::FootnoteDefinition:
		return BuildFootnoteDefinition(Token);
	case ETokenType::Blockquote:
		return BuildBlockquote(Token);
	case ETokenType::HorizontalRule:
		return BuildHorizontalRule();
	default:
		// A line end, too: its empty line is the room between two lines of text.
		return SNew(STextBlock)
			.TextStyle(&FVelmoraUIStyles::GetTextStyle(GetBlockNames().Text))
			.Text(FText::FromString(Token.Content))
			.AutoWrapText(bAutoWrapText)
			.WrapTextAt(WrapTextAt);
	}
}

TSharedRef<SWidget> SMarkdownTextBlock::BuildHeader(const FMarkdownToken& Token)
{
	// Clamped, since the token may be made by others than the parser.
	const FName StyleName = GetBlockNames().Headers[FMath::Clamp(Token.Level, 1, 6) - 1];
	// clang-format off
	return SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush(GetBlockNames().NoBorder))
		.Padding(FMargin(0.0f, 4.0f, 0.0f, 2.0f))
		[
			ParseAndBuildInlineContentWithStyle(Token.Content, FVelmoraUIStyles::GetTextStyle(StyleName))
		];
	// clang-format on
}

TSharedRef<SWidget> SMarkdownTextBlock::BuildHorizontalRule()
{
	// clang-format off
	return SNew(SBox)
		.Padding(FMargin(0.0f, 10.0f, 0.0f, 10.0f))
		[
			SNew(SBox)
			.HeightOverride(2.0f)
			[
				SNew(SImage)
				.Image(FAppStyle::GetBrush("WhiteBrush"))
				.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::FromHexSRGB(TEXT("2E3340DC"))))
			]
		];
	// clang-format on
}

TSharedRef<SWidget> SMarkdownTextBlock::BuildBlockquote(const FMarkdownToken& Token)
{
	// clang-format off
	return SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush(GetBlockNames().NoBorder))
		.Padding(FMargin(12.0f, 8.0f, 12.0f, 8.0f))
		[
			SNew(SHorizontalBox)
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.Padding(0.0f, 0.0f, 12.0f, 0.0f)
			[
				SNew(SBox)
				.WidthOverride(4.0f)
				[
					SNew(SBorder)
					.BorderImage(FVelmoraUIStyles::GetBrush(GetBlockNames().QuoteBar))
				]
			]
			+ SHorizontalBox::Slot()
			.FillWidth(1.0f)
			[
				ParseAndBuildInlineContent(Token.Content)
			]
		];
	// clang-format on
}

TSharedRef<SWidget> SMarkdownTextBlock::BuildListItem(const FMarkdownToken& Token)
{
	// Numbered items show a bullet, too: the parser keeps no number.
	static const FText Bullet = FText::FromString(TEXT("•"));
	// clang-format off
	return BuildMarkedItem(
		Token,
		SNew(STextBlock)
		.TextStyle(&FVelmoraUIStyles::GetTextStyle(GetBlockNames().ListMarker))
		.Text(Bullet));
	// clang-format on
}

TSharedRef<SWidget> SMarkdownTextBlock::BuildTaskListItem(const FMarkdownToken& Token)
{
	const bool bChecked = Token.Metadata == TEXT("checked");
	// A display and not an input: ticking it would change nothing.
	// clang-format off
	return BuildMarkedItem(
		Token,
		SNew(SCheckBox)
		.IsEnabled(false)
		.IsChecked(bChecked ? ECheckBoxState::Checked : ECheckBoxState::Unchecked));
	// clang-format on
}

// Twenty units for each level; the text wraps beside its marker and never below it.
TSharedRef<SWidget> SMarkdownTextBlock::BuildMarkedItem(const FMarkdownToken& Token, const TSharedRef<SWidget>& Marker)
{
	// clang-format off
	return SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.AutoWidth()
		[
			SNew(SSpacer)
			.Size(FVector2D(Token.Level * 20.0, 1.0))
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.Padding(0.0f, 0.0f, 8.0f, 0.0f)
		[
			Marker
		]
		+ SHorizontalBox::Slot()
		.FillWidth(1.0f)
		[
			ParseAndBuildInlineContent(Token.Content)
		];
	// clang-format on
}

TSharedRef<SWidget> SMarkdownTextBlock::BuildFootnoteDefinition(const FMarkdownToken& Token)
{
	// clang-format off
	return SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush(GetBlockNames().NoBorder))
		.Padding(FMargin(12.0f, 4.0f, 0.0f, 4.0f))
		[
			SNew(SHorizontalBox)
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.Padding(0.0f, 0.0f, 8.0f, 0.0f)
			[
				SNew(STextBlock)
				.Text(FText::FromString(FString::Printf(TEXT("[%s]:"), *Token.Metadata)))
				.Font(FCoreStyle::GetDefaultFontStyle("Regular", 9))
				.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextColorSecondary()))
			]
			+ SHorizontalBox::Slot()
			.FillWidth(1.0f)
			[
				ParseAndBuildInlineContent(Token.Content)
			]
		];
	// clang-format on
}

TSharedRef<SWidget> SMarkdownTextBlock::BuildTable(const FMarkdownToken& Token)
{
	TArray<FString> Rows;
	// 1. The rows. The parser lets no table pass without its separator, but a token may be made by others.
	Token.Content.ParseIntoArray(Rows, TEXT("\n"), true);
	if (Rows.Num() < 2)
	{
		return SNew(STextBlock).Text(FText::FromString(TEXT("[Invalid Table]")));
	}
	TArray<FString> Alignments;
	Token.Metadata.ParseIntoArray(Alignments, TEXT(","), true);

	// 2. All but the separator, which has become the alignments.
	constexpr int32 SeparatorRow = 1;
	const TSharedRef<SVerticalBox> Table = SNew(SVerticalBox);
	for (int32 Index = 0; Index < Rows.Num(); ++Index)
	{
		if (Index == SeparatorRow)
		{
			continue;
		}
		// clang-format off
		Table->AddSlot()
		.AutoHeight()
		.Padding(0.0f, Index == 0 ? 0.0f : 2.0f, 0.0f, 0.0f)
		[
			BuildTableRow(Rows[Index], Alignments)
		];
		// clang-format on
	}
	// clang-format off
	return SNew(SBox)
		.Padding(FMargin(0.0f, 8.0f, 0.0f, 8.0f))
		[
			Table
		];
	// clang-format on
}

TSharedRef<SWidget> SMarkdownTextBlock::BuildTableRow(const FString& Row, const TArray<FString>& Alignments)
{
	TArray<FString> Cells;
	// Empty cells fall away, those outside of the outer pipes among them; so one that is meant to be empty shifts its row.
	Row.ParseIntoArray(Cells, TEXT("|"), true);
	const TSharedRef<SHorizontalBox> Box = SNew(SHorizontalBox);
	for (int32 Column = 0; Column < Cells.Num(); ++Column)
	{
		EHorizontalAlignment Alignment = HAlign_Left;
		if (Alignments.IsValidIndex(Column) && Alignments[Column] == TEXT("center"))
		{
			Alignment = HAlign_Center;
		}
		else if (Alignments.IsValidIndex(Column) && Alignments[Column] == TEXT("right"))
		{
			Alignment = HAlign_Right;
		}
		// clang-format off
		Box->AddSlot()
		.FillWidth(1.0f)
		[
			SNew(SBorder)
			.BorderImage(FVelmoraUIStyles::GetBrush(GetBlockNames().TableCell))
			.Padding(FMargin(8.0f, 4.0f, 8.0f, 4.0f))
			.HAlign(Alignment)
			[
				ParseAndBuildInlineContent(Cells[Column].TrimStartAndEnd())
			]
		];
		// clang-format on
	}
	return Box;
}

// Built at once although it starts collapsed: the area measures nothing that it hides.
TSharedRef<SWidget> SMarkdownTextBlock::BuildCollapsibleSection(const FMarkdownToken& Token)
{
	static const FSlateRoundedBoxBrush FrameBrush(FVelmoraUIStyles::GetMarkdownCodeBlockBackgroundColor().CopyWithNewOpacity(0.8f), 4.0f,
		FVelmoraUIStyles::GetMarkdownCodeBlockBorderColor().CopyWithNewOpacity(0.8f), 1.0f);
	// clang-format off
	return SNew(SBorder)
		.BorderImage(&FrameBrush)
		.Padding(FMargin(4.0f, 4.0f, 4.0f, 4.0f))
		[
			SNew(SExpandableArea)
			.InitiallyCollapsed(true)
			.BorderImage(FAppStyle::GetBrush(GetBlockNames().NoBorder))
			.BodyBorderImage(FAppStyle::GetBrush(GetBlockNames().NoBorder))
			.HeaderPadding(FMargin(0.0f))
			.Padding(FMargin(0.0f))
			.HeaderContent()
			[
				SNew(SBorder)
				.BorderImage(FAppStyle::GetBrush(GetBlockNames().NoBorder))
				.Padding(FMargin(8.0f, 4.0f, 8.0f, 4.0f))
				[
					ParseAndBuildInlineContent(Token.Metadata)
				]
			]
			.BodyContent()
			[
				SNew(SBorder)
				.BorderImage(FAppStyle::GetBrush(GetBlockNames().NoBorder))
				.Padding(FMargin(8.0f, 8.0f, 8.0f, 4.0f))
				[
					ParseAndBuildInlineContent(Token.Content)
				]
			]
		];
	// clang-format on
}
