#include "Widgets/SMarkdownTextBlock.h"

#include "Brushes/SlateRoundedBoxBrush.h"
#include "HAL/PlatformProcess.h"
#include "Markdown/MarkdownParser.h"
#include "Misc/Paths.h"
#include "Style/VelmoraUIStyles.h"
#include "Styling/CoreStyle.h"
#include "Styling/SlateTypes.h"
#include "Widgets/AssetEditor.h"
#include "Widgets/Input/SEditableText.h"
#include "Widgets/Input/SHyperlink.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SWrapBox.h"
#include "Widgets/ProjectPath.h"
#include "Widgets/SNullWidget.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "VelmoraUI"

namespace
{

	using Velmora::Markdown::ETokenType;
	using Velmora::Markdown::FMarkdownToken;

	/** Looked up once: an answer may have a styled word for every few characters. */
	struct FWordStyles
	{
		const FName Text = "Velmora.Markdown.Text";
		const FName Bold = "Velmora.Markdown.Bold";
		const FName Italic = "Velmora.Markdown.Italic";
		const FName BoldItalic = "Velmora.Markdown.BoldItalic";
		const FName Strikethrough = "Velmora.Markdown.Strikethrough";
		const FName Code = "Velmora.Markdown.Code";
	};

	const FWordStyles& GetWordStyles()
	{
		static const FWordStyles Styles;
		return Styles;
	}

	/** On one line: the parser must not see a second one, nor a line of widgets break inside of a token. */
	FString JoinLines(const FString& Text)
	{
		FString Line = Text;
		Line.ReplaceCharInline(TEXT('\n'), TEXT(' '));
		Line.ReplaceCharInline(TEXT('\r'), TEXT(' '));
		return Line;
	}

	bool IsPlainText(TArrayView<const FMarkdownToken> Tokens)
	{
		for (const FMarkdownToken& Token : Tokens)
		{
			if (Token.Type != ETokenType::Text)
			{
				return false;
			}
		}
		return true;
	}

	TSharedRef<SWidget> MakeWrappingText(TArrayView<const FMarkdownToken> Tokens, const FTextBlockStyle& Style)
	{
		FString Joined;
		for (const FMarkdownToken& Token : Tokens)
		{
			Joined += Token.Content;
		}
		return SNew(STextBlock).TextStyle(&Style).Text(FText::FromString(Joined)).AutoWrapText(true).WrapTextAt(0.0f);
	}

	/** Every second word of a styled line is the blank between two others; they share one text. */
	FText MakeWordText(const FString& Text)
	{
		static const FText Blank = FText::FromString(TEXT(" "));
		return Text.Len() == 1 && Text[0] == TEXT(' ') ? Blank : FText::FromString(Text);
	}

	TSharedRef<SWidget> MakeStyledWord(const FString& Text, const FName Style)
	{
		return SNew(STextBlock).TextStyle(&FVelmoraUIStyles::GetTextStyle(Style)).Text(MakeWordText(Text)).AutoWrapText(false);
	}

	void OpenLocalFile(const FString& Path)
	{
		// From the project on, and not from wherever the program was started.
		const FString FullPath = FPaths::IsRelative(Path) ? ToFullProjectPath(Path) : Path;
		if (FPaths::FileExists(FullPath))
		{
			FPlatformProcess::LaunchFileInDefaultExternalApplication(*FullPath);
		}
	}

	/** True, with the part after the scheme, for a link of that scheme in any letter case. */
	bool TakeScheme(const FString& Url, const FString& Scheme, FString& OutRest)
	{
		if (!Url.StartsWith(Scheme))
		{
			return false;
		}
		OutRest = Url.Mid(Scheme.Len(), Url.Len());
		return true;
	}

} // namespace

TSharedRef<SWidget> SMarkdownTextBlock::BuildInlineContent(TArrayView<const FMarkdownToken> Tokens)
{
	if (Tokens.Num() == 0)
	{
		return SNullWidget::NullWidget;
	}
	// One text wraps within its words; a row of widgets can only wrap between them. So plain text is one widget.
	if (IsPlainText(Tokens))
	{
		return MakeWrappingText(Tokens, FVelmoraUIStyles::GetTextStyle(GetWordStyles().Text));
	}
	// clang-format off
	const TSharedRef<SWrapBox> Box = SNew(SWrapBox)
		.UseAllottedSize(true)
		.InnerSlotPadding(FVector2D(0.0, 0.0));
	for (const FMarkdownToken& Token : Tokens)
	{
		Box->AddSlot()
		.Padding(0.0f)
		.VAlign(VAlign_Center)
		[
			BuildInlineToken(Token)
		];
	}
	// clang-format on
	return Box;
}

TSharedRef<SWidget> SMarkdownTextBlock::BuildInlineToken(const FMarkdownToken& Token)
{
	return BuildStyledText(Token.Content, Token);
}

