#pragma once

#include "CoreTypes.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

// A fixed set of threads, one per core, started on first use and kept for the life of the process (never joined), so that
// compressing many small files doesn't pay for starting threads each time. Tasks carry the address of the
// job they belong to, so that a thread waiting on its own job can take that job's queued work itself.
class FCompressionWorkers
{
public:
	struct FTask
	{
		void (*Run)(void* Context) = nullptr;
		void* Context = nullptr;
		const void* Owner = nullptr;
	};

	static FCompressionWorkers& Get();

	int32 Num() const { return ThreadCount; }
	void Submit(const FTask& Task);
	// Runs on the calling thread one queued task of Owner that no worker has taken yet; false when none is left.
	bool RunOneOf(const void* Owner);

private:
	FCompressionWorkers();
	void WorkerLoop();

	std::mutex Mutex;
	std::condition_variable Wake;
	std::deque<FTask> Queue;
	int32 ThreadCount = 0;
};
