#include "FileLock.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <thread>
#include <unistd.h>

FFileLock::FFileLock(const FString& Path, double WaitSeconds)
{
	int File = open(Path.ToUtf8().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
	if (File < 0)
	{
		// Another user's lock file, which we may not write: a lock needs no more than reading.
		File = open(Path.ToUtf8().c_str(), O_RDONLY | O_CLOEXEC);
	}
	if (File < 0)
	{
		return;
	}
	Handle = File;
	const auto Until = std::chrono::steady_clock::now() + std::chrono::duration<double>(WaitSeconds);
	while (!(bHeld = flock(File, LOCK_EX | LOCK_NB) == 0) && std::chrono::steady_clock::now() < Until)
	{
		std::this_thread::sleep_for(std::chrono::milliseconds(20));
	}
}

FFileLock::~FFileLock()
{
	if (Handle >= 0)
	{
		close(static_cast<int>(Handle));
	}
}

bool IsProcessRunning(uint32 ProcessId)
{
	return ProcessId != 0 && (kill(static_cast<pid_t>(ProcessId), 0) == 0 || errno == EPERM);
}
