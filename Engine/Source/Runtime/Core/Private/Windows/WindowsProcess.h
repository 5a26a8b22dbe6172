#pragma once

#include "HAL/PlatformProcess.h"
#include "Windows/WindowsApi.h"

namespace WindowsProcess
{
	// The exit code a killed child leaves: minus the number of POSIX's SIGKILL, so that a cancelled child reads
	// the same on every system and never as a success.
	constexpr UINT KilledExitCode = static_cast<UINT>(-9);

	// Starts URL with the command line "URL" Parms, inside a job object of its own that the whole tree it
	// starts stays in. The child inherits only a null input and Output (its stdout and stderr; null for ours).
	FProcHandle Start(const TCHAR* URL, const TCHAR* Parms, const TCHAR* WorkingDirectory, HANDLE Output);

	// Records the end of a child whose process handle has been signalled.
	void RecordEnd(FProcHandle& ProcessHandle);
}
