#include "Widgets/SMarkdownTextBlock.h"

#include "Brushes/SlateRoundedBoxBrush.h"
#include "HAL/IConsoleManager.h"
#include "HAL/PlatformApplicationMisc.h"
#include "Markdown/CodeLines.h"
#include "Markdown/CodeSyntax.h"
#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "Styling/CoreStyle.h"
#include "Styling/SlateTypes.h"
#include "Widgets/IconButton.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"
#include "Widgets/WidgetLook.h"

#define LOCTEXT_NAMESPACE "VelmoraUI"

namespace
{

	using Velmora::Markdown::FCodePiece;
	using Velmora::Markdown::FSyntaxToken;

	TAutoConsoleVariable<int32> KeepCodeLayout(TEXT("velmora.Code.KeepLayout"), 0,
		TEXT("If non-zero, code blocks show every line with its indentation and every character of it. For blocks built from then on."));

	void AddCodePiece(SHorizontalBox& LineBox, const FString& Text, const FTextBlockStyle& CodeStyle, const FLinearColor& Color)
	{
		// clang-format off
	LineBox.AddSlot()
	.AutoWidth()
	[
		SNew(STextBlock)
		.Text(FText::FromString(Text))
		.Font(CodeStyle.Font)
		.ColorAndOpacity(FSlateColor(Color))
	];
		// clang-format on
	}

	/** Every character of the code stands there, indentation included. */
	void AddLinesAsWritten(SVerticalBox& CodeBox, const FString& Code, const TArray<FSyntaxToken>& Tokens, const FTextBlockStyle& CodeStyle)
	{
		for (const TArray<FCodePiece>& Line : Velmora::Markdown::SplitIntoCodeLines(Code, Tokens))
		{
			const TSharedRef<SHorizontalBox> LineBox = SNew(SHorizontalBox);
			for (const FCodePiece& Piece : Line)
			{
				AddCodePiece(*LineBox, Piece.Text, CodeStyle, FVelmoraUIStyles::GetSyntaxTokenColor(Piece.Type));
			}
			CodeBox.AddSlot().AutoHeight()[LineBox];
		}
	}

	/**
	 * A line is the tokens that lie within it. One that crosses the end of a line belongs to none: the blanks around a line feed are
	 * one token, so the indentation of the next line goes with it. A line without any token stands as it is.
	 */
	void AddLinesOfTokens(SVerticalBox& CodeBox, const FString& Code, const TArray<FSyntaxToken>& Tokens, const FTextBlockStyle& CodeStyle)
	{
		TArray<FString> Lines;
		Code.ParseIntoArrayLines(Lines, /*bCullEmpty*/ false);
		// Tokens are in the order of the code, as the lines are: both are walked once.
		int32 NextToken = 0;
		int32 LineStart = 0;
		for (const FString& Line : Lines)
		{
			const int32 LineEnd = LineStart + Line.Len();
			const TSharedRef<SHorizontalBox> LineBox = SNew(SHorizontalBox);
			bool bHasToken = false;
			for (; NextToken < Tokens.Num() && Tokens[NextToken].Start <= LineEnd; ++NextToken)
			{
				const FSyntaxToken& Token = Tokens[NextToken];
				if (Token.Start >= LineStart && Token.End <= LineEnd)
				{
					AddCodePiece(*LineBox, Token.Text, CodeStyle, FVelmoraUIStyles::GetSyntaxTokenColor(Token.Type));
					bHasToken = true;
				}
			}
			if (!bHasToken)
			{
				AddCodePiece(*LineBox, Line, CodeStyle, FVelmoraUIStyles::GetTextColorPrimary());
			}
			CodeBox.AddSlot().AutoHeight()[LineBox];
			// One character for the line end, however it is written: with two of them the tokens no longer meet their lines.
			LineStart = LineEnd + 1;
		}
	}

} // namespace

