#include "Host/HostIniFile.h"

#include "Containers/StringConv.h"
#include "Misc/FileHelper.h"

#include <cstdio>

// A configuration file belongs to the user as much as to the program: comments, blank lines, order, line ends, a byte
// order mark, keys and sections that nobody here knows stay as they are. So a file is kept as its lines, and setting a
// key rewrites one of them or adds one.
//
// Values are written plainly where they read back as themselves, and quoted with escapes where they would not (line
// breaks, quotes, blanks at the ends). Lone halves of surrogate pairs have no UTF-8 and are escaped too: no text is lost
// on its way through a file.

namespace
{
	FString FromUtf8(std::string_view Bytes)
	{
		const FUTF8ToTCHAR Converted(Bytes.data(), static_cast<int32>(Bytes.size()));
		return FString(Converted.Length(), Converted.Get());
	}

	std::string ToUtf8(const FString& Text)
	{
		std::string Bytes;
		FTCHARToUTF8::Append(Bytes, Text);
		return Bytes;
	}

	bool IsBlank(char Letter)
	{
		return Letter == ' ' || Letter == '\t';
	}

	std::string_view TrimBlanks(std::string_view Text)
	{
		while (!Text.empty() && IsBlank(Text.front()))
		{
			Text.remove_prefix(1);
		}
		while (!Text.empty() && IsBlank(Text.back()))
		{
			Text.remove_suffix(1);
		}
		return Text;
	}

	// Half of a pair without the other half beside it.
	bool IsLoneSurrogate(const FString& Text, int32 Index)
	{
		const TCHAR Unit = Text[Index];
		if (Unit < 0xD800 || Unit > 0xDFFF)
		{
			return false;
		}
		const bool bHigh = Unit < 0xDC00;
		const int32 Other = bHigh ? Index + 1 : Index - 1;
		const bool bPaired = Other >= 0 && Other < Text.Len() &&
			(bHigh ? Text[Other] >= 0xDC00 && Text[Other] <= 0xDFFF : Text[Other] >= 0xD800 && Text[Other] < 0xDC00);
		return !bPaired;
	}

	/** Escapes what a line cannot hold, and of printable characters those in Special. */
	std::string Escape(const FString& Text, const char* Special)
	{
		std::string Out;
		FString Plain;
		const auto Flush = [&Out, &Plain]()
		{
			Out += ToUtf8(Plain);
			Plain.Reset();
		};
		for (int32 Index = 0; Index < Text.Len(); ++Index)
		{
			const TCHAR Unit = Text[Index];
			const bool bSpecial =
				Unit < 0x80 && Unit != 0 && std::string_view(Special).find(static_cast<char>(Unit)) != std::string_view::npos;
			// The byte order mark would go as one at the start of a file.
			if (Unit >= 0x20 && Unit != 0x7F && Unit != 0xFEFF && !bSpecial && !IsLoneSurrogate(Text, Index))
			{
				Plain.AppendChar(Unit);
				continue;
			}
			Flush();
			switch (Unit)
			{
			case TEXT('\n'):
				Out += "\\n";
				break;
			case TEXT('\r'):
				Out += "\\r";
				break;
			case TEXT('\t'):
				Out += "\\t";
				break;
			case TEXT('\\'):
				Out += "\\\\";
				break;
			case TEXT('"'):
				Out += "\\\"";
				break;
			default:
			{
				char Code[8];
				std::snprintf(Code, sizeof(Code), "\\u%04X", static_cast<unsigned>(Unit));
				Out += Code;
			}
			}
		}
		Flush();
		return Out;
	}

	// Four hexadecimal digits.
	bool ReadCode(const FString& Text, int32 Start, TCHAR& OutUnit)
	{
		uint32 Value = 0;
		for (int32 Index = Start; Index < Start + 4; ++Index)
		{
			const TCHAR Digit = Index < Text.Len() ? Text[Index] : TEXT('x');
			const int32 Nibble = Digit >= TEXT('0') && Digit <= TEXT('9') ? Digit - TEXT('0')
				: Digit >= TEXT('A') && Digit <= TEXT('F')				  ? Digit - TEXT('A') + 10
				: Digit >= TEXT('a') && Digit <= TEXT('f')				  ? Digit - TEXT('a') + 10
																		  : -1;
			if (Nibble < 0)
			{
				return false;
			}
			Value = Value * 16 + static_cast<uint32>(Nibble);
		}
		OutUnit = static_cast<TCHAR>(Value);
		return true;
	}

