#include "Text/WireText.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

using namespace Velmora;

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
