#include "Misc/Compression.h"
#include "Serialization/Archive.h"

#include "CompressionWorkers.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <vector>
#include <zlib.h>

namespace
{
	std::atomic<bool> GParallelCompression{true};

	constexpr int64 ChunkSize = FCompression::LoadingCompressionChunkSize;
	constexpr int64 RecordSize = 16;
	// Records are written back in batches so that a huge stream never holds more than this many in memory.
	constexpr int64 RecordBatch = 256;
	// A stream from elsewhere may use another chunk size; anything beyond this is taken for a lie.
	constexpr int64 MaxLoadingChunkSize = 16 * 1024 * 1024;
	// Chunks in flight for each thread that compresses: enough to keep every core busy while the calling
	// thread reads and writes, few enough to keep memory small.
	constexpr int32 SlotsPerThread = 3;

	struct FRecord
	{
		int64 CompressedSize = 0;
		int64 UncompressedSize = 0;
	};

	void WriteRecord(FArchive& Ar, FRecord Record)
	{
		Ar << Record.CompressedSize << Record.UncompressedSize;
	}

	// Signals the end of each chunk's compression to the thread that writes them in order.
	struct FCompletion
	{
		std::mutex Mutex;
		std::condition_variable Done;
	};

	struct FChunkSlot
	{
		std::vector<uint8> Input; // only when the bytes come from a reader archive
		std::vector<uint8> Output;
		const uint8* InputData = nullptr;
		int32 InputSize = 0;
		int32 OutputSize = 0;
		bool bCompressed = false;
		bool bDone = false;
		FCompletion* Completion = nullptr;
	};

	void CompressSlot(FChunkSlot& Slot)
	{
		int32 OutputSize = static_cast<int32>(Slot.Output.size());
		Slot.bCompressed =
			FCompression::CompressMemory(COMPRESS_ZLIB, Slot.Output.data(), OutputSize, Slot.InputData, Slot.InputSize);
		Slot.OutputSize = Slot.bCompressed ? OutputSize : 0;
	}

	void RunSlotTask(void* Context)
	{
		FChunkSlot& Slot = *static_cast<FChunkSlot*>(Context);
		CompressSlot(Slot);
		// Notified under the lock: once the writer sees bDone it may destroy the completion.
		std::lock_guard<std::mutex> Lock(Slot.Completion->Mutex);
		Slot.bDone = true;
		Slot.Completion->Done.notify_all();
	}

	void WaitForSlot(FCompressionWorkers* Workers, FChunkSlot& Slot)
	{
		if (!Workers)
		{
			return;
		}
		FCompletion& Completion = *Slot.Completion;
		std::unique_lock<std::mutex> Lock(Completion.Mutex);
		while (!Slot.bDone)
		{
			// Rather than sit idle, the calling thread compresses chunks of its own that no worker has taken yet.
			Lock.unlock();
			const bool bRan = Workers->RunOneOf(&Completion);
			Lock.lock();
			if (!bRan && !Slot.bDone)
			{
				Completion.Done.wait(Lock);
			}
		}
	}

	// Where the records and the chunks go. A seekable archive gets zeroed records first and the real ones
	// written back over them in batches; an archive that can't seek gets everything at the end from memory.
	class FStreamSink
	{
	public:
		FStreamSink(FArchive& InAr, int64 InNumChunks) : Ar(InAr), NumChunks(InNumChunks)
		{
			HeaderPosition = Ar.Tell();
			bCanSeek = HeaderPosition != INDEX_NONE;
			int64 Tag = FCompression::PackageFileTag;
			int64 Size = ChunkSize;
			if (!bCanSeek)
			{
				return;
			}
			Ar << Tag << Size;
			// Summary and chunk records, all zero until the sizes are known.
			const std::vector<uint8> Zeros(static_cast<size_t>(std::min<int64>((NumChunks + 1) * RecordSize, 64 * 1024)));
			for (int64 Left = (NumChunks + 1) * RecordSize; Left > 0 && !Ar.IsError();)
			{
				const int64 Take = std::min<int64>(Left, static_cast<int64>(Zeros.size()));
				Ar.Serialize(const_cast<uint8*>(Zeros.data()), Take);
				Left -= Take;
			}
		}

		void AddChunk(const uint8* Data, int32 Compressed, int32 Uncompressed)
		{
			Summary.CompressedSize += Compressed;
			Summary.UncompressedSize += Uncompressed;
			Pending.push_back({Compressed, Uncompressed});
			if (!bCanSeek)
			{
				Held.insert(Held.end(), Data, Data + Compressed);
				return;
			}
			Ar.Serialize(const_cast<uint8*>(Data), Compressed);
			if (static_cast<int64>(Pending.size()) >= RecordBatch)
			{
				WritePendingRecords();
			}
		}

