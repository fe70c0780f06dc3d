#include "ViewModels/ConversationLabel.h"

#include "Math/UnrealMathUtility.h"
#include "Misc/Char.h"

namespace
{

	constexpr int32 MaxTitleLength = 50;
	constexpr int32 ShortIdLength = 6;

	/** The text without white space at its ends and with a blank for each line break, cut after MaxTitleLength. */
	FString MakeTitleLine(const FString& Text)
	{
		const TCHAR* const Chars = *Text;
		const int32 Length = Text.Len();
		int32 Index = 0;
		// 1. To the first character that shows. The text may be a whole file, so nothing of it is copied but the title.
		while (Index < Length && FChar::IsWhitespace(Chars[Index]))
		{
			++Index;
		}
		FString Title;
		Title.Reserve(MaxTitleLength + 3);
		// 2. As much as fits, on one line.
		for (; Index < Length && Title.Len() < MaxTitleLength; ++Index)
		{
			if (Chars[Index] == TEXT('\r') && Index + 1 < Length && Chars[Index + 1] == TEXT('\n'))
			{
				++Index;
			}
			const bool bLineBreak = Chars[Index] == TEXT('\r') || Chars[Index] == TEXT('\n');
			Title.AppendChar(bLineBreak ? TEXT(' ') : Chars[Index]);
		}
		// White space that is left over belongs to the end.
		while (Index < Length && FChar::IsWhitespace(Chars[Index]))
		{
			++Index;
		}
		// 3. Whether anything that shows was left out.
		if (Index < Length)
		{
			return Title + TEXT("...");
		}
		Title.TrimEndInline();
		return Title;
	}

} // namespace

FString FConversationLabel::MakeTitle(const Velmora::FConversationMetadata& Conversation)
{
	// The first thing that was asked names the conversation, as people remember it.
	for (const Velmora::FConversationMessage& Message : Conversation.Messages)
	{
		if (Message.IsUserMessage() && !Message.Content.IsEmpty())
		{
			return MakeTitleLine(Message.Content);
		}
	}
	return TEXT("New Conversation");
}

FString FConversationLabel::MakeAge(const FDateTime& LastUpdated, const FDateTime& Now)
{
	struct FAgeUnit
	{
		double Ticks;
		/** This many and more are given in the next unit. */
		double Limit;
		const TCHAR* Name;
	};
	static const FAgeUnit Units[] = {
		{ 600000000.0, 60.0, TEXT("min") },
		{ 36000000000.0, 24.0, TEXT("hr") },
		{ 864000000000.0, 30.0, TEXT("day") },
	};
	const double Age = static_cast<double>((Now - LastUpdated).GetTicks());
	// A negative age, of a clock that was set back, falls in here, too.
	if (Age / Units[0].Ticks < 1.0)
	{
		return TEXT("just now");
	}
	double Count = Age / Units[2].Ticks / 30.0;
	const TCHAR* Name = TEXT("month");
	for (const FAgeUnit& Unit : Units)
	{
		if (Age / Unit.Ticks < Unit.Limit)
		{
			Count = Age / Unit.Ticks;
			Name = Unit.Name;
			break;
		}
	}
	const int32 Number = FMath::FloorToInt32(Count);
	return FString::Printf(TEXT("%d %s%s ago"), Number, Name, Number == 1 ? TEXT("") : TEXT("s"));
}

FString FConversationLabel::MakeShortId(const Velmora::FConversationMetadata& Conversation)
{
	return Conversation.Id.Left(ShortIdLength);
}

bool FConversationLabel::IsSame(const Velmora::FConversationMetadata& A, const Velmora::FConversationMetadata& B)
{
	// By name and never by object: each refresh of the list makes all objects anew.
	return A.Id.Equals(B.Id, ESearchCase::IgnoreCase);
}
