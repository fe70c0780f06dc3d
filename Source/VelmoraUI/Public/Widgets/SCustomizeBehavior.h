#pragma once

#include "CoreMinimal.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"
#include "Widgets/DeclarativeSyntaxSupport.h"
#include "Widgets/SCompoundWidget.h"

class SMultiLineEditableTextBox;
class UVelmoraSettings;

/**
 * The side panel with the four texts that the agent receives in every conversation. There is no button: every change is
 * written to the settings and saved at once.
 */
class VELMORAUI_API SCustomizeBehavior : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SCustomizeBehavior) {}
	SLATE_END_ARGS()

	/** Shows the texts that the settings hold now. */
	void Construct(const FArguments& InArgs);

private:
	TSharedRef<SWidget> BuildContent();
	TSharedRef<SWidget> BuildNote();
	TSharedRef<SWidget> BuildFieldSection(const FText& Label, const FText& Placeholder, TSharedPtr<SMultiLineEditableTextBox>& OutTextBox,
		TFunction<void(const FText&)> OnChanged);
	void LoadSavedValues();
	void OnProjectDescriptionChanged(const FText& Text);
	void OnCurrentAreaOfFocusChanged(const FText& Text);
	void OnGuidelinesAndTipsChanged(const FText& Text);
	void OnConstraintsChanged(const FText& Text);
	/** Without settings the text stays in its box and is not kept. */
	static void SaveText(FString UVelmoraSettings::*Field, const FText& Text);

	TSharedPtr<SMultiLineEditableTextBox> ProjectDescriptionBox;
	TSharedPtr<SMultiLineEditableTextBox> CurrentAreaOfFocusBox;
	TSharedPtr<SMultiLineEditableTextBox> GuidelinesAndTipsBox;
	TSharedPtr<SMultiLineEditableTextBox> ConstraintsBox;
};
