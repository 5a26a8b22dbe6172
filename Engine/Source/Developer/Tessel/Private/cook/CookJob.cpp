#include "cook/CookJob.h"

TArray<TSharedPtr<FCookJob>> ActiveJobs;

int64 ModId = 123456789;

std::function<void(const FPackagingProgress&)> OnPackagingProgress;

FMonitoredJob::FMonitoredJob(const FString& Executable, const FString& Parameters)
	: Process(MakeUnique<FMonitoredProcess>(Executable, Parameters, true))
{
	Process->OnOutput().BindRaw(this, &FMonitoredJob::OnProcessOutput);
}

FMonitoredJob::~FMonitoredJob()
{
	// The monitor thread may be delivering text right now: it must stop before the lock and the lines go.
	if (Process)
	{
		Process->Cancel(true);
		Process.reset();
	}
}

void FMonitoredJob::OnProcessOutput(FString Text)
{
	Text.ReplaceInline(TEXT("\r"), TEXT(""), ESearchCase::CaseSensitive);
	if (Text.IsEmpty())
	{
		return;
	}
	// Only the monitor thread writes here while the child runs.
	// What waits holds no line break (every break is split off at once), so a break can only come with Text;
	// looking there keeps a long unbroken output from being searched again and again.
	const bool bHasBreak = Text.Contains(TEXT("\n"), ESearchCase::CaseSensitive);
	PendingOutput += Text;
	if (bHasBreak)
	{
		SplitPendingOutput(false);
	}
}

void FMonitoredJob::SplitPendingOutput(bool bFinal)
{
	if (PendingOutput.IsEmpty())
	{
		return;
	}
	FScopeLock Lock(&JobLock);
	const bool bComplete = bFinal || PendingOutput.EndsWith(TEXT("\n"), ESearchCase::CaseSensitive);
	TArray<FString> Pieces;
	PendingOutput.ParseIntoArray(Pieces, TEXT("\n"), false);
	const int32 Take = bComplete ? Pieces.Num() : Pieces.Num() - 1;
	for (int32 Index = 0; Index < Take; ++Index)
	{
		// Blank lines of the child vanish here.
		if (!Pieces[Index].IsEmpty())
		{
			CompletedLines.Add(MoveTemp(Pieces[Index]));
		}
	}
	if (bComplete)
	{
		PendingOutput.Empty();
	}
	else
	{
		PendingOutput = Pieces.Last();
	}
}

void FMonitoredJob::TakeCompletedLines(TArray<FString>& OutLines)
{
	TArray<FString> Taken;
	{
		// The lock is held only for the swap, so that the monitor thread never waits on the copying.
		FScopeLock Lock(&JobLock);
		if (CompletedLines.Num() == 0)
		{
			return;
		}
		Swap(Taken, CompletedLines);
	}
	if (OutLines.Num() == 0)
	{
		Swap(OutLines, Taken);
		return;
	}
	OutLines.Reserve(OutLines.Num() + Taken.Num());
	for (FString& Line : Taken)
	{
		OutLines.Add(MoveTemp(Line));
	}
}

FCookJob::FCookJob(FModSetup InModRecord, const FString& Executable, const FString& Parameters, FString InStagedModDir,
				   FString InTargetDir, FString InStagingDir, uint32 InCookKind, bool bInLastTarget, bool bInTestOutput)
	: FMonitoredJob(Executable, Parameters)
	, StagedModDir(MoveTemp(InStagedModDir))
	, TargetDir(MoveTemp(InTargetDir))
	, StagingDir(MoveTemp(InStagingDir))
	, CookKind(InCookKind)
	, bLastTarget(bInLastTarget)
	, bTestOutput(bInTestOutput)
	, ModRecord(MoveTemp(InModRecord))
{
}
