#pragma once

#include "Text/TextWord.h"

#include <algorithm>
#include <pango/pangocairo.h>
#include <unordered_map>

/** The font map and every font that was shaped with. Game thread only. */
class FFontSystem
{
public:
	FFontSystem();
	~FFontSystem();
	FFontSystem(const FFontSystem&) = delete;
	FFontSystem& operator=(const FFontSystem&) = delete;

	PangoFontMap* GetFontMap() const { return FontMap; }
	std::shared_ptr<const FPlatformFont> FindOrAdd(PangoFont* Font);
	FTextShaperCounters& GetCounters() { return Counters; }

private:
	PangoFontMap* FontMap = nullptr;
	std::unordered_map<PangoFont*, std::shared_ptr<const FPlatformFont>> Fonts;
	FTextShaperCounters Counters;
};

/** One font at one size and scale, with the words that were shaped in it. Game thread only. */
class FShaperFont
{
public:
	FShaperFont(std::shared_ptr<FFontSystem> InSystem, const FSlateFontInfo& Info, float Scale);
	~FShaperFont();
	FShaperFont(const FShaperFont&) = delete;
	FShaperFont& operator=(const FShaperFont&) = delete;

	const FFontLineMetrics& GetMetrics() const { return Metrics; }
	float GetBlankAdvance() const { return BlankAdvance; }
	/** Tabs stop at multiples of this. */
	/** Never 0: blanks of a tiny font have no width, and positions are divided by this one. */
	float GetTabWidth() const { return std::max(BlankAdvance * 4.0f, 1.0f); }
	/** Whole pixels behind every letter. */
	float GetLetterSpace() const { return LetterSpace; }
	PangoContext* GetContext() const { return Context; }
	PangoLanguage* GetLanguage() const { return Language; }
	FFontSystem& GetSystem() const { return *System; }

	/** Shapes a word of plain units without blanks, or finds it. At most MaxWordLength units. */
	FTextWordRef GetWord(TextUnits::FView Text);
	/** Whether a line may break at the blanks between two characters. */
	bool CanBreakBetween(TCHAR Before, TCHAR After);
	/** Units before which a line may break, from a text of plain units. */
	void FindBreaks(TextUnits::FView Text, std::vector<int32>& OutBreaks) const;

	/** Longer words are cut into several pieces, so that each stays cheap to search and to keep. */
	static constexpr int32 MaxWordLength = 48;
	/** Words kept, those that texts hold among them. Of the others there are at most as many, or FewWords. */
	static constexpr size_t MaxWords = 16384;
	static constexpr size_t FewWords = 512;

private:
	FTextWordRef Shape(TextUnits::FView Text);
	void ShapeItem(FTextWord& Word, const std::string& Utf8, int32 Offset, int32 Length, const PangoAnalysis& Analysis, int32 FirstUnit,
		int32 UnitCount, float& X);
	void DropUnusedWords();

	std::shared_ptr<FFontSystem> System;
	PangoContext* Context = nullptr;
	PangoLanguage* Language = nullptr;
	/** How a word of ASCII is to be shaped; null if the font lacks letters. */
	PangoItem* AsciiItem = nullptr;
	PangoAttrList* NoAttributes = nullptr;
	PangoGlyphString* Scratch = nullptr;
	FFontLineMetrics Metrics;
	float BlankAdvance = 0.0f;
	float LetterSpace = 0.0f;
	/** The keys are views into the words. */
	std::unordered_map<TextUnits::FView, FTextWordRef> Words;
	/** So many words, and those that no text holds go. */
	size_t NextDrop = FewWords;
	/** 0 unknown, 1 no, 2 yes, by two ASCII characters. */
	std::vector<uint8> AsciiPairs;
	std::unordered_map<uint32, bool> OtherPairs;
};
