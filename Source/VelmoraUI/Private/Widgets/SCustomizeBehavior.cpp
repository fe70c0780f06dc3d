#include "Widgets/SCustomizeBehavior.h"

#include "Framework/Text/PlainTextLayoutMarshaller.h"
#include "Misc/ConfigCacheIni.h"
#include "Settings/VelmoraSettings.h"
#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "Styling/CoreStyle.h"
#include "UObject/ObjectMacros.h"
#include "UObject/UObjectGlobals.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "VelmoraUI"

void SCustomizeBehavior::Construct(const FArguments& InArgs)
{
	// clang-format off
	ChildSlot
	[
		SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush("NoBorder"))
		.Padding(FMargin(4.0f))
		[
			SNew(SScrollBox)
			+ SScrollBox::Slot()
			.Padding(0.0f)
			[
				BuildContent()
			]
		]
	];
	// clang-format on

	LoadSavedValues();
}

TSharedRef<SWidget> SCustomizeBehavior::BuildContent()
{
	const TSharedRef<SVerticalBox> Content = SNew(SVerticalBox);
	const auto Add = [&Content](const TSharedRef<SWidget>& Section, float Below)
	{ Content->AddSlot().AutoHeight().Padding(0.0f, 0.0f, 0.0f, Below)[Section]; };
	constexpr float BelowTitle = 8.0f;
	constexpr float BelowField = 20.0f;

	// The title is without words until a translation brings some.
	Add(SNew(STextBlock).Text(LOCTEXT("CustomizeBehaviorTitle", "")).Font(FVelmoraUIStyles::GetSmallTitleFont()), BelowTitle);
	Add(BuildFieldSection(LOCTEXT("ProjectDescriptionLabel", "Project Description"),
			LOCTEXT("ProjectDescriptionPlaceholder", "Describe your project (e.g., 'A first-person shooter set in a sci-fi environment')"),
			ProjectDescriptionBox, [this](const FText& Text) { OnProjectDescriptionChanged(Text); }),
		BelowField);
	Add(BuildFieldSection(LOCTEXT("CurrentAreaOfFocusLabel", "Current Area of Focus"),
			LOCTEXT("CurrentAreaOfFocusPlaceholder", "What are you currently working on? (e.g., 'Player movement system')"),
			CurrentAreaOfFocusBox, [this](const FText& Text) { OnCurrentAreaOfFocusChanged(Text); }),
		BelowField);
	Add(BuildFieldSection(LOCTEXT("GuidelinesAndTipsLabel", "Guidelines and Tips"),
			LOCTEXT("GuidelinesAndTipsPlaceholder", "Coding standards, best practices, or tips for Velmora to follow"),
			GuidelinesAndTipsBox, [this](const FText& Text) { OnGuidelinesAndTipsChanged(Text); }),
		BelowField);
	Add(BuildFieldSection(LOCTEXT("ConstraintsLabel", "Constraints"),
			LOCTEXT("ConstraintsPlaceholder", "Any limitations or constraints Velmora should be aware of"), ConstraintsBox,
			[this](const FText& Text) { OnConstraintsChanged(Text); }),
		BelowField);
	Add(BuildNote(), BelowField);
	return Content;
}

TSharedRef<SWidget> SCustomizeBehavior::BuildNote()
{
	return SNew(STextBlock)
		.Text(LOCTEXT("CustomizeBehaviorSubtitle", "This information will be sent in every conversation to customize Velmora's behavior"))
		.Font(FCoreStyle::GetDefaultFontStyle("Regular", 9))
		.ColorAndOpacity(FSlateColor(FLinearColor(0.7f, 0.7f, 0.7f, 1.0f)))
		.AutoWrapText(true);
}

TSharedRef<SWidget> SCustomizeBehavior::BuildFieldSection(const FText& Label, const FText& Placeholder,
	TSharedPtr<SMultiLineEditableTextBox>& OutTextBox, TFunction<void(const FText&)> OnChanged)
{
	// clang-format off
	return SNew(SVerticalBox)
		+ SVerticalBox::Slot()
		.AutoHeight()
		.Padding(0.0f, 0.0f, 0.0f, 8.0f)
		[
			SNew(STextBlock)
			.Text(Label)
			.Font(FCoreStyle::GetDefaultFontStyle("Bold", 10))
			.ColorAndOpacity(FSlateColor(FLinearColor(1.0f, 1.0f, 1.0f, 1.0f)))
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			SNew(SBox)
			.MinDesiredHeight(80.0f)
			.MaxDesiredHeight(150.0f)
			[
				SAssignNew(OutTextBox, SMultiLineEditableTextBox)
				.HintText(Placeholder)
				.Font(FCoreStyle::GetDefaultFontStyle("Regular", 9))
				.AutoWrapText(true)
				.Marshaller(FPlainTextLayoutMarshaller::Create())
				.BackgroundColor(FSlateColor(FLinearColor(0.0f, 0.0f, 0.0f, 0.3f)))
				.ForegroundColor(FSlateColor(FLinearColor(0.9f, 0.9f, 0.9f, 1.0f)))
				.OnTextChanged_Lambda([OnChanged](const FText& Text) { OnChanged(Text); })
			]
		];
	// clang-format on
}

// Setting a text reports a change, which saves what was just read: harmless, and the boxes need no guard.
void SCustomizeBehavior::LoadSavedValues()
{
	const UVelmoraSettings* Settings = GetMutableDefault<UVelmoraSettings>();
	if (!Settings)
	{
		return;
	}
	const auto Load = [](const TSharedPtr<SMultiLineEditableTextBox>& Box, const FString& Saved)
	{
		if (Box.IsValid() && !Saved.IsEmpty())
		{
			Box->SetText(FText::FromString(Saved));
		}
	};
	Load(ProjectDescriptionBox, Settings->ProjectDescription);
	Load(CurrentAreaOfFocusBox, Settings->CurrentAreaOfFocus);
	Load(GuidelinesAndTipsBox, Settings->GuidelinesAndTips);
	Load(ConstraintsBox, Settings->Constraints);
}

// With every key. The next turn reads the settings and asks nobody whether the panel is still open.
void SCustomizeBehavior::SaveText(FString UVelmoraSettings::*Field, const FText& Text)
{
	if (UVelmoraSettings* Settings = GetMutableDefault<UVelmoraSettings>())
	{
		Settings->*Field = Text.ToString();
		Settings->SaveConfig(CPF_Config, *Settings->GetDefaultConfigFilename(), GConfig);
	}
}

void SCustomizeBehavior::OnProjectDescriptionChanged(const FText& Text)
{
	SaveText(&UVelmoraSettings::ProjectDescription, Text);
}

void SCustomizeBehavior::OnCurrentAreaOfFocusChanged(const FText& Text)
{
	SaveText(&UVelmoraSettings::CurrentAreaOfFocus, Text);
}

void SCustomizeBehavior::OnGuidelinesAndTipsChanged(const FText& Text)
{
	SaveText(&UVelmoraSettings::GuidelinesAndTips, Text);
}

void SCustomizeBehavior::OnConstraintsChanged(const FText& Text)
{
	SaveText(&UVelmoraSettings::Constraints, Text);
}

#undef LOCTEXT_NAMESPACE
