#include "CoreMinimal.h"
#include "HAL/FileManager.h"
#include "Misc/Compression.h"
#include "Serialization/Archive.h"
#include "TempDirectory.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

namespace
{
	constexpr int64 Chunk = 131072;
	// compress2 of the single byte "A": zlib header, one fixed-Huffman block, Adler-32 0x00420042.
	const std::vector<uint8> CompressedA = {0x78, 0x9C, 0x73, 0x04, 0x00, 0x00, 0x42, 0x00, 0x42};

	struct FRecord
	{
		int64 Compressed;
		int64 Uncompressed;
	};

	int64 ReadInt64(const std::vector<uint8>& Bytes, size_t Offset)
	{
		uint64 Value = 0;
		for (size_t Index = 0; Index < 8; ++Index)
		{
			Value |= static_cast<uint64>(Bytes.at(Offset + Index)) << (8 * Index);
		}
		return static_cast<int64>(Value);
	}

	void AppendInt64(std::vector<uint8>& Bytes, int64 Value)
	{
		for (int Index = 0; Index < 8; ++Index)
		{
			Bytes.push_back(static_cast<uint8>(static_cast<uint64>(Value) >> (8 * Index)));
		}
	}

	// Text-like, binary-like and incompressible thirds, so that chunks compress to very different sizes.
	std::vector<uint8> MixedContent(size_t Size, uint32 Seed)
	{
		std::mt19937 Random(Seed);
		std::vector<uint8> Bytes(Size);
		const char* Words[] = {"Texture2D ", "StaticMesh ", "/Game/Mods/", "Material_", "\r\n", "LOD0 ", "Bounds="};
		size_t Index = 0;
		for (; Index < Size / 3;)
		{
			for (const char* Letter = Words[Random() % 7]; *Letter && Index < Size / 3; ++Letter)
			{
				Bytes[Index++] = static_cast<uint8>(*Letter);
			}
		}
		for (; Index < 2 * Size / 3; ++Index)
		{
			Bytes[Index] = static_cast<uint8>((Index % 64 < 48) ? (Index / 256) & 0x0F : Random() & 0xFF);
		}
		for (; Index < Size; ++Index)
		{
			Bytes[Index] = static_cast<uint8>(Random());
		}
		return Bytes;
	}

	// The stream as an independent one-thread writer would make it: compress2 chunk after chunk.
	std::vector<uint8> SerialReference(const std::vector<uint8>& Input)
	{
		std::vector<FRecord> Records;
		std::vector<uint8> Data;
		for (size_t Offset = 0; Offset < Input.size(); Offset += Chunk)
		{
			const uLong Size = static_cast<uLong>(std::min<size_t>(Chunk, Input.size() - Offset));
			std::vector<uint8> Out(compressBound(Size));
			uLongf OutSize = Out.size();
			EXPECT_EQ(compress2(Out.data(), &OutSize, Input.data() + Offset, Size, Z_DEFAULT_COMPRESSION), Z_OK);
			Records.push_back({static_cast<int64>(OutSize), static_cast<int64>(Size)});
			Data.insert(Data.end(), Out.begin(), Out.begin() + OutSize);
		}
		std::vector<uint8> Stream;
		AppendInt64(Stream, 0x9E2A83C1);
		AppendInt64(Stream, Chunk);
		AppendInt64(Stream, static_cast<int64>(Data.size()));
		AppendInt64(Stream, static_cast<int64>(Input.size()));
		for (const FRecord& Record : Records)
		{
			AppendInt64(Stream, Record.Compressed);
			AppendInt64(Stream, Record.Uncompressed);
		}
		Stream.insert(Stream.end(), Data.begin(), Data.end());
		return Stream;
	}

	std::vector<uint8> Compress(std::vector<uint8> Input)
	{
		TArray<uint8> Bytes;
		FMemoryArchive Writer(Bytes, false);
		Writer.SerializeCompressed(Input.data(), static_cast<int64>(Input.size()), COMPRESS_ZLIB);
		EXPECT_FALSE(Writer.IsError());
		return std::vector<uint8>(Bytes.GetData(), Bytes.GetData() + Bytes.Num());
	}

	// Reads the stream back with our loader; false when the loader reports an error.
	bool Decompress(const std::vector<uint8>& Stream, int64 Length, std::vector<uint8>& Out)
	{
		TArray<uint8> Bytes(Stream.data(), static_cast<int32>(Stream.size()));
		FMemoryArchive Reader(Bytes, true);
		Out.assign(static_cast<size_t>(Length), 0xAA);
		Reader.SerializeCompressed(Out.data(), Length, COMPRESS_ZLIB);
		return !Reader.IsError();
	}

