#include "FileSystem.h"

#include "Windows/WindowsApi.h"

#include <atomic>

namespace FileSystem
{
	namespace
	{
		// The classic limit on a path's length; longer absolute paths go through the "\\?\" form, which knows
		// no such limit but takes only full paths with backslashes.
		constexpr size_t ClassicPathLimit = MAX_PATH - 12;
		const FNativePath LongPrefix = L"\\\\?\\";

		bool IsSeparator(wchar_t Char) { return Char == L'\\' || Char == L'/'; }

		FNativePath LongForm(const FNativePath& Path)
		{
			if (Path.size() < ClassicPathLimit || Path.rfind(LongPrefix, 0) == 0)
			{
				return Path;
			}
			const DWORD Needed = GetFullPathNameW(Path.c_str(), 0, nullptr, nullptr);
			if (Needed == 0)
			{
				return Path;
			}
			FNativePath Full(Needed, L'\0');
			const DWORD Written = GetFullPathNameW(Path.c_str(), Needed, Full.data(), nullptr);
			Full.resize(Written);
			if (Full.rfind(L"\\\\", 0) == 0)
			{
				return LongPrefix + L"UNC\\" + Full.substr(2);
			}
			return LongPrefix + Full;
		}

		DWORD Attributes(const FNativePath& Path)
		{
			return Path.empty() ? INVALID_FILE_ATTRIBUTES : GetFileAttributesW(Path.c_str());
		}

		// The length of the part of a path that names no folder to make: the prefix, a drive, a server share.
		size_t RootLength(const FNativePath& Path)
		{
			size_t Start = 0;
			if (Path.rfind(LongPrefix + L"UNC\\", 0) == 0)
			{
				Start = LongPrefix.size() + 4;
			}
			else if (Path.rfind(LongPrefix, 0) == 0)
			{
				Start = LongPrefix.size();
			}
			else if (Path.size() >= 2 && IsSeparator(Path[0]) && IsSeparator(Path[1]))
			{
				Start = 2;
			}
			if (Start > 0 && Start != LongPrefix.size())
			{
				// A server and its share.
				size_t Slashes = 0;
				while (Start < Path.size() && Slashes < 2)
				{
					Slashes += IsSeparator(Path[Start++]) ? 1 : 0;
				}
				return Start;
			}
			if (Path.size() >= Start + 2 && Path[Start + 1] == L':')
			{
				return Start + 2 + (Path.size() > Start + 2 && IsSeparator(Path[Start + 2]) ? 1 : 0);
			}
			return Start + (Path.size() > Start && IsSeparator(Path[Start]) ? 1 : 0);
		}

		// Another program may hold a file for a moment: a virus scanner or an indexer that opened it, or the game
		// reading a package. A move onto or from such a file is tried again for about two seconds before it
		// fails. A denial for good (a running program's file, a folder's permissions) looks the same and waits as
		// long; that is rare, and it still fails.
		bool MoveRetryingWhileHeld(const FNativePath& From, const FNativePath& To, DWORD Flags)
		{
			for (int Attempt = 0;; ++Attempt)
			{
				if (MoveFileExW(From.c_str(), To.c_str(), Flags))
				{
					return true;
				}
				const DWORD Error = GetLastError();
				// A folder in the way is denied as well, but for good.
				const DWORD Target = GetFileAttributesW(To.c_str());
				const bool bHeld = Error == ERROR_SHARING_VIOLATION || Error == ERROR_LOCK_VIOLATION ||
								   (Error == ERROR_ACCESS_DENIED && (Target == INVALID_FILE_ATTRIBUTES || !(Target & FILE_ATTRIBUTE_DIRECTORY)));
				if (!bHeld || Attempt == 40)
				{
					SetLastError(Error);
					return false;
				}
				Sleep(50);
			}
		}

