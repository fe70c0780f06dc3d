#include "Text/TextUnits.h"

#include <glib.h>

// Facts about single characters that decide how text is laid out and how a caret moves. IsPlain is asked for every unit
// of every text, so it looks at ranges written out here; the others are asked rarely and look the character up in a
// library.

namespace TextUnits
{
	bool IsPlain(TCHAR Unit)
	{
		if (Unit < 0x0250)
		{
			// The soft hyphen shows itself only where a line breaks, NEL, VT and FF are blanks that are no U+0020.
			return Unit != 0x00AD && Unit != 0x0085 && Unit != 0x000B && Unit != 0x000C;
		}
		struct FRange
		{
			TCHAR First;
			TCHAR Last;
		};
		// Letters without joining, combining or right-to-left behaviour, and signs that stand alone.
		static constexpr FRange Ranges[] = {
			{ 0x0250, 0x02AF },
			{ 0x0370, 0x0373 },
			{ 0x0376, 0x0377 },
			{ 0x037B, 0x03FF },
			{ 0x0400, 0x0482 },
			{ 0x048A, 0x052F },
			{ 0x1E00, 0x1FFF },
			{ 0x2010, 0x2027 },
			{ 0x202F, 0x205E },
			{ 0x2070, 0x20BF },
			{ 0x2100, 0x22FF },
			{ 0x2400, 0x25FF },
			{ 0x2713, 0x2718 },
			{ 0xFFFD, 0xFFFD },
		};
		for (const FRange& Range : Ranges)
		{
			if (Unit <= Range.Last)
			{
				return Unit >= Range.First;
			}
		}
		return false;
	}

	uint32 Decode(FView Text, int32& Index)
	{
		const TCHAR Unit = Text[static_cast<size_t>(Index++)];
		if ((Unit & 0xF800) != 0xD800)
		{
			return Unit;
		}
		if (IsHighSurrogate(Unit) && static_cast<size_t>(Index) < Text.size() && IsLowSurrogate(Text[static_cast<size_t>(Index)]))
		{
			return 0x10000u + ((Unit & 0x3FFu) << 10) + (Text[static_cast<size_t>(Index++)] & 0x3FFu);
		}
		return 0xFFFD;
	}

	uint32 GetDrawn(uint32 Character)
	{
		if (Character < 0x20 || (Character >= 0x7F && Character < 0xA0))
		{
			const bool bBlank = Character == 0x09 || Character == 0x0B || Character == 0x0C || Character == 0x85;
			return bBlank ? 0x20 : 0xFFFD;
		}
		if (Character == 0x2028 || Character == 0x2029)
		{
			return 0x20;
		}
		return (Character & 0xFFFE) == 0xFFFE ? 0xFFFD : Character;
	}

	bool StartsRightToLeft(FView Text)
	{
		for (int32 Index = 0; Index < static_cast<int32>(Text.size());)
		{
			const uint32 Character = Decode(Text, Index);
			if (!g_unichar_isalpha(Character))
			{
				continue;
			}
			switch (g_unichar_get_script(Character))
			{
			case G_UNICODE_SCRIPT_ARABIC:
			case G_UNICODE_SCRIPT_HEBREW:
			case G_UNICODE_SCRIPT_SYRIAC:
			case G_UNICODE_SCRIPT_THAANA:
			case G_UNICODE_SCRIPT_NKO:
			case G_UNICODE_SCRIPT_SAMARITAN:
			case G_UNICODE_SCRIPT_MANDAIC:
			case G_UNICODE_SCRIPT_ADLAM:
			case G_UNICODE_SCRIPT_HANIFI_ROHINGYA:
				return true;
			default:
				return false;
			}
		}
		return false;
	}

	EClass GetClass(uint32 Character)
	{
		if (Character < 0x80)
		{
			if (Character == '\n' || Character == '\r')
			{
				return EClass::LineBreak;
			}
			if (Character == ' ' || Character == '\t' || Character == 0x0B || Character == 0x0C)
			{
				return EClass::Blank;
			}
			return g_ascii_isalnum(static_cast<gchar>(Character)) || Character == '_' ? EClass::Word : EClass::Mark;
		}
		switch (g_unichar_type(Character))
		{
		case G_UNICODE_NON_SPACING_MARK:
		case G_UNICODE_SPACING_MARK:
		case G_UNICODE_ENCLOSING_MARK:
		case G_UNICODE_FORMAT:
			return EClass::Extend;
		case G_UNICODE_SPACE_SEPARATOR:
		case G_UNICODE_LINE_SEPARATOR:
		case G_UNICODE_PARAGRAPH_SEPARATOR:
			return EClass::Blank;
		default:
			break;
		}
		if (Character == 0x85)
		{
			return EClass::Blank;
		}
		if (!g_unichar_isalnum(Character))
		{
			return EClass::Mark;
		}
		switch (g_unichar_get_script(Character))
		{
		case G_UNICODE_SCRIPT_HAN:
			return EClass::Han;
		case G_UNICODE_SCRIPT_HIRAGANA:
			return EClass::Hiragana;
		case G_UNICODE_SCRIPT_KATAKANA:
			return EClass::Katakana;
		default:
			return EClass::Word;
		}
	}
}
