#pragma once

#include "CoreMinimal.h"
#include "Misc/Attribute.h"
#include "Styling/SlateColor.h"
#include "Templates/Function.h"
#include "Widgets/SWidget.h"

/** What the program's own pages of settings are made of, so that they look as the pages of properties do. Game thread. */
namespace SettingRows
{
	/** Widest value, units. */
	constexpr float MaxValueWidth = 560.0f;

	TSharedRef<SWidget> MakeGroupHeading(const FText& Text);

	/**
	 * The name at the left, its value at the right; every second row is a shade lighter.
	 * @param Complaint  Stands below the value while it is not empty.
	 */
	TSharedRef<SWidget> MakeRow(const FText& Label, const FText& ToolTip, const TSharedRef<SWidget>& Value, bool bOdd,
		const TAttribute<FText>& Complaint = TAttribute<FText>());

	/** A disc of 8 and a word beside it. */
	TSharedRef<SWidget> MakeState(const TAttribute<FSlateColor>& Color, const TAttribute<FText>& Word);

	/** A button that works while the test holds. The tag names it to scripts and tests. */
	TSharedRef<SWidget> MakeButton(const char* Tag, const TAttribute<FText>& Text, const FText& ToolTip, TFunction<void()> OnClicked,
		const TAttribute<bool>& IsEnabled = true);

	/** A sentence in the subdued colour that wraps. */
	TSharedRef<SWidget> MakeNote(const TAttribute<FText>& Text);

	// Colours of a state, beside its word.
	FSlateColor GetReadyColor();
	FSlateColor GetNeedsColor();
	FSlateColor GetFailedColor();
	FSlateColor GetOffColor();
}
