#pragma once

#include "CoreMinimal.h"

#include <vector>

// Valve's KeyValues text, the language of SteamCMD's item files: quoted or bare keys and values, blocks in
// braces nested to any depth, "//" comments to the end of the line, and the escapes \" \\ \n \t in quoted
// text. A platform condition such as [$WIN32] after a value is accepted and ignored.
struct FKeyValues
{
	FString Key;
	// The text of a pair; empty for a block.
	FString Value;
	bool bIsBlock = false;
	std::vector<FKeyValues> Children;

	// The first child with this key, ignoring case as KeyValues does; null when there is none.
	FKeyValues* FindChild(const FString& ChildKey);
	const FKeyValues* FindChild(const FString& ChildKey) const;
};

struct FKeyValuesText
{
	// Parses a whole text into the top-level entries of OutRoot. False, with a message that names the line,
	// for text that breaks the language.
	static bool Parse(const FString& Text, FKeyValues& OutRoot, FString& OutError);
	// Writes the top-level entries of Root as SteamCMD writes an item file: tabs, quoted text, escapes.
	static FString Write(const FKeyValues& Root);
};
