#include "Host/Outcome.h"

namespace
{
	EOutcome ToCode(int Error)
	{
		switch (Error)
		{
		case ENOENT:
		case ENOTDIR:
			return EOutcome::Missing;
		case EEXIST:
			return EOutcome::Exists;
		case EBUSY:
		case EWOULDBLOCK:
		case ETXTBSY:
			return EOutcome::Busy;
		case ECANCELED:
			return EOutcome::Stopped;
		case EACCES:
		case EPERM:
		case EROFS:
			return EOutcome::Denied;
		case ENOSPC:
		case EDQUOT:
		case EFBIG:
			return EOutcome::Full;
		default:
			return EOutcome::Failed;
		}
	}
}

FOutcome FOutcome::FromSystem(int Error, std::string InPath)
{
	return FOutcome(ToCode(Error), HostDescribeSystemError(Error), std::move(InPath));
}

FOutcome FOutcome::Explain(std::string_view What) const
{
	return IsDone() ? *this : FOutcome(Code, std::string(What) + ": " + Words + ".", Path);
}
