#include "packaging/CompressCookedFilesVisitor.h"

#include "HAL/FileManager.h"
#include "Misc/FileHelper.h"
#include "Misc/PackageName.h"
#include "Misc/Paths.h"
#include "packaging/CompressAhead.h"

namespace
{
	bool IsPackageExtension(const FString& Extension)
	{
		// Case is ignored: a cook on Windows may leave ".UASSET" or ".Umap".
		const FString Packages[] = {FPackageName::GetMapPackageExtension(), FPackageName::GetAssetPackageExtension(),
									FString(TEXT(".SM4"))};
		for (const FString& Package : Packages)
		{
			if (Extension.Equals(Package, ESearchCase::IgnoreCase))
			{
				return true;
			}
		}
		return false;
	}
}

FCompressCookedFilesVisitor::FCompressCookedFilesVisitor(const FString& InStartedRoot, const FString& InTargetRoot)
	: StartedRoot(InStartedRoot), TargetRoot(InTargetRoot)
{
}

FCompressCookedFilesVisitor::~FCompressCookedFilesVisitor() = default;

bool FCompressCookedFilesVisitor::Visit(const TCHAR* FilenameOrDirectory, bool bIsDirectory)
{
	if (bIsDirectory)
	{
		return true;
	}
	const FString FullPath(FilenameOrDirectory);
	IFileManager& FileManager = IFileManager::Get();
	if (!IsPackageExtension(FPaths::GetExtension(FullPath, true)))
	{
		// The rest keeps its leading separator, which the path join absorbs.
		const FString Rel = FullPath.Mid(StartedRoot.Len(), MAX_int32);
		FileManager.Copy(*(TargetRoot / Rel), *FullPath, true, false);
		if (OnFileDone)
		{
			OnFileDone(FileManager.FileSize(*FullPath));
		}
		return true;
	}

	check(FullPath.StartsWith( StartedRoot ));
	if (!bAheadPlanned)
	{
		bAheadPlanned = true;
		if (FCompression::IsParallelCompression())
		{
			Ahead = std::make_unique<FCompressAhead>(
				StartedRoot, [](const FString& Path) { return IsPackageExtension(FPaths::GetExtension(Path, true)); });
		}
	}
	// Taken before anything is opened, so that the pool already works on the files after this one.
	const std::unique_ptr<FCompressedStreamJob> Prepared = Ahead ? Ahead->Take(FullPath) : nullptr;

	const FString Rel = FullPath.Mid(StartedRoot.Len(), MAX_int32);
	const FString ZPath = TargetRoot / Rel + TEXT(".z");
	// One temporary per folder: the walk is serial, and a ".z" appears under its name only when complete.
	const FString TmpPath = FPaths::GetPath(ZPath) / TEXT("SaveCompressed.tmp");

	FArchive* Reader = FileManager.CreateFileReader(*FullPath, 0);
	FArchive* Writer = FileManager.CreateFileWriter(*TmpPath, 0);
	if (!Reader || !Writer)
	{
		delete Reader;
		delete Writer;
		FileManager.Delete(*TmpPath, false, false, false);
		return false;
	}

	// Package files stay below 2 GiB, so their size is taken as a signed 32-bit number. A larger one turns
	// negative, the compressor refuses it, the temporary is dropped and the move below finds nothing: no ".z".
	const int32 Size = static_cast<int32>(Reader->TotalSize());
	Writer->SetByteSwapping(false);
	if (Prepared && Prepared->GetInputSize() == Reader->TotalSize())
	{
		Prepared->WriteTo(*Writer);
	}
	else
	{
		Writer->SerializeCompressed(Reader, Size, COMPRESS_ZLIB, true);
	}
	delete Reader;
	delete Writer;

	if (FileManager.Move(*ZPath, *TmpPath, true, false))
	{
		FFileHelper::SaveStringToFile(FString::Printf(TEXT("%d%s"), Size, TEXT("\r\n")), *(ZPath + TEXT(".uncompressed_size")),
									  EEncodingOptions::AutoDetect);
	}
	if (OnFileDone)
	{
		OnFileDone(Size);
	}
	return true;
}
