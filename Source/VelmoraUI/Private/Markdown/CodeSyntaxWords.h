#pragma once

#include "CoreMinimal.h"

namespace Velmora::Markdown
{

	/** A fixed set of lower-case ASCII words, looked up in any letter case without making a string. Any thread. */
	class FCodeWords
	{
	public:
		FCodeWords(const TCHAR* const* InWords, int32 Count);

		bool Contains(const TCHAR* Word, int32 Length) const;

	private:
		static constexpr int32 SlotCount = 512;
		static constexpr int32 MaxLength = 16;

		struct FSlot
		{
			const TCHAR* Word = nullptr;
			int32 Length = 0;
		};

		/** Hash of the length and three of the letters, in lower case. */
		static uint32 Hash(const TCHAR* Word, int32 Length);

		/** The next free slot takes a word whose own is taken. */
		FSlot Slots[SlotCount];
	};

	const FCodeWords& GetCppKeywords();
	const FCodeWords& GetCppTypeWords();
	const FCodeWords& GetPythonKeywords();

} // namespace Velmora::Markdown
