#include "Text/WireText.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace Velmora::WireText
{
	namespace
	{
		constexpr std::string_view ReplacementCharacter = "\xEF\xBF\xBD";
		constexpr size_t MinKeyBytes = 8;

		/** Length of the well-formed character at the beginning, or 0. */
		size_t MeasureCharacter(std::string_view Bytes)
		{
			const auto At = [Bytes](size_t Index)
			{ return Index < Bytes.size() ? static_cast<unsigned char>(Bytes[Index]) : static_cast<unsigned char>(0); };
			const auto Continues = [&At](size_t Index) { return (At(Index) & 0xC0) == 0x80; };
			const unsigned char First = At(0);
			const unsigned char Second = At(1);
			if (First < 0x80)
			{
				return 1;
			}
			if (First >= 0xC2 && First <= 0xDF)
			{
				return Continues(1) ? 2 : 0;
			}
			if (First >= 0xE0 && First <= 0xEF)
			{
				const bool bFits = !(First == 0xE0 && Second < 0xA0) && !(First == 0xED && Second > 0x9F);
				return bFits && Continues(1) && Continues(2) ? 3 : 0;
			}
			if (First >= 0xF0 && First <= 0xF4)
			{
				const bool bFits = !(First == 0xF0 && Second < 0x90) && !(First == 0xF4 && Second > 0x8F);
				return bFits && Continues(1) && Continues(2) && Continues(3) ? 4 : 0;
			}
			return 0;
		}

		/** The same byte eight times. */
		constexpr uint64_t Repeat(unsigned char Byte)
		{
			return 0x0101010101010101ull * Byte;
		}

		uint64_t ReadWord(std::string_view Bytes, size_t Index)
		{
			uint64_t Word = 0;
			std::memcpy(&Word, Bytes.data() + Index, sizeof(Word));
			return Word;
		}

		/** How many well-formed bytes there are at the beginning. */
		size_t MeasureUtf8(std::string_view Bytes)
		{
			size_t Index = 0;
			while (Index < Bytes.size())
			{
				// Nearly all of a conversation is ASCII, and every byte of it goes through here: eight at a time.
				if (Index + sizeof(uint64_t) <= Bytes.size() && (ReadWord(Bytes, Index) & Repeat(0x80)) == 0)
				{
					Index += sizeof(uint64_t);
					continue;
				}
				const size_t Length = MeasureCharacter(Bytes.substr(Index));
				if (Length == 0)
				{
					break;
				}
				Index += Length;
			}
			return Index;
		}

		/** As itself between the quotes of JSON, and a character of its own. */
		bool IsPlainInQuotes(char Byte)
		{
			return Byte >= ' ' && Byte != '"' && Byte != '\\' && static_cast<unsigned char>(Byte) < 0x80;
		}

		/** How many bytes at the beginning are plain in quotes. */
		size_t MeasurePlainInQuotes(std::string_view Bytes)
		{
			size_t Index = 0;
			for (; Index + sizeof(uint64_t) <= Bytes.size(); Index += sizeof(uint64_t))
			{
				// A byte that is not plain borrows or has its highest bit already; one above it may then seem so, too, which changes
				// nothing.
				const uint64_t Word = ReadWord(Bytes, Index);
				const uint64_t Odd = Word | (Word - Repeat(' ')) | ((Word ^ Repeat('"')) - Repeat(1)) | ((Word ^ Repeat('\\')) - Repeat(1));
				if ((Odd & Repeat(0x80)) != 0)
				{
					break;
				}
			}
			while (Index < Bytes.size() && IsPlainInQuotes(Bytes[Index]))
			{
				++Index;
			}
			return Index;
		}

		/** How many bytes at the beginning stand between the quotes of JSON as they are. */
		size_t MeasureGoodInQuotes(std::string_view Bytes)
		{
			size_t Index = 0;
			for (size_t Length = 1; Length > 0; Index += Length)
			{
				Index += MeasurePlainInQuotes(Bytes.substr(Index));
				const bool bIsWide = Index < Bytes.size() && static_cast<unsigned char>(Bytes[Index]) >= 0x80;
				Length = bIsWide ? MeasureCharacter(Bytes.substr(Index)) : 0;
			}
			return Index;
		}

		/** Of what begins with a byte that begins no character. */
		size_t MeasureBroken(std::string_view Bytes)
		{
			// A character that lacks its end is one mistake, not one for each of its bytes.
			size_t Length = 1;
			while (Length < Bytes.size() && (static_cast<unsigned char>(Bytes[Length]) & 0xC0) == 0x80)
			{
				++Length;
			}
			return Length;
		}

		void AppendEscape(std::string& Out, char Byte)
		{
			constexpr std::string_view Controls = "\b\f\n\r\t\"\\";
			constexpr std::string_view Letters = "bfnrt\"\\";
			constexpr char Digits[] = "0123456789ABCDEF";
			Out += '\\';
			if (const size_t Known = Controls.find(Byte); Known != std::string_view::npos)
			{
				Out += Letters[Known];
				return;
			}
			Out += "u00";
			Out += Digits[Byte >> 4];
			Out += Digits[Byte & 15];
		}
	}

	bool IsUtf8(std::string_view Bytes)
	{
		return MeasureUtf8(Bytes) == Bytes.size();
	}

	std::string RepairUtf8(std::string Bytes)
	{
		size_t Good = MeasureUtf8(Bytes);
		if (Good == Bytes.size())
		{
			return Bytes;
		}
		std::string Result;
		Result.reserve(Bytes.size() + 16);
		std::string_view Rest = Bytes;
		while (true)
		{
			Result += Rest.substr(0, Good);
			Rest.remove_prefix(Good);
			if (Rest.empty())
			{
				return Result;
			}
			Result += ReplacementCharacter;
			Rest.remove_prefix(MeasureBroken(Rest));
			Good = MeasureUtf8(Rest);
		}
	}

	void AppendQuoted(std::string& Out, std::string_view Text)
	{
		Out += '"';
		while (true)
		{
			const size_t Length = MeasureGoodInQuotes(Text);
			Out.append(Text, 0, Length);
			Text.remove_prefix(Length);
			if (Text.empty())
			{
				break;
			}
			if (static_cast<unsigned char>(Text.front()) < 0x80)
			{
				AppendEscape(Out, Text.front());
				Text.remove_prefix(1);
			}
			else
			{
				Out += ReplacementCharacter;
				Text.remove_prefix(MeasureBroken(Text));
			}
		}
		Out += '"';
	}

	std::string_view CutUtf8(std::string_view Text, size_t MaxBytes)
	{
		if (Text.size() <= MaxBytes)
		{
			return Text;
		}
		size_t Length = MaxBytes;
		while (Length > 0 && (static_cast<unsigned char>(Text[Length]) & 0xC0) == 0x80)
		{
			--Length;
		}
		return Text.substr(0, Length);
	}

	size_t MeasurePartialMark(std::string_view Text, std::string_view Mark)
	{
		for (size_t Length = std::min(Text.size(), Mark.size() - 1); Length > 0; --Length)
		{
			if (Text.substr(Text.size() - Length) == Mark.substr(0, Length))
			{
				return Length;
			}
		}
		return 0;
	}

	void HideKey(std::string& Text, std::string_view Key)
	{
		if (Key.size() < MinKeyBytes)
		{
			return;
		}
		for (size_t Found = Text.find(Key); Found != std::string::npos; Found = Text.find(Key, Found))
		{
			Text.replace(Found, Key.size(), "[key]");
			Found += 5;
		}
	}
}
