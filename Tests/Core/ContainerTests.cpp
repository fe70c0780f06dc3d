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

TEST(Arrays, AddInsertRemove)
{
	TArray<int32> Array{ 1, 2, 3 };
	EXPECT_EQ(Array.Add(4), 3);
	Array.Insert(0, 0);
	Array.RemoveAt(1);
	EXPECT_EQ(Array, (TArray<int32>{ 0, 2, 3, 4 }));
	Array.RemoveAt(0);
	Array.Sort([](int32 A, int32 B) { return A > B; });
	EXPECT_EQ(Array, (TArray<int32>{ 4, 3, 2 }));
	EXPECT_EQ(Array.AddUnique(2), 2);
	Array.Append({ 2, 5, 2 });
	EXPECT_EQ(Array.Remove(Array[2]), 3);
	EXPECT_EQ(Array, (TArray<int32>{ 4, 3, 5 }));
	EXPECT_EQ(Array.RemoveAll([](int32 Each) { return Each > 3; }), 2);
	EXPECT_EQ(Array.Pop(), 3);
	EXPECT_TRUE(Array.IsEmpty());
	Array.SetNum(3);
	EXPECT_EQ(Array, (TArray<int32>{ 0, 0, 0 }));
	Array.InsertDefaulted(1, 2);
	Array[1] = 7;
	EXPECT_EQ(Array, (TArray<int32>{ 0, 7, 0, 0, 0 }));
	EXPECT_EQ(Array.FindLast(0), 4);
	EXPECT_EQ(Array.Find(9), INDEX_NONE);
	Array.Append(Array);
	EXPECT_EQ(Array.Num(), 10);
	TArray<int32> Moved(MoveTemp(Array));
	EXPECT_EQ(Array.Num(), 0);
	EXPECT_EQ(Moved.FilterByPredicate([](int32 Each) { return Each == 7; }).Num(), 2);
}

TEST(Arrays, BoolsAreRealElements)
{
	TArray<bool> Flags{ true, false };
	Flags.Add(true);
	bool& bSecond = Flags[1];
	bSecond = true;
	for (bool& bEach : Flags)
	{
		bEach = !bEach;
	}
	const bool* Data = Flags.GetData();
	EXPECT_FALSE(Data[0] || Data[1] || Data[2]);
	EXPECT_FALSE(Flags.Contains(true));
	EXPECT_EQ(Flags.RemoveAll([](bool bEach) { return !bEach; }), 3);
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

TEST(Maps, AgreeWithAPlainListOverManyChanges)
{
	TMap<int32, int32> Map;
	TArray<TPair<int32, int32>> Plain;
	uint32 State = 1;
	for (int32 Step = 0; Step < 20000; ++Step)
	{
		State = State * 1664525u + 1013904223u;
		const int32 Key = (int32)(State >> 16 & 255);
		const int32 At = Plain.IndexOfByPredicate([Key](const TPair<int32, int32>& Pair) { return Pair.Key == Key; });
		if (State >> 30 == 0)
		{
			ASSERT_EQ(Map.Remove(Key), At != INDEX_NONE ? 1 : 0);
			if (At != INDEX_NONE)
			{
				Plain.RemoveAt(At);
			}
		}
		else
		{
			Map.Add(Key, Step);
			At != INDEX_NONE ? (void)(Plain[At].Value = Step) : (void)Plain.Emplace(Key, Step);
		}
		ASSERT_EQ(Map.Num(), Plain.Num());
	}
	for (const auto& [Key, Value] : Plain)
	{
		ASSERT_EQ(Map.FindRef(Key, -1), Value);
	}
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

TEST(Pointers, SharedOwnership)
{
	struct FBase
	{
		virtual ~FBase() = default;
	};
	struct FDerived : FBase, TSharedFromThis<FDerived>
	{
		explicit FDerived(int32& InDeaths)
			: Deaths(InDeaths)
		{
		}
		~FDerived() override { ++Deaths; }
		int32& Deaths;
	};
	int32 Deaths = 0;
	TWeakPtr<FDerived> Weak;
	{
		TSharedRef<FDerived> Ref = MakeShared<FDerived>(Deaths);
		TSharedPtr<FBase> Base = Ref;
		Weak = Ref->AsShared();
		EXPECT_TRUE(Base == Ref && Weak.Pin() == Ref && Base != nullptr);
		EXPECT_EQ(StaticCastSharedPtr<FDerived>(Base), Ref.ToSharedPtr());
		TSharedRef<FDerived> Taken = MoveTemp(Ref);
		EXPECT_TRUE(&Ref.Get() == &Taken.Get()) << "a reference is never null, not even after a move";
		TMap<TSharedPtr<FBase>, int32> ByPointer;
		ByPointer.Add(Base, 5);
		EXPECT_EQ(ByPointer.FindRef(Taken), 5);
		EXPECT_EQ(Deaths, 0);
	}
	EXPECT_EQ(Deaths, 1);
	EXPECT_FALSE(Weak.IsValid() || Weak.Pin().IsValid());
}

TEST(Functions, OwnedUniqueAndReferenced)
{
	TFunction<int32(int32)> Function;
	EXPECT_FALSE(Function);
	int32 Factor = 2;
	Function = [&Factor, Count = 0](int32 Value) mutable { return Value * Factor + ++Count; };
	const TFunction<int32(int32)> Copy = Function;
	EXPECT_EQ(Function(10), 21);
	EXPECT_EQ(Function(10), 22);
	EXPECT_EQ(Copy(10), 21) << "a copy has its own state";
	Function = nullptr;
	EXPECT_FALSE(Function.IsSet());
	EXPECT_FALSE(TFunction<int32(int32)>((int32(*)(int32)) nullptr));
	TUniqueFunction<int32()> Unique = [Owned = MakeUnique<int32>(7)] { return *Owned; };
	TUniqueFunction<int32()> Taken = MoveTemp(Unique);
	EXPECT_EQ(Taken(), 7);
	EXPECT_FALSE(Unique);
	const auto Twice = [](TFunctionRef<int32(int32)> Ref) { return Ref(1) + Ref(2); };
	EXPECT_EQ(Twice([](int32 Value) { return Value * 10; }), 30);
	EXPECT_EQ(Twice(Copy), (1 * 2 + 2) + (2 * 2 + 3)) << "state goes on";
}