TSharedRef<SWidget> SMarkdownTextBlock::BuildStyledText(const FString& InText, const FMarkdownToken& Token)
{
	const FString Clean = JoinLines(InText);
	switch (Token.Type)
	{
	case ETokenType::Bold:
		return MakeStyledWord(Clean, GetWordStyles().Bold);
	case ETokenType::Italic:
		return MakeStyledWord(Clean, GetWordStyles().Italic);
	case ETokenType::BoldItalic:
		return MakeStyledWord(Clean, GetWordStyles().BoldItalic);
	case ETokenType::Strikethrough:
		return MakeStyledWord(Clean, GetWordStyles().Strikethrough);
	case ETokenType::Code:
		return BuildCodeChip(Clean);
	case ETokenType::Link:
		return BuildLink(Token);
	case ETokenType::FootnoteReference:
		return BuildFootnoteReference(Token);
	default:
		return MakeStyledWord(Clean, GetWordStyles().Text);
	}
}

TSharedRef<SWidget> SMarkdownTextBlock::BuildCodeChip(const FString& Code)
{
	static const FSlateRoundedBoxBrush ChipBrush(FVelmoraUIStyles::GetInlineCodeBackgroundColor(),
		FVelmoraUIStyles::GetMarkdownInlineCodeCornerRadius(), FVelmoraUIStyles::GetInlineCodeBorderColor(), 1.0f);
	const FTextBlockStyle& Style = FVelmoraUIStyles::GetTextStyle(GetWordStyles().Code);
	// Editable but read-only: code is the one text that people copy out of a sentence.
	// clang-format off
	return SNew(SBorder)
		.BorderImage(&ChipBrush)
		.Padding(FMargin(4.0f, 2.0f, 4.0f, 2.0f))
		[
			SNew(SEditableText)
			.Text(FText::FromString(Code))
			.Font(Style.Font)
			.ColorAndOpacity(Style.ColorAndOpacity)
			.IsReadOnly(true)
		];
	// clang-format on
}

TSharedRef<SWidget> SMarkdownTextBlock::BuildLink(const FMarkdownToken& Token)
{
	return SNew(SHyperlink)
		.Text(FText::FromString(Token.Content))
		.ToolTipText(FText::Format(LOCTEXT("LinkTooltip", "Open: {0}"), FText::FromString(Token.Metadata)))
		.OnNavigate(this, &SMarkdownTextBlock::OnLinkClicked, Token.Metadata);
}

TSharedRef<SWidget> SMarkdownTextBlock::BuildFootnoteReference(const FMarkdownToken& Token)
{
	// The negative padding raises the mark above the line of text.
	// clang-format off
	return SNew(SBox)
		.Padding(FMargin(1.0f, -3.0f, 1.0f, 0.0f))
		[
			SNew(STextBlock)
			.Text(FText::FromString(FString::Printf(TEXT("[%s]"), *Token.Metadata)))
			.Font(FCoreStyle::GetDefaultFontStyle("Regular", 8))
			.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetMarkdownLinkColor()))
			.ToolTipText(FText::Format(LOCTEXT("FootnoteTooltip", "Footnote: {0}"), FText::FromString(Token.Metadata)))
		];
	// clang-format on
}

TSharedRef<SWidget> SMarkdownTextBlock::ParseAndBuildInlineContent(const FString& InText)
{
	return ParseAndBuildInlineContentWithStyle(InText, FVelmoraUIStyles::GetTextStyle(GetWordStyles().Text));
}

TSharedRef<SWidget> SMarkdownTextBlock::ParseAndBuildInlineContentWithStyle(const FString& InText, const FTextBlockStyle& Style)
{
	TArray<FMarkdownToken> Tokens = Velmora::Markdown::FMarkdownParser::Parse(JoinLines(InText));
	// A heading or cell has one line: what reads like a block in it is left out.
	Tokens.RemoveAll([](const FMarkdownToken& Token) { return Token.IsBlock(); });
	return IsPlainText(Tokens) ? MakeWrappingText(Tokens, Style) : BuildInlineContent(Tokens);
}

void SMarkdownTextBlock::OnLinkClicked(FString Url)
{
	FString Rest;
	// The schemes that are known, then all others the way of the first: the system knows more of them than this list.
	if (TakeScheme(Url, TEXT("http://"), Rest) || TakeScheme(Url, TEXT("https://"), Rest))
	{
		FPlatformProcess::LaunchURL(*Url, nullptr, nullptr);
	}
	else if (TakeScheme(Url, TEXT("blueprint://"), Rest) || TakeScheme(Url, TEXT("asset://"), Rest))
	{
		OpenAssetEditor(Rest);
	}
	else if (TakeScheme(Url, TEXT("file://"), Rest))
	{
		OpenLocalFile(Rest);
	}
	else
	{
		FPlatformProcess::LaunchURL(*Url, nullptr, nullptr);
	}
}

#undef LOCTEXT_NAMESPACE
