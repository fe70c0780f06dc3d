#include "Host/HostStderr.h"

#include "Containers/StringConv.h"

#include <cstdio>
#include <string>

void HostPrintError(FStringView Line)
{
	std::string Bytes;
	FTCHARToUTF8::Append(Bytes, Line);
	Bytes.push_back('\n');
	std::fwrite(Bytes.data(), 1, Bytes.size(), stderr);
	std::fflush(stderr);
}
