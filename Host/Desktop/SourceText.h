#pragma once

#include "CoreMinimal.h"
#include "Markdown/CodeLines.h"
#include "Templates/SharedPointer.h"

/** A line of a source as it is shown: its pieces joined are its text. */
struct FSourceLine
{
	/** From 1. */
	int32 Number = 0;
	FString Text;
	TArray<Velmora::Markdown::FCodePiece> Pieces;
};

/** A source as the viewer shows it. */
struct FSourceText
{
	TArray<TSharedPtr<const FSourceLine>> Lines;
	/** The widest line, in cells of a mono-spaced font. */
	int32 WidestCells = 0;
	/** A sentence when it cannot be shown; then there are no lines. */
	FString Problem;
	/** Size and time of the file that was read. */
	FString Stamp;
};

/** Makes texts for the viewer. Any thread. */
namespace SourceText
{
	constexpr int64 MaxBytes = 8 * 1024 * 1024;
	/** Longer lines are cut, and say so. */
	constexpr int32 MaxLineLength = 4000;

	/** Reads a file. Waits for the disk. Unset when it has that stamp still. */
	TOptional<FSourceText> Read(const FString& Path, const FString& KnownStamp);

	/** Lays a text out: lines, tabs as blanks, colours. @param Language  As a fence of code names it; empty for none. */
	FSourceText Make(const FString& Code, const FString& Language);

	/** By the ending of the name, as a fence of code names it; empty for none that has colours. */
	FString FindLanguage(const FString& Path);
}
