#include "Text/Utf8Text.h"

#include <algorithm>
#include <cstdint>

#include "Host/HostUtf8.h"

namespace Velmora::Utf8Text
{
	namespace
	{
		constexpr char32_t Replacement = 0xFFFD;

		/** Reads one code point; anything ill-formed costs one byte and reads as the replacement character. */
		char32_t ReadCodePoint(std::string_view Text, size_t& Index)
		{
			char32_t Code = Replacement;
			const size_t Length = HostDecodeUtf8(Text.substr(Index), Code);
			Index += Length == 0 ? 1 : Length;
			return Length == 0 ? Replacement : Code;
		}

		constexpr size_t BlockLength = 16;

		/** A block of UTF-16 units as bytes; false when one of them is not plain ASCII. */
		template <typename FUnitAt>
		bool ConvertPlainBlock(char (&Block)[BlockLength], size_t First, FUnitAt UnitAt)
		{
			// Without a branch for each unit, so that they are converted together.
			uint32_t Odd = 0;
			for (size_t Place = 0; Place < BlockLength; ++Place)
			{
				const uint32_t Unit = UnitAt(First + Place);
				Odd |= Unit | (Unit - 1);
				Block[Place] = static_cast<char>(Unit);
			}
			return Odd < 0x80;
		}

		/** Appends the character at a place. Gives how many units it takes. */
		template <typename FUnitAt>
		size_t AppendCharacter(std::string& Out, size_t Index, size_t Count, FUnitAt UnitAt)
		{
			char32_t Code = UnitAt(Index);
			if (Code != 0 && Code < 0x80)
			{
				Out.push_back(static_cast<char>(Code));
				return 1;
			}
			// A pair of surrogates is one character. One that stands alone is none, and a NUL would end the text for some readers.
			const bool bIsPair =
				Code >= 0xD800 && Code < 0xDC00 && Index + 1 < Count && UnitAt(Index + 1) >= 0xDC00 && UnitAt(Index + 1) < 0xE000;
			if (bIsPair)
			{
				Code = 0x10000 + ((Code - 0xD800) << 10) + (UnitAt(Index + 1) - 0xDC00);
			}
			else if (Code == 0 || (Code >= 0xD800 && Code < 0xE000))
			{
				Code = Replacement;
			}
			HostAppendUtf8(Out, Code);
			return bIsPair ? 2 : 1;
		}

		/** Joins UTF-16 units read by a function of their index. */
		template <typename FUnitAt>
		std::string JoinUtf16(size_t Count, FUnitAt UnitAt)
		{
			// Nearly all of a conversation is plain, and every message of it is in a request: no more room than that needs, and a block
			// at a time.
			std::string Out;
			Out.reserve(Count);
			for (size_t Index = 0; Index < Count;)
			{
				char Block[BlockLength];
				if (Index + BlockLength <= Count && ConvertPlainBlock(Block, Index, UnitAt))
				{
					Out.append(Block, BlockLength);
					Index += BlockLength;
					continue;
				}
				for (const size_t End = std::min(Index + BlockLength, Count); Index < End;)
				{
					Index += AppendCharacter(Out, Index, Count, UnitAt);
				}
			}
			return Out;
		}
	}

	std::string FromString(const FString& Text)
	{
		const TCHAR* Units = *Text;
		return JoinUtf16(
			static_cast<size_t>(Text.Len()), [Units](size_t Index) { return static_cast<char32_t>(static_cast<char16_t>(Units[Index])); });
	}

	FString ToString(std::string_view Text)
	{
		const std::string Clean = Sanitise(Text);
		return FString(UTF8_TO_TCHAR(Clean.c_str()));
	}

