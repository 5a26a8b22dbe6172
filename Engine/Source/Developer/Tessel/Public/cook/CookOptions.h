#pragma once

#include "CoreMinimal.h"
#include <optional>

// The kind of a cook request: one per cook button.
enum class ECookKind : uint32
{
	Map = 0,
	GameMod = 1,
	TotalConversion = 2,
	IslandExtension = 3,
};

// The editor's -modasdlc switch, which turns on all three at once.
struct FCookModes
{
	// A dedicated server target is cooked after the client.
	bool bServerTarget = false;
	// Each target's cook goes into a folder named after the mod number (ModId).
	bool bModNumberFolders = false;
	// A total conversion is cooked as downloadable content, with the bulk data list.
	bool bTotalConversionAsDlc = false;

	static FCookModes FromModAsDlc(bool bModAsDlc) { return FCookModes{bModAsDlc, bModAsDlc, bModAsDlc}; }
	static FCookModes FromEditorCommandLine(const TCHAR* CommandLine);
};

// What a cook request takes besides the record and its kind. The window reads the first three from the editor's
// command line at every cook, and the last from its form.
struct FCookOptions
{
	FCookModes Modes;
	// The number every cooked mod of this process carries from now on ("-SetModID=").
	std::optional<int64> ModId;
	// Replaces the record's title ("-ModTitle="), which the next save then keeps.
	std::optional<FString> ModTitle;
	// A test run's output folder; empty for a normal run, which packages into ModTools/Output.
	FString TestOutputDir;

	static FCookOptions FromEditorCommandLine(const TCHAR* CommandLine);
};

// How far the packaging walk of one target is, for a front end that shows it.
struct FPackagingProgress
{
	// The cooked tree the walk packages, and the folder its packages go to.
	FString StagedDir;
	FString TargetDir;
	int32 FilesDone = 0;
	int32 FilesTotal = 0;
	int64 BytesDone = 0;
	int64 BytesTotal = 0;
};
