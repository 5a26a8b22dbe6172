#include "HAL/PlatformFile.h"

#include "FileSystem.h"

#include <vector>

namespace
{
	using namespace FileSystem;

	class FPlatformFile final : public IPlatformFile
	{
	public:
		bool FileExists(const TCHAR* Filename) override { return IsFile(Native(Filename)); }
		bool DirectoryExists(const TCHAR* Directory) override { return IsDirectory(Native(Directory)); }
		int64 FileSize(const TCHAR* Filename) override { return FileSystem::FileSize(Native(Filename)); }
		bool DeleteFile(const TCHAR* Filename) override { return FileSystem::DeleteFile(Native(Filename)); }
		bool MoveFile(const TCHAR* To, const TCHAR* From) override
		{
			return FileSystem::MoveFile(Native(To), Native(From), true);
		}
		bool CopyFile(const TCHAR* To, const TCHAR* From) override
		{
			return FileSystem::CopyFile(Native(To), Native(From));
		}
		bool CreateDirectory(const TCHAR* Directory) override
		{
			return FileSystem::MakeDirectory(Native(Directory));
		}
		bool CreateDirectoryTree(const TCHAR* Directory) override { return MakeDirectoryTree(Native(Directory)); }
		bool DeleteDirectory(const TCHAR* Directory) override
		{
			return FileSystem::DeleteDirectory(Native(Directory));
		}
		bool DeleteDirectoryRecursively(const TCHAR* Directory) override
		{
			return DeleteDirectoryTree(Native(Directory));
		}

		bool IterateDirectory(const TCHAR* Directory, FDirectoryVisitor& Visitor) override
		{
			const FString Root(Directory);
			std::vector<FEntry> Entries;
			if (!ListDirectory(Native(Root), Entries))
			{
				return false;
			}
			for (const FEntry& Entry : Entries)
			{
				const FString Full = Root / FromNative(Entry.Name);
				if (!Visitor.Visit(*Full, Entry.bDirectory))
				{
					return false;
				}
			}
			return true;
		}

		bool IterateDirectoryRecursively(const TCHAR* Directory, FDirectoryVisitor& Visitor) override
		{
			// Each level is listed whole before the visitor runs, so that a visitor which creates or deletes
			// files does not disturb the listing; an explicit stack keeps deep trees off the call stack.
			struct FLevel
			{
				FString Path;
				std::vector<FEntry> Entries;
				size_t Next = 0;
			};
			std::vector<FLevel> Stack(1);
			Stack[0].Path = FString(Directory);
			ListDirectory(Native(Stack[0].Path), Stack[0].Entries);
			while (!Stack.empty())
			{
				FLevel& Level = Stack.back();
				if (Level.Next >= Level.Entries.size())
				{
					Stack.pop_back();
					continue;
				}
				const FEntry& Entry = Level.Entries[Level.Next++];
				const FString Full = Level.Path / FromNative(Entry.Name);
				if (!Visitor.Visit(*Full, Entry.bDirectory))
				{
					return false;
				}
				if (Entry.bDirectory && !Entry.bLink)
				{
					FLevel Child;
					Child.Path = Full;
					ListDirectory(Native(Full), Child.Entries);
					Stack.push_back(std::move(Child));
				}
			}
			return true;
		}
	};
}

FPlatformFileManager& FPlatformFileManager::Get()
{
	static FPlatformFileManager Instance;
	return Instance;
}

IPlatformFile& FPlatformFileManager::GetPlatformFile()
{
	static FPlatformFile Instance;
	return Instance;
}

bool IPlatformFile::IterateDirectoryRecursively(const TCHAR* Directory,
												const std::function<bool(const TCHAR*, bool)>& Visit)
{
	struct FLambdaVisitor : FDirectoryVisitor
	{
		const std::function<bool(const TCHAR*, bool)>& Function;
		explicit FLambdaVisitor(const std::function<bool(const TCHAR*, bool)>& InFunction) : Function(InFunction) {}
		bool Visit(const TCHAR* Path, bool bIsDirectory) override { return Function(Path, bIsDirectory); }
	} Visitor(Visit);
	return IterateDirectoryRecursively(Directory, Visitor);
}
