#include "cook/CookQueue.h"

#include "HAL/FileManager.h"
#include "KitPaths.h"
#include "Misc/Guid.h"
#include "cook/CookJob.h"
#include "cook/CookLayout.h"
#include "cook/CookPlan.h"

#define LOCTEXT_NAMESPACE "STesselTool"

void QueueCook(FModSetup& Mod, ECookKind Kind, const FCookOptions& Options, const std::function<void(FString&&)>& OnLine)
{
	OnLine(TEXT("************************** Cooking Started **************************"));
	if (Options.ModId)
	{
		ModId = *Options.ModId;
	}
	if (Options.ModTitle)
	{
		Mod.Title = *Options.ModTitle;
	}

	const FString EditorExe = KitPaths::EditorExecutable();
	const FString MapArguments = ComposeMapArguments(Mod.Maps, Kind);
	const TArray<FString> Platforms = CookPlatforms(Options.Modes);
	const FCookLayout Layout(Mod.ModDir, Options.TestOutputDir, Platforms.Num() > 1, Options.Modes.bModNumberFolders);

	if (Mod.GUID.IsEmpty())
	{
		Mod.GUID = FGuid::NewGuid().ToString(EGuidFormats::Digits);
	}

	FString KindArguments = ComposeKindArguments(Kind, Layout.GetModFolder(), Mod.GUID, Options.Modes);
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

	// One job per target, each with its own copy of the record.
	for (int32 Index = 0; Index < Platforms.Num(); ++Index)
	{
		const FString& Platform = Platforms[Index];
		const FString StagingDir = Layout.StagingDir(Platform);
		const FString Parameters = ComposeCookParameters(MapArguments, Platform, KindArguments, StagingDir);
		OnLine(FString::Printf(TEXT("Cook Job: Platform '%s' Command Line: %s"), *Platform, *Parameters));
		ActiveJobs.Add(MakeShared<FCookJob>(Mod, EditorExe, Parameters, Layout.StagedModDir(Platform, Kind), Layout.TargetDir(Platform),
											StagingDir, static_cast<uint32>(Kind), Index == Platforms.Num() - 1, Layout.IsTestOutput()));
	}
}

bool PumpCookJobs(const std::function<void(FString&&)>& OnLine, TArray<FString>& Scratch)
{
	if (ActiveJobs.Num() == 0)
	{
		return false;
	}
	auto TakeLines = [&](FMonitoredJob& Job)
	{
		Job.TakeCompletedLines(Scratch);
		for (FString& Line : Scratch)
		{
			OnLine(MoveTemp(Line));
		}
		Scratch.Reset();
	};

	bool bRemoved = false;
	for (int32 Index = 0; Index < ActiveJobs.Num();)
	{
		TSharedPtr<FCookJob> Job = ActiveJobs[Index];
		if (!Job)
		{
			ActiveJobs.RemoveAt(Index);
			bRemoved = true;
			continue;
		}
		if (Job->bStarted)
		{
			TakeLines(*Job);
		}
		if (Job->Process->IsRunning())
		{
			break;
		}
		if (!Job->bStarted)
		{
			Job->bStarted = true;
			Job->Process->Launch();
			break;
		}
		// The child has ended: its last words, the packaging step, and the next job in this same turn.
		Job->SplitPendingOutput(true);
		TakeLines(*Job);
		Job->FinishCookOutput();
		TakeLines(*Job);
		ActiveJobs.RemoveAt(Index);
		Job.Reset();
		bRemoved = true;
	}
	return bRemoved && ActiveJobs.Num() == 0;
}

bool SaysSuccess(const FString& LogLine)
{
	return LogLine.Contains(TEXT("Success"), ESearchCase::IgnoreCase);
}

FText DescribeCookVerdict(bool bSuccess)
{
	return bSuccess ? LOCTEXT("SuccessMsg", "Job Successful!!") : LOCTEXT("SuccessMsg", "Job Finsihed (possible errors)!!");
}

#undef LOCTEXT_NAMESPACE
