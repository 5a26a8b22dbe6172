#pragma once

// Where tests find the programs the build made, and whether a process they started still runs.

#include "CoreMinimal.h"
#include "HAL/PlatformProcess.h"
#include "Misc/Paths.h"
#include "TestPaths.h"

#include <chrono>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#ifdef _WIN32
#include "Windows/WindowsApi.h"
#else
#include <cerrno>
#include <csignal>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace TestPrograms
{
	// On Windows the build puts every program and library side by side, a copied folder keeps them so, and a
	// build path of the cross-compiling machine means nothing there: a program is looked up beside the test.
	// Elsewhere the build's own path.
	inline FString Path(const TCHAR* WindowsName, const char* BuildPath)
	{
#ifdef _WIN32
		return FPaths::GetPath(FPlatformProcess::ExecutablePath()) / WindowsName;
#else
		return FString(BuildPath);
#endif
	}

	// Gone, or (on POSIX) a zombie that only waits for its new parent to collect it: either way it runs no more.
	inline bool IsGone(int32 ProcessId)
	{
#ifdef _WIN32
		const HANDLE Process = OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(ProcessId));
		if (!Process)
		{
			// Only an id that names no process means gone; a refusal says nothing.
			return GetLastError() == ERROR_INVALID_PARAMETER;
		}
		const bool bGone = WaitForSingleObject(Process, 0) == WAIT_OBJECT_0;
		CloseHandle(Process);
		return bGone;
#else
		if (kill(static_cast<pid_t>(ProcessId), 0) != 0 && errno == ESRCH)
		{
			return true;
		}
		std::ifstream Stat("/proc/" + std::to_string(ProcessId) + "/stat");
		std::string Line;
		std::getline(Stat, Line);
		const size_t Close = Line.rfind(')');
		return Close != std::string::npos && Close + 2 < Line.size() && (Line[Close + 2] == 'Z' || Line[Close + 2] == 'X');
#endif
	}

	// Runs Step until Condition holds, a short pause between turns; false when it still doesn't after Seconds.
	template <typename ConditionType, typename StepType> bool WaitUntil(ConditionType Condition, StepType Step, double Seconds = 60)
	{
		const auto Deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(Seconds);
		while (!Condition())
		{
			if (std::chrono::steady_clock::now() > Deadline)
			{
				return false;
			}
			Step();
			std::this_thread::sleep_for(std::chrono::milliseconds(2));
		}
		return true;
	}

#ifndef _WIN32
	// Body's result, run in a forked child that has given up root's power to read and write any file, as a mod
	// author's own account has it (the user "nobody" then); -1 when the child did not end by itself.
	inline int RunWithoutRoot(const std::function<int()>& Body)
	{
		const pid_t Child = fork();
		if (Child == 0)
		{
			_exit(geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0) ? 120 : Body());
		}
		int Status = 0;
		return Child > 0 && waitpid(Child, &Status, 0) == Child && WIFEXITED(Status) ? WEXITSTATUS(Status) : -1;
	}
#endif
}
