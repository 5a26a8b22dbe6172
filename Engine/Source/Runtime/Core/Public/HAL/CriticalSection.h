#pragma once

#include "CoreTypes.h"

#include <mutex>

// A mutual-exclusion lock between threads of one process. Not recursive: a thread that locks it twice
// deadlocks.
class FCriticalSection
{
public:
	FCriticalSection() = default;
	FCriticalSection(const FCriticalSection&) = delete;
	FCriticalSection& operator=(const FCriticalSection&) = delete;

	// Blocks until this thread holds the lock.
	void Lock() { Mutex.lock(); }
	// Takes the lock if it is free; true when this thread now holds it.
	bool TryLock() { return Mutex.try_lock(); }
	// Releases a lock that this thread holds.
	void Unlock() { Mutex.unlock(); }

private:
	std::mutex Mutex;
};

// Holds a critical section from construction to the end of the enclosing scope.
class FScopeLock
{
public:
	explicit FScopeLock(FCriticalSection* InSection) : Section(InSection) { Section->Lock(); }
	explicit FScopeLock(FCriticalSection& InSection) : FScopeLock(&InSection) {}
	~FScopeLock() { Section->Unlock(); }
	FScopeLock(const FScopeLock&) = delete;
	FScopeLock& operator=(const FScopeLock&) = delete;

private:
	FCriticalSection* Section;
};
