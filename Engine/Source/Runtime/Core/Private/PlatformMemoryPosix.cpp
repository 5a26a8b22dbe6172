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

	size_t PageBytes()
	{
		return static_cast<size_t>(sysconf(_SC_PAGESIZE));
	}

	size_t RoundToPages(size_t Bytes)
	{
		const size_t Page = PageBytes();
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
	const size_t Reserved = LargeBlockReservation(Bytes, PageBytes());
	const size_t Mapped = Reserved + HugePageBytes;
	// Reserved address space only: the pages become usable as the block grows over them.
	void* Region = mmap(nullptr, Mapped, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
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
	const size_t Tail = Mapped - (Aligned - Start) - Reserved;
	if (Tail > 0)
	{
		munmap(reinterpret_cast<void*>(Aligned + Reserved), Tail);
	}
	void* Block = reinterpret_cast<void*>(Aligned);
	if (mprotect(Block, RoundToPages(Bytes), PROT_READ | PROT_WRITE) != 0)
	{
		munmap(Block, Reserved);
		return nullptr;
	}
	// Only advice: without huge pages the block works the same, page by page.
	madvise(Block, Reserved, MADV_HUGEPAGE);
	return Block;
}

bool FPlatformMemory::GrowLargeBlock(void* Block, size_t Bytes, size_t NewBytes)
{
	const size_t Page = PageBytes();
	const size_t Usable = RoundToPages(NewBytes);
	if (Usable > LargeBlockReservation(Bytes, Page))
	{
		return false;
	}
	const size_t Open = RoundToPages(Bytes);
	return Usable <= Open ||
		   mprotect(static_cast<char*>(Block) + Open, Usable - Open, PROT_READ | PROT_WRITE) == 0;
}

void FPlatformMemory::FreeLargeBlock(void* Block, size_t Bytes)
{
	if (Block)
	{
		munmap(Block, LargeBlockReservation(Bytes, PageBytes()));
	}
}
