#include "KitPaths.h"

#include "STesselUI.h"

FString KitPaths::ModToolsDir()
{
	return FPaths::RootDir() / TEXT("ModTools");
}

FString KitPaths::ModOutputDir()
{
	return ModToolsDir() / TEXT("Output");
}

FString KitPaths::ModDatabase()
{
	return FPaths::GameSavedDir() / TEXT("Mods.db");
}

FString KitPaths::ModsContentDir()
{
	return FPaths::Combine(FPaths::GameContentDir(), TEXT("Mods"));
}

FString KitPaths::EditorExecutable()
{
	return FPaths::EngineDir() / TEXT("Binaries/Win64/UE4Editor.exe");
}

FString KitPaths::Uploader()
{
	return ModToolsDir() + TEXT("/Uploader/QuillonModUploader.exe");
}

FString KitPaths::SteamCmd()
{
	return ModToolsDir() / TEXT("SteamCMD/steamcmd.exe");
}

FString KitPaths::WorkshopTemplate()
{
	return ModToolsDir() / TEXT("SteamVDF.template");
}

FString KitPaths::WorkshopItemFile(const FString& ModDir)
{
	return ModToolsDir() / TEXT("ModConfigs") / (ModDir + TEXT(".vdf"));
}

// The window's names for them.

FString STesselTool::GetModToolsDir()
{
	return KitPaths::ModToolsDir();
}

FString STesselTool::GetModDatabasePath()
{
	return KitPaths::ModDatabase();
}

FString STesselTool::GetModOutputDir()
{
	return KitPaths::ModOutputDir();
}

FString STesselTool::GetModsContentDir()
{
	return KitPaths::ModsContentDir();
}
