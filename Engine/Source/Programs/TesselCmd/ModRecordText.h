#pragma once

#include "CoreMinimal.h"
#include "catalogue/ModSetup.h"

// A record as lines for people: the folder name, then each field under its name in Mods.db, a text of several
// lines indented under its first.
TArray<FString> DescribeModRecord(const FModSetup& Mod);
