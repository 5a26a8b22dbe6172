#include "KitSession.h"

#include "CommandOutput.h"
#include "HAL/FileManager.h"
#include "json/JsonSerializer.h"

#include <filesystem>

FString GetWorkingDirectory()
{
	std::error_code Error;
	const std::filesystem::path Current = std::filesystem::current_path(Error);
	return Error ? FString(TEXT("/")) : FString::FromUtf8(Current.string());
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

FString DescribeDatabaseError(const FString& Path, bool& OutOpened)
{
	TUniquePtr<FArchive> Reader(IFileManager::Get().CreateFileReader(*Path, 0));
	OutOpened = Reader != nullptr;
	if (!Reader)
	{
		return TEXT("can't be opened for reading");
	}
	const TSharedRef<JsonReader> Json = MakeShared<JsonReader>(Reader.get());
	TSharedPtr<FJsonObject> Root;
	if (JsonSerializer::Deserialize(Json, Root))
	{
		return FString();
	}
	const FString Message = Json->GetErrorMessage();
	return Message.IsEmpty() ? FString(TEXT("not a JSON document whose root is an object")) : Message;
}

void RequireReadableDatabase()
{
	const FString Path = STesselTool::GetModDatabasePath();
	if (!IFileManager::Get().FileExists(*Path))
	{
		return;
	}
	bool bOpened = false;
	const FString Error = DescribeDatabaseError(Path, bOpened);
	if (!bOpened)
	{
		throw FCommandError{EExitCode::JobFailed, FString::Printf(TEXT("%s: %s"), *Path, *Error)};
	}
	if (!Error.IsEmpty())
	{
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

bool ReadDatabaseRecords(const FString& Path, TArray<FModSetup>& OutRecords, FString& OutSteamUsername)
{
	TUniquePtr<FArchive> Reader(IFileManager::Get().CreateFileReader(*Path, 0));
	TSharedPtr<FJsonObject> Root;
	if (!Reader || !JsonSerializer::Deserialize(MakeShared<JsonReader>(Reader.get()), Root))
	{
		return false;
	}
	OutSteamUsername = Root->GetStringField(TEXT("SteamUsername"));
	for (const TSharedPtr<FJsonValue>& Element : Root->GetArrayField(TEXT("Mods")))
	{
		OutRecords.Add(FModSetup(Element));
	}
	return true;
}
