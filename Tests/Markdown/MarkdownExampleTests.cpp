#include "Markdown/MarkdownParser.h"

#include "Markdown/TokenDump.h"

#include <gtest/gtest.h>

using namespace Velmora::Markdown;

namespace
{

	struct FMarkdownCase
	{
		const char* Why;
		const TCHAR* Input;
		const char* Tokens;
	};

	void CheckCases(std::initializer_list<FMarkdownCase> Cases)
	{
		for (const FMarkdownCase& Case : Cases)
		{
			SCOPED_TRACE(Case.Why);
			SCOPED_TRACE(Visible(Case.Input));
			EXPECT_EQ(DumpTokens(FMarkdownParser::Parse(Case.Input)), Case.Tokens);
			EXPECT_EQ(CompareBehindOpeners(Case.Input), "");
		}
	}

} // namespace

TEST(MarkdownExamples, WholeTexts)
{
	CheckCases({
		{ "an empty text has no tokens", TEXT(""), "" },
		{ "nor has one of whitespace", TEXT("   \n  "), "" },
		{ "the text is not trimmed for parsing", TEXT("  x"), "Text '  x'\n" },
		{ "each line feed is a token", TEXT("a\n\nb"), "Text 'a'\nNewline\nNewline\nText 'b'\n" },
		{ "a carriage return is an ordinary character", TEXT("a\r\nb"), "Text 'a\\r'\nNewline\nText 'b'\n" },
		{ "a soft break is a token", TEXT("a\nb"), "Text 'a'\nNewline\nText 'b'\n" },
		{ "control characters stay in the text", TEXT("a\x01z"), "Text 'a\x01z'\n" },
		{ "a control character indents like a blank", TEXT("\x01\x02- a"), "ListItem 'a' level 1\n" },
		{ "no setext headers", TEXT("Title\n==="), "Text 'Title'\nNewline\nText '==='\n" },
	});
}

TEST(MarkdownExamples, CodeBlocks)
{
	CheckCases({
		{ "the last line feed of the body stays", TEXT("```cpp\nint a;\n```\nafter"), "CodeBlock 'int a;\\n' (cpp)\nText 'after'\n" },
		{ "an unclosed block takes the rest", TEXT("```\nunclosed"), "CodeBlock 'unclosed'\n" },
		{ "a closer ends its line", TEXT("``` \nx``` tail\nnext"), "CodeBlock 'x'\nText 'next'\n" },
		{ "a closer on the opener's line is part of the tag", TEXT("```a```"), "CodeBlock '' (a```)\n" },
		{ "an indented fence is none", TEXT(" ```\nx"), "Text ' '\nCode ''\nNewline\nText 'x'\n" },
		{ "four backticks are a fence with a tag", TEXT("````\nx\n```\ny"), "CodeBlock 'x\\n' (`)\nText 'y'\n" },
		{ "the tag is not split", TEXT("``` C++ title=x \nb```"), "CodeBlock 'b' (C++ title=x)\n" },
		{ "tildes are no fence", TEXT("~~~\nx\n~~~"), "Newline\nText 'x'\nNewline\n" },
		{ "a closer may follow text", TEXT("```\nlet x = ```\ny"), "CodeBlock 'let x = '\nText 'y'\n" },
		{ "a lone fence", TEXT("```"), "CodeBlock ''\n" },
	});
}

TEST(MarkdownExamples, Headers)
{
	CheckCases({
		{ "one to six marks", TEXT("# a\n###### b"), "Header 'a' level 1\nHeader 'b' level 6\n" },
		{ "seven are too many", TEXT("####### x"), "Text '###### x'\n" },
		{ "a tag is no header", TEXT("#tag"), "Text 'tag'\n" },
		{ "closing marks stay", TEXT("## Title ##"), "Header 'Title ##' level 2\n" },
		{ "the text may stand on a later line", TEXT("#\n\nNext"), "Header 'Next' level 1\n" },
		{ "an empty header", TEXT("# "), "Header '' level 1\n" },
		{ "a lone mark", TEXT("#"), "Header '' level 1\n" },
		{ "not indented", TEXT("   # x"), "Text '   # x'\n" },
		{ "inner markers stay raw", TEXT("# **a** `b`\t"), "Header '**a** `b`' level 1\n" },
		{ "a control character separates like a blank", TEXT("#\x02x"), "Header 'x' level 1\n" },
		{ "a carriage return does not", TEXT("#\rx"), "Text '\\rx'\n" },
	});
}

