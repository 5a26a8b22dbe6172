#pragma once

#include "CoreTypes.h"

#include <cstddef>

struct CORE_API FPlatformMemory
{
	// The process's resident memory in kilobytes, as the kernel reports it; 0 where it can't be read.
	static int64 GetResidentKilobytes();

	// Blocks at least this large are taken from the system directly by AllocateLargeBlock. Small enough that the
	// one move into such a block copies little into fresh pages, which the system fills slowly under Wine.
	static constexpr size_t LargeBlockBytes = size_t(1) << 20;
	// Address space a large block reserves to grow into, at the least. Reserving costs no memory; pages
	// are taken only as they are first touched.
	static constexpr size_t LargeBlockReserveBytes = size_t(256) << 20;

	// A block of Bytes for a container that has grown large, aligned to a page at least, or null when the
	// system has no memory for it. It sits in reserved address space of LargeBlockReserveBytes (or its own
	// size, if larger), into which GrowLargeBlock extends it without moving. It is asked to be backed by huge
	// pages where the system offers them.
	static void* AllocateLargeBlock(size_t Bytes);
	// Extends a block of Bytes to NewBytes in place; false when its reserved space is too small (then the
	// caller moves it to a new block) or the system has no memory for it.
	static bool GrowLargeBlock(void* Block, size_t Bytes, size_t NewBytes);
	// Returns a block of AllocateLargeBlock; Bytes must be its size, as asked for or last grown to.
	static void FreeLargeBlock(void* Block, size_t Bytes);

	// The address space a large block of Bytes holds: whole pages, and never less than the reserve.
	static size_t LargeBlockReservation(size_t Bytes, size_t PageBytes)
	{
		const size_t Pages = (Bytes + PageBytes - 1) / PageBytes * PageBytes;
		return Pages > LargeBlockReserveBytes ? Pages : LargeBlockReserveBytes;
	}
};
