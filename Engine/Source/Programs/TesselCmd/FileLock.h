#pragma once

#include "CoreMinimal.h"

// An exclusive lock on a file that other TesselCmd runs take too, held for the life of the object and let go
// by the system when a run dies. The file is made if needed and stays.
class FFileLock
{
public:
	// Waits up to WaitSeconds for the lock; IsHeld says whether it was had.
	FFileLock(const FString& Path, double WaitSeconds);
	~FFileLock();
	FFileLock(const FFileLock&) = delete;
	FFileLock& operator=(const FFileLock&) = delete;

	bool IsHeld() const { return bHeld; }
	// False when the lock file could not be made at all (a folder we may not write to).
	bool IsOpen() const { return Handle != -1 || bHeld; }

private:
	intptr_t Handle = -1;
	bool bHeld = false;
};

// False when no process has the id (the process that left a temporary file has ended).
bool IsProcessRunning(uint32 ProcessId);
