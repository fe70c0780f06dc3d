#include "RecordLine.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>

// One event a line, in ASCII alone: a file that was cut anywhere, or that went through a mail, can still be read up to the cut, and
// a person can read along. A line is a word and fields parted by one blank each; texts stand in quotes.

namespace
{
	/**
	 * A kind of line and its form, a letter a field: a text (s), a word (w), a whole number (n), a number (r), 0 or 1 (f); a star at the
	 * end is any number of further texts.
	 */
	struct FRecordForm
	{
		ERecordKind Kind;
		const char* Word;
		const char* Form;
	};

	// In the order of the kinds.
	constexpr FRecordForm Forms[] = {
		{ ERecordKind::Version, "version", "s" }, // Of the program.
		{ ERecordKind::Start, "start", "nn" }, // UTC ticks, what local time adds in seconds.
		{ ERecordKind::Window, "window", "nnr" }, // Size in pixels, scale.
		{ ERecordKind::Session, "session", "fff" }, // It has a user, a display, masked texts.
		{ ERecordKind::Project, "project", "s" }, // Name of its folder.
		{ ERecordKind::Kept, "kept", "s" }, // The folder that the user is told of; empty when nothing is kept.
		{ ERecordKind::Set, "set", "ss" }, // A console variable and its value.
		{ ERecordKind::Seed, "seed", "wss" }, // Where a file belongs, its name, what is in it.
		{ ERecordKind::Begin, "begin", "" },
		{ ERecordKind::Turn, "t", "r" }, // Seconds since the start.
		{ ERecordKind::Frame, "frame", "" }, // The turn had one.
		{ ERecordKind::Driver, "driver", "" }, // The turn is over: what follows comes between two of them.
		{ ERecordKind::At, "at", "r" }, // The same for what follows within the turn.
		{ ERecordKind::Size, "size", "nnrf" }, // In pixels, scale, whether the window can be seen.
		{ ERecordKind::Paint, "paint", "rrrrn" }, // What was painted, and the number of elements.
		{ ERecordKind::Down, "down", "fwnf" }, // Key, modifiers, repeat.
		{ ERecordKind::Up, "up", "fwn" },
		{ ERecordKind::Text, "text", "fs" },
		{ ERecordKind::Preedit, "preedit", "fsn" }, // Text, place of the caret.
		{ ERecordKind::Move, "move", "frrn" }, // Position, modifiers.
		{ ERecordKind::Press, "press", "fwrrn" }, // Button, position, modifiers.
		{ ERecordKind::Release, "release", "fwrrn" },
		{ ERecordKind::Wheel, "wheel", "frrrrn" }, // Notches, position, modifiers.
		{ ERecordKind::Leave, "leave", "f" },
		{ ERecordKind::Resized, "resized", "f" },
		{ ERecordKind::Active, "active", "ff" },
		{ ERecordKind::Exposed, "exposed", "f" },
		{ ERecordKind::Close, "close", "f" },
		{ ERecordKind::Do, "do", "ws" }, // What a script did without input.
		{ ERecordKind::Clipboard, "clipboard", "s" }, // What a text box found there.
		{ ERecordKind::CanPaste, "can-paste", "f" }, // Whether it found anything.
		{ ERecordKind::Agent, "agent", "n" }, // Its number; 0 when none could be made.
		{ ERecordKind::Gone, "gone", "n" },
		{ ERecordKind::Call, "call", "nw*" }, // Agent, operation, what it was given.
		{ ERecordKind::Return, "return", "nws" }, // Agent, operation, answer.
		{ ERecordKind::Callback, "callback", "nw*" }, // Agent, callback, what it was given.
		{ ERecordKind::Ask, "ask", "nsssf" }, // Number, tool, subject, text, may be remembered.
		{ ERecordKind::Asked, "asked", "" },
		{ ERecordKind::Gate, "gate", "nss" }, // State, message, version.
		{ ERecordKind::Toast, "toast", "s" },
		{ ERecordKind::State, "state", "nn" }, // Agent, state. So with those that follow.
		{ ERecordKind::HasActive, "has-active", "nf" },
		{ ERecordKind::CanUndo, "can-undo", "nf" },
		{ ERecordKind::Transaction, "transaction", "ns" },
		{ ERecordKind::Title, "title", "ns" },
		{ ERecordKind::Plan, "plan", "ns" },
		{ ERecordKind::Conversation, "conversation", "nfsnn" }, // There is one, id, mode, local ticks.
		{ ERecordKind::Mode, "mode", "nn" },
		{ ERecordKind::Time, "time", "nn" },
		{ ERecordKind::Message, "message", "nnfs" }, // Role, has tool calls, content.
		{ ERecordKind::Cut, "cut", "nn" }, // How many messages stay.
		{ ERecordKind::Last, "last", "ffs*" }, // There is one, it can be undone, text, files.
		{ ERecordKind::Look, "look", "ff" }, // High contrast, reduced motion: what the desktop or the command line says.
		{ ERecordKind::TurnStatus, "turn", "frns" }, // Running, seconds, tokens, who.
		{ ERecordKind::Operations, "operations", "" }, // What follows replaces all.
		{ ERecordKind::Operation, "operation", "fsssnn" }, // Asset, conversation, group, path, action, local ticks.
		{ ERecordKind::Files, "files", "ffn" }, // Ready, indexing, count.
		{ ERecordKind::FileList, "file-list", "n" }, // So many follow.
		{ ERecordKind::File, "file", "sfn" }, // Path, folder, type.
		{ ERecordKind::Stored, "stored", "n" }, // So many follow; negative for those of the last such list.
		{ ERecordKind::Summaries, "summaries", "n" },
		{ ERecordKind::Summary, "summary", "snnn" }, // Id, mode, local ticks, number of messages.
		{ ERecordKind::SummaryMessage, "summary-message", "nfs" },
		{ ERecordKind::Note, "note", "s" },
		{ ERecordKind::End, "end", "" },
	};

