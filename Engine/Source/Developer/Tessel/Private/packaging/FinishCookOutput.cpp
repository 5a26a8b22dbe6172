#include "cook/CookJob.h"
#include "cook/CookLayout.h"

#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"
#include "Misc/CString.h"
#include "packaging/CompressCookedFilesVisitor.h"
#include "packaging/ModArchiveForms.h"

#include <algorithm>

void FCookJob::FinishCookOutput()
{
	if (bTestOutput)
	{
		WriteTestRunModFile();
	}
	else
	{
		PackageTarget();
	}
}

void FCookJob::WriteTestRunModFile()
{
	TArray<FString> Maps{ModRecord.Maps};
	TMap<FString, FString> Metadata;
	int32 ModType =
		CookKind == static_cast<uint32>(ECookKind::TotalConversion) ? ModFileFormat::TotalConversionModType : ModFileFormat::OtherModType;

	TUniquePtr<FArchive> Info(IFileManager::Get().CreateFileReader(*(StagedModDir / TEXT("mod.info")), 0));
	if (Info)
	{
		FString Leading;
		ModArchiveForms::SerializeString(*Info, Leading);
		TArray<FString> InfoMaps;
		ModArchiveForms::SerializeStringArray(*Info, InfoMaps);
		Maps = InfoMaps;
		Info->Close();
		Info.reset();

		TUniquePtr<FArchive> Meta(IFileManager::Get().CreateFileReader(*(StagedModDir / TEXT("modmeta.info")), 0));
		if (Meta)
		{
			ModArchiveForms::SerializeStringMap(*Meta, Metadata);
			Meta->Close();
		}
		for (const auto& Pair : Metadata)
		{
			if (Pair.Key.Equals(TEXT("ModType"), ESearchCase::IgnoreCase))
			{
				ModType = FCString::Atoi(*Pair.Value);
				break;
			}
		}
	}

	const FString ModFile = TargetDir / FString::Printf(TEXT("%d.mod"), ModId);
	TUniquePtr<FArchive> Writer(IFileManager::Get().CreateFileWriter(*ModFile, 0));
	if (!Writer)
	{
		return;
	}
	FModFileRecord Record;
	Record.Number = ModId;
	Record.Title = ModRecord.Title.TrimQuotes();
	Record.Maps = Maps;
	Record.Type = static_cast<uint8>(ModType & 0xFF);
	Record.Metadata = Metadata;
	Record.Serialize(*Writer);
	Writer->Close();
}

void FCookJob::PackageTarget()
{
	FCompressCookedFilesVisitor Visitor(StagedModDir, TargetDir);
	if (OnPackagingProgress)
	{
		// The totals take one extra listing of the tree, paid only when someone watches.
		FPackagingProgress Progress;
		Progress.StagedDir = StagedModDir;
		Progress.TargetDir = TargetDir;
		FPlatformFileManager::Get().GetPlatformFile().IterateDirectoryRecursively(
			*StagedModDir,
			[&Progress](const TCHAR* Path, bool bIsDirectory)
			{
				if (!bIsDirectory)
				{
					++Progress.FilesTotal;
					Progress.BytesTotal += std::max<int64>(IFileManager::Get().FileSize(Path), 0);
				}
				return true;
			});
		OnPackagingProgress(Progress);
		Visitor.OnFileDone = [Progress](int64 FileBytes) mutable
		{
			++Progress.FilesDone;
			Progress.BytesDone += std::max<int64>(FileBytes, 0);
			OnPackagingProgress(Progress);
		};
	}
	FPlatformFileManager::Get().GetPlatformFile().IterateDirectoryRecursively(*StagedModDir, Visitor);
	IFileManager::Get().DeleteDirectory(*StagingDir, false, true);
	if (bLastTarget)
	{
		const FString Base = FCookLayout::BaseOfTarget(TargetDir);
		IFileManager::Get().Copy(*(Base / TEXT("mod.info")), *(TargetDir / TEXT("mod.info")), true, false);
		IFileManager::Get().Copy(*(Base / TEXT("modmeta.info")), *(TargetDir / TEXT("modmeta.info")), true, false);
	}
}
