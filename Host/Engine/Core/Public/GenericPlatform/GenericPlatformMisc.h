#pragma once

#include "CoreTypes.h"

/** Which buttons a message dialog has. */
namespace EAppMsgType
{
	enum Type
	{
		Ok,
		YesNo,
		OkCancel,
		YesNoCancel,
		CancelRetryContinue,
		YesNoYesAllNoAll,
		YesNoYesAllNoAllCancel,
		YesNoYesAll,
	};
}

namespace EAppReturnType
{
	enum Type
	{
		No,
		Yes,
		YesAll,
		NoAll,
		Cancel,
		Ok,
		Retry,
		Continue,
	};
}

enum class EAppMsgCategory : uint8
{
	Warning,
	Error,
	Success,
	Info,
};

/** "Yes", "Cancel", ... Static storage. */
CORE_API const TCHAR* LexToString(EAppReturnType::Type Value);
