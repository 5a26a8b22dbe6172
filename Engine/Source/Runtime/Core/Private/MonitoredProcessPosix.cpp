#include "Misc/MonitoredProcess.h"

#include "Misc/Utf8StreamDecoder.h"
#include "ProcessPosix.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace
{
// A large pipe lets a child that floods its output write on while the monitor hands the last block on.
// The pipe is read in smaller blocks, so that each decoded piece comes from memory the heap reuses rather
// than from fresh pages, which cost a fault each.
constexpr int PipeBytes = 1 << 20;
constexpr size_t ReadBlockBytes = 1 << 15;
// How long a cancelled child may take to end on SIGTERM before SIGKILL follows.
constexpr int64 CancelGraceNanoseconds = 2'000'000'000;

// True once the child has ended; its end stays uncollected, so its id and group cannot be reused yet.
bool HasEnded(pid_t ProcessId)
{
	while (true)
	{
		siginfo_t Info{};
		if (waitid(P_PID, static_cast<id_t>(ProcessId), &Info, WEXITED | WNOHANG | WNOWAIT) == 0)
		{
			return Info.si_pid == ProcessId;
		}
		if (errno != EINTR)
		{
			return true;
		}
	}
}

// A descriptor that becomes readable when the child ends, or -1 where the kernel has none.
int OpenProcessDescriptor(pid_t ProcessId)
{
#ifdef SYS_pidfd_open
	return static_cast<int>(syscall(SYS_pidfd_open, ProcessId, 0));
#else
	return -1;
#endif
}
} // namespace

FMonitoredProcess::~FMonitoredProcess()
{
	if (MonitorThread.joinable())
	{
		if (IsRunning())
		{
			Cancel(true);
		}
		MonitorThread.join();
	}
}

bool FMonitoredProcess::Launch()
{
	FScopeLock Lock(SignalLock);
	if (bLaunched || bCanceling.load())
	{
		return false;
	}
	bLaunched = true;

	int Pipe[2] = {-1, -1};
	if (bCreatePipes)
	{
		if (pipe2(Pipe, O_CLOEXEC) != 0)
		{
			return false;
		}
		fcntl(Pipe[0], F_SETPIPE_SZ, PipeBytes);
		// Only our end: the child's end stays blocking, as a program expects of its stdout.
		fcntl(Pipe[0], F_SETFL, fcntl(Pipe[0], F_GETFL) | O_NONBLOCK);
	}
	const FProcHandle Handle =
		FPlatformProcess::CreateProc(*URL, *Params, false, bHidden, bHidden, nullptr, 0, nullptr, Pipe[1]);
	if (Pipe[1] >= 0)
	{
		close(Pipe[1]);
	}
	if (!Handle.IsValid())
	{
		if (Pipe[0] >= 0)
		{
			close(Pipe[0]);
		}
		return false;
	}

	ProcessHandle = Handle;
	ReadPipe = Pipe[0];
	StartNanoseconds.store(NowNanoseconds(), std::memory_order_release);
	bIsRunning.store(true, std::memory_order_release);
	try
	{
		MonitorThread = std::thread(&FMonitoredProcess::MonitorThreadMain, this);
	}
	catch (const std::system_error&)
	{
		// Without a monitor nobody would ever collect the child, so it does not get to run.
		kill(-ProcessHandle.ProcessId, SIGKILL);
		FPlatformProcess::WaitForProc(ProcessHandle);
		if (ReadPipe >= 0)
		{
			close(ReadPipe);
			ReadPipe = -1;
		}
		EndNanoseconds.store(NowNanoseconds(), std::memory_order_release);
		bIsRunning.store(false, std::memory_order_release);
		return false;
	}
	return true;
}

void FMonitoredProcess::Cancel(bool bInKillTree)
{
	FScopeLock Lock(SignalLock);
	if (!bCanceling.load())
	{
		CancelNanoseconds = NowNanoseconds();
	}
	bKillTree = bKillTree || bInKillTree;
	bCanceling.store(true, std::memory_order_release);
	// A whole tree is ended at once: whoever cancels it (the window's "Cancel", a job going away) would
	// otherwise wait out the grace of a child that ignores the polite signal.
	SignalChild(bKillTree ? SIGKILL : SIGTERM);
}

