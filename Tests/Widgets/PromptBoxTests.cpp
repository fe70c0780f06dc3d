#include "Widgets/PromptBox.h"

#include "Support/UiDriver.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"

#include <string>

/** A text box that has no argument for moves of its cursor, as an engine's might. */
class SQuietTextBox : public SMultiLineEditableTextBox
{
public:
	SLATE_BEGIN_ARGS(SQuietTextBox) {}
	SLATE_ATTRIBUTE(FText, Text)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs)
	{
		SMultiLineEditableTextBox::Construct(SMultiLineEditableTextBox::FArguments().Text(InArgs._Text));
	}
};

template <typename BoxType>
using FPromptBoxTest = FWidgetTest;

using FPromptBoxTypes = testing::Types<SMultiLineEditableTextBox, SQuietTextBox>;
TYPED_TEST_SUITE(FPromptBoxTest, FPromptBoxTypes);

TYPED_TEST(FPromptBoxTest, ReportsEachMoveOfTheCursorOnce)
{
	std::string Moves;
	TSharedPtr<TPromptBox<TypeParam>> Box;
	using FBox = TPromptBox<TypeParam>;
	this->Show(SAssignNew(Box, FBox,
		FOnPromptCursorMoved::CreateLambda(
			[&Moves](const FTextLocation& Location) {
				Moves += std::to_string(Location.GetLineIndex()) + "," + std::to_string(Location.GetOffset()) + " ";
			})).Text(FText::FromString(TEXT("one\ntwo"))));
	this->App().SetKeyboardFocus(Box);
	this->PumpFrame();
	this->PressKey("CTRL+Home");
	this->PumpFrame();
	Moves.clear();
	for (const char* Key : { "Right", "Down", "CTRL+End" })
	{
		this->PressKey(Key);
		this->PumpFrame();
	}
	EXPECT_EQ(Moves, "0,1 1,1 1,3 ");
}
