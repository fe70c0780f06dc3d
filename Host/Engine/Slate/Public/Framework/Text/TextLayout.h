#pragma once

#include "CoreMinimal.h"
#include "Types/SlateEnums.h"

/**
 * A place in a text: a line, counted from 0, and UTF-16 units from the line's start. Lines end with "\n" or "\r\n",
 * which belong to no line.
 */
class FTextLocation
{
public:
	FTextLocation(int32 InLineIndex = 0, int32 InOffset = 0)
		: LineIndex(InLineIndex)
		, Offset(InOffset)
	{
	}
	/** The same line, moved along it. */
	FTextLocation(const FTextLocation& InLocation, int32 InOffset)
		: LineIndex(InLocation.LineIndex)
		, Offset(InLocation.Offset + InOffset)
	{
	}

	int32 GetLineIndex() const { return LineIndex; }
	int32 GetOffset() const { return Offset; }
	bool IsValid() const { return LineIndex != INDEX_NONE && Offset != INDEX_NONE; }
	bool operator==(const FTextLocation& Other) const { return LineIndex == Other.LineIndex && Offset == Other.Offset; }
	bool operator!=(const FTextLocation& Other) const { return !(*this == Other); }
	bool operator<(const FTextLocation& Other) const
	{
		return LineIndex != Other.LineIndex ? LineIndex < Other.LineIndex : Offset < Other.Offset;
	}

private:
	int32 LineIndex;
	int32 Offset;
};

/** Places that a text box can be sent to without knowing its text. */
enum class ETextLocation : uint8
{
	BeginningOfDocument,
	EndOfDocument,
	BeginningOfLine,
	EndOfLine,
	PreviousPage,
	NextPage,
};
