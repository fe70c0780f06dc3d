#pragma once

#include "CoreMinimal.h"
#include "FileSearch/FileIndexEntry.h"
#include "Styling/SlateColor.h"
#include "Templates/SharedPointer.h"
#include "Widgets/DeclarativeSyntaxSupport.h"
#include "Widgets/SCompoundWidget.h"

struct FSlateBrush;

/** One file in the dropdown: an icon of its kind and its path. In a list, the look of the selection is the list's. */
class VELMORAUI_API SFileSearchItem : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SFileSearchItem)
		: _IsSelected(false)
	{
	}
	SLATE_ARGUMENT(Velmora::UI::FFileIndexEntry, FileEntry)
	/** What was searched for. Kept; nothing of the path is picked out. */
	SLATE_ARGUMENT(FString, SearchQuery)
	SLATE_ARGUMENT(bool, IsSelected)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

	/** For a host without a list. */
	void SetIsSelected(bool bInIsSelected);

private:
	/** The path as plain text, for a row of another form. */
	TSharedRef<SWidget> BuildHighlightedText() const;
	const FSlateBrush* GetFileIcon() const;
	FSlateColor GetBackgroundColor() const;
	FSlateColor GetTextColor() const;

	Velmora::UI::FFileIndexEntry FileEntry;
	FString SearchQuery;
	bool bIsSelected = false;
	/** For rows that light up their match; none does. */
	bool bIsMatchLit = false;
};
