#include "FileSystem.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace FileSystem
{
	FNativePath Native(const TCHAR* Path)
	{
		return StringConv::Utf16ToUtf8(Path ? std::u16string_view(Path) : std::u16string_view(), true);
	}

	FNativePath Native(const FString& Path)
	{
		return Path.ToNative();
	}

	FString FromNative(const FNativePath& Path)
	{
		return FString::FromNative(Path);
	}

	FNativePath ParentOf(const FNativePath& Path)
	{
		const size_t Slash = Path.rfind('/');
		return Slash == std::string::npos || Slash == 0 ? std::string() : Path.substr(0, Slash);
	}

	FNativePath Child(const FNativePath& Dir, const FNativePath& Name)
	{
		return Dir + "/" + Name;
	}

	FString WorkingDirectory()
	{
		char Buffer[4096];
		return getcwd(Buffer, sizeof(Buffer)) ? FString::FromNative(Buffer) : FString(TEXT("/"));
	}

	bool Exists(const FNativePath& Path)
	{
		return access(Path.c_str(), F_OK) == 0;
	}

	bool IsEntry(const FNativePath& Path)
	{
		struct stat Info;
		return lstat(Path.c_str(), &Info) == 0;
	}

	bool IsWritable(const FNativePath& Path)
	{
		return access(Path.c_str(), W_OK) == 0;
	}

	bool MakeDirectory(const FNativePath& Path)
	{
		return mkdir(Path.c_str(), 0777) == 0 || IsDirectory(Path);
	}

	bool IsFile(const FNativePath& Path)
	{
		struct stat Info;
		return !Path.empty() && stat(Path.c_str(), &Info) == 0 && S_ISREG(Info.st_mode);
	}

	bool IsDirectory(const FNativePath& Path)
	{
		struct stat Info;
		return !Path.empty() && stat(Path.c_str(), &Info) == 0 && S_ISDIR(Info.st_mode);
	}

	int64 FileSize(const FNativePath& Path)
	{
		struct stat Info;
		if (Path.empty() || stat(Path.c_str(), &Info) != 0 || !S_ISREG(Info.st_mode))
		{
			return -1;
		}
		return static_cast<int64>(Info.st_size);
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
		std::string Partial;
		size_t Pos = 0;
		while (Pos <= Path.size())
		{
			const size_t Next = Path.find('/', Pos);
			const size_t End = Next == std::string::npos ? Path.size() : Next;
			Partial = Path.substr(0, End);
			if (!Partial.empty() && mkdir(Partial.c_str(), 0777) != 0 && errno != EEXIST)
			{
				return false;
			}
			if (Next == std::string::npos)
			{
				break;
			}
			Pos = Next + 1;
		}
		return IsDirectory(Path);
	}

	bool DeleteFile(const FNativePath& Path)
	{
		struct stat Info;
		if (lstat(Path.c_str(), &Info) != 0 || S_ISDIR(Info.st_mode))
		{
			return false;
		}
		return unlink(Path.c_str()) == 0;
	}

	bool DeleteDirectory(const FNativePath& Path)
	{
		return rmdir(Path.c_str()) == 0;
	}

	bool DeleteDirectoryTree(const FNativePath& Root)
	{
		struct stat Info;
		if (lstat(Root.c_str(), &Info) != 0 || !S_ISDIR(Info.st_mode))
		{
			return false;
		}
		// Depth-first without recursion: a folder is removed once everything in it is gone.
		struct FPending
		{
			std::string Path;
			bool bListed = false;
		};
		std::vector<FPending> Stack{{Root, false}};
		bool bAll = true;
		while (!Stack.empty())
		{
			FPending& Top = Stack.back();
			if (Top.bListed)
			{
				bAll = (rmdir(Top.Path.c_str()) == 0) && bAll;
				Stack.pop_back();
				continue;
			}
			Top.bListed = true;
			const std::string Dir = Top.Path;
			std::vector<FEntry> Entries;
			ListDirectory(Dir, Entries);
			for (const FEntry& Entry : Entries)
			{
				const std::string ChildPath = Dir + "/" + Entry.Name;
				if (Entry.bDirectory && !Entry.bLink)
				{
					Stack.push_back({ChildPath, false});
				}
				else
				{
					bAll = (unlink(ChildPath.c_str()) == 0) && bAll;
				}
			}
		}
		return bAll;
	}

	FNativePath TemporarySibling(const FNativePath& Path)
	{
		static std::atomic<unsigned> Counter{0};
		const size_t Slash = Path.rfind('/');
		const std::string Dir = Slash == std::string::npos ? std::string() : Path.substr(0, Slash + 1);
		const std::string Name = Slash == std::string::npos ? Path : Path.substr(Slash + 1);
		return Dir + "." + Name + ".tmp" + std::to_string(getpid()) + "-" + std::to_string(Counter++);
	}

	FNativePath ResolveLinks(const FNativePath& Path)
	{
		std::string Current = Path;
		// The same bound as the kernel's, so that a loop of links ends.
		for (int Hop = 0; Hop < 40; ++Hop)
		{
			struct stat Info;
			if (lstat(Current.c_str(), &Info) != 0 || !S_ISLNK(Info.st_mode))
			{
				return Current;
			}
			std::vector<char> Target(static_cast<size_t>(Info.st_size > 0 ? Info.st_size : 255) + 1);
			const ssize_t Length = readlink(Current.c_str(), Target.data(), Target.size());
			if (Length <= 0 || static_cast<size_t>(Length) >= Target.size())
			{
				return Current;
			}
			const std::string Next(Target.data(), static_cast<size_t>(Length));
			const size_t Slash = Current.rfind('/');
			Current = Next[0] == '/' || Slash == std::string::npos ? Next : Current.substr(0, Slash + 1) + Next;
		}
		return Current;
	}

	bool CommitTemporary(FNativeFile Fd, const FNativePath& Temp, const FNativePath& Path)
	{
		struct stat Old;
		bool bOk = true;
		if (stat(Path.c_str(), &Old) == 0)
		{
			// The new file takes the old one's owner where we may give it (as root), then its mode, since a
			// change of owner clears the set-id bits.
			// Only a replace syncs. A rename over an old file whose new blocks are not yet on disk can leave,
			// after a power cut, an empty file where the old one stood: the sync makes the rename publish whole
			// contents. A new file has no old contents to lose (at worst it is missing and the next run makes
			// it), and most writes of a packaging walk are new files, where a sync each would cost the walk
			// its speed.
			if (fchown(Fd, Old.st_uid, Old.st_gid) != 0)
			{
				// Not ours to give; the file stays ours, as any editor's save would leave it.
			}
			fchmod(Fd, Old.st_mode & 07777);
			bOk = fdatasync(Fd) == 0;
		}
		bOk = (close(Fd) == 0) && bOk;
		if (bOk && rename(Temp.c_str(), Path.c_str()) == 0)
		{
			return true;
		}
		unlink(Temp.c_str());
		return false;
	}

	bool CopyFile(const FNativePath& Dest, const FNativePath& Src)
	{
		const int In = open(Src.c_str(), O_RDONLY | O_CLOEXEC);
		if (In < 0)
		{
			return false;
		}
		struct stat Info;
		if (fstat(In, &Info) != 0 || !S_ISREG(Info.st_mode) || IsDirectory(Dest))
		{
			close(In);
			return false;
		}
		if (const FNativePath Parent = ParentOf(Dest); !Parent.empty())
		{
			MakeDirectoryTree(Parent);
		}
		const std::string Temp = TemporarySibling(Dest);
		const int Out = open(Temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
		if (Out < 0)
		{
			close(In);
			return false;
		}
		bool bOk = true;
		int64 Remaining = Info.st_size;
		// The kernel copies without a trip through user memory where it can; plain reads where it can't.
		while (Remaining > 0)
		{
			const ssize_t Done = copy_file_range(In, nullptr, Out, nullptr, static_cast<size_t>(Remaining), 0);
			if (Done <= 0)
			{
				break;
			}
			Remaining -= Done;
		}
		if (Remaining > 0)
		{
			std::vector<char> Buffer(1 << 20);
			lseek(In, Info.st_size - Remaining, SEEK_SET);
			ssize_t Got;
			while ((Got = read(In, Buffer.data(), Buffer.size())) > 0)
			{
				ssize_t Written = 0;
				while (Written < Got)
				{
					const ssize_t Put = write(Out, Buffer.data() + Written, static_cast<size_t>(Got - Written));
					if (Put <= 0)
					{
						bOk = false;
						break;
					}
					Written += Put;
				}
				if (!bOk)
				{
					break;
				}
			}
			bOk = bOk && Got == 0;
		}
		close(In);
		if (!bOk)
		{
			close(Out);
			unlink(Temp.c_str());
			return false;
		}
		return CommitTemporary(Out, Temp, Dest);
	}

	bool MoveFile(const FNativePath& Dest, const FNativePath& Src, bool bReplace)
	{
		struct stat Info;
		if (lstat(Src.c_str(), &Info) != 0)
		{
			return false;
		}
		if (!bReplace && lstat(Dest.c_str(), &Info) == 0)
		{
			return false;
		}
		if (const FNativePath Parent = ParentOf(Dest); !Parent.empty())
		{
			MakeDirectoryTree(Parent);
		}
		if (rename(Src.c_str(), Dest.c_str()) == 0)
		{
			return true;
		}
		if (errno == EXDEV && CopyFile(Dest, Src))
		{
			return unlink(Src.c_str()) == 0;
		}
		return false;
	}

	bool ListDirectory(const FNativePath& Dir, std::vector<FEntry>& OutEntries)
	{
		DIR* Handle = opendir(Dir.empty() ? "." : Dir.c_str());
		if (!Handle)
		{
			return false;
		}
		while (dirent* Entry = readdir(Handle))
		{
			const std::string Name = Entry->d_name;
			if (Name == "." || Name == "..")
			{
				continue;
			}
			FEntry Out;
			Out.Name = Name;
			unsigned char Type = Entry->d_type;
			if (Type == DT_UNKNOWN || Type == DT_LNK)
			{
				struct stat Info;
				const std::string Full = Dir + "/" + Name;
				if (lstat(Full.c_str(), &Info) == 0 && S_ISLNK(Info.st_mode))
				{
					Out.bLink = true;
				}
				Out.bDirectory = stat(Full.c_str(), &Info) == 0 && S_ISDIR(Info.st_mode);
			}
			else
			{
				Out.bDirectory = Type == DT_DIR;
			}
			OutEntries.push_back(std::move(Out));
		}
		closedir(Handle);
		return true;
	}

	FNativeFile OpenForRead(const FNativePath& Path, int64& OutSize)
	{
		const int Fd = open(Path.c_str(), O_RDONLY | O_CLOEXEC);
		if (Fd < 0)
		{
			return InvalidFile;
		}
		struct stat Info;
		if (fstat(Fd, &Info) != 0 || !S_ISREG(Info.st_mode))
		{
			close(Fd);
			return InvalidFile;
		}
		OutSize = static_cast<int64>(Info.st_size);
		return Fd;
	}

	FNativeFile CreateNewFile(const FNativePath& Path)
	{
		return open(Path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
	}

	FNativeFile OpenForWrite(const FNativePath& Path, bool bCreate)
	{
		return open(Path.c_str(), O_WRONLY | O_CLOEXEC | (bCreate ? O_CREAT : 0), 0666);
	}

	int64 ReadAt(FNativeFile File, void* Data, int64 Num, int64 Offset)
	{
		ssize_t Got;
		do
		{
			Got = pread(File, Data, static_cast<size_t>(Num), static_cast<off_t>(Offset));
		} while (Got < 0 && errno == EINTR);
		return Got;
	}

	int64 WriteAt(FNativeFile File, const void* Data, int64 Num, int64 Offset)
	{
		ssize_t Put;
		do
		{
			Put = pwrite(File, Data, static_cast<size_t>(Num), static_cast<off_t>(Offset));
		} while (Put < 0 && errno == EINTR);
		return Put;
	}

	int64 SizeOf(FNativeFile File)
	{
		struct stat Info;
		return fstat(File, &Info) == 0 ? static_cast<int64>(Info.st_size) : -1;
	}

	bool Reserve(FNativeFile File, int64 Size)
	{
		const int Reserved = posix_fallocate(File, 0, static_cast<off_t>(Size));
		return Reserved == 0 || Reserved == EOPNOTSUPP || Reserved == EINVAL;
	}

	bool Truncate(FNativeFile File, int64 Size)
	{
		return ftruncate(File, static_cast<off_t>(Size)) == 0;
	}

	bool SyncData(FNativeFile File)
	{
		return fdatasync(File) == 0;
	}

	bool CloseFile(FNativeFile File)
	{
		return close(File) == 0;
	}
}
