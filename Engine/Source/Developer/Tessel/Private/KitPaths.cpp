// Where the kit keeps what the tool reads and writes, all below the engine's own folders.

#include "STesselUI.h"

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

FString STesselTool::GetEditorExecutablePath()
{
	return FPaths::EngineDir() / TEXT("Binaries/Win64/UE4Editor.exe");
}
