#pragma once

#include "FindTarget.h"
#include "ShownTexts.h"
#include "SoughtMessage.h"

class FSlateWindowElementList;
class SScrollBox;

/**
 * Find in the open conversation. Looks through so many rows a frame that no frame waits for it, follows the conversation as it grows,
 * and moves the list so that the hit that the user stands at is in view. Game thread.
 */
class FConversationFind final : public IFindTarget
{
public:
	virtual bool IsInFront() const override;
	virtual void SetQuery(const FFindQuery& InQuery) override;
	/** Looks anew, and goes to that message once its conversation is shown. When that does not come, as by SetQuery. */
	void Show(const FFindQuery& InQuery, const FSoughtMessage& Message);
	virtual void Step(int32 Direction) override;

	/** Once a frame, with what was painted last. True while there is more to do in the next frame. */
	bool Update(double Now);
	/** Frames the hits in view. Behind the painting of the conversation. */
	void Paint(FSlateWindowElementList& Out) const;

	virtual int32 GetCount() const override { return Count; }
	virtual int32 GetCurrentNumber() const override;
	virtual bool IsComplete() const override { return bIsComplete; }

private:
	/** Empty in a row that has no widgets yet, since it was never near what is in view: it is known that there is one. */
	using FHit = TArray<FShownPlace>;
	struct FRow
	{
		TWeakPtr<SWidget> Widget;
		TArray<FHit> Hits;
	};
	struct FCursor
	{
		int32 Row = INDEX_NONE;
		int32 Hit = INDEX_NONE;
		bool IsSet() const { return Row != INDEX_NONE; }
	};

	TSharedPtr<SScrollBox> FindList();
	/** Forgets the rows from there on. */
	void ForgetRows(int32 First);
	bool LookThrough(SScrollBox& Box);
	TArray<FHit> LookInto(const SScrollBox& Box, int32 Index) const;
	/** Rows in view, whose tools may have come, gone, or been unfolded. */
	void LookAgain(SScrollBox& Box);
	/** Makes the message that is to be shown the place to begin at. */
	void TakeSought(const SScrollBox& Box, double Now);
	void ChooseFirst(const SScrollBox& Box);
	bool Move(FCursor& Cursor, int32 Direction) const;
	/** Moves the list a step towards the current hit. */
	void Reveal(SScrollBox& Box);
	static TArray<int32> GetRowsInView(const SScrollBox& Box);
	const FHit* GetCurrentHit() const;

	FFindQuery Query;
	TWeakPtr<SScrollBox> List;
	TArray<FRow> Rows;
	int32 Count = 0;
	FCursor Current;
	/** The row that was the first in view when the query was given. */
	int32 AnchorRow = 0;
	int32 RevealTries = 0;
	/** Which way the user goes. */
	int32 LastDirection = 1;
	TOptional<FSoughtMessage> Sought;
	/** When it is given up; zero before the first look. */
	double SoughtUntil = 0.0;
	double LastLookAgain = 0.0;
	bool bIsComplete = true;
	bool bWantsFirst = false;
};