	bool IsInOrder()
	{
		for (std::size_t Index = 0; Index < std::size(Forms); ++Index)
		{
			if (static_cast<std::size_t>(Forms[Index].Kind) != Index)
			{
				return false;
			}
		}
		return true;
	}

	const FRecordForm& GetForm(ERecordKind Kind)
	{
		checkf(IsInOrder(), TEXT("The table of forms follows the kinds"));
		return Forms[static_cast<std::size_t>(Kind)];
	}

	const FRecordForm* FindForm(std::string_view Word)
	{
		for (const FRecordForm& Form : Forms)
		{
			if (Word == Form.Word)
			{
				return &Form;
			}
		}
		return nullptr;
	}

	template <typename FNumber>
	bool ReadNumber(std::string_view Field, FNumber& Out)
	{
		const std::from_chars_result Result = std::from_chars(Field.data(), Field.data() + Field.size(), Out);
		return Result.ec == std::errc() && Result.ptr == Field.data() + Field.size();
	}

	template <typename FNumber>
	void AppendNumber(std::string& Line, FNumber Value)
	{
		char Buffer[400];
		const std::to_chars_result Result = std::to_chars(Buffer, Buffer + sizeof(Buffer), Value);
		Line += ' ';
		Line.append(Buffer, Result.ptr);
	}

	/** What stands between the quotes; false where an escape is none, or a sign is not ASCII. */
	bool Unescape(std::string_view Field, FString* Out)
	{
		for (std::size_t Index = 1; Index + 1 < Field.size(); ++Index)
		{
			const char Sign = Field[Index];
			uint32 Unit = static_cast<unsigned char>(Sign);
			if (Sign == '\\')
			{
				const char Letter = Index + 2 < Field.size() ? Field[++Index] : '\0';
				if (Letter == 'u' && Index + 5 < Field.size())
				{
					const char* const Digits = Field.data() + Index + 1;
					const std::from_chars_result Result = std::from_chars(Digits, Digits + 4, Unit, 16);
					if (Result.ec != std::errc() || Result.ptr != Digits + 4)
					{
						return false;
					}
					Index += 4;
				}
				else if (Letter == 'n' || Letter == '"' || Letter == '\\')
				{
					Unit = Letter == 'n' ? '\n' : static_cast<unsigned char>(Letter);
				}
				else
				{
					return false;
				}
			}
			else if (Unit < 0x20 || Unit > 0x7E || Sign == '"')
			{
				return false;
			}
			if (Out)
			{
				Out->AppendChar(static_cast<TCHAR>(Unit));
			}
		}
		return true;
	}

	bool IsText(std::string_view Field)
	{
		return Field.size() >= 2 && Field.front() == '"' && Field.back() == '"' && Unescape(Field, nullptr);
	}

	bool IsWord(std::string_view Field)
	{
		const auto IsSign = [](char Sign) {
			return (Sign >= 'a' && Sign <= 'z') || (Sign >= 'A' && Sign <= 'Z') || (Sign >= '0' && Sign <= '9') || Sign == '-' ||
				Sign == '_';
		};
		return !Field.empty() && std::all_of(Field.begin(), Field.end(), IsSign);
	}

	bool FitsForm(char Form, std::string_view Field)
	{
		int64 Whole = 0;
		double Number = 0.0;
		switch (Form)
		{
		case 'n':
			return ReadNumber(Field, Whole);
		case 'f':
			return Field == "0" || Field == "1";
		case 'r':
			return ReadNumber(Field, Number) && std::isfinite(Number);
		case 'w':
			return IsWord(Field);
		default:
			return IsText(Field);
		}
	}

