#include "HAL/PlatformMemory.h"

#include "Windows/WindowsApi.h"

#include <psapi.h>

int64 FPlatformMemory::GetResidentKilobytes()
{
	PROCESS_MEMORY_COUNTERS Counters{};
	Counters.cb = sizeof(Counters);
	if (!GetProcessMemoryInfo(GetCurrentProcess(), &Counters, sizeof(Counters)))
	{
		return 0;
	}
	return static_cast<int64>(Counters.WorkingSetSize / 1024);
}

void* FPlatformMemory::AllocateLargeBlock(size_t Bytes)
{
	// Large pages need a privilege that a mod author's account doesn't hold; plain committed pages it is.
	return VirtualAlloc(nullptr, Bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
}

void FPlatformMemory::FreeLargeBlock(void* Block, size_t /*Bytes*/)
{
	if (Block)
	{
		VirtualFree(Block, 0, MEM_RELEASE);
	}
}
