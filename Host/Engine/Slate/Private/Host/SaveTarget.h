#pragma once

#include "CoreMinimal.h"

/** One row of a file dialog's filter box. */
struct FSaveFilter
{
	/** "Text (*.txt)". */
	FString Label;
	/** "*.txt". */
	TArray<FString> Patterns;

	/** The name with the ending of this kind of file, when it has none and the kind has one. */
	FString AddEnding(const FString& Name) const;
	/** Letter case does not count. Without patterns every name fits. */
	bool Matches(const FString& Name) const;
	/** Reads "Text (*.txt)|*.txt|Pictures|*.png;*.jpg". Never empty: without a pair there is one row for all files. */
	static TArray<FSaveFilter> Parse(const FString& FileTypes);
};

/** What a text in a save dialog's name box means. */
struct FSaveTarget
{
	enum class EKind : uint8
	{
		/** Nothing that could be saved to; Problem says why. */
		None,
		NewFile,
		ExistingFile,
		/** A folder to go to. */
		Folder,
	};
	EKind Kind = EKind::None;
	/** Absolute, without "." and ".." and final slash. */
	FString Path;
	/** A sentence for the user. */
	FString Problem;

	/**
	 * @param Folder  Where the dialog stands; it need not exist, and is not missed when the name lies straight in it.
	 * @param Typed   A name, a path relative to the folder or absolute, or one that begins with "~/".
	 */
	static FSaveTarget Find(const FString& Folder, const FString& Typed);
	/** Absolute, without ".", "..", doubled and final slashes; the part after a slash stays as it is otherwise. Pure. */
	static FString Collapse(const FString& Path);
	static FString GetParent(const FString& Path);
	static FString GetLeaf(const FString& Path);
	static FString Join(const FString& Folder, const FString& Name);
};
