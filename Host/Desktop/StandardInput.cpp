#include "StandardInput.h"

#include "Containers/StringConv.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

bool FStandardInput::IsPiped()
{
	struct stat Info = {};
	return fstat(STDIN_FILENO, &Info) == 0 && (S_ISFIFO(Info.st_mode) || S_ISREG(Info.st_mode));
}

bool FStandardInput::TakeLine(FString& OutLine, bool& bOutAtEnd)
{
	// 1. As much as is there, without waiting: frames go on while nobody types.
	bOutAtEnd = false;
	size_t End = Waiting.find('\n');
	while (End == std::string::npos && !bClosed)
	{
		pollfd Poll = { STDIN_FILENO, POLLIN, 0 };
		if (poll(&Poll, 1, 0) <= 0)
		{
			return false;
		}
		char Buffer[4096];
		const ssize_t Count = read(STDIN_FILENO, Buffer, sizeof(Buffer));
		if (Count <= 0)
		{
			bClosed = true;
			break;
		}
		Waiting.append(Buffer, static_cast<size_t>(Count));
		End = Waiting.find('\n');
	}
	// 2. A last line without a line feed is a line; only nothing at all is the end.
	if (End == std::string::npos && Waiting.empty())
	{
		bOutAtEnd = true;
		OutLine.Reset();
		return false;
	}
	std::string Line = Waiting.substr(0, End);
	Waiting.erase(0, End == std::string::npos ? Waiting.size() : End + 1);
	// 3. Files from other systems end their lines with both.
	if (!Line.empty() && Line.back() == '\r')
	{
		Line.pop_back();
	}
	OutLine = FString(FUTF8ToTCHAR(Line.c_str(), static_cast<int32>(Line.size())));
	return true;
}