TEST(MarkdownExamples, HorizontalRules)
{
	CheckCases({
		{ "three", TEXT("---"), "HorizontalRule\n" },
		{ "more, of each kind", TEXT("****\n___ \t\nx"), "HorizontalRule\nHorizontalRule\nText 'x'\n" },
		{ "two are too few", TEXT("--"), "Text '-'\n" },
		{ "not with blanks between", TEXT("- - -"), "ListItem '- -'\n" },
		{ "not with a text after", TEXT("---x"), "Text '--x'\n" },
		{ "not when they open emphasis", TEXT("***a***"), "BoldItalic 'a'\n" },
		{ "a rule under a text is a rule", TEXT("a\n---\n"), "Text 'a'\nNewline\nHorizontalRule\n" },
	});
}

TEST(MarkdownExamples, Lists)
{
	CheckCases({
		{ "three bullets", TEXT("- a\n* b\n+ c"), "ListItem 'a'\nListItem 'b'\nListItem 'c'\n" },
		{ "numbers are not kept", TEXT("7. x\n12.\ty"), "ListItem 'x'\nListItem 'y'\n" },
		{ "two blanks are a level", TEXT("  - a"), "ListItem 'a' level 1\n" },
		{ "one blank is none", TEXT(" - a"), "ListItem 'a'\n" },
		{ "two tabs are a level", TEXT("\t\t1. a"), "ListItem 'a' level 1\n" },
		{ "task boxes", TEXT("- [ ] a\n- [x] b\n- [X] c\n- [?] d"),
			"TaskListItem 'a' (unchecked)\nTaskListItem 'b' (checked)\nTaskListItem 'c' (checked)\nTaskListItem 'd' (unchecked)\n" },
		{ "no boxes after numbers", TEXT("1. [x] a"), "ListItem '[x] a'\n" },
		{ "a box at the end of the text is none", TEXT("- [x]"), "ListItem '[x]'\n" },
		{ "a box at the end of a line is none", TEXT("- [x]\na"), "ListItem '[x]'\nText 'a'\n" },
		{ "any character is a mark", TEXT("- []] a"), "TaskListItem 'a' (unchecked)\n" },
		{ "no blank, no item", TEXT("-x"), "Text 'x'\n" },
		{ "nor with a number", TEXT("1.x"), "Text '1.x'\n" },
		{ "no round bracket", TEXT("1) x"), "Text '1) x'\n" },
		{ "an empty item", TEXT("- "), "ListItem ''\n" },
		{ "a lone bullet shows nothing", TEXT("-"), "" },
		{ "the text may stand on a later line", TEXT("- \nfoo"), "ListItem 'foo'\n" },
		{ "a bullet before a line feed is none", TEXT("-\nfoo"), "Newline\nText 'foo'\n" },
		{ "no continuation lines", TEXT("- a\n  b"), "ListItem 'a'\nText '  b'\n" },
		{ "a plus that adds", TEXT("+1"), "Text '1'\n" },
	});
}

TEST(MarkdownExamples, Blockquotes)
{
	CheckCases({
		{ "one token per line", TEXT("> a\n> b"), "Blockquote 'a'\nBlockquote 'b'\n" },
		{ "the blank may be missing", TEXT(">a"), "Blockquote 'a'\n" },
		{ "only one blank goes", TEXT(">  a "), "Blockquote ' a '\n" },
		{ "inner markers stay raw", TEXT(">> x"), "Blockquote '> x'\n" },
		{ "an empty quote is a quote", TEXT(">"), "Blockquote ''\n" },
		{ "not indented", TEXT(" > a"), "Text ' > a'\n" },
	});
}

