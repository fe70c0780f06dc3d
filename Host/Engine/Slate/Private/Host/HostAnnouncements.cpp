#include "Host/HostAnnouncements.h"

namespace
{
	TFunction<void(const FString&)>& GetListener()
	{
		static TFunction<void(const FString&)> Listener;
		return Listener;
	}
}

void FHostAnnouncements::SetListener(TFunction<void(const FString& Text)> Listener)
{
	GetListener() = MoveTemp(Listener);
}

bool FHostAnnouncements::IsHeard()
{
	return static_cast<bool>(GetListener());
}

void FHostAnnouncements::Say(const FString& Text)
{
	if (IsHeard() && !Text.IsEmpty())
	{
		// A copy: the listener may be taken away by what it does.
		const TFunction<void(const FString&)> Listener = GetListener();
		Listener(Text);
	}
}
