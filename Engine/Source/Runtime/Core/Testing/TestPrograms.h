#pragma once

// Where tests find the programs the build made, and whether a process they started still runs.

#include "CoreMinimal.h"
#include "HAL/PlatformProcess.h"
#include "Misc/Paths.h"
#include "TestPaths.h"

#include <algorithm>
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
#include <cstdio>
#include <poll.h>
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

	// What a child ended by SIGKILL at a chosen moment wrote, whether the signal ended it or it had ended by itself
	// first, and how long it ran after it said it was ready.
	struct FKilledChild
	{
		std::string Said;
		bool bKilled = false;
		bool bExitedCleanly = false;
		std::chrono::microseconds RanAfterReady{0};
	};

	// Runs Body in a forked child whose stdout is a pipe; once the child has written Ready, lets it run for Pause
	// more and kills it. What it writes is read all along, so that it never waits on a full pipe.
	inline FKilledChild KillAfter(const std::function<void()>& Body, const std::string& Ready, std::chrono::microseconds Pause)
	{
		FKilledChild Result;
		int Pipe[2];
		const pid_t Child = pipe(Pipe) == 0 ? fork() : -1;
		if (Child == 0)
		{
			dup2(Pipe[1], STDOUT_FILENO);
			close(Pipe[0]);
			close(Pipe[1]);
			Body();
			std::fflush(stdout);
			_exit(0);
		}
		if (Child < 0)
		{
			return Result;
		}
		close(Pipe[1]);
		bool bOpen = true;
		// Waits up to Timeout (forever when null) for output, and takes what came; the pipe's end means the child's.
		const auto ReadSome = [&](const timespec* Timeout)
		{
			char Chunk[4096];
			pollfd Wait{Pipe[0], POLLIN, 0};
			const int Ready = ppoll(&Wait, 1, Timeout, nullptr);
			const ssize_t Got = Ready > 0 ? read(Pipe[0], Chunk, sizeof(Chunk)) : 0;
			bOpen = Ready == 0 || (Ready > 0 && Got > 0) || (Ready < 0 && errno == EINTR);
			Result.Said.append(Chunk, static_cast<size_t>(std::max<ssize_t>(Got, 0)));
		};
		while (bOpen && Result.Said.find(Ready) == std::string::npos)
		{
			ReadSome(nullptr);
		}
		const auto ReadyAt = std::chrono::steady_clock::now();
		for (auto Left = Pause; bOpen && Left.count() > 0;
			 Left = Pause - std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - ReadyAt))
		{
			const timespec Timeout{static_cast<time_t>(Left.count() / 1000000), static_cast<long>(Left.count() % 1000000 * 1000)};
			ReadSome(&Timeout);
		}
		Result.RanAfterReady = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - ReadyAt);
		kill(Child, SIGKILL);
		while (bOpen)
		{
			ReadSome(nullptr);
		}
		close(Pipe[0]);
		int Status = 0;
		waitpid(Child, &Status, 0);
		Result.bKilled = WIFSIGNALED(Status) && WTERMSIG(Status) == SIGKILL;
		Result.bExitedCleanly = WIFEXITED(Status) && WEXITSTATUS(Status) == 0;
		return Result;
	}
#endif
}