	// Walks the records as the game's loader does and inflates each chunk with zlib's own uncompress.
	std::vector<uint8> InflateWithZlib(const std::vector<uint8>& Stream, std::vector<FRecord>* OutRecords = nullptr)
	{
		EXPECT_EQ(ReadInt64(Stream, 0), 0x9E2A83C1);
		EXPECT_EQ(ReadInt64(Stream, 8), Chunk);
		const FRecord Summary{ReadInt64(Stream, 16), ReadInt64(Stream, 24)};
		std::vector<FRecord> Records;
		size_t Offset = 32;
		for (int64 Sum = 0; Sum < Summary.Uncompressed; Offset += 16)
		{
			Records.push_back({ReadInt64(Stream, Offset), ReadInt64(Stream, Offset + 8)});
			Sum += Records.back().Uncompressed;
		}
		std::vector<uint8> Out;
		int64 CompressedSum = 0;
		for (const FRecord& Record : Records)
		{
			std::vector<uint8> Piece(static_cast<size_t>(Record.Uncompressed));
			uLongf PieceSize = Piece.size();
			EXPECT_EQ(uncompress(Piece.data(), &PieceSize, Stream.data() + Offset, static_cast<uLong>(Record.Compressed)), Z_OK);
			EXPECT_EQ(PieceSize, Piece.size());
			Out.insert(Out.end(), Piece.begin(), Piece.end());
			Offset += static_cast<size_t>(Record.Compressed);
			CompressedSum += Record.Compressed;
		}
		EXPECT_EQ(CompressedSum, Summary.Compressed);
		EXPECT_EQ(Offset, Stream.size()) << "nothing may follow the last chunk";
		if (OutRecords)
		{
			*OutRecords = Records;
		}
		return Out;
	}

	// Hands out a long generated sequence without holding it, as a reader archive of a huge file would.
	class FGeneratedReader : public FArchive
	{
	public:
		explicit FGeneratedReader(int64 InSize) : Size(InSize) { bLoading = true; }
		static uint8 ByteAt(int64 Position) { return static_cast<uint8>((Position / 1000) * 7 + (Position % 3)); }
		void Serialize(void* Data, int64 Num) override
		{
			for (int64 Index = 0; Index < Num; ++Index)
			{
				static_cast<uint8*>(Data)[Index] = ByteAt(Position++);
			}
		}
		int64 Tell() override { return Position; }
		int64 TotalSize() override { return Size; }

	private:
		int64 Size;
		int64 Position = 0;
	};

	// A saving archive that can't tell where it is, so it can't seek back either.
	class FForwardOnlyWriter : public FArchive
	{
	public:
		explicit FForwardOnlyWriter(TArray<uint8>& Bytes) : Inner(Bytes, false) { bSaving = true; }
		void Serialize(void* Data, int64 Num) override { Inner.Serialize(Data, Num); }

	private:
		FMemoryArchive Inner;
	};
}

TEST(CompressionTests, EmptyInputIsTagAndZeroSummary)
{
	const std::vector<uint8> Expected = {0xC1, 0x83, 0x2A, 0x9E, 0, 0, 0, 0, 0x00, 0x00, 0x02, 0, 0, 0, 0, 0,
										 0,	   0,	 0,	   0,	 0, 0, 0, 0, 0,	   0,	 0,	   0, 0, 0, 0, 0};
	EXPECT_EQ(Compress({}), Expected);
	std::vector<uint8> Out;
	EXPECT_TRUE(Decompress(Expected, 0, Out));
}

TEST(CompressionTests, OneByteStreamIsByteExact)
{
	std::vector<uint8> Expected = {0xC1, 0x83, 0x2A, 0x9E, 0, 0, 0, 0, 0x00, 0x00, 0x02, 0, 0, 0, 0, 0, // tag
								   9,	 0,	   0,	 0,	   0, 0, 0, 0, 1,	 0,	   0,	 0, 0, 0, 0, 0,	 // summary
								   9,	 0,	   0,	 0,	   0, 0, 0, 0, 1,	 0,	   0,	 0, 0, 0, 0, 0}; // chunk 0
	Expected.insert(Expected.end(), CompressedA.begin(), CompressedA.end());
	const std::vector<uint8> Stream = Compress({'A'});
	EXPECT_EQ(Stream, Expected);
	std::vector<uint8> Out;
	ASSERT_TRUE(Decompress(Stream, 1, Out));
	EXPECT_EQ(Out, std::vector<uint8>{'A'});
}

