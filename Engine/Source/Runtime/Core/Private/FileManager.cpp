#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"

#include "FileArchive.h"
#include "FileSystem.h"

namespace
{
	using namespace FileSystem;

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

	class FFileManager final : public IFileManager
	{
	public:
		FArchive* CreateFileReader(const TCHAR* Filename, uint32 /*ReadFlags*/) override
		{
			int64 Size = 0;
			const FNativeFile File = OpenForRead(Native(Filename), Size);
			return File == InvalidFile ? nullptr : new FArchiveFileReader(File, Size);
		}

		FArchive* CreateFileWriter(const TCHAR* Filename, uint32 WriteFlags) override
		{
			const FNativePath Path = Native(Filename);
			if (Path.empty() || IsDirectory(Path))
			{
				return nullptr;
			}
			const bool bExists = Exists(Path);
			if (bExists && (WriteFlags & FILEWRITE_NoReplaceExisting))
			{
				return nullptr;
			}
			if (bExists && !(WriteFlags & FILEWRITE_EvenIfReadOnly) && !IsWritable(Path))
			{
				return nullptr;
			}
			const FNativePath Parent = ParentOf(Path);
			if (!Parent.empty())
			{
				MakeDirectoryTree(Parent);
			}
			using EMode = FArchiveFileWriter::EMode;
			if (WriteFlags & FILEWRITE_Append)
			{
				const FNativeFile File = OpenForWrite(Path, true);
				return File == InvalidFile ? nullptr : new FArchiveFileWriter(File, EMode::Append, FNativePath(), Path);
			}
			// Through a link the target is replaced and the link stays a link.
			const FNativePath Target = ResolveLinks(Path);
			const FNativePath Temp = TemporarySibling(Target);
			const FNativeFile File = CreateNewFile(Temp);
			if (File != InvalidFile)
			{
				return new FArchiveFileWriter(File, EMode::Replace, Temp, Target);
			}
			// A folder that takes no new files may still hold a file we may write: write that one in place
			// rather than not at all. No truncation here; the old bytes stay until the writer commits.
			if (bExists && IsFile(Target))
			{
				const FNativeFile Direct = OpenForWrite(Target, false);
				if (Direct != InvalidFile)
				{
					return new FArchiveFileWriter(Direct, EMode::InPlace, FNativePath(), Target);
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
					FString Name = FromNative(Entry.Name);
					if (WildcardMatch(Name.GetStd(), Pattern.GetStd()))
					{
						FoundFiles.Add(std::move(Name));
					}
				}
			}
		}

		uint32 Copy(const TCHAR* Dest, const TCHAR* Src, bool bReplace, bool /*bEvenIfReadOnly*/) override
		{
			const FNativePath To = Native(Dest);
			if (!bReplace && Exists(To))
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
			const FNativePath Path = Native(Filename);
			if (!IsEntry(Path))
			{
				return !bRequireExists;
			}
			return DeleteFile(Path);
		}

		bool MakeDirectory(const TCHAR* Path, bool bTree) override
		{
			const FNativePath Dir = Native(Path);
			return bTree ? MakeDirectoryTree(Dir) : FileSystem::MakeDirectory(Dir);
		}

		bool DeleteDirectory(const TCHAR* Path, bool bRequireExists, bool bTree) override
		{
			const FNativePath Dir = Native(Path);
			if (!IsDirectory(Dir))
			{
				return !bRequireExists;
			}
			return bTree ? DeleteDirectoryTree(Dir) : FileSystem::DeleteDirectory(Dir);
		}

		int64 FileSize(const TCHAR* Filename) override { return FileSystem::FileSize(Native(Filename)); }
		bool FileExists(const TCHAR* Filename) override { return IsFile(Native(Filename)); }
		bool DirectoryExists(const TCHAR* Path) override { return IsDirectory(Native(Path)); }
	};
}

IFileManager& IFileManager::Get()
{
	static FFileManager Instance;
	return Instance;
}
