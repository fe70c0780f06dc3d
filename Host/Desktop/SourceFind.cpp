#include "SourceFind.h"

#include "HAL/PlatformTime.h"

namespace
{
	/** Of a frame's work. */
	constexpr double LookSeconds = 0.003;
	/** Between two looks at the clock. */
	constexpr int32 LinesALook = 64;
}

void FSourceFind::Detach(const TArray<FLine>* OwnLines)
{
	if (Lines == OwnLines)
	{
		Viewer = FViewer();
		SetLines(nullptr);
	}
}

void FSourceFind::SetLines(const TArray<FLine>* InLines)
{
	Lines = InLines;
	BeginAnew();
}

void FSourceFind::SetQuery(const FFindQuery& InQuery)
{
	if (!Query.IsSame(InQuery))
	{
		Query = InQuery;
		BeginAnew();
		Update();
	}
}

void FSourceFind::BeginAnew()
{
	const bool bHadHits = Hits.Num() > 0;
	Hits.Reset();
	Current = INDEX_NONE;
	NextLine = 0;
	bIsComplete = !Lines || Query.Words.IsEmpty();
	if (bHadHits)
	{
		Show();
	}
}

bool FSourceFind::Update()
{
	if (bIsComplete)
	{
		return false;
	}
	const double End = FPlatformTime::Seconds() + LookSeconds;
	const int32 Before = Hits.Num();
	while (NextLine < Lines->Num() && Hits.Num() < MaxHits && (NextLine % LinesALook != 0 || FPlatformTime::Seconds() < End))
	{
		for (const Velmora::FFoundPlace& Place : FindText::FindAll((*Lines)[NextLine]->Text, Query, MaxHits - Hits.Num()))
		{
			Hits.Add({ NextLine, Place });
		}
		++NextLine;
	}
	bIsComplete = NextLine >= Lines->Num() || Hits.Num() >= MaxHits;
	if (Current == INDEX_NONE)
	{
		ChooseFirst();
	}
	if (Hits.Num() != Before)
	{
		Show();
	}
	return !bIsComplete;
}

void FSourceFind::ChooseFirst()
{
	const int32 From = Viewer.GetLine ? Viewer.GetLine() : 0;
	for (int32 Index = 0; Index < Hits.Num() && Current == INDEX_NONE; ++Index)
	{
		Current = Hits[Index].Line >= From ? Index : INDEX_NONE;
	}
	// None below: the last one above is the nearest.
	if (Current == INDEX_NONE && bIsComplete)
	{
		Current = Hits.Num() - 1;
	}
}

void FSourceFind::Step(int32 Direction)
{
	if (Hits.Num() > 0)
	{
		const int32 From = Current == INDEX_NONE ? (Direction > 0 ? -1 : Hits.Num()) : Current;
		Current = (From + Direction + Hits.Num()) % Hits.Num();
		Show();
	}
}

void FSourceFind::Show() const
{
	if (Viewer.Show)
	{
		Viewer.Show(Hits.IsValidIndex(Current) ? &Hits[Current] : nullptr);
	}
}

TArray<Velmora::FFoundPlace> FSourceFind::GetPlaces(int32 Line, int32& OutCurrent) const
{
	OutCurrent = INDEX_NONE;
	TArray<Velmora::FFoundPlace> Places;
	if (!Lines || !Lines->IsValidIndex(Line) || Hits.Num() == 0)
	{
		return Places;
	}
	Places = FindText::FindAll((*Lines)[Line]->Text, Query, MaxHits);
	if (Hits.IsValidIndex(Current) && Hits[Current].Line == Line)
	{
		OutCurrent =
			Places.IndexOfByPredicate([this](const Velmora::FFoundPlace& Place) { return Place.Begin == Hits[Current].Place.Begin; });
	}
	return Places;
}
