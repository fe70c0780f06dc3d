#pragma once

#include "CoreMinimal.h"
#include "Markdown/MarkdownToken.h"

/**
 * The dialect's rules written down one after the other with no thought of speed. It is what the module's parser is
 * compared with: the two must give the same tokens for every text.
 */
TArray<Velmora::Markdown::FMarkdownToken> ParseLiterally(const FString& Input);