TEST(CompressionTests, ChunkBoundariesGiveOneRecordPerChunk)
{
	// Exactly one chunk, then one byte more: the extra byte gets a record and a zlib stream of its own.
	std::vector<uint8> Input = MixedContent(Chunk, 1);
	std::vector<FRecord> Records;
	const std::vector<uint8> OneChunk = Compress(Input);
	EXPECT_EQ(OneChunk, SerialReference(Input));
	EXPECT_EQ(InflateWithZlib(OneChunk, &Records), Input);
	EXPECT_EQ(Records.size(), 1u);

	Input.push_back('A');
	const std::vector<uint8> TwoChunks = Compress(Input);
	EXPECT_EQ(TwoChunks, SerialReference(Input));
	EXPECT_EQ(InflateWithZlib(TwoChunks, &Records), Input);
	ASSERT_EQ(Records.size(), 2u);
	EXPECT_EQ(Records[0].Compressed, ReadInt64(OneChunk, 32)) << "the first chunk is untouched by what follows";
	EXPECT_EQ(Records[1].Compressed, 9);
	EXPECT_EQ(Records[1].Uncompressed, 1);
	EXPECT_EQ(std::vector<uint8>(TwoChunks.end() - 9, TwoChunks.end()), CompressedA);

	std::vector<uint8> Out;
	ASSERT_TRUE(Decompress(TwoChunks, Chunk + 1, Out));
	EXPECT_EQ(Out, Input);
}

TEST(CompressionTests, SeveralMegabytesMatchOneThreadReferenceInBothModes)
{
	const std::vector<uint8> Input = MixedContent(5 * 1024 * 1024 + 12345, 7);
	const std::vector<uint8> Reference = SerialReference(Input);

	const std::vector<uint8> Parallel = Compress(Input);
	FCompression::SetParallelCompression(false);
	const std::vector<uint8> Serial = Compress(Input);
	FCompression::SetParallelCompression(true);

	EXPECT_EQ(Parallel, Reference);
	EXPECT_EQ(Serial, Reference);
	EXPECT_EQ(InflateWithZlib(Parallel), Input);
	std::vector<uint8> Out;
	ASSERT_TRUE(Decompress(Parallel, static_cast<int64>(Input.size()), Out));
	EXPECT_EQ(Out, Input);
}

TEST(CompressionTests, FileToFileThroughReaderArchives)
{
	FTempDirectory Dir;
	const std::vector<uint8> Input = MixedContent(3 * Chunk + 77, 3);
	const FString Source = Dir.WriteFile(TEXT("source.uasset"), std::string(Input.begin(), Input.end()));
	const FString Packed = Dir / TEXT("out/packed.z");
	{
		TUniquePtr<FArchive> Reader(IFileManager::Get().CreateFileReader(*Source));
		TUniquePtr<FArchive> Writer(IFileManager::Get().CreateFileWriter(*Packed));
		ASSERT_TRUE(Reader && Writer);
		Writer->SerializeCompressed(Reader.get(), Reader->TotalSize(), COMPRESS_ZLIB, true);
		EXPECT_TRUE(Writer->Close());
	}
	const std::string OnDisk = FTempDirectory::ReadBytes(Packed);
	EXPECT_EQ(std::vector<uint8>(OnDisk.begin(), OnDisk.end()), SerialReference(Input));

	// And back out into another file.
	const FString Unpacked = Dir / TEXT("unpacked.bin");
	{
		TUniquePtr<FArchive> Reader(IFileManager::Get().CreateFileReader(*Packed));
		TUniquePtr<FArchive> Writer(IFileManager::Get().CreateFileWriter(*Unpacked));
		ASSERT_TRUE(Reader && Writer);
		Reader->SerializeCompressed(Writer.get(), static_cast<int64>(Input.size()), COMPRESS_ZLIB, true);
		EXPECT_FALSE(Reader->IsError());
		EXPECT_TRUE(Writer->Close());
	}
	EXPECT_EQ(FTempDirectory::ReadBytes(Unpacked), std::string(Input.begin(), Input.end()));
}

