#include "HAL/PlatformApplicationMisc.h"
#include "Host/HostConfigStore.h"
#include "Settings/VelmoraSettings.h"
#include "UObject/UObjectGlobals.h"
#include "VelmoraWidgetTest.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/SConversationPlan.h"
#include "Widgets/SCustomizeBehavior.h"

#include <algorithm>

class FConversationPlanTest : public FVelmoraWidgetTest
{
protected:
	TSharedPtr<SConversationPlan> Panel;

	void SetUp() override
	{
		FVelmoraWidgetTest::SetUp();
		Panel = SNew(SConversationPlan);
		Resize(400, 300);
		Show(Panel.ToSharedRef());
	}
	void TearDown() override
	{
		Panel.Reset();
		FVelmoraWidgetTest::TearDown();
	}
	void Update(const FString& Plan)
	{
		Panel->UpdatePlan(Plan);
		PumpFrame();
		PumpFrame();
	}
	static bool CanCopy() { return !FWidgetFinder::FindByToolTip(TEXT("Copy conversation plan to clipboard")).IsEmpty(); }
	TSharedRef<SScrollBox> ScrollBox() { return StaticCastSharedPtr<SScrollBox>(FindInside(*Panel, "SScrollBox")).ToSharedRef(); }
	static std::string TakeClipboard()
	{
		FString Text;
		FPlatformApplicationMisc::ClipboardPaste(Text);
		FPlatformApplicationMisc::ClipboardCopy(TEXT("nothing"));
		return Utf8(Text);
	}
};

TEST_F(FConversationPlanTest, WithoutAPlanItSaysWhatWillStandHere)
{
	const FTextList Placeholder = VisibleTexts();
	EXPECT_EQ(Placeholder,
		(FTextList{ "No plan available yet.", "When the agent creates a plan, it will appear here with:", "\xE2\x80\xA2", "Goals",
			"\xE2\x80\xA2", "High-level approach", "\xE2\x80\xA2", "Implementation steps with status indicators", "\xE2\x80\xA2",
			"Progress tracking" }));
	const FString Own = TEXT("No plan available yet.\n\nWhen the agent creates a plan, it will appear here with:\n- Goals\n- High-level "
							 "approach\n- Implementation steps with status indicators\n- Progress tracking");
	for (const FString& Plan : { FString(), Own, Own.ToUpper() })
	{
		SCOPED_TRACE(Utf8(Plan));
		Update(Plan);
		EXPECT_FALSE(CanCopy());
	}
	Update(TEXT("# Steps\n- one"));
	Panel->ClearPlan();
	PumpFrame();
	EXPECT_EQ(VisibleTexts(), Placeholder);
	EXPECT_FALSE(CanCopy());
}

TEST_F(FConversationPlanTest, APlanIsShownAndCopiedAsItCame)
{
	const FString Plan = TEXT("## Goals\n- \x00E9t\x00E9 **now**");
	Update(Plan);
	const FTextList Texts = VisibleTexts();
	EXPECT_NE(std::find(Texts.begin(), Texts.end(), "Goals"), Texts.end());
	ASSERT_TRUE(CanCopy());
	TakeClipboard();
	Click(FindByToolTip("Copy conversation plan to clipboard"));
	EXPECT_EQ(TakeClipboard(), Utf8(Plan));
}

TEST_F(FConversationPlanTest, EveryUpdateReturnsToTheTop)
{
	FString Long;
	for (int32 Line = 0; Line < 60; ++Line)
	{
		Long += FString::Printf(TEXT("- step %d\n"), Line);
	}
	Update(Long);
	Scroll(ScrollBox(), -5.0f);
	PumpFrame();
	ASSERT_GT(ScrollBox()->GetScrollOffset(), 0.0f);
	Update(Long + TEXT("- one more\n"));
	EXPECT_EQ(ScrollBox()->GetScrollOffset(), 0.0f);
}

class FCustomizeBehaviorTest : public FVelmoraWidgetTest
{
protected:
	using FField = FString UVelmoraSettings::*;
	struct FSection
	{
		const char* Label;
		const char* Placeholder;
		FField Field;
		const TCHAR* Key;
	};
	static constexpr FSection Sections[] = {
		{ "Project Description", "Describe your project (e.g., 'A first-person shooter set in a sci-fi environment')",
			&UVelmoraSettings::ProjectDescription, TEXT("ProjectDescription") },
		{ "Current Area of Focus", "What are you currently working on? (e.g., 'Player movement system')",
			&UVelmoraSettings::CurrentAreaOfFocus, TEXT("CurrentAreaOfFocus") },
		{ "Guidelines and Tips", "Coding standards, best practices, or tips for Velmora to follow", &UVelmoraSettings::GuidelinesAndTips,
			TEXT("GuidelinesAndTips") },
		{ "Constraints", "Any limitations or constraints Velmora should be aware of", &UVelmoraSettings::Constraints, TEXT("Constraints") },
	};

