#include "Misc/Paths.h"

#include "HAL/FileManager.h"
#include "FileSystem.h"

#include <mutex>

namespace
{
	struct FKitLayout
	{
		FString Root;
		FString Project;
		FString Base;
	};

	FKitLayout& Layout()
	{
		static FKitLayout Instance;
		return Instance;
	}

	FString WithoutTrailingSlash(FString Path)
	{
		while (Path.Len() > 1 && Path.EndsWith(TEXT("/")))
		{
			Path = Path.LeftChop(1);
		}
		return Path;
	}

	int32 LastSeparator(const FString& Path)
	{
		for (int32 Index = Path.Len() - 1; Index >= 0; --Index)
		{
			if (Path[Index] == u'/' || Path[Index] == u'\\')
			{
				return Index;
			}
		}
		return INDEX_NONE;
	}
}

void FPaths::SetKitRoot(const FString& Root, const FString& ProjectName)
{
	FString Full = ConvertRelativePathToFull(Root);
	Layout().Root = WithoutTrailingSlash(Full);
	if (!ProjectName.IsEmpty())
	{
		Layout().Project = ProjectName;
		return;
	}
	// The project is the folder that holds a "<Folder>.uproject" file.
	TArray<FString> Folders;
	IFileManager::Get().FindFiles(Folders, *(Layout().Root / TEXT("*")), false, true);
	Folders.Sort();
	Layout().Project.Empty();
	for (const FString& Folder : Folders)
	{
		if (IFileManager::Get().FileExists(*(Layout().Root / Folder / (Folder + TEXT(".uproject")))))
		{
			Layout().Project = Folder;
			break;
		}
	}
}

void FPaths::SetBaseDir(const FString& BaseDir)
{
	Layout().Base = WithoutTrailingSlash(BaseDir);
}

FString FPaths::RootDir()
{
	return Layout().Root;
}

FString FPaths::EngineDir()
{
	return RootDir() / TEXT("Engine");
}

FString FPaths::ProjectName()
{
	return Layout().Project;
}

FString FPaths::ProjectDir()
{
	return RootDir() / ProjectName();
}

FString FPaths::GameContentDir()
{
	return ProjectDir() / TEXT("Content");
}

FString FPaths::GameSavedDir()
{
	return ProjectDir() / TEXT("Saved");
}

FString FPaths::BaseDir()
{
	return Layout().Base.IsEmpty() ? FileSystem::WorkingDirectory() : Layout().Base;
}

FString FPaths::GetCleanFilename(const FString& InPath)
{
	const int32 Slash = LastSeparator(InPath);
	return Slash == INDEX_NONE ? InPath : InPath.Mid(Slash + 1);
}

FString FPaths::GetExtension(const FString& InPath, bool bIncludeDot)
{
	const FString Name = GetCleanFilename(InPath);
	int32 Dot = INDEX_NONE;
	if (!Name.FindLastChar(u'.', Dot))
	{
		return FString();
	}
	return Name.Mid(bIncludeDot ? Dot : Dot + 1);
}

FString FPaths::GetBaseFilename(const FString& InPath, bool bRemovePath)
{
	FString Name = bRemovePath ? GetCleanFilename(InPath) : InPath;
	int32 Dot = INDEX_NONE;
	if (Name.FindLastChar(u'.', Dot) && Dot > LastSeparator(Name))
	{
		Name = Name.Left(Dot);
	}
	return Name;
}

FString FPaths::GetPath(const FString& InPath)
{
	const int32 Slash = LastSeparator(InPath);
	return Slash == INDEX_NONE ? FString() : InPath.Left(Slash);
}

bool FPaths::IsRelative(const FString& InPath)
{
	if (InPath.IsEmpty())
	{
		return true;
	}
	const bool bRooted = InPath[0] == u'/' || InPath[0] == u'\\';
	const bool bDrive = InPath.Len() >= 2 && InPath[1] == u':';
	return !bRooted && !bDrive;
}

void FPaths::NormalizeFilename(FString& InPath)
{
	for (TCHAR& Unit : InPath)
	{
		if (Unit == u'\\')
		{
			Unit = u'/';
		}
	}
}

void FPaths::NormalizeDirectoryName(FString& InPath)
{
	NormalizeFilename(InPath);
	InPath = WithoutTrailingSlash(InPath);
}

bool FPaths::CollapseRelativeDirectories(FString& InPath)
{
	TArray<FString> Pieces;
	InPath.ParseIntoArray(Pieces, TEXT("/"), true);
	const bool bRooted = InPath.StartsWith(TEXT("/"));
	TArray<FString> Kept;
	bool bOk = true;
	for (const FString& Piece : Pieces)
	{
		if (Piece == TEXT("."))
		{
			continue;
		}
		if (Piece == TEXT(".."))
		{
			if (Kept.Num() > 0 && Kept.Last() != TEXT(".."))
			{
				Kept.Pop();
				continue;
			}
			bOk = false;
			if (bRooted)
			{
				continue;
			}
		}
		Kept.Add(Piece);
	}
	InPath = (bRooted ? FString(TEXT("/")) : FString()) + FString::Join(Kept, TEXT("/"));
	return bOk;
}

FString FPaths::ConvertRelativePathToFull(const FString& InPath)
{
	return ConvertRelativePathToFull(BaseDir(), InPath);
}

FString FPaths::ConvertRelativePathToFull(const FString& BasePath, const FString& InPath)
{
	FString Path = InPath;
	NormalizeFilename(Path);
	if (IsRelative(Path))
	{
		FString Base = BasePath;
		NormalizeFilename(Base);
		Path = Base / Path;
	}
	CollapseRelativeDirectories(Path);
	return Path.IsEmpty() ? FString(TEXT("/")) : Path;
}

bool FPaths::FileExists(const FString& InPath)
{
	return IFileManager::Get().FileExists(*InPath);
}

bool FPaths::DirectoryExists(const FString& InPath)
{
	return IFileManager::Get().DirectoryExists(*InPath);
}
