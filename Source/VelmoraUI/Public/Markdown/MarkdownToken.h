#pragma once

#include "CoreMinimal.h"

namespace Velmora::Markdown
{

	/** Kinds of tokens. The names are also the words that GetTypeString gives. */
	enum class ETokenType : uint8
	{
		Text = 0,
		Bold = 1,
		Italic = 2,
		BoldItalic = 3,
		Strikethrough = 4,
		Code = 5,
		/** Content: the body with its last line feed. Metadata: the language tag. */
		CodeBlock = 6,
		/** Level: 1 to 6. */
		Header = 7,
		/** Content: the link's text. Metadata: its target. */
		Link = 8,
		/** Level: the depth, from the indentation. */
		ListItem = 9,
		/** As ListItem; Metadata: "checked" or "unchecked". */
		TaskListItem = 10,
		/** Content: all rows, the separator row included. Metadata: "left", "center" or "right" per column, joined by commas. */
		Table = 11,
		/** Content: the body. Metadata: the summary. */
		CollapsibleSection = 12,
		/** Content: the identifier in brackets. Metadata: the identifier. */
		FootnoteReference = 13,
		/** Content: the note. Metadata: the identifier. */
		FootnoteDefinition = 14,
		/** Content: the line after the marker, untrimmed. */
		Blockquote = 15,
		HorizontalRule = 16,
		Newline = 17,
		/** No rule makes one: a paragraph is what stands between Newline tokens. */
		Paragraph = 18,
	};

	/**
	 * One piece of a parsed text. Tokens lie flat in document order; a block holds its inner text as raw Markdown, which
	 * the renderer parses again where it wants inline styling.
	 */
	class VELMORAUI_API FMarkdownToken
	{
	public:
		FMarkdownToken() = default;
		FMarkdownToken(ETokenType InType, const FString& InContent);
		FMarkdownToken(ETokenType InType, const FString& InContent, const FString& InMetadata, int32 InLevel);

		/** True for what flows within a line of text. */
		bool IsInline() const;

		/** Everything that is not inline; line ends and values out of range count as blocks. */
		bool IsBlock() const { return !IsInline(); }

		/** The name of the type, "Unknown" for a value out of range. */
		FString GetTypeString() const;

		/** One line for a debugger or a test report. */
		FString ToString() const;

		ETokenType Type = ETokenType::Text;
		FString Content;
		FString Metadata;
		int32 Level = 0;
		/** Index of the first character in the parsed text, delimiters included. */
		int32 StartPos = 0;
		/** Index after the last consumed character; the line feed counts where the rule consumes it. */
		int32 EndPos = 0;
	};

} // namespace Velmora::Markdown
