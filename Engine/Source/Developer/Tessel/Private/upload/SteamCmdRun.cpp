#include "STesselUI.h"

#include "HAL/PlatformFile.h"
#include "HAL/PlatformProcess.h"
#include "Misc/FileHelper.h"

FString STesselTool::GetSteamCmdPath()
{
	return GetModToolsDir() / TEXT("SteamCMD/steamcmd.exe");
}

FString STesselTool::ComposeSteamCmdParameters(const FString& Username, const FString& Password, const FString& ItemFilePath)
{
	return FString::Printf(TEXT("+login %s %s +workshop_build_item \"%s\" +quit"), *Username, *Password, *ItemFilePath);
}

bool STesselTool::ReadPublishedFileId(const FString& ItemFileText, FString& OutId)
{
	TArray<FString> Lines;
	ItemFileText.ParseIntoArrayLines(Lines);
	for (const FString& Line : Lines)
	{
		if (Line.Find(TEXT("publishedfileid"), ESearchCase::IgnoreCase, ESearchDir::FromStart) == INDEX_NONE)
		{
			continue;
		}
		// Only the first line that names the key counts, even when it holds no number.
		TArray<FString> Pieces;
		Line.ParseIntoArray(Pieces, TEXT("\""), true);
		for (const FString& Piece : Pieces)
		{
			if (Piece.IsNumeric())
			{
				// Kept as text: an id of any length passes without a narrowing conversion.
				OutId = Piece;
				return true;
			}
		}
		return false;
	}
	return false;
}

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

	const FString ItemFilePath = GetWorkshopItemFilePath(Mod.ModDir);
	// Holds the password: it goes to the process and nowhere else, neither the log nor a file.
	const FString Parameters = ComposeSteamCmdParameters(SteamUsername, SteamPassword, ItemFilePath);

	FProcHandle Process = FPlatformProcess::CreateProc(*GetSteamCmdPath(), *Parameters, true, false, false, nullptr, 0,
													   nullptr, -1);
	if (Process.IsValid())
	{
		// No time limit: the tool learns nothing until SteamCMD has ended, and reads no exit code.
		FPlatformProcess::WaitForProc(Process);
		FPlatformProcess::CloseProc(Process);

		FString ItemFileText;
		if (FPlatformFileManager::Get().GetPlatformFile().FileExists(*ItemFilePath) &&
			FFileHelper::LoadFileToString(ItemFileText, *ItemFilePath, 0))
		{
			FString PublishedId;
			if (ReadPublishedFileId(ItemFileText, PublishedId))
			{
				// Not saved here: the id reaches Mods.db with the next save.
				Mod.ItemSeamId = PublishedId;
			}
		}
	}

	LogMessages.Add(MakeShared<FString>(TEXT("************************** Upload Done **************************")));
	if (LogListView)
	{
		LogListView->RequestListRefresh();
	}
}