	/** False for an escape that nobody here writes, or a quote in between: then the text means itself. */
	bool Unescape(const FString& Text, FString& Out)
	{
		for (int32 Index = 0; Index < Text.Len(); ++Index)
		{
			if (Text[Index] == TEXT('"'))
			{
				return false;
			}
			if (Text[Index] != TEXT('\\'))
			{
				Out.AppendChar(Text[Index]);
				continue;
			}
			TCHAR Unit = ++Index < Text.Len() ? Text[Index] : TEXT('\0');
			switch (Unit)
			{
			case TEXT('n'):
				Unit = TEXT('\n');
				break;
			case TEXT('r'):
				Unit = TEXT('\r');
				break;
			case TEXT('t'):
				Unit = TEXT('\t');
				break;
			case TEXT('\\'):
			case TEXT('"'):
				break;
			case TEXT('u'):
				if (!ReadCode(Text, Index + 1, Unit))
				{
					return false;
				}
				Index += 4;
				break;
			default:
				return false;
			}
			Out.AppendChar(Unit);
		}
		return true;
	}

	// Names of keys and sections are escaped as values are, but never quoted.
	FString ReadName(std::string_view Bytes)
	{
		const FString Name = FromUtf8(Bytes);
		FString Plain;
		return Unescape(Name, Plain) ? Plain : Name;
	}

	std::string WriteKey(const FString& Key)
	{
		std::string Name = Escape(Key, "\\=\"");
		// In front these would make a comment or a heading of the line, and blanks would be lost.
		const char First = Name.empty() ? '\0' : Name.front();
		if (First == ';' || First == '[' || First == '#' || First == ' ')
		{
			Name = Escape(Key.Left(1), ";[# ") + Name.substr(1);
		}
		if (!Name.empty() && Name.back() == ' ')
		{
			Name = Name.substr(0, Name.size() - 1) + "\\u0020";
		}
		return Name;
	}
}

std::string HostWriteIniValue(const FString& Value)
{
	const std::string Escaped = Escape(Value, "\\\"");
	const std::string Plain = ToUtf8(Value);
	// A text that reads back as itself stays readable: paths with backslashes, too.
	const bool bPlain =
		HostReadIniValue(Plain).Equals(Value) && Plain.find_first_of("\r\n") == std::string::npos && Plain.find('\0') == std::string::npos;
	return bPlain ? Plain : "\"" + Escaped + "\"";
}

FString HostReadIniValue(std::string_view Text)
{
	const std::string_view Trimmed = TrimBlanks(Text);
	if (Trimmed.size() >= 2 && Trimmed.front() == '"' && Trimmed.back() == '"')
	{
		FString Value;
		if (Unescape(FromUtf8(Trimmed.substr(1, Trimmed.size() - 2)), Value))
		{
			return Value;
		}
	}
	return FromUtf8(Trimmed);
}

// 1. Other programs write UTF-16 with a mark; such a file is taken over as UTF-8. 2. The mark of UTF-8 is kept. 3. The
// lines, each with its own end.
FHostIniFile::FHostIniFile(std::string_view Bytes)
{
	std::string Converted;
	if (Bytes.size() >= 2 && (Bytes.substr(0, 2) == "\xFF\xFE" || Bytes.substr(0, 2) == "\xFE\xFF"))
	{
		FString Text;
		FFileHelper::BufferToString(Text, reinterpret_cast<const uint8*>(Bytes.data()), static_cast<int32>(Bytes.size()));
		Converted = ToUtf8(Text);
		Bytes = Converted;
	}
	if (Bytes.substr(0, 3) == "\xEF\xBB\xBF")
	{
		Mark = Bytes.substr(0, 3);
		Bytes.remove_prefix(3);
	}
	FString Section;
	while (!Bytes.empty())
	{
		const std::size_t Feed = Bytes.find('\n');
		const std::size_t Length = Feed == std::string_view::npos ? Bytes.size() : Feed;
		// Also of the last line, whose line feed may come with the next write.
		const bool bReturn = Length > 0 && Bytes[Length - 1] == '\r';
		const std::string_view Line = Bytes.substr(0, bReturn ? Length - 1 : Length);
		const std::string_view End =
			Bytes.substr(Line.size(), Feed == std::string_view::npos ? std::string_view::npos : Feed + 1 - Line.size());
		Lines.Add(ReadLine(Line, End, Section));
		Bytes.remove_prefix(Line.size() + End.size());
	}
}

