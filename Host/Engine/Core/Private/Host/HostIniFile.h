#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"

#include <string>
#include <string_view>

/**
 * The text of an ini file, changed line by line: what is not changed stays as it was, byte for byte, also what nobody
 * understands. Names ignore letter case; of a key that stands there twice the last one counts. Pure.
 */
class FHostIniFile
{
public:
	/** Takes any bytes. UTF-16 with a mark becomes UTF-8. */
	explicit FHostIniFile(std::string_view Bytes = {});

	bool Get(const FString& Section, const FString& Key, FString& OutValue) const;
	void Set(const FString& Section, const FString& Key, const FString& Value);
	void Remove(const FString& Section, const FString& Key);
	std::string GetBytes() const;

private:
	struct FLine
	{
		/** Without its end. */
		std::string Bytes;
		/** "\n", "\r\n", or nothing behind the last line. */
		std::string End;
		/** The section that the line stands in. */
		FString Section;
		/** Empty for a line that sets nothing. */
		FString Key;
		bool bIsHeading = false;
		bool bSetsKey = false;
	};

	static FLine ReadLine(std::string_view Bytes, std::string_view End, FString& Section);
	int32 Find(const FString& Section, const FString& Key) const;
	/** The ends that most lines have. */
	std::string GetNewLine() const;

	std::string Mark;
	TArray<FLine> Lines;
};

/** How a value stands in an ini file: as it is, or in quotes with escapes where it would not come back. Pure. */
std::string HostWriteIniValue(const FString& Value);
FString HostReadIniValue(std::string_view Text);
