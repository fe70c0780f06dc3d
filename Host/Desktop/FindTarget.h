#pragma once

#include "FindText.h"

/** What the strip "Find" looks through: one of them stands in front at a time. Game thread. */
class IFindTarget
{
public:
	/** More hits are not counted. */
	static constexpr int32 MaxHits = 9999;

	virtual ~IFindTarget() = default;

	/** It is what the user looks at. */
	virtual bool IsInFront() const = 0;
	/** Looks anew, unless it is the same. The user stands at the first hit in view or below then. */
	virtual void SetQuery(const FFindQuery& InQuery) = 0;
	/** To the next hit (1) or the one before (-1), around the ends. */
	virtual void Step(int32 Direction) = 0;
	virtual int32 GetCount() const = 0;
	/** From 1; zero for none. */
	virtual int32 GetCurrentNumber() const = 0;
	virtual bool IsComplete() const = 0;
};
