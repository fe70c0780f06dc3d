#pragma once

#include "CoreMinimal.h"

namespace Velmora::UI
{

	/** The @ token that stands before the cursor on its line, if there is one. */
	struct FAtTokenState
	{
		/** Index of the '@', -1 if there is none. */
		int32 AtIndex = -1;
		/** Index just after the last character of the token, -1 if there is none. */
		int32 TokenEnd = -1;
		/** What stands between the '@' and TokenEnd, also to the right of the cursor. */
		FString Query;
		/** The cursor stands in the token, so the dropdown belongs open. */
		bool bActive = false;
	};

	/**
	 * Finds the nearest '@' to the left of the cursor on the same line. What stands in front of it does not matter, so a
	 * token may begin within a word. Reads the line up to the token's end, whatever the length of the text. Pure.
	 *
	 * @param CursorIndex  Counted in units of the text; clamped to it.
	 */
	VELMORAUI_API FAtTokenState ComputeAtTokenState(const FString& Text, int32 CursorIndex);

	/**
	 * Puts Replacement in the place of [StartIndex, EndIndex), with the cursor after it. A range that makes no sense
	 * leaves the text as it is and the cursor at StartIndex, clamped to the text. OutText may be Text.
	 */
	VELMORAUI_API void ApplyAtTokenReplacement(
		const FString& Text, int32 StartIndex, int32 EndIndex, const FString& Replacement, FString& OutText, int32& OutCursorIndex);

} // namespace Velmora::UI
