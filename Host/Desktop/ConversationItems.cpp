#include "ConversationItems.h"

#include "Agent/ConversationHistoryManager.h"
#include "ExcerptText.h"
#include "ViewModels/ConversationLabel.h"

using Velmora::FConversationMark;

FConversationItems::FRead FConversationItems::Read()
{
	Velmora::FConversationHistoryManager Manager;
	Manager.Initialize(FString());
	FRead Result;
	for (const Velmora::FConversationMetadata& Conversation : Manager.GetConversationSummaries())
	{
		FConversationItem& Item = Result.Stored.AddDefaulted_GetRef();
		Item.Id = Conversation.Id;
		Item.Title = FConversationLabel::MakeTitle(Conversation);
		Item.LastUpdated = Conversation.LastUpdated;
	}
	Result.Marks = Velmora::FStoredConversations::ReadMarks();
	return Result;
}

void FConversationItems::Take(FRead&& InRead)
{
	Stored = MoveTemp(InRead.Stored);
	Marks = MoveTemp(InRead.Marks);
	Places.Empty(Stored.Num());
	for (int32 Index = 0; Index < Stored.Num(); ++Index)
	{
		Places.Add(Stored[Index].Id, Index);
	}
	for (const FString& Id : Hidden.Array())
	{
		if (!Places.Contains(Id))
		{
			Hidden.Remove(Id);
		}
	}
	Rebuild();
}

void FConversationItems::TakeHits(const Velmora::FConversationSearchResult& Result)
{
	Query = Result.Query.TrimStartAndEnd();
	Hits = Result.Hits;
	Rebuild();
}

void FConversationItems::SetMark(const FString& Id, const FConversationMark& Mark)
{
	Marks.Add(Id, Mark);
	Rebuild();
}

FConversationMark FConversationItems::GetMark(const FString& Id) const
{
	const FConversationMark* const Mark = Marks.Find(Id);
	return Mark ? *Mark : FConversationMark();
}

void FConversationItems::SetHidden(const FString& Id, bool bIsHidden)
{
	if (bIsHidden && FindStored(Id))
	{
		Hidden.Add(Id);
	}
	else
	{
		Hidden.Remove(Id);
	}
	Rebuild();
}

const FConversationItem* FConversationItems::FindStored(const FString& Id) const
{
	const int32* const Index = Places.Find(Id);
	return Index ? &Stored[*Index] : nullptr;
}

FConversationItems::FItem FConversationItems::MakeItem(const FConversationItem& Source) const
{
	const TSharedRef<FConversationItem> Item = MakeShared<FConversationItem>(Source);
	if (const FConversationMark* const Mark = Marks.Find(Source.Id))
	{
		Item->Title = Mark->Name.IsEmpty() ? Item->Title : Mark->Name;
		Item->bIsPinned = Mark->bIsPinned;
	}
	return Item;
}

void FConversationItems::Rebuild()
{
	Shown.Empty(Stored.Num());
	TArray<FItem> Unpinned;
	for (const FConversationItem& Source : Stored)
	{
		const FConversationMark* const Mark = Marks.Find(Source.Id);
		const bool bIsWanted = Query.IsEmpty() || (Mark && Mark->Name.Contains(Query, ESearchCase::IgnoreCase));
		if (bIsWanted && !Hidden.Contains(Source.Id))
		{
			(Mark && Mark->bIsPinned ? Shown : Unpinned).Add(MakeItem(Source));
		}
	}
	Shown.Append(Unpinned);
	if (!Query.IsEmpty())
	{
		AddHits();
	}
}

void FConversationItems::AddHits()
{
	for (const Velmora::FConversationHit& Hit : Hits)
	{
		if (Hidden.Contains(Hit.ConversationId))
		{
			continue;
		}
		FConversationItem Item;
		Item.Title = TEXT("New Conversation"); // Of one that was stored since the list was read.
		if (const FConversationItem* const Known = FindStored(Hit.ConversationId))
		{
			Item = *Known;
		}
		Item.Id = Hit.ConversationId;
		Item.LastUpdated = Hit.LastUpdated;
		Item.Position = Hit.Position;
		Item.bIsUser = Hit.Role == Velmora::EConversationRole::User;
		Item.Speaker = Item.bIsUser ? TEXT("You") : TEXT("Velmora AI");
		Item.Excerpt = Hit.Excerpt;
		Item.Places = Hit.Places;
		Item.PlainPlaces = Hit.Places;
		Item.PlainExcerpt = ExcerptText::MakePlain(Hit.Excerpt, Item.PlainPlaces);
		Shown.Add(MakeItem(Item));
	}
}

bool FConversationItems::HidesHits() const
{
	return Hits.ContainsByPredicate([this](const Velmora::FConversationHit& Hit) { return Hidden.Contains(Hit.ConversationId); });
}

FString FConversationDeletions::TakeBack()
{
	if (Waiting.Num() == 0)
	{
		return FString();
	}
	const FString Id = Waiting.Last().Id;
	Waiting.RemoveAt(Waiting.Num() - 1);
	return Id;
}

TArray<FString> FConversationDeletions::TakeDue(double Now)
{
	TArray<FString> Due;
	while (Waiting.Num() > 0 && Waiting[0].Deadline <= Now)
	{
		Due.Add(Waiting[0].Id);
		Waiting.RemoveAt(0);
	}
	return Due;
}
