#pragma once

// The commandlet's own writer of "mod.info" and "modmeta.info", byte for byte as the engine's archive writes
// them. It shares no code with the tool's reader on purpose: a drift in either side shows as a failing test.

#include "CoreMinimal.h"

#include <string>
#include <utility>
#include <vector>

class FModDescriptionWriter
{
public:
	// A signed 32-bit little-endian length n counting the terminating zero, then n units: 8-bit when every unit
	// is ASCII, else UTF-16 little-endian with the length negated. The empty string is a length of 0 alone.
	void String(const FString& Value);
	// A signed 32-bit count, then each string.
	void StringArray(const TArray<FString>& Values);
	// A signed 32-bit count of pairs, then key and value of each, in the given order.
	void StringMap(const std::vector<std::pair<FString, FString>>& Pairs);

	// Writes the bytes so far to Path, replacing any old file. False when it can't.
	bool SaveTo(const FString& Path) const;

private:
	void Int32(int32 Value);

	std::string Bytes;
};
