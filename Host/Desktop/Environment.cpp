#include "Environment.h"

#include "Host/HostFileNames.h"
#include "Host/StoreLocation.h"
#include "Misc/Paths.h"

#include <cstdlib>
#include <unistd.h>

FString GetWorkingFolder()
{
	std::string Buffer(4096, '\0');
	return getcwd(Buffer.data(), Buffer.size()) ? HostFileNameFromBytes(Buffer.c_str()) : FString(TEXT("/"));
}

FString MakeAbsolute(const FString& Path)
{
	FString Full = FPaths::IsRelative(Path) ? GetWorkingFolder() / Path : Path;
	FPaths::NormalizeFilename(Full);
	FPaths::CollapseRelativeDirectories(Full);
	// A final slash stands for the folder itself.
	while (Full.Len() > 1 && Full.EndsWith(TEXT("/")))
	{
		Full.LeftChopInline(1);
	}
	return Full;
}

float GetEnvironmentScale()
{
	// X11 tells no scale, and this is the variable that desktops set for programs like this one.
	const char* Text = getenv("GDK_SCALE");
	const double Value = Text ? strtod(Text, nullptr) : 1.0;
	return Value >= 0.5 && Value <= 4.0 ? static_cast<float>(Value) : 1.0f;
}

FString GetUserDataFolder()
{
	// A relative path there counts as none, by the convention that made the variable.
	const char* Data = getenv("XDG_DATA_HOME");
	if (Data && Data[0] == '/')
	{
		return HostFileNameFromBytes(Data);
	}
	const FString Home = Velmora::GetUserHomeFolder();
	return Home.IsEmpty() ? FString() : Home / TEXT(".local/share");
}
