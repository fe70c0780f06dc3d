#include "Widgets/SMarkdownTextBlock.h"

#include "Markdown/MarkdownParser.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

void SMarkdownTextBlock::Construct(const FArguments& InArgs)
{
	Text = InArgs._Text;
	bAutoWrapText = InArgs._AutoWrapText;
	WrapTextAt = InArgs._WrapTextAt;
	Margin = InArgs._Margin;

	// clang-format off
	ChildSlot
	.Padding(Margin)
	[
		SAssignNew(ContentBox, SVerticalBox)
	];
	// clang-format on

	RebuildContent();
}

void SMarkdownTextBlock::SetText(const FString& NewText)
{
	// Equality of strings ignores letter case, and so does a change of text here.
	if (Text.Get() == NewText)
	{
		return;
	}
	Text = TAttribute<FString>(NewText);
	RebuildContent();
}

void SMarkdownTextBlock::RebuildContent()
{
	if (!ContentBox.IsValid())
	{
		return;
	}
	// 1. The same text again needs nothing, unless it has come to nothing before.
	const FString CurrentText = Text.Get();
	if (CurrentText == LastParsedText && ParsedTokens.Num() > 0)
	{
		return;
	}
	// 2. The tokens.
	ContentBox->ClearChildren();
	ParsedTokens = Velmora::Markdown::FMarkdownParser::Parse(CurrentText);
	LastParsedText = CurrentText;

	// 3. A widget for each block. Inline tokens up to the next block are one run, since they share their lines.
	const auto GetRun = [this](int32 Begin, int32 End)
	{ return TArrayView<const FMarkdownToken>(ParsedTokens.GetData() + Begin, End - Begin); };
	int32 RunBegin = 0;
	for (int32 Index = 0; Index < ParsedTokens.Num(); ++Index)
	{
		const FMarkdownToken& Token = ParsedTokens[Index];
		if (Token.IsInline())
		{
			continue;
		}
		AddInlineRun(GetRun(RunBegin, Index), FMargin(0.0f, 2.0f));
		RunBegin = Index + 1;
		// clang-format off
		ContentBox->AddSlot()
		.AutoHeight()
		.Padding(0.0f, 1.0f)
		[
			BuildBlockToken(Token)
		];
		// clang-format on
	}
	// 4. What is left over has nothing below it to keep a distance from.
	AddInlineRun(GetRun(RunBegin, ParsedTokens.Num()), FMargin(0.0f));

	// Blanks alone parse to nothing, and still are a text.
	if (ParsedTokens.Num() == 0 && !CurrentText.IsEmpty())
	{
		// clang-format off
		ContentBox->AddSlot()
		.AutoHeight()
		[
			SNew(STextBlock)
			.Text(FText::FromString(CurrentText))
			.AutoWrapText(bAutoWrapText)
			.WrapTextAt(WrapTextAt)
		];
		// clang-format on
	}
}

void SMarkdownTextBlock::AddInlineRun(TArrayView<const FMarkdownToken> Run, const FMargin& Padding)
{
	if (Run.Num() == 0)
	{
		return;
	}
	// clang-format off
	ContentBox->AddSlot()
	.AutoHeight()
	.Padding(Padding)
	[
		BuildInlineContent(Run)
	];
	// clang-format on
}
