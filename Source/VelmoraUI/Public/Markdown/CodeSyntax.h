#pragma once

#include "CoreMinimal.h"

/**
 * Splits source code into coloured pieces, one small hand-written tokeniser per family of languages. Knows no grammar
 * beyond one token, so half a file colours as well as a whole one. Pure; linear in the length of the code.
 */
namespace Velmora::Markdown
{

	enum class ESyntaxTokenType : uint8
	{
		Default = 0,
		Keyword = 1,
		String = 2,
		Comment = 3,
		Number = 4,
		Operator = 5,
		Preprocessor = 6,
		Type = 7,
		Function = 8
	};

	/** One piece of code. */
	struct FSyntaxToken
	{
		ESyntaxTokenType Type = ESyntaxTokenType::Default;
		FString Text;

		/** Index of the first character in the code. */
		int32 Start = 0;

		/** Index after the last. A construct that is never closed may end one or two beyond the code. */
		int32 End = 0;
	};

	/**
	 * Tokens in the order of the code.
	 *
	 * @param Language  Tag of the code fence: "cpp", "c++", "h", "hpp", "python", "py" or "json" in any letter case. For every
	 *                  other one the whole code is a single Default token, also when it is empty.
	 */
	VELMORAUI_API TArray<FSyntaxToken> TokenizeCode(const FString& Code, const FString& Language);

	VELMORAUI_API TArray<FSyntaxToken> TokenizeCpp(const FString& Code);
	VELMORAUI_API TArray<FSyntaxToken> TokenizePython(const FString& Code);
	VELMORAUI_API TArray<FSyntaxToken> TokenizeJson(const FString& Code);

	/** Appends a token unless its text is empty, or its start or end falls into a token that is there already. */
	VELMORAUI_API void AddSyntaxToken(TArray<FSyntaxToken>& Tokens, ESyntaxTokenType Type, const FString& Text, int32 Start, int32 End);

	/** A word that follows the engine's naming scheme (an upper-case letter after F, U, A, T, I or E), or a built-in type. */
	VELMORAUI_API bool IsCppTypeName(const FString& Word);

} // namespace Velmora::Markdown
