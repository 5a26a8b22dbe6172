#include "Stopping.h"

#include "HAL/PlatformProcess.h"

#include <atomic>
#include <chrono>

namespace
{
	std::atomic<bool> bStopped{false};
	// The signal's number, or 0 for the time limit.
	std::atomic<int> StopSignal{0};
	std::atomic<double> LimitSeconds{0.0};
	std::atomic<int64> DeadlineTicks{0};

	const char* SignalName(int Number)
	{
		switch (Number)
		{
		case 1: return "SIGHUP";
		case 2: return "SIGINT";
		case 15: return "SIGTERM";
		default: return "a signal";
		}
	}
}

void RequestStop(int SignalNumber)
{
	bool bExpected = false;
	if (bStopped.compare_exchange_strong(bExpected, true))
	{
		StopSignal = SignalNumber;
	}
	FPlatformProcess::TerminateAllProcs();
}

void SetStopDeadline(double Seconds)
{
	LimitSeconds = Seconds;
	DeadlineTicks = Seconds > 0 ? (std::chrono::steady_clock::now() + std::chrono::duration_cast<std::chrono::steady_clock::duration>(
																		  std::chrono::duration<double>(Seconds)))
									  .time_since_epoch()
									  .count()
								: 0;
}

bool IsPastDeadline()
{
	const int64 Deadline = DeadlineTicks;
	return Deadline != 0 && std::chrono::steady_clock::now().time_since_epoch().count() >= Deadline;
}

bool StopRequested()
{
	return bStopped;
}

int StopExitCode()
{
	return StopSignal == 0 ? 1 : 128 + StopSignal;
}

FString DescribeStop()
{
	if (StopSignal == 0)
	{
		return FString::Printf(TEXT("timed out after %g seconds (--timeout): the run's programs were ended"), LimitSeconds.load());
	}
	return FString::Printf(TEXT("stopped by %s: the run's programs were ended"), *FString::FromUtf8(SignalName(StopSignal)));
}
