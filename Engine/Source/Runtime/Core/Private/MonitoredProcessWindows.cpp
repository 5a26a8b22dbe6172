#include "Misc/MonitoredProcess.h"

#include "Misc/Utf8StreamDecoder.h"
#include "Windows/WindowsProcess.h"

#include <algorithm>
#include <vector>

namespace
{
// A large pipe lets a child that floods its output write on while the monitor hands the last block on.
constexpr DWORD PipeBytes = 1 << 20;
constexpr DWORD ReadBlockBytes = 1 << 15;
// How long the monitor waits on the child when the pipe is empty, before it looks at the pipe again.
constexpr DWORD IdleMilliseconds = 5;

HANDLE AsHandle(intptr_t Value)
{
	return reinterpret_cast<HANDLE>(Value);
}

DWORD BytesWaiting(HANDLE Pipe, bool& bOpen)
{
	DWORD Available = 0;
	if (!PeekNamedPipe(Pipe, nullptr, 0, nullptr, &Available, nullptr))
	{
		// Every writer has closed its end (or the pipe broke): nothing more will come.
		bOpen = false;
		return 0;
	}
	return Available;
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

	HANDLE Read = nullptr;
	HANDLE Write = nullptr;
	if (bCreatePipes)
	{
		// Neither end is inheritable: the start hands the write end to this child alone.
		if (!CreatePipe(&Read, &Write, nullptr, PipeBytes))
		{
			return false;
		}
	}
	const FProcHandle Handle = WindowsProcess::Start(*URL, *Params, nullptr, Write);
	if (Write)
	{
		CloseHandle(Write);
	}
	if (!Handle.IsValid())
	{
		if (Read)
		{
			CloseHandle(Read);
		}
		return false;
	}

	ProcessHandle = Handle;
	ReadPipe = Read ? reinterpret_cast<intptr_t>(Read) : -1;
	StartNanoseconds.store(NowNanoseconds(), std::memory_order_release);
	bIsRunning.store(true, std::memory_order_release);
	try
	{
		MonitorThread = std::thread(&FMonitoredProcess::MonitorThreadMain, this);
	}
	catch (const std::system_error&)
	{
		// Without a monitor nobody would ever watch the child, so it does not get to run.
		FPlatformProcess::TerminateProc(ProcessHandle, true);
		FPlatformProcess::WaitForProc(ProcessHandle);
		if (ReadPipe != -1)
		{
			CloseHandle(AsHandle(ReadPipe));
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
	bKillTree = bKillTree || bInKillTree;
	bCanceling.store(true, std::memory_order_release);
	// Windows has no polite signal that a child without a console can take: a cancel ends the child at once,
	// and with bKillTree everything in its job.
	SignalChild(0);
}

void FMonitoredProcess::SignalChild(int /*Signal*/)
{
	if (!ProcessHandle.IsValid() || ProcessHandle.bEnded)
	{
		return;
	}
	FPlatformProcess::TerminateProc(ProcessHandle, bKillTree);
}

void FMonitoredProcess::MonitorThreadMain()
{
	const HANDLE Process = static_cast<HANDLE>(ProcessHandle.Process);
	const HANDLE Pipe = ReadPipe != -1 ? AsHandle(ReadPipe) : nullptr;
	std::vector<char> Buffer(ReadBlockBytes);
	FUtf8StreamDecoder Decoder;
	bool bPipeOpen = Pipe != nullptr;

	auto Deliver = [this](FString Text)
	{
		if (!Text.IsEmpty() && !bCanceling.load(std::memory_order_acquire))
		{
			OutputDelegate.ExecuteIfBound(std::move(Text));
		}
	};
	// Reads what waits in the pipe, at most Limit bytes; never blocks, since a grandchild may hold the pipe open.
	auto ReadWaiting = [&](DWORD Limit) -> DWORD
	{
		DWORD Total = 0;
		while (bPipeOpen && Total < Limit)
		{
			const DWORD Available = std::min(BytesWaiting(Pipe, bPipeOpen), Limit - Total);
			if (Available == 0)
			{
				break;
			}
			DWORD Got = 0;
			if (!ReadFile(Pipe, Buffer.data(), std::min<DWORD>(Available, ReadBlockBytes), &Got, nullptr) || Got == 0)
			{
				bPipeOpen = false;
				break;
			}
			Total += Got;
			Deliver(Decoder.Decode(Buffer.data(), Got));
		}
		return Total;
	};

	// The end of the child, not the end of the pipe, ends the watch.
	while (WaitForSingleObject(Process, 0) != WAIT_OBJECT_0)
	{
		if (ReadWaiting(ReadBlockBytes * 8) == 0)
		{
			WaitForSingleObject(Process, IdleMilliseconds);
		}
	}

	// Everything the child wrote is in the pipe now. Read just that much: a grandchild could go on writing.
	if (bPipeOpen)
	{
		ReadWaiting(BytesWaiting(Pipe, bPipeOpen));
	}
	Deliver(Decoder.Flush());

	{
		FScopeLock Lock(SignalLock);
		if (bCanceling.load() && bKillTree)
		{
			// Grandchildren that outlived the child are still in its job.
			TerminateJobObject(static_cast<HANDLE>(ProcessHandle.Job), WindowsProcess::KilledExitCode);
		}
		WindowsProcess::RecordEnd(ProcessHandle);
		if (ProcessHandle.bHasReturnCode)
		{
			ReturnCode.store(ProcessHandle.ReturnCode, std::memory_order_release);
		}
		CloseHandle(static_cast<HANDLE>(ProcessHandle.Job));
		ProcessHandle.Job = nullptr;
	}

	if (Pipe)
	{
		CloseHandle(Pipe);
	}
	CloseHandle(Process);
	EndNanoseconds.store(NowNanoseconds(), std::memory_order_release);
	// Last of all: the end is visible only after the last OnOutput call has returned.
	bIsRunning.store(false, std::memory_order_release);
}