TEST(CompressionTests, LongStreamWritesEveryRecordBack)
{
	// More chunks than the writer keeps records for at once, from a source that is never held whole.
	const int64 Length = 700 * Chunk + 5;
	FGeneratedReader Source(Length);
	TArray<uint8> Bytes;
	FMemoryArchive Writer(Bytes, false);
	Writer.SerializeCompressed(&Source, Length, COMPRESS_ZLIB, true);
	ASSERT_FALSE(Writer.IsError());

	const std::vector<uint8> Stream(Bytes.GetData(), Bytes.GetData() + Bytes.Num());
	std::vector<FRecord> Records;
	const std::vector<uint8> Out = InflateWithZlib(Stream, &Records);
	ASSERT_EQ(Records.size(), 701u);
	EXPECT_EQ(Records.back().Uncompressed, 5);
	ASSERT_EQ(static_cast<int64>(Out.size()), Length);
	for (int64 Position = 0; Position < Length; Position += 4099)
	{
		ASSERT_EQ(Out[static_cast<size_t>(Position)], FGeneratedReader::ByteAt(Position)) << Position;
	}
}

TEST(CompressionTests, ArchiveThatCannotSeekGetsTheSameBytes)
{
	const std::vector<uint8> Input = MixedContent(2 * Chunk + 3, 11);
	TArray<uint8> Bytes;
	FForwardOnlyWriter Writer(Bytes);
	std::vector<uint8> Copy = Input;
	Writer.SerializeCompressed(Copy.data(), static_cast<int64>(Copy.size()), COMPRESS_ZLIB);
	EXPECT_EQ(std::vector<uint8>(Bytes.GetData(), Bytes.GetData() + Bytes.Num()), SerialReference(Input));
}

TEST(CompressionTests, TruncatedStreamsAreRejectedAtEveryLength)
{
	const std::vector<uint8> Input = MixedContent(Chunk + 900, 5);
	const std::vector<uint8> Stream = Compress(Input);
	for (size_t Cut = 0; Cut < Stream.size(); Cut += (Cut < 80 ? 1 : 997))
	{
		std::vector<uint8> Out;
		EXPECT_FALSE(Decompress(std::vector<uint8>(Stream.begin(), Stream.begin() + Cut), static_cast<int64>(Input.size()), Out))
			<< Cut;
		EXPECT_EQ(Out, std::vector<uint8>(Input.size(), 0)) << "a failed load leaves zeros, not half a file";
	}
}

TEST(CompressionTests, BrokenAndLyingStreamsAreRejected)
{
	const std::vector<uint8> Input = MixedContent(2 * Chunk, 9);
	const std::vector<uint8> Good = Compress(Input);
	const int64 Length = static_cast<int64>(Input.size());
	auto Patched = [&Good](size_t Offset, int64 Value)
	{
		std::vector<uint8> Bytes = Good;
		for (int Index = 0; Index < 8; ++Index)
		{
			Bytes[Offset + Index] = static_cast<uint8>(static_cast<uint64>(Value) >> (8 * Index));
		}
		return Bytes;
	};
	std::vector<uint8> Out;
	ASSERT_TRUE(Decompress(Good, Length, Out));

	EXPECT_FALSE(Decompress(Patched(0, 0x12345678), Length, Out)) << "wrong tag";
	EXPECT_FALSE(Decompress(Patched(8, int64(1) << 40), Length, Out)) << "absurd chunk size";
	EXPECT_FALSE(Decompress(Patched(16, int64(1) << 62), Length, Out)) << "lying compressed sum";
	EXPECT_FALSE(Decompress(Patched(24, int64(1) << 62), Length, Out)) << "lying uncompressed sum";
	EXPECT_FALSE(Decompress(Good, Length - 1, Out)) << "caller expects another size";
	EXPECT_FALSE(Decompress(Patched(32, int64(1) << 50), Length, Out)) << "huge chunk";
	EXPECT_FALSE(Decompress(Patched(32, -5), Length, Out)) << "negative chunk";
	EXPECT_FALSE(Decompress(Patched(40, Chunk + 1), Length, Out)) << "chunk above the chunk size";

	std::vector<uint8> Flipped = Good;
	Flipped[Flipped.size() - 200] ^= 0x55;
	EXPECT_FALSE(Decompress(Flipped, Length, Out)) << "damaged deflate data";
	std::vector<uint8> BadChecksum = Good;
	BadChecksum.back() ^= 0x01;
	EXPECT_FALSE(Decompress(BadChecksum, Length, Out)) << "damaged Adler-32";
	EXPECT_EQ(Out, std::vector<uint8>(Input.size(), 0));

	// Swapping the two records keeps every size plausible but points the reader at the wrong bytes.
	ASSERT_NE(ReadInt64(Good, 32), ReadInt64(Good, 48)) << "the two chunks must differ for this check";
	std::vector<uint8> Swapped = Good;
	std::swap_ranges(Swapped.begin() + 32, Swapped.begin() + 48, Swapped.begin() + 48);
	EXPECT_FALSE(Decompress(Swapped, Length, Out)) << "records out of step with the data";
}

