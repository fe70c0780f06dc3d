#pragma once

#include "CoreMinimal.h"
#include "Textures/SlateIcon.h"

class FTabSpawnerEntry;

/** A group of tabs in menus, or an entry in one. Made by AddGroup; game thread. */
class SLATE_API FWorkspaceItem : public TSharedFromThis<FWorkspaceItem>
{
public:
	FWorkspaceItem(const FText& InDisplayName, const FText& InToolTipText, const FSlateIcon& InIcon, bool bInSortChildren = false);
	virtual ~FWorkspaceItem();

	/** A group without a parent. */
	static TSharedRef<FWorkspaceItem> NewGroup(const FText& DisplayName, const FSlateIcon& Icon = FSlateIcon(), bool bSortChildren = false);
	static TSharedRef<FWorkspaceItem> NewGroup(
		const FText& DisplayName, const FText& ToolTipText, const FSlateIcon& Icon, bool bSortChildren = false);
	/** A group below this one. */
	TSharedRef<FWorkspaceItem> AddGroup(const FText& InDisplayName, const FSlateIcon& InIcon = FSlateIcon(), bool bSortChildren = false);
	TSharedRef<FWorkspaceItem> AddGroup(
		const FText& InDisplayName, const FText& InToolTipText, const FSlateIcon& InIcon, bool bSortChildren = false);

	const FText& GetDisplayName() const { return DisplayName; }
	const FText& GetTooltipText() const { return ToolTipText; }
	const FSlateIcon& GetIcon() const { return Icon; }
	TSharedPtr<FWorkspaceItem> GetParent() const { return Parent.Pin(); }
	const TArray<TSharedRef<FWorkspaceItem>>& GetChildItems() const { return Children; }
	void AddItem(const TSharedRef<FWorkspaceItem>& Item);
	void RemoveItem(const TSharedRef<FWorkspaceItem>& Item);
	/** Null for a group. */
	virtual TSharedPtr<FTabSpawnerEntry> AsSpawnerEntry();

protected:
	FText DisplayName;
	FText ToolTipText;
	FSlateIcon Icon;

private:
	TWeakPtr<FWorkspaceItem> Parent;
	TArray<TSharedRef<FWorkspaceItem>> Children;
	bool bSortChildren = false;
};