void FMonitoredProcess::SignalChild(int Signal)
{
	if (!ProcessHandle.IsValid() || ProcessHandle.bEnded)
	{
		return;
	}
	if (bKillTree && Signal == SIGKILL)
	{
		ProcessPosix::KillProcessTree(ProcessHandle.ProcessId);
	}
	else
	{
		kill(bKillTree ? -ProcessHandle.ProcessId : ProcessHandle.ProcessId, Signal);
	}
}

void FMonitoredProcess::MonitorThreadMain()
{
	const pid_t ProcessId = ProcessHandle.ProcessId;
	const int ProcessDescriptor = OpenProcessDescriptor(ProcessId);
	std::vector<char> Buffer(ReadBlockBytes);
	FUtf8StreamDecoder Decoder;
	bool bPipeOpen = ReadPipe >= 0;
	bool bKillSent = false;

	auto Deliver = [this](FString Text)
	{
		if (!Text.IsEmpty() && !bCanceling.load(std::memory_order_acquire))
		{
			OutputDelegate.ExecuteIfBound(std::move(Text));
		}
	};
	auto ReadBlock = [&](size_t MaxBytes) -> ssize_t
	{
		ssize_t Count = 0;
		do
		{
			Count = read(ReadPipe, Buffer.data(), MaxBytes);
		} while (Count < 0 && errno == EINTR);
		if (Count > 0)
		{
			Deliver(Decoder.Decode(Buffer.data(), static_cast<size_t>(Count)));
		}
		return Count;
	};

	// The end of the child, not the end of the pipe, ends the watch: a grandchild may hold the pipe open
	// long after the child is gone.
	while (!HasEnded(ProcessId))
	{
		if (bCanceling.load(std::memory_order_acquire) && !bKillSent)
		{
			FScopeLock Lock(SignalLock);
			if (NowNanoseconds() - CancelNanoseconds >= CancelGraceNanoseconds)
			{
				SignalChild(SIGKILL);
				bKillSent = true;
			}
		}

		pollfd Descriptors[2];
		nfds_t Count = 0;
		if (bPipeOpen)
		{
			Descriptors[Count++] = {static_cast<int>(ReadPipe), POLLIN, 0};
		}
		if (ProcessDescriptor >= 0)
		{
			Descriptors[Count++] = {ProcessDescriptor, POLLIN, 0};
		}
		// The process descriptor wakes us at the child's end; the timeout only serves the cancel grace,
		// or stands in for that descriptor where the kernel has none.
		const int TimeoutMilliseconds = ProcessDescriptor >= 0 ? 100 : 10;
		const int Ready = poll(Descriptors, Count, TimeoutMilliseconds);
		if (bPipeOpen && Ready > 0 && (Descriptors[0].revents & (POLLIN | POLLHUP | POLLERR)) != 0)
		{
			const ssize_t Result = ReadBlock(Buffer.size());
			if (Result == 0 || (Result < 0 && errno != EAGAIN))
			{
				bPipeOpen = false;
			}
		}
	}

	// Everything the child wrote is in the pipe now. Read just that much: a grandchild could go on writing.
	if (bPipeOpen)
	{
		int Available = 0;
		if (ioctl(ReadPipe, FIONREAD, &Available) == 0)
		{
			while (Available > 0)
			{
				const ssize_t Result = ReadBlock(std::min(static_cast<size_t>(Available), Buffer.size()));
				if (Result <= 0)
				{
					break;
				}
				Available -= static_cast<int>(Result);
			}
		}
	}
	Deliver(Decoder.Flush());

	{
		FScopeLock Lock(SignalLock);
		if (bCanceling.load() && bKillTree)
		{
			// Grandchildren that outlived the child; its uncollected end still holds the group's id.
			kill(-ProcessId, SIGKILL);
		}
		int Status = 0;
		const pid_t Result = ProcessPosix::CollectChild(ProcessId, Status, true);
		ProcessHandle.bEnded = true;
		if (Result == ProcessId)
		{
			ProcessHandle.bHasReturnCode = true;
			ProcessHandle.ReturnCode = ProcessPosix::ReturnCodeFromWaitStatus(Status);
			ReturnCode.store(ProcessHandle.ReturnCode, std::memory_order_release);
		}
	}

	if (ProcessDescriptor >= 0)
	{
		close(ProcessDescriptor);
	}
	if (ReadPipe >= 0)
	{
		close(ReadPipe);
	}
	EndNanoseconds.store(NowNanoseconds(), std::memory_order_release);
	// Last of all: the end is visible only after the last OnOutput call has returned.
	bIsRunning.store(false, std::memory_order_release);
}
