#include "KitSession.h"

#include "CommandOutput.h"
#include "FileLock.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"
#include "Misc/CString.h"
#include "Misc/FileHelper.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <vector>

FString GetWorkingDirectory()
{
	std::error_code Error;
	const std::filesystem::path Current = std::filesystem::current_path(Error);
	return Error ? FString(TEXT("/")) : FString::FromNative(Current.string());
}

FString ToFullPath(const FString& UserPath)
{
	return FPaths::ConvertRelativePathToFull(GetWorkingDirectory(), UserPath);
}

void LocateKit(const FString& GivenKit)
{
	auto TryKit = [](const FString& Folder)
	{
		FPaths::SetKitRoot(Folder);
		return !FPaths::ProjectName().IsEmpty();
	};
	if (!GivenKit.IsEmpty())
	{
		const FString Folder = ToFullPath(GivenKit);
		if (!IFileManager::Get().DirectoryExists(*Folder))
		{
			throw FCommandError{EExitCode::BadInput, FString::Printf(TEXT("%s: no such folder"), *Folder)};
		}
		if (!TryKit(Folder))
		{
			throw FCommandError{EExitCode::BadInput,
								FString::Printf(TEXT("%s: not a kit (no project folder <Name> holding <Name>.uproject)"), *Folder)};
		}
	}
	else
	{
		FString Folder = GetWorkingDirectory();
		while (!TryKit(Folder))
		{
			const FString Parent = FPaths::GetPath(Folder);
			if (Parent.IsEmpty() || Parent == Folder)
			{
				throw FCommandError{EExitCode::BadInput,
									FString::Printf(TEXT("no kit at or above %s: name one with --kit <folder>"), *GetWorkingDirectory())};
			}
			Folder = Parent;
		}
	}
	// The engine's executables sit in Engine/Binaries/Win64; the tool takes its relative paths from there.
	FPaths::SetBaseDir(FPaths::EngineDir() / TEXT("Binaries/Win64"));
}

void RequireReadableDatabase(const FTesselSession& Session)
{
	const FModDatabaseLoad& Load = Session.GetDatabaseLoad();
	if (!Load.bKeepBeforeSave)
	{
		return;
	}
	const FString Path = KitPaths::ModDatabase();
	if (Load.Read == EModDatabaseRead::Unopenable)
	{
		throw FCommandError{EExitCode::JobFailed, FString::Printf(TEXT("%s: %s"), *Path, *Load.Error)};
	}
	throw FCommandError{EExitCode::BadInput,
						FString::Printf(TEXT("%s: %s (the tool reads it as UTF-16; fix or move the file, as a save would replace "
											 "it with fresh records)"),
										*Path, *Load.Error)};
}

TSharedPtr<FModSetup> SelectMod(const FTesselSession& Session, const FString& ModDir)
{
	if (TSharedPtr<FModSetup> Mod = Session.FindMod(ModDir))
	{
		return Mod;
	}
	TArray<FString> Known;
	for (const TSharedPtr<FModSetup>& Mod : Session.GetMods())
	{
		Known.Add(Mod->ModDir);
	}
	throw FCommandError{EExitCode::BadInput, FString::Printf(TEXT("%s: no such mod in %s (mods: %s)"), *ModDir, *KitPaths::ModsContentDir(),
															 Known.Num() > 0 ? *FString::Join(Known, TEXT(", ")) : TEXT("none"))};
}

namespace
{
	// The file's size and an FNV-1a hash of its bytes taken as 64-bit words, read a block at a time: enough to know whether
	// another save replaced it, without holding a large file in memory. A missing file has size -1.
	FFileFingerprint Fingerprint(const FString& Path)
	{
		FFileFingerprint Result;
		TUniquePtr<FArchive> Reader(IFileManager::Get().CreateFileReader(*Path, 0));
		if (!Reader)
		{
			Result.Size = FPaths::FileExists(Path) ? -2 : -1;
			return Result;
		}
		Result.Size = Reader->TotalSize();
		std::vector<uint8> Block(1 << 20);
		uint64 Hash = 14695981039346656037ull;
		for (int64 Left = Result.Size; Left > 0;)
		{
			const int64 Count = std::min<int64>(Left, static_cast<int64>(Block.size()));
			Reader->Serialize(Block.data(), Count);
			// Eight bytes a step; the last few one by one.
			int64 Index = 0;
			for (; Index + 8 <= Count; Index += 8)
			{
				uint64 Word;
				std::memcpy(&Word, Block.data() + Index, 8);
				Hash = (Hash ^ Word) * 1099511628211ull;
			}
			for (; Index < Count; ++Index)
			{
				Hash = (Hash ^ Block[static_cast<size_t>(Index)]) * 1099511628211ull;
			}
			Left -= Count;
		}
		Reader->Close();
		Result.Hash = Hash;
		return Result;
	}

	// A save writes ".Mods.db.tmp<process>-<n>" and renames it; a run killed in between leaves it behind.
	void RemoveStaleTemporaries(const FString& Path)
	{
		struct FVisitor : IPlatformFile::FDirectoryVisitor
		{
			FString Prefix;
			TArray<FString> Stale;
			bool Visit(const TCHAR* Entry, bool bIsDirectory) override
			{
				const FString Name = FPaths::GetCleanFilename(Entry);
				FString Process;
				if (!bIsDirectory && Name.StartsWith(Prefix, ESearchCase::CaseSensitive) &&
					Name.Mid(Prefix.Len()).Split(TEXT("-"), &Process, nullptr) && Process.IsNumeric() &&
					!IsProcessRunning(static_cast<uint32>(FCString::Atoi64(*Process))))
				{
					Stale.Add(Entry);
				}
				return true;
			}
		} Visitor;
		Visitor.Prefix = TEXT(".") + FPaths::GetCleanFilename(Path) + TEXT(".tmp");
		FPlatformFileManager::Get().GetPlatformFile().IterateDirectory(*FPaths::GetPath(Path), Visitor);
		const TArray<FString>& Stale = Visitor.Stale;
		for (const FString& Entry : Stale)
		{
			FPlatformFileManager::Get().GetPlatformFile().DeleteFile(*Entry);
		}
	}
}

namespace
{
	std::unique_ptr<FFileLock> LockDatabase(const FString& Path)
	{
		IFileManager::Get().MakeDirectory(*FPaths::GetPath(Path), true);
		auto Lock = std::make_unique<FFileLock>(Path + TEXT(".lock"), 30.0);
		// Where no lock file can be made, the save can't be made either, and says so itself.
		if (!Lock->IsHeld() && Lock->IsOpen())
		{
			throw FCommandError{EExitCode::JobFailed,
								FString::Printf(TEXT("%s: another TesselCmd run kept it locked for 30 seconds; nothing saved"), *Path)};
		}
		return Lock;
	}
}

FDatabaseGuard::FDatabaseGuard(bool bHoldLock) : Path(KitPaths::ModDatabase())
{
	if (bHoldLock)
	{
		HeldLock = LockDatabase(Path);
	}
	ReadFingerprint = Fingerprint(Path);
}

FDatabaseGuard::~FDatabaseGuard() = default;

void FDatabaseGuard::Save(const std::function<void(bool bChanged)>& Save) const
{
	const std::unique_ptr<FFileLock> Lock = HeldLock ? nullptr : LockDatabase(Path);
	RemoveStaleTemporaries(Path);
	Save(Fingerprint(Path) != ReadFingerprint);
}
