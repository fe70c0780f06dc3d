#include "Misc/AssertionMacros.h"

#include "Containers/StringConv.h"

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <set>
#include <utility>

namespace
{
	void WriteFailure(const char* Kind, const char* Expression, const char* File, int32 Line, const TCHAR* Message)
	{
		std::string Text = std::string(Kind) + " failed: " + Expression + " [" + File + ":" + std::to_string(Line) + "]";
		if (Message && *Message)
		{
			Text += " ";
			FTCHARToUTF8::Append(Text, Message);
		}
		Text += "\n";
		std::fputs(Text.c_str(), stderr);
		std::fflush(stderr);
	}
}

void UE::Assert::Failed(const char* Expression, const char* File, int32 Line, const TCHAR* Message)
{
	WriteFailure("Assertion", Expression, File, Line, Message);
	std::abort();
}

bool UE::Assert::EnsureFailed(const char* Expression, const char* File, int32 Line, const TCHAR* Message, bool bAlways)
{
	static std::mutex Mutex;
	static std::set<std::pair<std::string, int32>> Reported;
	{
		const std::lock_guard<std::mutex> Lock(Mutex);
		if (!Reported.emplace(File, Line).second && !bAlways)
		{
			return false;
		}
	}
	WriteFailure("Ensure condition", Expression, File, Line, Message);
	return false;
}
