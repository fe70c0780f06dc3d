#pragma once

#include "FindTarget.h"
#include "SourceText.h"

/**
 * Find in the text that the viewer shows. Looks through so many lines a frame that no frame waits for it. Outlives the viewer, which
 * comes and goes with its tab. Game thread.
 */
class FSourceFind final : public IFindTarget
{
public:
	using FLine = TSharedPtr<const FSourceLine>;

	struct FHit
	{
		/** Index of its line. */
		int32 Line = 0;
		Velmora::FFoundPlace Place;
	};

	/** What the viewer is asked and told. */
	struct FViewer
	{
		TFunction<bool()> IsInFront;
		/** Index of the line that the user is at. */
		TFunction<int32()> GetLine;
		/** Frames have changed; the current hit is to be brought into view when there is one. */
		TFunction<void(const FHit* Current)> Show;
	};

	void Attach(const FViewer& InViewer) { Viewer = InViewer; }
	/** Nothing is looked through any more, unless it is another viewer's text by now. */
	void Detach(const TArray<FLine>* OwnLines);
	/** Looks through another text. The lines must stay until the next call. */
	void SetLines(const TArray<FLine>* InLines);

	/** Once a frame. True while there is more to do in the next frame. */
	bool Update();

	/** Places of a line, and which of them is the one that the user stands at; INDEX_NONE for none. */
	TArray<Velmora::FFoundPlace> GetPlaces(int32 Line, int32& OutCurrent) const;

	virtual bool IsInFront() const override { return Viewer.IsInFront && Viewer.IsInFront(); }
	virtual void SetQuery(const FFindQuery& InQuery) override;
	virtual void Step(int32 Direction) override;
	virtual int32 GetCount() const override { return Hits.Num(); }
	virtual int32 GetCurrentNumber() const override { return Current + 1; }
	virtual bool IsComplete() const override { return bIsComplete; }

private:
	void BeginAnew();
	void ChooseFirst();
	void Show() const;

	FViewer Viewer;
	const TArray<FLine>* Lines = nullptr;
	FFindQuery Query;
	TArray<FHit> Hits;
	int32 Current = INDEX_NONE;
	int32 NextLine = 0;
	bool bIsComplete = true;
};