FHostIniFile::FLine FHostIniFile::ReadLine(std::string_view Bytes, std::string_view End, FString& Section)
{
	FLine Line;
	Line.Bytes = Bytes;
	Line.End = End;
	const std::string_view Text = TrimBlanks(Bytes);
	const std::size_t Equals = Text.find('=');
	if (Text.size() >= 2 && Text.front() == '[' && Text.back() == ']')
	{
		Line.bIsHeading = true;
		Section = ReadName(Text.substr(1, Text.size() - 2));
	}
	else if (!Text.empty() && Text.front() != ';' && Text.front() != '#' && Equals != std::string_view::npos)
	{
		Line.bSetsKey = true;
		Line.Key = ReadName(TrimBlanks(Text.substr(0, Equals)));
	}
	Line.Section = Section;
	return Line;
}

// The last of equal keys counts, as it does in the editor.
int32 FHostIniFile::Find(const FString& Section, const FString& Key) const
{
	for (int32 Index = Lines.Num() - 1; Index >= 0; --Index)
	{
		// == ignores letter case.
		if (Lines[Index].bSetsKey && Lines[Index].Key == Key && Lines[Index].Section == Section)
		{
			return Index;
		}
	}
	return INDEX_NONE;
}

bool FHostIniFile::Get(const FString& Section, const FString& Key, FString& OutValue) const
{
	const int32 Index = Find(Section, Key);
	if (Index == INDEX_NONE)
	{
		return false;
	}
	const std::string& Bytes = Lines[Index].Bytes;
	OutValue = HostReadIniValue(std::string_view(Bytes).substr(Bytes.find('=') + 1));
	return true;
}

// What most lines have.
std::string FHostIniFile::GetNewLine() const
{
	int32 Returns = 0;
	for (const FLine& Line : Lines)
	{
		Returns += Line.End == "\r\n" ? 1 : Line.End == "\n" ? -1 : 0;
	}
	return Returns > 0 ? "\r\n" : "\n";
}

// 1. A key that is there is changed in its place, and only if its value differs: the spelling of what is equal stays.
void FHostIniFile::Set(const FString& Section, const FString& Key, const FString& Value)
{
	const int32 Present = Find(Section, Key);
	if (Present != INDEX_NONE)
	{
		FString Old;
		if (!Get(Section, Key, Old) || !Old.Equals(Value))
		{
			std::string& Bytes = Lines[Present].Bytes;
			Bytes = Bytes.substr(0, Bytes.find('=') + 1) + HostWriteIniValue(Value);
		}
		return;
	}
	// 2. A new key stands in its section, or opens one.
	const std::string NewLine = GetNewLine();
	// Behind the last line of the section that says anything, or in a section of its own at the end.
	int32 At = INDEX_NONE;
	for (int32 Index = 0; Index < Lines.Num(); ++Index)
	{
		const bool bSays = Lines[Index].bIsHeading || !TrimBlanks(Lines[Index].Bytes).empty();
		At = bSays && Lines[Index].Section == Section ? Index + 1 : At;
	}
	const bool bAtEnd = At == Lines.Num() || (At == INDEX_NONE && !Section.IsEmpty());
	if (bAtEnd && Lines.Num() > 0 && (Lines.Last().End.empty() || Lines.Last().End.back() != '\n'))
	{
		Lines.Last().End = Lines.Last().End.empty() ? NewLine : "\r\n";
	}
	FString Heading = Section;
	if (At == INDEX_NONE)
	{
		if (Section.IsEmpty())
		{
			At = 0;
		}
		else
		{
			if (Lines.Num() > 0)
			{
				Lines.Add(ReadLine("", NewLine, Heading));
			}
			Lines.Add(ReadLine("[" + Escape(Section, "\\\"") + "]", NewLine, Heading));
			At = Lines.Num();
		}
	}
	Lines.Insert(ReadLine(WriteKey(Key) + "=" + HostWriteIniValue(Value), NewLine, Heading), At);
}

void FHostIniFile::Remove(const FString& Section, const FString& Key)
{
	Lines.RemoveAll([&Section, &Key](const FLine& Line) { return Line.bSetsKey && Line.Key == Key && Line.Section == Section; });
}

std::string FHostIniFile::GetBytes() const
{
	std::string Bytes = Mark;
	for (const FLine& Line : Lines)
	{
		Bytes += Line.Bytes;
		Bytes += Line.End;
	}
	return Bytes;
}
