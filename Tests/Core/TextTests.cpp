#include "Support/Base/Printers.h"

#define LOCTEXT_NAMESPACE "CoreTests"

namespace
{
	/** Namespace, key and text of a localised text in one line. */
	std::string Describe(const FText& Text)
	{
		return Utf8(FTextInspector::GetNamespace(Text).Get(TEXT("-"))) + ":" + Utf8(FTextInspector::GetKey(Text).Get(TEXT("-"))) + ":" +
			Utf8(Text);
	}
	FText MakeSame()
	{
		return LOCTEXT("Same", "Same");
	}
}

TEST(Texts, KnowWhereTheyComeFrom)
{
	EXPECT_EQ(Describe(LOCTEXT("Hello", "Hello – 👤")), "CoreTests:Hello:Hello – 👤");
	EXPECT_EQ(Describe(NSLOCTEXT("Other", "Key", "Text")), "Other:Key:Text");
	EXPECT_EQ(Describe(INVTEXT("Plain")), "-:-:Plain");
	EXPECT_EQ(Describe(FText::Format(LOCTEXT("One", "{0}"), FText::FromString(TEXT("x")))), "-:-:x");
	EXPECT_TRUE(MakeSame().IdenticalTo(MakeSame()));
	EXPECT_FALSE(FText::FromString(TEXT("a")).IdenticalTo(FText::FromString(TEXT("a"))));
	EXPECT_TRUE(FText::FromString(TEXT("a")).EqualTo(INVTEXT("a")));
	EXPECT_FALSE(FText::FromString(TEXT("a")).EqualTo(INVTEXT("A")));
	EXPECT_TRUE(FText().IsEmpty() && FText::GetEmpty().IsEmpty() && FText::FromString(FString()).IsEmpty());
}

TEST(Texts, OrderedFormat)
{
	const FText Name = INVTEXT("{1}");
	const std::tuple<const char*, FText, const char*> Cases[] = {
		{ "in order", FText::Format(INVTEXT("{0} of {1}"), 3, 12), "3 of 12" },
		{ "integers are grouped", FText::Format(INVTEXT("{0}"), 1234567), "1,234,567" },
		{ "at most three decimals", FText::Format(INVTEXT("{0} {1}"), 1234.56789, 2.0f), "1,234.568 2" },
		{ "64 bits", FText::Format(INVTEXT("{0}"), MIN_int64), "-9,223,372,036,854,775,808" },
		{ "twice", FText::Format(INVTEXT("{0}{0}"), INVTEXT("x")), "xx" },
		{ "arguments are not patterns", FText::Format(INVTEXT("{0}"), Name, 5), "{1}" },
		{ "missing ones stay", FText::Format(INVTEXT("{0} {1} {Name}"), 1), "1 {1} {Name}" },
		{ "escaped braces", FText::Format(INVTEXT("`{0`} {0} ``"), 1), "{0} 1 `" },
		{ "a lone backtick", FText::Format(INVTEXT("`a` {0}"), 1), "`a` 1" },
		{ "open brace", FText::Format(INVTEXT("{0} {"), 1), "1 {" },
		{ "a placeholder behind an open brace", FText::Format(INVTEXT("{x {0}"), 1), "{x 1" },
		{ "no placeholder", FText::Format(INVTEXT("{} text"), 1), "{} text" },
	};
	for (const auto& [Why, Result, Expected] : Cases)
	{
		EXPECT_EQ(Utf8(Result), Expected) << Why;
	}
}

TEST(Texts, Numbers)
{
	const std::tuple<const char*, FText, const char*> Cases[] = {
		{ "short", FText::AsNumber(999), "999" },
		{ "negative", FText::AsNumber(-1000), "-1,000" },
		{ "half to even", FText::AsNumber(0.0025), "0.002" },
		{ "half to even, up", FText::AsNumber(0.0035), "0.004" },
		{ "carry", FText::AsNumber(999.9996), "1,000" },
		{ "rounding as written, not as stored", FText::AsNumber(2.6755), "2.676" },
		{ "huge", FText::AsNumber(1e21), "1,000,000,000,000,000,000,000" },
		{ "not a number", FText::AsNumber(std::numeric_limits<double>::quiet_NaN()), "NaN" },
	};
	for (const auto& [Why, Result, Expected] : Cases)
	{
		EXPECT_EQ(Utf8(Result), Expected) << Why;
	}
}

#undef LOCTEXT_NAMESPACE