	std::string Sanitise(std::string_view Bytes)
	{
		std::string Out;
		Out.reserve(Bytes.size());
		const auto IsPlain = [](char Byte) { return (Byte >= ' ' && Byte < 0x7F) || Byte == '\t' || Byte == '\n'; };
		for (size_t Index = 0; Index < Bytes.size();)
		{
			// Nearly all of a text is plain: a run at a time.
			const size_t Start = Index;
			while (Index < Bytes.size() && IsPlain(Bytes[Index]))
			{
				++Index;
			}
			Out.append(Bytes, Start, Index - Start);
			if (Index == Bytes.size())
			{
				break;
			}
			const char32_t Code = ReadCodePoint(Bytes, Index);
			// CR LF and a lone CR are one line end here, so that nobody else has to know them.
			if (Code == '\r')
			{
				if (Index >= Bytes.size() || Bytes[Index] != '\n')
				{
					Out.push_back('\n');
				}
				continue;
			}
			// Blanks in their place: a terminal or a log would obey them.
			const bool bIsControl = (Code < 0x20 && Code != '\t' && Code != '\n') || Code == 0x7F;
			HostAppendUtf8(Out, bIsControl ? U' ' : Code);
		}
		return Out;
	}

	std::string FromUtf16Bytes(std::string_view Bytes, bool bBigEndian)
	{
		return JoinUtf16(Bytes.size() / 2,
			[Bytes, bBigEndian](size_t Index)
			{
				const unsigned First = static_cast<unsigned char>(Bytes[2 * Index]);
				const unsigned Second = static_cast<unsigned char>(Bytes[2 * Index + 1]);
				return static_cast<char32_t>(bBigEndian ? First << 8 | Second : Second << 8 | First);
			});
	}

	std::string ToLower(std::string_view Text)
	{
		// ASCII alone, whatever the locale: names of files and symbols are compared, not read.
		std::string Out(Text);
		for (char& Byte : Out)
		{
			if (Byte >= 'A' && Byte <= 'Z')
			{
				Byte = static_cast<char>(Byte - 'A' + 'a');
			}
		}
		return Out;
	}

	bool IsWordByte(char Byte)
	{
		// All bytes of letters beyond ASCII count as word, so that a word in any script stays whole.
		return (Byte >= 'a' && Byte <= 'z') || (Byte >= 'A' && Byte <= 'Z') || (Byte >= '0' && Byte <= '9') || Byte == '_' ||
			static_cast<unsigned char>(Byte) >= 0x80;
	}

	bool IsBlank(char Byte)
	{
		return Byte == ' ' || Byte == '\t' || Byte == '\n' || Byte == '\r';
	}

	std::string_view Trim(std::string_view Text)
	{
		constexpr std::string_view Blanks = " \t\r\n";
		const size_t First = Text.find_first_not_of(Blanks);
		return First == std::string_view::npos ? std::string_view() : Text.substr(First, Text.find_last_not_of(Blanks) - First + 1);
	}

	bool StartsWith(std::string_view Text, std::string_view Prefix)
	{
		return Text.substr(0, Prefix.size()) == Prefix;
	}

	bool EndsWith(std::string_view Text, std::string_view Suffix)
	{
		return Text.size() >= Suffix.size() && Text.substr(Text.size() - Suffix.size()) == Suffix;
	}

	std::string Shorten(std::string_view Text, size_t MaxCharacters)
	{
		size_t Characters = 0;
		for (size_t Index = 0; Index < Text.size(); ++Index)
		{
			// Bytes that go on with a character are not counted, so the cut never falls within one.
			const bool bStartsCharacter = (static_cast<unsigned char>(Text[Index]) & 0xC0) != 0x80;
			if (bStartsCharacter && ++Characters > MaxCharacters)
			{
				return std::string(Text.substr(0, Index)) + "…";
			}
		}
		return std::string(Text);
	}

	std::vector<std::string_view> SplitLines(std::string_view Text)
	{
		std::vector<std::string_view> Lines;
		// A line end at the end ends a line and begins none.
		while (!Text.empty())
		{
			const size_t End = Text.find('\n');
			Lines.push_back(Text.substr(0, End));
			if (End == std::string_view::npos)
			{
				break;
			}
			Text.remove_prefix(End + 1);
		}
		return Lines;
	}

	std::string Count(size_t Number, std::string_view Singular, std::string_view Plural)
	{
		std::string Digits = std::to_string(Number);
		for (size_t Place = Digits.size(); Place > 3;)
		{
			Place -= 3;
			Digits.insert(Place, ",");
		}
		return Digits + ' ' + std::string(Number == 1 ? Singular : Plural);
	}
}
