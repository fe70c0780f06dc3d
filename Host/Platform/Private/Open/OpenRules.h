#pragma once

#include "CoreMinimal.h"

/** What is done with a target that somebody wants opened. */
enum class EOpenVerdict : uint8
{
	Open,
	/** Only after the user has seen the whole target and said yes. */
	Ask,
	Refuse,
};

struct FOpenDecision
{
	EOpenVerdict Verdict = EOpenVerdict::Refuse;
	/** A sentence: why it is refused, or what the user should know. */
	FString Reason;
};

/** What the disk says about a path. */
struct FOpenFileFacts
{
	bool bExists = false;
	bool bDirectory = false;
	bool bExecutable = false;
	/** The path with all links followed; an innocent name can point at a program. */
	FString RealPath;
	/** It begins as a program or library does, whatever its name. */
	bool bBinaryProgram = false;
	/** A plain file whose beginning holds nothing but text. */
	bool bText = false;
};

/** The rules of opening. Pure: the disk is asked by the caller. */
namespace OpenRules
{
	FOpenDecision JudgeUrl(const FString& Target);
	FOpenDecision JudgeFile(const FString& Path, const FOpenFileFacts& Facts);
	/** A text that one reads as it was written: no page and no drawing, which the desktop's program shows as what they mean. */
	bool IsForEditor(const FString& Path, const FOpenFileFacts& Facts);
	/**
	 * Reads an address such as "file:/project/a.cpp#L67", which names a line of a source; it is for the user's editor.
	 *
	 * @return False for every other address; nothing is changed then.
	 */
	bool ReadSourceLink(const FString& Target, FString& OutPath, int32& OutLine);
	/** The target as a user should see it: characters that would not show, or would turn the text around, are spelled out. */
	FString MakeReadable(const FString& Target);
}
