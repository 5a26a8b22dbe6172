#pragma once

#include "CoreMinimal.h"

#include <functional>

// What a ".z" file holds, record by record, and whether it agrees with its size file.
struct FCompressedFileReport
{
	FString Path;
	// Empty when every record holds and every chunk inflates to its recorded size.
	FString Problem;
	int64 FileBytes = 0;
	int64 ChunkSize = 0;
	int32 Chunks = 0;
	int64 UncompressedBytes = 0;
	// The number in the size file beside it; -1 when there is none or it holds no number.
	int64 SizeFileValue = -1;

	bool IsWhole() const { return Problem.IsEmpty(); }
	bool MatchesSizeFile() const { return SizeFileValue == UncompressedBytes; }
	// What is wrong with the file or between it and its size file, or empty.
	FString DescribeProblem() const;
};

// Walks the chunked stream of the file: the tag record, the summary, every chunk record, then every chunk,
// each inflated and handed to OnBytes when it is set (false from OnBytes stops with a problem). Reads the size
// file beside it too. Memory stays at one chunk whatever the file says.
FCompressedFileReport InspectCompressedFile(const FString& Path, const std::function<bool(const uint8*, int64)>& OnBytes = nullptr);
