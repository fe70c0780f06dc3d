#pragma once

#include "Containers/Array.h"
#include "Containers/ArrayView.h"
#include "Containers/StringView.h"
#include "Containers/UnrealString.h"
#include "HAL/FileManager.h"

/**
 * Whole files from and to texts and byte arrays. Saves replace a file in one step (Host/HostAtomicFile.h) and return
 * false, with a warning in the log, when they fail. Any thread.
 */
struct CORE_API FFileHelper
{
	enum class EEncodingOptions
	{
		/** One byte per character when all are ASCII, else UTF-16 little endian with its mark. */
		AutoDetect,
		/** One byte per character; a character above 255 becomes '?'. */
		ForceAnsi,
		/** UTF-16 little endian with its mark. */
		ForceUnicode,
		ForceUTF8,
		ForceUTF8WithoutBOM,
	};

	/** Knows the marks of UTF-16 (both orders) and UTF-8; without one the bytes are UTF-8, broken ones U+FFFD. */
	static bool LoadFileToString(FString& OutText, const TCHAR* Filename);
	static bool LoadFileToArray(TArray<uint8>& OutBytes, const TCHAR* Filename, uint32 Flags = 0);
	/** Lines end at CR LF, LF or CR. A final line end adds no empty line. */
	static bool LoadFileToStringArray(TArray<FString>& OutLines, const TCHAR* Filename);
	/** The same rules for bytes already in memory. */
	static void BufferToString(FString& OutText, const uint8* Bytes, int32 Count);

	static bool SaveStringToFile(FStringView Text, const TCHAR* Filename, EEncodingOptions Encoding = EEncodingOptions::AutoDetect,
		IFileManager* FileManager = &IFileManager::Get(), uint32 WriteFlags = FILEWRITE_None);
};
