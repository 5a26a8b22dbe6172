#pragma once

#include "CoreMinimal.h"
#include "cook/CookJob.h"

// Where the files of one cook request go, worked out in this one place for the request and for the step that
// packages each target.
//
//                  normal run                           test run
//   Base           <output folder>/<ModDir>             the test output folder, each "\" turned into "/"
//   ModFolder      ModDir                               ModId as "%d" prints it
//   TargetDir      Base/<target>                        Base with one target; Base/<target> with several
//   StagingDir     TargetDir + "_STAGING"               TargetDir
//                  (either run: TargetDir/<ModId as "%d"> with mod-number folders)
//   StagedModDir   StagingDir/ModFolder; StagingDir itself for a total conversion
//
// A normal run packages StagedModDir into TargetDir, deletes StagingDir, and leaves the description files the
// commandlet wrote in Base beside the target folders.
class FCookLayout
{
public:
	FCookLayout(const FString& ModDir, const FString& TestOutputDir, bool bInSeveralTargets, bool bInModNumberFolders);

	const FString& GetBase() const { return Base; }
	const FString& GetModFolder() const { return ModFolder; }
	bool IsTestOutput() const { return bTestOutput; }

	FString TargetDir(const FString& TargetPlatform) const;
	FString StagingDir(const FString& TargetPlatform) const;
	FString StagedModDir(const FString& TargetPlatform, ECookKind Kind) const;

	// The Base of a normal run's target folder, where the description files are copied up to.
	static FString BaseOfTarget(const FString& TargetDir);

private:
	FString Base;
	FString ModFolder;
	bool bTestOutput = false;
	bool bSeveralTargets = false;
	bool bModNumberFolders = false;
};
