#include "cook/CookPlan.h"

#include "HAL/FileManager.h"
#include "Misc/FileHelper.h"
#include "Misc/PackageName.h"
#include "Misc/Parse.h"

FCookModes FCookModes::FromEditorCommandLine(const TCHAR* CommandLine)
{
	return FromModAsDlc(FParse::Param(CommandLine, TEXT("modasdlc")));
}

FCookOptions FCookOptions::FromEditorCommandLine(const TCHAR* CommandLine)
{
	FCookOptions Options;
	Options.Modes = FCookModes::FromEditorCommandLine(CommandLine);
	int64 Number = 0;
	if (FParse::Value(CommandLine, TEXT("SetModID="), Number))
	{
		Options.ModId = Number;
	}
	FString Title;
	if (FParse::Value(CommandLine, TEXT("ModTitle="), Title))
	{
		Options.ModTitle = Title;
	}
	// Read as the kit always did; nothing uses it.
	FString FathomPath;
	FParse::Value(CommandLine, TEXT("FathomPath="), FathomPath);
	return Options;
}

TArray<FString> CookPlatforms(const FCookModes& Modes)
{
	TArray<FString> Platforms;
	for (const FCookTarget& Target : CookTargets)
	{
		if (!Target.EnabledBy || Modes.*Target.EnabledBy)
		{
			Platforms.Add(Target.Platform);
		}
	}
	return Platforms;
}

FString ComposeMapArguments(const FString& Maps, ECookKind Kind)
{
	TArray<FString> Pieces;
	Maps.Replace(TEXT(","), TEXT("+")).ParseIntoArray(Pieces, TEXT(" "), true);
	for (FString& Piece : Pieces)
	{
		if (Kind == ECookKind::IslandExtension && Piece.Find(TEXT("/Game/Maps/SeamlessTest/")) == INDEX_NONE)
		{
			Piece = FString(TEXT("/Game/Maps/SeamlessTest/")) + Piece;
		}
		Piece = FString(TEXT("-Map=")) + Piece;
	}
	return FString::Join(Pieces, TEXT(" "));
}

FString ComposeKindArguments(ECookKind Kind, const FString& ModFolder, const FString& Guid, const FCookModes& Modes)
{
	const FString PackageInfoPath = FPaths::RootDir() / TEXT("PackageInfo.bin");
	switch (Kind)
	{
	case ECookKind::Map:
		return FString::Printf(TEXT("-ModDir=%s -ModGUID=%s -pkgnfo=\"%s\""), *ModFolder, *Guid, *PackageInfoPath);
	case ECookKind::GameMod:
		return FString::Printf(TEXT("-ModDir=%s -GameMod -ModGUID=%s -pkgnfo=\"%s\""), *ModFolder, *Guid, *PackageInfoPath);
	case ECookKind::TotalConversion:
	{
		FString Arguments = FString::Printf(TEXT("-TC_BASE=\"%s\" -ModGUID=%s"), *PackageInfoPath, *Guid);
		if (Modes.bTotalConversionAsDlc)
		{
			Arguments += TEXT(" -modasdlc");
			Arguments += FString::Printf(TEXT(" -BulkInfo=\"%s\""), *(FPaths::RootDir() / TEXT("BulkDataInfo.bin")));
		}
		return Arguments;
	}
	case ECookKind::IslandExtension:
		return FString::Printf(TEXT("-ModDir=%s -IslandExtension -ModGUID=%s"), *ModFolder, *Guid);
	}
	return FString();
}

FString ComposeCookParameters(const FString& MapArguments, const FString& Platform, const FString& KindArguments, const FString& OutputDir)
{
	return FString::Printf(TEXT("\"Orrery/Orrery.uproject\" -run=Cook %s -CookCultures=en -TargetPlatform=%s %s -Output=\"%s\""),
						   *MapArguments, *Platform, *KindArguments, *OutputDir);
}

void CopyTotalConversionDependencies(const FString& Base, const FString& ModFolder)
{
	const FString DependencyList = FPaths::Combine(FPaths::GameContentDir(), TEXT("Mods"), ModFolder) / TEXT("AdditionalDependencies.txt");
	FString Dependencies;
	if (!FFileHelper::LoadFileToString(Dependencies, *DependencyList))
	{
		return;
	}
	IFileManager::Get().Copy(*(Base / TEXT("AdditionalDependencies.txt")), *DependencyList, true, false);
	TArray<FString> Packages;
	Dependencies.ParseIntoArray(Packages, TEXT("\r\n"), true);
	for (const FString& Package : Packages)
	{
		const FString File = FPackageName::LongPackageNameToFilename(Package, FString());
		IFileManager::Get().Copy(*(Base / Package), *File, true, false);
	}
}
