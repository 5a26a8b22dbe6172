// Feeds arbitrary bytes as a ".z" file to the readers of chunked compressed streams: FArchive::SerializeCompressed
// on a loading archive (into memory, into a writer archive, and from an archive that can't tell its size) and
// the inspection of a ".z" file on disk that TesselCmd runs. They read the same records and the same chunks,
// so they must agree:
//
// - when the records don't hold, no reader yields a byte: the loads fail with their output zeroed, and the
//   inspection reports a problem with nothing counted;
// - when they hold, a load of the summary's length succeeds exactly when every chunk inflates, all loads give
//   the same bytes, the inspection hands over those bytes too and is whole exactly when nothing follows the
//   last chunk, and a load of one byte more or fewer fails;
// - bytes that loaded, compressed again by the writer (from memory, from a reader archive, through an archive
//   that can't seek, or by a background job), give one and the same stream, and it loads back to them.
//
// Memory must stay with what the input really holds; the fuzzer's memory limit holds the readers to that.

#include "CoreMinimal.h"
#include "CompressedFileInspection.h"
#include "Misc/Compression.h"
#include "Serialization/Archive.h"
#include "SizelessArchive.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{
	// Loads into memory only when the length is small or the chunks are known to inflate to it: a summary
	// may promise gigabytes that aren't there.
	constexpr int64 SmallLength = 64 * 1024;
	// Bytes compressed again for the round trip: two chunks, so that the pool gets more than one; more would
	// slow down every input that loads.
	constexpr int64 RoundTripLength = 256 * 1024;

	[[noreturn]] void Fail(const char* What)
	{
		std::fprintf(stderr, "%s\n", What);
		std::abort();
	}

	bool AllZero(const TArray<uint8>& Bytes)
	{
		return std::all_of(Bytes.begin(), Bytes.end(), [](uint8 Byte) { return Byte == 0; });
	}

	// SerializeCompressed into memory of Length bytes; the result is empty on failure, after checking that the
	// memory was zeroed.
	bool LoadIntoMemory(FArchive& Ar, int64 Length, TArray<uint8>& Out)
	{
		// Filled with something other than zeros, so that a failure that forgets to zero it shows.
		Out.Reset();
		Out.SetNum(static_cast<int32>(Length));
		std::fill(Out.begin(), Out.end(), uint8(0xA5));
		Ar.SerializeCompressed(Out.GetData(), Length, COMPRESS_ZLIB);
		if (Ar.IsError())
		{
			if (!AllZero(Out))
			{
				Fail("a failed load left bytes in memory");
			}
			Out.Empty();
			return false;
		}
		return true;
	}

	bool LoadIntoWriter(FArchive& Ar, int64 Length, TArray<uint8>& Out)
	{
		Out.Empty();
		FMemoryArchive Writer(Out, false);
		Ar.SerializeCompressed(&Writer, Length, COMPRESS_ZLIB, true);
		return !Ar.IsError();
	}

	// The path of the ".z" file the inspection reads, in a folder of this process's own.
	const FString& StreamPath()
	{
		static const FString Path = []
		{
			const char* Base = std::getenv("TMPDIR");
			std::string Folder = std::string(Base && *Base ? Base : "/tmp") + "/CompressedStreamFuzzer.XXXXXX";
			if (!mkdtemp(Folder.data()))
			{
				Fail("no temporary folder");
			}
			static std::string Made;
			Made = Folder;
			std::atexit([] {
				unlink((Made + "/stream.z").c_str());
				rmdir(Made.c_str());
			});
			return FString(Folder + "/stream.z");
		}();
		return Path;
	}

	void WriteStreamFile(const uint8_t* Data, size_t Size)
	{
		// A new file each time rather than a truncated one: ext4 flushes a truncated file to disk on close.
		const std::string Path = StreamPath().ToUtf8();
		unlink(Path.c_str());
		const int File = open(Path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
		if (File < 0)
		{
			Fail("the stream file can't be written");
		}
		for (size_t Done = 0; Done < Size;)
		{
			const ssize_t Wrote = write(File, Data + Done, Size - Done);
			if (Wrote <= 0)
			{
				Fail("the stream file can't be written");
			}
			Done += static_cast<size_t>(Wrote);
		}
		close(File);
	}

	// Compresses Bytes every way the writer offers; all must give the same stream, and it must load back.
	void CheckRoundTrip(TArray<uint8>& Bytes)
	{
		const int64 Length = Bytes.Num();
		TArray<uint8> Stream;
		{
			FMemoryArchive Writer(Stream, false);
			Writer.SerializeCompressed(Bytes.GetData(), Length, COMPRESS_ZLIB);
			if (Writer.IsError())
			{
				Fail("loaded bytes can't be compressed again");
			}
		}
		TArray<uint8> FromReader;
		{
			FMemoryArchive Source(Bytes, true);
			FMemoryArchive Writer(FromReader, false);
			Writer.SerializeCompressed(&Source, Length, COMPRESS_ZLIB, true);
		}
		TArray<uint8> Unseekable;
		{
			FSizelessArchive Writer(Unseekable, false);
			Writer.SerializeCompressed(Bytes.GetData(), Length, COMPRESS_ZLIB);
		}
		TArray<uint8> FromJob;
		{
			FMemoryArchive Writer(FromJob, false);
			FCompressedStreamJob Job(std::vector<uint8>(Bytes.begin(), Bytes.end()));
			Job.WriteTo(Writer);
		}
		if (FromReader != Stream || Unseekable != Stream || FromJob != Stream)
		{
			Fail("the writer's ways of compressing the same bytes give different streams");
		}
		FMemoryArchive Reader(Stream, true);
		TArray<uint8> Back;
		if (!LoadIntoMemory(Reader, Length, Back) || Back != Bytes || Reader.Tell() != Stream.Num())
		{
			Fail("a stream compressed again does not load back to its bytes");
		}
	}
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
	TArray<uint8> Input(Data, static_cast<int32>(Size));
	// The writer's two ways of compressing (a pool of threads, or the calling thread) take turns by input.
	FCompression::SetParallelCompression(Size % 2 == 0);

	FCompressedStreamRecords Records;
	bool bRecordsHold = false;
	{
		FMemoryArchive Reader(Input, true);
		bRecordsHold = FCompression::ReadStreamRecords(Reader, Records).IsEmpty();
	}

	WriteStreamFile(Data, Size);
	TArray<uint8> Inspected;
	const FCompressedFileReport Report = InspectCompressedFile(StreamPath(),
															   [&Inspected](const uint8* Bytes, int64 Count)
															   {
																   Inspected.Append(Bytes, static_cast<int32>(Count));
																   return true;
															   });
	if (Report.FileBytes != static_cast<int64>(Size) || Report.SizeFileValue != -1)
	{
		Fail("the inspection saw another file than the one written");
	}
	if (!Report.IsWhole() && (Report.Chunks != 0 || Report.UncompressedBytes != 0))
	{
		Fail("a broken file was reported with chunks counted");
	}

	if (!bRecordsHold)
	{
		if (Report.IsWhole() || !Inspected.IsEmpty())
		{
			Fail("the inspection accepted records that don't hold");
		}
		const int64 Length = Records.UncompressedSize >= 0 && Records.UncompressedSize <= SmallLength ? Records.UncompressedSize : 1;
		FMemoryArchive Reader(Input, true);
		TArray<uint8> Out;
		TArray<uint8> Written;
		FMemoryArchive WriterReader(Input, true);
		if (LoadIntoMemory(Reader, Length, Out) || LoadIntoWriter(WriterReader, Length, Written))
		{
			Fail("a load accepted records that don't hold");
		}
		return 0;
	}

	const int64 Length = Records.UncompressedSize;
	TArray<uint8> Loaded;
	FMemoryArchive WriterReader(Input, true);
	const bool bLoaded = LoadIntoWriter(WriterReader, Length, Loaded);
	if (bLoaded && Loaded.Num() != Length)
	{
		Fail("a load handed on another number of bytes than asked for");
	}
	if (Report.IsWhole() != (bLoaded && WriterReader.Tell() == static_cast<int64>(Size)))
	{
		Fail("the inspection and the load disagree on whether the file is whole");
	}
	if (Report.IsWhole() && (Report.ChunkSize != Records.ChunkSize || Report.Chunks != static_cast<int32>(Records.Chunks.size()) ||
							 Report.UncompressedBytes != Length))
	{
		Fail("the inspection counted other chunks or bytes than the records hold");
	}
	if (bLoaded && Inspected != Loaded)
	{
		Fail("the inspection handed over other bytes than the load");
	}

	if (bLoaded || Length <= SmallLength)
	{
		FMemoryArchive Reader(Input, true);
		TArray<uint8> InMemory;
		if (LoadIntoMemory(Reader, Length, InMemory) != bLoaded || (bLoaded && InMemory != Loaded))
		{
			Fail("the load into memory and the load into an archive disagree");
		}
		// One byte more or fewer than the records hold is never enough or never all.
		for (const int64 Other : {Length + 1, Length - 1})
		{
			if (Other < 0)
			{
				continue;
			}
			FMemoryArchive OtherReader(Input, true);
			TArray<uint8> Out;
			if (LoadIntoMemory(OtherReader, Other, Out))
			{
				Fail("a load of another length than the records hold succeeded");
			}
		}
	}

	FSizelessArchive Sizeless(Input, true);
	TArray<uint8> FromSizeless;
	if (LoadIntoWriter(Sizeless, Length, FromSizeless) != bLoaded || (bLoaded && FromSizeless != Loaded))
	{
		Fail("a load from an archive that can't tell its size gave something else");
	}

	if (bLoaded && Length <= RoundTripLength)
	{
		CheckRoundTrip(Loaded);
	}
	return 0;
}
