#pragma once

#include "Containers/UnrealString.h"

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

	void ByteOrderSerialize(void* Data, int64 Size) { Serialize(Data, Size); }

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
