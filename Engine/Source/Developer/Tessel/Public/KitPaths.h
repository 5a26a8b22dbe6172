#pragma once

#include "CoreMinimal.h"

// Where the kit keeps what the tool reads and writes, all below the engine's own folders. Each follows the engine's
// paths as they stand when it is called.
namespace KitPaths
{
	// <root>/ModTools: the programs, the item template and the packaged mods.
	FString ModToolsDir();
	// ModTools/Output, where each mod's packaged tree goes.
	FString ModOutputDir();
	// The project's Saved/Mods.db.
	FString ModDatabase();
	// The project's Content/Mods, one folder per mod.
	FString ModsContentDir();
	// The editor, whose cook commandlet cooks a mod.
	FString EditorExecutable();
	FString Uploader();
	FString SteamCmd();
	FString WorkshopTemplate();
	// The item file SteamCMD builds the mod's item from, and writes its id back into.
	FString WorkshopItemFile(const FString& ModDir);
}
