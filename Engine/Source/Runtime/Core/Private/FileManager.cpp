#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"

#include "FileArchivePosix.h"
#include "PosixFileSystem.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
	using namespace PosixFileSystem;

	// "*" and "?" wildcards, letter case ignored, as the kit's file systems compare names.
	bool WildcardMatch(const std::u16string& Name, const std::u16string& Pattern)
	{
		size_t N = 0;
		size_t P = 0;
		size_t StarP = std::u16string::npos;
		size_t StarN = 0;
		while (N < Name.size())
		{
			if (P < Pattern.size() && Pattern[P] == u'*')
			{
				StarP = P++;
				StarN = N;
			}
			else if (P < Pattern.size() &&
					 (Pattern[P] == u'?' || FChar::ToLower(Pattern[P]) == FChar::ToLower(Name[N])))
			{
				++P;
				++N;
			}
			else if (StarP != std::u16string::npos)
			{
				P = StarP + 1;
				N = ++StarN;
			}
			else
			{
				return false;
			}
		}
		while (P < Pattern.size() && Pattern[P] == u'*')
		{
			++P;
		}
		return P == Pattern.size();
	}

	std::string ParentOf(const std::string& Path)
	{
		const size_t Slash = Path.rfind('/');
		return Slash == std::string::npos || Slash == 0 ? std::string() : Path.substr(0, Slash);
	}

	class FFileManagerPosix final : public IFileManager
	{
	public:
		FArchive* CreateFileReader(const TCHAR* Filename, uint32 /*ReadFlags*/) override
		{
			const std::string Path = Native(Filename);
			const int Fd = open(Path.c_str(), O_RDONLY | O_CLOEXEC);
			if (Fd < 0)
			{
				return nullptr;
			}
			struct stat Info;
			if (fstat(Fd, &Info) != 0 || !S_ISREG(Info.st_mode))
			{
				close(Fd);
				return nullptr;
			}
			return new FArchiveFileReaderPosix(Fd, static_cast<int64>(Info.st_size));
		}

		FArchive* CreateFileWriter(const TCHAR* Filename, uint32 WriteFlags) override
		{
			const std::string Path = Native(Filename);
			if (Path.empty() || IsDirectory(Path))
			{
				return nullptr;
			}
			const bool bExists = access(Path.c_str(), F_OK) == 0;
			if (bExists && (WriteFlags & FILEWRITE_NoReplaceExisting))
			{
				return nullptr;
			}
			if (bExists && !(WriteFlags & FILEWRITE_EvenIfReadOnly) && access(Path.c_str(), W_OK) != 0)
			{
				return nullptr;
			}
			const std::string Parent = ParentOf(Path);
			if (!Parent.empty())
			{
				MakeDirectoryTree(Parent);
			}
			using EMode = FArchiveFileWriterPosix::EMode;
			if (WriteFlags & FILEWRITE_Append)
			{
				const int Fd = open(Path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
				return Fd < 0 ? nullptr : new FArchiveFileWriterPosix(Fd, EMode::Append, std::string(), Path);
			}
			// Through a link the target is replaced and the link stays a link.
			const std::string Target = ResolveLinks(Path);
			const std::string Temp = TemporarySibling(Target);
			const int Fd = open(Temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
			if (Fd >= 0)
			{
				return new FArchiveFileWriterPosix(Fd, EMode::Replace, Temp, Target);
			}
			// A folder that takes no new files may still hold a file we may write: write that one in place
			// rather than not at all. No truncation here; the old bytes stay until the writer commits.
			if (bExists && IsFile(Target))
			{
				const int Direct = open(Target.c_str(), O_WRONLY | O_CLOEXEC);
				if (Direct >= 0)
				{
					return new FArchiveFileWriterPosix(Direct, EMode::InPlace, std::string(), Target);
				}
			}
			return nullptr;
		}

		void FindFiles(TArray<FString>& FoundFiles, const TCHAR* Filename, bool bFiles, bool bDirectories) override
		{
			const FString Wildcard(Filename);
			int32 Slash = INDEX_NONE;
			Wildcard.FindLastChar(u'/', Slash);
			const FString Dir = Slash == INDEX_NONE ? FString(TEXT(".")) : Wildcard.Left(Slash == 0 ? 1 : Slash);
			FString Pattern = Slash == INDEX_NONE ? Wildcard : Wildcard.Mid(Slash + 1);
			if (Pattern.IsEmpty())
			{
				Pattern = TEXT("*");
			}
			std::vector<FEntry> Entries;
			ListDirectory(Native(Dir), Entries);
			for (const FEntry& Entry : Entries)
			{
				if ((Entry.bDirectory ? bDirectories : bFiles))
				{
					FString Name = FString::FromNative(Entry.Name);
					if (WildcardMatch(Name.GetStd(), Pattern.GetStd()))
					{
						FoundFiles.Add(std::move(Name));
					}
				}
			}
		}

		uint32 Copy(const TCHAR* Dest, const TCHAR* Src, bool bReplace, bool /*bEvenIfReadOnly*/) override
		{
			const std::string To = Native(Dest);
			if (!bReplace && access(To.c_str(), F_OK) == 0)
			{
				return COPY_Fail;
			}
			return CopyFile(To, Native(Src)) ? COPY_OK : COPY_Fail;
		}

		bool Move(const TCHAR* Dest, const TCHAR* Src, bool bReplace, bool /*bEvenIfReadOnly*/) override
		{
			return MoveFile(Native(Dest), Native(Src), bReplace);
		}

		bool Delete(const TCHAR* Filename, bool bRequireExists, bool /*bEvenReadOnly*/, bool /*bQuiet*/) override
		{
			const std::string Path = Native(Filename);
			struct stat Info;
			if (lstat(Path.c_str(), &Info) != 0)
			{
				return !bRequireExists;
			}
			return DeleteFile(Path);
		}

		bool MakeDirectory(const TCHAR* Path, bool bTree) override
		{
			const std::string Dir = Native(Path);
			if (bTree)
			{
				return MakeDirectoryTree(Dir);
			}
			return mkdir(Dir.c_str(), 0777) == 0 || IsDirectory(Dir);
		}

		bool DeleteDirectory(const TCHAR* Path, bool bRequireExists, bool bTree) override
		{
			const std::string Dir = Native(Path);
			if (!IsDirectory(Dir))
			{
				return !bRequireExists;
			}
			return bTree ? DeleteDirectoryTree(Dir) : PosixFileSystem::DeleteDirectory(Dir);
		}

		int64 FileSize(const TCHAR* Filename) override { return PosixFileSystem::FileSize(Native(Filename)); }
		bool FileExists(const TCHAR* Filename) override { return IsFile(Native(Filename)); }
		bool DirectoryExists(const TCHAR* Path) override { return IsDirectory(Native(Path)); }
	};
}

IFileManager& IFileManager::Get()
{
	static FFileManagerPosix Instance;
	return Instance;
}