		void Finish()
		{
			if (!bCanSeek)
			{
				int64 Tag = FCompression::PackageFileTag;
				int64 Size = ChunkSize;
				Ar << Tag << Size;
				WriteRecord(Ar, Summary);
				for (const FRecord& Record : Pending)
				{
					WriteRecord(Ar, Record);
				}
				Ar.Serialize(Held.data(), static_cast<int64>(Held.size()));
				return;
			}
			WritePendingRecords();
			const int64 End = Ar.Tell();
			Ar.Seek(HeaderPosition + RecordSize);
			WriteRecord(Ar, Summary);
			Ar.Seek(End);
		}

	private:
		void WritePendingRecords()
		{
			if (Pending.empty())
			{
				return;
			}
			const int64 End = Ar.Tell();
			Ar.Seek(HeaderPosition + 2 * RecordSize + RecordsWritten * RecordSize);
			for (const FRecord& Record : Pending)
			{
				WriteRecord(Ar, Record);
			}
			RecordsWritten += static_cast<int64>(Pending.size());
			Pending.clear();
			Ar.Seek(End);
		}

		FArchive& Ar;
		int64 NumChunks;
		int64 HeaderPosition = INDEX_NONE;
		bool bCanSeek = false;
		FRecord Summary;
		std::vector<FRecord> Pending;
		int64 RecordsWritten = 0;
		std::vector<uint8> Held;
	};

	// Reads chunks from the source, hands them to the workers, and writes each result as soon as it and all
	// before it are done, so that reading, compressing and writing overlap.
	void SaveCompressed(FArchive& Ar, const uint8* Memory, FArchive* Reader, int64 Length)
	{
		const int64 NumChunks = (Length + ChunkSize - 1) / ChunkSize;
		FStreamSink Sink(Ar, NumChunks);

		FCompressionWorkers* Workers =
			FCompression::IsParallelCompression() && NumChunks > 1 ? &FCompressionWorkers::Get() : nullptr;
		const int64 NumSlots =
			Workers ? std::min<int64>(NumChunks, SlotsPerThread * static_cast<int64>(Workers->Num() + 1)) : 1;
		const int32 OutputBound = FCompression::CompressMemoryBound(COMPRESS_ZLIB, static_cast<int32>(ChunkSize));

		FCompletion Completion;
		std::vector<FChunkSlot> Slots(static_cast<size_t>(std::max<int64>(NumSlots, 1)));
		for (FChunkSlot& Slot : Slots)
		{
			Slot.Output.resize(static_cast<size_t>(OutputBound));
			if (Reader)
			{
				Slot.Input.resize(static_cast<size_t>(std::min(ChunkSize, Length)));
			}
			Slot.Completion = &Completion;
		}

		int64 ChunksToRead = NumChunks;
		int64 NextRead = 0;
		int64 NextWrite = 0;
		while (NextWrite < ChunksToRead)
		{
			while (NextRead < ChunksToRead && NextRead - NextWrite < NumSlots)
			{
				FChunkSlot& Slot = Slots[static_cast<size_t>(NextRead % NumSlots)];
				const int64 Offset = NextRead * ChunkSize;
				Slot.InputSize = static_cast<int32>(std::min(ChunkSize, Length - Offset));
				if (Reader)
				{
					Reader->Serialize(Slot.Input.data(), Slot.InputSize);
					Slot.InputData = Slot.Input.data();
				}
				else
				{
					Slot.InputData = Memory + Offset;
				}
				Slot.bDone = false;
				if (Workers)
				{
					Workers->Submit({&RunSlotTask, &Slot, &Completion});
				}
				else
				{
					CompressSlot(Slot);
					Slot.bDone = true;
				}
				++NextRead;
			}

			FChunkSlot& Slot = Slots[static_cast<size_t>(NextWrite % NumSlots)];
			WaitForSlot(Workers, Slot);
			if (!Slot.bCompressed)
			{
				Ar.SetError();
			}
			Sink.AddChunk(Slot.Output.data(), Slot.OutputSize, Slot.InputSize);
			++NextWrite;
			if (Ar.IsError() || (Reader && Reader->IsError()))
			{
				// Stop reading; the chunks already handed out still finish before their slots go away.
				ChunksToRead = NextRead;
			}
		}
		Sink.Finish();
		if (Reader && Reader->IsError())
		{
			Ar.SetError();
		}
	}

