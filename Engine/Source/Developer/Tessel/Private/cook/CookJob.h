#pragma once

#include "CoreMinimal.h"
#include "HAL/CriticalSection.h"
#include "Misc/MonitoredProcess.h"
#include "catalogue/ModSetup.h"
#include "cook/CookOptions.h"

#include <functional>

// A child process with its line pipeline: the monitor thread cuts the child's output into lines, and the tick
// takes the complete ones into the log.
class FMonitoredJob
{
public:
	FMonitoredJob(const FString& Executable, const FString& Parameters);
	virtual ~FMonitoredJob();

	// The step after the child has ended; a plain job has none.
	virtual void FinishCookOutput() {}

	// Monitor thread: one piece of the child's output.
	void OnProcessOutput(FString Text);
	// Moves complete lines to CompletedLines; with bFinal the rest counts as a line too.
	void SplitPendingOutput(bool bFinal);
	// UI thread: hands over and empties the complete lines.
	void TakeCompletedLines(TArray<FString>& OutLines);

	// The longest line the log takes: a longer one arrives as several lines of at most this many units.
	static constexpr int32 MaxLineLength = 1 << 20;

	bool bStarted = false;
	TArray<FString> CompletedLines;
	FString PendingOutput;
	// Each side's own array for the hand-over, empty between calls, kept so that its room is reused: the monitor
	// thread's lines of one piece of output, and what the UI thread takes.
	TArray<FString> CutLines;
	TArray<FString> HandedOver;
	// Held by pointer so that the destructor can stop the child and its monitor thread before the lock and the
	// line members go.
	TUniquePtr<FMonitoredProcess> Process;
	FCriticalSection JobLock;
};

// One target of a cook request, with everything its completion step needs.
class FCookJob : public FMonitoredJob
{
public:
	FCookJob(FModSetup InModRecord, const FString& Executable, const FString& Parameters, FString InStagedModDir,
			 FString InTargetDir, FString InStagingDir, uint32 InCookKind, bool bInLastTarget, bool bInTestOutput);

	// A test run writes the file the game loads the mod by; a normal run packages the target.
	void FinishCookOutput() override;

	const FString StagedModDir;
	const FString TargetDir;
	const FString StagingDir;
	const uint32 CookKind;
	const bool bLastTarget;
	const bool bTestOutput;
	const FModSetup ModRecord;

private:
	// "<ModId>.mod" in the target folder, from the cook's mod.info and modmeta.info; the cook's files stay.
	void WriteTestRunModFile();
	// The compressed tree in the target folder, the staging folder gone, the description files beside it.
	void PackageTarget();
};

// The process-wide queue of cook jobs, in queue order. Its length is the tool's one busy signal.
extern TArray<TSharedPtr<FCookJob>> ActiveJobs;

// Ends every job at once: a running child with its whole process tree, queued ones without being launched.
// Nothing is reported; the queue is empty afterwards.
void CancelAllJobs();

// The number every cooked mod of this process carries; "SetModID=" on the command line replaces it.
extern int64 ModId;

// Told once before the walk and after each file of it. Unset, as in the window, the walk counts nothing.
extern std::function<void(const FPackagingProgress&)> OnPackagingProgress;
