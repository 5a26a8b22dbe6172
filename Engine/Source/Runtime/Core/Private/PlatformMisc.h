#pragma once

// Small system calls of the core that have no public home, one file for each system
// (PlatformMiscPosix.cpp, PlatformMiscWindows.cpp).

#include "Containers/UnrealString.h"

namespace PlatformMisc
{
	// Fills Data with bytes from the system's cryptographic source.
	void RandomBytes(void* Data, size_t Num);
	// The file of a module library in Directory (empty for the loader's own search).
	FString ModuleLibraryPath(const FString& Directory, const FString& Name);
	// Loads a library; null when it can't be loaded.
	void* LoadLibrary(const FString& Path);
	void* FindSymbol(void* Library, const char* Name);
}
