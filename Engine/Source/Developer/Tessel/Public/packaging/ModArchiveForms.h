#pragma once

#include "CoreMinimal.h"
#include "Serialization/Archive.h"

#include <type_traits>

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

// The "%d.mod" file a test run writes for the game, its fields in their order on disk, named once for every
// reader and writer: the cook's completion step, TesselCmd inspect, the fuzzer and the tests.
struct FModFileRecord
{
	int64 Number = 0;
	FString Title;
	// The game reads a second string after the title; nothing of ours fills it.
	FString Second;
	TArray<FString> Maps;
	uint32 Magic = ModFileFormat::Magic;
	int32 Version = ModFileFormat::Version;
	uint8 Type = 0;
	TMap<FString, FString> Metadata;

	// Visit(name, field) for each field in the file's order, for a reader that names where bytes run out.
	template <typename VisitorType> void VisitFields(VisitorType&& Visit)
	{
		Visit(TEXT("mod number"), Number);
		Visit(TEXT("title"), Title);
		Visit(TEXT("second string"), Second);
		Visit(TEXT("map list"), Maps);
		Visit(TEXT("magic"), Magic);
		Visit(TEXT("format version"), Version);
		Visit(TEXT("mod type"), Type);
		Visit(TEXT("metadata"), Metadata);
	}

	// Reads on a loading archive and writes on a saving one, each field in its byte form.
	void Serialize(FArchive& Ar)
	{
		VisitFields([&Ar](const TCHAR*, auto& Field) { SerializeField(Ar, Field); });
	}

	// One field in its byte form: a string, list or map as ModArchiveForms has them, a number little-endian.
	template <typename FieldType> static void SerializeField(FArchive& Ar, FieldType& Value)
	{
		if constexpr (std::is_same_v<FieldType, FString>)
		{
			ModArchiveForms::SerializeString(Ar, Value);
		}
		else if constexpr (std::is_same_v<FieldType, TArray<FString>>)
		{
			ModArchiveForms::SerializeStringArray(Ar, Value);
		}
		else if constexpr (std::is_same_v<FieldType, TMap<FString, FString>>)
		{
			ModArchiveForms::SerializeStringMap(Ar, Value);
		}
		else
		{
			Ar << Value;
		}
	}
};
