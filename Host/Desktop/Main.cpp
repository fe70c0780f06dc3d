#include "CoreMinimal.h"

#include "Containers/StringConv.h"
#include "ConversationPrinter.h"
#include "DesktopOptions.h"
#include "DesktopProgram.h"
#include "Host/HostFileNames.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

#ifndef VELMORA_VERSION
#define VELMORA_VERSION "0"
#endif

namespace
{
	/** Whoever started us may have closed them; a file opened later would take the place, and get what is printed. */
	void OpenMissingStreams()
	{
		int Handle = 0;
		while (Handle >= 0 && Handle <= STDERR_FILENO)
		{
			Handle = open("/dev/null", O_RDWR);
		}
		if (Handle > STDERR_FILENO)
		{
			close(Handle);
		}
	}

	/** An answer that did not arrive is no success. */
	int Finish(int ExitCode)
	{
		if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
		{
			return ExitCode;
		}
		PrintToStandardError(TEXT("velmora: Not all could be written to the standard output.\n"));
		return ExitCode == 0 ? 1 : ExitCode;
	}
}

int main(int ArgumentCount, char** Arguments)
{
	OpenMissingStreams();
	// A file that grows beyond what the user's limits allow is a write that fails, in words, and not the end.
	std::signal(SIGXFSZ, SIG_IGN);
	TArray<FString> Words;
	for (int32 Index = 1; Index < ArgumentCount; ++Index)
	{
		// File names among the arguments keep bytes that are no text.
		Words.Add(HostFileNameFromBytes(Arguments[Index]));
	}
	// A wrong option ends the run before anything of the user's is opened.
	FDesktopOptions Options;
	const FString Complaint = Options.Parse(Words);
	if (!Complaint.IsEmpty())
	{
		PrintToStandardError(TEXT("velmora: ") + Complaint + TEXT("\n"));
		return 2;
	}
	if (Options.bShowHelp)
	{
		PrintToStandardOutput(FDesktopOptions::GetHelp());
		return Finish(0);
	}
	if (Options.bShowVersion)
	{
		PrintToStandardOutput(FString(TEXT("velmora ")) + UTF8_TO_TCHAR(VELMORA_VERSION) + TEXT("\n"));
		return Finish(0);
	}
	Options.Version = UTF8_TO_TCHAR(VELMORA_VERSION);
	FDesktopProgram Program(Options);
	return Finish(Program.Run());
}
