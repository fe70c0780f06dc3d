#include "Misc/FileHelper.h"

#include "Containers/StringConv.h"
#include "Host/FileDescriptor.h"
#include "Host/HostAtomicFile.h"
#include "Host/HostFileSystem.h"
#include "Host/HostServices.h"
#include "Host/HostSystemErrors.h"
#include "Logging/LogMacros.h"

#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>

// Whole files as bytes, text or lines. Reading recognises the byte order marks and takes anything else for UTF-8; what
// is no UTF-8 becomes replacement characters and never an error. Writing goes through the atomic saver.

DEFINE_LOG_CATEGORY_STATIC(LogFileHelper, Log, All);

namespace
{
	// Plain files alone: a path that leads to a pipe or a device must not hang the program or fill its memory.
	bool ReadBytes(const std::string& Path, TArray<uint8>& OutBytes)
	{
		// Without waiting for the other end of a pipe.
		const FFileDescriptor File = FFileDescriptor::Open(Path, O_RDONLY | O_NONBLOCK);
		struct stat Info;
		if (!File.IsOpen() || fstat(File.Get(), &Info) != 0)
		{
			return false;
		}
		constexpr int64 MaxSize = std::numeric_limits<int32>::max() - 1;
		// A pipe has no end that could be waited for, and some devices have none at all.
		int Error = S_ISDIR(Info.st_mode) ? EISDIR : !S_ISREG(Info.st_mode) ? ESPIPE : Info.st_size > MaxSize ? EFBIG : 0;
		int32 Count = 0;
		OutBytes.SetNumUninitialized(Error == 0 ? int32(Info.st_size) : 0);
		while (Error == 0)
		{
			if (Count == OutBytes.Num())
			{
				// The file may have grown, and files of the kernel's own tell no size: read on until the end.
				if (int64(Count) + 65536 > MaxSize)
				{
					Error = EFBIG;
					break;
				}
				OutBytes.SetNumUninitialized(Count + (Count < Info.st_size ? 0 : 4096));
			}
			const ssize_t Read = HostRetryInterrupted(
				[&File, &OutBytes, Count] { return read(File.Get(), OutBytes.GetData() + Count, std::size_t(OutBytes.Num() - Count)); });
			if (Read == 0)
			{
				break;
			}
			if (Read < 0)
			{
				Error = errno;
			}
			Count += Read > 0 ? int32(Read) : 0;
		}
		OutBytes.SetNum(Error == 0 ? Count : 0);
		errno = Error;
		return Error == 0;
	}

	bool IsAscii(FStringView Text)
	{
		for (const TCHAR Unit : Text)
		{
			if (Unit > 0x7F)
			{
				return false;
			}
		}
		return true;
	}

	void AppendNarrow(std::string& Out, FStringView Text)
	{
		for (const TCHAR Unit : Text)
		{
			Out.push_back(Unit <= 0xFF ? char(Unit) : '?');
		}
	}

	void AppendWide(std::string& Out, FStringView Text)
	{
		for (const TCHAR Unit : Text)
		{
			Out.push_back(char(Unit & 0xFF));
			Out.push_back(char(Unit >> 8));
		}
	}

	/** @param bMark  Whether a byte order mark goes in front; text that is appended to a file has none. */
	std::string Encode(FStringView Text, FFileHelper::EEncodingOptions Encoding, bool bMark)
	{
		std::string Out;
		switch (Encoding)
		{
		case FFileHelper::EEncodingOptions::AutoDetect:
			return Encode(
				Text, IsAscii(Text) ? FFileHelper::EEncodingOptions::ForceAnsi : FFileHelper::EEncodingOptions::ForceUnicode, bMark);
		case FFileHelper::EEncodingOptions::ForceAnsi:
			Out.reserve(std::size_t(Text.Len()));
			AppendNarrow(Out, Text);
			break;
		case FFileHelper::EEncodingOptions::ForceUnicode:
			Out.reserve(std::size_t(Text.Len()) * 2 + 2);
			Out = bMark ? "\xFF\xFE" : "";
			AppendWide(Out, Text);
			break;
		case FFileHelper::EEncodingOptions::ForceUTF8:
			Out = bMark ? "\xEF\xBB\xBF" : "";
			FTCHARToUTF8::Append(Out, Text);
			break;
		case FFileHelper::EEncodingOptions::ForceUTF8WithoutBOM:
			FTCHARToUTF8::Append(Out, Text);
			break;
		}
		return Out;
	}