		// Our calls read a read-only file's name as "not ours to write", as POSIX permissions do; a delete or a
		// replace that POSIX allows in a folder we may write has to take the flag off first.
		void ClearReadOnly(const FNativePath& Path)
		{
			const DWORD Old = Attributes(Path);
			if (Old != INVALID_FILE_ATTRIBUTES && (Old & FILE_ATTRIBUTE_READONLY))
			{
				SetFileAttributesW(Path.c_str(), Old & ~FILE_ATTRIBUTE_READONLY);
			}
		}
	}

	FNativePath Native(const TCHAR* Path)
	{
		FNativePath Result = Path ? FNativePath(WindowsApi::Wide(Path)) : FNativePath();
		for (wchar_t& Char : Result)
		{
			Char = Char == L'/' ? L'\\' : Char;
		}
		return LongForm(Result);
	}

	FNativePath Native(const FString& Path)
	{
		return Native(*Path);
	}

	FString FromNative(const FNativePath& Path)
	{
		FString Result;
		if (Path.rfind(LongPrefix + L"UNC\\", 0) == 0)
		{
			// "\\?\UNC\server\share" is "\\server\share".
			Result = FString(TEXT("\\\\")) + FString(WindowsApi::Ours(Path.c_str() + LongPrefix.size() + 4));
		}
		else
		{
			const size_t Skip = Path.rfind(LongPrefix, 0) == 0 ? LongPrefix.size() : 0;
			Result = FString(WindowsApi::Ours(Path.c_str() + Skip));
		}
		Result.ReplaceInline(TEXT("\\"), TEXT("/"));
		return Result;
	}

	FNativePath ParentOf(const FNativePath& Path)
	{
		size_t Separator = Path.size();
		while (Separator > 0 && !IsSeparator(Path[Separator - 1]))
		{
			--Separator;
		}
		if (Separator <= RootLength(Path))
		{
			return Separator == 0 ? FNativePath() : Path.substr(0, RootLength(Path));
		}
		return Path.substr(0, Separator - 1);
	}

	FNativePath Child(const FNativePath& Dir, const FNativePath& Name)
	{
		// A short folder can hold a name that makes the whole path long.
		return LongForm(Dir.empty() || IsSeparator(Dir.back()) ? Dir + Name : Dir + L"\\" + Name);
	}

	FString WorkingDirectory()
	{
		const DWORD Needed = GetCurrentDirectoryW(0, nullptr);
		FNativePath Buffer(Needed, L'\0');
		const DWORD Written = Needed ? GetCurrentDirectoryW(Needed, Buffer.data()) : 0;
		if (Written == 0 || Written >= Needed)
		{
			return FString(TEXT("/"));
		}
		Buffer.resize(Written);
		return FromNative(Buffer);
	}

	bool Exists(const FNativePath& Path)
	{
		return Attributes(Path) != INVALID_FILE_ATTRIBUTES;
	}

	bool IsEntry(const FNativePath& Path)
	{
		return Exists(Path);
	}

	bool IsFile(const FNativePath& Path)
	{
		const DWORD Found = Attributes(Path);
		return Found != INVALID_FILE_ATTRIBUTES && !(Found & FILE_ATTRIBUTE_DIRECTORY);
	}

	bool IsDirectory(const FNativePath& Path)
	{
		const DWORD Found = Attributes(Path);
		return Found != INVALID_FILE_ATTRIBUTES && (Found & FILE_ATTRIBUTE_DIRECTORY);
	}

	bool IsWritable(const FNativePath& Path)
	{
		const DWORD Found = Attributes(Path);
		return Found != INVALID_FILE_ATTRIBUTES && !(Found & FILE_ATTRIBUTE_READONLY);
	}

