#include "STesselUI.h"

#include "HAL/FileManager.h"
#include "cook/CookJob.h"
#include "cook/CookLayout.h"
#include "cook/CookPlan.h"

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

	// Options: the editor's command line.
	const TCHAR* CommandLine = FCommandLine::Get();
	const FCookModes Modes = FCookModes::FromEditorCommandLine(CommandLine);
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
	const FString MapArguments = ComposeMapArguments(Mod.Maps, Kind);
	const TArray<FString> Platforms = CookPlatforms(Modes);
	const FCookLayout Layout(Mod.ModDir, TestOutputDir, Platforms.Num() > 1, Modes.bModNumberFolders);

	// The GUID stays on the live record, so that every later cook of the mod uses the same one.
	if (Mod.GUID.IsEmpty())
	{
		Mod.GUID = FGuid::NewGuid().ToString(EGuidFormats::Digits);
	}

	FString KindArguments = ComposeKindArguments(Kind, Layout.GetModFolder(), Mod.GUID, Modes);
	if (Layout.IsTestOutput())
	{
		KindArguments += FString::Printf(TEXT(" -OriginalModDir=%s"), *Mod.ModDir);
	}
	else
	{
		// A normal run starts from an empty output tree; a test run never deletes anything.
		IFileManager::Get().DeleteDirectory(*Layout.GetBase(), false, true);
	}
	if (Kind == ECookKind::TotalConversion)
	{
		CopyTotalConversionDependencies(Layout.GetBase(), Layout.GetModFolder());
	}

	// Queueing: one job per target, each with its own copy of the record.
	for (int32 Index = 0; Index < Platforms.Num(); ++Index)
	{
		const FString& Platform = Platforms[Index];
		const FString StagingDir = Layout.StagingDir(Platform);
		const FString Parameters = ComposeCookParameters(MapArguments, Platform, KindArguments, StagingDir);
		LogMessages.Add(MakeShared<FString>(FString::Printf(TEXT("Cook Job: Platform '%s' Command Line: %s"), *Platform, *Parameters)));
		ActiveJobs.Add(MakeShared<FCookJob>(Mod, EditorExe, Parameters, Layout.StagedModDir(Platform, Kind), Layout.TargetDir(Platform),
											StagingDir, static_cast<uint32>(Kind), Index == Platforms.Num() - 1, Layout.IsTestOutput()));
	}
}
