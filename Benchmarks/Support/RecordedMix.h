#pragma once

#include "ViewModels/ChatMessage.h"

/**
 * Finished messages in the mix of real conversations: of twenty, eight prompts and notes, eight answers of 600 characters,
 * three groups of five tool runs, one answer with a table and a code block. The words differ from message to message.
 */
class FRecordedMix
{
public:
	static TSharedPtr<FChatMessage> Make(int32 Index);
	static TArray<TSharedPtr<FChatMessage>> MakeMany(int32 Count);
	static TSharedPtr<FChatMessage> MakeAnswer(int32 Index);
	/** Plain words, of about this many characters. */
	static FString MakeWords(int32 Length, int32 Seed);
	/** Markdown as agents write it, of about this many characters. */
	static FString MakeMarkdown(int32 Length);
};
