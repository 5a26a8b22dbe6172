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

	// A buffered reader, or null when the file can't be opened or isn't a regular file. The caller deletes it.
	//  Filename: the file to read.
	//  ReadFlags: EFileRead bits, accepted for compatibility; none changes how a file is read here.
	virtual FArchive* CreateFileReader(const TCHAR* Filename, uint32 ReadFlags = 0) = 0;
	// A buffered writer, or null when the file can't be made. Missing folders are made. The file on disk is
	// replaced only when the writer closes, so that an interrupted write leaves the old file whole.
	//  Filename: the file to write; through a symbolic link the link's target is written and the link stays.
	//  WriteFlags: EFileWrite bits. NoReplaceExisting: null when the file exists. EvenIfReadOnly: write a file
	//   whose permissions forbid us, where the folder lets us replace it. Append: add to the end of the file,
	//   written as it goes. The other bits are accepted for compatibility.
	virtual FArchive* CreateFileWriter(const TCHAR* Filename, uint32 WriteFlags = 0) = 0;

	// Appends the bare names of the entries that match the wildcard of the last path piece ("*" and "?",
	// letter case ignored) directly in that folder: never "." or "..", no descent, none for an absent folder.
	//  FoundFiles: receives the names; what it held stays.
	//  Filename: the folder and the wildcard, as "<folder>/*.umap"; a bare wildcard looks in the working folder.
	//  bFiles: list files. bDirectories: list folders.
	virtual void FindFiles(TArray<FString>& FoundFiles, const TCHAR* Filename, bool bFiles, bool bDirectories) = 0;

	// Copies a regular file: COPY_OK, or COPY_Fail with the destination as it was. Missing folders are made and the
	// destination is replaced only once the copy is whole.
	//  Dest: the new file. Src: the file to copy.
	//  bReplace: overwrite an existing destination; false fails when it exists.
	//  bEvenIfReadOnly: accepted for compatibility; permissions are the system's to enforce.
	virtual uint32 Copy(const TCHAR* Dest, const TCHAR* Src, bool bReplace = true, bool bEvenIfReadOnly = false) = 0;
	// Renames a file or folder, copying and deleting when the two lie on different file systems. True on success.
	//  Dest: the new name; missing folders on the way are made. Src: the entry to move.
	//  bReplace: replace an existing destination; false fails when it exists.
	//  bEvenIfReadOnly: accepted for compatibility.
	virtual bool Move(const TCHAR* Dest, const TCHAR* Src, bool bReplace = true, bool bEvenIfReadOnly = false) = 0;
	// Deletes one file (a symbolic link itself, never its target). True when it is gone.
	//  Filename: the file.
	//  bRequireExists: a missing file is a failure; false lets it count as deleted.
	//  bEvenReadOnly, bQuiet: accepted for compatibility; nothing is logged either way.
	virtual bool Delete(const TCHAR* Filename, bool bRequireExists = false, bool bEvenReadOnly = false,
						bool bQuiet = false) = 0;
	// Makes a folder. True when it exists afterwards, also when it existed before.
	//  Path: the folder.
	//  bTree: make every missing folder on the way; false needs the parent to exist.
	virtual bool MakeDirectory(const TCHAR* Path, bool bTree = false) = 0;
	// Deletes a folder. True when it is gone.
	//  Path: the folder.
	//  bRequireExists: a missing folder is a failure; false lets it count as deleted.
	//  bTree: delete everything in it first, symbolic links as links; false deletes only an empty folder.
	virtual bool DeleteDirectory(const TCHAR* Path, bool bRequireExists = false, bool bTree = false) = 0;
	// The size in bytes of a regular file, or -1 when there is none at that path.
	virtual int64 FileSize(const TCHAR* Filename) = 0;
	// Whether a regular file (or a link to one) stands at that path.
	virtual bool FileExists(const TCHAR* Filename) = 0;
	// Whether a folder (or a link to one) stands at that path.
	virtual bool DirectoryExists(const TCHAR* Path) = 0;
};
