#pragma once

#include "Widgets/Docking/SDockTab.h"

struct FSpawnTabArgs
{
	FString TabId;
};

DECLARE_DELEGATE_RetVal_OneParam(TSharedRef<SDockTab>, FOnSpawnTab, const FSpawnTabArgs&);

// What a registration keeps; the registrar sets the display name on it.
class FTabSpawnerEntry
{
public:
	FTabSpawnerEntry& SetDisplayName(const FText& InName)
	{
		DisplayName = InName;
		return *this;
	}
	const FText& GetDisplayName() const { return DisplayName; }
	const FString& GetTabId() const { return TabId; }

private:
	friend class FGlobalTabmanager;
	FString TabId;
	FText DisplayName;
	FOnSpawnTab OnSpawnTab;
};

// The editor's registry of tabs that may be opened from its menus at any time.
class FGlobalTabmanager
{
public:
	static TSharedRef<FGlobalTabmanager> Get();

	FTabSpawnerEntry& RegisterNomadTabSpawner(const FString& TabId, const FOnSpawnTab& OnSpawnTab);
	bool UnregisterNomadTabSpawner(const FString& TabId);
	bool HasTabSpawner(const FString& TabId) const;
	// Registered tabs in the order of registration, for the host's menu.
	TArray<FTabSpawnerEntry> GetNomadTabSpawners() const;
	// Opens the tab: the spawner makes it. Null when no spawner has that id.
	TSharedPtr<SDockTab> InvokeTab(const FString& TabId);

private:
	TArray<TSharedPtr<FTabSpawnerEntry>> Spawners;
};
