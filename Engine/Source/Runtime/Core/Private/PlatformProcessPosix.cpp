#include "HAL/PlatformProcess.h"

#include "Containers/UnrealString.h"
#include "Misc/WindowsArguments.h"
#include "ProcessPosix.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
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
		const pid_t Result = ProcessPosix::CollectChild(ProcessHandle.ProcessId, Status, bBlock);
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
// The child's side of CreateProc, between fork and exec. Its own process group lets a cancel reach every
// process the child starts, and as a subreaper it adopts the descendants whose parents end, so that even
// those that leave the group by setsid stay in its tree where a cancel finds them. Signal dispositions and
// the mask are reset because the tool may ignore or block signals (SIGPIPE) that the child needs.
[[noreturn]] void StartChild(const char* Path, char* const* Argv, const char* WorkingDirectory, int PipeWriteChild,
							 int Report)
{
	setpgid(0, 0);
	prctl(PR_SET_CHILD_SUBREAPER, 1);
	struct sigaction Default{};
	Default.sa_handler = SIG_DFL;
	for (int Signal = 1; Signal < NSIG; ++Signal)
	{
		if (Signal != SIGKILL && Signal != SIGSTOP)
		{
			sigaction(Signal, &Default, nullptr);
		}
	}
	sigset_t Signals;
	sigemptyset(&Signals);
	sigprocmask(SIG_SETMASK, &Signals, nullptr);

	int Error = 0;
	const int Null = open("/dev/null", O_RDONLY);
	if (Null < 0 || dup2(Null, STDIN_FILENO) < 0)
	{
		Error = errno;
	}
	if (Error == 0 && PipeWriteChild >= 0 &&
		(dup2(PipeWriteChild, STDOUT_FILENO) < 0 || dup2(PipeWriteChild, STDERR_FILENO) < 0))
	{
		Error = errno;
	}
	// Descriptors that another thread opened without close-on-exec, such as the pipe of a second child,
	// must not leak: a leaked write end would keep that child's output open after its end.
	if (Error == 0)
	{
		syscall(SYS_close_range, STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
	}
	if (Error == 0 && WorkingDirectory && chdir(WorkingDirectory) != 0)
	{
		Error = errno;
	}
	if (Error == 0)
	{
		execve(Path, Argv, environ);
		Error = errno;
	}
	while (write(Report, &Error, sizeof(Error)) < 0 && errno == EINTR)
	{
	}
	_exit(127);
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

	const std::string Given = FString(URL).ToNative();
	std::string Path = Given;
	// A relative path names the program from our working folder, as on Windows, not from the child's: the
	// child changes folder before it starts the program.
	if (Path[0] != '/' && OptionalWorkingDirectory && *OptionalWorkingDirectory)
	{
		if (char* Here = getcwd(nullptr, 0))
		{
			Path = std::string(Here) + "/" + Path;
			free(Here);
		}
	}
	const TArray<FString> Arguments = FWindowsArguments::Split(FString(Parms));
	std::vector<std::string> ArgumentBytes;
	ArgumentBytes.reserve(static_cast<size_t>(Arguments.Num()) + 1);
	ArgumentBytes.push_back(Given);
	for (int32 Index = 0; Index < Arguments.Num(); ++Index)
	{
		ArgumentBytes.push_back(Arguments[Index].ToNative());
	}
	std::vector<char*> Argv;
	for (std::string& Argument : ArgumentBytes)
	{
		Argv.push_back(Argument.data());
	}
	Argv.push_back(nullptr);

	std::string WorkingDirectory;
	if (OptionalWorkingDirectory && *OptionalWorkingDirectory)
	{
		WorkingDirectory = FString(OptionalWorkingDirectory).ToNative();
	}
	// The child reports a failed start through this pipe; it closes unread when the program runs.
	int Report[2];
	if (pipe2(Report, O_CLOEXEC) != 0)
	{
		return FProcHandle();
	}
	const pid_t ProcessId = fork();
	if (ProcessId == 0)
	{
		// Only calls that are safe between fork and exec in a process with threads from here on.
		StartChild(Path.c_str(), Argv.data(), WorkingDirectory.empty() ? nullptr : WorkingDirectory.c_str(),
				   PipeWriteChild, Report[1]);
	}
	if (ProcessId > 0)
	{
		// Noted at once, so that TerminateAllProcs can't miss a child that is still starting.
		ProcessPosix::NoteChild(ProcessId);
	}
	close(Report[1]);
	int ChildError = 0;
	ssize_t Got = 0;
	do
	{
		Got = read(Report[0], &ChildError, sizeof(ChildError));
	} while (Got < 0 && errno == EINTR);
	close(Report[0]);
	if (ProcessId < 0)
	{
		return FProcHandle();
	}
	if (Got > 0)
	{
		int Status = 0;
		ProcessPosix::CollectChild(ProcessId, Status, true);
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
		if (KillTree)
		{
			ProcessPosix::KillProcessTree(ProcessHandle.ProcessId);
		}
		else
		{
			kill(ProcessHandle.ProcessId, SIGKILL);
		}
	}
}

void FPlatformProcess::TerminateAllProcs()
{
	ProcessPosix::KillEveryChildTree();
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
				ProcessPosix::CollectChild(ProcessId, Status, true);
			})
			.detach();
	}
	ProcessHandle.Reset();
}

FString FPlatformProcess::ExecutablePath()
{
	char Buffer[4096];
	const ssize_t Length = readlink("/proc/self/exe", Buffer, sizeof(Buffer) - 1);
	return Length > 0 ? FString::FromNative(std::string(Buffer, static_cast<size_t>(Length))) : FString();
}
