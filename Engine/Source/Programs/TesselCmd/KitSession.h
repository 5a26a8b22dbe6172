#pragma once

#include "CoreMinimal.h"
#include "TesselSession.h"

#include <functional>
#include <memory>
#include <string>

// The working folder, the base of every relative path a user gives.
FString GetWorkingDirectory();
// A path a user gave, made absolute against the working folder.
FString ToFullPath(const FString& UserPath);

// Points the engine's paths at the kit: the folder given, else the nearest folder at or above the working folder
// that holds a project (a folder <Name> with <Name>.uproject in it). Throws BadInput when there is none.
void LocateKit(const FString& GivenKit);

// Throws BadInput when the tool found Mods.db there but it doesn't parse, and JobFailed when it can't be
// opened: a command never lets the tool's save replace a file whose records it couldn't read.
void RequireReadableDatabase(const FTesselSession& Session);

// The record of the mod folder named ModDir; throws BadInput naming the mods there are.
TSharedPtr<FModSetup> SelectMod(const FTesselSession& Session, const FString& ModDir);

// The bytes of a file as far as a save that replaced it would tell.
struct FFileFingerprint
{
	int64 Size = -1;
	uint64 Hash = 0;
	bool operator!=(const FFileFingerprint& Other) const { return Size != Other.Size || Hash != Other.Hash; }
};

// Mods.db as a command that writes found it, so that its save never drops what another run, or the window, saved
// meanwhile.
class FDatabaseGuard
{
public:
	// With bHoldLock the lock below is taken before the file is read and held until the guard ends, for a
	// command whose own steps save along the way (the uploader's route saves the id it learns at once).
	explicit FDatabaseGuard(bool bHoldLock = false);
	~FDatabaseGuard();
	// Calls Save under a lock that TesselCmd runs share (waiting a while for another run's save), telling it
	// whether the file changed since it was read; temporaries that ended runs left beside it go first. Throws
	// JobFailed when the lock can't be had.
	void Save(const std::function<void(bool bChanged)>& Save) const;

private:
	FString Path;
	FFileFingerprint ReadFingerprint;
	std::unique_ptr<class FFileLock> HeldLock;
};
