#pragma once

#include "CoreMinimal.h"

#include <string>
#include <string_view>
#include <vector>

/** What a line of a recording says. */
enum class ERecordKind : uint8
{
	// What the session began with.
	Version,
	Start,
	Window,
	Session,
	Project,
	Kept,
	Set,
	Seed,
	Begin,
	// A turn of the loop, the time and the window.
	Turn,
	Frame,
	Driver,
	At,
	Size,
	Paint,
	// Input. The first field says whether the platform gave it, or a driver between two looks at the platform.
	Down,
	Up,
	Text,
	Preedit,
	Move,
	Press,
	Release,
	Wheel,
	Leave,
	Resized,
	Active,
	Exposed,
	Close,
	Do,
	Clipboard,
	CanPaste,
	// Calls of the agent library and what it calls back.
	Agent,
	Gone,
	Call,
	Return,
	Callback,
	Ask,
	Asked,
	Gate,
	Toast,
	// What it answers, written down when an answer differs from the last one.
	State,
	HasActive,
	CanUndo,
	Transaction,
	Title,
	Plan,
	Conversation,
	Mode,
	Time,
	Message,
	Cut,
	Last,
	Look,
	TurnStatus,
	Operations,
	Operation,
	Files,
	FileList,
	File,
	// Lists of stored conversations: asked for on the spot, or read in the background and arriving now.
	Stored,
	Summaries,
	Summary,
	SummaryMessage,
	// For people.
	Note,
	End,
};

/** Makes a line: a kind, then its fields in the order of its form. Pure. */
class FRecordWords
{
public:
	explicit FRecordWords(ERecordKind InKind);
	ERecordKind GetKind() const { return Kind; }
	/** Any UTF-16 text, lone surrogates too. */
	FRecordWords& Text(FStringView Value);
	/** A name without blanks. */
	FRecordWords& Word(FStringView Value);
	FRecordWords& Number(int64 Value);
	/** Reads back as the same number. */
	FRecordWords& Real(double Value);
	FRecordWords& Flag(bool Value);
	/** With its line feed. */
	const std::string& GetLine();

private:
	ERecordKind Kind;
	std::string Line;
};

/** A line that has been read. Fields are counted from 0; what they hold was checked against the form of the kind. */
class FRecordLine
{
public:
	/** False when the line, without its line feed, is none of a recording. */
	static bool Parse(std::string_view Line, FRecordLine& Out);

	ERecordKind GetKind() const { return Kind; }
	int32 Num() const { return static_cast<int32>(Fields.size()); }
	FString Text(int32 Index) const;
	std::string Word(int32 Index) const;
	int64 Number(int32 Index) const;
	double Real(int32 Index) const;
	bool Flag(int32 Index) const { return Number(Index) != 0; }

private:
	ERecordKind Kind = ERecordKind::End;
	/** As they stand in the line, texts with their quotes. */
	std::vector<std::string> Fields;
};
