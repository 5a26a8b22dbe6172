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

namespace
{
	size_t PageBytes()
	{
		SYSTEM_INFO Info;
		GetSystemInfo(&Info);
		return Info.dwPageSize;
	}
}

void* FPlatformMemory::AllocateLargeBlock(size_t Bytes)
{
	// Large pages need a privilege that a mod author's account doesn't hold; plain pages it is, reserved
	// for the block to grow into and committed as it does.
	void* Block = VirtualAlloc(nullptr, LargeBlockReservation(Bytes, PageBytes()), MEM_RESERVE, PAGE_READWRITE);
	if (Block && !VirtualAlloc(Block, Bytes, MEM_COMMIT, PAGE_READWRITE))
	{
		VirtualFree(Block, 0, MEM_RELEASE);
		return nullptr;
	}
	return Block;
}

bool FPlatformMemory::GrowLargeBlock(void* Block, size_t Bytes, size_t NewBytes)
{
	if (NewBytes > LargeBlockReservation(Bytes, PageBytes()))
	{
		return false;
	}
	// Committing pages already committed is allowed and changes nothing.
	return VirtualAlloc(Block, NewBytes, MEM_COMMIT, PAGE_READWRITE) != nullptr;
}

void FPlatformMemory::FreeLargeBlock(void* Block, size_t /*Bytes*/)
{
	if (Block)
	{
		VirtualFree(Block, 0, MEM_RELEASE);
	}
}
