#pragma once

#include "CoreMinimal.h"
#include "Math/Color.h"

/** What a widget inherits while painting: the product of all tints and opacities, and the colour of foreground things. */
class FWidgetStyle
{
public:
	FWidgetStyle() = default;
	const FLinearColor& GetColorAndOpacityTint() const { return ColorAndOpacityTint; }
	const FLinearColor& GetForegroundColor() const { return ForegroundColor; }
	const FLinearColor& GetSubduedForegroundColor() const { return SubduedForeground; }
	FWidgetStyle& BlendColorAndOpacityTint(const FLinearColor& Tint)
	{
		ColorAndOpacityTint = FLinearColor(
			ColorAndOpacityTint.R * Tint.R, ColorAndOpacityTint.G * Tint.G, ColorAndOpacityTint.B * Tint.B, ColorAndOpacityTint.A * Tint.A);
		return *this;
	}
	FWidgetStyle& BlendOpacity(float Opacity)
	{
		ColorAndOpacityTint.A *= Opacity;
		return *this;
	}
	FWidgetStyle& SetForegroundColor(const FLinearColor& Color)
	{
		ForegroundColor = Color;
		return *this;
	}

private:
	FLinearColor ColorAndOpacityTint = FLinearColor(1.0f, 1.0f, 1.0f, 1.0f);
	FLinearColor ForegroundColor = FLinearColor(FColor(0xCB, 0xCB, 0xCB, 0xFF));
	FLinearColor SubduedForeground = FLinearColor(FColor(0x99, 0x99, 0x99, 0xFF));
};
