#pragma once

#include "CoreMinimal.h"
#include "Serialization/Archive.h"

// The byte forms of strings, string lists and string maps in the mod description files ("mod.info",
// "modmeta.info", "%d.mod"). Each call reads on a loading archive and writes on a saving one. A reader that
// meets a length it can't honour sets the archive's error flag and leaves the value empty.
namespace ModArchiveForms
{
	// A signed 32-bit length, then the characters with a terminating zero: 0 for the empty string, n for n
	// 8-bit units, -n for n UTF-16 units. Written 8-bit when every unit is at most 0x7F, else UTF-16.
	void SerializeString(FArchive& Ar, FString& Value);
	// A signed 32-bit count, then that many strings.
	void SerializeStringArray(FArchive& Ar, TArray<FString>& Value);
	// A signed 32-bit count of pairs, then key and value of each, in the map's order.
	void SerializeStringMap(FArchive& Ar, TMap<FString, FString>& Value);
}

// The fixed fields of the "%d.mod" file a test run writes for the game.
namespace ModFileFormat
{
	// Stands after the map list; on disk 33 FF 22 FF.
	constexpr uint32 Magic = 0xFF22FF33u;
	constexpr int32 Version = 2;
	// The mod type when modmeta.info names none: a total conversion is type 3, every other cook kind type 0.
	constexpr int32 TotalConversionModType = 3;
	constexpr int32 OtherModType = 0;
}
