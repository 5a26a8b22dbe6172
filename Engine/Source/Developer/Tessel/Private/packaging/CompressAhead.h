#pragma once

#include "CoreMinimal.h"
#include "Misc/Compression.h"

#include <deque>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

// Compresses the package files a walk is about to reach into memory, in the walk's order, so that the pool's
// threads stay busy while the walk itself opens, writes and moves files on its own thread. Most packages are
// a single chunk, so without this one core would idle for most of a tree. What is held ahead is bounded by
// bytes; files too large to hold are left to the walk, which streams them chunk by chunk.
class FCompressAhead
{
public:
	// Lists Root as the walk will list it and plans every file for which IsPackage says yes.
	FCompressAhead(const FString& Root, const std::function<bool(const FString&)>& IsPackage);

	// The job prepared for Path, or null when there is none: a file too large, unreadable, or not seen when
	// the tree was listed. Jobs of planned files before Path, which the walk has passed by, are dropped.
	std::unique_ptr<FCompressedStreamJob> Take(const FString& Path);

	// No file is read ahead once the jobs held (input and room for output) reach this, though one is always
	// held; and the largest file held at all.
	static constexpr int64 MaxBytesAhead = 32 * 1024 * 1024;
	static constexpr int64 MaxFileSize = 16 * 1024 * 1024;

private:
	void Refill();

	std::vector<FString> Planned;
	size_t NextPlanned = 0;
	std::deque<std::pair<FString, std::unique_ptr<FCompressedStreamJob>>> Ready;
	int64 BytesAhead = 0;
};
