#include "CompressionWorkers.h"

FCompressionWorkers& FCompressionWorkers::Get()
{
	static FCompressionWorkers Workers;
	return Workers;
}

FCompressionWorkers::FCompressionWorkers()
{
	const unsigned Cores = std::thread::hardware_concurrency();
	const unsigned Count = Cores == 0 ? 2 : Cores;
	Threads.reserve(Count);
	for (unsigned Index = 0; Index < Count; ++Index)
	{
		Threads.emplace_back([this] { WorkerLoop(); });
	}
}

FCompressionWorkers::~FCompressionWorkers()
{
	{
		std::lock_guard<std::mutex> Lock(Mutex);
		bStopping = true;
	}
	Wake.notify_all();
	for (std::thread& Thread : Threads)
	{
		Thread.join();
	}
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
			Wake.wait(Lock, [this] { return bStopping || !Queue.empty(); });
			if (Queue.empty())
			{
				return;
			}
			Task = Queue.front();
			Queue.pop_front();
		}
		Task.Run(Task.Context);
	}
}
