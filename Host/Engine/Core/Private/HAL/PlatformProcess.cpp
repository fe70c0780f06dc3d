#include "HAL/PlatformProcess.h"

#include "Host/HostFileNames.h"
#include "Host/HostServices.h"

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>
#include <unistd.h>

namespace
{
	FString ReadExecutablePath()
	{
		std::string Bytes(4096, '\0');
		const ssize_t Length = readlink("/proc/self/exe", Bytes.data(), Bytes.size());
		Bytes.resize(Length > 0 ? std::size_t(Length) : 0);
		return HostFileNameFromBytes(Bytes);
	}

	FString MakeBaseDir()
	{
		const FString Path = FPlatformProcess::ExecutablePath();
		int32 Slash = INDEX_NONE;
		return Path.FindLastChar(TEXT('/'), Slash) ? Path.Left(Slash + 1) : FString(TEXT("/"));
	}

	bool LaunchTarget(FHostLaunchRequest::EKind Kind, const TCHAR* Target, const TCHAR* Parms, FString& OutError)
	{
		FHostLaunchRequest Request;
		Request.Kind = Kind;
		Request.Target = FString(Target);
		Request.Parameters = FString(Parms);
		OutError.Reset();
		return FHostServices::Launch(Request, OutError);
	}
}

void FPlatformProcess::LaunchURL(const TCHAR* Url, const TCHAR* Parms, FString* Error)
{
	FString Reason;
	LaunchTarget(FHostLaunchRequest::EKind::Url, Url, Parms, Reason);
	if (Error)
	{
		*Error = Reason;
	}
}

bool FPlatformProcess::LaunchFileInDefaultExternalApplication(
	const TCHAR* FileName, const TCHAR* Parms, ELaunchVerb::Type Verb, bool bPromptToOpenOnFailure)
{
	FString Reason;
	return LaunchTarget(FHostLaunchRequest::EKind::File, FileName, Parms, Reason);
}

void FPlatformProcess::Sleep(float Seconds)
{
	if (Seconds > 0.0f)
	{
		std::this_thread::sleep_for(std::chrono::duration<double>(Seconds));
	}
	else
	{
		std::this_thread::yield();
	}
}

const TCHAR* FPlatformProcess::ExecutablePath()
{
	static const FString Path = ReadExecutablePath();
	return *Path;
}

const TCHAR* FPlatformProcess::BaseDir()
{
	static const FString Path = MakeBaseDir();
	return *Path;
}