TSharedRef<SWidget> SMarkdownTextBlock::BuildCodeBlock(const FMarkdownToken& Token)
{
	static const FSlateRoundedBoxBrush FrameBrush(FVelmoraUIStyles::GetMarkdownCodeBlockBackgroundColor(),
		FVelmoraUIStyles::GetMarkdownCodeBlockCornerRadius(), FVelmoraUIStyles::GetMarkdownCodeBlockBorderColor(), 1.0f);
	const FString Language = Token.Metadata.IsEmpty() ? FString(TEXT("text")) : Token.Metadata;
	// clang-format off
	return SNew(SBorder)
		.BorderImage(&FrameBrush)
		.Padding(FMargin(12.0f, 8.0f, 12.0f, 8.0f))
		[
			SNew(SVerticalBox)
			+ SVerticalBox::Slot()
			.AutoHeight()
			.Padding(0.0f, 0.0f, 0.0f, 8.0f)
			[
				BuildCodeHeader(Token.Content, Language)
			]
			+ SVerticalBox::Slot()
			.AutoHeight()
			[
				SNew(SScrollBox)
				.Orientation(Orient_Horizontal)
				.ScrollBarThickness(FVector2D(4.0, 4.0))
				+ SScrollBox::Slot()
				[
					BuildCodeLines(Token.Content, Language)
				]
			]
		];
	// clang-format on
}

TSharedRef<SWidget> SMarkdownTextBlock::BuildCodeHeader(const FString& Code, const FString& Language)
{
	// "text" is what a block without a tag is called; it would only tell the reader what he sees.
	const bool bShowLanguage = Language != TEXT("text");
	FIconButton Look;
	Look.Tag = "CopyCodeButton";
	Look.Style = "NoBorder";
	Look.ContentPadding = FMargin(4.0f, 4.0f, 4.0f, 4.0f);
	Look.Icon = "MessageAction_Copy_32";
	Look.IconSize = 16.0;
	Look.ToolTip = LOCTEXT("CopyCodeTooltip", "Copy code to clipboard");
	Look.OnClicked = FOnClicked::CreateSP(this, &SMarkdownTextBlock::OnCopyCodeClicked, Code);
	// clang-format off
	return SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.FillWidth(1.0f)
		.VAlign(VAlign_Center)
		[
			SNew(STextBlock)
			.Text(FText::FromString(Language))
			.Font(FCoreStyle::GetDefaultFontStyle("Bold", 9))
			.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetMarkdownCodeBlockLanguageColor()))
			.Visibility(VisibleIf(bShowLanguage))
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		[
			MakeIconButton(Look)
		];
	// clang-format on
}

TSharedRef<SWidget> SMarkdownTextBlock::BuildCodeLines(const FString& Code, const FString& Language)
{
	const TSharedRef<SVerticalBox> CodeBox = SNew(SVerticalBox);
	const FTextBlockStyle& CodeStyle = FVelmoraUIStyles::GetTextStyle("Velmora.Markdown.CodeBlock");
	if (Code.IsEmpty())
	{
		// Keeps the height of one line.
		// clang-format off
		CodeBox->AddSlot()
		.AutoHeight()
		[
			SNew(STextBlock)
			.TextStyle(&CodeStyle)
			.Text(FText::GetEmpty())
			.AutoWrapText(false)
		];
		// clang-format on
		return CodeBox;
	}
	const TArray<FSyntaxToken> Tokens = Velmora::Markdown::TokenizeCode(Code, Language);
	if (KeepCodeLayout.GetValueOnGameThread() != 0)
	{
		AddLinesAsWritten(*CodeBox, Code, Tokens, CodeStyle);
	}
	else
	{
		AddLinesOfTokens(*CodeBox, Code, Tokens, CodeStyle);
	}
	return CodeBox;
}

FReply SMarkdownTextBlock::OnCopyCodeClicked(FString Code)
{
	FPlatformApplicationMisc::ClipboardCopy(*Code);
	return FReply::Handled();
}

#undef LOCTEXT_NAMESPACE
