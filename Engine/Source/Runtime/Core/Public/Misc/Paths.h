#pragma once

#include "Containers/UnrealString.h"

// Paths are absolute where the kit gives them, with "/" separators and no trailing slash.
class CORE_API FPaths
{
public:
	// Points every kit folder below Root. The project is the folder beside Engine that holds "<Name>.uproject";
	// ProjectName names it when given.
	static void SetKitRoot(const FString& Root, const FString& ProjectName = FString());
	// The folder against which relative paths become full; the working directory unless set.
	static void SetBaseDir(const FString& BaseDir);

	static FString RootDir();
	static FString EngineDir();
	static FString ProjectDir();
	static FString GameContentDir();
	static FString GameSavedDir();
	static FString ProjectName();
	static FString BaseDir();

	// Joins the pieces as the path operator does.
	template <typename... PathTypes>
	static FString Combine(const FString& First, const PathTypes&... Rest)
	{
		FString Result = First;
		((Result = Result / FString(Rest)), ...);
		return Result;
	}

	// The text after the last dot of the file name; empty when the name has no dot.
	static FString GetExtension(const FString& InPath, bool bIncludeDot = false);
	static FString GetCleanFilename(const FString& InPath);
	static FString GetBaseFilename(const FString& InPath, bool bRemovePath = true);
	// Everything before the last separator; empty when there is none.
	static FString GetPath(const FString& InPath);
	static bool IsRelative(const FString& InPath);
	static FString ConvertRelativePathToFull(const FString& InPath);
	static FString ConvertRelativePathToFull(const FString& BasePath, const FString& InPath);
	static void NormalizeFilename(FString& InPath);
	static void NormalizeDirectoryName(FString& InPath);
	// Removes "." pieces and folds "name/.." pairs; false when a ".." would climb above the start.
	static bool CollapseRelativeDirectories(FString& InPath);
	static bool FileExists(const FString& InPath);
	static bool DirectoryExists(const FString& InPath);
};
