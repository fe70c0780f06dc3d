#include "Misc/Paths.h"

#include "Containers/Array.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformProcess.h"
#include "Host/HostFileNames.h"
#include "Host/HostPaths.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <unistd.h>

// Paths are text here: nothing but FileExists and DirectoryExists looks at the disk, and "." and ".." are taken away
// without regard to links. Both kinds of separators are read, forward slashes are written. Drive letters and server
// names are understood, because the module meets paths of projects that were written elsewhere.
//
// Folders of project and engine may be set by any thread and are read by many; a folder that was not set follows from
// another one.

namespace
{
	bool IsSeparator(TCHAR Char)
	{
		return Char == TEXT('/') || Char == TEXT('\\');
	}

	bool IsLetter(TCHAR Char)
	{
		return (Char >= TEXT('a') && Char <= TEXT('z')) || (Char >= TEXT('A') && Char <= TEXT('Z'));
	}

	int32 FindLastSeparator(const FString& Path)
	{
		return Path.FindLastCharByPredicate(IsSeparator);
	}

	/** Position of the dot in front of the last part's extension. */
	int32 FindExtensionDot(const FString& Path)
	{
		int32 Dot = INDEX_NONE;
		return Path.FindLastChar(TEXT('.'), Dot) && Dot > FindLastSeparator(Path) ? Dot : INDEX_NONE;
	}

	/** Length of what cannot be left upwards: "/", "//" in front of a server's name, "X:/", "X:"; 0 for a relative path. */
	int32 GetRootLength(const FString& Path)
	{
		const int32 Length = Path.Len();
		if (Length >= 2 && IsLetter(Path[0]) && Path[1] == TEXT(':'))
		{
			return Length >= 3 && IsSeparator(Path[2]) ? 3 : 2;
		}
		int32 Count = 0;
		while (Count < 2 && Count < Length && IsSeparator(Path[Count]))
		{
			++Count;
		}
		return Count;
	}

	FString GetWorkingDirectory()
	{
		std::string Bytes(4096, '\0');
		if (!getcwd(Bytes.data(), Bytes.size()))
		{
			return TEXT("/");
		}
		Bytes.resize(std::char_traits<char>::length(Bytes.c_str()));
		return HostFileNameFromBytes(Bytes);
	}

	FString MakeFolder(const FString& Path)
	{
		FString Full = FPaths::ConvertRelativePathToFull(GetWorkingDirectory(), Path);
		if (!Full.EndsWith(TEXT("/")))
		{
			Full += TEXT("/");
		}
		return Full;
	}

	/** The folders that were set; empty ones follow from others. */
	struct FFolders
	{
		std::mutex Mutex;
		FString Project;
		FString ProjectContent;
		FString ProjectSaved;
		FString ProjectFile;
		FString Engine;
		FString EngineSaved;
		FString Base;
		std::atomic<bool> bRelative = false;
	};

	FFolders& GetFolders()
	{
		// Never destroyed: a thread that was left behind on a dead disk may still ask while the process goes down.
		static FFolders* const Folders = std::make_unique<FFolders>().release();
		return *Folders;
	}

	void SetFolder(FString& Folder, const FString& Path)
	{
		const FString Full = MakeFolder(Path);
		const std::lock_guard<std::mutex> Lock(GetFolders().Mutex);
		Folder = Full;
	}

	FString GetFolder(const FString& Folder)
	{
		const std::lock_guard<std::mutex> Lock(GetFolders().Mutex);
		return Folder;
	}

	/** As callers want it: absolute, or as seen from the base folder. */
	// The editor gives its folders as seen from its binaries ("../../../Game/"), which is what code has to be ready for;
	// a test switches that on. Storing them absolute keeps them right when the base folder changes.
	FString HandOut(FString Folder)
	{
		if (GetFolders().bRelative && FPaths::MakePathRelativeTo(Folder, *FHostPaths::GetBaseDir()) && Folder.IsEmpty())
		{
			Folder = TEXT("./");
		}
		return Folder;
	}

	FString GetFolderOr(const FString& Folder, const FString& Parent, const TCHAR* Below)
	{
		const FString Set = GetFolder(Folder);
		return Set.IsEmpty() ? Parent + Below : HandOut(Set);
	}
}

