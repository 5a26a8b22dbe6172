// One block compressed or restored whole in memory with zlib.

#include "Misc/Compression.h"

#include <zlib.h>

bool FCompression::CompressMemory(ECompressionFlags Flags, void* Out, int32& OutSize, const void* In, int32 InSize)
{
	if (!(Flags & COMPRESS_ZLIB) || OutSize < 0 || InSize < 0)
	{
		return false;
	}
	uLongf DestinationSize = static_cast<uLongf>(OutSize);
	const int Result = compress2(static_cast<Bytef*>(Out), &DestinationSize, static_cast<const Bytef*>(In),
								 static_cast<uLong>(InSize), Z_DEFAULT_COMPRESSION);
	if (Result != Z_OK)
	{
		return false;
	}
	OutSize = static_cast<int32>(DestinationSize);
	return true;
}

bool FCompression::UncompressMemory(ECompressionFlags Flags, void* Out, int32 UncompressedSize, const void* In,
									int32 CompressedSize)
{
	if (!(Flags & COMPRESS_ZLIB) || UncompressedSize < 0 || CompressedSize < 0)
	{
		return false;
	}
	uLongf DestinationSize = static_cast<uLongf>(UncompressedSize);
	uLong SourceSize = static_cast<uLong>(CompressedSize);
	const int Result = uncompress2(static_cast<Bytef*>(Out), &DestinationSize, static_cast<const Bytef*>(In), &SourceSize);
	return Result == Z_OK && DestinationSize == static_cast<uLongf>(UncompressedSize) &&
		   SourceSize == static_cast<uLong>(CompressedSize);
}

int32 FCompression::CompressMemoryBound(ECompressionFlags /*Flags*/, int32 InSize)
{
	return static_cast<int32>(compressBound(static_cast<uLong>(InSize < 0 ? 0 : InSize)));
}
