#pragma once

#include "Framework/Text/ITextLayoutMarshaller.h"

/** Shows a text as it is. */
class SLATE_API FPlainTextLayoutMarshaller : public ITextLayoutMarshaller
{
public:
	static TSharedRef<FPlainTextLayoutMarshaller> Create();
};
