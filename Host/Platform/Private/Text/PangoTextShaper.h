#pragma once

#include "Text/TextParagraph.h"

/** The process's shaper over Pango. See ITextShaper. */
class FPangoTextShaper final : public ITextShaper
{
public:
	FPangoTextShaper();

	virtual TSharedRef<ITextParagraph> MakeParagraph(FStringView Text, const FSlateFontInfo& Font, float Scale) override;
	virtual FFontLineMetrics GetLineMetrics(const FSlateFontInfo& Font, float Scale) override;
	virtual const FTextShaperCounters& GetCounters() const override;

private:
	struct FFontKey
	{
		FSlateFontInfo Info;
		float Scale = 1.0f;
		bool operator==(const FFontKey& Other) const { return Info == Other.Info && Scale == Other.Scale; }
	};
	struct FFontKeyHash
	{
		size_t operator()(const FFontKey& Key) const;
	};
	const std::shared_ptr<FShaperFont>& FindFont(const FSlateFontInfo& Font, float Scale);

	std::shared_ptr<FFontSystem> System;
	std::unordered_map<FFontKey, std::shared_ptr<FShaperFont>, FFontKeyHash> Fonts;
};
