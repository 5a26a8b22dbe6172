#include "STesselUI.h"

#include "HAL/FileManager.h"

FString STesselTool::GetModToolsDir()
{
	return FPaths::RootDir() / TEXT("ModTools");
}

FString STesselTool::GetModDatabasePath()
{
	return FPaths::GameSavedDir() / TEXT("Mods.db");
}

FString STesselTool::GetModOutputDir()
{
	return GetModToolsDir() / TEXT("Output");
}

FString STesselTool::GetModsContentDir()
{
	return FPaths::Combine(FPaths::GameContentDir(), TEXT("Mods"));
}

void STesselTool::RefreshModList(bool bRebuildDetails)
{
	const FString ModsDir = GetModsContentDir();

	TArray<FString> Folders;
	IFileManager::Get().FindFiles(Folders, *(ModsDir / TEXT("*")), false, true);

	LoadModDatabase(GetModDatabasePath());

	auto IsSameMod = [](const FString& A, const FString& B) { return A.Equals(B, ESearchCase::IgnoreCase); };

	// Records whose folder is gone leave the list; the file keeps them until the next save.
	for (int32 Index = 0; Index < ModList.Num();)
	{
		const FString& ModDir = ModList[Index]->ModDir;
		if (Folders.ContainsByPredicate([&](const FString& Folder) { return IsSameMod(Folder, ModDir); }))
		{
			++Index;
		}
		else
		{
			ModList.RemoveAt(Index);
		}
	}

	// New folders come in after the loaded records, with the maps found directly in them.
	for (const FString& Folder : Folders)
	{
		if (ModList.ContainsByPredicate([&](const TSharedPtr<FModSetup>& Mod) { return IsSameMod(Mod->ModDir, Folder); }))
		{
			continue;
		}
		TSharedPtr<FModSetup> NewMod = MakeShared<FModSetup>(Folder);

		TArray<FString> MapFiles;
		IFileManager::Get().FindFiles(MapFiles, *(ModsDir / Folder / TEXT("*.umap")), true, false);
		for (int32 Index = 0; Index < MapFiles.Num(); ++Index)
		{
			NewMod->Maps += MapFiles[Index].Replace(TEXT(".umap"), TEXT(""), ESearchCase::IgnoreCase);
			if (Index < MapFiles.Num() - 1)
			{
				NewMod->Maps += TEXT(",");
			}
		}
		ModList.Add(NewMod);
	}

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
