#pragma once

#include "Containers/UnrealString.h"
#include "CoreTypes.h"

// A started child process. A copy names the same process, but only the copy that collected the child's
// end knows its return code; the others learn just that it has ended.
struct FProcHandle
{
	FProcHandle() = default;
	explicit FProcHandle(int32 InProcessId) : ProcessId(InProcessId) {}

	// True when the handle names a process that was started and not yet closed.
	bool IsValid() const { return ProcessId > 0; }
	// Forgets the process without touching it.
	void Reset() { *this = FProcHandle(); }

	// The operating system's process id; also the id of the child's own process group.
	int32 ProcessId = -1;
	// True once the child is known to have ended; its id may then belong to another process.
	bool bEnded = false;
	// True when this handle collected the end itself and so knows the return code.
	bool bHasReturnCode = false;
	// The child's return code when bHasReturnCode (see FPlatformProcess::GetProcReturnCode).
	int32 ReturnCode = -1;
#ifdef _WIN32
	// The process and the job object that holds its tree; CloseProc closes both for every copy.
	void* Process = nullptr;
	void* Job = nullptr;
#endif
};

// Starting and ending child processes. Parameters are one string split by the Windows argument rules
// (FWindowsArguments) and handed to the program directly: no shell ever sees them. Every child gets a
// process group of its own, so that its whole tree can be ended at once, and reads its standard input
// from /dev/null, since nobody types into a child of the tool.
struct CORE_API FPlatformProcess
{
	// Starts a program; returns its handle, or an invalid handle when the program could not be started.
	//  URL: path of the executable, absolute or relative to our working directory; no search in PATH.
	//  Parms: all arguments in one string, split by the Windows rules.
	//  bLaunchDetached: accepted for compatibility; every child is already detached from our terminal.
	//  bLaunchHidden, bLaunchReallyHidden: accepted for compatibility; children have no window here.
	//  OutProcessID: if not null, receives the child's process id (0 when the start failed).
	//  PriorityModifier: accepted for compatibility; the child runs at our priority.
	//  OptionalWorkingDirectory: the child's working directory, or null or empty for ours.
	//  PipeWriteChild: a file descriptor that gets the child's stdout and stderr, or -1 to share ours.
	static FProcHandle CreateProc(const TCHAR* URL, const TCHAR* Parms, bool bLaunchDetached = false,
								  bool bLaunchHidden = false, bool bLaunchReallyHidden = false,
								  uint32* OutProcessID = nullptr, int32 PriorityModifier = 0,
								  const TCHAR* OptionalWorkingDirectory = nullptr, int32 PipeWriteChild = -1);

	// True while the child has not ended; false for an invalid handle. Collects the end if it came.
	static bool IsProcRunning(FProcHandle& ProcessHandle);

	// Blocks, with no time limit, until the child has ended, and collects its end.
	static void WaitForProc(FProcHandle& ProcessHandle);

	// False while the child runs or when its end is unknown; else stores the return code and returns true.
	// The return code is the exit status (0 to 255), or minus the signal number when a signal ended it.
	static bool GetProcReturnCode(FProcHandle& ProcessHandle, int32* ReturnCode);

	// Kills the child at once (SIGKILL); with KillTree its whole process group, grandchildren included.
	static void TerminateProc(FProcHandle& ProcessHandle, bool KillTree = false);

	// Ends the whole tree of every child started here whose end has not been collected, as TerminateProc with
	// KillTree would; for a program that is told to stop (a signal, a time limit) while it waits on children.
	// Children started afterwards are ended as they start. Any thread may call it.
	static void TerminateAllProcs();

	// Releases the handle; a child that still runs goes on and its end is collected in the background.
	static void CloseProc(FProcHandle& ProcessHandle);

	// This program's own file, with "/" between folders; empty if the system won't say.
	static FString ExecutablePath();
};
