#include "Markdown/MarkdownToken.h"

namespace Velmora::Markdown
{

	FMarkdownToken::FMarkdownToken(ETokenType InType, const FString& InContent)
		: Type(InType)
		, Content(InContent)
	{
	}

	FMarkdownToken::FMarkdownToken(ETokenType InType, const FString& InContent, const FString& InMetadata, int32 InLevel)
		: Type(InType)
		, Content(InContent)
		, Metadata(InMetadata)
		, Level(InLevel)
	{
	}

	bool FMarkdownToken::IsInline() const
	{
		switch (Type)
		{
		case ETokenType::Text:
		case ETokenType::Bold:
		case ETokenType::Italic:
		case ETokenType::BoldItalic:
		case ETokenType::Strikethrough:
		case ETokenType::Code:
		case ETokenType::Link:
		case ETokenType::FootnoteReference:
			return true;
		case ETokenType::CodeBlock:
		case ETokenType::Header:
		case ETokenType::ListItem:
		case ETokenType::TaskListItem:
		case ETokenType::Table:
		case ETokenType::CollapsibleSection:
		case ETokenType::FootnoteDefinition:
		case ETokenType::Blockquote:
		case ETokenType::HorizontalRule:
		case ETokenType::Newline:
		case ETokenType::Paragraph:
			return false;
		}
		return false;
	}

	FString FMarkdownToken::GetTypeString() const
	{
		switch (Type)
		{
		case ETokenType::Text:
			return TEXT("Text");
		case ETokenType::Bold:
			return TEXT("Bold");
		case ETokenType::Italic:
			return TEXT("Italic");
		case ETokenType::BoldItalic:
			return TEXT("BoldItalic");
		case ETokenType::Strikethrough:
			return TEXT("Strikethrough");
		case ETokenType::Code:
			return TEXT("Code");
		case ETokenType::CodeBlock:
			return TEXT("CodeBlock");
		case ETokenType::Header:
			return TEXT("Header");
		case ETokenType::Link:
			return TEXT("Link");
		case ETokenType::ListItem:
			return TEXT("ListItem");
		case ETokenType::TaskListItem:
			return TEXT("TaskListItem");
		case ETokenType::Table:
			return TEXT("Table");
		case ETokenType::CollapsibleSection:
			return TEXT("CollapsibleSection");
		case ETokenType::FootnoteReference:
			return TEXT("FootnoteReference");
		case ETokenType::FootnoteDefinition:
			return TEXT("FootnoteDefinition");
		case ETokenType::Blockquote:
			return TEXT("Blockquote");
		case ETokenType::HorizontalRule:
			return TEXT("HorizontalRule");
		case ETokenType::Newline:
			return TEXT("Newline");
		case ETokenType::Paragraph:
			return TEXT("Paragraph");
		}
		return TEXT("Unknown");
	}

	FString FMarkdownToken::ToString() const
	{
		return FString::Printf(TEXT("%s: '%s' (Metadata: '%s', Level: %d)"), *GetTypeString(), *Content, *Metadata, Level);
	}

} // namespace Velmora::Markdown
