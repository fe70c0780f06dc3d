#pragma once

#include "Framework/Docking/WorkspaceItem.h"
#include "Misc/Attribute.h"

class SDockArea;
class SDockTab;
class SWindow;

/** Names a tab. */
struct FTabId
{
	FTabId() = default;
	FTabId(const FName InTabType)
		: TabType(InTabType)
	{
	}
	bool operator==(const FTabId& Other) const { return TabType == Other.TabType; }
	FString ToString() const { return TabType.ToString(); }
	FName TabType;
};

/** What a spawner is told. */
class FSpawnTabArgs
{
public:
	explicit FSpawnTabArgs(const FTabId& InTabId)
		: TabId(InTabId)
	{
	}

private:
	FTabId TabId;
};

namespace ETabSpawnerMenuType
{
	enum Type
	{
		Enabled,
		Disabled,
		/** Not in menus; the tab can still be invoked. */
		Hidden,
	};
}

DECLARE_DELEGATE_RetVal_OneParam(TSharedRef<SDockTab>, FOnSpawnTab, const FSpawnTabArgs&)
	DECLARE_DELEGATE_RetVal_OneParam(bool, FCanSpawnTab, const FSpawnTabArgs&)

	/** How a tab is made and how menus offer it. */
	class SLATE_API FTabSpawnerEntry : public FWorkspaceItem
{
public:
	FTabSpawnerEntry(const FName& InTabType, const FOnSpawnTab& InSpawnTab, const FCanSpawnTab& InCanSpawnTab);

	FTabSpawnerEntry& SetDisplayName(const FText& InDisplayName);
	FTabSpawnerEntry& SetTooltipText(const FText& InToolTipText);
	FTabSpawnerEntry& SetIcon(const FSlateIcon& InIcon);
	FTabSpawnerEntry& SetMenuType(const TAttribute<ETabSpawnerMenuType::Type>& InMenuType);
	FTabSpawnerEntry& SetGroup(const TSharedRef<FWorkspaceItem>& InGroup);

	FName GetTabType() const { return TabType; }
	ETabSpawnerMenuType::Type GetMenuType() const { return MenuType.Get(); }
	virtual TSharedPtr<FTabSpawnerEntry> AsSpawnerEntry() override;

private:
	friend class FGlobalTabmanager;
	FName TabType;
	FOnSpawnTab SpawnTab;
	FCanSpawnTab CanSpawnTab;
	TAttribute<ETabSpawnerMenuType::Type> MenuType = ETabSpawnerMenuType::Enabled;
};

/**
 * Knows how tabs are made and which are open; there is at most one of each id. Tabs are shown in the dock area that the
 * program gives; without one they exist unseen. Game thread.
 */
class SLATE_API FGlobalTabmanager
{
public:
	static const TSharedRef<FGlobalTabmanager>& Get();

	/** Replaces a spawner of the same id. The entry lives until it is unregistered. */
	FTabSpawnerEntry& RegisterNomadTabSpawner(
		const FName TabId, const FOnSpawnTab& OnSpawnTab, const FCanSpawnTab& CanSpawnTab = FCanSpawnTab());
	/** False when there is none. Open tabs stay. */
	bool UnregisterNomadTabSpawner(const FName TabId);
	bool HasTabSpawner(FName TabId) const;
	/** Brings the open tab to the front or makes one. Null without a spawner, or when the spawner cannot now. */
	TSharedPtr<SDockTab> TryInvokeTab(const FTabId& TabId, bool bInvokeAsInactive = false);
	TSharedPtr<SDockTab> FindExistingLiveTab(const FTabId& TabId) const;

	// Host only.
	/** Where tabs are shown; those open already move there. Null takes the area away and leaves the tabs open. */
	void SetDockArea(const TSharedPtr<SDockArea>& InDockArea);
	TSharedPtr<SDockArea> GetDockArea() const { return DockArea; }
	/** In the order of registration. */
	const TArray<TSharedRef<FTabSpawnerEntry>>& GetSpawners() const { return Spawners; }
	/** Closes all, asking none. */
	void CloseAllTabs();
	/** A closing tab calls this. */
	void ForgetTab(SDockTab& Tab);

private:
	TSharedPtr<FTabSpawnerEntry> FindSpawner(FName TabId) const;

	TArray<TSharedRef<FTabSpawnerEntry>> Spawners;
	TArray<TSharedRef<SDockTab>> LiveTabs;
	TSharedPtr<SDockArea> DockArea;
};
