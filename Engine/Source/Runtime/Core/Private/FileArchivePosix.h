#pragma once

#include "Serialization/Archive.h"

#include <string>
#include <vector>

// Buffered reader of one file.
class FArchiveFileReaderPosix : public FArchive
{
public:
	FArchiveFileReaderPosix(int InFd, int64 InSize);
	~FArchiveFileReaderPosix() override;

	void Serialize(void* Data, int64 Num) override;
	int64 Tell() override { return Position; }
	int64 TotalSize() override { return Size; }
	void Seek(int64 InPosition) override;
	bool Close() override;

private:
	int Fd;
	int64 Size;
	int64 Position = 0;
	std::vector<uint8> Buffer;
	int64 BufferStart = 0; // file offset of Buffer[0]
};

// Buffered writer that writes a temporary beside its file and renames it into place when it closes.
class FArchiveFileWriterPosix : public FArchive
{
public:
	FArchiveFileWriterPosix(int InFd, std::string InTemporary, std::string InTarget, bool bInAppend);
	~FArchiveFileWriterPosix() override;

	void Serialize(void* Data, int64 Num) override;
	int64 Tell() override { return Position; }
	int64 TotalSize() override;
	void Seek(int64 InPosition) override;
	void Flush() override;
	bool Close() override;

private:
	bool WriteAll(const uint8* Data, int64 Num);

	int Fd;
	std::string Temporary; // empty when appending in place
	std::string Target;
	int64 Position = 0;
	std::vector<uint8> Buffer;
};
