#include "OutputLog.h"

#include "Async/Async.h"
#include "Async/TaskGraphInterfaces.h"
#include "Framework/Application/SlateApplication.h"

namespace
{
	/** Lines come from any thread, and Slate may be asleep. */
	void WakeForLog()
	{
		AsyncTask(ENamedThreads::GameThread,
			[]()
			{
				if (FSlateApplication::IsInitialized())
				{
					FSlateApplication::Get().NoteActivity();
				}
			});
	}

	/** Time, category and verbosity, which a line of several lines has only once. */
	FString MakePrefix(const FHostLogLine& Line)
	{
		FHostLogLine Head;
		Head.Category = Line.Category;
		Head.Verbosity = Line.Verbosity;
		return Line.Time.ToString(TEXT("%H:%M:%S ")) + Head.ToString();
	}
}

FOutputLog::FOutputLog()
{
	// The sink comes first: what is logged in between stands there twice rather than not at all.
	SinkHandle = FHostLog::AddSink(
		[this](const FHostLogLine& Line)
		{
			const std::lock_guard<std::mutex> Lock(WaitingMutex);
			// Nobody takes them over while the game thread is held up; memory stays bounded all the same.
			if (Waiting.Num() >= MaxLines)
			{
				Waiting.RemoveAt(0, MaxLines / 10);
			}
			Waiting.Add(Line);
			// One wake a batch: a flood of lines must not become a flood of tasks.
			if (bIsWatched.exchange(false))
			{
				WakeForLog();
			}
		});
	for (const FHostLogLine& Line : FHostLog::GetRecentLines())
	{
		Append(MakePrefix(Line), Line.Text, Line.Verbosity);
	}
}

FOutputLog::~FOutputLog()
{
	FHostLog::RemoveSink(SinkHandle);
}

void FOutputLog::Update()
{
	TArray<FHostLogLine> Taken;
	{
		const std::lock_guard<std::mutex> Lock(WaitingMutex);
		Taken = MoveTemp(Waiting);
		Waiting.Reset();
		bIsWatched = true;
	}
	for (const FHostLogLine& Line : Taken)
	{
		Append(MakePrefix(Line), Line.Text, Line.Verbosity);
	}
	Trim();
}

void FOutputLog::Add(const FString& Text, ELogVerbosity::Type Verbosity)
{
	Update();
	Append(FString(), Text, Verbosity);
	Trim();
}

void FOutputLog::Clear()
{
	Update();
	FirstNumber += Lines.Num();
	Lines.Empty();
}

void FOutputLog::Append(const FString& Prefix, const FString& Text, ELogVerbosity::Type Verbosity)
{
	TArray<FString> Parts;
	Text.ParseIntoArrayLines(Parts, false);
	for (int32 Index = 0; Index < FMath::Max(Parts.Num(), 1); ++Index)
	{
		FString Part = Parts.IsValidIndex(Index) ? MoveTemp(Parts[Index]) : FString();
		if (Part.Len() > MaxLineLength)
		{
			Part = Part.Left(MaxLineLength) + FString::Printf(TEXT("\u2026 (%d more characters)"), Part.Len() - MaxLineLength);
		}
		const TSharedRef<FOutputLogLine> Line = MakeShared<FOutputLogLine>();
		// Further lines stand indented below the first, so that a filter shows them apart.
		Line->Text = Index == 0 ? Prefix + Part : TEXT("    ") + Part;
		Line->Verbosity = Verbosity;
		Line->Number = FirstNumber + Lines.Num();
		Lines.Add(TSharedPtr<const FOutputLogLine>(Line));
	}
}

void FOutputLog::Trim()
{
	if (Lines.Num() > MaxLines)
	{
		// A tenth more than needed, or every further line would move the whole array.
		const int32 Surplus = Lines.Num() - MaxLines + MaxLines / 10;
		Lines.RemoveAt(0, Surplus);
		FirstNumber += Surplus;
	}
}