// A new project has its own folders: what was set for the old one is forgotten.
void FHostPaths::SetProjectDir(const FString& Path)
{
	FFolders& Folders = GetFolders();
	SetFolder(Folders.Project, Path);
	const std::lock_guard<std::mutex> Lock(Folders.Mutex);
	Folders.ProjectContent.Reset();
	Folders.ProjectSaved.Reset();
}

void FHostPaths::SetProjectSavedDir(const FString& Path)
{
	SetFolder(GetFolders().ProjectSaved, Path);
}

void FHostPaths::SetEngineDir(const FString& Path)
{
	FFolders& Folders = GetFolders();
	SetFolder(Folders.Engine, Path);
	const std::lock_guard<std::mutex> Lock(Folders.Mutex);
	Folders.EngineSaved.Reset();
}

void FHostPaths::SetEngineSavedDir(const FString& Path)
{
	SetFolder(GetFolders().EngineSaved, Path);
}

void FHostPaths::SetBaseDir(const FString& Path)
{
	SetFolder(GetFolders().Base, Path);
}

FString FHostPaths::GetBaseDir()
{
	const FString Set = GetFolder(GetFolders().Base);
	return Set.IsEmpty() ? FString(FPlatformProcess::BaseDir()) : Set;
}

void FHostPaths::UseRelativeFolders(bool bRelative)
{
	GetFolders().bRelative = bRelative;
}

bool FHostPaths::AreFoldersRelative()
{
	return GetFolders().bRelative;
}

FString FPaths::ProjectDir()
{
	const FString Set = GetFolder(GetFolders().Project);
	return HandOut(Set.IsEmpty() ? MakeFolder(FString()) : Set);
}

FString FPaths::ProjectContentDir()
{
	return GetFolderOr(GetFolders().ProjectContent, ProjectDir(), TEXT("Content/"));
}

FString FPaths::ProjectSavedDir()
{
	return GetFolderOr(GetFolders().ProjectSaved, ProjectDir(), TEXT("Saved/"));
}

FString FPaths::EngineDir()
{
	const FString Set = GetFolder(GetFolders().Engine);
	return HandOut(Set.IsEmpty() ? FString(FPlatformProcess::BaseDir()) : Set);
}

FString FPaths::EngineSavedDir()
{
	return GetFolderOr(GetFolders().EngineSaved, EngineDir(), TEXT("Saved/"));
}

bool FPaths::FileExists(const FString& Path)
{
	return IFileManager::Get().FileExists(*Path);
}

bool FPaths::DirectoryExists(const FString& Path)
{
	return IFileManager::Get().DirectoryExists(*Path);
}

bool FPaths::IsRelative(const FString& Path)
{
	return GetRootLength(Path) == 0;
}

bool FPaths::IsDrive(const FString& Path)
{
	const int32 Root = GetRootLength(Path);
	return Root > 0 && Root == Path.Len();
}

FString FPaths::GetExtension(const FString& Path, bool bIncludeDot)
{
	const int32 Dot = FindExtensionDot(Path);
	return Dot == INDEX_NONE ? FString() : Path.RightChop(bIncludeDot ? Dot : Dot + 1);
}

FString FPaths::GetCleanFilename(const FString& Path)
{
	return Path.RightChop(FindLastSeparator(Path) + 1);
}

FString FPaths::GetBaseFilename(const FString& Path, bool bRemovePath)
{
	const int32 Dot = FindExtensionDot(Path);
	const int32 End = Dot == INDEX_NONE ? Path.Len() : Dot;
	const int32 Start = bRemovePath ? FindLastSeparator(Path) + 1 : 0;
	return Path.Mid(Start, End - Start);
}

FString FPaths::GetPath(const FString& Path)
{
	const int32 Separator = FindLastSeparator(Path);
	return Separator == INDEX_NONE ? FString() : Path.Left(Separator);
}

void FPaths::Split(const FString& Path, FString& OutPath, FString& OutFilename, FString& OutExtension)
{
	const FString Whole = Path; // An output may be the input.
	OutPath = GetPath(Whole);
	OutFilename = GetBaseFilename(Whole);
	OutExtension = GetExtension(Whole);
}

void FPaths::NormalizeFilename(FString& Path)
{
	for (TCHAR& Char : Path)
	{
		if (Char == TEXT('\\'))
		{
			Char = TEXT('/');
		}
	}
}

