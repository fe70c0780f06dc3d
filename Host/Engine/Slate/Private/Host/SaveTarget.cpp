#include "Host/SaveTarget.h"

#include "Host/HostFileNames.h"
#include "Host/HostFolders.h"

#include <cstdlib>

// What a user means by a name in a save dialog: a file here, a path elsewhere, a folder to go to, or nothing that can be
// saved. Everything is decided before the dialog closes, so that a name never turns out to be impossible afterwards,
// when the text of the file would be lost.

FString FSaveFilter::AddEnding(const FString& Name) const
{
	int32 Dot = INDEX_NONE;
	int32 Wild = INDEX_NONE;
	const FString Leaf = FSaveTarget::GetLeaf(Name);
	// A dot in front hides a file, and is no ending.
	const bool bHasEnding = Leaf.FindLastChar(TEXT('.'), Dot) && Dot > 0 && Dot + 1 < Leaf.Len();
	const FString Ending = Patterns.Num() > 0 ? Patterns[0].RightChop(1) : FString();
	const bool bIsOne = Patterns.Num() > 0 && Patterns[0].StartsWith(TEXT("*.")) && !Ending.FindChar(TEXT('*'), Wild);
	return bHasEnding || !bIsOne || Leaf.IsEmpty() ? Name : Name + Ending;
}

bool FSaveFilter::Matches(const FString& Name) const
{
	for (const FString& Pattern : Patterns)
	{
		if (Name.MatchesWildcard(Pattern))
		{
			return true;
		}
	}
	return Patterns.IsEmpty();
}

TArray<FSaveFilter> FSaveFilter::Parse(const FString& FileTypes)
{
	TArray<FString> Parts;
	FileTypes.ParseIntoArray(Parts, TEXT("|"), false);
	TArray<FSaveFilter> Filters;
	for (int32 Index = 0; Index + 1 < Parts.Num(); Index += 2)
	{
		FSaveFilter& Filter = Filters.AddDefaulted_GetRef();
		Filter.Label = Parts[Index];
		TArray<FString> Patterns;
		Parts[Index + 1].ParseIntoArray(Patterns, TEXT(";"), true);
		for (const FString& Pattern : Patterns)
		{
			const FString Trimmed = Pattern.TrimStartAndEnd();
			// On other systems this means any file; here it would leave out names without a dot.
			Filter.Patterns.Add(Trimmed == TEXT("*.*") ? FString(TEXT("*")) : Trimmed);
		}
	}
	if (Filters.IsEmpty())
	{
		Filters.Add(FSaveFilter{ TEXT("All files"), {} });
	}
	return Filters;
}

FString FSaveTarget::Collapse(const FString& Path)
{
	TArray<FString> Parts;
	Path.ParseIntoArray(Parts, TEXT("/"), true);
	TArray<FString> Kept;
	for (FString& Part : Parts)
	{
		if (Part == TEXT(".."))
		{
			if (!Kept.IsEmpty())
			{
				Kept.Pop();
			}
		}
		else if (Part != TEXT("."))
		{
			Kept.Add(MoveTemp(Part));
		}
	}
	return TEXT("/") + FString::Join(Kept, TEXT("/"));
}

FString FSaveTarget::GetParent(const FString& Path)
{
	int32 Slash = INDEX_NONE;
	return Path.FindLastChar(TEXT('/'), Slash) && Slash > 0 ? Path.Left(Slash) : FString(TEXT("/"));
}

FString FSaveTarget::GetLeaf(const FString& Path)
{
	int32 Slash = INDEX_NONE;
	return Path.FindLastChar(TEXT('/'), Slash) ? Path.RightChop(Slash + 1) : Path;
}

FString FSaveTarget::Join(const FString& Folder, const FString& Name)
{
	return Folder.EndsWith(TEXT("/")) ? Folder + Name : Folder + TEXT("/") + Name;
}

namespace
{
	/** What was typed as a whole path: from the root, from the home folder, or else from the folder that is shown. */
	FString MakeWhole(const FString& Folder, const FString& Typed)
	{
		const char* const Home = std::getenv("HOME");
		if (Home && Home[0] == '/' && (Typed.Equals(TEXT("~")) || Typed.StartsWith(TEXT("~/"))))
		{
			return FSaveTarget::Join(HostFileNameFromBytes(Home), Typed.RightChop(1));
		}
		return Typed.StartsWith(TEXT("/")) ? Typed : FSaveTarget::Join(Folder, Typed);
	}

	/** Why a file cannot stand there; empty when it can. A missing folder is made for a file that was asked for in plain view. */
	FString FindProblemOfParent(const FString& Path, bool bStraight)
	{
		const FString Parent = FSaveTarget::GetParent(Path);
		const EHostPathKind Kind = HostGetPathKind(Parent);
		if (Kind == EHostPathKind::File || Kind == EHostPathKind::Other)
		{
			return FString::Printf(TEXT("\"%s\" is no folder."), *Parent);
		}
		if (Kind == EHostPathKind::Missing && !bStraight)
		{
			return FString::Printf(TEXT("There is no folder \"%s\"."), *Parent);
		}
		FString Reason;
		if (Kind == EHostPathKind::Folder && !HostCanSaveFile(Path, Reason))
		{
			return FString::Printf(TEXT("\"%s\" cannot be saved here: %s."), *FSaveTarget::GetLeaf(Path), *Reason);
		}
		return FString();
	}
}

FSaveTarget FSaveTarget::Find(const FString& Folder, const FString& Typed)
{
	// 1. What no path can be.
	FSaveTarget Target;
	int32 Null = INDEX_NONE;
	if (Typed.TrimStartAndEnd().IsEmpty())
	{
		Target.Problem = TEXT("Type a name for the file.");
		return Target;
	}
	if (Typed.FindChar(TEXT('\0'), Null))
	{
		Target.Problem = TEXT("This name holds a character that no file name can have.");
		return Target;
	}

	// 2. A folder is gone into, not saved to.
	Target.Path = Collapse(MakeWhole(Folder, Typed));
	const EHostPathKind Kind = HostGetPathKind(Target.Path);
	const bool bMeansFolder = Typed.EndsWith(TEXT("/")) || Target.Path.Equals(TEXT("/")) || Target.Path.Equals(Collapse(Folder));
	if (Kind == EHostPathKind::Folder)
	{
		Target.Kind = EKind::Folder;
		return Target;
	}
	if (bMeansFolder)
	{
		Target.Problem = FString::Printf(TEXT("There is no folder \"%s\"."), *Target.Path);
		return Target;
	}
	if (Kind == EHostPathKind::Other)
	{
		Target.Problem = FString::Printf(TEXT("\"%s\" is no file."), *Target.Path);
		return Target;
	}

	// 3. A file, if the folder around it takes one.
	Target.Problem = FindProblemOfParent(Target.Path, GetParent(Target.Path).Equals(Collapse(Folder)));
	if (Target.Problem.IsEmpty())
	{
		Target.Kind = Kind == EHostPathKind::File ? EKind::ExistingFile : EKind::NewFile;
	}
	return Target;
}
