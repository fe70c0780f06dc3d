#include "StateWords.h"

namespace
{
	struct FStateRow
	{
		Velmora::EConversationState State;
		const TCHAR* Word;
	};

	// Scripts and dumps of older versions name states by these words: they are never changed.
	constexpr FStateRow StateRows[] = {
		{ Velmora::EConversationState::NotStarted, TEXT("NotStarted") },
		{ Velmora::EConversationState::Initializing, TEXT("Initializing") },
		{ Velmora::EConversationState::Ready, TEXT("Ready") },
		{ Velmora::EConversationState::Thinking, TEXT("Thinking") },
		{ Velmora::EConversationState::ExecutingTools, TEXT("ExecutingTools") },
		{ Velmora::EConversationState::AwaitingInput, TEXT("AwaitingInput") },
		{ Velmora::EConversationState::Paused, TEXT("Paused") },
		{ Velmora::EConversationState::Completed, TEXT("Completed") },
		{ Velmora::EConversationState::Cancelled, TEXT("Cancelled") },
		{ Velmora::EConversationState::Error, TEXT("Error") },
	};
}

const TCHAR* FStateWords::Get(Velmora::EConversationState State)
{
	for (const FStateRow& Row : StateRows)
	{
		if (Row.State == State)
		{
			return Row.Word;
		}
	}
	return TEXT("Unknown");
}

bool FStateWords::IsWord(const FString& Word)
{
	for (const FStateRow& Row : StateRows)
	{
		if (Word.Equals(Row.Word, ESearchCase::IgnoreCase))
		{
			return true;
		}
	}
	return false;
}

FString FStateWords::GetAll()
{
	FString Words;
	for (const FStateRow& Row : StateRows)
	{
		Words += (Words.IsEmpty() ? TEXT("") : TEXT(", ")) + FString(Row.Word);
	}
	return Words;
}
