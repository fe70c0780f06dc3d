#pragma once

#include "Text/PlatformGlyphRun.h"
#include "Text/TextUnits.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

struct FWordGlyph
{
	uint32 Index = 0;
	int16 X = 0;
	int16 Y = 0;
};

/** Glyphs from GlyphBegin to the next part's are of one font. */
struct FWordPart
{
	std::shared_ptr<const FPlatformFont> Font;
	int32 GlyphBegin = 0;
};

/** A shaped word of plain units. Immutable but for its count; game thread only, so the count is no atomic. */
struct FTextWord
{
	std::basic_string<TCHAR> Text;
	/** x of every unit and, last, the advance. */
	std::vector<float> Offsets;
	/** Units before which a line may break, rising; 0 and the length are not among them. */
	std::vector<uint16> Breaks;
	std::vector<FWordGlyph> Glyphs;
	std::vector<FWordPart> Parts;
	float InkAbove = 0.0f;
	float InkBelow = 0.0f;
	mutable uint32 RefCount = 0;

	int32 Len() const { return static_cast<int32>(Text.size()); }
	float GetAdvance() const { return Offsets.back(); }
};

/** Counted reference to a word: one pointer wide, since a long text holds very many. */
class FTextWordRef
{
public:
	FTextWordRef() = default;
	/** Takes a new word over. */
	explicit FTextWordRef(std::unique_ptr<FTextWord> InWord)
		: Word(InWord.release())
	{
		Retain();
	}
	FTextWordRef(const FTextWordRef& Other)
		: Word(Other.Word)
	{
		Retain();
	}
	FTextWordRef(FTextWordRef&& Other) noexcept
		: Word(std::exchange(Other.Word, nullptr))
	{
	}
	FTextWordRef& operator=(FTextWordRef Other) noexcept
	{
		std::swap(Word, Other.Word);
		return *this;
	}
	~FTextWordRef()
	{
		if (Word && --Word->RefCount == 0)
		{
			std::unique_ptr<const FTextWord> Last(Word);
		}
	}

	explicit operator bool() const { return Word != nullptr; }
	const FTextWord* operator->() const { return Word; }
	const FTextWord& operator*() const { return *Word; }
	bool IsShared() const { return Word && Word->RefCount > 1; }

private:
	void Retain()
	{
		if (Word)
		{
			++Word->RefCount;
		}
	}
	const FTextWord* Word = nullptr;
};
