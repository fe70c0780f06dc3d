#pragma once

#include "Host/HostTextWidget.h"

/** Signatures around text of several lines. The box SMultiLineEditableTextBox is the widget itself. */
class SLATE_API SMultiLineEditableText
{
public:
	using FOnCursorMoved = FHostOnCursorMoved;
};
