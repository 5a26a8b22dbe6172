#pragma once

#include "Containers/UnrealString.h"
#include "CoreTypes.h"
#include "Delegates/Delegate.h"
#include "HAL/CriticalSection.h"
#include "HAL/PlatformProcess.h"

#include <atomic>
#include <thread>

// The callback that receives a monitored child's output. Bind it before Launch: the monitor thread
// reads it without a lock.
DECLARE_DELEGATE_OneParam(FOnMonitoredProcessOutput, FString);

// A child process watched by a thread of its own, which reads the child's output and hands it on as
// text. The child's stdout and stderr share one pipe, so their text arrives interleaved as written.
class CORE_API FMonitoredProcess
{
public:
	//  URL: path of the executable; Params: its arguments in one string, split by the Windows rules and
	//  never seen by a shell; bHidden: accepted for compatibility (children have no window here);
	//  bCreatePipes: read the child's output (else it shares our stdout and stderr and OnOutput is silent).
	FMonitoredProcess(const FString& URL, const FString& Params, bool bHidden, bool bCreatePipes = true);
	// Returns only after the monitor thread has stopped; a child that still runs is cancelled with its tree.
	// Must not run on the monitor thread, that is from inside OnOutput.
	~FMonitoredProcess();

	FMonitoredProcess(const FMonitoredProcess&) = delete;
	FMonitoredProcess& operator=(const FMonitoredProcess&) = delete;

	// Starts the child and the monitor thread; false when the child could not be started, when it was
	// launched before or cancelled first. A failed start is no error: the process has simply ended, with
	// no output, and IsRunning is false.
	bool Launch();

	// True from a successful Launch until the child has ended and the last OnOutput call has returned.
	bool IsRunning() const;

	// Ends the child: SIGTERM, then SIGKILL if it is still there after a short grace. With bKillTree
	// SIGKILL goes at once to the child's whole process group, grandchildren included. Output that arrives
	// after the cancel is dropped. Harmless before Launch (the process then never starts) and after the end.
	void Cancel(bool bKillTree = false);

	// The exit status (0 to 255), or minus the signal number that ended the child; -1 while it runs, and
	// when it never started.
	int32 GetReturnCode() const;

	// Seconds from the launch to the end, or to now while the child runs; 0 when it never started.
	double GetDuration() const;

	// The callback for the child's output: raw text of each read, on the monitor thread, in order, in
	// pieces of any length that need not end at a line break. Invalid UTF-8 and NUL bytes arrive as U+FFFD.
	FOnMonitoredProcessOutput& OnOutput() { return OutputDelegate; }

private:
	static int64 NowNanoseconds();
	void MonitorThreadMain();
	// Signals the child or its group unless its end was already collected; SignalLock must be held.
	void SignalChild(int Signal);

	const FString URL;
	const FString Params;
	const bool bHidden;
	const bool bCreatePipes;
	FOnMonitoredProcessOutput OutputDelegate;

	std::thread MonitorThread;
	// Our end of the output pipe: a descriptor, or a Windows handle; -1 when there is none.
	intptr_t ReadPipe = -1;
	bool bLaunched = false;
	std::atomic<bool> bIsRunning{false};
	std::atomic<bool> bCanceling{false};
	std::atomic<int32> ReturnCode{-1};
	std::atomic<int64> StartNanoseconds{0};
	std::atomic<int64> EndNanoseconds{0};

	// Serializes signals against the collection of the child's end, after which its id may be reused.
	FCriticalSection SignalLock;
	FProcHandle ProcessHandle;
	bool bKillTree = false;
	int64 CancelNanoseconds = 0;
};
