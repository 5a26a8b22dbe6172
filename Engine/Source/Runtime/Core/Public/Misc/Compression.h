#pragma once

#include "Containers/UnrealString.h"
#include "CoreTypes.h"

#include <vector>

class FArchive;

// Which compressor a compressed stream uses. Only zlib is carried.
enum ECompressionFlags : uint32
{
	COMPRESS_None = 0x00,
	COMPRESS_ZLIB = 0x01,
};

// The records at the head of a chunked stream, as FArchive::SerializeCompressed writes them.
struct FCompressedStreamRecords
{
	struct FChunk
	{
		int64 CompressedSize = 0;
		int64 UncompressedSize = 0;
	};
	int64 ChunkSize = 0;
	// The summary record: the sums over the chunks.
	int64 CompressedSize = 0;
	int64 UncompressedSize = 0;
	std::vector<FChunk> Chunks;
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

	// Reads the tag record, the summary and every chunk record of a chunked stream at the archive's position,
	// and checks them against each other and against the bytes the archive still holds. Returns empty, with
	// the archive at the first chunk's data, or what is wrong in words. Memory grows only with records
	// actually read, so a lying summary can't make it outgrow the input.
	static FString ReadStreamRecords(FArchive& Ar, FCompressedStreamRecords& Out);

	// On (the default): the chunks of one stream are compressed by a pool of worker threads, one per core,
	// while the calling thread reads and writes. Off: chunk after chunk on the calling thread. The bytes
	// written are the same either way; the switch exists for measurements and comparisons.
	static void SetParallelCompression(bool bEnabled);
	static bool IsParallelCompression();
};

// One chunked stream compressed in the background by the worker pool, from bytes already in memory, so that a
// caller can prepare the next files while it writes this one. What WriteTo puts into an archive is exactly
// what FArchive::SerializeCompressed writes for the same bytes.
class CORE_API FCompressedStreamJob
{
public:
	// Hands every chunk to the pool at once; with parallel compression off, compresses them here and now.
	explicit FCompressedStreamJob(std::vector<uint8> Input);
	// Waits for chunks still in the pool, which point into this job.
	~FCompressedStreamJob();
	FCompressedStreamJob(const FCompressedStreamJob&) = delete;
	FCompressedStreamJob& operator=(const FCompressedStreamJob&) = delete;

	int64 GetInputSize() const;
	// The memory the job holds: its input and the room of every chunk's output.
	int64 GetHeldBytes() const;
	// Blocks until every chunk is done, compressing this job's queued chunks on the calling thread meanwhile.
	// False when a chunk could not be compressed.
	bool Wait();
	// Waits, then writes the records and the chunks; sets the archive's error flag when a chunk failed.
	void WriteTo(FArchive& Ar);

private:
	struct FState;
	FState* State;
};
