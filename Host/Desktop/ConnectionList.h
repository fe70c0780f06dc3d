#pragma once

#include "CoreMinimal.h"
#include "Host/AgentConnections.h"
#include "Host/HostDelayedWork.h"
#include "Templates/SharedPointer.h"

#include <memory>
#include <mutex>

/** A connection while it is edited. */
struct FEditedConnection
{
	Velmora::FAgentConnection Now;
	/** As it stands in the file; not set for one that could not be used so far. */
	TOptional<Velmora::FAgentConnection> Stored;
	/** Why it is not in the file as it reads now; empty when it is, or will be in a moment. */
	FString Complaint;
};

/**
 * The user's connections while a page edits them. A change goes to the file by itself, soon after and on another thread, as soon as
 * the connection can be used; until then the file keeps the one before. Game thread.
 */
class FEditedConnections
{
public:
	FEditedConnections();
	/** Writes what still waits. */
	~FEditedConnections();
	FEditedConnections(const FEditedConnections&) = delete;
	FEditedConnections& operator=(const FEditedConnections&) = delete;

	/** Takes the list from the file anew, unless something waits to be written or cannot be. True when it differs. */
	bool Reload();
	const TArray<TSharedRef<FEditedConnection>>& GetItems() const { return Items; }

	/** What keeps the file from being read or written; empty when nothing does. */
	FString GetProblem() const;

	/** A new one with a name of its own; not stored before it has an address. */
	TSharedRef<FEditedConnection> Add();
	void Remove(const TSharedRef<FEditedConnection>& Item);
	/** After each change of an item. */
	void NoteChange(const TSharedRef<FEditedConnection>& Item);

	bool IsDefault(const FEditedConnection& Item) const;
	/** Null for the built-in agent. */
	void SetDefault(const FEditedConnection* Item);

	/** Writes now what waits, and waits for it. */
	void Finish() { Writer.Finish(); }

private:
	/** What the writer's thread needs. */
	struct FWanted
	{
		TArray<Velmora::FAgentConnection> Connections;
		FString Default;
	};

	void Store();
	void Write();

	TArray<TSharedRef<FEditedConnection>> Items;
	FString Default;
	/** Of reading. */
	FString ReadProblem;
	mutable std::mutex Mutex;
	TOptional<FWanted> Wanted;
	bool bIsWriting = false;
	/** Of the last write. */
	FString WriteProblem;
	/** Last: its thread uses the others. */
	FHostDelayedWork Writer;
};
