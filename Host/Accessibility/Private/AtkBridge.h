#pragma once

#include "Containers/Ticker.h"
#include "GlibPump.h"
#include "Host/AccessTree.h"

#include <atk/atk.h>

/**
 * Shows the window to assistive technologies over AT-SPI. Holds the last look at the window and the objects that clients have met,
 * takes a new look when there was a frame, and tells what has changed. Game thread: ATK's functions are called on it, by FGlibPump.
 */
class FAtkBridge
{
public:
	/** Connects, which takes some milliseconds once the bus of the accessibility service runs. */
	FAtkBridge();
	~FAtkBridge();
	FAtkBridge(const FAtkBridge&) = delete;
	FAtkBridge& operator=(const FAtkBridge&) = delete;

	/** Null when there is none (any more): clients may hold objects longer. */
	static FAtkBridge* Get();
	/** False when the service cannot be reached; nobody will hear anything then. */
	bool IsConnected() const { return bConnected; }

	const FAccessTree& GetTree() const { return Tree; }
	/** Made at need; null for a node that is gone. The bridge owns it. */
	AtkObject* GetObject(uint32 Id);
	/** Looks anew and tells what has changed. */
	void Look();

private:
	static AtkObject* GetApplication();
	void OnTick();
	void Tell(const FAccessChange& Change);
	void TellChild(const FAccessChange& Change, const char* Signal);
	void TellStates(AtkObject* Object, const FAccessChange& Change);
	void TellText(AtkObject* Object, const FAccessChange& Change, const char* Signal);
	void TellFocus(uint32 Id);
	void Announce(const FString& Text);
	/** Null when no client has met it: then nobody waits for word of it. */
	AtkObject* FindObject(uint32 Id) const;
	/** Lets go of an object whose node went. */
	void Drop(uint32 Id);
	void DropGone();

	FAccessTree Tree;
	TMap<uint32, AtkObject*> Objects;
	TUniquePtr<FGlibPump> Pump;
	FTSTicker::FDelegateHandle Ticker;
	uint64 SeenFrames = 0;
	uint32 ToldFocus = 0;
	bool bConnected = false;
};
