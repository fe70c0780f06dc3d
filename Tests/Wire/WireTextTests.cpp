#include "Text/WireText.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

using namespace Velmora;

TEST(WireText, EveryCharacterIsQuotedWhereverItStands)
{
	const std::pair<std::string, const char*> Cases[] = {
		{ "\"", "\\\"" },
		{ "\\", "\\\\" },
		{ "\n", "\\n" },
		{ std::string(1, '\0'), "\\u0000" },
		{ "\x1F", "\\u001F" },
		{ " !#[]~\x7F", " !#[]~\x7F" },
		{ "\xC3\xA4", "\xC3\xA4" },
		{ "\xF0\x9F\x98\x80\"", "\xF0\x9F\x98\x80\\\"" },
		{ "\xE2\x82", "\xEF\xBF\xBD" },
		{ "\x80\xFF", "\xEF\xBF\xBD\xEF\xBF\xBD" },
	};
	for (const auto& [Bytes, Quoted] : Cases)
	{
		for (size_t Place = 0; Place < 18; ++Place)
		{
			const std::string Before(Place, '~');
			std::string Text = "[";
			WireText::AppendQuoted(Text, Before + Bytes + "  after it");
			EXPECT_EQ(Text, "[\"" + Before + Quoted + "  after it\"") << "behind " << Place;
		}
	}
}

TEST(WireText, BytesBecomeText)
{
	const std::pair<std::string, const char*> Cases[] = {
		{ "plain \xC3\xA4 \xF0\x9F\x98\x80", "plain \xC3\xA4 \xF0\x9F\x98\x80" },
		{ "\xC0\x80", "?" },
		{ "\xED\xA0\x80", "?" },
		{ "\xF4\x90\x80\x80", "?" },
		{ "a\xE2\x82", "a?" },
		{ "a\xE2\x82"
		  "b",
			"a?b" },
		{ "\xFF\xFE", "??" },
	};
	for (const auto& [Bytes, Expected] : Cases)
	{
		std::string Text = WireText::RepairUtf8(Bytes);
		EXPECT_TRUE(WireText::IsUtf8(Text));
		for (size_t Found = Text.find("\xEF\xBF\xBD"); Found != std::string::npos; Found = Text.find("\xEF\xBF\xBD"))
		{
			Text.replace(Found, 3, "?");
		}
		EXPECT_EQ(Text, Expected);
	}
	EXPECT_EQ(WireText::CutUtf8("a\xC3\xA4", 2), "a");
}
