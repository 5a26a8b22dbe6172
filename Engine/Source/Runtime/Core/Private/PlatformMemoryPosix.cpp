#include "HAL/PlatformMemory.h"

#include <cstdlib>
#include <fstream>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace
{
	// Huge pages are this large on the machines the tool runs on; a block starts on such a boundary so that
	// the system can back it with them from its first byte.
	constexpr uintptr_t HugePageBytes = uintptr_t(2) << 20;

	size_t RoundToPages(size_t Bytes)
	{
		const size_t Page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
		return (Bytes + Page - 1) / Page * Page;
	}
}

int64 FPlatformMemory::GetResidentKilobytes()
{
	std::ifstream Status("/proc/self/status");
	std::string Line;
	while (std::getline(Status, Line))
	{
		if (Line.rfind("VmRSS:", 0) == 0)
		{
			return std::atol(Line.c_str() + 6);
		}
	}
	return 0;
}

void* FPlatformMemory::AllocateLargeBlock(size_t Bytes)
{
	const size_t Kept = RoundToPages(Bytes);
	const size_t Mapped = Kept + HugePageBytes;
	void* Region = mmap(nullptr, Mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
	if (Region == MAP_FAILED)
	{
		return nullptr;
	}
	// Map a huge page more than needed, then give back the head before the first boundary and the tail.
	const uintptr_t Start = reinterpret_cast<uintptr_t>(Region);
	const uintptr_t Aligned = (Start + HugePageBytes - 1) & ~(HugePageBytes - 1);
	if (Aligned > Start)
	{
		munmap(Region, Aligned - Start);
	}
	const size_t Tail = Mapped - (Aligned - Start) - Kept;
	if (Tail > 0)
	{
		munmap(reinterpret_cast<void*>(Aligned + Kept), Tail);
	}
	// Only advice: without huge pages the block works the same, page by page.
	madvise(reinterpret_cast<void*>(Aligned), Kept, MADV_HUGEPAGE);
	return reinterpret_cast<void*>(Aligned);
}

void FPlatformMemory::FreeLargeBlock(void* Block, size_t Bytes)
{
	if (Block)
	{
		munmap(Block, RoundToPages(Bytes));
	}
}
