#include "Support/Base/Printers.h"

namespace
{
	template <typename MapType>
	std::string Keys(const MapType& Map)
	{
		TArray<FString> Names;
		for (const auto& Pair : Map)
		{
			Names.Add(Pair.Key);
		}
		return Utf8(FString::Join(Names, TEXT(" ")));
	}
}

TEST(Arrays, SortingSeesThroughRawPointersOnly)
{
	int32 Numbers[] = { 3, 1, 2 };
	TArray<int32*> Pointers{ &Numbers[0], &Numbers[1], &Numbers[2] };
	Pointers.Sort([](const int32& A, const int32& B) { return A < B; });
	EXPECT_EQ(*Pointers[0] * 100 + *Pointers[1] * 10 + *Pointers[2], 123);
	TArray<TSharedPtr<int32>> Shared{ MakeShared<int32>(2), MakeShared<int32>(1) };
	Shared.Sort([](const TSharedPtr<int32>& A, const TSharedPtr<int32>& B) { return *A < *B; });
	EXPECT_EQ(*Shared[0], 1);
	TArray<FString> Texts{ TEXT("b"), TEXT("A"), TEXT("C"), TEXT("a") };
	Texts.StableSort();
	EXPECT_EQ(Utf8(Texts), R"("A", "a", "b", "C")");
}

TEST(ArraysDeathTest, IndicesOutOfRangeAreAsserted)
{
	TArray<int32> Array{ 1 };
	EXPECT_DEATH(Array[1] = 0, "Assertion failed");
	EXPECT_DEATH(Array[-1] = 0, "Assertion failed");
	EXPECT_DEATH(Array.RemoveAt(0, 2), "Assertion failed");
	EXPECT_DEATH(TArray<int32>().Last(), "Assertion failed");
	EXPECT_DEATH(TArray<int32>().Pop(), "Assertion failed");
	EXPECT_DEATH((TSharedPtr<int32>().ToSharedRef()), "Assertion failed");
	EXPECT_DEATH(FSimpleDelegate().Execute(), "Assertion failed");
}

TEST(Maps, KeepInsertionOrderAndReuseFreedPlaces)
{
	TMap<FString, int32> Map;
	for (const TCHAR* Key : { TEXT("one"), TEXT("two"), TEXT("three"), TEXT("four") })
	{
		Map.Add(Key, Map.Num());
	}
	EXPECT_EQ(Keys(Map), "one two three four");
	EXPECT_EQ(Map.Remove(TEXT("TWO")), 1);
	Map.Remove(TEXT("three"));
	EXPECT_EQ(Keys(Map), "one four");
	Map.Add(TEXT("five"), 5);
	EXPECT_EQ(Keys(Map), "one five four") << "the place freed last is taken first";
	Map.Add(TEXT("six"), 6);
	Map.Add(TEXT("seven"), 7);
	EXPECT_EQ(Keys(Map), "one six five four seven");
	Map.ValueSort([](int32 A, int32 B) { return A > B; });
	EXPECT_EQ(Keys(Map), "seven six five four one");
	EXPECT_EQ(Map[TEXT("four")], 3) << "found after sorting";
	Map.Reset();
	Map.Add(TEXT("b"), 1);
	Map.Add(TEXT("a"), 1);
	EXPECT_EQ(Keys(Map), "b a");
}

TEST(Maps, StringKeysIgnoreCaseAndKeepTheFirstSpelling)
{
	TMap<FString, int32> Map{ { TEXT("Name"), 1 }, { TEXT("NAME"), 2 } };
	EXPECT_EQ(Map.Num(), 1);
	EXPECT_EQ(Keys(Map), "Name");
	EXPECT_EQ(Map.FindRef(TEXT("name")), 2);
	Map.FindOrAdd(TEXT("nAME")) = 3;
	Map.FindOrAdd(TEXT("other"), 4);
	EXPECT_EQ(*Map.Find(TEXT("Name")), 3);
	EXPECT_EQ(Map.Find(TEXT("missing")), nullptr);
	EXPECT_EQ(Map.FindRef(TEXT("missing")), 0);
	EXPECT_EQ(Map.Remove(TEXT("OTHER")), 1);
	TMap<FString, int32> Taken(MoveTemp(Map));
	EXPECT_EQ(Map.Num(), 0);
	EXPECT_FALSE(Map.Contains(TEXT("Name")));
	Map = Taken;
	EXPECT_EQ(Map.FindRef(TEXT("name")), 3);
	TSet<FString> Set{ TEXT("A"), TEXT("b"), TEXT("a") };
	EXPECT_EQ(Utf8(Set.Array()), R"("A", "b")");
}

TEST(Names, FirstSpellingStays)
{
	const FName First(TEXT("SpelledOnce"));
	const FName Second("SPELLEDonce");
	EXPECT_EQ(First, Second);
	EXPECT_EQ(Utf8(Second), "SpelledOnce");
	EXPECT_EQ(GetTypeHash(First), GetTypeHash(Second));
	EXPECT_TRUE(FName().IsNone() && FName(TEXT("")) == NAME_None && FName(TEXT("none")).IsNone());
	EXPECT_EQ(Utf8(FName(NAME_None)), "None");
	EXPECT_TRUE(First != FName(TEXT("Other")) && First == TEXT("spelledonce"));
}
