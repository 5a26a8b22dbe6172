#pragma once

#include "CoreMinimal.h"
#include "HAL/PlatformFile.h"

#include <functional>
#include <memory>

class FCompressAhead;

// Walks a cooked tree and fills a target tree from it: every package file becomes a compressed ".z" file
// with a ".uncompressed_size" file beside it, everything else is copied as it is. Made on the stack for one
// walk. Folders appear in the target only when a file below them is written.
class FCompressCookedFilesVisitor : public IPlatformFile::FDirectoryVisitor
{
public:
	FCompressCookedFilesVisitor(const FString& InStartedRoot, const FString& InTargetRoot);
	~FCompressCookedFilesVisitor() override;

	// False stops the walk: a package that can't be opened, or whose temporary can't be made.
	bool Visit(const TCHAR* FilenameOrDirectory, bool bIsDirectory) override;

	// Told the size of each file the walk has handled, compressed or copied; may be unset.
	std::function<void(int64 FileBytes)> OnFileDone;

private:
	FString StartedRoot;
	FString TargetRoot;
	// Made at the first file, when compression runs in parallel: the walk's next packages, compressed ahead.
	std::unique_ptr<FCompressAhead> Ahead;
	bool bAheadPlanned = false;
};
