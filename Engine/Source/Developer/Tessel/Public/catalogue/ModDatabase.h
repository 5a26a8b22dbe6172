#pragma once

#include "catalogue/ModSetup.h"

// Mods.db and the mod folders, without the window: what the tab's "Refresh" and "Save All" do.

enum class EModDatabaseRead : uint8
{
	Read,
	Unopenable,
	Unreadable,
};

// Adds the records of the database file at Path to OutMods and sets OutSteamUsername, only when it parses;
// otherwise OutError says why: the file can't be opened, or the reader's message with line and column.
EModDatabaseRead ReadModDatabase(const FString& Path, TArray<TSharedPtr<FModSetup>>& OutMods, FString& OutSteamUsername, FString& OutError);

// How a load went, and whether the first save must keep the file aside before replacing it.
struct FModDatabaseLoad
{
	EModDatabaseRead Read = EModDatabaseRead::Read;
	FString Error;
	// The file is there but couldn't be read: it is the user's work all the same.
	bool bKeepBeforeSave = false;
};

// Replaces Mods with the records of the file at Path (none when it can't be read) and, when it parses, sets
// SteamUsername.
FModDatabaseLoad LoadModRecords(const FString& Path, TArray<TSharedPtr<FModSetup>>& Mods, FString& SteamUsername);

// Copies a database file that failed to load to the first free name of "Mods.db.unreadable",
// "Mods.db.unreadable.2", ..., so that a save can replace it without losing what it held. True when the copy is
// made or there is no file any more.
bool KeepUnreadableModDatabase(const FString& Path);

// Writes every record and the Steam user name. With no records the file is left as it is; with bKeepBeforeSave
// the file is first kept aside (and the flag cleared), or left as it is when that fails. False when nothing
// was written.
bool SaveModRecords(const FString& Path, const FString& SteamUsername, const TArray<TSharedPtr<FModSetup>>& Mods, bool& bKeepBeforeSave);

// Merges the mod folders under ModsDir with the records: a record whose folder is gone leaves the list, and each
// new folder comes in after the records with the maps found directly in it. Names meet ignoring letter case.
void MergeModFolders(const FString& ModsDir, TArray<TSharedPtr<FModSetup>>& Mods);
