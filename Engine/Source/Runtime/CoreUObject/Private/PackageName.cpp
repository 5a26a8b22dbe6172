#include "Misc/PackageName.h"

const FString FPackageName::MapPackageExtension = TEXT(".umap");
const FString FPackageName::AssetPackageExtension = TEXT(".uasset");

FString FPackageName::LongPackageNameToFilename(const FString& InLongPackageName, const FString& InExtension)
{
	FString Relative = InLongPackageName;
	FString Root;
	if (Relative.RemoveFromStart(TEXT("/Game/")))
	{
		Root = FPaths::GameContentDir();
	}
	else if (Relative.RemoveFromStart(TEXT("/Engine/")))
	{
		Root = FPaths::EngineDir() / TEXT("Content");
	}
	else
	{
		// A name outside the known roots is taken below the game's content folder as it stands.
		Root = FPaths::GameContentDir();
	}
	return Root / Relative + InExtension;
}
