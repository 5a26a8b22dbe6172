#include "Framework/Docking/TabManager.h"

TSharedRef<FGlobalTabmanager> FGlobalTabmanager::Get()
{
	static TSharedRef<FGlobalTabmanager> Instance = MakeShared<FGlobalTabmanager>();
	return Instance;
}

FTabSpawnerEntry& FGlobalTabmanager::RegisterNomadTabSpawner(const FString& TabId, const FOnSpawnTab& OnSpawnTab)
{
	UnregisterNomadTabSpawner(TabId);
	TSharedPtr<FTabSpawnerEntry> Entry = MakeShared<FTabSpawnerEntry>();
	Entry->TabId = TabId;
	Entry->OnSpawnTab = OnSpawnTab;
	Spawners.Add(Entry);
	return *Entry;
}

bool FGlobalTabmanager::UnregisterNomadTabSpawner(const FString& TabId)
{
	return Spawners.RemoveAll([&TabId](const TSharedPtr<FTabSpawnerEntry>& Entry) { return Entry->TabId == TabId; }) > 0;
}

bool FGlobalTabmanager::HasTabSpawner(const FString& TabId) const
{
	return Spawners.ContainsByPredicate([&TabId](const TSharedPtr<FTabSpawnerEntry>& Entry) { return Entry->TabId == TabId; });
}

TArray<FTabSpawnerEntry> FGlobalTabmanager::GetNomadTabSpawners() const
{
	TArray<FTabSpawnerEntry> Entries;
	for (const TSharedPtr<FTabSpawnerEntry>& Entry : Spawners)
	{
		Entries.Add(*Entry);
	}
	return Entries;
}

TSharedPtr<SDockTab> FGlobalTabmanager::InvokeTab(const FString& TabId)
{
	for (const TSharedPtr<FTabSpawnerEntry>& Entry : Spawners)
	{
		if (Entry->TabId == TabId)
		{
			FSpawnTabArgs Args;
			Args.TabId = TabId;
			TSharedRef<SDockTab> Tab = Entry->OnSpawnTab.Execute(Args);
			if (Tab->GetTabLabel().IsEmpty())
			{
				Tab->SetLabel(Entry->DisplayName);
			}
			return Tab;
		}
	}
	return nullptr;
}
