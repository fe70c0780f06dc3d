#include "Text/ShaperFont.h"

#include "Host/HostUtf8.h"

#include <algorithm>
#include <cmath>

// One font at one size: its metrics and the words shaped with it. Shaping is by far the dearest step of laying out, and
// the same words come again and again, so every word is shaped once and shared. Two shortcuts carry most text: words of
// plain ASCII skip itemising, since one font covers them all, and words of letters and digits skip the search for places
// to break.
//
// Fonts are asked for grey antialiasing, slight hinting and whole-pixel advances, whatever the desktop is set to: a
// picture must look the same on every machine.

namespace
{
	float ToPixels(int PangoUnits)
	{
		return static_cast<float>(PangoUnits) / PANGO_SCALE;
	}

	int16 ToShortPixels(int PangoUnits)
	{
		return static_cast<int16>(std::clamp(PANGO_PIXELS(PangoUnits), -32768, 32767));
	}

	PangoFontDescription* MakeDescription(const FSlateFontInfo& Info, float PixelSize)
	{
		PangoFontDescription* Description = pango_font_description_new();
		pango_font_description_set_family_static(Description, Info.IsMonospace() ? "Noto Sans Mono" : "Roboto");
		pango_font_description_set_weight(Description, Info.IsBold() ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
		pango_font_description_set_style(Description, Info.IsItalic() ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
		pango_font_description_set_absolute_size(Description, static_cast<double>(PixelSize) * PANGO_SCALE);
		return Description;
	}

	/** Words for which no table need be asked: letters and digits, with marks around that never part from them. */
	bool IsUnbreakable(TextUnits::FView Text)
	{
		size_t First = 0;
		size_t Last = Text.size();
		while (First < Last && TextUnits::FView(TEXT("([{\"'")).find(Text[First]) != TextUnits::FView::npos)
		{
			++First;
		}
		while (Last > First && TextUnits::FView(TEXT(".,;:!?)]}\"'")).find(Text[Last - 1]) != TextUnits::FView::npos)
		{
			--Last;
		}
		for (size_t Index = First; Index < Last; ++Index)
		{
			const TCHAR Unit = Text[Index];
			const bool bLetter = (Unit >= TEXT('a') && Unit <= TEXT('z')) || (Unit >= TEXT('A') && Unit <= TEXT('Z'));
			if (!bLetter && !(Unit >= TEXT('0') && Unit <= TEXT('9')) && Unit != TEXT('_'))
			{
				return false;
			}
		}
		return true;
	}
}

FFontSystem::FFontSystem()
	: FontMap(pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT))
{
	check(FontMap); // Cairo on this platform is always built with FreeType.
}

FFontSystem::~FFontSystem()
{
	Fonts.clear();
	g_object_unref(FontMap);
}

std::shared_ptr<const FPlatformFont> FFontSystem::FindOrAdd(PangoFont* Font)
{
	std::shared_ptr<const FPlatformFont>& Entry = Fonts[Font];
	if (!Entry)
	{
		Entry = std::make_shared<const FPlatformFont>(Font);
	}
	return Entry;
}

// 1. Size, and the font of that size. 2. Metrics in whole pixels. 3. Whether one font covers ASCII.
FShaperFont::FShaperFont(std::shared_ptr<FFontSystem> InSystem, const FSlateFontInfo& Info, float Scale)
	: System(std::move(InSystem))
{
	// A font of no size, or of the size of a wall, is a slip of the caller that must not take the process down.
	const float PixelSize = std::clamp(Info.Size * 96.0f / 72.0f * Scale, 1.0f, 2000.0f);
	LetterSpace = std::round(PixelSize * static_cast<float>(Info.LetterSpacing) / 1000.0f);

	Context = pango_font_map_create_context(System->GetFontMap());
	// Fallback for Han characters would otherwise follow the locale of the process.
	Language = pango_language_from_string("en");
	pango_context_set_language(Context, Language);
	pango_context_set_base_dir(Context, PANGO_DIRECTION_LTR);
	pango_context_set_round_glyph_positions(Context, TRUE);
	cairo_font_options_t* Options = cairo_font_options_create();
	cairo_font_options_set_antialias(Options, CAIRO_ANTIALIAS_GRAY);
	cairo_font_options_set_hint_style(Options, CAIRO_HINT_STYLE_SLIGHT);
	cairo_font_options_set_hint_metrics(Options, CAIRO_HINT_METRICS_ON);
	pango_cairo_context_set_font_options(Context, Options);
	cairo_font_options_destroy(Options);
	PangoFontDescription* Description = MakeDescription(Info, PixelSize);
	pango_context_set_font_description(Context, Description);

	PangoFontMetrics* FontMetrics = pango_context_get_metrics(Context, Description, Language);
	Metrics.Ascent = std::ceil(ToPixels(pango_font_metrics_get_ascent(FontMetrics)));
	Metrics.Descent = std::ceil(ToPixels(pango_font_metrics_get_descent(FontMetrics)));
	Metrics.LineHeight = std::max(Metrics.Ascent + Metrics.Descent, std::round(ToPixels(pango_font_metrics_get_height(FontMetrics))));
	Metrics.LineThickness = std::max(1.0f, std::round(ToPixels(pango_font_metrics_get_underline_thickness(FontMetrics))));
	Metrics.UnderlineOffset = std::max(1.0f, std::round(-ToPixels(pango_font_metrics_get_underline_position(FontMetrics))));
	Metrics.StrikeOffset = std::round(ToPixels(pango_font_metrics_get_strikethrough_position(FontMetrics)));
	pango_font_metrics_unref(FontMetrics);
	pango_font_description_free(Description);

	NoAttributes = pango_attr_list_new();
	Scratch = pango_glyph_string_new();
	AsciiPairs.resize(128 * 128);

	const char Sample[] = "abcXYZ089";
	GList* Items = pango_itemize_with_base_dir(Context, PANGO_DIRECTION_LTR, Sample, 0, sizeof(Sample) - 1, NoAttributes, nullptr);
	if (Items && !Items->next)
	{
		PangoItem* Item = static_cast<PangoItem*>(Items->data);
		bool bCovered = true;
		for (gunichar Character = 0x21; Character < 0x7F; ++Character)
		{
			bCovered = bCovered && pango_font_has_char(Item->analysis.font, Character);
		}
		if (bCovered)
		{
			AsciiItem = pango_item_copy(Item);
		}
	}
	g_list_free_full(Items, [](gpointer Item) { pango_item_free(static_cast<PangoItem*>(Item)); });
	BlankAdvance = Shape(TextUnits::FView(TEXT(" "), 1))->GetAdvance();
}

FShaperFont::~FShaperFont()
{
	if (AsciiItem)
	{
		pango_item_free(AsciiItem);
	}
	pango_glyph_string_free(Scratch);
	pango_attr_list_unref(NoAttributes);
	g_object_unref(Context);
}

FTextWordRef FShaperFont::GetWord(TextUnits::FView Text)
{
	const auto Found = Words.find(Text);
	if (Found != Words.end())
	{
		return Found->second;
	}
	if (Words.size() >= NextDrop)
	{
		DropUnusedWords();
	}
	FTextWordRef Word = Shape(Text);
	Words.emplace(TextUnits::FView(Word->Text), Word);
	return Word;
}

// The table is bounded: a program that runs for weeks meets every identifier of a project. It follows what texts hold, or the times
// and numbers of all that was ever shown would stay up to that bound.
void FShaperFont::DropUnusedWords()
{
	for (auto Entry = Words.begin(); Entry != Words.end();)
	{
		Entry = Entry->second.IsShared() ? std::next(Entry) : Words.erase(Entry);
	}
	// Words in use by texts live on in them; forgetting them here costs at most shaping them a second time.
	if (Words.size() > MaxWords / 2)
	{
		Words.clear();
	}
	NextDrop = std::clamp(2 * Words.size(), FewWords, MaxWords);
}

FTextWordRef FShaperFont::Shape(TextUnits::FView Text)
{
	++System->GetCounters().WordsShaped;
	auto Word = std::make_unique<FTextWord>();
	Word->Text = Text;
	Word->Offsets.resize(Text.size() + 1);
	Word->Glyphs.reserve(Text.size());

	std::string Utf8;
	bool bAscii = true;
	for (const TCHAR Unit : Text)
	{
		const uint32 Drawn = TextUnits::GetDrawn(Unit);
		bAscii = bAscii && Drawn < 0x80;
		HostAppendUtf8(Utf8, Drawn);
	}

	float X = 0.0f;
	if (bAscii && AsciiItem)
	{
		ShapeItem(*Word, Utf8, 0, static_cast<int32>(Utf8.size()), AsciiItem->analysis, 0, static_cast<int32>(Text.size()), X);
	}
	else
	{
		GList* Items = pango_itemize_with_base_dir(
			Context, PANGO_DIRECTION_LTR, Utf8.c_str(), 0, static_cast<int>(Utf8.size()), NoAttributes, nullptr);
		int32 Unit = 0;
		for (const GList* Node = Items; Node; Node = Node->next)
		{
			const PangoItem* Item = static_cast<const PangoItem*>(Node->data);
			ShapeItem(*Word, Utf8, Item->offset, Item->length, Item->analysis, Unit, Item->num_chars, X);
			Unit += Item->num_chars;
		}
		g_list_free_full(Items, [](gpointer Item) { pango_item_free(static_cast<PangoItem*>(Item)); });
	}
	Word->Offsets.back() = X;
	Word->Glyphs.shrink_to_fit();

	if (!IsUnbreakable(Text))
	{
		std::vector<int32> Breaks;
		FindBreaks(Text, Breaks);
		Word->Breaks.assign(Breaks.begin(), Breaks.end());
	}
	return FTextWordRef(std::move(Word));
}

// Pango's glyphs into ours: positions relative to the word, one offset for each unit, so that a caret can stand before
// it.
void FShaperFont::ShapeItem(FTextWord& Word, const std::string& Utf8, int32 Offset, int32 Length, const PangoAnalysis& Analysis,
	int32 FirstUnit, int32 UnitCount, float& X)
{
	pango_shape_with_flags(
		Utf8.c_str() + Offset, Length, Utf8.c_str(), static_cast<int>(Utf8.size()), &Analysis, Scratch, PANGO_SHAPE_ROUND_POSITIONS);
	const std::shared_ptr<const FPlatformFont> Font = System->FindOrAdd(Analysis.font);
	if (Word.Parts.empty() || Word.Parts.back().Font != Font)
	{
		Word.Parts.push_back(FWordPart{ Font, static_cast<int32>(Word.Glyphs.size()) });
	}
	Word.InkAbove = std::max(Word.InkAbove, Font->GetAscent());
	Word.InkBelow = std::max(Word.InkBelow, Font->GetDescent());

	const char* Cursor = Utf8.c_str() + Offset;
	int32 Unit = FirstUnit;
	const int32 EndUnit = FirstUnit + UnitCount;
	for (int32 Glyph = 0; Glyph < Scratch->num_glyphs;)
	{
		// A cluster is one or more glyphs for one or more characters; its characters share its width.
		const int32 Cluster = Scratch->log_clusters[Glyph];
		const float Left = X;
		for (; Glyph < Scratch->num_glyphs && Scratch->log_clusters[Glyph] == Cluster; ++Glyph)
		{
			const PangoGlyphInfo& Info = Scratch->glyphs[Glyph];
			if (Info.glyph != PANGO_GLYPH_EMPTY)
			{
				FWordGlyph& Added = Word.Glyphs.emplace_back();
				Added.Index = Info.glyph;
				Added.X = static_cast<int16>(std::clamp(std::lround(X) + PANGO_PIXELS(Info.geometry.x_offset), -32768L, 32767L));
				Added.Y = ToShortPixels(Info.geometry.y_offset);
			}
			X += ToPixels(Info.geometry.width);
		}
		const int32 ClusterEnd = Glyph < Scratch->num_glyphs ? Scratch->log_clusters[Glyph] : Length;
		const int32 ClusterUnits = static_cast<int32>(g_utf8_pointer_to_offset(Cursor, Utf8.c_str() + Offset + ClusterEnd));
		Cursor = Utf8.c_str() + Offset + ClusterEnd;
		const float Width = X - Left;
		for (int32 Index = 0; Index < ClusterUnits && Unit < EndUnit; ++Index, ++Unit)
		{
			Word.Offsets[static_cast<size_t>(Unit)] = Left +
				std::round(Width * static_cast<float>(Index) / static_cast<float>(ClusterUnits)) + LetterSpace * static_cast<float>(Index);
		}
		X += LetterSpace * static_cast<float>(ClusterUnits);
	}
	for (; Unit < EndUnit; ++Unit)
	{
		Word.Offsets[static_cast<size_t>(Unit)] = X;
	}
}

void FShaperFont::FindBreaks(TextUnits::FView Text, std::vector<int32>& OutBreaks) const
{
	std::string Utf8;
	for (const TCHAR Unit : Text)
	{
		HostAppendUtf8(Utf8, TextUnits::GetDrawn(Unit));
	}
	std::vector<PangoLogAttr> Attributes(Text.size() + 1);
	pango_get_log_attrs(Utf8.c_str(), static_cast<int>(Utf8.size()), 0, Language, Attributes.data(), static_cast<int>(Attributes.size()));
	for (size_t Index = 1; Index < Text.size(); ++Index)
	{
		if (Attributes[Index].is_line_break)
		{
			OutBreaks.push_back(static_cast<int32>(Index));
		}
	}
}

// Asked for every gap between words, so the answer is kept: in a table for ASCII, in a bounded map for all others.
bool FShaperFont::CanBreakBetween(TCHAR Before, TCHAR After)
{
	const auto Ask = [this, Before, After]
	{
		const TCHAR Text[] = { Before, TEXT(' '), After };
		std::vector<int32> Breaks;
		FindBreaks(TextUnits::FView(Text, 3), Breaks);
		return std::find(Breaks.begin(), Breaks.end(), 2) != Breaks.end();
	};
	if (Before < 128 && After < 128)
	{
		uint8& Entry = AsciiPairs[static_cast<size_t>(Before) * 128 + After];
		if (Entry == 0)
		{
			Entry = Ask() ? 2 : 1;
		}
		return Entry == 2;
	}
	if (OtherPairs.size() > 4096)
	{
		OtherPairs.clear();
	}
	const auto [Entry, bNew] = OtherPairs.try_emplace((static_cast<uint32>(Before) << 16) | After, false);
	if (bNew)
	{
		Entry->second = Ask();
	}
	return Entry->second;
}
