#include "Text/TextPassage.h"

#include <algorithm>

#include "Text/Utf8Text.h"
#include "Containers/StringConv.h"
#include "CoreMinimal.h"

namespace Velmora::TextPassage
{
	namespace
	{
		enum class EEncoding
		{
			Bytes, // UTF-8, or one of its elder relatives.
			Utf16LittleEndian,
			Utf16BigEndian
		};

		struct FShape
		{
			EEncoding Encoding = EEncoding::Bytes;
			size_t MarkBytes = 0;
			bool bHasCarriageReturns = false;
		};

		size_t UnitBytes(const FShape& Shape)
		{
			return Shape.Encoding == EEncoding::Bytes ? 1 : 2;
		}

		std::string Encode(std::string_view Text, const FShape& Shape)
		{
			if (Shape.Encoding == EEncoding::Bytes)
			{
				return std::string(Text);
			}
			const FString Units(UTF8_TO_TCHAR(std::string(Text).c_str()));
			std::string Out;
			for (int32 Index = 0; Index < Units.Len(); ++Index)
			{
				const char Low = static_cast<char>(Units[Index] & 0xFF);
				const char High = static_cast<char>(Units[Index] >> 8 & 0xFF);
				Out += Shape.Encoding == EEncoding::Utf16LittleEndian ? Low : High;
				Out += Shape.Encoding == EEncoding::Utf16LittleEndian ? High : Low;
			}
			return Out;
		}

		/** As find, but only at whole units. */
		size_t FindUnits(std::string_view Bytes, std::string_view Part, size_t From, const FShape& Shape)
		{
			size_t At = Bytes.find(Part, From);
			while (At != std::string_view::npos && (At - Shape.MarkBytes) % UnitBytes(Shape) != 0)
			{
				At = Bytes.find(Part, At + 1);
			}
			return At;
		}

		FShape Recognise(std::string_view Bytes)
		{
			FShape Shape;
			if (Utf8Text::StartsWith(Bytes, "\xFF\xFE") || Utf8Text::StartsWith(Bytes, "\xFE\xFF"))
			{
				Shape.Encoding = Bytes[0] == '\xFF' ? EEncoding::Utf16LittleEndian : EEncoding::Utf16BigEndian;
				Shape.MarkBytes = 2;
			}
			else if (Utf8Text::StartsWith(Bytes, "\xEF\xBB\xBF"))
			{
				Shape.MarkBytes = 3;
			}
			// The first line decides, as it does for most editors.
			const std::string LineFeed = Encode("\n", Shape);
			const std::string CarriageReturn = Encode("\r", Shape);
			const size_t First = FindUnits(Bytes, LineFeed, Shape.MarkBytes, Shape);
			Shape.bHasCarriageReturns = First != std::string_view::npos && First >= Shape.MarkBytes + CarriageReturn.size() &&
				Bytes.substr(First - CarriageReturn.size(), CarriageReturn.size()) == CarriageReturn;
			return Shape;
		}

		std::string WithLineEnds(std::string_view Text, bool bHasCarriageReturns)
		{
			std::string Out;
			for (const char Byte : Text)
			{
				if (Byte == '\n' && bHasCarriageReturns && (Out.empty() || Out.back() != '\r'))
				{
					Out += '\r';
				}
				Out += Byte;
			}
			return Out;
		}

		size_t CountPlaces(std::string_view Bytes, std::string_view Part, const FShape& Shape, size_t& OutFirst)
		{
			size_t Count = 0;
			OutFirst = FindUnits(Bytes, Part, Shape.MarkBytes, Shape);
			// Places that overlap are different ones too.
			for (size_t At = OutFirst; At != std::string_view::npos; At = FindUnits(Bytes, Part, At + UnitBytes(Shape), Shape))
			{
				++Count;
			}
			return Count;
		}
	}

	bool IsBinary(std::string_view Bytes)
	{
		return Recognise(Bytes).Encoding == EEncoding::Bytes && Bytes.find('\0') != std::string_view::npos;
	}

	bool Replace(std::string_view Bytes, std::string_view Old, std::string_view New, size_t& OutCount, std::string& OutBytes)
	{
		OutCount = 0;
		if (Old.empty())
		{
			return false;
		}
		const FShape Shape = Recognise(Bytes);
		const bool bHasLines = Old.find('\n') != std::string_view::npos;
		bool bIsFound = false;
		for (const bool bHasCarriageReturns : { false, true })
		{
			// A passage without line ends is one and the same in both spellings; the new text then takes the file's.
			if (!bHasLines && bHasCarriageReturns)
			{
				break;
			}
			const std::string Part = Encode(WithLineEnds(Old, bHasCarriageReturns), Shape);
			size_t First = 0;
			const size_t Count = CountPlaces(Bytes, Part, Shape, First);
			OutCount += Count;
			if (Count == 1)
			{
				bIsFound = true;
				OutBytes = std::string(Bytes.substr(0, First)) +
					Encode(WithLineEnds(New, bHasLines ? bHasCarriageReturns : Shape.bHasCarriageReturns), Shape) +
					std::string(Bytes.substr(First + Part.size()));
			}
		}
		return bIsFound && OutCount == 1;
	}

	std::string Append(std::string_view Bytes, std::string_view Text)
	{
		const FShape Shape = Recognise(Bytes);
		const std::string LineEnd = Encode(WithLineEnds("\n", Shape.bHasCarriageReturns), Shape);
		const std::string LineFeed = Encode("\n", Shape);
		std::string Out(Bytes);
		if (Bytes.size() > Shape.MarkBytes && !Utf8Text::EndsWith(Bytes, LineFeed))
		{
			Out += LineEnd;
		}
		Out += Encode(WithLineEnds(Text, Shape.bHasCarriageReturns), Shape);
		if (!Utf8Text::EndsWith(Text, "\n"))
		{
			Out += LineEnd;
		}
		return Out;
	}

	std::string Rewrite(std::string_view OldBytes, std::string_view Text)
	{
		if (IsBinary(OldBytes) || IsBinary(Text))
		{
			return std::string(Text);
		}
		const FShape Shape = Recognise(OldBytes);
		const std::string_view Mark = OldBytes.substr(0, Shape.MarkBytes);
		if (!Mark.empty() && Utf8Text::StartsWith(Text, Mark))
		{
			return std::string(Text);
		}
		return std::string(Mark) + Encode(WithLineEnds(Text, Shape.bHasCarriageReturns), Shape);
	}
}