	bool LoadCompressedStream(FArchive& Ar, uint8* Memory, FArchive* Writer, int64 Length)
	{
		FCompressedStreamRecords Stream;
		if (!FCompression::ReadStreamRecords(Ar, Stream).IsEmpty() || Stream.UncompressedSize != Length)
		{
			return false;
		}
		const std::vector<FCompressedStreamRecords::FChunk>& Records = Stream.Chunks;

		std::vector<uint8> Input;
		std::vector<uint8> Output;
		int64 Offset = 0;
		for (const FCompressedStreamRecords::FChunk& Record : Records)
		{
			Input.resize(static_cast<size_t>(Record.CompressedSize));
			Ar.Serialize(Input.data(), Record.CompressedSize);
			if (Ar.IsError())
			{
				return false;
			}
			uint8* Destination = Memory ? Memory + Offset : nullptr;
			if (!Destination)
			{
				Output.resize(static_cast<size_t>(Record.UncompressedSize));
				Destination = Output.data();
			}
			if (!FCompression::UncompressMemory(COMPRESS_ZLIB, Destination, static_cast<int32>(Record.UncompressedSize),
												Input.data(), static_cast<int32>(Record.CompressedSize)))
			{
				return false;
			}
			if (Writer)
			{
				Writer->Serialize(Destination, Record.UncompressedSize);
				if (Writer->IsError())
				{
					return false;
				}
			}
			Offset += Record.UncompressedSize;
		}
		return true;
	}
}

struct FCompressedStreamJob::FState
{
	std::vector<uint8> Input;
	FCompletion Completion;
	std::vector<FChunkSlot> Slots;
	FCompressionWorkers* Workers = nullptr;
};

FCompressedStreamJob::FCompressedStreamJob(std::vector<uint8> Input) : State(new FState)
{
	State->Input = std::move(Input);
	const int64 Length = static_cast<int64>(State->Input.size());
	State->Slots.resize(static_cast<size_t>((Length + ChunkSize - 1) / ChunkSize));
	State->Workers = FCompression::IsParallelCompression() ? &FCompressionWorkers::Get() : nullptr;
	// Every slot is in place before the first goes to the pool: the vector must not move under a worker. Each
	// output has the room its own chunk may need, so that many small files held ahead stay small.
	int64 Offset = 0;
	for (FChunkSlot& Slot : State->Slots)
	{
		Slot.InputData = State->Input.data() + Offset;
		Slot.InputSize = static_cast<int32>(std::min(ChunkSize, Length - Offset));
		Slot.Output.resize(static_cast<size_t>(FCompression::CompressMemoryBound(COMPRESS_ZLIB, Slot.InputSize)));
		Slot.Completion = &State->Completion;
		Offset += Slot.InputSize;
	}
	for (FChunkSlot& Slot : State->Slots)
	{
		if (State->Workers)
		{
			State->Workers->Submit({&RunSlotTask, &Slot, &State->Completion});
		}
		else
		{
			CompressSlot(Slot);
			Slot.bDone = true;
		}
	}
}

FCompressedStreamJob::~FCompressedStreamJob()
{
	Wait();
	delete State;
}

int64 FCompressedStreamJob::GetInputSize() const
{
	return static_cast<int64>(State->Input.size());
}

int64 FCompressedStreamJob::GetHeldBytes() const
{
	int64 Bytes = static_cast<int64>(State->Input.size());
	for (const FChunkSlot& Slot : State->Slots)
	{
		Bytes += static_cast<int64>(Slot.Output.size());
	}
	return Bytes;
}

bool FCompressedStreamJob::Wait()
{
	bool bCompressed = true;
	for (FChunkSlot& Slot : State->Slots)
	{
		WaitForSlot(State->Workers, Slot);
		bCompressed = bCompressed && Slot.bCompressed;
	}
	return bCompressed;
}

void FCompressedStreamJob::WriteTo(FArchive& Ar)
{
	Wait();
	FStreamSink Sink(Ar, static_cast<int64>(State->Slots.size()));
	for (const FChunkSlot& Slot : State->Slots)
	{
		if (!Slot.bCompressed)
		{
			Ar.SetError();
		}
		Sink.AddChunk(Slot.Output.data(), Slot.OutputSize, Slot.InputSize);
	}
	Sink.Finish();
}

