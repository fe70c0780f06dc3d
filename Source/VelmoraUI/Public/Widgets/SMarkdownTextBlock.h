#pragma once

#include "Containers/ArrayView.h"
#include "CoreMinimal.h"
#include "Input/Reply.h"
#include "Layout/Margin.h"
#include "Markdown/MarkdownToken.h"
#include "Misc/Attribute.h"
#include "Templates/SharedPointer.h"
#include "Widgets/DeclarativeSyntaxSupport.h"
#include "Widgets/SCompoundWidget.h"

class SVerticalBox;
struct FTextBlockStyle;

/**
 * Shows a text of the agent's Markdown dialect as a column of widgets: one per block, one per run of inline tokens. A
 * run of plain text wraps; a run with anything styled in it breaks between its tokens only. Any change of the text
 * builds everything anew. The style set must be initialised.
 */
class VELMORAUI_API SMarkdownTextBlock : public SCompoundWidget
{
public:
	using FMarkdownToken = Velmora::Markdown::FMarkdownToken;

	SLATE_BEGIN_ARGS(SMarkdownTextBlock)
		: _AutoWrapText(true)
		, _WrapTextAt(0.0f)
		, _Margin(0.0f)
	{
	}
	/** Read at construction; a later change comes through SetText. */
	SLATE_ATTRIBUTE(FString, Text)
	SLATE_ARGUMENT(bool, AutoWrapText)
	/** Slate units; 0 wraps at the widget's width. */
	SLATE_ARGUMENT(float, WrapTextAt)
	SLATE_ARGUMENT(FMargin, Margin)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

	/** Shows another text. One that differs from the shown text in letter case alone changes nothing. */
	void SetText(const FString& NewText);
	FString GetText() const { return Text.Get(); }

private:
	void RebuildContent();
	void AddInlineRun(TArrayView<const FMarkdownToken> Run, const FMargin& Padding);

	// Blocks.
	TSharedRef<SWidget> BuildBlockToken(const FMarkdownToken& Token);
	TSharedRef<SWidget> BuildHeader(const FMarkdownToken& Token);
	TSharedRef<SWidget> BuildBlockquote(const FMarkdownToken& Token);
	TSharedRef<SWidget> BuildListItem(const FMarkdownToken& Token);
	TSharedRef<SWidget> BuildTaskListItem(const FMarkdownToken& Token);
	TSharedRef<SWidget> BuildMarkedItem(const FMarkdownToken& Token, const TSharedRef<SWidget>& Marker);
	TSharedRef<SWidget> BuildTable(const FMarkdownToken& Token);
	TSharedRef<SWidget> BuildTableRow(const FString& Row, const TArray<FString>& Alignments);
	TSharedRef<SWidget> BuildCollapsibleSection(const FMarkdownToken& Token);
	TSharedRef<SWidget> BuildFootnoteDefinition(const FMarkdownToken& Token);
	TSharedRef<SWidget> BuildHorizontalRule();

	// Code.
	TSharedRef<SWidget> BuildCodeBlock(const FMarkdownToken& Token);
	TSharedRef<SWidget> BuildCodeHeader(const FString& Code, const FString& Language);
	TSharedRef<SWidget> BuildCodeLines(const FString& Code, const FString& Language);
	FReply OnCopyCodeClicked(FString Code);

	// Inline.
	TSharedRef<SWidget> BuildInlineContent(TArrayView<const FMarkdownToken> Tokens);
	TSharedRef<SWidget> BuildInlineToken(const FMarkdownToken& Token);
	TSharedRef<SWidget> BuildStyledText(const FString& InText, const FMarkdownToken& Token);
	TSharedRef<SWidget> BuildCodeChip(const FString& Code);
	TSharedRef<SWidget> BuildLink(const FMarkdownToken& Token);
	TSharedRef<SWidget> BuildFootnoteReference(const FMarkdownToken& Token);
	/** For text inside of a block: what parses as a block once more is dropped. */
	TSharedRef<SWidget> ParseAndBuildInlineContent(const FString& InText);
	/** The style reaches a text without any styled word only. */
	TSharedRef<SWidget> ParseAndBuildInlineContentWithStyle(const FString& InText, const FTextBlockStyle& Style);
	void OnLinkClicked(FString Url);

	TAttribute<FString> Text;
	bool bAutoWrapText = true;
	float WrapTextAt = 0.0f;
	FMargin Margin;
	TSharedPtr<SVerticalBox> ContentBox;
	TArray<FMarkdownToken> ParsedTokens;
	FString LastParsedText;
};
