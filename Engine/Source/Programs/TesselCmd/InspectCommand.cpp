#include "CommandOutput.h"
#include "Commands.h"
#include "CompressedFileInspection.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"
#include "KitSession.h"
#include "ModRecordText.h"
#include "TesselSession.h"
#include "packaging/ModArchiveForms.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace
{
	[[noreturn]] void Broken(const FString& Path, const FString& Problem)
	{
		throw FCommandError{EExitCode::BadInput, FString::Printf(TEXT("%s: %s"), *Path, *Problem)};
	}

	FString Ratio(int64 Compressed, int64 Uncompressed)
	{
		return Uncompressed > 0 ? FString::Printf(TEXT("%.3f"), static_cast<double>(Compressed) / static_cast<double>(Uncompressed))
								: FString(TEXT("-"));
	}

	int InspectCompressed(const FCommandOutput& Output, const FString& Path, const FString& Extract)
	{
		FCompressedFileReport Report;
		if (Extract.IsEmpty())
		{
			Report = InspectCompressedFile(Path);
		}
		else
		{
			// Written beside the destination and renamed only when the whole file decoded, so that a broken
			// ".z" leaves nothing behind.
			const FString Destination = ToFullPath(Extract);
			const std::string Partial = (Destination + TEXT(".partial")).ToNative();
			std::ofstream File(Partial, std::ios::binary | std::ios::trunc);
			if (!File)
			{
				throw FCommandError{EExitCode::JobFailed, FString::Printf(TEXT("%s: can't be written"), *Destination)};
			}
			Report = InspectCompressedFile(Path,
										   [&File](const uint8* Bytes, int64 Count)
										   {
											   File.write(reinterpret_cast<const char*>(Bytes), static_cast<std::streamsize>(Count));
											   return static_cast<bool>(File);
										   });
			File.close();
			std::error_code Error;
			if (!Report.IsWhole() || !File)
			{
				std::filesystem::remove(Partial, Error);
			}
			else
			{
				std::filesystem::rename(Partial, Destination.ToNative(), Error);
				if (Error)
				{
					std::filesystem::remove(Partial, Error);
					throw FCommandError{EExitCode::JobFailed, FString::Printf(TEXT("%s: can't be written"), *Destination)};
				}
			}
		}
		if (!Report.DescribeProblem().IsEmpty())
		{
			Broken(Path, Report.DescribeProblem());
		}
		if (Output.IsJson())
		{
			TSharedRef<FJsonObject> Document = MakeShared<FJsonObject>();
			Document->SetStringField(TEXT("path"), Path);
			Document->SetStringField(TEXT("kind"), TEXT("compressed package"));
			Document->SetNumberField(TEXT("chunks"), Report.Chunks);
			Document->SetNumberField(TEXT("chunkSize"), static_cast<double>(Report.ChunkSize));
			Document->SetNumberField(TEXT("compressedBytes"), static_cast<double>(Report.FileBytes));
			Document->SetNumberField(TEXT("uncompressedBytes"), static_cast<double>(Report.UncompressedBytes));
			Document->SetNumberField(TEXT("sizeFile"), static_cast<double>(Report.SizeFileValue));
			FCommandOutput::Print(Document);
		}
		else
		{
			Output.Line(FString::Printf(TEXT("%s: %d chunks of at most %lld bytes, %lld bytes decode to %lld (ratio %s), as its size file says"),
										*Path, Report.Chunks, Report.ChunkSize, Report.FileBytes, Report.UncompressedBytes,
										*Ratio(Report.FileBytes, Report.UncompressedBytes)));
			if (!Extract.IsEmpty())
			{
				Output.Line(FString::Printf(TEXT("Decoded bytes written to %s"), *ToFullPath(Extract)));
			}
		}
		return static_cast<int>(EExitCode::Success);
	}

	int InspectTree(const FCommandOutput& Output, const FString& Folder)
	{
		TArray<FCompressedFileReport> Reports;
		TArray<FString> Problems;
		int32 PlainFiles = 0;
		int64 PlainBytes = 0;
		bool bModInfo = false;
		FPlatformFileManager::Get().GetPlatformFile().IterateDirectoryRecursively(
			*Folder,
			[&](const TCHAR* Entry, bool bIsDirectory)
			{
				const FString Path(Entry);
				if (bIsDirectory)
				{
					return true;
				}
				if (Path.EndsWith(TEXT(".z"), ESearchCase::IgnoreCase))
				{
					Reports.Add(InspectCompressedFile(Path));
				}
				else if (Path.EndsWith(TEXT(".uncompressed_size"), ESearchCase::IgnoreCase))
				{
					if (!IFileManager::Get().FileExists(*Path.LeftChop(FString(TEXT(".uncompressed_size")).Len())))
					{
						Problems.Add(FString::Printf(TEXT("%s: a size file with no \".z\" beside it"), *Path));
					}
				}
				else
				{
					++PlainFiles;
					PlainBytes += std::max<int64>(IFileManager::Get().FileSize(*Path), 0);
					bModInfo = bModInfo || FPaths::GetCleanFilename(Path).Equals(TEXT("mod.info"), ESearchCase::IgnoreCase);
				}
				return true;
			});

		int64 Compressed = 0;
		int64 Uncompressed = 0;
		TArray<TSharedPtr<FJsonValue>> Files;
		for (const FCompressedFileReport& Report : Reports)
		{
			const FString Problem = Report.DescribeProblem();
			if (!Problem.IsEmpty())
			{
				Problems.Add(FString::Printf(TEXT("%s: %s"), *Report.Path, *Problem));
			}
			Compressed += Report.FileBytes;
			Uncompressed += Report.UncompressedBytes;
			TSharedPtr<FJsonObject> File = MakeShared<FJsonObject>();
			File->SetStringField(TEXT("path"), Report.Path);
			File->SetNumberField(TEXT("compressedBytes"), static_cast<double>(Report.FileBytes));
			File->SetNumberField(TEXT("uncompressedBytes"), static_cast<double>(Report.UncompressedBytes));
			File->SetNumberField(TEXT("sizeFile"), static_cast<double>(Report.SizeFileValue));
			File->SetStringField(TEXT("problem"), Problem);
			Files.Add(JsonObject(File));
		}

		if (Output.IsJson())
		{
			TSharedRef<FJsonObject> Document = MakeShared<FJsonObject>();
			Document->SetStringField(TEXT("path"), Folder);
			Document->SetStringField(TEXT("kind"), TEXT("packaged tree"));
			Document->SetArrayField(TEXT("packages"), Files);
			Document->SetNumberField(TEXT("compressedBytes"), static_cast<double>(Compressed));
			Document->SetNumberField(TEXT("uncompressedBytes"), static_cast<double>(Uncompressed));
			Document->SetNumberField(TEXT("plainFiles"), PlainFiles);
			Document->SetNumberField(TEXT("plainBytes"), static_cast<double>(PlainBytes));
			Document->SetBoolField(TEXT("modInfo"), bModInfo);
			Document->SetArrayField(TEXT("problems"), JsonStrings(Problems));
			FCommandOutput::Print(Document);
		}
		else
		{
			Output.Line(FString::Printf(TEXT("%s: %d packages, %lld bytes decode to %lld (ratio %s); %d other files of %lld bytes%s"), *Folder,
										Reports.Num(), Compressed, Uncompressed, *Ratio(Compressed, Uncompressed), PlainFiles, PlainBytes,
										bModInfo ? TEXT(", mod.info among them") : TEXT(", no mod.info")));
		}
		for (const FString& Problem : Problems)
		{
			FCommandOutput::Note(Problem);
		}
		return static_cast<int>(Problems.Num() > 0 ? EExitCode::BadInput : EExitCode::Success);
	}

	// Reads the fields of a description file one after another, naming the one where the bytes run out.
	class FFieldReader
	{
	public:
		explicit FFieldReader(const FString& InPath) : Path(InPath), Reader(IFileManager::Get().CreateFileReader(*InPath, 0))
		{
			if (!Reader)
			{
				Broken(Path, TEXT("can't be opened for reading"));
			}
		}
		template <typename FieldType>
		void Read(const TCHAR* Field, FieldType& Value)
		{
			const int64 At = Reader->Tell();
			FModFileRecord::SerializeField(*Reader, Value);
			if (Reader->IsError())
			{
				Broken(Path, FString::Printf(TEXT("truncated or broken in the %s, which begins at byte %lld of %lld"), Field, At,
											 Reader->TotalSize()));
			}
		}
		int64 BytesLeft() { return Reader->TotalSize() - Reader->Tell(); }

	private:
		FString Path;
		TUniquePtr<FArchive> Reader;
	};

	TSharedPtr<FJsonObject> MapToJson(const TMap<FString, FString>& Map)
	{
		TSharedPtr<FJsonObject> Object = MakeShared<FJsonObject>();
		for (const auto& Pair : Map)
		{
			Object->SetStringField(Pair.Key, Pair.Value);
		}
		return Object;
	}

	void PrintMap(const FCommandOutput& Output, const TMap<FString, FString>& Map)
	{
		for (const auto& Pair : Map)
		{
			Output.Line(FString::Printf(TEXT("  %s = %s"), *Pair.Key, *Pair.Value));
		}
	}

	int InspectModFile(const FCommandOutput& Output, const FString& Path)
	{
		FFieldReader Reader(Path);
		FModFileRecord Record;
		Record.VisitFields([&Reader](const TCHAR* Name, auto& Field) { Reader.Read(Name, Field); });
		const auto& [Number, Title, Second, Maps, Magic, Version, Type, Metadata] = Record;
		TArray<FString> Problems;
		if (Magic != ModFileFormat::Magic)
		{
			Problems.Add(FString::Printf(TEXT("magic 0x%08X where the game expects 0x%08X"), Magic, ModFileFormat::Magic));
		}
		if (Reader.BytesLeft() > 0)
		{
			Problems.Add(FString::Printf(TEXT("%lld bytes follow the metadata"), Reader.BytesLeft()));
		}
		if (Output.IsJson())
		{
			TSharedRef<FJsonObject> Document = MakeShared<FJsonObject>();
			Document->SetStringField(TEXT("path"), Path);
			Document->SetStringField(TEXT("kind"), TEXT("mod file"));
			Document->SetNumberField(TEXT("modNumber"), static_cast<double>(Number));
			Document->SetStringField(TEXT("title"), Title);
			Document->SetStringField(TEXT("secondString"), Second);
			Document->SetArrayField(TEXT("maps"), JsonStrings(Maps));
			Document->SetNumberField(TEXT("magic"), Magic);
			Document->SetNumberField(TEXT("version"), Version);
			Document->SetNumberField(TEXT("modType"), Type);
			Document->SetObjectField(TEXT("metadata"), MapToJson(Metadata));
			Document->SetArrayField(TEXT("problems"), JsonStrings(Problems));
			FCommandOutput::Print(Document);
		}
		else
		{
			Output.Line(FString::Printf(TEXT("%s: the test run's mod file"), *Path));
			Output.Line(FString::Printf(TEXT("  Mod number:     %lld"), Number));
			Output.Line(FString::Printf(TEXT("  Title:          %s"), *Title));
			Output.Line(FString::Printf(TEXT("  Second string:  %s"), *Second));
			Output.Line(FString::Printf(TEXT("  Maps:           %s"), *FString::Join(Maps, TEXT(", "))));
			Output.Line(FString::Printf(TEXT("  Magic:          0x%08X"), Magic));
			Output.Line(FString::Printf(TEXT("  Format version: %d"), Version));
			Output.Line(FString::Printf(TEXT("  Mod type:       %d"), Type));
			Output.Line(FString::Printf(TEXT("  Metadata:       %d pairs"), Metadata.Num()));
			PrintMap(Output, Metadata);
		}
		for (const FString& Problem : Problems)
		{
			FCommandOutput::Note(FString::Printf(TEXT("%s: %s"), *Path, *Problem));
		}
		return static_cast<int>(Problems.Num() > 0 ? EExitCode::BadInput : EExitCode::Success);
	}

	int InspectModInfo(const FCommandOutput& Output, const FString& Path)
	{
		FFieldReader Reader(Path);
		FString Leading;
		TArray<FString> Maps;
		Reader.Read(TEXT("leading string"), Leading);
		Reader.Read(TEXT("map list"), Maps);
		const int64 Rest = Reader.BytesLeft();
		if (Output.IsJson())
		{
			TSharedRef<FJsonObject> Document = MakeShared<FJsonObject>();
			Document->SetStringField(TEXT("path"), Path);
			Document->SetStringField(TEXT("kind"), TEXT("mod.info"));
			Document->SetStringField(TEXT("leadingString"), Leading);
			Document->SetArrayField(TEXT("maps"), JsonStrings(Maps));
			Document->SetNumberField(TEXT("bytesAfter"), static_cast<double>(Rest));
			FCommandOutput::Print(Document);
		}
		else
		{
			Output.Line(FString::Printf(TEXT("%s: the cook's description of the mod"), *Path));
			Output.Line(FString::Printf(TEXT("  Leading string: %s"), *Leading));
			Output.Line(FString::Printf(TEXT("  Maps:           %s"), *FString::Join(Maps, TEXT(", "))));
			if (Rest > 0)
			{
				Output.Line(FString::Printf(TEXT("  %lld more bytes the tool doesn't read"), Rest));
			}
		}
		return static_cast<int>(EExitCode::Success);
	}

	int InspectModMeta(const FCommandOutput& Output, const FString& Path)
	{
		FFieldReader Reader(Path);
		TMap<FString, FString> Metadata;
		Reader.Read(TEXT("metadata"), Metadata);
		if (Output.IsJson())
		{
			TSharedRef<FJsonObject> Document = MakeShared<FJsonObject>();
			Document->SetStringField(TEXT("path"), Path);
			Document->SetStringField(TEXT("kind"), TEXT("modmeta.info"));
			Document->SetObjectField(TEXT("metadata"), MapToJson(Metadata));
			FCommandOutput::Print(Document);
		}
		else
		{
			Output.Line(FString::Printf(TEXT("%s: %d pairs"), *Path, Metadata.Num()));
			PrintMap(Output, Metadata);
		}
		return static_cast<int>(EExitCode::Success);
	}

	int InspectDatabase(const FCommandOutput& Output, const FString& Path)
	{
		TArray<TSharedPtr<FModSetup>> Records;
		FString SteamUsername;
		FString Error;
		const EModDatabaseRead Read = ReadModDatabase(Path, Records, SteamUsername, Error);
		if (Read != EModDatabaseRead::Read)
		{
			throw FCommandError{Read == EModDatabaseRead::Unreadable ? EExitCode::BadInput : EExitCode::JobFailed,
								FString::Printf(TEXT("%s: %s"), *Path, *Error)};
		}
		if (Output.IsJson())
		{
			TSharedRef<FJsonObject> Document = MakeShared<FJsonObject>();
			Document->SetStringField(TEXT("path"), Path);
			Document->SetStringField(TEXT("kind"), TEXT("mod database"));
			Document->SetStringField(TEXT("SteamUsername"), SteamUsername);
			TArray<TSharedPtr<FJsonValue>> Mods;
			for (const TSharedPtr<FModSetup>& Record : Records)
			{
				Mods.Add(Record->ToJsonValue());
			}
			Document->SetArrayField(TEXT("mods"), Mods);
			FCommandOutput::Print(Document);
		}
		else
		{
			Output.Line(FString::Printf(TEXT("%s: %d records, Steam user \"%s\""), *Path, Records.Num(), *SteamUsername));
			for (const TSharedPtr<FModSetup>& Record : Records)
			{
				Output.Line(FString());
				for (const FString& Line : DescribeModRecord(*Record))
				{
					Output.Line(Line);
				}
			}
		}
		return static_cast<int>(EExitCode::Success);
	}
}

