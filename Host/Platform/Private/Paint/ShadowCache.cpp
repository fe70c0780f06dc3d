#include "Paint/PaintCaches.h"

#include <algorithm>
#include <cmath>
#include <vector>

// Shadows are blurred once for a radius and a blur and then stretched: corners are kept, sides repeat, so one small mask
// serves boxes of every size.

namespace
{
	/** Coverage of a rounded rectangle, placed Margin pixels inside its mask. */
	void FillShape(FPixelMask& Mask, int32 Margin, float Radius)
	{
		const float Width = static_cast<float>(Mask.Width - 2 * Margin);
		const float Height = static_cast<float>(Mask.Height - 2 * Margin);
		Radius = std::min(Radius, std::min(Width, Height) * 0.5f);
		for (int32 Y = Margin; Y < Mask.Height - Margin; ++Y)
		{
			for (int32 X = Margin; X < Mask.Width - Margin; ++X)
			{
				const float CentreX = static_cast<float>(X - Margin) + 0.5f;
				const float CentreY = static_cast<float>(Y - Margin) + 0.5f;
				const float DX = Radius - std::min(CentreX, Width - CentreX);
				const float DY = Radius - std::min(CentreY, Height - CentreY);
				const float Distance = DX > 0.0f && DY > 0.0f ? Radius - std::sqrt(DX * DX + DY * DY) : 1.0f;
				Mask.Data[Y * Mask.Width + X] = static_cast<uint8>(std::clamp(Distance + 0.5f, 0.0f, 1.0f) * 255.0f + 0.5f);
			}
		}
	}

	std::vector<float> MakeBell(int32 Blur)
	{
		// The blur extent is two standard deviations: beyond it a shadow cannot be seen.
		const float Sigma = static_cast<float>(Blur) * 0.5f;
		std::vector<float> Weights(static_cast<size_t>(Blur) * 2 + 1);
		float Sum = 0.0f;
		for (int32 Index = -Blur; Index <= Blur; ++Index)
		{
			const float Weight = std::exp(-0.5f * static_cast<float>(Index * Index) / (Sigma * Sigma));
			Weights[static_cast<size_t>(Index + Blur)] = Weight;
			Sum += Weight;
		}
		for (float& Weight : Weights)
		{
			Weight /= Sum;
		}
		return Weights;
	}

	/** One direction: along rows, or along columns. */
	void BlurMask(FPixelMask& Mask, const std::vector<float>& Weights, bool bRows)
	{
		const int32 Blur = static_cast<int32>(Weights.size()) / 2;
		const int32 Length = bRows ? Mask.Width : Mask.Height;
		const int32 Lines = bRows ? Mask.Height : Mask.Width;
		const int32 Step = bRows ? 1 : Mask.Width;
		std::vector<float> Line(static_cast<size_t>(Length));
		for (int32 Index = 0; Index < Lines; ++Index)
		{
			uint8* const First = Mask.Data.GetData() + (bRows ? Index * Mask.Width : Index);
			for (int32 Position = 0; Position < Length; ++Position)
			{
				float Sum = 0.0f;
				for (int32 Tap = std::max(-Blur, -Position); Tap <= std::min(Blur, Length - 1 - Position); ++Tap)
				{
					Sum += Weights[static_cast<size_t>(Tap + Blur)] * static_cast<float>(First[(Position + Tap) * Step]);
				}
				Line[static_cast<size_t>(Position)] = Sum;
			}
			for (int32 Position = 0; Position < Length; ++Position)
			{
				First[Position * Step] = static_cast<uint8>(std::min(255.0f, Line[static_cast<size_t>(Position)] + 0.5f));
			}
		}
	}
}

const FPixelMask& FShadowCache::Find(int32 Width, int32 Height, float Radius, int32 Blur)
{
	Blur = std::clamp(Blur, 0, 128);
	Radius = std::clamp(Radius, 0.0f, 128.0f);
	// From here on the middle is solid and can be stretched.
	const int32 Solid = 2 * (Blur + static_cast<int32>(std::ceil(Radius))) + 1;
	Width = std::clamp(Width, 1, Solid);
	Height = std::clamp(Height, 1, Solid);
	for (auto Entry = Entries.begin(); Entry != Entries.end(); ++Entry)
	{
		if (Entry->Width == Width && Entry->Height == Height && Entry->Blur == Blur && Entry->Radius == Radius)
		{
			Entries.splice(Entries.begin(), Entries, Entry);
			return Entries.front().Mask;
		}
	}
	if (Entries.size() >= MaxMasks)
	{
		Entries.pop_back();
	}
	FEntry& Entry = Entries.emplace_front();
	Entry.Width = Width;
	Entry.Height = Height;
	Entry.Blur = Blur;
	Entry.Radius = Radius;
	Entry.Mask.Width = Width + 2 * Blur;
	Entry.Mask.Height = Height + 2 * Blur;
	Entry.Mask.Data.SetNumZeroed(Entry.Mask.Width * Entry.Mask.Height);
	FillShape(Entry.Mask, Blur, Radius);
	if (Blur > 0)
	{
		const std::vector<float> Weights = MakeBell(Blur);
		BlurMask(Entry.Mask, Weights, true);
		BlurMask(Entry.Mask, Weights, false);
	}
	return Entry.Mask;
}
