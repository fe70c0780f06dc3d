#include "Serialization/JsonWriter.h"

#include "Host/HostNumbers.h"

#include <cmath>

// Writes JSON piece by piece, laid out as the editor does. Calls in a wrong order (a value without a name in an object,
// two outermost values) break the writer: nothing is written from then on, and Close says so.

FHostJsonWriter::FHostJsonWriter(FString* InOut, int32 InInitialIndent, bool bInPretty)
	: Out(*InOut)
	, InitialIndent(InInitialIndent)
	, bPretty(bInPretty)
{
}

void FHostJsonWriter::AppendNewLine()
{
	if (bPretty)
	{
		Out += TEXT("\r\n"); // As the engine writes on Windows, wherever the text is made.
		for (int32 Count = GetIndentLevel(); Count > 0; --Count)
		{
			Out.AppendChar(TEXT('\t'));
		}
	}
}

// 1. Whether a value may stand here. 2. What goes in front of it: after a name a blank or, for an object, a line of its own;
// in an array a comma, and for short values no new line, so that rows of numbers stay rows.
bool FHostJsonWriter::BeginValue(EKind Kind)
{
	// 1. In an object every value has a name, in an array none has, and there is one outermost value.
	const bool bNamed = Last == EToken::Identifier;
	const bool bInObject = Levels.Num() > 0 && Levels.Last().bObject;
	if (bBroken || bNamed != bInObject || (Levels.Num() == 0 && bWhole))
	{
		bBroken = true;
		return false;
	}
	// 2. What stands between it and what came before. After a name an object opens on a line of its own, all else stays beside it.
	if (bNamed)
	{
		// The comma went in front of the name.
		if (Kind == EKind::Object)
		{
			AppendNewLine();
		}
		else if (bPretty)
		{
			Out.AppendChar(TEXT(' '));
		}
	}
	else if (Levels.Num() > 0)
	{
		FLevel& Level = Levels.Last();
		if (!Level.bEmpty)
		{
			Out.AppendChar(TEXT(','));
		}
		Level.bEmpty = false;
		// Numbers, booleans and null go on in the line of the bracket or of one of their kind.
		if (Kind == EKind::Short && (Last == EToken::Open || Last == EToken::Short))
		{
			if (bPretty)
			{
				Out.AppendChar(TEXT(' '));
			}
		}
		else
		{
			AppendNewLine();
		}
	}
	bWhole = true; // The outermost value has begun.
	return true;
}

void FHostJsonWriter::WriteIdentifierPrefix(FStringView Name)
{
	if (bBroken || Levels.Num() == 0 || !Levels.Last().bObject || Last == EToken::Identifier)
	{
		bBroken = true;
		return;
	}
	FLevel& Level = Levels.Last();
	if (!Level.bEmpty)
	{
		Out.AppendChar(TEXT(','));
	}
	Level.bEmpty = false;
	AppendNewLine();
	AppendQuoted(Name);
	Out.AppendChar(TEXT(':'));
	Last = EToken::Identifier;
}

void FHostJsonWriter::WriteObjectStart()
{
	if (BeginValue(EKind::Object))
	{
		Out.AppendChar(TEXT('{'));
		Levels.Add(FLevel{ true, true });
		Last = EToken::Open;
	}
}

void FHostJsonWriter::WriteObjectStart(FStringView Name)
{
	WriteIdentifierPrefix(Name);
	WriteObjectStart();
}

void FHostJsonWriter::WriteArrayStart()
{
	if (BeginValue(EKind::Array))
	{
		Out.AppendChar(TEXT('['));
		Levels.Add(FLevel{ false, true });
		Last = EToken::Open;
	}
}

void FHostJsonWriter::WriteArrayStart(FStringView Name)
{
	WriteIdentifierPrefix(Name);
	WriteArrayStart();
}

