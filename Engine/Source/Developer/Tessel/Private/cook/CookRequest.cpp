#include "STesselUI.h"

#include "HAL/FileManager.h"
#include "Misc/FileHelper.h"
#include "Misc/PackageName.h"
#include "cook/CookJob.h"
#include "cook/CookLayout.h"

FReply STesselTool::OnCookMapClicked()
{
	StartCook(ECookKind::Map);
	return FReply::Handled();
}

FReply STesselTool::OnCookGameModClicked()
{
	StartCook(ECookKind::GameMod);
	return FReply::Handled();
}

FReply STesselTool::OnCookTotalConversionClicked()
{
	StartCook(ECookKind::TotalConversion);
	return FReply::Handled();
}

FReply STesselTool::OnCookMapExtensionClicked()
{
	StartCook(ECookKind::IslandExtension);
	return FReply::Handled();
}

void STesselTool::StartCook(ECookKind Kind)
{
	check(SelectedMod.IsValid());
	FModSetup& Mod = *SelectedMod;

	LogMessages.Empty();
	LogMessages.Add(MakeShared<FString>(TEXT("************************** Cooking Started **************************")));

	const TCHAR* CommandLine = FCommandLine::Get();
	const bool bModAsDlc = FParse::Param(CommandLine, TEXT("modasdlc"));
	FParse::Value(CommandLine, TEXT("SetModID="), ModId);
	FParse::Value(CommandLine, TEXT("ModTitle="), Mod.Title);
	// Read as the kit always did; nothing uses it.
	FString FathomPath;
	FParse::Value(CommandLine, TEXT("FathomPath="), FathomPath);

	if (LogListView)
	{
		LogListView->RequestListRefresh();
	}

	const FString EditorExe = GetEditorExecutablePath();

	// Commas join maps into one "+" group; blanks separate groups.
	FString MapArgs;
	{
		TArray<FString> Pieces;
		Mod.Maps.Replace(TEXT(","), TEXT("+")).ParseIntoArray(Pieces, TEXT(" "), true);
		for (FString& Piece : Pieces)
		{
			if (Kind == ECookKind::IslandExtension && Piece.Find(TEXT("/Game/Maps/SeamlessTest/")) == INDEX_NONE)
			{
				Piece = FString(TEXT("/Game/Maps/SeamlessTest/")) + Piece;
			}
			Piece = FString(TEXT("-Map=")) + Piece;
		}
		MapArgs = FString::Join(Pieces, TEXT(" "));
	}

	const FCookLayout Layout(Mod.ModDir, TestOutputDir, bModAsDlc);
	const bool bTestOutput = Layout.IsTestOutput();
	const FString& Base = Layout.GetBase();
	const FString& ModFolder = Layout.GetModFolder();
	const FString OriginalModDir = Mod.ModDir;
	const FString PackageInfoPath = FPaths::RootDir() / TEXT("PackageInfo.bin");
	const FString BulkInfoPath = FPaths::RootDir() / TEXT("BulkDataInfo.bin");
	TArray<FString> Targets{TEXT("WindowsNoEditor")};
	if (bModAsDlc)
	{
		Targets.Add(TEXT("WindowsServer"));
	}

	// The GUID stays on the live record, so that every later cook of the mod uses the same one.
	if (Mod.GUID.IsEmpty())
	{
		Mod.GUID = FGuid::NewGuid().ToString(EGuidFormats::Digits);
	}

	FString ExtraArgs;
	switch (Kind)
	{
	case ECookKind::Map:
		ExtraArgs = FString::Printf(TEXT("-ModDir=%s -ModGUID=%s -pkgnfo=\"%s\""), *ModFolder, *Mod.GUID, *PackageInfoPath);
		break;
	case ECookKind::GameMod:
		ExtraArgs = FString::Printf(TEXT("-ModDir=%s -GameMod -ModGUID=%s -pkgnfo=\"%s\""), *ModFolder, *Mod.GUID, *PackageInfoPath);
		break;
	case ECookKind::TotalConversion:
		ExtraArgs = FString::Printf(TEXT("-TC_BASE=\"%s\" -ModGUID=%s"), *PackageInfoPath, *Mod.GUID);
		if (bModAsDlc)
		{
			ExtraArgs += TEXT(" -modasdlc");
			ExtraArgs += FString::Printf(TEXT(" -BulkInfo=\"%s\""), *BulkInfoPath);
		}
		break;
	case ECookKind::IslandExtension:
		ExtraArgs = FString::Printf(TEXT("-ModDir=%s -IslandExtension -ModGUID=%s"), *ModFolder, *Mod.GUID);
		break;
	}

	if (bTestOutput)
	{
		ExtraArgs += FString::Printf(TEXT(" -OriginalModDir=%s"), *OriginalModDir);
	}
	else
	{
		// A normal run starts from an empty output tree; a test run never deletes anything.
		IFileManager::Get().DeleteDirectory(*Base, false, true);
	}

	if (Kind == ECookKind::TotalConversion)
	{
		const FString DependencyList = FPaths::Combine(FPaths::GameContentDir(), TEXT("Mods"), ModFolder) / TEXT("AdditionalDependencies.txt");
		FString Dependencies;
		if (FFileHelper::LoadFileToString(Dependencies, *DependencyList))
		{
			IFileManager::Get().Copy(*(Base / TEXT("AdditionalDependencies.txt")), *DependencyList, true, false);
			TArray<FString> Packages;
			Dependencies.ParseIntoArray(Packages, TEXT("\r\n"), true);
			for (const FString& Package : Packages)
			{
				const FString File = FPackageName::LongPackageNameToFilename(Package, FString());
				IFileManager::Get().Copy(*(Base / Package), *File, true, false);
			}
		}
	}

	for (int32 Index = 0; Index < Targets.Num(); ++Index)
	{
		const FString& Target = Targets[Index];
		const FString TargetDir = Layout.TargetDir(Target);
		const FString StagingDir = Layout.StagingDir(Target);
		const FString Parameters =
			FString::Printf(TEXT("\"Orrery/Orrery.uproject\" -run=Cook %s -CookCultures=en -TargetPlatform=%s %s -Output=\"%s\""),
							*MapArgs, *Target, *ExtraArgs, *StagingDir);
		LogMessages.Add(MakeShared<FString>(FString::Printf(TEXT("Cook Job: Platform '%s' Command Line: %s"), *Target, *Parameters)));
		const FString StagedModDir = Layout.StagedModDir(Target, Kind);
		ActiveJobs.Add(MakeShared<FCookJob>(Mod, EditorExe, Parameters, StagedModDir, TargetDir, StagingDir,
											static_cast<uint32>(Kind), Index == Targets.Num() - 1, bTestOutput));
	}
}
