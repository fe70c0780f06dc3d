#pragma once

#include "Markdown/CodeSyntax.h"

/** The rules of colouring written down one by one, without a thought for speed: what the quick version is compared with. */
namespace LiteralCodeSyntax
{
	TArray<Velmora::Markdown::FSyntaxToken> Tokenize(const FString& Code, const FString& Language);
}