void FPaths::NormalizeDirectoryName(FString& Path)
{
	NormalizeFilename(Path);
	while (Path.EndsWith(TEXT("/")) && !IsDrive(Path))
	{
		Path.LeftChopInline(1);
	}
}

// A relative path may lead up and out ("../x"); an absolute one that would leave its root is refused and left as it was.
bool FPaths::CollapseRelativeDirectories(FString& Path)
{
	const int32 RootLength = GetRootLength(Path);
	TArray<FString> Parts;
	Path.RightChop(RootLength).ParseIntoArray(Parts, TEXT("/"), true);
	TArray<FString> Kept;
	for (FString& Part : Parts)
	{
		if (Part.Equals(TEXT(".")))
		{
			continue;
		}
		const bool bUp = Part.Equals(TEXT(".."));
		if (bUp && Kept.Num() > 0 && !Kept.Last().Equals(TEXT("..")))
		{
			Kept.Pop();
		}
		else if (bUp && RootLength > 0)
		{
			return false;
		}
		else
		{
			Kept.Add(MoveTemp(Part));
		}
	}
	FString Result = Path.Left(RootLength) + FString::Join(Kept, TEXT("/"));
	if (Kept.Num() > 0 && Path.EndsWith(TEXT("/")))
	{
		Result += TEXT("/");
	}
	// A relative path stays relative, also when its first name looks like a drive ("./P:x").
	if (RootLength == 0 && GetRootLength(Result) > 0)
	{
		Result = TEXT("./") + Result;
	}
	Path = MoveTemp(Result);
	return true;
}

FString FPaths::ConvertRelativePathToFull(const FString& Path)
{
	return ConvertRelativePathToFull(FHostPaths::GetBaseDir(), Path);
}

FString FPaths::ConvertRelativePathToFull(const FString& Base, const FString& Path)
{
	FString Full = IsRelative(Path) ? Combine(Base, Path) : Path;
	NormalizeFilename(Full);
	CollapseRelativeDirectories(Full);
	if (Full.IsEmpty())
	{
		Full = TEXT("/");
	}
	return Full;
}

// 1. Both absolute, so that "." and ".." are gone. Different roots have no way between them.
bool FPaths::MakePathRelativeTo(FString& Path, const TCHAR* RelativeTo)
{
	const FString Target = ConvertRelativePathToFull(Path);
	const FString Source = ConvertRelativePathToFull(RelativeTo);
	const int32 TargetRoot = GetRootLength(Target);
	const int32 SourceRoot = GetRootLength(Source);
	if (!Target.Left(TargetRoot).Equals(Source.Left(SourceRoot)))
	{
		return false;
	}
	TArray<FString> TargetParts;
	TArray<FString> SourceParts;
	Target.RightChop(TargetRoot).ParseIntoArray(TargetParts, TEXT("/"), false);
	GetPath(Source).RightChop(SourceRoot).ParseIntoArray(SourceParts, TEXT("/"), true);
	// 2. The folders that both have in common. What stands after the last slash of RelativeTo is a file and does not
	// count.
	int32 Shared = 0;
	while (Shared < TargetParts.Num() && Shared < SourceParts.Num() && TargetParts[Shared].Equals(SourceParts[Shared]))
	{
		++Shared;
	}
	// 3. Up from the one, then down to the other.
	FString Result;
	for (int32 Index = Shared; Index < SourceParts.Num(); ++Index)
	{
		Result += TEXT("../");
	}
	for (int32 Index = Shared; Index < TargetParts.Num(); ++Index)
	{
		Result += TargetParts[Index];
		if (Index + 1 < TargetParts.Num())
		{
			Result += TEXT("/");
		}
	}
	Path = MoveTemp(Result);
	return true;
}

// Exactly one separator in between, however many the parts bring.
void FPaths::AppendPart(FString& Path, const FString& Part)
{
	if (Part.IsEmpty())
	{
		return;
	}
	if (Path.IsEmpty())
	{
		Path = Part;
		return;
	}
	const bool bEnds = IsSeparator(Path[Path.Len() - 1]);
	const bool bStarts = IsSeparator(Part[0]);
	if (bEnds && bStarts)
	{
		Path.Append(FStringView(Part).RightChop(1));
	}
	else
	{
		if (!bEnds && !bStarts)
		{
			Path += TEXT("/");
		}
		Path += Part;
	}
}
