#include "CoreMinimal.h"

#include "Containers/StringConv.h"
#include "ConversationPrinter.h"
#include "DesktopOptions.h"
#include "DesktopProgram.h"
#include "Host/HostFileNames.h"

#include <csignal>

#ifndef VELMORA_VERSION
#define VELMORA_VERSION "0"
#endif

int main(int ArgumentCount, char** Arguments)
{
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
		return 0;
	}
	if (Options.bShowVersion)
	{
		PrintToStandardOutput(FString(TEXT("velmora ")) + UTF8_TO_TCHAR(VELMORA_VERSION) + TEXT("\n"));
		return 0;
	}
	Options.Version = UTF8_TO_TCHAR(VELMORA_VERSION);
	FDesktopProgram Program(Options);
	return Program.Run();
}
