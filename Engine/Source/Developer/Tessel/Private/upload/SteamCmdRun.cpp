#include "STesselUI.h"

#include "HAL/PlatformProcess.h"
#include "KitPaths.h"
#include "upload/WorkshopUpload.h"

void STesselTool::RunSteamCmd()
{
	check(SelectedMod.IsValid());
	FModSetup& Mod = *SelectedMod;

	LogMessages.Empty();
	LogMessages.Add(MakeShared<FString>(TEXT("************************** Upload Started **************************")));
	if (LogListView)
	{
		LogListView->RequestListRefresh();
	}

	const FString ItemFilePath = KitPaths::WorkshopItemFile(Mod.ModDir);
	// Holds the password: it goes to the process and nowhere else, neither the log nor a file.
	const FString Parameters = ComposeSteamCmdParameters(SteamUsername, SteamPassword, ItemFilePath);

	FProcHandle Process = FPlatformProcess::CreateProc(*KitPaths::SteamCmd(), *Parameters, true, false, false, nullptr, 0, nullptr, -1);
	if (Process.IsValid())
	{
		// No time limit: the tool learns nothing until SteamCMD has ended, and reads no exit code.
		FPlatformProcess::WaitForProc(Process);
		FPlatformProcess::CloseProc(Process);

		FString PublishedId;
		if (ReadBackPublishedFileId(ItemFilePath, PublishedId))
		{
			// Not saved here: the id reaches Mods.db with the next save.
			Mod.ItemSeamId = PublishedId;
		}
	}

	LogMessages.Add(MakeShared<FString>(TEXT("************************** Upload Done **************************")));
	if (LogListView)
	{
		LogListView->RequestListRefresh();
	}
}
