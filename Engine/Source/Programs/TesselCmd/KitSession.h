#pragma once

#include "CoreMinimal.h"
#include "headless/HeadlessTool.h"

// The working folder, the base of every relative path a user gives.
FString GetWorkingDirectory();
// A path a user gave, made absolute against the working folder.
FString ToFullPath(const FString& UserPath);

// Points the engine's paths at the kit: the folder given, else the nearest folder at or above the working folder
// that holds a project (a folder <Name> with <Name>.uproject in it). Throws BadInput when there is none.
void LocateKit(const FString& GivenKit);

// Throws BadInput when Mods.db is there but doesn't parse, and JobFailed when it can't be opened: a command
// never lets the tool's save replace a file whose records it couldn't read.
void RequireReadableDatabase();

// The record of the mod folder named ModDir, selected in the tool; throws BadInput naming the mods there are.
TSharedPtr<FModSetup> SelectMod(FHeadlessTool& Tool, const FString& ModDir);
