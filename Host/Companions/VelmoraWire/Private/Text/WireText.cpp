#include "Text/WireText.h"

#include <algorithm>

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

		/** How many well-formed bytes there are at the beginning. */
		size_t MeasureUtf8(std::string_view Bytes)
		{
			size_t Index = 0;
			while (Index < Bytes.size())
			{
				if (static_cast<unsigned char>(Bytes[Index]) < 0x80)
				{
					++Index;
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
			// A character that lacks its end is one mistake, not one for each of its bytes.
			Rest.remove_prefix(1);
			while (!Rest.empty() && (static_cast<unsigned char>(Rest.front()) & 0xC0) == 0x80)
			{
				Rest.remove_prefix(1);
			}
			Good = MeasureUtf8(Rest);
		}
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
