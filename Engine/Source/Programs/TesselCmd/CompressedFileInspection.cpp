#include "CompressedFileInspection.h"

#include "HAL/FileManager.h"
#include "Misc/Compression.h"
#include "Misc/FileHelper.h"

#include <vector>

namespace
{
	// Larger than any chunk a writer makes; a record beyond it is a lie, not a reason to allocate.
	constexpr int64 MaxChunkSize = 16 * 1024 * 1024;

	struct FRecord
	{
		int64 CompressedSize = 0;
		int64 UncompressedSize = 0;
	};

	int64 ReadSizeFile(const FString& Path)
	{
		FString Text;
		if (!FFileHelper::LoadFileToString(Text, *Path))
		{
			return -1;
		}
		const FString Trimmed = Text.TrimStartAndEnd();
		if (Trimmed.IsEmpty() || !Trimmed.IsNumeric() || Trimmed.Contains(TEXT(".")))
		{
			return -1;
		}
		int64 Value = 0;
		for (const TCHAR Unit : Trimmed)
		{
			if (FChar::IsDigit(Unit))
			{
				Value = Value * 10 + (Unit - u'0');
				if (Value > (int64(1) << 40))
				{
					return -1;
				}
			}
		}
		return Trimmed.StartsWith(TEXT("-")) ? -Value : Value;
	}

	FString WalkStream(FArchive& Ar, FCompressedFileReport& Report, const std::function<bool(const uint8*, int64)>& OnBytes)
	{
		int64 Tag = 0;
		FRecord Summary;
		Ar << Tag << Report.ChunkSize << Summary.CompressedSize << Summary.UncompressedSize;
		if (Ar.IsError())
		{
			return FString::Printf(TEXT("only %lld bytes, shorter than the stream's two leading records"), Report.FileBytes);
		}
		if (Tag != FCompression::PackageFileTag)
		{
			return FString::Printf(TEXT("tag 0x%llX where a compressed package begins with 0x%llX"), static_cast<unsigned long long>(Tag),
								   static_cast<unsigned long long>(FCompression::PackageFileTag));
		}
		if (Report.ChunkSize <= 0 || Report.ChunkSize > MaxChunkSize)
		{
			return FString::Printf(TEXT("chunk size %lld is outside 1 to %lld"), Report.ChunkSize, MaxChunkSize);
		}
		if (Summary.CompressedSize < 0 || Summary.UncompressedSize < 0)
		{
			return FString::Printf(TEXT("the summary record says %lld compressed and %lld uncompressed bytes"), Summary.CompressedSize,
								   Summary.UncompressedSize);
		}
		const int64 MaxCompressedChunk = FCompression::CompressMemoryBound(COMPRESS_ZLIB, static_cast<int32>(Report.ChunkSize));

		// Every record kept was read from the file, so a lying summary can't make this outgrow the input.
		std::vector<FRecord> Records;
		int64 Compressed = 0;
		int64 Uncompressed = 0;
		while (Uncompressed < Summary.UncompressedSize)
		{
			FRecord Record;
			Ar << Record.CompressedSize << Record.UncompressedSize;
			const int32 Number = static_cast<int32>(Records.size()) + 1;
			if (Ar.IsError())
			{
				return FString::Printf(TEXT("the file ends inside chunk record %d, with %lld of the summary's %lld bytes recorded"), Number,
									   Uncompressed, Summary.UncompressedSize);
			}
			if (Record.UncompressedSize <= 0 || Record.UncompressedSize > Report.ChunkSize ||
				Record.UncompressedSize > Summary.UncompressedSize - Uncompressed)
			{
				return FString::Printf(TEXT("chunk record %d says %lld uncompressed bytes (chunk size %lld, %lld left of the summary's %lld)"),
									   Number, Record.UncompressedSize, Report.ChunkSize, Summary.UncompressedSize - Uncompressed,
									   Summary.UncompressedSize);
			}
			if (Record.CompressedSize <= 0 || Record.CompressedSize > MaxCompressedChunk ||
				Record.CompressedSize > Summary.CompressedSize - Compressed)
			{
				return FString::Printf(TEXT("chunk record %d says %lld compressed bytes (at most %lld for a chunk, %lld left of the summary's %lld)"),
									   Number, Record.CompressedSize, MaxCompressedChunk, Summary.CompressedSize - Compressed,
									   Summary.CompressedSize);
			}
			Records.push_back(Record);
			Compressed += Record.CompressedSize;
			Uncompressed += Record.UncompressedSize;
		}
		if (Compressed != Summary.CompressedSize)
		{
			return FString::Printf(TEXT("the chunk records add up to %lld compressed bytes, the summary says %lld"), Compressed,
								   Summary.CompressedSize);
		}
		const int64 Left = Report.FileBytes - Ar.Tell();
		if (Summary.CompressedSize > Left)
		{
			return FString::Printf(TEXT("the records promise %lld compressed bytes, the file holds %lld after them"), Summary.CompressedSize,
								   Left);
		}

		std::vector<uint8> Input;
		std::vector<uint8> Output;
		for (size_t Index = 0; Index < Records.size(); ++Index)
		{
			const FRecord& Record = Records[Index];
			Input.resize(static_cast<size_t>(Record.CompressedSize));
			Output.resize(static_cast<size_t>(Record.UncompressedSize));
			Ar.Serialize(Input.data(), Record.CompressedSize);
			if (Ar.IsError() || !FCompression::UncompressMemory(COMPRESS_ZLIB, Output.data(), static_cast<int32>(Record.UncompressedSize),
																Input.data(), static_cast<int32>(Record.CompressedSize)))
			{
				return FString::Printf(TEXT("chunk %zu does not inflate to the %lld bytes its record says"), Index + 1, Record.UncompressedSize);
			}
			if (OnBytes && !OnBytes(Output.data(), Record.UncompressedSize))
			{
				return TEXT("the decoded bytes could not be written");
			}
			++Report.Chunks;
			Report.UncompressedBytes += Record.UncompressedSize;
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
