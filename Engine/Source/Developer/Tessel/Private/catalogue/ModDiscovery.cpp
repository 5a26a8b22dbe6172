#include "STesselUI.h"
#include "catalogue/ModDatabase.h"

#include "HAL/FileManager.h"

#include <string>
#include <unordered_set>

void MergeModFolders(const FString& ModsDir, TArray<TSharedPtr<FModSetup>>& Mods)
{
	TArray<FString> Folders;
	IFileManager::Get().FindFiles(Folders, *(ModsDir / TEXT("*")), false, true);

	// Names meet ignoring letter case, unit by unit. Each side is folded once and looked up in a hash set, so
	// that a large catalogue never compares every folder with every record.
	auto Fold = [](const FString& Name) { return Name.ToLower().GetStd(); };
	std::unordered_set<std::u16string> FolderNames;
	for (const FString& Folder : Folders)
	{
		FolderNames.insert(Fold(Folder));
	}

	// Records whose folder is gone leave the list; the file keeps them until the next save.
	Mods.RemoveAll([&](const TSharedPtr<FModSetup>& Mod) { return FolderNames.count(Fold(Mod->ModDir)) == 0; });
	std::unordered_set<std::u16string> RecordNames;
	for (const TSharedPtr<FModSetup>& Mod : Mods)
	{
		RecordNames.insert(Fold(Mod->ModDir));
	}

	// New folders come in after the loaded records, with the maps found directly in them.
	for (const FString& Folder : Folders)
	{
		// A folder that differs from an earlier one only in letter case counts as that one.
		if (!RecordNames.insert(Fold(Folder)).second)
		{
			continue;
		}
		TSharedPtr<FModSetup> NewMod = MakeShared<FModSetup>(Folder);

		TArray<FString> MapFiles;
		IFileManager::Get().FindFiles(MapFiles, *(ModsDir / Folder / TEXT("*.umap")), true, false);
		for (FString& MapFile : MapFiles)
		{
			MapFile = MapFile.Replace(TEXT(".umap"), TEXT(""), ESearchCase::IgnoreCase);
		}
		NewMod->Maps = FString::Join(MapFiles, TEXT(","));
		Mods.Add(NewMod);
	}
}

void STesselTool::RefreshModList(bool bRebuildDetails)
{
	LoadModDatabase(GetModDatabasePath());
	MergeModFolders(GetModsContentDir(), ModList);

	SelectedMod = ModList.Num() > 0 ? ModList[0] : nullptr;

	if (bRebuildDetails && DetailsScrollBox)
	{
		DetailsScrollBox->ClearChildren();
		DetailsScrollBox->AddSlot()[BuildDetailsPanel()];
		if (ModListView)
		{
			ModListView->RequestListRefresh();
		}
	}
	// A selection made by code still raises the list's selection event, which rebuilds the whole layout.
	if (ModListView && SelectedMod)
	{
		ModListView->SetSelection(SelectedMod, ESelectInfo::Direct);
	}
	RefreshPreviewBrush();
}

FReply STesselTool::OnRefreshClicked()
{
	RefreshModList(true);
	return FReply::Handled();
}
