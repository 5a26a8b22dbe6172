#include "Misc/MonitoredProcess.h"

#include <chrono>

int64 FMonitoredProcess::NowNanoseconds()
{
	return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
		.count();
}

FMonitoredProcess::FMonitoredProcess(const FString& InURL, const FString& InParams, bool bInHidden, bool bInCreatePipes)
	: URL(InURL), Params(InParams), bHidden(bInHidden), bCreatePipes(bInCreatePipes)
{
}

bool FMonitoredProcess::IsRunning() const
{
	// Acquire pairs with the monitor's last store, so that whatever its last OnOutput call wrote is
	// visible to the thread that sees the end.
	return bIsRunning.load(std::memory_order_acquire);
}

int32 FMonitoredProcess::GetReturnCode() const
{
	return ReturnCode.load(std::memory_order_acquire);
}

double FMonitoredProcess::GetDuration() const
{
	const int64 Start = StartNanoseconds.load(std::memory_order_acquire);
	if (Start == 0)
	{
		return 0.0;
	}
	const int64 End = EndNanoseconds.load(std::memory_order_acquire);
	return static_cast<double>((End != 0 ? End : NowNanoseconds()) - Start) / 1e9;
}
