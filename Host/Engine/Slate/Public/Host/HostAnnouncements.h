#pragma once

#include "CoreMinimal.h"
#include "Templates/Function.h"

/** What is said aloud to those who cannot see it appear. Without a listener everything said is dropped. Game thread. */
class SLATE_API FHostAnnouncements
{
public:
	/** One at a time; null ends it. */
	static void SetListener(TFunction<void(const FString& Text)> Listener);
	/** Whoever has to look for what there is to say does so only then. */
	static bool IsHeard();
	static void Say(const FString& Text);
};
