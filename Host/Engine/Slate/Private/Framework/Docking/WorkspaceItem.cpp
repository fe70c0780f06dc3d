#include "Framework/Docking/WorkspaceItem.h"

FWorkspaceItem::FWorkspaceItem(const FText& InDisplayName, const FText& InToolTipText, const FSlateIcon& InIcon, bool bInSortChildren)
	: DisplayName(InDisplayName)
	, ToolTipText(InToolTipText)
	, Icon(InIcon)
	, bSortChildren(bInSortChildren)
{
}

FWorkspaceItem::~FWorkspaceItem() = default;

TSharedRef<FWorkspaceItem> FWorkspaceItem::NewGroup(const FText& DisplayName, const FSlateIcon& Icon, bool bSortChildren)
{
	return NewGroup(DisplayName, FText::GetEmpty(), Icon, bSortChildren);
}

TSharedRef<FWorkspaceItem> FWorkspaceItem::NewGroup(
	const FText& DisplayName, const FText& ToolTipText, const FSlateIcon& Icon, bool bSortChildren)
{
	return MakeShared<FWorkspaceItem>(DisplayName, ToolTipText, Icon, bSortChildren);
}

TSharedRef<FWorkspaceItem> FWorkspaceItem::AddGroup(const FText& InDisplayName, const FSlateIcon& InIcon, bool bInSortChildren)
{
	return AddGroup(InDisplayName, FText::GetEmpty(), InIcon, bInSortChildren);
}

TSharedRef<FWorkspaceItem> FWorkspaceItem::AddGroup(
	const FText& InDisplayName, const FText& InToolTipText, const FSlateIcon& InIcon, bool bInSortChildren)
{
	const TSharedRef<FWorkspaceItem> Group = NewGroup(InDisplayName, InToolTipText, InIcon, bInSortChildren);
	AddItem(Group);
	return Group;
}

void FWorkspaceItem::AddItem(const TSharedRef<FWorkspaceItem>& Item)
{
	if (const TSharedPtr<FWorkspaceItem> OldParent = Item->Parent.Pin())
	{
		OldParent->RemoveItem(Item);
	}
	Item->Parent = AsShared();
	Children.Add(Item);
	if (bSortChildren)
	{
		Children.StableSort([](const TSharedRef<FWorkspaceItem>& A, const TSharedRef<FWorkspaceItem>& B)
			{ return A->DisplayName.ToString() < B->DisplayName.ToString(); });
	}
}

void FWorkspaceItem::RemoveItem(const TSharedRef<FWorkspaceItem>& Item)
{
	if (Children.Remove(Item) > 0)
	{
		Item->Parent.Reset();
	}
}

TSharedPtr<FTabSpawnerEntry> FWorkspaceItem::AsSpawnerEntry()
{
	return nullptr;
}
