#pragma once

#include "Containers/Map.h"
#include "CoreMinimal.h"
#include "Delegates/Delegate.h"
#include "Input/Reply.h"
#include "Layout/Visibility.h"
#include "Misc/Attribute.h"
#include "Misc/DateTime.h"
#include "Styling/SlateColor.h"
#include "Templates/SharedPointer.h"
#include "Widgets/DeclarativeSyntaxSupport.h"
#include "Widgets/SCompoundWidget.h"

class SVerticalBox;
struct FSlateBrush;

/** What was done to a file or an asset. Numbered as the trackers number it; a number that is not listed means Changed. */
enum class EChangeActionType : uint8
{
	Changed = 0,
	Created = 1,
	Modified = 2,
	Deleted = 3,
};

/** The last thing that happened to one path. */
struct FChangedItemEntry
{
	/** As the tracker gave it. */
	FString Path;
	EChangeActionType ActionType = EChangeActionType::Changed;
	/** Local time; zero when it is not known. */
	FDateTime Timestamp = FDateTime(0);
	bool bIsAsset = false;
};

/**
 * What the agent has changed in one conversation, files and assets together, the newest first and one row per path.
 * Keeps no history of its own: each update reads the trackers and makes all rows anew. Starts collapsed.
 */
class VELMORAUI_API SChangedFilesList : public SCompoundWidget
{
public:
	DECLARE_DELEGATE_OneParam(FOnFileClicked, const FString&);

	SLATE_BEGIN_ARGS(SChangedFilesList) {}
	/** Read at each update. Empty shows nothing as changed. */
	SLATE_ATTRIBUTE(FString, ConversationId)
	/** The path of the row, as the tracker gave it. */
	SLATE_EVENT(FOnFileClicked, OnFileClicked)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

	void UpdateFileList();

	/** Shows that conversation from now on, in place of the attribute's. */
	void SetConversationId(const FString& InConversationId);

private:
	TSharedRef<SWidget> BuildHeader();
	TSharedRef<SWidget> BuildBody();
	TSharedRef<SWidget> BuildFileRow(const FChangedItemEntry& Entry);

	FText GetChangedFilesCount() const;
	EVisibility GetEmptyStateVisibility() const;
	EVisibility GetFileListVisibility() const;
	FSlateColor GetFileActionColor(EChangeActionType ActionType) const;
	const FSlateBrush* GetFileActionIcon(EChangeActionType ActionType) const;
	FText GetFileActionTooltip(EChangeActionType ActionType, FString Path) const;
	FString GetFileDisplayName(const FString& Path) const;
	/** The age in words, a date beyond a week. */
	FText GetRelativeTimestamp(FDateTime Timestamp) const;
	FReply OnFileRowClicked(FString Path);

	TAttribute<FString> ConversationId;
	FOnFileClicked OnFileClicked;
	TSharedPtr<SVerticalBox> FileListBox;
	/** By path, letter case aside; in the order of the rows. */
	TMap<FString, FChangedItemEntry> ChangedItems;
};
