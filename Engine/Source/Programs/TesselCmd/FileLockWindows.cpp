#include "FileLock.h"

#include "Windows/WindowsApi.h"

#include <chrono>
#include <thread>

FFileLock::FFileLock(const FString& Path, double WaitSeconds)
{
	const auto Until = std::chrono::steady_clock::now() + std::chrono::duration<double>(WaitSeconds);
	for (;;)
	{
		// Opened for ourselves alone: a second run can't open it until the first lets go, or dies.
		const HANDLE File = CreateFileW(WindowsApi::Wide(*Path), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
		if (File != INVALID_HANDLE_VALUE)
		{
			Handle = reinterpret_cast<intptr_t>(File);
			bHeld = true;
			return;
		}
		if (GetLastError() != ERROR_SHARING_VIOLATION)
		{
			return;
		}
		// Someone holds it: the file is there, and the wait is for them.
		Handle = 0;
		if (std::chrono::steady_clock::now() >= Until)
		{
			return;
		}
		std::this_thread::sleep_for(std::chrono::milliseconds(20));
	}
}

FFileLock::~FFileLock()
{
	if (bHeld)
	{
		CloseHandle(reinterpret_cast<HANDLE>(Handle));
	}
}

bool IsProcessRunning(uint32 ProcessId)
{
	const HANDLE Process = OpenProcess(SYNCHRONIZE, FALSE, ProcessId);
	if (!Process)
	{
		return GetLastError() == ERROR_ACCESS_DENIED;
	}
	const bool bRunning = WaitForSingleObject(Process, 0) == WAIT_TIMEOUT;
	CloseHandle(Process);
	return bRunning;
}
