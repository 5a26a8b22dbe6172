#pragma once

#include "FileSystem.h"
#include "Serialization/Archive.h"

#include <string>
#include <vector>

// Buffered reader of one file.
class FArchiveFileReader : public FArchive
{
public:
	FArchiveFileReader(FileSystem::FNativeFile InFile, int64 InSize);
	~FArchiveFileReader() override;

	void Serialize(void* Data, int64 Num) override;
	int64 Tell() override { return Position; }
	int64 TotalSize() override { return Size; }
	void Seek(int64 InPosition) override;
	bool Close() override;

private:
	FileSystem::FNativeFile File;
	int64 Size;
	int64 Position = 0;
	std::vector<uint8> Buffer;
	int64 BufferStart = 0; // file offset of Buffer[0]
};

// Buffered writer of one file. It commits when it closes, and closes when it is destroyed, so that a caller
// that only drops its writer still gets its file.
class FArchiveFileWriter : public FArchive
{
public:
	enum class EMode : uint8
	{
		// Writes a temporary beside the target and renames it onto the target: readers see the old file or
		// the new one, never a part.
		Replace,
		// Writes at the end of the target itself.
		Append,
		// For a target in a folder that takes no new files: the whole file is kept in memory and written over
		// the target at the close, after its room on disk is secured, so that a full disk fails before any
		// old byte is lost.
		InPlace,
	};
	// InFile is open on the temporary for Replace, on the target otherwise.
	FArchiveFileWriter(FileSystem::FNativeFile InFile, EMode InMode, FileSystem::FNativePath InTemporary,
					   FileSystem::FNativePath InTarget);
	~FArchiveFileWriter() override;

	void Serialize(void* Data, int64 Num) override;
	int64 Tell() override { return Position; }
	int64 TotalSize() override;
	void Seek(int64 InPosition) override;
	void Flush() override;
	bool Close() override;

private:
	bool WriteAll(const uint8* Data, int64 Num);
	bool CommitInPlace();

	FileSystem::FNativeFile File;
	EMode Mode;
	FileSystem::FNativePath Temporary; // only for Replace
	FileSystem::FNativePath Target;
	std::vector<uint8> Image; // the whole file, only for InPlace
	int64 Position = 0;
	std::vector<uint8> Buffer;
};
