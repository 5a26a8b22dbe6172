#pragma once

#include "CoreMinimal.h"

#if defined(__GNUC__) && !defined(_WIN32)
#define COREUOBJECT_API __attribute__((visibility("default")))
#else
#define COREUOBJECT_API
#endif

// Names and file names of the engine's packages.
class COREUOBJECT_API FPackageName
{
public:
	// Extension of map packages, with its dot: ".umap".
	static const FString MapPackageExtension;
	// Extension of asset packages, with its dot: ".uasset".
	static const FString AssetPackageExtension;

	static const FString& GetMapPackageExtension() { return MapPackageExtension; }
	static const FString& GetAssetPackageExtension() { return AssetPackageExtension; }

	// The file of a long package name such as "/Game/Maps/Alpha": the root "/Game/" stands for the game's
	// content folder and "/Engine/" for the engine's; Extension is appended as it is.
	static FString LongPackageNameToFilename(const FString& InLongPackageName, const FString& InExtension = FString());
};
