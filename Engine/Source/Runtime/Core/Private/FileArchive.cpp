#include "FileArchivePosix.h"

#include "PosixFileSystem.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace
{
	constexpr size_t BufferSize = 64 * 1024;
}

FArchiveFileReaderPosix::FArchiveFileReaderPosix(int InFd, int64 InSize) : Fd(InFd), Size(InSize)
{
	bLoading = true;
}

FArchiveFileReaderPosix::~FArchiveFileReaderPosix()
{
	Close();
}

void FArchiveFileReaderPosix::Serialize(void* Data, int64 Num)
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
		if (Fd < 0 || Position >= Size)
		{
			// Reading past the end is an error; the caller gets zeros rather than stale memory.
			std::memset(Out, 0, static_cast<size_t>(Num));
			SetError();
			return;
		}
		Buffer.resize(BufferSize);
		const ssize_t Got = pread(Fd, Buffer.data(), BufferSize, Position);
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

void FArchiveFileReaderPosix::Seek(int64 InPosition)
{
	Position = InPosition < 0 ? 0 : InPosition;
}

bool FArchiveFileReaderPosix::Close()
{
	if (Fd >= 0)
	{
		close(Fd);
		Fd = -1;
	}
	return !IsError();
}

FArchiveFileWriterPosix::FArchiveFileWriterPosix(int InFd, EMode InMode, std::string InTemporary, std::string InTarget)
	: Fd(InFd), Mode(InMode), Temporary(std::move(InTemporary)), Target(std::move(InTarget))
{
	bSaving = true;
	if (Mode == EMode::Append)
	{
		Position = lseek(Fd, 0, SEEK_END);
	}
	if (Mode != EMode::InPlace)
	{
		Buffer.reserve(BufferSize);
	}
}

FArchiveFileWriterPosix::~FArchiveFileWriterPosix()
{
	// Callers in the engine's style end a file by deleting its archive, often without calling Close: what was
	// written is committed here, so that such a file still lands whole under its name. A writer that met an
	// error commits nothing and leaves the old file as it was.
	Close();
}

bool FArchiveFileWriterPosix::WriteAll(const uint8* Data, int64 Num)
{
	int64 Offset = Position - static_cast<int64>(Buffer.size());
	while (Num > 0)
	{
		const ssize_t Put = pwrite(Fd, Data, static_cast<size_t>(Num), Offset);
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

void FArchiveFileWriterPosix::Serialize(void* Data, int64 Num)
{
	if (Fd < 0 || Num <= 0)
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
				const ssize_t Put = pwrite(Fd, In, static_cast<size_t>(Num), Offset);
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

void FArchiveFileWriterPosix::Flush()
{
	if (Fd >= 0 && !Buffer.empty())
	{
		WriteAll(Buffer.data(), static_cast<int64>(Buffer.size()));
		Buffer.clear();
	}
}

int64 FArchiveFileWriterPosix::TotalSize()
{
	if (Mode == EMode::InPlace)
	{
		return static_cast<int64>(Image.size());
	}
	Flush();
	const off_t End = Fd >= 0 ? lseek(Fd, 0, SEEK_END) : 0;
	return std::max<int64>(End, Position);
}

void FArchiveFileWriterPosix::Seek(int64 InPosition)
{
	Flush();
	Position = InPosition < 0 ? 0 : InPosition;
}

bool FArchiveFileWriterPosix::Close()
{
	if (Fd < 0)
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
	const int Closing = Fd;
	Fd = -1;
	if (Mode == EMode::Append)
	{
		if (close(Closing) != 0)
		{
			SetError();
		}
		return !IsError();
	}
	if (IsError())
	{
		// A failed write never replaces the old file.
		close(Closing);
		unlink(Temporary.c_str());
		return false;
	}
	if (!PosixFileSystem::CommitTemporary(Closing, Temporary, Target))
	{
		SetError();
	}
	return !IsError();
}

bool FArchiveFileWriterPosix::CommitInPlace()
{
	const int Closing = Fd;
	Fd = -1;
	bool bOk = !IsError();
	const off_t Size = static_cast<off_t>(Image.size());
	// Room first: a disk that is full, or a size limit, fails here while the old bytes are all still there.
	if (bOk && Size > 0)
	{
		const int Reserved = posix_fallocate(Closing, 0, Size);
		bOk = Reserved == 0 || Reserved == EOPNOTSUPP || Reserved == EINVAL;
	}
	for (off_t Offset = 0; bOk && Offset < Size;)
	{
		const ssize_t Put = pwrite(Closing, Image.data() + Offset, static_cast<size_t>(Size - Offset), Offset);
		bOk = Put > 0;
		Offset += Put > 0 ? Put : 0;
	}
	bOk = bOk && ftruncate(Closing, Size) == 0 && fdatasync(Closing) == 0;
	bOk = (close(Closing) == 0) && bOk;
	Image = std::vector<uint8>();
	return bOk;
}
