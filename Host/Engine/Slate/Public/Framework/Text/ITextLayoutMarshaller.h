#pragma once

#include "CoreMinimal.h"

/** Turns a text into what a text box shows and back. The host's boxes show plain text, so there is nothing to turn. */
class SLATE_API ITextLayoutMarshaller
{
public:
	virtual ~ITextLayoutMarshaller();
};
