#include "CompressionWorkers.h"

FCompressionWorkers& FCompressionWorkers::Get()
{
	// Never destroyed: a destructor would have to wait for the threads while the process ends, and where the
	// library unloads under the system's loader lock (Windows) the threads can never answer, so the exit hangs.
	// Idle threads that wait on the queue are simply ended with the process.
	static FCompressionWorkers* Workers = new FCompressionWorkers();
	return *Workers;
}

FCompressionWorkers::FCompressionWorkers()
{
	const unsigned Cores = std::thread::hardware_concurrency();
	const unsigned Count = Cores == 0 ? 2 : Cores;
	for (unsigned Index = 0; Index < Count; ++Index)
	{
		std::thread(&FCompressionWorkers::WorkerLoop, this).detach();
	}
	ThreadCount = static_cast<int32>(Count);
}

void FCompressionWorkers::Submit(const FTask& Task)
{
	{
		std::lock_guard<std::mutex> Lock(Mutex);
		Queue.push_back(Task);
	}
	Wake.notify_one();
}

bool FCompressionWorkers::RunOneOf(const void* Owner)
{
	FTask Task;
	{
		std::lock_guard<std::mutex> Lock(Mutex);
		auto It = Queue.begin();
		while (It != Queue.end() && It->Owner != Owner)
		{
			++It;
		}
		if (It == Queue.end())
		{
			return false;
		}
		Task = *It;
		Queue.erase(It);
	}
	Task.Run(Task.Context);
	return true;
}

void FCompressionWorkers::WorkerLoop()
{
	for (;;)
	{
		FTask Task;
		{
			std::unique_lock<std::mutex> Lock(Mutex);
			Wake.wait(Lock, [this] { return !Queue.empty(); });
			Task = Queue.front();
			Queue.pop_front();
		}
		Task.Run(Task.Context);
	}
}