// An array of short values closes in their line.
void FHostJsonWriter::WriteEnd(bool bObject)
{
	if (bBroken || Levels.Num() == 0 || Levels.Last().bObject != bObject || Last == EToken::Identifier)
	{
		bBroken = true;
		return;
	}
	Levels.Pop();
	if (bObject)
	{
		AppendNewLine();
	}
	// An empty array closes where it opened; one of short values ends in its line, one of anything else on a line of its own.
	else if (Last == EToken::Short)
	{
		if (bPretty)
		{
			Out.AppendChar(TEXT(' '));
		}
	}
	else if (Last != EToken::Open)
	{
		AppendNewLine();
	}
	Out.AppendChar(bObject ? TEXT('}') : TEXT(']'));
	Last = EToken::Close;
}

void FHostJsonWriter::WriteObjectEnd()
{
	WriteEnd(true);
}

void FHostJsonWriter::WriteArrayEnd()
{
	WriteEnd(false);
}

void FHostJsonWriter::WriteScalar(FStringView Text)
{
	if (BeginValue(EKind::Short))
	{
		Out.Append(Text);
		Last = EToken::Short;
	}
}

void FHostJsonWriter::WriteString(FStringView Text)
{
	if (BeginValue(EKind::String))
	{
		AppendQuoted(Text);
		Last = EToken::String;
	}
}

// JSON has no word for what is not finite.
void FHostJsonWriter::WriteValue(double Value)
{
	// There is no JSON for these, and a number that is not one would break every reader.
	if (!std::isfinite(Value))
	{
		WriteNull();
		return;
	}
	if (BeginValue(EKind::Short))
	{
		// 17 digits bring back every double to the bit.
		HostAppendNumber(Out, Value, std::chars_format::general, 17);
		Last = EToken::Short;
	}
}

void FHostJsonWriter::WriteValue(int64 Value)
{
	if (BeginValue(EKind::Short))
	{
		HostAppendNumber(Out, Value);
		Last = EToken::Short;
	}
}

void FHostJsonWriter::WriteValue(uint64 Value)
{
	if (BeginValue(EKind::Short))
	{
		HostAppendNumber(Out, Value);
		Last = EToken::Short;
	}
}

// Only what must be escaped is. Lone surrogates go out as they are, since what was read has to come out the same.
void FHostJsonWriter::AppendQuoted(FStringView Text)
{
	const char* const Hex = "0123456789abcdef";
	Out.AppendChar(TEXT('"'));
	int32 Start = 0;
	// One step beyond the end, with a unit that needs escaping, so that the last run is written by the same lines.
	for (int32 Index = 0; Index <= Text.Len(); ++Index)
	{
		const TCHAR Unit = Index < Text.Len() ? Text[Index] : TEXT('"');
		if (Unit >= 0x20 && Unit != TEXT('"') && Unit != TEXT('\\'))
		{
			continue;
		}
		if (Index > Start)
		{
			Out.AppendChars(Text.GetData() + Start, Index - Start); // Ordinary characters in one go.
		}
		Start = Index + 1;
		if (Index == Text.Len())
		{
			break;
		}
		Out.AppendChar(TEXT('\\'));
		switch (Unit)
		{
		case TEXT('"'):
		case TEXT('\\'):
			Out.AppendChar(Unit);
			break;
		case TEXT('\b'):
			Out.AppendChar(TEXT('b'));
			break;
		case TEXT('\f'):
			Out.AppendChar(TEXT('f'));
			break;
		case TEXT('\n'):
			Out.AppendChar(TEXT('n'));
			break;
		case TEXT('\r'):
			Out.AppendChar(TEXT('r'));
			break;
		case TEXT('\t'):
			Out.AppendChar(TEXT('t'));
			break;
		default:
			Out += TEXT("u00");
			Out.AppendChar(TCHAR(Hex[Unit >> 4]));
			Out.AppendChar(TCHAR(Hex[Unit & 0xF]));
			break;
		}
	}
	Out.AppendChar(TEXT('"'));
}

bool FHostJsonWriter::Close()
{
	return !bBroken && bWhole && Levels.Num() == 0;
}
