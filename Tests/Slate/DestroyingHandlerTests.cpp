#include "Support/UiDriver.h"

#include "Host/HostClock.h"
#include "Host/HostDialogs.h"
#include "Misc/MessageDialog.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SComboBox.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

// Handlers that destroy the widget they belong to. What they prove shows under AddressSanitizer.
using FDestroyingHandlerTest = FWidgetTest;

TEST_F(FDestroyingHandlerTest, ADialogsLoopMayRemoveTheRowWhoseButtonOpenedIt)
{
	FHostDialogs::Install();
	FHostDialogs::SetAnswering(true);
	TSharedPtr<SScrollBox> List;
	Show(SAssignNew(List, SScrollBox));
	EAppReturnType::Type Answer = EAppReturnType::No;
	// clang-format off
	List->AddSlot()
	[
		SNew(SButton)
		.Tag("Ask")
		.ToolTipText(FText::FromString(TEXT("Asks first")))
		.OnClicked_Lambda([&Answer]()
		{
			Answer = FMessageDialog::Open(EAppMsgType::YesNo, FText::FromString(TEXT("Remove the row?")));
			return FReply::Handled();
		})
		[
			SNew(STextBlock).Text(FText::FromString(TEXT("Remove")))
		]
	];
	// clang-format on
	PumpFrame();
	TWeakPtr<SWidget> Row = FindByTag("Ask");
	int32 Frames = 0;
	App().SetFrameHook(
		[&]()
		{
			FHostClock::Advance(1.0 / 60.0);
			if (++Frames == 2)
			{
				List->ClearChildren();
			}
			else if (Frames == 4)
			{
				EXPECT_EQ(FHostDialogs::GetOpenDialogs().Num(), 1);
				EXPECT_TRUE(FHostDialogs::AnswerOpenDialog(TEXT("Yes")));
			}
			ASSERT_LT(Frames, 100) << "the dialog does not close";
		});
	const FVector2D Place = GetCenter(FindByTag("Ask"));
	ClickAt(Place);
	App().SetFrameHook(nullptr);
	EXPECT_EQ(Answer, EAppReturnType::Yes);
	PumpFrame();
	EXPECT_FALSE(Row.IsValid()) << "nothing keeps the removed row";
	FHostDialogs::SetAnswering(false);
	FHostDialogs::Uninstall();
}

TEST_F(FDestroyingHandlerTest, APickMayRemoveTheComboBoxItself)
{
	TArray<TSharedPtr<FString>> Options = { MakeShared<FString>(TEXT("One")), MakeShared<FString>(TEXT("Two")) };
	TSharedPtr<SBox> Holder;
	FString Picked;
	// clang-format off
	Show(SAssignNew(Holder, SBox)
		.HAlign(HAlign_Left)
		.VAlign(VAlign_Top)
		[
			SNew(SComboBox<TSharedPtr<FString>>)
			.Tag("Box")
			.OptionsSource(&Options)
			.OnGenerateWidget_Lambda([](TSharedPtr<FString> Item) -> TSharedRef<SWidget>
			{
				return SNew(STextBlock).Text(FText::FromString(*Item));
			})
			.OnSelectionChanged_Lambda([&](TSharedPtr<FString> Item, ESelectInfo::Type)
			{
				Picked = Item ? *Item : FString();
				Holder->SetContent(SNew(STextBlock).Text(FText::FromString(TEXT("Gone"))));
			})
			[
				SNew(STextBlock).Text(FText::FromString(TEXT("Pick")))
			]
		]);
	// clang-format on
	TWeakPtr<SWidget> Combo = FindByTag("Box");
	Click(FindByTag("Box"));
	Click(FindByText("Two"));
	EXPECT_EQ(Utf8(Picked), "Two");
	PumpSeconds(0.1);
	EXPECT_EQ(VisibleTexts(), FTextList{ "Gone" });
	EXPECT_FALSE(Combo.IsValid());
}
