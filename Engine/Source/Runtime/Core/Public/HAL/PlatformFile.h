#pragma once

#include "Containers/UnrealString.h"

#include <functional>

// The platform's file system, one call each.
class CORE_API IPlatformFile
{
public:
	class FDirectoryVisitor
	{
	public:
		virtual ~FDirectoryVisitor() = default;
		// Called for each entry with its full path; false stops the walk.
		virtual bool Visit(const TCHAR* FilenameOrDirectory, bool bIsDirectory) = 0;
	};

	virtual ~IPlatformFile() = default;

	virtual bool FileExists(const TCHAR* Filename) = 0;
	virtual bool DirectoryExists(const TCHAR* Directory) = 0;
	virtual int64 FileSize(const TCHAR* Filename) = 0;
	virtual bool DeleteFile(const TCHAR* Filename) = 0;
	virtual bool MoveFile(const TCHAR* To, const TCHAR* From) = 0;
	// Copies From over To, replacing an old file.
	virtual bool CopyFile(const TCHAR* To, const TCHAR* From) = 0;
	virtual bool CreateDirectory(const TCHAR* Directory) = 0;
	virtual bool CreateDirectoryTree(const TCHAR* Directory) = 0;
	virtual bool DeleteDirectory(const TCHAR* Directory) = 0;
	virtual bool DeleteDirectoryRecursively(const TCHAR* Directory) = 0;

	// Visits the entries directly in Directory, in the order the file system gives them.
	virtual bool IterateDirectory(const TCHAR* Directory, FDirectoryVisitor& Visitor) = 0;
	// Visits every file and folder below Directory, each folder before what it holds. The paths begin with
	// Directory as given. Links to folders are reported but not entered, so that a loop can't trap the walk.
	// Returns false when the visitor stopped the walk.
	virtual bool IterateDirectoryRecursively(const TCHAR* Directory, FDirectoryVisitor& Visitor) = 0;

	bool IterateDirectoryRecursively(const TCHAR* Directory, const std::function<bool(const TCHAR*, bool)>& Visit);
};

class CORE_API FPlatformFileManager
{
public:
	static FPlatformFileManager& Get();
	IPlatformFile& GetPlatformFile();
};
