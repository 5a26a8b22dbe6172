#pragma once

#include "Containers/UnrealString.h"
#include "Serialization/Archive.h"

enum EFileWrite
{
	FILEWRITE_None = 0x00,
	FILEWRITE_NoFail = 0x01,
	FILEWRITE_NoReplaceExisting = 0x02,
	FILEWRITE_EvenIfReadOnly = 0x04,
	FILEWRITE_Append = 0x08,
	FILEWRITE_AllowRead = 0x10,
};

enum EFileRead
{
	FILEREAD_None = 0x00,
	FILEREAD_NoFail = 0x01,
	FILEREAD_Silent = 0x02,
	FILEREAD_AllowWrite = 0x04,
};

enum ECopyResult
{
	COPY_OK = 0,
	COPY_Fail = 1,
	COPY_Canceled = 2,
};

// File operations on whole files and folders. Paths use "/"; text paths become UTF-8 at the system's edge.
class CORE_API IFileManager
{
public:
	static IFileManager& Get();
	virtual ~IFileManager() = default;

	// A buffered reader, or null when the file can't be opened. The caller deletes it.
	virtual FArchive* CreateFileReader(const TCHAR* Filename, uint32 ReadFlags = 0) = 0;
	// A buffered writer, or null when the file can't be made. Missing folders are made. The file on disk is
	// replaced only when the writer closes, so that an interrupted write leaves the old file whole.
	virtual FArchive* CreateFileWriter(const TCHAR* Filename, uint32 WriteFlags = 0) = 0;

	// Appends the bare names of the entries that match the wildcard of the last path piece ("*" and "?",
	// letter case ignored) directly in that folder: never "." or "..", no descent, none for an absent folder.
	virtual void FindFiles(TArray<FString>& FoundFiles, const TCHAR* Filename, bool bFiles, bool bDirectories) = 0;

	virtual uint32 Copy(const TCHAR* Dest, const TCHAR* Src, bool bReplace = true, bool bEvenIfReadOnly = false) = 0;
	virtual bool Move(const TCHAR* Dest, const TCHAR* Src, bool bReplace = true, bool bEvenIfReadOnly = false) = 0;
	virtual bool Delete(const TCHAR* Filename, bool bRequireExists = false, bool bEvenReadOnly = false,
						bool bQuiet = false) = 0;
	virtual bool MakeDirectory(const TCHAR* Path, bool bTree = false) = 0;
	virtual bool DeleteDirectory(const TCHAR* Path, bool bRequireExists = false, bool bTree = false) = 0;
	virtual int64 FileSize(const TCHAR* Filename) = 0;
	virtual bool FileExists(const TCHAR* Filename) = 0;
	virtual bool DirectoryExists(const TCHAR* Path) = 0;
};