FString FCompression::ReadStreamRecords(FArchive& Ar, FCompressedStreamRecords& Out)
{
	int64 Tag = 0;
	Out = FCompressedStreamRecords();
	Ar << Tag << Out.ChunkSize << Out.CompressedSize << Out.UncompressedSize;
	if (Ar.IsError())
	{
		return TEXT("the stream ends inside its two leading records");
	}
	if (Tag != PackageFileTag)
	{
		return FString::Printf(TEXT("tag 0x%llX where a compressed package begins with 0x%llX"), static_cast<unsigned long long>(Tag),
							   static_cast<unsigned long long>(PackageFileTag));
	}
	if (Out.ChunkSize <= 0 || Out.ChunkSize > MaxLoadingChunkSize)
	{
		return FString::Printf(TEXT("chunk size %lld is outside 1 to %lld"), Out.ChunkSize, MaxLoadingChunkSize);
	}
	if (Out.CompressedSize < 0 || Out.UncompressedSize < 0)
	{
		return FString::Printf(TEXT("the summary record says %lld compressed and %lld uncompressed bytes"), Out.CompressedSize,
							   Out.UncompressedSize);
	}
	const int64 MaxCompressedChunk = CompressMemoryBound(COMPRESS_ZLIB, static_cast<int32>(Out.ChunkSize));
	int64 Compressed = 0;
	int64 Uncompressed = 0;
	while (Uncompressed < Out.UncompressedSize)
	{
		FCompressedStreamRecords::FChunk Record;
		Ar << Record.CompressedSize << Record.UncompressedSize;
		const int64 Number = static_cast<int64>(Out.Chunks.size()) + 1;
		if (Ar.IsError())
		{
			return FString::Printf(TEXT("the stream ends inside chunk record %lld, with %lld of the summary's %lld bytes recorded"), Number,
								   Uncompressed, Out.UncompressedSize);
		}
		if (Record.UncompressedSize <= 0 || Record.UncompressedSize > Out.ChunkSize ||
			Record.UncompressedSize > Out.UncompressedSize - Uncompressed)
		{
			return FString::Printf(TEXT("chunk record %lld says %lld uncompressed bytes (chunk size %lld, %lld left of the summary's %lld)"),
								   Number, Record.UncompressedSize, Out.ChunkSize, Out.UncompressedSize - Uncompressed,
								   Out.UncompressedSize);
		}
		if (Record.CompressedSize <= 0 || Record.CompressedSize > MaxCompressedChunk ||
			Record.CompressedSize > Out.CompressedSize - Compressed)
		{
			return FString::Printf(TEXT("chunk record %lld says %lld compressed bytes (at most %lld for a chunk, %lld left of the summary's %lld)"),
								   Number, Record.CompressedSize, MaxCompressedChunk, Out.CompressedSize - Compressed,
								   Out.CompressedSize);
		}
		Out.Chunks.push_back(Record);
		Compressed += Record.CompressedSize;
		Uncompressed += Record.UncompressedSize;
	}
	if (Compressed != Out.CompressedSize)
	{
		return FString::Printf(TEXT("the chunk records add up to %lld compressed bytes, the summary says %lld"), Compressed,
							   Out.CompressedSize);
	}
	const int64 Position = Ar.Tell();
	const int64 Total = Ar.TotalSize();
	if (Position != INDEX_NONE && Total != INDEX_NONE && Out.CompressedSize > Total - Position)
	{
		return FString::Printf(TEXT("the records promise %lld compressed bytes, the stream holds %lld after them"), Out.CompressedSize,
							   Total - Position);
	}
	return FString();
}

void FCompression::SetParallelCompression(bool bEnabled)
{
	GParallelCompression = bEnabled;
}

bool FCompression::IsParallelCompression()
{
	return GParallelCompression;
}

void FArchive::SerializeCompressed(void* V, int64 Length, ECompressionFlags Flags, bool bTreatBufferAsFileReader)
{
	if (!(Flags & COMPRESS_ZLIB) || Length < 0 || (Length > 0 && !V))
	{
		SetError();
		return;
	}
	uint8* Memory = bTreatBufferAsFileReader ? nullptr : static_cast<uint8*>(V);
	FArchive* Other = bTreatBufferAsFileReader ? static_cast<FArchive*>(V) : nullptr;
	if (IsSaving())
	{
		SaveCompressed(*this, Memory, Other, Length);
	}
	else if (IsLoading())
	{
		if (!LoadCompressedStream(*this, Memory, Other, Length))
		{
			SetError();
			if (Memory && Length > 0)
			{
				std::memset(Memory, 0, static_cast<size_t>(Length));
			}
		}
	}
}
