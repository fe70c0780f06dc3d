#include "SharedParagraphs.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace
{
	/** Fonts and scales at a time. More come only from many changes of the scale; all are forgotten then. */
	constexpr std::size_t MaxSharedFonts = 64;
	/** So many texts are kept before those that nobody shows any more are looked for. */
	constexpr std::size_t FirstPrune = 256;

	/** Looks up without making a string. */
	struct FSharedTextHash
	{
		using is_transparent = void;
		std::size_t operator()(std::u16string_view Text) const { return std::hash<std::u16string_view>()(Text); }
	};

	struct FParagraphsOfFont
	{
		FSlateFontInfo Font;
		float Scale = 0.0f;
		std::unordered_map<std::u16string, TWeakPtr<ITextParagraph>, FSharedTextHash, std::equal_to<>> ByText;
		std::size_t PruneAt = FirstPrune;
	};

	FParagraphsOfFont& GetParagraphsOfFont(const FSlateFontInfo& Font, float Scale)
	{
		static std::vector<std::unique_ptr<FParagraphsOfFont>> Fonts;
		for (const std::unique_ptr<FParagraphsOfFont>& Known : Fonts)
		{
			if (Known->Scale == Scale && Known->Font == Font)
			{
				return *Known;
			}
		}
		if (Fonts.size() >= MaxSharedFonts)
		{
			Fonts.clear();
		}
		Fonts.push_back(std::make_unique<FParagraphsOfFont>());
		Fonts.back()->Font = Font;
		Fonts.back()->Scale = Scale;
		return *Fonts.back();
	}
}

TSharedRef<ITextParagraph> FSharedParagraphs::Get(FStringView Text, const FSlateFontInfo& Font, float Scale)
{
	FParagraphsOfFont& Paragraphs = GetParagraphsOfFont(Font, Scale);
	const std::u16string_view Key(Text.GetData() ? Text.GetData() : TEXT(""), static_cast<std::size_t>(Text.Len()));
	const auto Found = Paragraphs.ByText.find(Key);
	if (Found != Paragraphs.ByText.end())
	{
		if (const TSharedPtr<ITextParagraph> Shown = Found->second.Pin())
		{
			return Shown.ToSharedRef();
		}
	}
	const TSharedRef<ITextParagraph> Made = ITextShaper::Get().MakeParagraph(Text, Font, Scale);
	if (Found != Paragraphs.ByText.end())
	{
		Found->second = Made;
		return Made;
	}
	if (Paragraphs.ByText.size() >= Paragraphs.PruneAt)
	{
		std::erase_if(Paragraphs.ByText, [](const auto& Entry) { return !Entry.second.IsValid(); });
		Paragraphs.PruneAt = FMath::Max(FirstPrune, Paragraphs.ByText.size() * 2);
	}
	Paragraphs.ByText.emplace(Key, Made);
	return Made;
}
