#pragma once

#include "CoreMinimal.h"

#include <string>
#include <string_view>
#include <vector>

/** Rules about single characters and UTF-16 units. Pure. */
namespace TextUnits
{
	using FView = std::basic_string_view<TCHAR>;

	inline bool IsHighSurrogate(TCHAR Unit)
	{
		return (Unit & 0xFC00) == 0xD800;
	}
	inline bool IsLowSurrogate(TCHAR Unit)
	{
		return (Unit & 0xFC00) == 0xDC00;
	}
	inline bool IsLineBreak(TCHAR Unit)
	{
		return Unit == TEXT('\n') || Unit == TEXT('\r');
	}

	/**
	 * Whether a unit can be shaped word by word: one caret stop of its own, left to right, no effect beyond the blanks
	 * around its word. Blanks and tabs are plain too. Control characters are: they are drawn as a replacement sign.
	 */
	bool IsPlain(TCHAR Unit);

	/** Decodes the character at Index and moves Index behind it. A lone surrogate gives U+FFFD. */
	uint32 Decode(FView Text, int32& Index);
	/** What is drawn for a character: line separators and tabs as blanks, other control characters as U+FFFD. */
	uint32 GetDrawn(uint32 Character);

	/** Whether the first letter is of a script that is written from right to left. */
	bool StartsRightToLeft(FView Text);

	enum class EClass : uint8
	{
		Blank,
		LineBreak,
		Mark,
		Word,
		// Written without blanks; a change of script ends a word.
		Han,
		Hiragana,
		Katakana,
		// Belongs to the character before it.
		Extend,
	};
	EClass GetClass(uint32 Character);
	inline bool IsWordClass(EClass Class)
	{
		return Class >= EClass::Word && Class <= EClass::Katakana;
	}
}
