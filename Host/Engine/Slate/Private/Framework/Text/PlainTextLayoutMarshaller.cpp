#include "Framework/Text/PlainTextLayoutMarshaller.h"

ITextLayoutMarshaller::~ITextLayoutMarshaller() = default;

TSharedRef<FPlainTextLayoutMarshaller> FPlainTextLayoutMarshaller::Create()
{
	return MakeShared<FPlainTextLayoutMarshaller>();
}
