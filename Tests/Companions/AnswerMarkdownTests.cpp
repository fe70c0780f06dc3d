#include "Tools/AnswerMarkdown.h"

#include <gtest/gtest.h>
#include <string>

using namespace Velmora;

TEST(AnswerMarkdown, NamesKeepTheirBackquotes)
{
	const std::tuple<const char*, std::string, std::string, std::string> Cases[] = {
		{ "no backquote", "a b.txt", "`a b.txt`", "`a b.txt`" },
		{ "none that ends code", "back`quote `_.txt", "`back`quote `_.txt`", "`back`quote `_.txt`" },
		{ "the first character", "`a", "``a`", "``a`" },
		{ "two at the start begin no code", "``a", "**``a**", "`\u02CB\u02CBa`" },
		{ "before a dot", "a`.txt", "**a`.txt**", "`a\u02CB.txt`" },
		{ "the last character", "a`", "**a`**", "`a\u02CB`" },
		{ "before another letter", "a`\u00E4", "**a`\u00E4**", "`a\u02CB\u00E4`" },
		{ "one asterisk is none in bold", "a*b`.c", "**a*b`.c**", "`a*b\u02CB.c`" },
		{ "two are", "a**b`.c", "`a**b\u02CB.c`", "`a**b\u02CB.c`" },
		{ "one at the end is", "a`*", "`a\u02CB*`", "`a\u02CB*`" },
		{ "nothing", "", "`(empty)`", "`(empty)`" },
	};
	for (const auto& [Intent, Name, Shown, AsCode] : Cases)
	{
		EXPECT_EQ(AnswerMarkdown::FileName(Name), Shown) << Intent;
		EXPECT_EQ(AnswerMarkdown::InlineCode(Name), AsCode) << Intent;
	}
	FProjectPath Path;
	Path.Relative = "a`.txt";
	Path.Absolute = "/p/a`.txt";
	EXPECT_EQ(AnswerMarkdown::FileLink(Path), "[a`.txt](file:///p/a`.txt)");
	Path.bIsFolder = true;
	EXPECT_EQ(AnswerMarkdown::FileLink(Path), "**a`.txt**");
}
