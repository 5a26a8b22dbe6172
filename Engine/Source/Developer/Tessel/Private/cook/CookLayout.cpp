#include "cook/CookLayout.h"

#include "KitPaths.h"

namespace
{
	// The text of ModId in names and arguments: what "%d" makes of it, its low 32 bits as a signed number.
	FString ModIdText()
	{
		return FString::Printf(TEXT("%d"), ModId);
	}
}

FCookLayout::FCookLayout(const FString& ModDir, const FString& TestOutputDir, bool bInSeveralTargets, bool bInModNumberFolders)
	: bTestOutput(!TestOutputDir.IsEmpty()), bSeveralTargets(bInSeveralTargets), bModNumberFolders(bInModNumberFolders)
{
	Base = bTestOutput ? TestOutputDir.Replace(TEXT("\\"), TEXT("/")) : KitPaths::ModOutputDir() / ModDir;
	ModFolder = bTestOutput ? ModIdText() : ModDir;
}

FString FCookLayout::TargetDir(const FString& TargetPlatform) const
{
	// A test run of one target writes straight into the test folder, where the game looks for mods.
	if (bTestOutput && !bSeveralTargets)
	{
		return Base;
	}
	return Base / TargetPlatform;
}

FString FCookLayout::StagingDir(const FString& TargetPlatform) const
{
	const FString Target = TargetDir(TargetPlatform);
	if (bModNumberFolders)
	{
		return Target / ModIdText();
	}
	return bTestOutput ? Target : Target + TEXT("_STAGING");
}

FString FCookLayout::StagedModDir(const FString& TargetPlatform, ECookKind Kind) const
{
	// A total conversion's cook has no mod folder of its own: the whole staging tree is the mod.
	const FString Staging = StagingDir(TargetPlatform);
	return Kind == ECookKind::TotalConversion ? Staging : Staging / ModFolder;
}

FString FCookLayout::BaseOfTarget(const FString& TargetDir)
{
	return TargetDir / TEXT("..");
}
