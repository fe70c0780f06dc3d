#pragma once

#include "CoreMinimal.h"
#include "Host/ConversationSearch.h"
#include "Host/StoredConversations.h"
#include "Templates/SharedPointer.h"

/** A row of the tab "Conversations": a conversation, or a message in which something was found. */
struct FConversationItem
{
	FString Id;

	/** The user's name for it, or what was said first. */
	FString Title;

	/** Local time. */
	FDateTime LastUpdated = FDateTime(0);
	bool bIsPinned = false;

	/** Of the message among all that are stored of its conversation, and whether the user said it. */
	int32 Position = 0;
	bool bIsUser = false;

	/** Who said it; empty for a row that is a whole conversation. */
	FString Speaker;
	/** As it stands in the message. */
	FString Excerpt;
	TArray<Velmora::FFoundPlace> Places;
	/** As it is read, and the places in that. */
	FString PlainExcerpt;
	TArray<Velmora::FFoundPlace> PlainPlaces;
};

/**
 * What the tab "Conversations" shows: what is stored, what the user calls it, what was found in it, what is hidden while its
 * deletion can be taken back. Game thread; Read runs anywhere.
 */
class FConversationItems
{
public:
	using FItem = TSharedPtr<const FConversationItem>;
	using FMarks = TMap<FString, Velmora::FConversationMark>;

	/** What a worker has read. */
	struct FRead
	{
		/** The latest first, each with the title of its first message. */
		TArray<FConversationItem> Stored;
		FMarks Marks;
	};
	/** Reads the store of the open project. For workers. */
	static FRead Read();

	void Take(FRead&& InRead);
	/** The hits in place of the list; an empty query takes them away. */
	void TakeHits(const Velmora::FConversationSearchResult& Result);
	void SetMark(const FString& Id, const Velmora::FConversationMark& Mark);
	Velmora::FConversationMark GetMark(const FString& Id) const;
	void SetHidden(const FString& Id, bool bIsHidden);

	/** In the order of the list: pinned ones first, then the latest. Of a search the conversations whose name fits, then the hits. */
	const TArray<FItem>& GetShown() const { return Shown; }
	int32 GetStoredCount() const { return Stored.Num() - Hidden.Num(); }
	const FString& GetQuery() const { return Query; }
	/** Something that was found is in a conversation that is hidden. */
	bool HidesHits() const;

private:
	void Rebuild();
	void AddHits();
	FItem MakeItem(const FConversationItem& Source) const;
	const FConversationItem* FindStored(const FString& Id) const;

	TArray<FConversationItem> Stored;
	TMap<FString, int32> Places;
	FMarks Marks;
	TSet<FString> Hidden;
	FString Query;
	TArray<Velmora::FConversationHit> Hits;
	TArray<FItem> Shown;
};

/** Deletions that can be taken back for some seconds. Times are those of FPlatformTime. */
class FConversationDeletions
{
public:
	static constexpr double UndoSeconds = 10.0;

	struct FDeletion
	{
		FString Id;
		FString Title;
		double Deadline = 0.0;
	};

	void Add(const FString& Id, const FString& Title, double Now) { Waiting.Add({ Id, Title, Now + UndoSeconds }); }
	/** The latest one is none any more; empty when nothing waits. */
	FString TakeBack();
	/** Those whose time is over, and no longer wait. */
	TArray<FString> TakeDue(double Now);
	/** The latest one; null when nothing waits. */
	const FDeletion* GetLatest() const { return Waiting.Num() > 0 ? &Waiting.Last() : nullptr; }

private:
	/** The earliest first. */
	TArray<FDeletion> Waiting;
};