TEST(MarkdownExamples, Sections)
{
	CheckCases({
		{ "what follows on the closer's line goes", TEXT("<details><summary>S</summary>B</details> tail\nnext"),
			"CollapsibleSection 'B' (S)\nText 'next'\n" },
		{ "over several lines, trimmed", TEXT(" <details>\n<summary> S\n</summary>\n\nB\nC\n</details>\n"),
			"CollapsibleSection 'B\\nC' (S)\n" },
		{ "exact letters", TEXT("<DETAILS><summary>S</summary>B</details>"), "Text '<DETAILS><summary>S</summary>B</details>'\n" },
		{ "an empty summary is none", TEXT("<details><summary></summary>B</details>"), "Text '<details><summary></summary>B</details>'\n" },
		{ "a blank summary is one", TEXT("<details><summary> </summary>B</details>"), "CollapsibleSection 'B'\n" },
		{ "an empty body is none", TEXT("<details><summary>S</summary> </details>"), "Text '<details><summary>S</summary> </details>'\n" },
		{ "no closer, no section", TEXT("<details><summary>S</summary>B"), "Text '<details><summary>S</summary>B'\n" },
		{ "sections do not nest", TEXT("<details><summary>S</summary>a<details><summary>T</summary>b</details>\n</details>"),
			"CollapsibleSection 'a<details><summary>T</summary>b' (S)\nText '</details>'\n" },
		{ "no attributes", TEXT("<details open>\n"), "Text '<details open>'\nNewline\n" },
	});
}

TEST(MarkdownExamples, Footnotes)
{
	CheckCases({
		{ "a definition", TEXT("[^1]: note"), "FootnoteDefinition 'note' (1)\n" },
		{ "without a name it is none", TEXT("[^]: x"), "Text '^]: x'\n" },
		{ "the text may be empty", TEXT("[^a]:"), "FootnoteDefinition '' (a)\n" },
		{ "the name is trimmed after it was looked at", TEXT("[^ ]: x"), "FootnoteDefinition 'x'\n" },
		{ "the colon follows at once", TEXT("[^1] : x"), "FootnoteReference '[1]' (1)\nText ' : x'\n" },
		{ "a reference", TEXT("text[^1]"), "Text 'text'\nFootnoteReference '[1]' (1)\n" },
		{ "a name is trimmed", TEXT("a[^ b ]"), "Text 'a'\nFootnoteReference '[b]' (b)\n" },
		{ "a link comes first", TEXT("[^1](x)"), "Link '^1' (x)\n" },
		{ "not across lines", TEXT("a[^1\n]"), "Text 'a'\nText '^1'\nNewline\nText ']'\n" },
	});
}

TEST(MarkdownExamples, Emphasis)
{
	CheckCases({
		{ "italic", TEXT("a *b* c"), "Text 'a '\nItalic 'b'\nText ' c'\n" },
		{ "not inside of a word", TEXT("a*b*c"), "Text 'a*b*c'\n" },
		{ "nor here", TEXT("snake_case_word"), "Text 'snake_case_word'\n" },
		{ "nor here", TEXT("2*3 and a~b"), "Text '2*3 and a~b'\n" },
		{ "no closer after a blank", TEXT("*a *"), "Text 'a '\n" },
		{ "no closer before a letter", TEXT("**a**b"), "Text 'a*'\nText 'b'\n" },
		{ "two asterisks close one when a third does not follow", TEXT("**a **"), "Italic 'a *'\n" },
		{ "a lone asterisk is not closed by the first of two", TEXT("x *a** b*"), "Text 'x '\nItalic 'a*'\nText ' b*'\n" },
		{ "the first closer counts", TEXT("**a***"), "Bold 'a'\n" },
		{ "inner markers stay raw", TEXT("**a *b* c**"), "Bold 'a *b* c'\n" },
		{ "underscores", TEXT("__a__ _b_"), "Bold 'a'\nText ' '\nItalic 'b'\n" },
		{ "three underscores are no opener of their own", TEXT("x ___a___"), "Text 'x '\nBold '_a_'\n" },
		{ "strikethrough", TEXT("~~a~~"), "Strikethrough 'a'\n" },
		{ "one tilde is none", TEXT("~a~"), "Text 'a~'\n" },
		{ "a tilde before a number goes", TEXT("~5"), "Text '5'\n" },
		{ "lone delimiters show nothing", TEXT("*"), "" },
		{ "lone delimiters show nothing", TEXT("**"), "" },
		{ "lone delimiters show nothing", TEXT("_"), "" },
		{ "lone delimiters show nothing", TEXT("`"), "" },
		{ "a lone one inside", TEXT("a * b"), "Text 'a '\nText ' b'\n" },
		{ "an empty construct in the middle of a line", TEXT("x ****"), "Text 'x '\nBold ''\n" },
		{ "no opener before a blank", TEXT("** a**"), "Text ' a*'\n" },
		{ "not across lines", TEXT("x *a\nb*"), "Text 'x '\nText 'a'\nNewline\nText 'b*'\n" },
		{ "no escapes", TEXT("\\*a*"), "Text '\\'\nItalic 'a'\n" },
		{ "a letter of any script is a letter", TEXT("\u00e9*a*"), "Text '\xc3\xa9*a*'\n" },
	});
}

