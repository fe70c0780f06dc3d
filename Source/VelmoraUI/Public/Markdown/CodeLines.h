#pragma once

#include "CoreMinimal.h"
#include "Markdown/CodeSyntax.h"

namespace Velmora::Markdown
{

	/** A run of one line in one colour. */
	struct FCodePiece
	{
		ESyntaxTokenType Type = ESyntaxTokenType::Default;
		FString Text;
	};

	/**
	 * Code as it was written, line by line: the pieces of a line joined are the line. Tokens are cut at the ends of lines and keep their
	 * type; what no token covers is Default. Blanks join what follows or, at the end of a line, what precedes, since they show no colour.
	 *
	 * @param Tokens  Of this code, in its order.
	 * @return  At least one piece per line. Lines end with CR LF, LF or CR; after the last line end stands one more, empty line.
	 */
	VELMORAUI_API TArray<TArray<FCodePiece>> SplitIntoCodeLines(const FString& Code, const TArray<FSyntaxToken>& Tokens);

} // namespace Velmora::Markdown