	void SetUp() override
	{
		FVelmoraWidgetTest::SetUp();
		IHostConfigStore::SetCurrent(nullptr);
		ClearSettings();
	}
	void TearDown() override
	{
		FVelmoraWidgetTest::TearDown();
		ClearSettings();
		IHostConfigStore::SetCurrent(nullptr);
	}
	static void ClearSettings()
	{
		for (const FSection& Section : Sections)
		{
			GetMutableDefault<UVelmoraSettings>()->*Section.Field = FString();
		}
	}
	/** What a program that starts now would read. */
	static std::string ReadSaved(const FSection& Section)
	{
		UVelmoraSettings* const Settings = GetMutableDefault<UVelmoraSettings>();
		FString Value(TEXT("<not saved>"));
		IHostConfigStore::GetCurrent()->Get(Settings->GetDefaultConfigFilename(), Settings->GetClass()->GetPathName(), Section.Key, Value);
		return Utf8(Value);
	}
	TArray<TSharedPtr<SMultiLineEditableTextBox>> ShowPanel()
	{
		const TSharedRef<SCustomizeBehavior> Panel = SNew(SCustomizeBehavior);
		Show(Panel);
		TArray<TSharedPtr<SMultiLineEditableTextBox>> Boxes;
		for (const TSharedRef<SWidget>& Box : FindByType("SMultiLineEditableTextBox"))
		{
			Boxes.Add(StaticCastSharedRef<SMultiLineEditableTextBox>(Box));
		}
		EXPECT_EQ(Boxes.Num(), 4);
		return Boxes;
	}
};

TEST_F(FCustomizeBehaviorTest, EachKeystrokeIsSaved)
{
	const TArray<TSharedPtr<SMultiLineEditableTextBox>> Boxes = ShowPanel();
	const FTextList Texts = VisibleTexts();
	EXPECT_NE(std::find(Texts.begin(), Texts.end(), "This information will be sent in every conversation to customize Velmora's behavior"),
		Texts.end());
	for (int32 Index = 0; Index < 4; ++Index)
	{
		const FSection& Section = Sections[Index];
		SCOPED_TRACE(Section.Label);
		EXPECT_NE(std::find(Texts.begin(), Texts.end(), Section.Label), Texts.end());
		EXPECT_EQ(Utf8(Boxes[Index]->GetHintText().ToString()), Section.Placeholder);
		EXPECT_TRUE(Boxes[Index]->GetText().IsEmpty());

		Click(Boxes[Index].ToSharedRef());
		TypeText("a");
		EXPECT_EQ(ReadSaved(Section), "a");
		TypeText("\n\"b\" = \xF0\x9F\x98\x80");
		EXPECT_EQ(ReadSaved(Section), "a\n\"b\" = \xF0\x9F\x98\x80");
		EXPECT_EQ(Utf8(GetDefault<UVelmoraSettings>()->*Section.Field), ReadSaved(Section));
	}
	// None has written into another's field, and clearing saves the empty text.
	PressKey("CTRL+A");
	PressKey("Delete");
	EXPECT_EQ(ReadSaved(Sections[3]), "");
	EXPECT_EQ(ReadSaved(Sections[0]), "a\n\"b\" = \xF0\x9F\x98\x80");
}

TEST_F(FCustomizeBehaviorTest, ShowsWhatWasSaved)
{
	UVelmoraSettings* const Settings = GetMutableDefault<UVelmoraSettings>();
	Settings->ProjectDescription = TEXT("one\ntwo");
	Settings->Constraints = TEXT("no");
	const TArray<TSharedPtr<SMultiLineEditableTextBox>> Boxes = ShowPanel();
	EXPECT_EQ(Utf8(Boxes[0]->GetText().ToString()), "one\ntwo");
	EXPECT_TRUE(Boxes[1]->GetText().IsEmpty());
	EXPECT_TRUE(Boxes[2]->GetText().IsEmpty());
	EXPECT_EQ(Utf8(Boxes[3]->GetText().ToString()), "no");
}

TEST_F(FCustomizeBehaviorTest, BoxesGrowWithTheirTextWithinLimits)
{
	const TArray<TSharedPtr<SMultiLineEditableTextBox>> Boxes = ShowPanel();
	const auto GetHeight = [&Boxes]() { return GetRect(*Boxes[0]).Height(); };
	EXPECT_NEAR(GetHeight(), 80.0f, 0.5f);
	Boxes[0]->SetText(FText::FromString(FString::ChrN(30, TEXT('\n'))));
	PumpFrame();
	PumpFrame();
	EXPECT_NEAR(GetHeight(), 150.0f, 0.5f);
}