	int64 FileSize(const FNativePath& Path)
	{
		WIN32_FILE_ATTRIBUTE_DATA Data;
		if (Path.empty() || !GetFileAttributesExW(Path.c_str(), GetFileExInfoStandard, &Data) ||
			(Data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
		{
			return -1;
		}
		return (static_cast<int64>(Data.nFileSizeHigh) << 32) | Data.nFileSizeLow;
	}

	bool MakeDirectory(const FNativePath& Path)
	{
		return (!Path.empty() && CreateDirectoryW(Path.c_str(), nullptr)) || IsDirectory(Path);
	}

	bool MakeDirectoryTree(const FNativePath& Path)
	{
		if (Path.empty())
		{
			return false;
		}
		if (IsDirectory(Path))
		{
			return true;
		}
		for (size_t Index = RootLength(Path); Index < Path.size(); ++Index)
		{
			if (IsSeparator(Path[Index]) && Index > 0 && !IsSeparator(Path[Index - 1]))
			{
				CreateDirectoryW(Path.substr(0, Index).c_str(), nullptr);
			}
		}
		return MakeDirectory(Path);
	}

	bool DeleteFile(const FNativePath& Path)
	{
		const DWORD Found = Attributes(Path);
		if (Found == INVALID_FILE_ATTRIBUTES || (Found & FILE_ATTRIBUTE_DIRECTORY))
		{
			return false;
		}
		ClearReadOnly(Path);
		return DeleteFileW(Path.c_str());
	}

	bool DeleteDirectory(const FNativePath& Path)
	{
		return RemoveDirectoryW(Path.c_str());
	}

	bool DeleteDirectoryTree(const FNativePath& Root)
	{
		if (!IsDirectory(Root))
		{
			return false;
		}
		if (Attributes(Root) & FILE_ATTRIBUTE_REPARSE_POINT)
		{
			// A link or junction to a folder goes as a link; what it points to stays, as on POSIX.
			return RemoveDirectoryW(Root.c_str());
		}
		// Depth-first without recursion: a folder is removed once everything in it is gone.
		struct FPending
		{
			FNativePath Path;
			bool bListed = false;
		};
		std::vector<FPending> Stack{{Root, false}};
		bool bAll = true;
		while (!Stack.empty())
		{
			FPending& Top = Stack.back();
			if (Top.bListed)
			{
				bAll = RemoveDirectoryW(Top.Path.c_str()) && bAll;
				Stack.pop_back();
				continue;
			}
			Top.bListed = true;
			const FNativePath Dir = Top.Path;
			std::vector<FEntry> Entries;
			ListDirectory(Dir, Entries);
			for (const FEntry& Entry : Entries)
			{
				const FNativePath ChildPath = Child(Dir, Entry.Name);
				if (Entry.bDirectory && !Entry.bLink)
				{
					Stack.push_back({ChildPath, false});
				}
				else if (Entry.bDirectory)
				{
					// A link to a folder goes as a link; what it points to stays.
					bAll = RemoveDirectoryW(ChildPath.c_str()) && bAll;
				}
				else
				{
					bAll = DeleteFile(ChildPath) && bAll;
				}
			}
		}
		return bAll;
	}

	FNativePath TemporarySibling(const FNativePath& Path)
	{
		static std::atomic<unsigned> Counter{0};
		size_t Separator = Path.size();
		while (Separator > 0 && !IsSeparator(Path[Separator - 1]))
		{
			--Separator;
		}
		return LongForm(Path.substr(0, Separator) + L"." + Path.substr(Separator) + L".tmp" +
						std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(Counter++));
	}

	FNativePath ResolveLinks(const FNativePath& Path)
	{
		// Making links on Windows takes a privilege that mod authors rarely hold; a replace there goes onto
		// the name as it is.
		return Path;
	}

	bool CommitTemporary(FNativeFile File, const FNativePath& Temp, const FNativePath& Path)
	{
		const DWORD Old = Attributes(Path);
		// Only a replace syncs, for the same reason as on every system: the old contents must not be lost.
		bool bOk = Old == INVALID_FILE_ATTRIBUTES || FlushFileBuffers(File);
		bOk = CloseHandle(File) && bOk;
		if (bOk && Old != INVALID_FILE_ATTRIBUTES)
		{
			// The new file takes the old one's attributes; a read-only flag has to be off for the replace.
			ClearReadOnly(Path);
			bOk = MoveRetryingWhileHeld(Temp, Path, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
			SetFileAttributesW(Path.c_str(), Old);
		}
		else if (bOk)
		{
			bOk = MoveRetryingWhileHeld(Temp, Path, 0);
		}
		if (!bOk)
		{
			DeleteFileW(Temp.c_str());
		}
		return bOk;
	}

	bool CopyFile(const FNativePath& Dest, const FNativePath& Src)
	{
		int64 Size = 0;
		const FNativeFile In = OpenForRead(Src, Size);
		if (In == InvalidFile)
		{
			return false;
		}
		if (IsDirectory(Dest))
		{
			CloseHandle(In);
			return false;
		}
		if (const FNativePath Parent = ParentOf(Dest); !Parent.empty())
		{
			MakeDirectoryTree(Parent);
		}
		const FNativePath Temp = TemporarySibling(Dest);
		const FNativeFile Out = CreateNewFile(Temp);
		if (Out == InvalidFile)
		{
			CloseHandle(In);
			return false;
		}
		std::vector<char> Buffer(1 << 20);
		bool bOk = true;
		for (int64 Offset = 0; bOk && Offset < Size;)
		{
			const int64 Got = ReadAt(In, Buffer.data(), static_cast<int64>(Buffer.size()), Offset);
			bOk = Got > 0;
			for (int64 Written = 0; bOk && Written < Got;)
			{
				const int64 Put = WriteAt(Out, Buffer.data() + Written, Got - Written, Offset + Written);
				bOk = Put > 0;
				Written += bOk ? Put : 0;
			}
			Offset += bOk ? Got : 0;
		}
		CloseHandle(In);
		if (!bOk)
		{
			CloseHandle(Out);
			DeleteFileW(Temp.c_str());
			return false;
		}
		return CommitTemporary(Out, Temp, Dest);
	}

	bool MoveFile(const FNativePath& Dest, const FNativePath& Src, bool bReplace)
	{
		// A rename that only changes the letter case names the source itself as the destination.
		const bool bSameFile = CompareStringOrdinal(Src.c_str(), -1, Dest.c_str(), -1, TRUE) == CSTR_EQUAL;
		if (!Exists(Src) || (!bReplace && Exists(Dest) && !bSameFile))
		{
			return false;
		}
		if (const FNativePath Parent = ParentOf(Dest); !Parent.empty())
		{
			MakeDirectoryTree(Parent);
		}
		// A read-only file in the way is replaced, as POSIX replaces it; it keeps its flag if the move fails.
		const DWORD Old = bReplace && !bSameFile ? Attributes(Dest) : INVALID_FILE_ATTRIBUTES;
		const bool bWasReadOnly = Old != INVALID_FILE_ATTRIBUTES && (Old & FILE_ATTRIBUTE_READONLY) && !(Old & FILE_ATTRIBUTE_DIRECTORY);
		if (bWasReadOnly)
		{
			ClearReadOnly(Dest);
		}
		// Another volume is copied and then deleted, as a rename across file systems is elsewhere.
		const bool bMoved = MoveRetryingWhileHeld(Src, Dest, (bReplace ? MOVEFILE_REPLACE_EXISTING : 0) | MOVEFILE_COPY_ALLOWED);
		if (!bMoved && bWasReadOnly)
		{
			SetFileAttributesW(Dest.c_str(), Old);
		}
		return bMoved;
	}

	FNativeFile OpenForRead(const FNativePath& Path, int64& OutSize)
	{
		const HANDLE File = CreateFileW(Path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
										nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
		if (File == INVALID_HANDLE_VALUE)
		{
			return InvalidFile;
		}
		LARGE_INTEGER Size;
		if (GetFileType(File) != FILE_TYPE_DISK || !GetFileSizeEx(File, &Size))
		{
			CloseHandle(File);
			return InvalidFile;
		}
		OutSize = Size.QuadPart;
		return File;
	}

	FNativeFile CreateNewFile(const FNativePath& Path)
	{
		return CreateFileW(Path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
						   CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
	}

	FNativeFile OpenForWrite(const FNativePath& Path, bool bCreate)
	{
		return CreateFileW(Path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
						   bCreate ? OPEN_ALWAYS : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
	}

	int64 ReadAt(FNativeFile File, void* Data, int64 Num, int64 Offset)
	{
		OVERLAPPED At{};
		At.Offset = static_cast<DWORD>(Offset);
		At.OffsetHigh = static_cast<DWORD>(Offset >> 32);
		DWORD Got = 0;
		const DWORD Asked = static_cast<DWORD>(Num < (int64(1) << 30) ? Num : (int64(1) << 30));
		if (!ReadFile(File, Data, Asked, &Got, &At))
		{
			return GetLastError() == ERROR_HANDLE_EOF ? 0 : -1;
		}
		return Got;
	}

	int64 WriteAt(FNativeFile File, const void* Data, int64 Num, int64 Offset)
	{
		OVERLAPPED At{};
		At.Offset = static_cast<DWORD>(Offset);
		At.OffsetHigh = static_cast<DWORD>(Offset >> 32);
		DWORD Put = 0;
		const DWORD Asked = static_cast<DWORD>(Num < (int64(1) << 30) ? Num : (int64(1) << 30));
		return WriteFile(File, Data, Asked, &Put, &At) ? static_cast<int64>(Put) : -1;
	}

	int64 SizeOf(FNativeFile File)
	{
		LARGE_INTEGER Size;
		return GetFileSizeEx(File, &Size) ? Size.QuadPart : -1;
	}

	bool Reserve(FNativeFile File, int64 Size)
	{
		// An allocation below the end of the file would cut it: only growth is reserved.
		if (Size <= SizeOf(File))
		{
			return true;
		}
		FILE_ALLOCATION_INFO Info{};
		Info.AllocationSize.QuadPart = Size;
		// Only a full disk counts: a file system without the call still takes the write.
		return SetFileInformationByHandle(File, FileAllocationInfo, &Info, sizeof(Info)) ||
			   GetLastError() != ERROR_DISK_FULL;
	}

	bool Truncate(FNativeFile File, int64 Size)
	{
		FILE_END_OF_FILE_INFO Info{};
		Info.EndOfFile.QuadPart = Size;
		return SetFileInformationByHandle(File, FileEndOfFileInfo, &Info, sizeof(Info));
	}

	bool SyncData(FNativeFile File)
	{
		return FlushFileBuffers(File);
	}

	bool CloseFile(FNativeFile File)
	{
		return CloseHandle(File);
	}

	bool ListDirectory(const FNativePath& Dir, std::vector<FEntry>& OutEntries)
	{
		WIN32_FIND_DATAW Data;
		const FNativePath Pattern = Child(Dir.empty() ? FNativePath(L".") : Dir, L"*");
		const HANDLE Find = FindFirstFileExW(Pattern.c_str(), FindExInfoBasic, &Data, FindExSearchNameMatch, nullptr,
											 FIND_FIRST_EX_LARGE_FETCH);
		if (Find == INVALID_HANDLE_VALUE)
		{
			// A folder with nothing in it at all (a drive's root) is still a folder.
			return GetLastError() == ERROR_FILE_NOT_FOUND && IsDirectory(Dir);
		}
		do
		{
			const FNativePath Name = Data.cFileName;
			if (Name == L"." || Name == L"..")
			{
				continue;
			}
			FEntry Out;
			Out.Name = Name;
			Out.bDirectory = (Data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
			Out.bLink = (Data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
						(Data.dwReserved0 == IO_REPARSE_TAG_SYMLINK || Data.dwReserved0 == IO_REPARSE_TAG_MOUNT_POINT);
			OutEntries.push_back(std::move(Out));
		} while (FindNextFileW(Find, &Data));
		FindClose(Find);
		return true;
	}
}
