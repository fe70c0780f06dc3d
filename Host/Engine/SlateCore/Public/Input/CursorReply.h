#pragma once

#include "GenericPlatform/ICursor.h"

/** Answer of a widget to the question which pointer it wants. */
class FCursorReply
{
public:
	static FCursorReply Unhandled() { return FCursorReply(); }
	static FCursorReply Cursor(EMouseCursor::Type InCursor)
	{
		FCursorReply Reply;
		Reply.bHandled = true;
		Reply.CursorType = InCursor;
		return Reply;
	}
	bool IsEventHandled() const { return bHandled; }
	EMouseCursor::Type GetCursorType() const { return CursorType; }

private:
	bool bHandled = false;
	EMouseCursor::Type CursorType = EMouseCursor::Default;
};
