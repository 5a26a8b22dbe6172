#include "CompressedFileInspection.h"

#include "HAL/FileManager.h"
#include "Misc/Compression.h"
#include "Misc/FileHelper.h"

#include <charconv>
#include <string>
#include <vector>

namespace
{
	int64 ReadSizeFile(const FString& Path)
	{
		FString Text;
		if (!FFileHelper::LoadFileToString(Text, *Path))
		{
			return -1;
		}
		const std::string Digits = Text.TrimStartAndEnd().ToUtf8();
		int64 Value = -1;
		const std::from_chars_result Parsed = std::from_chars(Digits.data(), Digits.data() + Digits.size(), Value);
		return Parsed.ec == std::errc() && Parsed.ptr == Digits.data() + Digits.size() ? Value : -1;
	}

	FString WalkStream(FArchive& Ar, FCompressedFileReport& Report, const std::function<bool(const uint8*, int64)>& OnBytes)
	{
		FCompressedStreamRecords Stream;
		const FString Problem = FCompression::ReadStreamRecords(Ar, Stream);
		Report.ChunkSize = Stream.ChunkSize;
		if (!Problem.IsEmpty())
		{
			return Problem;
		}
		// One chunk in memory at a time, whatever the file's size.
		std::vector<uint8> Input;
		std::vector<uint8> Output;
		for (size_t Index = 0; Index < Stream.Chunks.size(); ++Index)
		{
			const FCompressedStreamRecords::FChunk& Chunk = Stream.Chunks[Index];
			Input.resize(static_cast<size_t>(Chunk.CompressedSize));
			Output.resize(static_cast<size_t>(Chunk.UncompressedSize));
			Ar.Serialize(Input.data(), Chunk.CompressedSize);
			if (Ar.IsError() || !FCompression::UncompressMemory(COMPRESS_ZLIB, Output.data(), static_cast<int32>(Chunk.UncompressedSize),
																Input.data(), static_cast<int32>(Chunk.CompressedSize)))
			{
				return FString::Printf(TEXT("chunk %zu does not inflate to the %lld bytes its record says"), Index + 1, Chunk.UncompressedSize);
			}
			if (OnBytes && !OnBytes(Output.data(), Chunk.UncompressedSize))
			{
				return TEXT("the decoded bytes could not be written");
			}
			++Report.Chunks;
			Report.UncompressedBytes += Chunk.UncompressedSize;
		}
		if (Report.FileBytes > Ar.Tell())
		{
			return FString::Printf(TEXT("%lld bytes follow the end of the stream"), Report.FileBytes - Ar.Tell());
		}
		return FString();
	}
}

FCompressedFileReport InspectCompressedFile(const FString& Path, const std::function<bool(const uint8*, int64)>& OnBytes)
{
	FCompressedFileReport Report;
	Report.Path = Path;
	Report.SizeFileValue = ReadSizeFile(Path + TEXT(".uncompressed_size"));
	TUniquePtr<FArchive> Reader(IFileManager::Get().CreateFileReader(*Path, 0));
	if (!Reader)
	{
		Report.Problem = TEXT("can't be opened for reading");
		return Report;
	}
	Report.FileBytes = Reader->TotalSize();
	Report.Problem = WalkStream(*Reader, Report, OnBytes);
	if (!Report.IsWhole())
	{
		Report.Chunks = 0;
		Report.UncompressedBytes = 0;
	}
	return Report;
}

FString FCompressedFileReport::DescribeProblem() const
{
	if (!IsWhole() || MatchesSizeFile())
	{
		return Problem;
	}
	const FString SizeFile = SizeFileValue < 0 ? FString(TEXT("no size file with a number beside it"))
											   : FString::Printf(TEXT("its size file says %lld"), SizeFileValue);
	return FString::Printf(TEXT("decodes to %lld bytes, but %s"), UncompressedBytes, *SizeFile);
}
