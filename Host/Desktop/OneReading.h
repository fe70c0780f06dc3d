#pragma once

/** Whoever reads on a worker does so once at a time. What is asked for meanwhile is one more reading afterwards. Game thread. */
class FOneReading
{
public:
	/** False when one is under way, which is followed by another then. */
	bool Begin()
	{
		bAgain = bIsUnderWay;
		bIsUnderWay = true;
		return !bAgain;
	}

	/** True when another was asked for. */
	bool End()
	{
		bIsUnderWay = false;
		return bAgain;
	}

	bool IsUnderWay() const { return bIsUnderWay; }

private:
	bool bIsUnderWay = false;
	bool bAgain = false;
};