int RunInspect(const FGlobalOptions& Options, const FInspectOptions& Inspect)
{
	const FCommandOutput Output(Options.bJson);
	const FString Path = ToFullPath(Inspect.Path);
	const FString Name = FPaths::GetCleanFilename(Path);
	const bool bCompressed = Name.EndsWith(TEXT(".z"), ESearchCase::IgnoreCase);
	if (!Inspect.Extract.IsEmpty() && !bCompressed)
	{
		throw FCommandError{EExitCode::BadInput, TEXT("--extract takes a \".z\" file")};
	}
	if (IFileManager::Get().DirectoryExists(*Path))
	{
		return InspectTree(Output, Path);
	}
	if (!IFileManager::Get().FileExists(*Path))
	{
		Broken(Path, TEXT("no such file or folder"));
	}
	if (bCompressed)
	{
		return InspectCompressed(Output, Path, Inspect.Extract);
	}
	if (Name.EndsWith(TEXT(".mod"), ESearchCase::IgnoreCase))
	{
		return InspectModFile(Output, Path);
	}
	if (Name.Equals(TEXT("mod.info"), ESearchCase::IgnoreCase))
	{
		return InspectModInfo(Output, Path);
	}
	if (Name.Equals(TEXT("modmeta.info"), ESearchCase::IgnoreCase))
	{
		return InspectModMeta(Output, Path);
	}
	if (Name.EndsWith(TEXT(".db"), ESearchCase::IgnoreCase))
	{
		return InspectDatabase(Output, Path);
	}
	Broken(Path, TEXT("not a file inspect knows: a \".z\" file, a packaged folder, a \"%d.mod\" file, mod.info, modmeta.info or Mods.db"));
}
