#pragma once

#include "CoreMinimal.h"
#include "Misc/DateTime.h"
#include "Templates/SharedPointer.h"

/** Kinds of messages. The numbers are part of the record. */
enum class EChatMessageType : uint8
{
	User = 0,
	AI = 1,
	System = 2,
	/** One tool run. Stands in the ToolExecutions of a ToolSummary, never in a list of messages. */
	Tool = 3,
	/** The collapsible group of one step's tool runs. */
	ToolSummary = 4,
};

/** How far a tool run has come. */
enum class EToolStatus : uint8
{
	Running = 0,
	Success = 1,
	Failed = 2,
};

/** Base of whatever a renderer wants to keep with a message until the message changes. */
class VELMORAUI_API FChatMessageLayout
{
public:
	virtual ~FChatMessageLayout();
};

/**
 * One displayed item of a conversation: a text of the user, of the agent or of the system, a tool run, or the group of
 * tool runs. The view model creates and changes messages; widgets read them. Game thread.
 */
class VELMORAUI_API FChatMessage
{
public:
	/** A complete, empty message of the user. */
	FChatMessage();

	static TSharedPtr<FChatMessage> CreateUserMessage(const FString& Text);
	static TSharedPtr<FChatMessage> CreateAIMessage(const FString& Text, bool bHasToolCalls);
	static TSharedPtr<FChatMessage> CreateSystemMessage(const FString& Text);

	/** A row for one tool run, complete unless it is running. The caller fills in the id and the tool's looks. */
	static TSharedPtr<FChatMessage> CreateToolMessage(const FString& ToolName, const FString& Parameters, EToolStatus Status);

	/** An empty, open group that is not complete. */
	static TSharedPtr<FChatMessage> CreateToolSummaryMessage();

	bool IsUserMessage() const { return Type == EChatMessageType::User; }
	bool IsAIMessage() const { return Type == EChatMessageType::AI; }
	bool IsToolMessage() const { return Type == EChatMessageType::Tool; }
	bool IsToolRunning() const { return Type == EChatMessageType::Tool && ToolStatus == EToolStatus::Running; }

	/** Time of day in 24 hours, "09:05:00". No date, no time zone. */
	FString GetFormattedTimestamp() const;

	/** Who speaks, as shown and exported: "You", "Velmora AI", "Tool: read_file". */
	FString GetSenderName() const;

	/** Drops what a renderer has kept with this message. */
	void InvalidateLayout();

	/** The text. A tool row holds one sentence on its state here, a group nothing. */
	FString Content;
	EChatMessageType Type = EChatMessageType::User;
	/** Local time of the creation. */
	FDateTime Timestamp;
	/** Nothing about the row will change any more. */
	bool bIsComplete = true;
	/** Undo transaction of a message of the user; empty when it cannot be undone. */
	FString TransactionId;
	bool bHasToolCalls = false;

	// Tool rows.
	/** The agent's name for the run, by which its completion finds the row. */
	FString ToolCallId;
	FString ToolName;
	EToolStatus ToolStatus = EToolStatus::Running;
	/** Result or error text. */
	FString ToolResult;
	/** Raw, as the agent gave them. */
	FString ToolParameters;
	/** "#RRGGBB". */
	FString ToolColor;
	FString ToolDisplayName;
	FString ToolIcon;
	FString ToolCategory;
	FString ToolActionVerb;
	FString ToolDisplayParameter;

	// Groups of tool rows.
	/** In the order in which they started. */
	TArray<TSharedPtr<FChatMessage>> ToolExecutions;
	bool bIsExpanded = true;

	/** A slot for the renderer. */
	TSharedPtr<FChatMessageLayout> CachedLayout;
};
