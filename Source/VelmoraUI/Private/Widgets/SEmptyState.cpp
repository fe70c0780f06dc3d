#include "Widgets/SEmptyState.h"

#include "Framework/Text/TextLayout.h"
#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"
#include "Widgets/WidgetLook.h"

void SEmptyState::Construct(const FArguments& InArgs)
{
	Title = InArgs._Title;
	Message = InArgs._Message;
	Icon = InArgs._Icon;

	// In a low tab the texts are taller than their place, and what stands above and below it must stay readable.
	SetClipping(EWidgetClipping::ClipToBounds);
	// clang-format off
	ChildSlot
	[
		SNew(SBox)
		.HAlign(HAlign_Center)
		.VAlign(VAlign_Center)
		.Padding(FMargin(32.0f))
		[
			SNew(SVerticalBox)
			+ SVerticalBox::Slot()
			.AutoHeight()
			.HAlign(HAlign_Center)
			.Padding(0.0f, 0.0f, 0.0f, 16.0f)
			[
				SNew(SImage)
				.Image(FAppStyle::GetBrush("Icons.Help"))
				.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextColorTertiary().CopyWithNewOpacity(0.5f)))
				.Visibility(VisibleIf(Icon != nullptr))
			]
			+ SVerticalBox::Slot()
			.AutoHeight()
			.HAlign(HAlign_Center)
			.Padding(0.0f, 0.0f, 0.0f, 8.0f)
			[
				SNew(STextBlock)
				.Text(Title)
				.Font(FVelmoraUIStyles::GetMediumTitleFont())
				.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextColorSecondary()))
				.Justification(ETextJustify::Center)
			]
			+ SVerticalBox::Slot()
			.AutoHeight()
			.HAlign(HAlign_Center)
			[
				SNew(STextBlock)
				.Text(Message)
				.Font(FVelmoraUIStyles::GetMessageBodyFont())
				.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextColorTertiary()))
				.Justification(ETextJustify::Center)
				.AutoWrapText(true)
			]
		]
	];
	// clang-format on
}
