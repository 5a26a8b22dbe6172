#pragma once

#include "CoreTypes.h"

#include <cstddef>

struct CORE_API FPlatformMemory
{
	// The process's resident memory in kilobytes, as the kernel reports it; 0 where it can't be read.
	static int64 GetResidentKilobytes();

	// Blocks at least this large are taken from the system directly by AllocateLargeBlock.
	static constexpr size_t LargeBlockBytes = size_t(4) << 20;
	// A block of Bytes for a container that has grown large, aligned to a page at least, or null when the
	// system has no memory for it. The block is asked to be backed by huge pages where the system offers
	// them: a fresh block of small pages costs one fault per page on first touch, and at a million entries
	// that made a single growth of an array stall for tens of milliseconds.
	static void* AllocateLargeBlock(size_t Bytes);
	// Returns a block of AllocateLargeBlock; Bytes must be the size it was asked for.
	static void FreeLargeBlock(void* Block, size_t Bytes);
};
