#pragma once

// The file system calls that the file manager, the platform file and the file archives share, one set for
// each system (FileSystemPosix.cpp, FileSystemWindows.cpp). Paths reach the system in its own form: UTF-8
// bytes on POSIX, UTF-16 with backslashes on Windows.

#include "Containers/UnrealString.h"

#include <string>
#include <vector>

namespace FileSystem
{
#ifdef _WIN32
	using FNativePath = std::wstring;
	// An open file: a Windows HANDLE.
	using FNativeFile = void*;
	inline const FNativeFile InvalidFile = reinterpret_cast<void*>(static_cast<intptr_t>(-1));
#else
	using FNativePath = std::string;
	// An open file: a descriptor.
	using FNativeFile = int;
	inline constexpr FNativeFile InvalidFile = -1;
#endif

	FNativePath Native(const TCHAR* Path);
	FNativePath Native(const FString& Path);
	FString FromNative(const FNativePath& Path);
	// The folder part of a native path, empty when it has none.
	FNativePath ParentOf(const FNativePath& Path);
	FNativePath Child(const FNativePath& Dir, const FNativePath& Name);
	FString WorkingDirectory();

	// Something is there to read or write: links are followed.
	bool Exists(const FNativePath& Path);
	// Any entry by that name, a link itself included, also one that points nowhere.
	bool IsEntry(const FNativePath& Path);
	bool IsFile(const FNativePath& Path);
	bool IsDirectory(const FNativePath& Path);
	// True when our permissions let us write the file itself.
	bool IsWritable(const FNativePath& Path);
	int64 FileSize(const FNativePath& Path);
	bool MakeDirectory(const FNativePath& Path);
	bool MakeDirectoryTree(const FNativePath& Path);
	bool DeleteFile(const FNativePath& Path);
	bool DeleteDirectory(const FNativePath& Path);
	bool DeleteDirectoryTree(const FNativePath& Path);
	// Copies Src to Dest by way of a temporary beside Dest, so that Dest is either the old or the new file.
	bool CopyFile(const FNativePath& Dest, const FNativePath& Src);
	bool MoveFile(const FNativePath& Dest, const FNativePath& Src, bool bReplace);

	// The file a path finally names: symbolic links of the last component are followed, also to a target
	// that doesn't exist yet, so that a save through a link updates the target and keeps the link.
	FNativePath ResolveLinks(const FNativePath& Path);
	// A unique name beside Path for a file that will be renamed onto it.
	FNativePath TemporarySibling(const FNativePath& Path);
	// Closes File, which holds Temp, and renames Temp onto Path; first syncs Temp when Path exists, so that the
	// old contents are never lost to a crash of the machine between the write and the rename. Keeps what it may
	// of Path's permissions and owner. Temp is gone afterwards either way.
	bool CommitTemporary(FNativeFile File, const FNativePath& Temp, const FNativePath& Path);

	// Opening: InvalidFile on failure.
	// For reading a regular file; OutSize receives its size.
	FNativeFile OpenForRead(const FNativePath& Path, int64& OutSize);
	// A new file that must not exist yet.
	FNativeFile CreateNewFile(const FNativePath& Path);
	// An existing file for writing, without truncating it; with bCreate, made when missing.
	FNativeFile OpenForWrite(const FNativePath& Path, bool bCreate);
	// Reads or writes at an offset, not moving any shared position; the count done, or -1 on an error.
	int64 ReadAt(FNativeFile File, void* Data, int64 Num, int64 Offset);
	int64 WriteAt(FNativeFile File, const void* Data, int64 Num, int64 Offset);
	int64 SizeOf(FNativeFile File);
	// Secures room for Size bytes where the system can; true also where it has no such call.
	bool Reserve(FNativeFile File, int64 Size);
	bool Truncate(FNativeFile File, int64 Size);
	bool SyncData(FNativeFile File);
	bool CloseFile(FNativeFile File);

	struct FEntry
	{
		FNativePath Name;
		bool bDirectory = false;
		bool bLink = false;
	};
	// The entries directly in Dir, without "." and "..", in the order the file system gives them.
	bool ListDirectory(const FNativePath& Dir, std::vector<FEntry>& OutEntries);
}
