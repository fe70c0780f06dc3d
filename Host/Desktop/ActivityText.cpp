#include "ActivityText.h"

namespace
{
	using Velmora::EAgentActivityKind;
	using Velmora::FAgentActivityEntry;

	const TCHAR* GetKindWord(EAgentActivityKind Kind)
	{
		switch (Kind)
		{
		case EAgentActivityKind::Request:
			return TEXT("request");
		case EAgentActivityKind::Tool:
			return TEXT("tool   ");
		case EAgentActivityKind::Wait:
			return TEXT("wait   ");
		case EAgentActivityKind::Note:
			return TEXT("note   ");
		}
		return TEXT("");
	}

	/** What a request took and what it used. */
	FString DescribeFigures(const FAgentActivityEntry& Entry)
	{
		FString Text;
		if (Entry.PromptTokens >= 0 || Entry.CompletionTokens >= 0)
		{
			Text += FString::Printf(TEXT(", %s + %s tokens"), *ActivityText::MakeCount(FMath::Max<int64>(Entry.PromptTokens, 0)),
				*ActivityText::MakeCount(FMath::Max<int64>(Entry.CompletionTokens, 0)));
		}
		else if (Entry.PieceCount > 0)
		{
			// A server that counts nothing sends about a token in each piece.
			Text += FString::Printf(TEXT(", about %s tokens"), *ActivityText::MakeCount(Entry.PieceCount));
		}
		int64 Used = 0;
		int64 Left = 0;
		if (Entry.GetContext(Used, Left))
		{
			Text += FString::Printf(TEXT(", %s of %s used, %s left"), *ActivityText::MakeCount(Used),
				*ActivityText::MakeCount(Entry.ContextTokens), *ActivityText::MakeCount(Left));
		}
		if (Entry.FirstByteSeconds >= 0.0)
		{
			Text += FString::Printf(TEXT(", first byte after %.1f s"), Entry.FirstByteSeconds);
		}
		if (Entry.Cost >= 0.0)
		{
			Text += FString::Printf(TEXT(", cost %.4f"), Entry.Cost);
		}
		return Text;
	}
}

FString ActivityText::MakeCount(int64 Number)
{
	FString Digits = FString::Printf(TEXT("%lld"), static_cast<long long>(Number));
	const int32 First = Number < 0 ? 1 : 0;
	for (int32 Place = Digits.Len() - 3; Place > First; Place -= 3)
	{
		Digits.InsertAt(Place, TEXT(','));
	}
	return Digits;
}

FString ActivityText::MakeDuration(double Seconds)
{
	const int64 Whole = static_cast<int64>(FMath::Max(Seconds, 0.0));
	const long long Hours = Whole / 3600;
	const long long Minutes = Whole / 60 % 60;
	const long long Rest = Whole % 60;
	return Hours > 0 ? FString::Printf(TEXT("%lld:%02lld:%02lld"), Hours, Minutes, Rest)
					 : FString::Printf(TEXT("%lld:%02lld"), Minutes, Rest);
}

FString ActivityText::DescribeEntry(const FAgentActivityEntry& Entry, double Seconds)
{
	FString Text = FString(GetKindWord(Entry.Kind)) + TEXT("  ") + Entry.Title;
	const bool bHasTime = Entry.Kind != EAgentActivityKind::Note;
	if (bHasTime)
	{
		Text += FString::Printf(TEXT("  %.1f s"), Seconds) + (Entry.bIsDone ? TEXT("") : TEXT(" so far"));
	}
	if (Entry.Kind == EAgentActivityKind::Request)
	{
		Text += DescribeFigures(Entry);
	}
	if (!Entry.Outcome.IsEmpty())
	{
		Text += (bHasTime ? TEXT(": ") : TEXT("  ")) + Entry.Outcome;
	}
	// One line an event, whatever a server or a tool has said.
	Text.ReplaceInline(TEXT("\r"), TEXT(""));
	Text.ReplaceInline(TEXT("\n"), TEXT(" "));
	return Text;
}

FString ActivityText::MakeCopy(const FAgentActivityEntry& Entry, double Seconds)
{
	FString Text = Entry.StartedAt.ToString() + TEXT("  ") + DescribeEntry(Entry, Seconds) + TEXT("\n");
	for (const FString* const Part : { &Entry.Thinking, &Entry.Text, &Entry.Input })
	{
		Text += Part->IsEmpty() ? FString() : TEXT("\n") + *Part + TEXT("\n");
	}
	return Text;
}

FString ActivityText::DescribeTurn(const Velmora::FAgentTurnStatus& Turn, double FromSeconds)
{
	if (!Turn.bIsRunning || Turn.Seconds < FromSeconds)
	{
		return FString();
	}
	return FString::Printf(TEXT("%s: %s, %s tokens"), *Turn.Agent, *MakeDuration(Turn.Seconds), *MakeCount(Turn.Tokens));
}

FString ActivityText::CutForScreen(const FString& Text, int32 MaxLength)
{
	return Text.Len() <= MaxLength ? Text
								   : Text.Left(MaxLength) +
			FString::Printf(TEXT("\n\u2026 %s more characters; Copy takes all of them"), *MakeCount(Text.Len() - MaxLength));
}
