#include "SoughtMessage.h"

#include "Misc/Char.h"

namespace
{
	constexpr TCHAR Ellipsis = TEXT('\u2026');

	/** The line stands there, each of its blanks for any run of white space. */
	bool IsLineAt(FStringView Text, int32 Index, FStringView Line)
	{
		for (int32 Place = 0; Place < Line.Len(); ++Place)
		{
			if (Index >= Text.Len())
			{
				return false;
			}
			if (Line[Place] != TEXT(' '))
			{
				if (Text[Index++] != Line[Place])
				{
					return false;
				}
				continue;
			}
			if (!FChar::IsWhitespace(Text[Index]))
			{
				return false;
			}
			while (Index < Text.Len() && FChar::IsWhitespace(Text[Index]))
			{
				++Index;
			}
		}
		return true;
	}

	bool HasLine(FStringView Text, FStringView Line)
	{
		for (int32 Index = 0; Index + Line.Len() <= Text.Len(); ++Index)
		{
			if (IsLineAt(Text, Index, Line))
			{
				return true;
			}
		}
		return false;
	}

	FStringView CutEllipses(const FString& Excerpt)
	{
		FStringView Line = Excerpt;
		if (Line.Len() > 0 && Line[0] == Ellipsis)
		{
			Line = Line.Mid(1);
		}
		return Line.Len() > 0 && Line[Line.Len() - 1] == Ellipsis ? Line.Left(Line.Len() - 1) : Line;
	}
}

int32 SoughtMessage::Find(const TArray<TSharedPtr<FChatMessage>>& Messages, const FSoughtMessage& Sought)
{
	const FStringView Line = CutEllipses(Sought.Excerpt);
	int32 Found = INDEX_NONE;
	int32 BestDistance = 0;
	int32 Ordinal = 0;
	for (int32 Index = 0; Index < Messages.Num() && !Line.IsEmpty(); ++Index)
	{
		const FChatMessage* const Message = Messages[Index].Get();
		// Rows of tools, and what the program says itself, are not stored as messages.
		if (!Message || !(Message->IsUserMessage() || Message->IsAIMessage()))
		{
			continue;
		}
		const int32 Distance = FMath::Abs(Ordinal - Sought.Position);
		if (Message->IsUserMessage() == Sought.bIsUser && (Found == INDEX_NONE || Distance < BestDistance) &&
			HasLine(Message->Content, Line))
		{
			Found = Index;
			BestDistance = Distance;
		}
		++Ordinal;
	}
	return Found;
}

FString SoughtMessage::ChooseWords(const FString& Typed, const FString& Excerpt, const TArray<Velmora::FFoundPlace>& Places)
{
	const FString Whole = Typed.TrimStartAndEnd();
	if (Excerpt.Contains(Whole, ESearchCase::IgnoreCase))
	{
		return Whole;
	}
	FString Longest;
	for (const Velmora::FFoundPlace& Place : Places)
	{
		if (Place.Length > Longest.Len())
		{
			Longest = Excerpt.Mid(Place.Begin, Place.Length);
		}
	}
	return Longest.IsEmpty() ? Whole : Longest;
}
