#include "Text/PangoTextShaper.h"

#include <functional>

namespace
{
	/** A handful of fonts at one scale is normal; a zoom that is dragged makes more, and the old ones are not kept. */
	constexpr size_t MaxFonts = 128;
}

FPangoTextShaper::FPangoTextShaper()
	: System(std::make_shared<FFontSystem>())
{
}

size_t FPangoTextShaper::FFontKeyHash::operator()(const FFontKey& Key) const
{
	return GetTypeHash(Key.Info) * 31u + std::hash<float>()(Key.Scale);
}

const std::shared_ptr<FShaperFont>& FPangoTextShaper::FindFont(const FSlateFontInfo& Font, float Scale)
{
	const FFontKey Key{ Font, Scale };
	const auto Found = Fonts.find(Key);
	if (Found != Fonts.end())
	{
		return Found->second;
	}
	if (Fonts.size() >= MaxFonts)
	{
		Fonts.clear();
	}
	return Fonts.emplace(Key, std::make_shared<FShaperFont>(System, Font, Scale)).first->second;
}

TSharedRef<ITextParagraph> FPangoTextShaper::MakeParagraph(FStringView Text, const FSlateFontInfo& Font, float Scale)
{
	return MakeShared<FTextParagraph>(FindFont(Font, Scale), Text);
}

FFontLineMetrics FPangoTextShaper::GetLineMetrics(const FSlateFontInfo& Font, float Scale)
{
	return FindFont(Font, Scale)->GetMetrics();
}

const FTextShaperCounters& FPangoTextShaper::GetCounters() const
{
	return System->GetCounters();
}
