#include "HAL/PlatformProcess.h"

#include "Containers/UnrealString.h"
#include "Misc/WindowsArguments.h"
#include "ProcessPosix.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <sys/types.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace
{
void RecordEnd(FProcHandle& ProcessHandle, int Status)
{
	ProcessHandle.bEnded = true;
	ProcessHandle.bHasReturnCode = true;
	ProcessHandle.ReturnCode = ProcessPosix::ReturnCodeFromWaitStatus(Status);
}

// Collects the child's end if it has come (or waits for it with bBlock); true once it has ended.
bool CollectEnd(FProcHandle& ProcessHandle, bool bBlock)
{
	if (ProcessHandle.bEnded)
	{
		return true;
	}
	while (true)
	{
		int Status = 0;
		const pid_t Result = waitpid(ProcessHandle.ProcessId, &Status, bBlock ? 0 : WNOHANG);
		if (Result == ProcessHandle.ProcessId)
		{
			RecordEnd(ProcessHandle, Status);
			return true;
		}
		if (Result == 0)
		{
			return false;
		}
		if (errno != EINTR)
		{
			// Another copy of the handle collected it: ended, with the code unknown here.
			ProcessHandle.bEnded = true;
			return true;
		}
	}
}
} // namespace

FProcHandle FPlatformProcess::CreateProc(const TCHAR* URL, const TCHAR* Parms, bool bLaunchDetached, bool bLaunchHidden,
										 bool bLaunchReallyHidden, uint32* OutProcessID, int32 PriorityModifier,
										 const TCHAR* OptionalWorkingDirectory, int32 PipeWriteChild)
{
	if (OutProcessID)
	{
		*OutProcessID = 0;
	}
	if (!URL || !*URL)
	{
		return FProcHandle();
	}

	const std::string Path = FString(URL).ToUtf8();
	const TArray<FString> Arguments = FWindowsArguments::Split(FString(Parms));
	std::vector<std::string> ArgumentBytes;
	ArgumentBytes.reserve(static_cast<size_t>(Arguments.Num()) + 1);
	ArgumentBytes.push_back(Path);
	for (int32 Index = 0; Index < Arguments.Num(); ++Index)
	{
		ArgumentBytes.push_back(Arguments[Index].ToUtf8());
	}
	std::vector<char*> Argv;
	for (std::string& Argument : ArgumentBytes)
	{
		Argv.push_back(Argument.data());
	}
	Argv.push_back(nullptr);

	posix_spawn_file_actions_t Actions;
	posix_spawn_file_actions_init(&Actions);
	posix_spawn_file_actions_addopen(&Actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
	if (PipeWriteChild >= 0)
	{
		posix_spawn_file_actions_adddup2(&Actions, PipeWriteChild, STDOUT_FILENO);
		posix_spawn_file_actions_adddup2(&Actions, PipeWriteChild, STDERR_FILENO);
	}
	// Descriptors that another thread opened without close-on-exec, such as the pipe of a second
	// child, must not leak: a leaked write end would keep that child's output open after its end.
	posix_spawn_file_actions_addclosefrom_np(&Actions, STDERR_FILENO + 1);
	std::string WorkingDirectory;
	if (OptionalWorkingDirectory && *OptionalWorkingDirectory)
	{
		WorkingDirectory = FString(OptionalWorkingDirectory).ToUtf8();
		posix_spawn_file_actions_addchdir_np(&Actions, WorkingDirectory.c_str());
	}

	posix_spawnattr_t Attributes;
	posix_spawnattr_init(&Attributes);
	// Its own process group lets a cancel reach every process the child starts. Signal dispositions and
	// the mask are reset because the tool may ignore or block signals (SIGPIPE) that the child needs.
	posix_spawnattr_setflags(&Attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
	posix_spawnattr_setpgroup(&Attributes, 0);
	sigset_t Signals;
	sigemptyset(&Signals);
	posix_spawnattr_setsigmask(&Attributes, &Signals);
	sigfillset(&Signals);
	posix_spawnattr_setsigdefault(&Attributes, &Signals);

	pid_t ProcessId = 0;
	const int Error = posix_spawn(&ProcessId, Path.c_str(), &Actions, &Attributes, Argv.data(), environ);
	posix_spawnattr_destroy(&Attributes);
	posix_spawn_file_actions_destroy(&Actions);
	if (Error != 0)
	{
		return FProcHandle();
	}
	if (OutProcessID)
	{
		*OutProcessID = static_cast<uint32>(ProcessId);
	}
	return FProcHandle(ProcessId);
}

bool FPlatformProcess::IsProcRunning(FProcHandle& ProcessHandle)
{
	return ProcessHandle.IsValid() && !CollectEnd(ProcessHandle, false);
}

void FPlatformProcess::WaitForProc(FProcHandle& ProcessHandle)
{
	if (ProcessHandle.IsValid())
	{
		CollectEnd(ProcessHandle, true);
	}
}

bool FPlatformProcess::GetProcReturnCode(FProcHandle& ProcessHandle, int32* ReturnCode)
{
	if (!ProcessHandle.IsValid() || !CollectEnd(ProcessHandle, false) || !ProcessHandle.bHasReturnCode)
	{
		return false;
	}
	if (ReturnCode)
	{
		*ReturnCode = ProcessHandle.ReturnCode;
	}
	return true;
}

void FPlatformProcess::TerminateProc(FProcHandle& ProcessHandle, bool KillTree)
{
	// Once the end is collected the id may name a stranger, so only a child not yet collected is signalled.
	if (ProcessHandle.IsValid() && !ProcessHandle.bEnded)
	{
		kill(KillTree ? -ProcessHandle.ProcessId : ProcessHandle.ProcessId, SIGKILL);
	}
}

void FPlatformProcess::CloseProc(FProcHandle& ProcessHandle)
{
	if (ProcessHandle.IsValid() && !CollectEnd(ProcessHandle, false))
	{
		// Nobody will ask for this child any more, but its end must still be collected or it would stay
		// behind as a zombie for the rest of the tool's life.
		const pid_t ProcessId = ProcessHandle.ProcessId;
		std::thread(
			[ProcessId]
			{
				int Status = 0;
				while (waitpid(ProcessId, &Status, 0) < 0 && errno == EINTR)
				{
				}
			})
			.detach();
	}
	ProcessHandle.Reset();
}
