#pragma once

#include "CoreMinimal.h"
#include "Host/ConversationSearch.h"
#include "ViewModels/ChatMessage.h"

/** A message that a search over all conversations has found, and that is to be shown in its own. */
struct FSoughtMessage
{
	FString ConversationId;
	/** Among all that are stored of its conversation, tool traffic included; from 0. */
	int32 Position = 0;
	bool bIsUser = false;
	/** One line of it, with an ellipsis at each end where it goes on. */
	FString Excerpt;
};

/** Finds such a message among those that are shown. Pure. */
namespace SoughtMessage
{
	/** Its index; INDEX_NONE when it is not there. Of several with the same text the one whose place fits best. */
	int32 Find(const TArray<TSharedPtr<FChatMessage>>& Messages, const FSoughtMessage& Sought);

	/** What is framed in it: what was typed where the message has it like that, else the longest of the words that were found. */
	FString ChooseWords(const FString& Typed, const FString& Excerpt, const TArray<Velmora::FFoundPlace>& Places);
}
