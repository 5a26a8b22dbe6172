#pragma once

#include "Containers/UnrealString.h"
#include "Misc/Compression.h"

// A stream of bytes that either loads or saves. Numbers go through in little-endian order; the tool never
// swaps bytes. A failed operation sets the error flag and later reads give zeros.
class CORE_API FArchive
{
public:
	virtual ~FArchive() = default;

	virtual void Serialize(void* Data, int64 Num) = 0;
	virtual int64 Tell() { return INDEX_NONE; }
	virtual int64 TotalSize() { return INDEX_NONE; }
	virtual void Seek(int64 /*Position*/) {}
	virtual bool AtEnd()
	{
		const int64 Position = Tell();
		return Position != INDEX_NONE && Position >= TotalSize();
	}
	// Finishes the stream; true when everything reached its destination.
	virtual bool Close() { return !bError; }
	virtual void Flush() {}

	bool IsLoading() const { return bLoading; }
	bool IsSaving() const { return bSaving; }
	bool IsError() const { return bError; }
	void SetError() { bError = true; }
	bool IsByteSwapping() const { return false; }
	// Our archives are little-endian on every machine the kit runs on, so there is nothing to switch; callers
	// that ask for no swapping get what they ask for.
	void SetByteSwapping(bool /*bEnabled*/) {}

	void ByteOrderSerialize(void* Data, int64 Size) { Serialize(Data, Size); }

	// Saving: compresses Length bytes into this archive as a chunked stream: a tag record (tag, chunk size), a
	// summary record (sums of the chunk records), one record per chunk (compressed size, uncompressed size,
	// each a little-endian signed 64-bit number), then every chunk's zlib stream in order. Loading: reads such
	// a stream and inflates exactly Length bytes; a stream that is broken or doesn't hold Length bytes sets
	// the error flag and the output is zeros. With bTreatBufferAsFileReader, V is an FArchive* that the bytes
	// are read from (saving) or written to (loading) instead of memory.
	// A saving archive that can Seek gets its records filled in after the data, so memory stays at a few
	// chunks per core whatever the length; one that can't (Tell gives INDEX_NONE) holds the compressed
	// stream in memory until the end.
	void SerializeCompressed(void* V, int64 Length, ECompressionFlags Flags, bool bTreatBufferAsFileReader = false);

	friend FArchive& operator<<(FArchive& Ar, uint8& Value)
	{
		Ar.Serialize(&Value, 1);
		return Ar;
	}
	friend FArchive& operator<<(FArchive& Ar, int8& Value)
	{
		Ar.Serialize(&Value, 1);
		return Ar;
	}
	friend FArchive& operator<<(FArchive& Ar, uint16& Value) { return Ar.SerializeLittleEndian(Value); }
	friend FArchive& operator<<(FArchive& Ar, int16& Value) { return Ar.SerializeLittleEndian(Value); }
	friend FArchive& operator<<(FArchive& Ar, uint32& Value) { return Ar.SerializeLittleEndian(Value); }
	friend FArchive& operator<<(FArchive& Ar, int32& Value) { return Ar.SerializeLittleEndian(Value); }
	friend FArchive& operator<<(FArchive& Ar, uint64& Value) { return Ar.SerializeLittleEndian(Value); }
	friend FArchive& operator<<(FArchive& Ar, int64& Value) { return Ar.SerializeLittleEndian(Value); }
	friend FArchive& operator<<(FArchive& Ar, char16_t& Value) { return Ar.SerializeLittleEndian(Value); }

protected:
	bool bLoading = false;
	bool bSaving = false;
	bool bError = false;

private:
	template <typename T>
	FArchive& SerializeLittleEndian(T& Value)
	{
		uint8 Bytes[sizeof(T)];
		if (bSaving)
		{
			using U = std::make_unsigned_t<T>;
			const U Bits = static_cast<U>(Value);
			for (size_t Index = 0; Index < sizeof(T); ++Index)
			{
				Bytes[Index] = static_cast<uint8>(Bits >> (8 * Index));
			}
			Serialize(Bytes, sizeof(T));
		}
		else
		{
			Serialize(Bytes, sizeof(T));
			std::make_unsigned_t<T> Bits = 0;
			for (size_t Index = 0; Index < sizeof(T); ++Index)
			{
				Bits |= static_cast<std::make_unsigned_t<T>>(static_cast<std::make_unsigned_t<T>>(Bytes[Index]) << (8 * Index));
			}
			Value = static_cast<T>(Bits);
		}
		return *this;
	}
};

// Reads from or writes to an array in memory; for tests and for building a file before it is written.
class CORE_API FMemoryArchive : public FArchive
{
public:
	FMemoryArchive(TArray<uint8>& InBytes, bool bInLoading) : Bytes(InBytes)
	{
		bLoading = bInLoading;
		bSaving = !bInLoading;
	}

	void Serialize(void* Data, int64 Num) override;
	int64 Tell() override { return Offset; }
	int64 TotalSize() override { return Bytes.Num(); }
	void Seek(int64 Position) override { Offset = Position < 0 ? 0 : Position; }

private:
	TArray<uint8>& Bytes;
	int64 Offset = 0;
};
