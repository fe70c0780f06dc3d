#include "Request/AttachedNames.h"

#include <gtest/gtest.h>

using Velmora::FindNamesIn;
using Velmora::QuoteAttachedNames;
using Velmora::SkipAttachedNames;

TEST(AttachedNames, AreQuotedWhereTheyCannotBeReadAsOneWord)
{
	const std::tuple<const char*, std::vector<std::string>, const char*> Cases[] = {
		{ "append x to notes.md", { "notes.md" }, "append x to notes.md" },
		{ "append \"z\" to my notes.md", { "my notes.md" }, "append \"z\" to \"my notes.md\"" },
		{ "delete my notes.md.", { "my notes.md" }, "delete \"my notes.md\"." },
		{ "delete my notes.mdx", { "my notes.md" }, "delete my notes.mdx" },
		{ "delete so my notes.md", { "my notes.md", "so my notes.md" }, "delete \"so my notes.md\"" },
		{ "delete so my notes.md", { "so", "so my notes.md" }, "delete \"so my notes.md\"" },
		{ "delete a b.md and c.md", { "a b.md", "c.md" }, "delete \"a b.md\" and c.md" },
		{ "write \"see a b.md here\" to a b.md", { "a b.md" }, "write \"see a b.md here\" to \"a b.md\"" },
		{ "write this to a b.md\n```\na b.md\n```", { "a b.md" }, "write this to \"a b.md\"\n```\na b.md\n```" },
		{ "write «see a b.md here» to a b.md", { "a b.md" }, "write «see a b.md here» to \"a b.md\"" },
		{ "don't keep a b.md, it's old", { "a b.md" }, "don't keep \"a b.md\", it's old" },
		{ "delete \"a b.md\"", { "a b.md" }, "delete \"a b.md\"" },
		{ "delete say \"hi\".md", { "say \"hi\".md" }, "delete `say \"hi\".md`" },
		{ "delete \"`\" x.md", { "\"`\" x.md" }, "delete it" },
		{ "delete \"`\" x.md", { "\"`\" x.md", "b.md" }, "delete \"`\" x.md" },
		{ "say \"a b.md", { "a b.md" }, "say \"a b.md" },
		{ "", { "a b.md" }, "" },
	};
	for (const auto& [Text, Names, Expected] : Cases)
	{
		EXPECT_EQ(QuoteAttachedNames(Text, Names), Expected) << Text;
	}
}

TEST(AttachedNames, AtTheBeginningAreSkipped)
{
	const std::vector<std::string> Names = { "a.md", "b c.md" };
	EXPECT_EQ(SkipAttachedNames("a.md, b c.md: delete it", Names), "delete it");
	EXPECT_EQ(SkipAttachedNames("delete a.md", Names), "delete a.md");
	EXPECT_EQ(SkipAttachedNames("a.md", Names), "");
}

TEST(AttachedNames, AreFoundInATextThatSaysNothingElse)
{
	using FPlaces = std::vector<size_t>;
	const std::vector<std::string> Names = { "a.md", "b c.md", "d.md" };
	EXPECT_EQ(FindNamesIn("b c.md and a.md", Names), (FPlaces{ 1, 0 }));
	EXPECT_EQ(FindNamesIn("the file d.md, a.md, d.md.", Names), (FPlaces{ 2, 0 }));
	EXPECT_EQ(FindNamesIn("These files", Names), (FPlaces{ 0, 1, 2 }));
	EXPECT_EQ(FindNamesIn("a.md and e.md", Names), FPlaces());
	EXPECT_EQ(FindNamesIn("xa.md", Names), FPlaces());
}
