#pragma once

#include "CoreTypes.h"

// Which compressor a compressed stream uses. Only zlib is carried.
enum ECompressionFlags : uint32
{
	COMPRESS_None = 0x00,
	COMPRESS_ZLIB = 0x01,
};

// Memory-to-memory compression and the knobs of the chunked stream that FArchive::SerializeCompressed writes.
struct CORE_API FCompression
{
	// Every chunked stream begins with this tag; the game's loader looks for it.
	static constexpr int64 PackageFileTag = 0x9E2A83C1;
	// Size of the pieces a stream is cut into before each is compressed on its own.
	static constexpr int64 LoadingCompressionChunkSize = 131072;

	// Compresses InSize bytes into one complete zlib stream at zlib's default level. OutSize holds the room at
	// Out on entry and the bytes written on return. False when the room is too small or Flags names no
	// compressor that is carried.
	static bool CompressMemory(ECompressionFlags Flags, void* Out, int32& OutSize, const void* In, int32 InSize);
	// Inflates exactly one zlib stream of CompressedSize bytes into exactly UncompressedSize bytes; false for a
	// broken stream, trailing bytes or a size that doesn't match.
	static bool UncompressMemory(ECompressionFlags Flags, void* Out, int32 UncompressedSize, const void* In,
								 int32 CompressedSize);
	// The room CompressMemory may need for InSize bytes.
	static int32 CompressMemoryBound(ECompressionFlags Flags, int32 InSize);

	// On (the default): the chunks of one stream are compressed by a pool of worker threads, one per core,
	// while the calling thread reads and writes. Off: chunk after chunk on the calling thread. The bytes
	// written are the same either way; the switch exists for measurements and comparisons.
	static void SetParallelCompression(bool bEnabled);
	static bool IsParallelCompression();
};
