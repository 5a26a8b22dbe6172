#include "packaging/CompressAhead.h"

#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"

FCompressAhead::FCompressAhead(const FString& Root, const std::function<bool(const FString&)>& IsPackage)
{
	IFileManager& FileManager = IFileManager::Get();
	FPlatformFileManager::Get().GetPlatformFile().IterateDirectoryRecursively(
		*Root,
		[&](const TCHAR* Path, bool bIsDirectory)
		{
			if (!bIsDirectory)
			{
				const FString File(Path);
				const int64 Size = FileManager.FileSize(Path);
				if (IsPackage(File) && Size >= 0 && Size <= MaxFileSize)
				{
					Planned.push_back(File);
				}
			}
			return true;
		});
	Refill();
}

std::unique_ptr<FCompressedStreamJob> FCompressAhead::Take(const FString& Path)
{
	size_t Found = 0;
	while (Found < Ready.size() && Ready[Found].first != Path)
	{
		++Found;
	}
	if (Found == Ready.size())
	{
		return nullptr;
	}
	for (; Found > 0; --Found)
	{
		BytesAhead -= Ready.front().second->GetHeldBytes();
		Ready.pop_front();
	}
	std::unique_ptr<FCompressedStreamJob> Job = std::move(Ready.front().second);
	BytesAhead -= Job->GetHeldBytes();
	Ready.pop_front();
	// The next files go to the pool before the caller waits on this one, so no thread runs dry meanwhile.
	Refill();
	return Job;
}

void FCompressAhead::Refill()
{
	IFileManager& FileManager = IFileManager::Get();
	while (NextPlanned < Planned.size() && (Ready.empty() || BytesAhead < MaxBytesAhead))
	{
		const FString& Path = Planned[NextPlanned++];
		std::unique_ptr<FArchive> Reader(FileManager.CreateFileReader(*Path, 0));
		if (!Reader)
		{
			continue;
		}
		const int64 Size = Reader->TotalSize();
		if (Size < 0 || Size > MaxFileSize)
		{
			continue;
		}
		std::vector<uint8> Bytes(static_cast<size_t>(Size));
		Reader->Serialize(Bytes.data(), Size);
		if (Reader->IsError())
		{
			continue;
		}
		Ready.emplace_back(Path, std::make_unique<FCompressedStreamJob>(std::move(Bytes)));
		BytesAhead += Ready.back().second->GetHeldBytes();
	}
}