TEST(MarkdownExamples, InlineCode)
{
	CheckCases({
		{ "plain", TEXT("`a`"), "Code 'a'\n" },
		{ "three in the middle of a line", TEXT("x ``` y"), "Text 'x '\nCode ''\nText ' y'\n" },
		{ "three open none, the two behind them one", TEXT("x ```a` b"), "Text 'x '\nCode '`a'\nText ' b'\n" },
		{ "two open one", TEXT("``a``"), "Code '`a'\n" },
		{ "a backtick after a blank does not close", TEXT("`a `b`"), "Code 'a `b'\n" },
		{ "markers inside stay raw", TEXT("`**a**`"), "Code '**a**'\n" },
	});
}

TEST(MarkdownExamples, Links)
{
	CheckCases({
		{ "plain", TEXT("[a](b)c"), "Link 'a' (b)\nText 'c'\n" },
		{ "unclosed", TEXT("[a](b"), "Text 'a](b'\n" },
		{ "both parts may be empty", TEXT("[]()"), "Link ''\n" },
		{ "not with a blank between", TEXT("[a] (b)"), "Text 'a] (b)'\n" },
		{ "no reference links", TEXT("[a][b]"), "Text 'a]'\nText 'b]'\n" },
		{ "the first bracket ends the target", TEXT("[a](b(c)d)"), "Link 'a' (b(c)\nText 'd)'\n" },
		{ "no images", TEXT("![a](b)"), "Text '!'\nLink 'a' (b)\n" },
		{ "a bracket stops a run in the middle of a word", TEXT("a[0]"), "Text 'a'\nText '0]'\n" },
		{ "a lone bracket goes", TEXT("[1]"), "Text '1]'\n" },
		{ "the first closing bracket counts", TEXT("[a]b](c)"), "Text 'a]b](c)'\n" },
		{ "not across lines", TEXT("[a](\nb)"), "Text 'a]('\nNewline\nText 'b)'\n" },
		{ "a word before it", TEXT("see[a](b)"), "Text 'see'\nLink 'a' (b)\n" },
		{ "nothing is trimmed", TEXT("[ a ]( b )"), "Link ' a ' ( b )\n" },
	});
}

TEST(MarkdownExamples, Tables)
{
	CheckCases({
		{ "header, separator, row", TEXT("| a | b |\n|---|:-:|\n| 1 | 2 |\n"),
			"Table '| a | b |\\n|---|:-:|\\n| 1 | 2 |' (left,center)\n" },
		{ "no hyphen, no table", TEXT("|a|\n|b|\n"), "Text '|a|'\nNewline\nText '|b|'\nNewline\n" },
		{ "both lines may be indented", TEXT("  | a |\n  |---|"), "Table '| a |\\n|---|' (left)\n" },
		{ "a header alone", TEXT("| a |\n| - |"), "Table '| a |\\n| - |' (left)\n" },
		{ "a line without a pipe ends it", TEXT("| a |\n|---|\ntext"), "Table '| a |\\n|---|' (left)\nText 'text'\n" },
		{ "the indentation of that line stays", TEXT("| a |\n|---|\n  x"), "Table '| a |\\n|---|' (left)\nText '  x'\n" },
		{ "a pipe comes first", TEXT("a | b\n--|--"), "Text 'a | b'\nNewline\nText '-|--'\n" },
		{ "one line is no table", TEXT("| a |"), "Text '| a |'\n" },
		{ "one hyphen anywhere will do", TEXT("|x|\n| a-b |:-x:|-:|:-|"), "Table '|x|\\n| a-b |:-x:|-:|:-|' (left,center,right,left)\n" },
		{ "empty cells do not count", TEXT("|x|\n||  |-|"), "Table '|x|\\n||  |-|' (left)\n" },
		{ "pipes alone are no separator", TEXT("|x|\n||"), "Text '|x|'\nNewline\nText '||'\n" },
	});
}