TEST(CompressionTests, StreamRecordsAreReadBackOrTheLieIsNamed)
{
	std::vector<uint8> Input(Chunk + 10, 'x');
	const std::vector<uint8> Stream = Compress(Input);
	auto Read = [](std::vector<uint8> Bytes, FCompressedStreamRecords& Out)
	{
		TArray<uint8> Array;
		for (const uint8 Byte : Bytes)
		{
			Array.Add(Byte);
		}
		FMemoryArchive Archive(Array, true);
		return FCompression::ReadStreamRecords(Archive, Out).ToUtf8();
	};

	FCompressedStreamRecords Records;
	EXPECT_EQ(Read(Stream, Records), "");
	EXPECT_EQ(Records.ChunkSize, Chunk);
	EXPECT_EQ(Records.UncompressedSize, Chunk + 10);
	ASSERT_EQ(Records.Chunks.size(), 2u);
	EXPECT_EQ(Records.Chunks[1].UncompressedSize, 10);
	EXPECT_EQ(Records.Chunks[0].CompressedSize + Records.Chunks[1].CompressedSize, Records.CompressedSize);

	std::vector<uint8> WrongTag = Stream;
	WrongTag[0] ^= 0xFF;
	EXPECT_EQ(Read(WrongTag, Records).rfind("tag 0x9E2A833E where", 0), 0u) << Read(WrongTag, Records);
	// The first record claims more than a chunk.
	std::vector<uint8> Lying = Stream;
	Lying[40] = 0x05;
	Lying[42] = 0x03;
	EXPECT_EQ(Read(Lying, Records).rfind("chunk record 1 says", 0), 0u) << Read(Lying, Records);
	// Cut inside the second record, then inside the data.
	EXPECT_EQ(Read(std::vector<uint8>(Stream.begin(), Stream.begin() + 56), Records),
			  "the stream ends inside chunk record 2, with 131072 of the summary's 131082 bytes recorded");
	EXPECT_EQ(Read(std::vector<uint8>(Stream.begin(), Stream.end() - 1), Records).rfind("the records promise", 0), 0u);
}

TEST(CompressionTests, JobsInFlightTogetherEachWriteTheOneThreadStream)
{
	// Many small streams and a few long ones share the pool at once and finish out of order; each must
	// still come out as its own stream, whichever archive it is written to and with the pool on or off.
	std::vector<std::vector<uint8>> Inputs = {{}, {'A'}};
	for (uint32 Seed = 0; Seed < 24; ++Seed)
	{
		Inputs.push_back(MixedContent(Seed % 6 == 0 ? 3 * Chunk + 5 * Seed : 1000 + 4000 * Seed, Seed));
	}
	for (const bool bParallel : {true, false})
	{
		FCompression::SetParallelCompression(bParallel);
		std::vector<std::unique_ptr<FCompressedStreamJob>> Jobs;
		for (const std::vector<uint8>& Input : Inputs)
		{
			Jobs.push_back(std::make_unique<FCompressedStreamJob>(Input));
			EXPECT_EQ(Jobs.back()->GetInputSize(), static_cast<int64>(Input.size()));
		}
		for (size_t Index = Jobs.size(); Index-- > 0;)
		{
			TArray<uint8> Seekable;
			FMemoryArchive Writer(Seekable, false);
			Jobs[Index]->WriteTo(Writer);
			TArray<uint8> ForwardOnly;
			FForwardOnlyWriter Forward(ForwardOnly);
			Jobs[Index]->WriteTo(Forward);
			const std::vector<uint8> Reference = SerialReference(Inputs[Index]);
			EXPECT_FALSE(Writer.IsError() || Forward.IsError());
			EXPECT_EQ(std::vector<uint8>(Seekable.GetData(), Seekable.GetData() + Seekable.Num()), Reference)
				<< "stream " << Index << (bParallel ? " in the pool" : " on one thread");
			EXPECT_EQ(std::vector<uint8>(ForwardOnly.GetData(), ForwardOnly.GetData() + ForwardOnly.Num()), Reference)
				<< "stream " << Index << " through an archive that can't seek";
		}
		// Jobs nobody waited for are dropped while their chunks may still be running.
		for (int Index = 0; Index < 8; ++Index)
		{
			FCompressedStreamJob Dropped(MixedContent(4 * Chunk, 99));
		}
	}
	FCompression::SetParallelCompression(true);
}
