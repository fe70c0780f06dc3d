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
	StayAwake.SetUp(*this, [this] { return HasBlocksToBuild(); });

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

	NextToken = 0;
	BuildBlocks();

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

// A widget for each block. Inline tokens are gathered until the next block, since they share their lines.
void SMarkdownTextBlock::BuildBlocks()
{
	// 1. Up to the next token that is no part of a run, so that no run is cut in two.
	const int32 Enough = ContentBox->NumSlots() + BlocksPerFrame;
	TArray<FMarkdownToken> Run;
	while (HasBlocksToBuild() && ContentBox->NumSlots() < Enough)
	{
		const FMarkdownToken& Token = ParsedTokens[NextToken++];
		if (Token.IsInline())
		{
			Run.Add(Token);
			continue;
		}
		AddInlineRun(Run, FMargin(0.0f, 2.0f));
		// clang-format off
		ContentBox->AddSlot()
		.AutoHeight()
		.Padding(0.0f, 1.0f)
		[
			BuildBlockToken(Token)
		];
		// clang-format on
	}
	// 2. What is left over has nothing below it to keep a distance from.
	AddInlineRun(Run, FMargin(0.0f));
}

void SMarkdownTextBlock::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	if (HasBlocksToBuild())
	{
		BuildBlocks();
	}
	StayAwake.Update();
}

void SMarkdownTextBlock::AddInlineRun(TArray<FMarkdownToken>& Run, const FMargin& Padding)
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
	Run.Reset();
}
