#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Tools/ProjectFiles.h"

/**
 * Pieces of answers in the chat's Markdown, in which there is no escape: a delimiter that would be misread is
 * replaced. Whatever goes in (bytes from disk, a user's words) comes out as one well-formed piece. All pure.
 */
namespace Velmora::AnswerMarkdown
{
	/** A piece of code inside a line, at most MaxCharacters long. Never empty. What follows it must not be a letter or digit. */
	std::string InlineCode(std::string_view Text, size_t MaxCharacters = 80);

	/** A name or path, with every character as it is wherever the dialect can show it. Else as InlineCode. */
	std::string FileName(std::string_view Path, size_t MaxCharacters = 80);

	/** A link that opens the file, shown by its relative path and the line (0 for none). Plain code for a path that no link can hold, and
	 * for a folder. */
	std::string FileLink(const FProjectPath& Path, int Line = 0);

	/** A list of links; of what goes beyond MaxItems only the number. */
	std::string FileList(const std::vector<FProjectPath>& Paths, size_t MaxItems = std::string::npos);

	/** Words for one line of plain text: no line ends, nothing that would open a link, code or emphasis. */
	std::string PlainText(std::string_view Text);

	/** As PlainText, for a cell of a table. Never empty. */
	std::string TableCell(std::string_view Text);

	/**
	 * A fenced block; several, when the text has fences of its own, with each of these in bold between them. Long lines are cut, and
	 * what goes beyond the bound of bytes is left out; both are said below it.
	 *
	 * @param Text  Whole lines.
	 */
	std::string CodeBlock(std::string_view Text, std::string_view Language);

	/** The same for lines of a file, from 1, both included. */
	std::string CodeLines(const std::vector<std::string_view>& Lines, int First, int Last, std::string_view Path);

	/** What goes and what comes, as a fenced block. */
	std::string Difference(std::string_view Old, std::string_view New);

	/** Tag of a fence for a file, by its name. Empty when there is none. */
	std::string LanguageOf(std::string_view Path);

	/** A section that opens on a click. The body must not hold another one. */
	std::string Collapsible(std::string_view Summary, std::string_view Body);
}
