#pragma once

#include "CoreMinimal.h"
#include "TesselSession.h"

#include <functional>

#define TESSEL_API __attribute__((visibility("default")))

namespace TesselCommands
{
	// The kit's catalogue as the tool sees it: one line per mod, its folder name and its maps.
	TESSEL_API FString DescribeModCatalogue();
	// What keeps the kit's Mods.db from being read ("<path>: <what is wrong>"), or empty when it reads or is
	// not there: its records are then missing from the catalogue.
	TESSEL_API FString DescribeModDatabaseProblem();

	// Cooks one mod as the "Cook Map" button would (or "Cook Game Mod" when it has no map), with the options of
	// the editor's command line, and saves Mods.db as closing the tab would. Each log line goes to OnLine as it
	// arrives. False when the kit has no such mod.
	TESSEL_API bool CookMod(const FString& ModDir, const std::function<void(const FString&)>& OnLine, FCookOutcome& OutOutcome);
}
