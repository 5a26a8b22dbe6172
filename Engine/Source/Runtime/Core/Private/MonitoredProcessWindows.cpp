#include "Misc/MonitoredProcess.h"

#include "Misc/Utf8StreamDecoder.h"
#include "Windows/WindowsProcess.h"

#include <algorithm>
#include <atomic>
#include <string>
#include <vector>

namespace
{
// A large pipe lets a child that floods its output write on while the monitor hands the last block on.
constexpr DWORD PipeBytes = 1 << 20;
constexpr DWORD ReadBlockBytes = 1 << 15;

HANDLE AsHandle(intptr_t Value)
{
	return reinterpret_cast<HANDLE>(Value);
}

// An anonymous pipe can't be read with a time limit, and the watch must end with the child even while a
// grandchild keeps the pipe open; a named pipe read in overlapped mode can wait on the child and the data at once.
bool CreateOutputPipe(HANDLE& OutRead, HANDLE& OutWrite)
{
	static std::atomic<unsigned> Counter{0};
	const std::wstring Name = L"\\\\.\\pipe\\tessel-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
							  std::to_wstring(Counter++) + L"-" + std::to_wstring(GetTickCount64());
	OutRead = CreateNamedPipeW(Name.c_str(), PIPE_ACCESS_INBOUND | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
							   PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS, 1, PipeBytes,
							   PipeBytes, 0, nullptr);
	if (OutRead == INVALID_HANDLE_VALUE)
	{
		return false;
	}
	// The child's end is an ordinary blocking one, as a program expects of its stdout.
	OutWrite = CreateFileW(Name.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
	if (OutWrite == INVALID_HANDLE_VALUE)
	{
		CloseHandle(OutRead);
		return false;
	}
	return true;
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
		if (!CreateOutputPipe(Read, Write))
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
		if (ProcessHandle.bHasReturnCode)
		{
			ReturnCode.store(ProcessHandle.ReturnCode, std::memory_order_release);
		}
		CloseHandle(static_cast<HANDLE>(ProcessHandle.Process));
		CloseHandle(static_cast<HANDLE>(ProcessHandle.Job));
		ProcessHandle.Process = nullptr;
		ProcessHandle.Job = nullptr;
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
	OVERLAPPED Pending{};
	Pending.hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
	bool bReadPending = false;
	if (!Pending.hEvent)
	{
		// Without an event the pipe can't be waited on; the child still runs and ends, its output unread.
		bPipeOpen = false;
	}

	auto Deliver = [this](FString Text)
	{
		if (!Text.IsEmpty() && !bCanceling.load(std::memory_order_acquire))
		{
			OutputDelegate.ExecuteIfBound(std::move(Text));
		}
	};
	// Starts a read; delivers it at once when the data was there. False when the pipe has ended.
	auto StartRead = [&](DWORD MaxBytes) -> bool
	{
		ResetEvent(Pending.hEvent);
		DWORD Got = 0;
		if (ReadFile(Pipe, Buffer.data(), MaxBytes, &Got, &Pending))
		{
			Deliver(Decoder.Decode(Buffer.data(), Got));
			return true;
		}
		if (GetLastError() == ERROR_IO_PENDING)
		{
			bReadPending = true;
			return true;
		}
		return false;
	};
	auto FinishRead = [&](bool bWait) -> bool
	{
		DWORD Got = 0;
		bReadPending = false;
		if (!GetOverlappedResult(Pipe, &Pending, &Got, bWait ? TRUE : FALSE))
		{
			return false;
		}
		Deliver(Decoder.Decode(Buffer.data(), Got));
		return true;
	};

	// The end of the child, not the end of the pipe, ends the watch: a grandchild may hold the pipe open
	// long after the child is gone.
	while (true)
	{
		// Reads that complete at once are taken in turn with a look at the child, so that a grandchild that
		// writes without pause can't hold the watch past the child's end.
		while (bPipeOpen && !bReadPending && WaitForSingleObject(Process, 0) != WAIT_OBJECT_0)
		{
			bPipeOpen = StartRead(ReadBlockBytes);
		}
		const HANDLE Waits[2] = {Process, Pending.hEvent};
		const DWORD Woken = WaitForMultipleObjects(bReadPending ? 2 : 1, Waits, FALSE, INFINITE);
		if (Woken == WAIT_OBJECT_0 + 1)
		{
			bPipeOpen = FinishRead(false);
			continue;
		}
		if (Woken != WAIT_OBJECT_0)
		{
			// A wait that failed tells nothing of the child: its end is awaited alone.
			WaitForSingleObject(Process, INFINITE);
		}
		break;
	}

	// Everything the child wrote is in the pipe now. Read just that much: a grandchild could go on writing.
	if (bReadPending)
	{
		// A read cut short by the cancel took nothing; what waits in the pipe is read below.
		CancelIoEx(Pipe, &Pending);
		if (!FinishRead(true) && GetLastError() != ERROR_OPERATION_ABORTED)
		{
			bPipeOpen = false;
		}
	}
	DWORD Left = 0;
	if (bPipeOpen && !PeekNamedPipe(Pipe, nullptr, 0, nullptr, &Left, nullptr))
	{
		Left = 0;
	}
	while (bPipeOpen && Left > 0)
	{
		DWORD Got = 0;
		ResetEvent(Pending.hEvent);
		if (!ReadFile(Pipe, Buffer.data(), std::min<DWORD>(Left, ReadBlockBytes), nullptr, &Pending) &&
			GetLastError() != ERROR_IO_PENDING)
		{
			break;
		}
		if (!GetOverlappedResult(Pipe, &Pending, &Got, TRUE) || Got == 0)
		{
			break;
		}
		Deliver(Decoder.Decode(Buffer.data(), Got));
		Left -= std::min(Got, Left);
	}
	if (Pending.hEvent)
	{
		CloseHandle(Pending.hEvent);
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
		CloseHandle(Process);
		ProcessHandle.Job = nullptr;
		ProcessHandle.Process = nullptr;
	}

	if (Pipe)
	{
		CloseHandle(Pipe);
	}
	EndNanoseconds.store(NowNanoseconds(), std::memory_order_release);
	// Last of all: the end is visible only after the last OnOutput call has returned.
	bIsRunning.store(false, std::memory_order_release);
}
