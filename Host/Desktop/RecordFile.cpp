#include "RecordFile.h"

#include "Host/HostFileNames.h"
#include "Host/HostSystemErrors.h"
#include "RecordMask.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

namespace
{
	/** The first line. A change that makes old recordings unreadable counts the number up. */
	constexpr std::string_view FirstLine = "velmora-record 1\n";
	constexpr std::string_view FirstWord = "velmora-record ";
	constexpr mode_t PrivateMode = 0600;

	FString DescribeError()
	{
		return FString(UTF8_TO_TCHAR(HostDescribeSystemError(errno).c_str()));
	}

	FString ReadBytes(const FString& Path, std::string& OutBytes)
	{
		// Without waiting for the other end of a pipe.
		const FFileDescriptor File = FFileDescriptor::Open(HostFileNameToBytes(Path), O_RDONLY | O_NONBLOCK);
		struct stat Info = {};
		if (!File.IsOpen() || fstat(File.Get(), &Info) != 0)
		{
			return FString::Printf(TEXT("The recording \"%s\" cannot be read: %s."), *Path, *DescribeError());
		}
		if (!S_ISREG(Info.st_mode))
		{
			return FString::Printf(TEXT("\"%s\" is no file."), *Path);
		}
		if (Info.st_size > FRecordReader::MaxBytes)
		{
			return FString::Printf(TEXT("\"%s\" is too large for a recording."), *Path);
		}
		if (!File.Read(OutBytes, static_cast<uint64>(FRecordReader::MaxBytes)))
		{
			return FString::Printf(TEXT("The recording \"%s\" cannot be read: %s."), *Path, *DescribeError());
		}
		return FString();
	}
}

FString FRecordWriter::Open(const FString& Path)
{
	File = FFileDescriptor::Open(HostFileNameToBytes(Path), O_WRONLY | O_CREAT | O_TRUNC, PrivateMode);
	// One that was there may be open to others, and holds what is said from now on.
	if (!File.IsOpen() || fchmod(File.Get(), PrivateMode) != 0 || !File.Write(FirstLine))
	{
		const FString Reason = DescribeError();
		File = FFileDescriptor();
		return FString::Printf(TEXT("The recording cannot be written to \"%s\": %s."), *Path, *Reason);
	}
	return FString();
}

void FRecordWriter::Add(FRecordWords&& Words)
{
	const ERecordKind Kind = Words.GetKind();
	if (OnHandOver && (Kind == ERecordKind::Return || Kind == ERecordKind::Callback))
	{
		OnHandOver();
	}
	bMarksDriver = bMarksDriver && Kind != ERecordKind::Turn;
	AddLines(Words.GetLine());
}

void FRecordWriter::AddLines(const std::string& Lines)
{
	if (std::exchange(bMarksDriver, false))
	{
		Write(FRecordWords(ERecordKind::Driver).GetLine());
	}
	Write(Lines);
}

void FRecordWriter::Write(const std::string& Lines)
{
	if (!File.IsOpen())
	{
		return;
	}
	BytesLeft -= static_cast<int64>(Lines.size());
	if (BytesLeft < 0)
	{
		Problem = TEXT("The recording has reached its largest size and ends here.");
		End(MoveTemp(FRecordWords(ERecordKind::Note).Text(Problem)));
		return;
	}
	// A disk that is full ends the recording and nothing else: what is recorded comes first.
	if (!File.Write(Lines))
	{
		Problem = FString::Printf(TEXT("The recording ends early, since it could not be written: %s."), *DescribeError());
		(void)File.Close();
	}
}

void FRecordWriter::End(FRecordWords&& Last)
{
	(void)File.Write(Last.GetLine());
	(void)File.Close();
}

void FRecordWriter::Finish()
{
	if (File.IsOpen())
	{
		End(FRecordWords(ERecordKind::End));
	}
}

FString FRecordWriter::Veil(FStringView Text) const
{
	return bMasks ? FRecordMask::MaskText(Text) : FString(Text);
}

FString FRecordReader::Load(const FString& Path)
{
	std::string Bytes;
	const FString Complaint = ReadBytes(Path, Bytes);
	return Complaint.IsEmpty() ? Parse(MoveTemp(Bytes), Path) : Complaint;
}

FString FRecordReader::Parse(std::string InContent, const FString& Name)
{
	// 1. Ours, and of a version that we know.
	Content = MoveTemp(InContent);
	Position = FirstLine.size();
	TurnsLeft = 0;
	bHasHead = false;
	if (Content.compare(0, FirstWord.size(), FirstWord) != 0)
	{
		return FString::Printf(TEXT("\"%s\" is no recording."), *Name);
	}
	if (Content.compare(0, FirstLine.size(), FirstLine) != 0)
	{
		return FString::Printf(
			TEXT("The recording \"%s\" was made by another version of the program, which writes them otherwise."), *Name);
	}
	// 2. A line that was cut off is no line: the program ended in the middle of it.
	Content.resize(Content.rfind('\n') + 1);

	// 3. Each line, before anything is shown.
	FRecordLine Line;
	bool bBegun = false;
	int32 Number = 2;
	for (std::size_t At = Position; At < Content.size(); At = FindNext(At), ++Number)
	{
		if (!FRecordLine::Parse(std::string_view(Content).substr(At, FindNext(At) - 1 - At), Line))
		{
			return FString::Printf(TEXT("Line %d of the recording \"%s\" cannot be read."), Number, *Name);
		}
		const bool bIsHeader = Line.GetKind() <= ERecordKind::Begin;
		if (bIsHeader == bBegun && Line.GetKind() != ERecordKind::Note)
		{
			return FString::Printf(TEXT("Line %d of the recording \"%s\" stands in the wrong place."), Number, *Name);
		}
		bBegun = bBegun || Line.GetKind() == ERecordKind::Begin;
		TurnsLeft += Line.GetKind() == ERecordKind::Turn ? 1 : 0;
	}
	return bBegun ? FString() : FString::Printf(TEXT("The recording \"%s\" ends before it has begun."), *Name);
}

const FRecordLine* FRecordReader::Peek()
{
	if (!bHasHead && Position < Content.size())
	{
		bHasHead = FRecordLine::Parse(std::string_view(Content).substr(Position, FindNext(Position) - 1 - Position), Head);
	}
	return bHasHead ? &Head : nullptr;
}

FRecordPreview FRecordReader::PreviewTurn() const
{
	FRecordPreview Preview;
	for (std::size_t At = Position; At < Content.size(); At = FindNext(At))
	{
		// By the first word alone: a turn may hold thousands of lines.
		const std::string_view Rest = std::string_view(Content).substr(At);
		const std::string_view Word = Rest.substr(0, Rest.find_first_of(" \n"));
		if (Word == "t")
		{
			break;
		}
		Preview.bHasFrame = Preview.bHasFrame || Word == "frame";
		Preview.SummaryLists += Word == "summaries" ? 1 : 0;
	}
	return Preview;
}

FRecordLine FRecordReader::Take()
{
	const bool bIsThere = Peek() != nullptr;
	checkf(bIsThere, TEXT("Taken beyond the end of a recording"));
	TurnsLeft -= Head.GetKind() == ERecordKind::Turn ? 1 : 0;
	Position = FindNext(Position);
	bHasHead = false;
	return MoveTemp(Head);
}