	bool SaveBytes(const void* Data, std::size_t Size, const TCHAR* Filename, uint32 WriteFlags)
	{
		FString Reason;
		if (HostSaveFile(Filename, Data, int64(Size), WriteFlags, Reason))
		{
			return true;
		}
		if (!(WriteFlags & FILEWRITE_Silent))
		{
			FHostServices::ReportSaveFailure(Filename, Reason);
		}
		return false;
	}
}

bool FFileHelper::LoadFileToArray(TArray<uint8>& OutBytes, const TCHAR* Filename, uint32 Flags)
{
	const std::string Path = HostFileSystem::ToBytes(Filename);
	errno = ENOENT;
	if (Path.empty() || !ReadBytes(Path, OutBytes))
	{
		const int Error = errno;
		const FString Reason = HostFileSystem::Describe(Error);
		OutBytes.Reset();
		// What is not there yet is nothing to be read about: it is how every new project begins.
		UE_CLOG(!(Flags & FILEWRITE_Silent) && Error != ENOENT, LogFileHelper, Log, TEXT("Cannot read %s: %s"), Filename, *Reason);
		return false;
	}
	return true;
}

void FFileHelper::BufferToString(FString& OutText, const uint8* Bytes, int32 Count)
{
	OutText.Reset();
	const bool bLittle = Count >= 2 && Bytes[0] == 0xFF && Bytes[1] == 0xFE;
	const bool bBig = Count >= 2 && Bytes[0] == 0xFE && Bytes[1] == 0xFF;
	if (bLittle || bBig)
	{
		OutText.Reserve(Count / 2);
		for (int32 Index = 2; Index + 1 < Count; Index += 2)
		{
			const uint32 Low = Bytes[bLittle ? Index : Index + 1];
			const uint32 High = Bytes[bLittle ? Index + 1 : Index];
			OutText.AppendChar(TCHAR((High << 8) | Low));
		}
		if (Count % 2 != 0)
		{
			OutText.AppendChar(TCHAR(0xFFFD)); // Half a unit: the file was cut.
		}
		return;
	}
	const int32 Skip = Count >= 3 && Bytes[0] == 0xEF && Bytes[1] == 0xBB && Bytes[2] == 0xBF ? 3 : 0;
	const FUTF8ToTCHAR Converted(reinterpret_cast<const ANSICHAR*>(Bytes) + Skip, Count - Skip);
	OutText.AppendChars(Converted.Get(), Converted.Length());
}

bool FFileHelper::LoadFileToString(FString& OutText, const TCHAR* Filename)
{
	TArray<uint8> Bytes;
	if (!LoadFileToArray(Bytes, Filename))
	{
		return false;
	}
	BufferToString(OutText, Bytes.GetData(), Bytes.Num());
	return true;
}

// All three kinds of line ends; a last line without one counts.
bool FFileHelper::LoadFileToStringArray(TArray<FString>& OutLines, const TCHAR* Filename)
{
	OutLines.Reset();
	FString Text;
	if (!LoadFileToString(Text, Filename))
	{
		return false;
	}
	int32 Start = 0;
	for (int32 Index = 0; Index < Text.Len(); ++Index)
	{
		const TCHAR Unit = Text[Index];
		if (Unit == TEXT('\n') || Unit == TEXT('\r'))
		{
			OutLines.Add(Text.Mid(Start, Index - Start));
			if (Unit == TEXT('\r') && Index + 1 < Text.Len() && Text[Index + 1] == TEXT('\n'))
			{
				++Index;
			}
			Start = Index + 1;
		}
	}
	if (Start < Text.Len())
	{
		OutLines.Add(Text.RightChop(Start));
	}
	return true;
}

// A mark stands only at the very beginning, so text that is appended has none.
bool FFileHelper::SaveStringToFile(
	FStringView Text, const TCHAR* Filename, EEncodingOptions Encoding, IFileManager* FileManager, uint32 WriteFlags)
{
	const bool bContinues = (WriteFlags & FILEWRITE_Append) && FileManager && FileManager->FileSize(Filename) > 0;
	const std::string Bytes = Encode(Text, Encoding, !bContinues);
	return SaveBytes(Bytes.data(), Bytes.size(), Filename, WriteFlags);
}
