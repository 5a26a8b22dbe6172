#pragma once

#include "CoreTypes.h"

#include <sys/wait.h>

namespace ProcessPosix
{
// The exit status of a child that exited, or minus the signal number of one that a signal ended, so
// that a crash can never pass for a successful or meaningful exit code.
inline int32 ReturnCodeFromWaitStatus(int Status)
{
	if (WIFEXITED(Status))
	{
		return WEXITSTATUS(Status);
	}
	if (WIFSIGNALED(Status))
	{
		return -WTERMSIG(Status);
	}
	return -1;
}

// Ends Root and every process below it with SIGKILL, also those that left its process group or session;
// Root must be a child not yet collected.
void KillProcessTree(pid_t Root);

// The children whose end is not yet collected, for FPlatformProcess::TerminateAllProcs: a child is noted
// when it starts and forgotten as its end is collected.
void NoteChild(pid_t Child);
void KillEveryChildTree();
// waitpid for a noted child (with bBlock, until it ends): Child once its end is collected into OutStatus,
// 0 while it runs, -1 with errno set when there is nothing to collect. It waits for the end without taking
// it, then collects and forgets the child at once under the registry's lock, so that ending every child
// never signals the pid of one collected meanwhile, which the system may have given to another process.
pid_t CollectChild(pid_t Child, int& OutStatus, bool bBlock);
} // namespace ProcessPosix
