#include "KitSession.h"

#include "CommandOutput.h"
#include "HAL/FileManager.h"

#include <filesystem>

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

void RequireReadableDatabase()
{
	const FString Path = STesselTool::GetModDatabasePath();
	if (!IFileManager::Get().FileExists(*Path))
	{
		return;
	}
	TArray<TSharedPtr<FModSetup>> Records;
	FString SteamUsername;
	FString Error;
	switch (STesselTool::ReadModDatabase(Path, Records, SteamUsername, Error))
	{
	case STesselTool::EModDatabaseRead::Read:
		return;
	case STesselTool::EModDatabaseRead::Unopenable:
		throw FCommandError{EExitCode::JobFailed, FString::Printf(TEXT("%s: %s"), *Path, *Error)};
	case STesselTool::EModDatabaseRead::Unreadable:
		throw FCommandError{EExitCode::BadInput,
							FString::Printf(TEXT("%s: %s (the tool reads it as UTF-16; fix or move the file, as a save would replace "
												 "it with fresh records)"),
											*Path, *Error)};
	}
}

TSharedPtr<FModSetup> SelectMod(FHeadlessTool& Tool, const FString& ModDir)
{
	if (TSharedPtr<FModSetup> Mod = Tool.Select(ModDir))
	{
		return Mod;
	}
	TArray<FString> Known;
	for (const TSharedPtr<FModSetup>& Mod : Tool.GetMods())
	{
		Known.Add(Mod->ModDir);
	}
	throw FCommandError{EExitCode::BadInput,
						FString::Printf(TEXT("%s: no such mod in %s (mods: %s)"), *ModDir, *STesselTool::GetModsContentDir(),
										Known.Num() > 0 ? *FString::Join(Known, TEXT(", ")) : TEXT("none"))};
}