	/** The end of the field that begins there; a blank in a text parts nothing. */
	std::size_t FindFieldEnd(std::string_view Line, std::size_t Begin)
	{
		if (Begin >= Line.size() || Line[Begin] != '"')
		{
			return std::min(Line.find(' ', Begin), Line.size());
		}
		std::size_t End = Begin + 1;
		while (End < Line.size() && Line[End] != '"')
		{
			End += Line[End] == '\\' ? 2 : 1;
		}
		return std::min(End + 1, Line.size());
	}
}

FRecordWords::FRecordWords(ERecordKind InKind)
	: Kind(InKind)
	, Line(GetForm(InKind).Word)
{
}

FRecordWords& FRecordWords::Text(FStringView Value)
{
	constexpr char Digits[] = "0123456789abcdef";
	Line += " \"";
	for (const TCHAR Unit : Value)
	{
		const uint32 Code = static_cast<uint32>(Unit);
		if (Unit == TEXT('\n'))
		{
			Line += "\\n";
		}
		else if (Unit == TEXT('"') || Unit == TEXT('\\'))
		{
			Line += '\\';
			Line += static_cast<char>(Unit);
		}
		else if (Code >= 0x20 && Code <= 0x7E)
		{
			Line += static_cast<char>(Unit);
		}
		else
		{
			Line += "\\u";
			for (int32 Shift = 12; Shift >= 0; Shift -= 4)
			{
				Line += Digits[(Code >> Shift) & 0xF];
			}
		}
	}
	Line += '"';
	return *this;
}

FRecordWords& FRecordWords::Word(FStringView Value)
{
	Line += ' ';
	// Names of our own; a foreign one must not break the line.
	for (const TCHAR Unit : Value)
	{
		const char Sign = static_cast<char>(Unit);
		Line += static_cast<uint32>(Unit) < 0x7F && IsWord(std::string_view(&Sign, 1)) ? Sign : '-';
	}
	Line += Value.Len() == 0 ? "-" : "";
	return *this;
}

FRecordWords& FRecordWords::Number(int64 Value)
{
	AppendNumber(Line, Value);
	return *this;
}

FRecordWords& FRecordWords::Real(double Value)
{
	// No picture comes of such a number, and it would not be read again.
	AppendNumber(Line, std::isfinite(Value) ? Value : 0.0);
	return *this;
}

FRecordWords& FRecordWords::Flag(bool Value)
{
	Line += Value ? " 1" : " 0";
	return *this;
}

const std::string& FRecordWords::GetLine()
{
	if (Line.empty() || Line.back() != '\n')
	{
		Line += '\n';
	}
	return Line;
}

bool FRecordLine::Parse(std::string_view Line, FRecordLine& Out)
{
	// 1. The kind.
	const std::size_t KindEnd = std::min(Line.find(' '), Line.size());
	const FRecordForm* const Form = FindForm(Line.substr(0, KindEnd));
	if (!Form)
	{
		return false;
	}
	Out.Kind = Form->Kind;
	Out.Fields.clear();

	// 2. Each field, by the form of the kind.
	const char* Wanted = Form->Form;
	for (std::size_t At = KindEnd; At < Line.size();)
	{
		const std::size_t Begin = At + 1;
		const std::size_t End = FindFieldEnd(Line, Begin);
		const std::string_view Field = Line.substr(std::min(Begin, Line.size()), End - std::min(Begin, End));
		if (*Wanted == '\0' || Line[At] != ' ' || !FitsForm(*Wanted, Field))
		{
			return false;
		}
		Out.Fields.emplace_back(Field);
		Wanted += *Wanted == '*' ? 0 : 1;
		At = End;
	}

	// 3. None is missing.
	return *Wanted == '\0' || *Wanted == '*';
}

FString FRecordLine::Text(int32 Index) const
{
	FString Value;
	if (Index < Num() && !Fields[static_cast<std::size_t>(Index)].empty())
	{
		(void)Unescape(Fields[static_cast<std::size_t>(Index)], &Value);
	}
	return Value;
}

std::string FRecordLine::Word(int32 Index) const
{
	return Index < Num() ? Fields[static_cast<std::size_t>(Index)] : std::string();
}

int64 FRecordLine::Number(int32 Index) const
{
	int64 Value = 0;
	(void)ReadNumber(Index < Num() ? std::string_view(Fields[static_cast<std::size_t>(Index)]) : std::string_view("0"), Value);
	return Value;
}

double FRecordLine::Real(int32 Index) const
{
	double Value = 0.0;
	(void)ReadNumber(Index < Num() ? std::string_view(Fields[static_cast<std::size_t>(Index)]) : std::string_view("0"), Value);
	return Value;
}
