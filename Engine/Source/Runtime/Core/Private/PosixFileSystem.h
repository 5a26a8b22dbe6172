#pragma once

// The file system calls that the file manager and the platform file share; POSIX only.

#include "Containers/UnrealString.h"

#include <functional>
#include <string>

namespace PosixFileSystem
{
	std::string Native(const TCHAR* Path);
	std::string Native(const FString& Path);

	bool IsFile(const std::string& Path);
	bool IsDirectory(const std::string& Path);
	int64 FileSize(const std::string& Path);
	bool MakeDirectoryTree(const std::string& Path);
	bool DeleteFile(const std::string& Path);
	bool DeleteDirectory(const std::string& Path);
	bool DeleteDirectoryTree(const std::string& Path);
	// Copies Src to Dest by way of a temporary beside Dest, so that Dest is either the old or the new file.
	bool CopyFile(const std::string& Dest, const std::string& Src);
	bool MoveFile(const std::string& Dest, const std::string& Src, bool bReplace);

	// The file a path finally names: symbolic links of the last component are followed, also to a target
	// that doesn't exist yet, so that a save through a link updates the target and keeps the link.
	std::string ResolveLinks(const std::string& Path);
	// A unique name beside Path for a file that will be renamed onto it.
	std::string TemporarySibling(const std::string& Path);
	// Renames Temp onto Path; first syncs Temp when Path exists, so that the old contents are never lost to a
	// crash of the machine between the write and the rename. Keeps Path's permissions and, where it may, its owner.
	bool CommitTemporary(int Fd, const std::string& Temp, const std::string& Path);

	struct FEntry
	{
		std::string Name;
		bool bDirectory = false;
		bool bLink = false;
	};
	// The entries directly in Dir, without "." and "..", in the order the file system gives them.
	bool ListDirectory(const std::string& Dir, std::vector<FEntry>& OutEntries);
}
