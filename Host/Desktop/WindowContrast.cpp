#include "WindowContrast.h"

#include "ForwardingWindow.h"
#include "Framework/Application/SlateApplication.h"

#include <cmath>

// Contrast is counted by the Web Content Accessibility Guidelines: (L1 + 0.05) / (L2 + 0.05), L being the relative luminance. Against
// black, 7 to 1 takes a luminance of 0.3, 3 to 1 one of 0.1; white against a surface of 0.18 is 4.5 to 1.

namespace
{
	constexpr double TextLuminance = 0.3;
	/** What is darker than this was chosen for a light surface, which is a dark one now. */
	constexpr double InvertedLuminance = 0.01;
	constexpr double DisabledLuminance = 0.1;
	/** Content of what is disabled is painted at 60 %, or marked so. */
	constexpr uint8 DisabledAlpha = 168;
	constexpr uint8 DisabledMarkAlpha = 254;
	constexpr double SurfaceLuminance = 0.18;
	/** Surfaces below are background. Of the look's own none is above. */
	constexpr double BackgroundLuminance = 0.035;
	/** Surfaces above are marks: a caret, a switch, something selected in white. */
	constexpr double LightLuminance = 0.5;
	/** What is chosen lies under a veil of the accent, which on black would hardly be seen. */
	constexpr FColor ChosenVeil(0x7C, 0xB9, 0xFF, 0x3D);
	constexpr FColor ChosenOutline(0xE6, 0xE6, 0xE6, 0xFF);

	bool bHighContrast = false;

	double ToLinear(uint8 Byte)
	{
		const double Value = Byte / 255.0;
		return Value <= 0.04045 ? Value / 12.92 : std::pow((Value + 0.055) / 1.055, 2.4);
	}

	uint8 ToByte(double Linear)
	{
		const double Value = Linear <= 0.0031308 ? Linear * 12.92 : 1.055 * std::pow(Linear, 1.0 / 2.4) - 0.055;
		return static_cast<uint8>(FMath::Clamp(FMath::RoundToInt32(Value * 255.0), 0, 255));
	}

	/** Solid, and mixed with white or with black in linear light. Rounded up, so that a byte less does not fall short of the goal. */
	FColor SetLuminance(const FColor& Color, double Wanted)
	{
		const double Luminance = FWindowContrast::GetLuminance(Color);
		const double White = Luminance < Wanted ? (Wanted - Luminance) / (1.0 - Luminance) : 0.0;
		const double Share = Luminance > Wanted ? Wanted / Luminance : 1.0;
		const auto Mix = [White, Share](uint8 Byte)
		{
			const double Linear = ToLinear(Byte) * Share;
			const uint8 Mixed = ToByte(Linear + (1.0 - Linear) * White);
			return (White > 0.0 || Share < 1.0) && Mixed < 255 ? static_cast<uint8>(Mixed + 1) : Mixed;
		};
		return FColor(Mix(Color.R), Mix(Color.G), Mix(Color.B), 255);
	}

	struct FContrastedWindow : public FForwardingWindow
	{
		using FForwardingWindow::FForwardingWindow;

		virtual void PaintAndPresent(const FSlateWindowElementList& Elements, const FSlateRect& Damage) override
		{
			if (!bHighContrast)
			{
				Window->PaintAndPresent(Elements, Damage);
				return;
			}
			FSlateWindowElementList Changed = Elements;
			const float LineWidth = FMath::Max(FMath::RoundToFloat(Window->GetScale()), 1.0f);
			Changed.ChangeElements([LineWidth](FSlateDrawElement& Element) { Change(Element, LineWidth); });
			Window->PaintAndPresent(Changed, Damage);
		}

		/** A box with an outline of no width, such as the thumb of a scroll bar. */
		static bool IsMark(const FSlateDrawElement& Element) { return Element.OutlineWidth <= 0.0f && Element.OutlineColor.A != 0; }

		/** @param LineWidth  Of an outline that there was not, pixels. */
		static void Change(FSlateDrawElement& Element, float LineWidth)
		{
			switch (Element.Type)
			{
			case ESlateDrawType::Glyphs:
				Element.Color = FWindowContrast::Brighten(Element.Color);
				break;
			case ESlateDrawType::Image:
				Element.Color = Element.bTintImage ? FWindowContrast::Brighten(Element.Color) : Element.Color;
				break;
			case ESlateDrawType::Box:
			case ESlateDrawType::RoundedBox:
				if (Element.Color == ChosenVeil && Element.OutlineColor.A == 0)
				{
					Element.OutlineColor = ChosenOutline;
					Element.OutlineWidth = LineWidth;
				}
				Element.Color = IsMark(Element) ? FWindowContrast::Brighten(Element.Color) : FWindowContrast::Darken(Element.Color);
				Element.OutlineColor = FWindowContrast::Brighten(Element.OutlineColor);
				break;
			case ESlateDrawType::Shadow:
			case ESlateDrawType::Chequer:
				break;
			}
		}
	};
}

double FWindowContrast::GetLuminance(const FColor& Color)
{
	return 0.2126 * ToLinear(Color.R) + 0.7152 * ToLinear(Color.G) + 0.0722 * ToLinear(Color.B);
}

// Mixed with white in linear light, as far as it takes. What is half transparent becomes solid: it would let the black through.
FColor FWindowContrast::Brighten(const FColor& Color)
{
	if (Color.A == 0)
	{
		return Color;
	}
	const double Luminance = GetLuminance(Color);
	if (Color.A <= DisabledAlpha || Color.A == DisabledMarkAlpha)
	{
		return SetLuminance(Color, DisabledLuminance);
	}
	if (Luminance < InvertedLuminance)
	{
		return FColor(255, 255, 255, 255);
	}
	return Luminance < TextLuminance ? SetLuminance(Color, TextLuminance) : FColor(Color.R, Color.G, Color.B, 255);
}

FColor FWindowContrast::Darken(const FColor& Color)
{
	const double Luminance = GetLuminance(Color);
	if (Color.A == 0 || Luminance >= LightLuminance)
	{
		// A light veil marks what the pointer is on; it stays a veil.
		return Color;
	}
	if (Luminance < BackgroundLuminance)
	{
		return FColor(0, 0, 0, Color.A);
	}
	const double Share = FMath::Min(SurfaceLuminance / Luminance, 1.0);
	const auto Scale = [Share](uint8 Byte)
	{
		const uint8 Scaled = ToByte(ToLinear(Byte) * Share);
		return Share < 1.0 && Scaled > 0 ? static_cast<uint8>(Scaled - 1) : Scaled;
	};
	return FColor(Scale(Color.R), Scale(Color.G), Scale(Color.B), Color.A);
}

TSharedRef<IHostWindow> FWindowContrast::Wrap(const TSharedRef<IHostWindow>& Window)
{
	return MakeShared<FContrastedWindow>(Window);
}

bool FWindowContrast::IsHigh()
{
	return bHighContrast;
}

void FWindowContrast::SetHigh(bool bHigh)
{
	if (bHighContrast != bHigh)
	{
		bHighContrast = bHigh;
		if (FSlateApplication::IsInitialized())
		{
			FSlateApplication::Get().GetMessageHandler().OnWindowExposed();
			FSlateApplication::Get().RequestFrame();
		}
	}
}
