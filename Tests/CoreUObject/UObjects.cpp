#include "Containers/Array.h"
#include "Delegates/Delegate.h"
#include "Host/HostConfig.h"
#include "Host/HostConfigStore.h"
#include "Misc/ConfigCacheIni.h"
#include "Support/Base/Printers.h"
#include "UObject/ObjectPtr.h"
#include "UObject/UObjectGlobals.h"
#include "UObject/WeakObjectPtrTemplates.h"

namespace
{
	enum class ETestMode : uint8
	{
		Low,
		Middle,
		High,
	};

	class UTestSettings : public UObject
	{
		GENERATED_BODY()

	public:
		void VisitConfigProperties(FHostConfigVisitor& Visitor) override
		{
			Visitor.Property(TEXT("Language"), Language);
			Visitor.Property(TEXT("MaxCount"), MaxCount, 1, 100);
			Visitor.Property(TEXT("Rate"), Rate);
			Visitor.Property(TEXT("bOn"), bOn);
			Visitor.Property(TEXT("Files"), Files);
			Visitor.Enum(TEXT("Mode"), Mode, ETestMode::Low, ETestMode::High);
		}
		void Count() { ++Calls; }

		FString Language = TEXT("en");
		int32 MaxCount = 10;
		double Rate = 0.5;
		bool bOn = true;
		TArray<FString> Files;
		ETestMode Mode = ETestMode::Middle;
		int32 Calls = 0;
	};
	IMPLEMENT_HOST_CLASS(UTestSettings, UObject, "UObjectTests")

	class UTestChild : public UTestSettings
	{
		GENERATED_BODY()

	public:
		UTestChild()
			: NameAtBirth(GetName())
		{
		}
		FString NameAtBirth;
	};
	IMPLEMENT_HOST_CLASS(UTestChild, UTestSettings, "UObjectTests")
}

TEST(UObjects, NamesAndClasses)
{
	UTestSettings* Default = GetMutableDefault<UTestSettings>();
	EXPECT_EQ(Default, GetDefault<UTestSettings>());
	EXPECT_EQ(Utf8(Default->GetPathName()), "/Script/UObjectTests.Default__TestSettings");
	EXPECT_EQ(Utf8(Default->GetClass()->GetPathName()), "/Script/UObjectTests.TestSettings");

	UTestChild* Child = NewObject<UTestChild>(nullptr, TEXT("Fred"));
	EXPECT_EQ(Utf8(Child->NameAtBirth), "Fred") << "known in the constructor";
	EXPECT_NE(Utf8(NewObject<UTestChild>()->GetName()), Utf8(NewObject<UTestChild>()->GetName()));
	UObject* Object = Child;
	EXPECT_EQ(Cast<UTestSettings>(Object), Child);
	EXPECT_EQ(Cast<UTestChild>(static_cast<UObject*>(Default)), nullptr);
	EXPECT_EQ(Cast<UTestChild>(static_cast<UObject*>(nullptr)), nullptr);
	EXPECT_TRUE(Object->IsA<UObject>());
	EXPECT_EQ(StaticFindObject(nullptr, nullptr, TEXT("/engine/transient.fred")), Child);
	EXPECT_EQ(StaticFindObject(UPackage::StaticClass(), nullptr, TEXT("/Engine/Transient.Fred")), nullptr);
	EXPECT_EQ(UObject::StaticClass()->GetClass(), UClass::StaticClass());
	EXPECT_EQ(Child->GetPackage(), GetTransientPackage());
}

TEST(UObjects, GarbageIsGoneForWeakPointers)
{
	UTestSettings* Object = NewObject<UTestSettings>();
	const TWeakObjectPtr<UObject> Weak = Object;
	const TObjectPtr<UTestSettings> Member = Object;
	FSimpleDelegate Bound;
	Bound.BindUObject(Object, &UTestSettings::Count);
	Bound.ExecuteIfBound();
	EXPECT_EQ(Object->Calls, 1);
	EXPECT_EQ(Weak.Get(), Object);
	EXPECT_EQ(Member->MaxCount, 10);
	Object->MarkAsGarbage();
	EXPECT_FALSE(IsValid(Object));
	EXPECT_EQ(Weak.Get(), nullptr);
	EXPECT_FALSE(Bound.ExecuteIfBound());
	EXPECT_EQ(Object->Calls, 1);
	EXPECT_FALSE(IsValid(nullptr));
}

TEST(UObjects, SavingLeavesAloneWhatDidNotChangeHere)
{
	IHostConfigStore::SetCurrent(nullptr);
	const TCHAR* const Section = TEXT("/Script/UObjectTests.TestSettings");
	UTestSettings* Settings = NewObject<UTestSettings>();
	Settings->LoadConfig();
	// Another program writes what this one has not: one that is new, one that is a list.
	GConfig->SetString(Section, TEXT("Language"), TEXT("theirs"), GEditorPerProjectIni);
	GConfig->SetString(Section, TEXT("Files.Num"), TEXT("1"), GEditorPerProjectIni);
	GConfig->SetString(Section, TEXT("Files.0"), TEXT("their file"), GEditorPerProjectIni);
	for (const int32 Count : { 20, 30 })
	{
		Settings->MaxCount = Count;
		Settings->SaveConfig();
	}
	UTestSettings* Other = NewObject<UTestSettings>();
	Other->LoadConfig();
	EXPECT_EQ(Other->MaxCount, 30);
	EXPECT_EQ(Utf8(Other->Language), "theirs");
	EXPECT_EQ(Utf8(FString::Join(Other->Files, TEXT("|"))), "their file");
	// What is changed here is written, also back to what it was; and everything where nothing is known.
	Settings->MaxCount = 10;
	Settings->SaveConfig();
	Other->LoadConfig();
	EXPECT_EQ(Other->MaxCount, 10);
	IHostConfigStore::SetCurrent(nullptr);
	Other->SaveConfig();
	FString Language;
	EXPECT_TRUE(GConfig->GetString(Section, TEXT("Language"), Language, GEditorPerProjectIni));
	EXPECT_EQ(Utf8(Language), "theirs");
	IHostConfigStore::SetCurrent(nullptr);
}

TEST(UObjects, HandEditedValuesAreChecked)
{
	IHostConfigStore::SetCurrent(nullptr);
	const TCHAR* const Section = TEXT("/Script/UObjectTests.TestSettings");
	const auto Put = [Section](const TCHAR* Key, const TCHAR* Value) { GConfig->SetString(Section, Key, Value, GEditorPerProjectIni); };
	Put(TEXT("MaxCount"), TEXT("100000"));
	Put(TEXT("Rate"), TEXT("nan"));
	Put(TEXT("bOn"), TEXT("maybe"));
	Put(TEXT("Files.Num"), TEXT("2000000000"));
	Put(TEXT("Mode"), TEXT("-4"));
	UTestSettings* Settings = NewObject<UTestSettings>();
	Settings->LoadConfig();
	EXPECT_EQ(Settings->MaxCount, 100) << "brought into its range";
	EXPECT_EQ(Settings->Rate, 0.5);
	EXPECT_TRUE(Settings->bOn);
	EXPECT_EQ(Settings->Files.Num(), 0);
	EXPECT_EQ(Settings->Mode, ETestMode::Low);
	EXPECT_EQ(Utf8(Settings->Language), "en") << "not in the store";
	IHostConfigStore::SetCurrent(nullptr);
}
