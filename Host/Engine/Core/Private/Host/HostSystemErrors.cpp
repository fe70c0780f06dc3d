#include "Host/HostSystemErrors.h"

#include <cstring>

namespace
{
	struct FErrorWords
	{
		int Error;
		const char* Words;
	};

	// clang-format off
	constexpr FErrorWords ErrorWords[] = {
		{ EACCES, "no permission" },
		{ EPERM, "no permission" },
		{ ENOENT, "no such file or folder" },
		{ EEXIST, "the file exists" },
		{ ENOTDIR, "a part of the path is no folder" },
		{ EISDIR, "the path is a folder" },
		{ ESPIPE, "the path is a pipe or a device" },
		{ ENOTEMPTY, "the folder is not empty" },
		{ ENOSPC, "no space left on the disk" },
		{ EDQUOT, "the disk quota is used up" },
		{ EFBIG, "the file would become too large" },
		{ EROFS, "the file system is read-only" },
		{ ENAMETOOLONG, "the name is too long" },
		{ ELOOP, "the links go round in a circle" },
		{ EMFILE, "too many open files" },
		{ ENFILE, "too many open files" },
		{ EIO, "the disk reports an error" },
		{ ECANCELED, "it was stopped" },
		{ ENXIO, "nobody reads from it" },
		{ EINTR, "signals interrupt it again and again" },
		{ ETXTBSY, "a program runs from it" },
		{ EBUSY, "it is in use" },
		{ EINVAL, "the system does not accept it" },
		{ ENOMEM, "out of memory" },
	};
	// clang-format on
}

std::string HostDescribeSystemError(int Error)
{
	for (const FErrorWords& Row : ErrorWords)
	{
		if (Row.Error == Error)
		{
			return Row.Words;
		}
	}
	// The library's words, untranslated, for the rest.
	const char* const Words = strerrordesc_np(Error);
	return Words ? "the system says: " + std::string(Words) : "system error " + std::to_string(Error);
}
