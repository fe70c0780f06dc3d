#pragma once

#include "CoreMinimal.h"
#include "Math/Color.h"
#include "Styling/WidgetStyle.h"

/** A colour of its own, or one of those that a widget inherits. */
struct FSlateColor
{
	FSlateColor() = default;
	FSlateColor(const FLinearColor& InColor)
		: SpecifiedColor(InColor)
	{
	}
	FSlateColor(const FColor& InColor)
		: SpecifiedColor(FLinearColor(InColor))
	{
	}
	static FSlateColor UseForeground() { return FSlateColor(ERule::Foreground); }
	static FSlateColor UseSubduedForeground() { return FSlateColor(ERule::Subdued); }

	/** White unless a colour was given. */
	const FLinearColor& GetSpecifiedColor() const { return SpecifiedColor; }
	const FLinearColor& GetColor(const FWidgetStyle& Style) const
	{
		switch (Rule)
		{
		case ERule::Foreground:
			return Style.GetForegroundColor();
		case ERule::Subdued:
			return Style.GetSubduedForegroundColor();
		case ERule::Specified:
			break;
		}
		return SpecifiedColor;
	}
	bool operator==(const FSlateColor& Other) const { return Rule == Other.Rule && SpecifiedColor == Other.SpecifiedColor; }
	bool operator!=(const FSlateColor& Other) const { return !(*this == Other); }

private:
	enum class ERule : uint8
	{
		Specified,
		Foreground,
		Subdued,
	};
	explicit FSlateColor(ERule InRule)
		: Rule(InRule)
	{
	}
	FLinearColor SpecifiedColor = FLinearColor(1.0f, 1.0f, 1.0f, 1.0f);
	ERule Rule = ERule::Specified;
};
