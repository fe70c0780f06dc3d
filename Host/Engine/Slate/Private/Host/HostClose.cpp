#include "Host/HostClose.h"

namespace
{
	TFunction<bool()>& GetCloseHandler()
	{
		static TFunction<bool()> Handler;
		return Handler;
	}
}

void FHostClose::SetHandler(TFunction<bool()> Handler)
{
	GetCloseHandler() = MoveTemp(Handler);
}

bool FHostClose::MayClose()
{
	// A copy: what it does may take it away.
	const TFunction<bool()> Handler = GetCloseHandler();
	return !Handler || Handler();
}
