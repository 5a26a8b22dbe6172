#include "FileArchive.h"

#include <algorithm>
#include <cstring>

namespace
{
	constexpr size_t BufferSize = 64 * 1024;
}

using namespace FileSystem;

FArchiveFileReader::FArchiveFileReader(FNativeFile InFile, int64 InSize) : File(InFile), Size(InSize)
{
	bLoading = true;
}

FArchiveFileReader::~FArchiveFileReader()
{
	Close();
}

void FArchiveFileReader::Serialize(void* Data, int64 Num)
{
	uint8* Out = static_cast<uint8*>(Data);
	while (Num > 0)
	{
		const int64 BufferEnd = BufferStart + static_cast<int64>(Buffer.size());
		if (Position >= BufferStart && Position < BufferEnd)
		{
			const int64 Take = std::min<int64>(Num, BufferEnd - Position);
			std::memcpy(Out, Buffer.data() + (Position - BufferStart), static_cast<size_t>(Take));
			Out += Take;
			Num -= Take;
			Position += Take;
			continue;
		}
		if (File == InvalidFile || Position >= Size)
		{
			// Reading past the end is an error; the caller gets zeros rather than stale memory.
			std::memset(Out, 0, static_cast<size_t>(Num));
			SetError();
			return;
		}
		Buffer.resize(BufferSize);
		const int64 Got = ReadAt(File, Buffer.data(), static_cast<int64>(BufferSize), Position);
		if (Got <= 0)
		{
			Buffer.clear();
			std::memset(Out, 0, static_cast<size_t>(Num));
			SetError();
			return;
		}
		Buffer.resize(static_cast<size_t>(Got));
		BufferStart = Position;
	}
}

void FArchiveFileReader::Seek(int64 InPosition)
{
	Position = InPosition < 0 ? 0 : InPosition;
}

bool FArchiveFileReader::Close()
{
	if (File != InvalidFile)
	{
		CloseFile(File);
		File = InvalidFile;
	}
	return !IsError();
}

FArchiveFileWriter::FArchiveFileWriter(FNativeFile InFile, EMode InMode, FNativePath InTemporary, FNativePath InTarget)
	: File(InFile), Mode(InMode), Temporary(std::move(InTemporary)), Target(std::move(InTarget))
{
	bSaving = true;
	if (Mode == EMode::Append)
	{
		Position = std::max<int64>(SizeOf(File), 0);
	}
	if (Mode != EMode::InPlace)
	{
		Buffer.reserve(BufferSize);
	}
}

FArchiveFileWriter::~FArchiveFileWriter()
{
	// Callers in the engine's style end a file by deleting its archive, often without calling Close: what was
	// written is committed here, so that such a file still lands whole under its name. A writer that met an
	// error commits nothing and leaves the old file as it was.
	Close();
}

bool FArchiveFileWriter::WriteAll(const uint8* Data, int64 Num)
{
	int64 Offset = Position - static_cast<int64>(Buffer.size());
	while (Num > 0)
	{
		const int64 Put = WriteAt(File, Data, Num, Offset);
		if (Put <= 0)
		{
			SetError();
			return false;
		}
		Data += Put;
		Num -= Put;
		Offset += Put;
	}
	return true;
}

void FArchiveFileWriter::Serialize(void* Data, int64 Num)
{
	if (File == InvalidFile || Num <= 0)
	{
		if (Num > 0)
		{
			SetError();
		}
		return;
	}
	const uint8* In = static_cast<const uint8*>(Data);
	if (Mode == EMode::InPlace)
	{
		const size_t End = static_cast<size_t>(Position + Num);
		if (Image.size() < End)
		{
			Image.resize(End);
		}
		std::memcpy(Image.data() + Position, In, static_cast<size_t>(Num));
		Position += Num;
		return;
	}
	if (Buffer.size() + static_cast<size_t>(Num) > BufferSize)
	{
		Flush();
		if (static_cast<size_t>(Num) >= BufferSize)
		{
			// Large blocks go straight to the file.
			Position += Num;
			const int64 Start = Position - Num;
			int64 Offset = Start;
			while (Num > 0 && !IsError())
			{
				const int64 Put = WriteAt(File, In, Num, Offset);
				if (Put <= 0)
				{
					SetError();
					break;
				}
				In += Put;
				Num -= Put;
				Offset += Put;
			}
			return;
		}
	}
	Buffer.insert(Buffer.end(), In, In + Num);
	Position += Num;
}

void FArchiveFileWriter::Flush()
{
	if (File != InvalidFile && !Buffer.empty())
	{
		WriteAll(Buffer.data(), static_cast<int64>(Buffer.size()));
		Buffer.clear();
	}
}

int64 FArchiveFileWriter::TotalSize()
{
	if (Mode == EMode::InPlace)
	{
		return static_cast<int64>(Image.size());
	}
	Flush();
	const int64 End = File != InvalidFile ? SizeOf(File) : 0;
	return std::max<int64>(End, Position);
}

void FArchiveFileWriter::Seek(int64 InPosition)
{
	Flush();
	Position = InPosition < 0 ? 0 : InPosition;
}

bool FArchiveFileWriter::Close()
{
	if (File == InvalidFile)
	{
		return !IsError();
	}
	if (Mode == EMode::InPlace)
	{
		if (!CommitInPlace())
		{
			SetError();
		}
		return !IsError();
	}
	Flush();
	const FNativeFile Closing = File;
	File = InvalidFile;
	if (Mode == EMode::Append)
	{
		if (!CloseFile(Closing))
		{
			SetError();
		}
		return !IsError();
	}
	if (IsError())
	{
		// A failed write never replaces the old file.
		CloseFile(Closing);
		DeleteFile(Temporary);
		return false;
	}
	if (!CommitTemporary(Closing, Temporary, Target))
	{
		SetError();
	}
	return !IsError();
}

bool FArchiveFileWriter::CommitInPlace()
{
	const FNativeFile Closing = File;
	File = InvalidFile;
	bool bOk = !IsError();
	const int64 Size = static_cast<int64>(Image.size());
	// Room first: a disk that is full, or a size limit, fails here while the old bytes are all still there.
	if (bOk && Size > 0)
	{
		bOk = Reserve(Closing, Size);
	}
	for (int64 Offset = 0; bOk && Offset < Size;)
	{
		const int64 Put = WriteAt(Closing, Image.data() + Offset, Size - Offset, Offset);
		bOk = Put > 0;
		Offset += Put > 0 ? Put : 0;
	}
	bOk = bOk && Truncate(Closing, Size) && SyncData(Closing);
	bOk = CloseFile(Closing) && bOk;
	Image = std::vector<uint8>();
	return bOk;
}
