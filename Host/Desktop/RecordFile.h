#pragma once

#include "CoreMinimal.h"
#include "Host/FileDescriptor.h"
#include "RecordLine.h"
#include "Templates/Function.h"

/**
 * A recording that is being written. Each line is with the system before what it tells of is done, so that a crash leaves everything
 * up to its cause. It is not flushed to the disk: what ends with the program does not go with it. Game thread.
 */
class FRecordWriter
{
public:
	/** So much is written and no more; the recording ends there with a note. */
	static constexpr int64 MaxBytes = 64ll << 20;

	FRecordWriter(bool bInMasks, int64 InMaxBytes = MaxBytes)
		: bMasks(bInMasks)
		, BytesLeft(InMaxBytes)
	{
	}

	/** Makes the file anew, for the user alone. Empty, or one sentence. */
	FString Open(const FString& Path);
	/** Nothing happens once it has ended, for whatever reason. */
	void Add(FRecordWords&& Words);
	/** Lines that make no sense without each other. */
	void AddLines(const std::string& Lines);
	/** The turn is over. Written before the next line, unless that begins another turn. */
	void MarkDriver() { bMarksDriver = true; }
	/** Called before a line that hands over an answer or calls back: what whoever gets it may look at next stands before that line. */
	void SetOnHandOver(TFunction<void()> InOnHandOver) { OnHandOver = MoveTemp(InOnHandOver); }
	/** The last line; none is written afterwards. */
	void Finish();
	bool IsOpen() const { return File.IsOpen(); }
	/** Why it ended before Finish; one sentence, empty when it did not. */
	const FString& GetProblem() const { return Problem; }

	/** Texts of people and of what they work on are masked. */
	bool Masks() const { return bMasks; }
	/** A text as it is to stand in the file. */
	FString Veil(FStringView Text) const;

private:
	void Write(const std::string& Lines);
	void End(FRecordWords&& Last);

	const bool bMasks;
	int64 BytesLeft;
	bool bMarksDriver = false;
	TFunction<void()> OnHandOver;
	FFileDescriptor File;
	FString Problem;
};

/** What a turn of the loop is going to meet. */
struct FRecordPreview
{
	bool bHasFrame = false;
	/** Lists that were read in the background arrive. */
	int32 SummaryLists = 0;
};

/** A recording that is being read, from its first line to its last whole one. */
class FRecordReader
{
public:
	/** A file larger than that is none of ours. */
	static constexpr int64 MaxBytes = 2 * FRecordWriter::MaxBytes;

	/** Reads and checks all of it. Empty when it can be shown; else one sentence. */
	FString Load(const FString& Path);
	/** The same of bytes that are there already. Pure. @param Name  How the file is called in the sentence. */
	FString Parse(std::string InContent, const FString& Name);

	/** Null at the end. Valid until it is taken. */
	const FRecordLine* Peek();
	/** What comes before the next turn. */
	FRecordPreview PreviewTurn() const;
	/** There must be one. */
	FRecordLine Take();
	/** A turn of the loop lies ahead. */
	bool HasTurn() const { return TurnsLeft > 0; }

private:
	/** One past the end of the line that begins there. */
	std::size_t FindNext(std::size_t Begin) const { return Content.find('\n', Begin) + 1; }

	/** Whole lines alone. */
	std::string Content;
	std::size_t Position = 0;
	int32 TurnsLeft = 0;
	bool bHasHead = false;
	FRecordLine Head;
};
