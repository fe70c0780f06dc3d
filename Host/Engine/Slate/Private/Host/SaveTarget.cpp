#include "Host/SaveTarget.h"

#include "Host/HostFileNames.h"
#include "Host/HostFolders.h"

#include <cstdlib>

// What a user means by a name in a save dialog: a file here, a path elsewhere, a folder to go to, or nothing that can be
// saved. Everything is decided before the dialog closes, so that a name never turns out to be impossible afterwards,
// when the text of the file would be lost.

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

FSaveTarget FSaveTarget::Find(const FString& Folder, const FString& Typed)
{
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
	const char* const Home = std::getenv("HOME");
	FString Whole;
	if (Home && Home[0] == '/' && (Typed.Equals(TEXT("~")) || Typed.StartsWith(TEXT("~/"))))
	{
		Whole = Join(HostFileNameFromBytes(Home), Typed.RightChop(1));
	}
	else
	{
		Whole = Typed.StartsWith(TEXT("/")) ? Typed : Join(Folder, Typed);
	}
	Target.Path = Collapse(Whole);
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
	const FString Parent = GetParent(Target.Path);
	const bool bStraight = Parent.Equals(Collapse(Folder));
	const EHostPathKind ParentKind = HostGetPathKind(Parent);
	FString Reason;
	if (ParentKind == EHostPathKind::File || ParentKind == EHostPathKind::Other)
	{
		Target.Problem = FString::Printf(TEXT("\"%s\" is no folder."), *Parent);
	}
	else if (ParentKind == EHostPathKind::Missing && !bStraight)
	{
		Target.Problem = FString::Printf(TEXT("There is no folder \"%s\"."), *Parent);
	}
	else if (ParentKind == EHostPathKind::Folder && !HostCanSaveFile(Target.Path, Reason))
	{
		Target.Problem = FString::Printf(TEXT("\"%s\" cannot be saved here: %s."), *GetLeaf(Target.Path), *Reason);
	}
	else
	{
		Target.Kind = Kind == EHostPathKind::File ? EKind::ExistingFile : EKind::NewFile;
	}
	return Target;
}
