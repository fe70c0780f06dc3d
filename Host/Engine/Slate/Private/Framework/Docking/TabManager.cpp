#include "Framework/Docking/TabManager.h"

#include "Host/SDockArea.h"
#include "Widgets/Docking/SDockTab.h"

// Which kinds of tabs can be made, and which tabs there are. The manager owns live tabs; a dock area only shows them, so tabs
// outlive the area that is exchanged, and a tab can be there before any area is.
FTabSpawnerEntry::FTabSpawnerEntry(const FName& InTabType, const FOnSpawnTab& InSpawnTab, const FCanSpawnTab& InCanSpawnTab)
	: FWorkspaceItem(FText::FromName(InTabType), FText::GetEmpty(), FSlateIcon())
	, TabType(InTabType)
	, SpawnTab(InSpawnTab)
	, CanSpawnTab(InCanSpawnTab)
{
}

FTabSpawnerEntry& FTabSpawnerEntry::SetDisplayName(const FText& InDisplayName)
{
	DisplayName = InDisplayName;
	return *this;
}

FTabSpawnerEntry& FTabSpawnerEntry::SetTooltipText(const FText& InToolTipText)
{
	ToolTipText = InToolTipText;
	return *this;
}

FTabSpawnerEntry& FTabSpawnerEntry::SetIcon(const FSlateIcon& InIcon)
{
	Icon = InIcon;
	return *this;
}

FTabSpawnerEntry& FTabSpawnerEntry::SetMenuType(const TAttribute<ETabSpawnerMenuType::Type>& InMenuType)
{
	MenuType = InMenuType;
	return *this;
}

FTabSpawnerEntry& FTabSpawnerEntry::SetGroup(const TSharedRef<FWorkspaceItem>& InGroup)
{
	InGroup->AddItem(AsShared());
	return *this;
}

TSharedPtr<FTabSpawnerEntry> FTabSpawnerEntry::AsSpawnerEntry()
{
	return StaticCastSharedRef<FTabSpawnerEntry>(AsShared());
}

const TSharedRef<FGlobalTabmanager>& FGlobalTabmanager::Get()
{
	static const TSharedRef<FGlobalTabmanager> Instance = MakeShared<FGlobalTabmanager>();
	return Instance;
}

// A module that is loaded again takes the place of its own earlier entry.
FTabSpawnerEntry& FGlobalTabmanager::RegisterNomadTabSpawner(
	const FName TabId, const FOnSpawnTab& OnSpawnTab, const FCanSpawnTab& CanSpawnTab)
{
	UnregisterNomadTabSpawner(TabId);
	Spawners.Add(MakeShared<FTabSpawnerEntry>(TabId, OnSpawnTab, CanSpawnTab));
	return *Spawners.Last();
}

bool FGlobalTabmanager::UnregisterNomadTabSpawner(const FName TabId)
{
	const TSharedPtr<FTabSpawnerEntry> Entry = FindSpawner(TabId);
	if (!Entry)
	{
		return false;
	}
	if (const TSharedPtr<FWorkspaceItem> Group = Entry->GetParent())
	{
		Group->RemoveItem(Entry.ToSharedRef());
	}
	Spawners.Remove(Entry.ToSharedRef());
	return true;
}

bool FGlobalTabmanager::HasTabSpawner(FName TabId) const
{
	return FindSpawner(TabId).IsValid();
}

TSharedPtr<FTabSpawnerEntry> FGlobalTabmanager::FindSpawner(FName TabId) const
{
	for (const TSharedRef<FTabSpawnerEntry>& Entry : Spawners)
	{
		if (Entry->TabType == TabId)
		{
			return Entry;
		}
	}
	return nullptr;
}

TSharedPtr<SDockTab> FGlobalTabmanager::FindExistingLiveTab(const FTabId& TabId) const
{
	for (const TSharedRef<SDockTab>& Tab : LiveTabs)
	{
		if (Tab->GetLayoutIdentifier() == TabId)
		{
			return Tab;
		}
	}
	return nullptr;
}

// 1. There is one of each kind at most. 2. Whether one can be made now. 3. The new one, with what its spawner says of it.
TSharedPtr<SDockTab> FGlobalTabmanager::TryInvokeTab(const FTabId& TabId, bool bInvokeAsInactive)
{
	if (const TSharedPtr<SDockTab> Live = FindExistingLiveTab(TabId))
	{
		if (!bInvokeAsInactive)
		{
			Live->ActivateInParent(ETabActivationCause::SetDirectly);
		}
		return Live;
	}
	const TSharedPtr<FTabSpawnerEntry> Entry = FindSpawner(TabId.TabType);
	const FSpawnTabArgs Arguments(TabId);
	if (!Entry || !Entry->SpawnTab.IsBound() || (Entry->CanSpawnTab.IsBound() && !Entry->CanSpawnTab.Execute(Arguments)))
	{
		return nullptr;
	}
	const TSharedRef<SDockTab> Tab = Entry->SpawnTab.Execute(Arguments);
	Tab->SetUpBySpawner(TabId, *Entry);
	LiveTabs.Add(Tab);
	if (DockArea)
	{
		DockArea->AddTab(Tab, !bInvokeAsInactive);
	}
	return Tab;
}

void FGlobalTabmanager::SetDockArea(const TSharedPtr<SDockArea>& InDockArea)
{
	for (const TSharedRef<SDockTab>& Tab : LiveTabs)
	{
		if (DockArea)
		{
			DockArea->RemoveTab(Tab);
		}
		if (InDockArea)
		{
			InDockArea->AddTab(Tab, false);
		}
	}
	DockArea = InDockArea;
}

void FGlobalTabmanager::CloseAllTabs()
{
	// A closing tab may open or close others.
	while (LiveTabs.Num() > 0)
	{
		const TSharedRef<SDockTab> Tab = LiveTabs.Last();
		Tab->RemoveTabFromParent();
	}
}

void FGlobalTabmanager::ForgetTab(SDockTab& Tab)
{
	LiveTabs.RemoveAll([&Tab](const TSharedRef<SDockTab>& Other) { return &Other.Get() == &Tab; });
}
